// The variable store: lookup with modifiers and the environment, setting, resetting,
// defaults, the clean-up of doubled slashes, the cuts at the field sizes, and the
// dependency-ordered recalculation.
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "installer/variables/variables_helpers.h"

TEST(VariableStore, LookupWithModifiers)
{
    // size: of the caller's buffer; result: FILE is record 1; expected: null where the buffer
    // is not looked at; warning: the whole log, null for a quiet lookup
    struct Case
    {
        const char* name;
        int size, result;
        const char* expected;
        const char* warning;
    } cases[] = {
        { "file", 1024, 1, "hello/world.txt", nullptr },
        { "FILE:2:5", 1024, 1, "llo/w", nullptr },
        { "FILE:#/:#.", 1024, 1, "world", nullptr },
        { "FILE::#.", 1024, 1, "hello/world", nullptr },
        { "FILE:#o:#o", 1024, 1, "/w", nullptr }, // the length search starts behind the start
        { "FILE:#abc", 1024, 1, "hello/world.txt", nullptr },
        { "FILE:14", 1024, 1, "t", nullptr },
        { "FILE:15", 1024, 1, "", nullptr },
        { "FILE:1:0", 1024, 1, "", nullptr },
        { "FILE:10:99", 1024, 1, "d.txt", nullptr },
        { "FILE:-3:2", 1024, 1, "he", nullptr }, // a negative start counts as 0
        { "FILE:a:3", 1024, 1, "hel",
            "WARNING: Invalid modifier used for substring of a variable: [FILE:a:3]\r\n" },
        { "FILE:6:5x", 1024, 1, "world.txt",
            "WARNING: Invalid modifier used for length of a substring of variable: [FILE:6:5x]\r\n" },
        { "FILE:2", 4, 1, "l", nullptr }, // modifiers work on what fitted the buffer
        { ":FILE", 1024, -1, nullptr, nullptr },
        { "operating_system:1:3", 1024, -2, "inu", nullptr },
        { "$QUILB_STORE_ENV", 1024, -2, "from/env", nullptr },
        // The whole argument names the environment variable; the warning names the base.
        { "$QUILB_STORE_ENV:1:3", 1024, -1, "",
            "WARNING: Environment variable \"QUILB_STORE_ENV\" is not defined!\r\n" },
    };
    setenv("QUILB_STORE_ENV", "from/env", 1);
    for (const auto& c : cases) {
        ProbeInstaller installer;
        installer.SetVar("OTHER", "x");
        installer.SetVar("FILE", "hello/world.txt");
        char buffer[1024] = "untouched";
        EXPECT_EQ(installer.GetVar(c.name, buffer, c.size), c.result) << c.name;
        EXPECT_TRUE(!c.expected || strcmp(buffer, c.expected) == 0) << c.name << ": " << buffer;
        EXPECT_EQ(installer.log.text(), c.warning ? c.warning : "") << c.name;
        EXPECT_EQ(installer.GetVar(c.name, nullptr, 0), c.result) << c.name;
    }
    unsetenv("QUILB_STORE_ENV");
}

TEST(VariableStore, SettingRecords)
{
    ProbeInstaller installer;
    // Of two spellings the later record answers, and a write takes the spelling of the call.
    installer.appendRecord("path", "first");
    installer.appendRecord("PATH", "second");
    EXPECT_EQ(installer.value("Path"), "second");
    EXPECT_EQ(installer.SetVar("pAtH", "third"), 0);
    EXPECT_STREQ(installer.variables[1].name, "pAtH");
    EXPECT_STREQ(installer.variables[0].value, "first");

    // A new record takes the default as its value; null arguments keep what is stored.
    EXPECT_EQ(installer.SetVarExt("A", nullptr, "$B//c", VARFLAG_RECALCULATE | VARFLAG_KEEP, "d//e"), 0);
    EXPECT_EQ(installer.record(2), std::to_string(VARFLAG_RECALCULATE) + "|d/e|$B/c|d/e");
    EXPECT_EQ(installer.SetVarExt("a", "http://x//y", nullptr, VARFLAG_VERBATIM, nullptr), 0);
    EXPECT_EQ(installer.record(2), std::to_string(VARFLAG_VERBATIM) + "|http://x//y|$B/c|d/e");
    EXPECT_EQ(installer.SetVar("A", "ftp://z//w"), 0); // keeps the flags, so stays verbatim
    EXPECT_STREQ(installer.variables[2].value, "ftp://z//w");

    // Fields are cut at their sizes; the name is found by its first 1023 characters.
    const std::string longName(1100, 'N'), longValue(600, 'v');
    EXPECT_EQ(installer.SetVarExt(longName.c_str(), longValue.c_str(), longValue.c_str(), 0, nullptr), 0);
    EXPECT_EQ(strlen(installer.variables[3].name), 1023u);
    EXPECT_EQ(strlen(installer.variables[3].expression), 519u);
    EXPECT_EQ(installer.GetVar(longName.substr(0, 1023).c_str(), nullptr, 0), 3);
}

TEST(VariableStore, NamesThatCanNotBeSetAndAssignmentTexts)
{
    ProbeInstaller installer;
    for (const char* name : { "", "operating_system", "HAVE_RPM" })
        EXPECT_EQ(installer.SetVar(name, "1"), -1) << name;
    EXPECT_EQ(installer.shellRuns, 1); // even the existence test runs the probe

    // "$NAME" writes the environment (value, else default), makes no record, gives -1.
    EXPECT_EQ(installer.SetVar("$QUILB_STORE_SET", "bar"), -1);
    EXPECT_EQ(installer.value("$QUILB_STORE_SET"), "bar");
    EXPECT_EQ(installer.SetVarExt("$QUILB_STORE_SET", nullptr, nullptr, 0, "fallback"), -1);
    EXPECT_STREQ(getenv("QUILB_STORE_SET"), "fallback");
    unsetenv("QUILB_STORE_SET");
    EXPECT_EQ(installer.variables.count, 0);

    const struct
    {
        const char* text;
        int result;
    } assignments[] = { { "[CUSTOMIZE]='1'", 0 }, { "  [MSG] = 'it's here' ", 0 }, { "[ONEQUOTE]='x", -1 },
        { "]NAME['v'", -1 }, { nullptr, -1 } };
    for (const auto& a : assignments)
        EXPECT_EQ(installer.SetVar(a.text), a.result) << (a.text ? a.text : "null");
    EXPECT_EQ(installer.variables.count, 2);
    EXPECT_EQ(installer.value("CUSTOMIZE") + "|" + installer.value("MSG"), "1|it's here");
}

TEST(VariableStore, ResetAndDefaults)
{
    ProbeInstaller installer;
    installer.SetVar("BASE", "/opt");
    installer.SetVarExt("DIR", "/manual", "$BASE/app", 0, "/default");
    const struct
    {
        const char* name;
        VariableResetType mode;
        std::string record;
    } resets[] = {
        { "DIR", VARRESET_RECALCULATE, std::to_string(VARFLAG_RECALCULATE) + "|/opt/app|$BASE/app|/default" },
        { "dir", VARRESET_DEFAULT, std::to_string(VARFLAG_RECALCULATE) + "|/default|$BASE/app|/default" },
        { "DIR", VARRESET_EXPRESSION, "0|/opt/app|$BASE/app|/default" },
    };
    for (const auto& reset : resets) {
        EXPECT_EQ(installer.ResetVar(reset.name, reset.mode), 0) << reset.mode;
        EXPECT_EQ(installer.record(1), reset.record);
    }
    EXPECT_EQ(installer.ResetVar("TEMP_DIR", VARRESET_DEFAULT), -1);

    char buffer[64];
    EXPECT_EQ(installer.GetVarDefaultValue("DIR", buffer, sizeof(buffer)), 1);
    EXPECT_STREQ(buffer, "/default");
    EXPECT_EQ(installer.GetVarDefaultValue("OPERATING_SYSTEM", buffer, sizeof(buffer)), -2);
    EXPECT_STREQ(buffer, "linux"); // no default: the value
}

TEST(Recalculation, UsersFollowWhatTheyUse)
{
    // Each row defines the chain ROOT <- BIN <- TOOL in another order.
    const char* const orders[][3] = { { "ROOT", "BIN", "TOOL" }, { "TOOL", "BIN", "ROOT" },
        { "BIN", "TOOL", "ROOT" }, { "TOOL", "ROOT", "BIN" } };
    for (const auto& order : orders) {
        ProbeInstaller installer;
        installer.SetVar("PREFIX", "/usr");
        for (std::string name : order) {
            const char* expression = name == "ROOT" ? "$PREFIX/app"
                : name == "BIN"                     ? "$ROOT/bin"
                                                    : "$BIN/tool";
            installer.SetVarExt(name.c_str(), "", expression, VARFLAG_RECALCULATE, nullptr);
        }
        installer.SetVar("PREFIX", "/opt");
        EXPECT_EQ(installer.value("TOOL"), "/opt/app/bin/tool") << order[0] << order[1] << order[2];
    }
}

TEST(Recalculation, AssignedSuspendedLongAndFailedValues)
{
    ProbeInstaller installer;
    installer.SetVar("PREFIX", "/usr");
    installer.SetVarExt("ROOT", "", "$PREFIX/app", VARFLAG_RECALCULATE, nullptr);
    installer.SetVarExt("DATA", "", "$ROOT/data", VARFLAG_RECALCULATE, nullptr);

    // An assigned value holds until some other existing variable is written.
    installer.SetVar("ROOT", "/manual");
    EXPECT_EQ(installer.value("ROOT") + " " + installer.value("DATA"), "/manual /manual/data");
    installer.SetVar("OTHER", "x"); // a new record recalculates nothing
    EXPECT_EQ(installer.value("ROOT"), "/manual");
    installer.SetVar("OTHER", "y");
    EXPECT_EQ(installer.value("DATA"), "/usr/app/data");

    installer.suspendRecalculation = true;
    installer.SetVar("PREFIX", "/srv");
    EXPECT_EQ(installer.value("ROOT"), "/usr/app");
    installer.suspendRecalculation = false;
    installer.recalcVariables(-1);
    EXPECT_EQ(installer.value("DATA"), "/srv/app/data");

    // 801 characters are cut at the field, and the neighbouring fields stay whole; a failed
    // expansion writes over the start of the old value and leaves the rest.
    installer.SetVarExt("LONG", "", "$PREFIX.$PREFIX", VARFLAG_RECALCULATE, "dflt");
    installer.SetVarExt("BROKEN", "abcdefgh", "xy$MISSING", VARFLAG_RECALCULATE, nullptr);
    installer.SetVar("PREFIX", std::string(400, 'q').c_str());
    EXPECT_EQ(installer.record(4),
        std::to_string(VARFLAG_RECALCULATE) + "|" + std::string(400, 'q') + "." + std::string(118, 'q')
            + "|$PREFIX.$PREFIX|dflt");
    EXPECT_EQ(installer.value("BROKEN"), "xycdefgh");
}
