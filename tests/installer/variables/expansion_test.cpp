// The two expansion languages: [NAME] in template texts and $NAME in recalculation
// expressions.
#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "foundation/strings/char_string.h"
#include "installer/variables/variables_helpers.h"

static void fillStore(ProbeInstaller& installer)
{
    installer.SetVar("X", "hello");
    installer.SetVar("BRACKETS", "[X]");
    installer.SetVarExt("DIR", "/opt//app", nullptr, VARFLAG_VERBATIM, nullptr);
}

TEST(ExpandString, TemplateTexts)
{
    const std::string longName(1030, 'L');
    // warning: a line the log must hold; empty for a quiet expansion
    struct Case
    {
        std::string text;
        bool strict;
        std::string expected;
        int result;
        std::string warning;
    } cases[] = {
        { "", false, "", 0, "" },
        { "a[x]b[X]", false, "ahellobhello", 13, "" },
        { "a[ b [-X] [[X]]", false, "a[ b [-X] [hello]", 18, "" },
        { "a[X", false, "ahello", 7, "" },
        { "a[", false, "a[]", 4, "WARNING: Variable [] is not initialized in the expression: \"a[\"\r\n" },
        { "<[_U]>", false, "<[_U]>", 7,
            "WARNING: Variable [_U] is not initialized in the expression: \"<[_U]>\"\r\n" },
        { "<[X][_U]>", true, "", 0, "WARNING: Variable [_U] is not initialized" },
        { "[X]/[DIR]", true, "hello//opt//app", 16, "" },
        { "[BRACKETS]", false, "[X]", 4, "" },
        { "[X:1:3]-[DIR:#app]", false, "ell-", 5, "" },
        { "[GUI_INSTALL]==1", false, "0==1", 5, "" },
        { "[$QUILB_EXPAND_ENV]/x", false, "/home/q/x", 10, "" },
        { "[$QUILB_EXPAND_LONG]", false, std::string(519, 'e'), 520, "" },
        { "[$QUILB_EXPAND_UNSET]", false, "[$QUILB_EXPAND_UNSET]", 22,
            "WARNING: Environment variable \"QUILB_EXPAND_UNSET\" is not defined!\r\n" },
        // Reported as too long and as unknown; a log line stops at 1022 characters.
        { "[" + longName + "]", false, "[" + longName.substr(0, 1023) + "]", 1026,
            "WARNING: Variable [" + std::string(1003, 'L') + "\r\nWARNING: Variable [LLL" },
    };
    setenv("QUILB_EXPAND_ENV", "/home/q", 1);
    setenv("QUILB_EXPAND_LONG", std::string(600, 'e').c_str(), 1);
    for (const auto& c : cases) {
        ProbeInstaller installer;
        fillStore(installer);
        char buffer[2048] = "untouched";
        EXPECT_EQ(installer.ExpandString(c.text.c_str(), buffer, sizeof(buffer), c.strict), c.result)
            << c.text;
        EXPECT_EQ(buffer, c.expected) << c.text;
        EXPECT_TRUE(c.warning.empty() ? installer.log.text().empty() : installer.logged(c.warning))
            << c.text << "\n"
            << installer.log.text();

        // A null buffer measures; a small one holds the start and still counts everything.
        EXPECT_EQ(installer.ExpandString(c.text.c_str(), nullptr, 0, c.strict), c.result) << c.text;
        char small[4] = "###";
        EXPECT_EQ(installer.ExpandString(c.text.c_str(), small, sizeof(small), c.strict), c.result) << c.text;
        EXPECT_EQ(small, c.expected.substr(0, 3)) << c.text;
        // Into a string, which a failure leaves as it was.
        TeskUtils::CharString out("previous");
        EXPECT_EQ(installer.ExpandCharString(c.text.c_str(), out, c.strict), c.result) << c.text;
        EXPECT_STREQ(out.c_str(), c.result ? c.expected.c_str() : "previous") << c.text;
    }
    unsetenv("QUILB_EXPAND_ENV");
    unsetenv("QUILB_EXPAND_LONG");
}

TEST(ExpandVariables, RecalculationExpressions)
{
    // expected: null for a failure, which leaves the output unterminated
    struct Case
    {
        const char* expression;
        int size, result;
        const char* expected;
    } cases[] = {
        { "", 16, 1, "" },
        { "$X:1.$DIR", 32, 1, "hello:1./opt//app" },
        { "$X_2", 16, 0, nullptr }, // the name is the longest run
        { "$X$X", 16, 0, nullptr }, // '$' belongs to the run
        { "cost $", 16, 0, nullptr },
        { "$$QUILB_VARS_ENV!", 16, 1, "env!" },
        { "abc", 4, 1, "abc" },
        { "abcd", 4, 0, nullptr },
        { "$X", 5, 0, nullptr },
    };
    setenv("QUILB_VARS_ENV", "env", 1);
    for (const auto& c : cases) {
        ProbeInstaller installer;
        fillStore(installer);
        char buffer[64];
        memset(buffer, '#', sizeof(buffer));
        EXPECT_EQ(installer.expandVariables(c.expression, buffer, c.size), c.result) << c.expression;
        // A failure never writes the last byte of the output.
        EXPECT_TRUE(c.expected ? strcmp(buffer, c.expected) == 0 : buffer[c.size - 1] == '#') << c.expression;
    }
    unsetenv("QUILB_VARS_ENV");
}
