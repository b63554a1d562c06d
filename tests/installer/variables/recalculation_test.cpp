// Recalculated variables: dependency order, the record just written, suspension, and
// long or failed results.
#include <string>

#include <gtest/gtest.h>

#include "installer/variables/variables_helpers.h"

namespace {

TEST(Recalculation, UsersFollowWhatTheyUse)
{
    // Each row defines the chain ROOT <- BIN <- TOOL in another order.
    const char* const orders[][3] = {
        {"ROOT", "BIN", "TOOL"}, {"TOOL", "BIN", "ROOT"}, {"BIN", "TOOL", "ROOT"}, {"TOOL", "ROOT", "BIN"}};
    for (const auto& order : orders) {
        ProbeInstaller installer;
        installer.SetVar("PREFIX", "/usr");
        for (std::string name : order) {
            const char* expression = name == "ROOT" ? "$PREFIX/app" : name == "BIN" ? "$ROOT/bin" : "$BIN/tool";
            installer.SetVarExt(name.c_str(), "", expression, VARFLAG_RECALCULATE, nullptr);
        }
        installer.SetVar("PREFIX", "/opt");
        EXPECT_EQ(installer.value("TOOL"), "/opt/app/bin/tool") << order[0] << order[1] << order[2];
    }
}

TEST(Recalculation, AssignedValueHoldsUntilAnotherWrite)
{
    ProbeInstaller installer;
    installer.SetVar("PREFIX", "/usr");
    installer.SetVarExt("ROOT", "", "$PREFIX/app", VARFLAG_RECALCULATE, nullptr);
    installer.SetVarExt("DATA", "", "$ROOT/data", VARFLAG_RECALCULATE, nullptr);

    installer.SetVar("ROOT", "/manual");
    EXPECT_EQ(installer.value("ROOT"), "/manual");
    EXPECT_EQ(installer.value("DATA"), "/manual/data");
    installer.SetVar("OTHER", "x");  // a new record recalculates nothing
    EXPECT_EQ(installer.value("ROOT"), "/manual");
    installer.SetVar("OTHER", "y");
    EXPECT_EQ(installer.value("DATA"), "/usr/app/data");

    installer.suspendRecalculation = true;
    installer.SetVar("PREFIX", "/srv");
    EXPECT_EQ(installer.value("ROOT"), "/usr/app");
    installer.suspendRecalculation = false;
    installer.recalcVariables(-1);
    EXPECT_EQ(installer.value("DATA"), "/srv/app/data");
}

TEST(Recalculation, LongAndFailedResults)
{
    ProbeInstaller installer;
    installer.SetVar("PART", std::string(400, 'p').c_str());
    installer.SetVarExt("LONG", "", "$PART.$PART", VARFLAG_RECALCULATE, "dflt");
    installer.SetVarExt("BROKEN", "abcdefgh", "xy$MISSING", VARFLAG_RECALCULATE, nullptr);
    installer.SetVar("PART", std::string(400, 'q').c_str());

    // 801 characters are cut at the field, and the neighbouring fields stay whole.
    const VariableRecord& record = installer.variables[1];
    EXPECT_EQ(std::string(record.value), std::string(400, 'q') + "." + std::string(118, 'q'));
    EXPECT_STREQ(record.expression, "$PART.$PART");
    EXPECT_STREQ(record.defaultValue, "dflt");
    // A failed expansion writes over the start of the old value and leaves the rest.
    EXPECT_EQ(installer.value("BROKEN"), "xycdefgh");
}

} // namespace
