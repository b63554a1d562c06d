// The variable store: lookup with modifiers, the environment, setting and resetting records,
// defaults, the clean-up of doubled slashes and the cuts at the field sizes.
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "installer/variables/variables_helpers.h"

namespace {

struct LookupCase {
    const char* title;
    const char* name;
    int size;               // of the caller's buffer
    int result;             // 0 for the record's index
    const char* expected;   // null where the buffer is not to be looked at
    const char* warning;    // a line the log must hold, or null for a quiet lookup
};

TEST(VariableStore, LookupWithModifiers)
{
    const LookupCase cases[] = {
        {"whole value", "FILE", 1024, 0, "hello/world.txt", nullptr},
        {"name in other case", "file", 1024, 0, "hello/world.txt", nullptr},
        {"start and length", "FILE:2:5", 1024, 0, "llo/w", nullptr},
        {"start only", "FILE:6", 1024, 0, "world.txt", nullptr},
        {"length only", "FILE::5", 1024, 0, "hello", nullptr},
        {"after a search", "FILE:#/", 1024, 0, "world.txt", nullptr},
        {"before a search", "FILE::#.", 1024, 0, "hello/world", nullptr},
        {"between two searches", "FILE:#/:#.", 1024, 0, "world", nullptr},
        {"search then length", "FILE:#/:3", 1024, 0, "wor", nullptr},
        {"start then search", "FILE:3:#/", 1024, 0, "lo", nullptr},
        {"length search starts behind the start", "FILE:#o:#o", 1024, 0, "/w", nullptr},
        {"search that fails keeps all", "FILE:#abc", 1024, 0, "hello/world.txt", nullptr},
        {"length search that fails keeps all", "FILE::#abc", 1024, 0, "hello/world.txt", nullptr},
        {"start at the length is empty", "FILE:15", 1024, 0, "", nullptr},
        {"start one before the end", "FILE:14", 1024, 0, "t", nullptr},
        {"start beyond the value is empty", "FILE:99", 1024, 0, "", nullptr},
        {"zero length is empty", "FILE:1:0", 1024, 0, "", nullptr},
        {"length beyond the value keeps the rest", "FILE:10:99", 1024, 0, "d.txt", nullptr},
        {"negative start counts from the start", "FILE:-3:2", 1024, 0, "he", nullptr},
        {"negative length is empty", "FILE:0:-1", 1024, 0, "", nullptr},
        {"empty tokens change nothing", "FILE::", 1024, 0, "hello/world.txt", nullptr},
        {"bad start is ignored with a warning", "FILE:a:3", 1024, 0, "hel",
         "WARNING: Invalid modifier used for substring of a variable: [FILE:a:3]\r\n"},
        {"bad length is ignored with a warning", "FILE:6:5x", 1024, 0, "world.txt",
         "WARNING: Invalid modifier used for length of a substring of variable: [FILE:6:5x]\r\n"},
        {"modifiers cut the value as it fits the buffer", "FILE:2", 4, 0, "l", nullptr},
        {"small buffer", "FILE", 6, 0, "hello", nullptr},
        {"unknown name", "NOPE", 1024, -1, nullptr, nullptr},
        {"unknown name with modifiers", "NOPE:1:2", 1024, -1, nullptr, nullptr},
        {"name beginning with a colon", ":FILE", 1024, -1, nullptr, nullptr},
        {"predefined name", "OPERATING_SYSTEM", 1024, -2, "linux", nullptr},
        {"predefined name with modifiers", "operating_system:1:3", 1024, -2, "inu", nullptr},
        {"environment", "$QUILB_STORE_ENV", 1024, -2, "from/env", nullptr},
        {"environment takes the modifiers into its name", "$QUILB_STORE_ENV:1:3", 1024, -1, "",
         "WARNING: Environment variable \"QUILB_STORE_ENV\" is not defined!\r\n"},
        {"environment variable that is not set", "$QUILB_STORE_UNSET", 1024, -1, "",
         "WARNING: Environment variable \"QUILB_STORE_UNSET\" is not defined!\r\n"},
    };
    setenv("QUILB_STORE_ENV", "from/env", 1);
    unsetenv("QUILB_STORE_UNSET");

    for (const LookupCase& c : cases) {
        ProbeInstaller installer;
        installer.SetVarExt("OTHER", "x", nullptr, 0, nullptr);
        installer.SetVarExt("FILE", "hello/world.txt", nullptr, 0, nullptr);
        char buffer[1024];
        memset(buffer, '#', sizeof(buffer) - 1);
        buffer[sizeof(buffer) - 1] = '\0';
        int result = installer.GetVar(c.name, buffer, c.size);
        EXPECT_EQ(result, c.result == 0 ? 1 : c.result) << c.title;
        if (c.expected) {
            EXPECT_STREQ(buffer, c.expected) << c.title;
        }
        if (c.warning)
            EXPECT_TRUE(installer.logged(c.warning)) << c.title << "\n" << installer.log.text();
        else
            EXPECT_EQ(installer.log.text(), "") << c.title;
        // Looking without a buffer gives the same answer and writes nothing.
        EXPECT_EQ(installer.GetVar(c.name, nullptr, 0), result) << c.title;
    }
    unsetenv("QUILB_STORE_ENV");
}

TEST(VariableStore, LaterRecordWinsAmongSpellings)
{
    ProbeInstaller installer;
    installer.appendRecord("path", "first");
    installer.appendRecord("PATH", "second");
    char buffer[32];
    EXPECT_EQ(installer.GetVar("Path", buffer, sizeof(buffer)), 1);
    EXPECT_STREQ(buffer, "second");

    // Setting goes to the record that answers, and takes the spelling of the call.
    EXPECT_EQ(installer.SetVar("pAtH", "third"), 0);
    EXPECT_EQ(installer.variables.count, 2);
    EXPECT_STREQ(installer.variables[1].name, "pAtH");
    EXPECT_STREQ(installer.variables[1].value, "third");
    EXPECT_STREQ(installer.variables[0].value, "first");
}

TEST(VariableStore, NewAndChangedRecords)
{
    ProbeInstaller installer;
    // A new record takes the default as its value when none is given.
    EXPECT_EQ(installer.SetVarExt("A", nullptr, "$B", VARFLAG_RECALCULATE | VARFLAG_KEEP, "dflt"), 0);
    ASSERT_EQ(installer.variables.count, 1);
    EXPECT_EQ(installer.variables[0].flags, static_cast<uint32_t>(VARFLAG_RECALCULATE));
    EXPECT_STREQ(installer.variables[0].value, "dflt");
    EXPECT_STREQ(installer.variables[0].defaultValue, "dflt");
    EXPECT_STREQ(installer.variables[0].expression, "$B");

    // Null arguments keep what is stored; the keep mask keeps the flags.
    EXPECT_EQ(installer.SetVarExt("a", "v", nullptr, VARFLAG_KEEP, nullptr), 0);
    EXPECT_STREQ(installer.variables[0].value, "v");
    EXPECT_STREQ(installer.variables[0].defaultValue, "dflt");
    EXPECT_STREQ(installer.variables[0].expression, "$B");
    EXPECT_EQ(installer.variables[0].flags, static_cast<uint32_t>(VARFLAG_RECALCULATE));

    // Explicit flags replace the stored ones.
    EXPECT_EQ(installer.SetVarExt("A", nullptr, nullptr, VARFLAG_VERBATIM, "d2"), 0);
    EXPECT_EQ(installer.variables[0].flags, static_cast<uint32_t>(VARFLAG_VERBATIM));
    EXPECT_STREQ(installer.variables[0].defaultValue, "d2");
    EXPECT_STREQ(installer.variables[0].value, "v");

    // A null value and default on a new record give an empty value.
    EXPECT_EQ(installer.SetVar("EMPTY", nullptr), 0);
    EXPECT_EQ(installer.value("EMPTY"), "");
}

TEST(VariableStore, NamesThatCanNotBeSet)
{
    ProbeInstaller installer;
    EXPECT_EQ(installer.SetVar(nullptr, "1"), -1);
    EXPECT_EQ(installer.SetVar("", "1"), -1);
    EXPECT_EQ(installer.SetVar("operating_system", "dos"), -1);
    EXPECT_EQ(installer.value("OPERATING_SYSTEM"), "linux");

    // The probe behind HAVE_RPM runs even for the existence test of a write.
    EXPECT_EQ(installer.SetVar("HAVE_RPM", "1"), -1);
    EXPECT_EQ(installer.shellRuns, 1);
    EXPECT_EQ(installer.variables.count, 0);

    // "$NAME" writes the environment, makes no record and reports -1.
    unsetenv("QUILB_STORE_SET");
    EXPECT_EQ(installer.SetVar("$QUILB_STORE_SET", "bar"), -1);
    ASSERT_NE(getenv("QUILB_STORE_SET"), nullptr);
    EXPECT_STREQ(getenv("QUILB_STORE_SET"), "bar");
    EXPECT_EQ(installer.value("$QUILB_STORE_SET"), "bar");
    EXPECT_EQ(installer.SetVarExt("$QUILB_STORE_SET", nullptr, nullptr, 0, "fallback"), -1);
    EXPECT_STREQ(getenv("QUILB_STORE_SET"), "fallback");
    EXPECT_EQ(installer.variables.count, 0);
    unsetenv("QUILB_STORE_SET");
}

TEST(VariableStore, AssignmentText)
{
    struct Case {
        const char* text;
        int result;
        const char* name;
        const char* value;
    } cases[] = {
        {"[CUSTOMIZE]='1'", 0, "CUSTOMIZE", "1"},
        {"[MSG]='it's here'", 0, "MSG", "it's here"},
        {"  [SPACED] = 'v' ", 0, "SPACED", "v"},
        {"[EMPTYVALUE]=''", 0, "EMPTYVALUE", ""},
        {"[ONEQUOTE]='x", -1, nullptr, nullptr},
        {"[BACKWARDS='x']", 0, "BACKWARDS='x'", "x"},
        {"]NAME['v'", -1, nullptr, nullptr},
    };
    for (const Case& c : cases) {
        ProbeInstaller installer;
        EXPECT_EQ(installer.SetVar(c.text), c.result) << c.text;
        if (c.name) {
            ASSERT_EQ(installer.variables.count, 1) << c.text;
            EXPECT_STREQ(installer.variables[0].name, c.name) << c.text;
            EXPECT_STREQ(installer.variables[0].value, c.value) << c.text;
        } else {
            EXPECT_EQ(installer.variables.count, 0) << c.text;
        }
    }
    ProbeInstaller installer;
    EXPECT_EQ(installer.SetVar(static_cast<const char*>(nullptr)), -1);
}

TEST(VariableStore, SlashCleanUpUnlessVerbatim)
{
    ProbeInstaller installer;
    installer.SetVarExt("P", "a//b\\\\c///d", "$X//y", 0, "http://host//x");
    EXPECT_STREQ(installer.variables[0].value, "a/b\\c/d");
    EXPECT_STREQ(installer.variables[0].expression, "$X/y");
    EXPECT_STREQ(installer.variables[0].defaultValue, "http:/host/x");

    installer.SetVarExt("U", "http://host//x", nullptr, VARFLAG_VERBATIM, nullptr);
    EXPECT_STREQ(installer.variables[1].value, "http://host//x");
    // A change that keeps the flags stays verbatim.
    installer.SetVar("U", "ftp://a//b");
    EXPECT_EQ(installer.value("U"), "ftp://a//b");
    // Clearing the flag cleans up all three fields of the record at once.
    installer.SetVarExt("U", nullptr, nullptr, 0, nullptr);
    EXPECT_EQ(installer.value("U"), "ftp:/a/b");
}

TEST(VariableStore, FieldsAreCut)
{
    ProbeInstaller installer;
    std::string longName(1100, 'N');
    std::string longValue(600, 'v');
    EXPECT_EQ(installer.SetVarExt(longName.c_str(), longValue.c_str(), longValue.c_str(), 0, longValue.c_str()), 0);
    const VariableRecord& record = installer.variables[0];
    EXPECT_EQ(strlen(record.name), 1023u);
    EXPECT_EQ(strlen(record.value), 519u);
    EXPECT_EQ(strlen(record.expression), 519u);
    EXPECT_EQ(strlen(record.defaultValue), 519u);
    // The name is found under its first 1023 characters.
    EXPECT_EQ(installer.GetVar(longName.substr(0, 1023).c_str(), nullptr, 0), 0);
}

TEST(VariableStore, ResetAndDefaults)
{
    ProbeInstaller installer;
    installer.SetVar("BASE", "/opt");
    installer.SetVarExt("DIR", "/manual", "$BASE/app", 0, "/default");

    EXPECT_EQ(installer.ResetVar("DIR", VARRESET_RECALCULATE), 0);
    EXPECT_EQ(installer.value("DIR"), "/opt/app");
    EXPECT_TRUE(installer.variables[1].flags & VARFLAG_RECALCULATE);

    EXPECT_EQ(installer.ResetVar("dir", VARRESET_DEFAULT), 0);
    EXPECT_EQ(installer.value("DIR"), "/default");
    EXPECT_TRUE(installer.variables[1].flags & VARFLAG_RECALCULATE);

    EXPECT_EQ(installer.ResetVar("DIR", VARRESET_EXPRESSION), 0);
    EXPECT_EQ(installer.value("DIR"), "/opt/app");
    EXPECT_FALSE(installer.variables[1].flags & VARFLAG_RECALCULATE);

    EXPECT_EQ(installer.ResetVar("NOPE", VARRESET_DEFAULT), -1);
    EXPECT_EQ(installer.ResetVar("TEMP_DIR", VARRESET_DEFAULT), -1);
    EXPECT_EQ(installer.ResetVar(nullptr, VARRESET_DEFAULT), -1);

    char buffer[64];
    EXPECT_EQ(installer.GetVarDefaultValue("DIR", buffer, sizeof(buffer)), 1);
    EXPECT_STREQ(buffer, "/default");
    EXPECT_EQ(installer.GetVarDefaultValue("OPERATING_SYSTEM", buffer, sizeof(buffer)), -2);
    EXPECT_STREQ(buffer, "linux");
    EXPECT_EQ(installer.GetVarDefaultValue("NOPE", buffer, sizeof(buffer)), -1);
    EXPECT_EQ(installer.GetVarDefaultValue("DIR", nullptr, 0), -1);
    EXPECT_EQ(installer.GetVarDefaultValue(nullptr, buffer, sizeof(buffer)), -1);
}

} // namespace
