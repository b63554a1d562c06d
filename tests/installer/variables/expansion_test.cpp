// The two expansion languages: [NAME] in template texts and $NAME in recalculation
// expressions.
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "foundation/strings/char_string.h"
#include "installer/variables/variables_helpers.h"

namespace {

void fillStore(ProbeInstaller& installer)
{
    installer.SetVar("X", "hello");
    installer.SetVar("EMPTY", "");
    installer.SetVar("BRACKETS", "[X]");
    installer.SetVarExt("DIR", "/opt//app", nullptr, VARFLAG_VERBATIM, nullptr);
}

struct ExpandCase {
    const char* title;
    std::string text;
    bool strict;
    std::string expected;
    int result;
    std::string warning;  // a line the log must hold, or empty for a quiet expansion
};

TEST(ExpandString, TemplateTexts)
{
    const std::string longName(1030, 'L');
    const std::string longEnv(600, 'e');
    const ExpandCase cases[] = {
        {"empty text", "", false, "", 0, ""},
        {"no reference", "plain text", false, "plain text", 11, ""},
        {"one reference", "[X]", false, "hello", 6, ""},
        {"reference inside text", "a[X]b[X]", false, "ahellobhello", 13, ""},
        {"lookup ignores case", "[x]", false, "hello", 6, ""},
        {"empty value", "<[EMPTY]>", false, "<>", 3, ""},
        {"bracket before a blank stays", "a[ b", false, "a[ b", 5, ""},
        {"bracket before a dash stays", "[-X]", false, "[-X]", 5, ""},
        {"doubled bracket stays once", "[[X]]", false, "[hello]", 8, ""},
        {"bracket at the end is an empty name", "a[", false, "a[]", 4,
         "WARNING: Variable [] is not initialized in the expression: \"a[\"\r\n"},
        {"unclosed reference runs to the end", "a[X", false, "ahello", 7, ""},
        {"unknown reference stays as text", "<[UNSET]>", false, "<[UNSET]>", 10,
         "WARNING: Variable [UNSET] is not initialized in the expression: \"<[UNSET]>\"\r\n"},
        {"unknown reference with underscore", "[_U1]", false, "[_U1]", 6,
         "WARNING: Variable [_U1] is not initialized in the expression: \"[_U1]\"\r\n"},
        {"strict fails on an unknown reference", "<[X][UNSET]>", true, "", 0,
         "WARNING: Variable [UNSET] is not initialized in the expression: \"<[X][UNSET]>\"\r\n"},
        {"strict passes known references", "[X]/[DIR]", true, "hello//opt//app", 16, ""},
        {"values are not expanded again", "[BRACKETS]", false, "[X]", 4, ""},
        {"modifiers", "[X:1:3]-[DIR:#app]", false, "ell-", 5, ""},
        {"predefined", "[GUI_INSTALL]==1", false, "0==1", 5, ""},
        {"predefined port", "'[WX_PORT]'=='linux_gtk'", false, "'linux_console'=='linux_gtk'", 29, ""},
        {"environment", "[$QUILB_EXPAND_ENV]/x", false, "/home/q/x", 10, ""},
        {"unset environment stays as text", "[$QUILB_EXPAND_UNSET]", false, "[$QUILB_EXPAND_UNSET]", 22,
         "WARNING: Environment variable \"QUILB_EXPAND_UNSET\" is not defined!\r\n"},
        {"value contributes at most 519 characters", "[$QUILB_EXPAND_LONG]", false, std::string(519, 'e'), 520,
         ""},
        // Reported twice, as too long and as unknown; log lines stop at 1022 characters.
        {"too long a name is cut", "[" + longName + "]", false, "[" + longName.substr(0, 1023) + "]", 1026,
         "WARNING: Variable [" + std::string(1003, 'L') + "\r\nWARNING: Variable [LLL"},
    };
    setenv("QUILB_EXPAND_ENV", "/home/q", 1);
    setenv("QUILB_EXPAND_LONG", longEnv.c_str(), 1);
    unsetenv("QUILB_EXPAND_UNSET");

    for (const ExpandCase& c : cases) {
        ProbeInstaller installer;
        fillStore(installer);
        char buffer[2048];
        memset(buffer, '#', sizeof(buffer));
        EXPECT_EQ(installer.ExpandString(c.text.c_str(), buffer, sizeof(buffer), c.strict), c.result) << c.title;
        EXPECT_EQ(std::string(buffer), c.expected) << c.title;
        if (!c.warning.empty())
            EXPECT_TRUE(installer.logged(c.warning)) << c.title << "\n" << installer.log.text();
        else
            EXPECT_EQ(installer.log.text(), "") << c.title;

        // A null buffer measures; a small one holds the start and still counts everything.
        EXPECT_EQ(installer.ExpandString(c.text.c_str(), nullptr, 0, c.strict), c.result) << c.title;
        char small[4];
        memset(small, '#', sizeof(small));
        EXPECT_EQ(installer.ExpandString(c.text.c_str(), small, sizeof(small), c.strict), c.result) << c.title;
        EXPECT_EQ(std::string(small), c.expected.substr(0, 3)) << c.title;
    }
    unsetenv("QUILB_EXPAND_ENV");
    unsetenv("QUILB_EXPAND_LONG");
}

TEST(ExpandString, NullTextAndCharString)
{
    ProbeInstaller installer;
    fillStore(installer);
    char buffer[8] = "old";
    EXPECT_EQ(installer.ExpandString(nullptr, buffer, sizeof(buffer), false), 0);
    EXPECT_STREQ(buffer, "");

    TeskUtils::CharString out("previous");
    TeskUtils::CharString shared = out;
    EXPECT_EQ(installer.ExpandCharString("[X] and [X]", out, false), 16);
    EXPECT_STREQ(out.c_str(), "hello and hello");
    EXPECT_STREQ(shared.c_str(), "previous");

    // A failed strict expansion leaves the string as it was.
    EXPECT_EQ(installer.ExpandCharString("[UNSET]", out, true), 0);
    EXPECT_STREQ(out.c_str(), "hello and hello");
    TeskUtils::CharString unset;
    EXPECT_EQ(installer.ExpandCharString("", unset, false), 0);
    EXPECT_TRUE(unset.isNull());
}

struct VariablesCase {
    const char* title;
    const char* expression;
    int size;
    int result;
    const char* expected;  // null for a failure, which leaves the output unterminated
};

TEST(ExpandVariables, RecalculationExpressions)
{
    const VariablesCase cases[] = {
        {"empty expression", "", 16, 1, ""},
        {"no reference", "abc", 16, 1, "abc"},
        {"reference", "$X/y", 16, 1, "hello/y"},
        {"name ends at a colon", "$X:1", 16, 1, "hello:1"},
        {"name ends at a dot", "$DIR.bak", 32, 1, "/opt//app.bak"},
        {"longest run of name characters", "$X_2", 16, 0, nullptr},
        {"dollar inside a run belongs to the name", "$X$X", 16, 0, nullptr},
        {"unknown name fails", "a$UNSET", 16, 0, nullptr},
        {"lone dollar is an empty name", "cost $", 16, 0, nullptr},
        {"doubled dollar reads the environment", "$$QUILB_VARS_ENV!", 16, 1, "env!"},
        {"text that fills the output", "abc", 4, 1, "abc"},
        {"text one too long", "abcd", 4, 0, nullptr},
        {"value that fills the output", "$X", 6, 1, "hello"},
        {"value one too long", "$X", 5, 0, nullptr},
    };
    setenv("QUILB_VARS_ENV", "env", 1);
    for (const VariablesCase& c : cases) {
        ProbeInstaller installer;
        fillStore(installer);
        char buffer[64];
        memset(buffer, '#', sizeof(buffer) - 1);
        buffer[sizeof(buffer) - 1] = '\0';
        EXPECT_EQ(installer.expandVariables(c.expression, buffer, c.size), c.result) << c.title;
        if (c.expected) {
            EXPECT_STREQ(buffer, c.expected) << c.title;
        } else {  // a failure never writes the last byte of the output
            EXPECT_EQ(buffer[c.size - 1], '#') << c.title;
        }
    }
    unsetenv("QUILB_VARS_ENV");
}

} // namespace
