// Recalculated variables: dependency order, the variable just written, suspension, and the
// cut of long results at the value field.
#include <string>

#include <gtest/gtest.h>

#include "installer/variables/variables_helpers.h"

namespace {

const unsigned kRecalc = VARFLAG_RECALCULATE;

TEST(Recalculation, UsersFollowWhatTheyUseInAnyDefinitionOrder)
{
    // Each row defines the three recalculated variables in another order.
    const char* const orders[][3] = {
        {"ROOT", "BIN", "TOOL"},
        {"TOOL", "BIN", "ROOT"},
        {"BIN", "TOOL", "ROOT"},
        {"TOOL", "ROOT", "BIN"},
    };
    for (const auto& order : orders) {
        ProbeInstaller installer;
        installer.SetVar("PREFIX", "/usr");
        for (const char* name : order) {
            const char* expression = std::string(name) == "ROOT" ? "$PREFIX/app"
                                   : std::string(name) == "BIN" ? "$ROOT/bin"
                                                                : "$BIN/tool";
            installer.SetVarExt(name, "", expression, kRecalc, nullptr);
        }
        installer.SetVar("PREFIX", "/opt");
        std::string title = std::string(order[0]) + "," + order[1] + "," + order[2];
        EXPECT_EQ(installer.value("ROOT"), "/opt/app") << title;
        EXPECT_EQ(installer.value("BIN"), "/opt/app/bin") << title;
        EXPECT_EQ(installer.value("TOOL"), "/opt/app/bin/tool") << title;
    }
}

TEST(Recalculation, AssignedValueHoldsUntilAnotherWrite)
{
    ProbeInstaller installer;
    installer.SetVar("PREFIX", "/usr");
    installer.SetVarExt("ROOT", "", "$PREFIX/app", kRecalc, nullptr);
    installer.SetVarExt("DATA", "", "$ROOT/data", kRecalc, nullptr);

    // The record just written keeps its value; the others follow it.
    installer.SetVar("ROOT", "/manual");
    EXPECT_EQ(installer.value("ROOT"), "/manual");
    EXPECT_EQ(installer.value("DATA"), "/manual/data");

    installer.SetVar("OTHER", "x");  // a new record: nothing is recalculated
    EXPECT_EQ(installer.value("ROOT"), "/manual");
    installer.SetVar("OTHER", "y");
    EXPECT_EQ(installer.value("ROOT"), "/usr/app");
    EXPECT_EQ(installer.value("DATA"), "/usr/app/data");

    // While suspended, writes recalculate nothing; an explicit call afterwards catches up.
    installer.suspendRecalculation = true;
    installer.SetVar("PREFIX", "/srv");
    EXPECT_EQ(installer.value("ROOT"), "/usr/app");
    installer.suspendRecalculation = false;
    installer.recalcVariables(-1);
    EXPECT_EQ(installer.value("ROOT"), "/srv/app");
    EXPECT_EQ(installer.value("DATA"), "/srv/app/data");
}

TEST(Recalculation, LongAndFailedResults)
{
    ProbeInstaller installer;
    installer.SetVar("PART", std::string(400, 'p').c_str());
    installer.SetVarExt("LONG", "", "$PART.$PART", kRecalc, "dflt");
    installer.SetVarExt("BROKEN", "abcdefgh", "xy$MISSING", kRecalc, nullptr);
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
