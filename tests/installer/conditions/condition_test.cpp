// Template conditions: expansion, then the grammar of alternatives, clauses and operands.
#include <string>

#include <gtest/gtest.h>

#include "installer/model/condition_parser.h"
#include "installer/variables/variables_helpers.h"

namespace {

struct ConditionCase {
    const char* title;
    std::string text;
    int result;
    int warnings;  // lines in the log
};

TEST(EvalCondition, Grammar)
{
    const std::string a1023(1023, 'a');
    const ConditionCase cases[] = {
        // Operands on their own.
        {"empty condition", "", 1, 0},
        {"zero", "0", 0, 0},
        {"one", "1", 1, 0},
        {"leading blank", " 1", 1, 0},
        {"hex", "0x10", 1, 0},
        {"hex zero", "0x0", 0, 0},
        {"hex without digits", "0x", 0, 0},
        {"hex in upper case", "0XfF==255", 1, 0},
        {"hex keeps eight digits", "0x123456789==0x12345678", 1, 0},
        {"hex with the bit pattern of an error", "0xFFFFFFFF", -1, 1},
        {"hex with the bit pattern of a string", "0xFFFFFFFE==5", -1, 1},
        {"octal", "010==8", 1, 0},
        {"octal takes 9 as a digit", "09==9", 1, 0},
        {"zero before an operator", "0==0", 1, 0},
        {"decimal wraps at 32 bits", "4294967297==1", 1, 0},
        {"string", "'abc'", 1, 0},
        {"empty string", "''", 1, 0},
        {"string without closing quote", "'abc", 1, 0},
        {"negative literal", "-1", -1, 1},
        {"bare word", "yes", -1, 1},
        // Comparisons.
        {"equal numbers", "1==1", 1, 0},
        {"single equals sign", "1=1", -1, 1},
        {"lone bang", "1!1", -1, 1},
        {"not equal", "4!=5", 1, 0},
        {"less", "2<3", 1, 0},
        {"less or equal", "3<=3", 1, 0},
        {"greater", "4>5", 0, 0},
        {"greater or equal", "5>=5", 1, 0},
        {"blanks around an operator", "1 \t== \t1", 1, 0},
        {"empty strings equal", "''==''", 1, 0},
        {"string order", "'a'<'b'", 1, 0},
        {"string order by bytes", "'b'<='a'", 0, 0},
        {"string case matters", "'A'=='a'", 0, 0},
        {"case ignored", "'A'=~'a'", 1, 0},
        {"case ignored, not equal", "'A'!~'a'", 0, 0},
        {"case ignored on numbers", "1=~1", -1, 1},
        {"case ignored with a number on the right", "'1'=~1", -1, 1},
        {"string against number", "'a'==1", -1, 1},
        {"number against string is false", "1=='a'", 0, 0},
        {"number against string, not equal", "1!='a'", 1, 0},
        {"number against string compares with -2", "5>'x'", 1, 0},
        {"operator without a right operand", "1==", -1, 1},
        {"strings are cut at 1023 characters", "'" + a1023 + "'=='" + a1023 + "b'", 1, 0},
        // Alternatives and clauses.
        {"and binds tighter than or", "1==1,0;1", 1, 0},
        {"and", "1,0", 0, 0},
        {"or of falses", "0;0", 0, 0},
        {"blanks before separators", "1 , 1 ; 0", 1, 0},
        {"group", "1,(0;1)", 1, 0},
        {"group false", "1,(0;0)", 0, 0},
        {"group compared as a number", "('a'=='a')==1", 1, 0},
        {"nested groups", "((1;0),(0;1))", 1, 0},
        {"group without closing parenthesis", "(1==1", 1, 0},
        {"extra closing parenthesis ends parsing", "(1==1))", 1, 0},
        {"error inside a group", "1,(1=1)", -1, 1},
        {"every clause is parsed", "1;x", -1, 1},
        {"every clause is parsed after a false one", "0,x", -1, 1},
        {"trailing text is ignored", "1==1 junk", 1, 0},
        {"trailing text after a false clause", "0 1", 0, 0},
        {"quote after a string ends parsing", "'it''s'", 1, 0},
        // Expansion first.
        {"variable", "[ONE]==1", 1, 0},
        {"variable in quotes", "'[PORT]'=='linux_console'", 1, 0},
        {"predefined", "[GUI_INSTALL]==1", 0, 0},
        {"condition that expands to nothing", "[EMPTY]", -1, 1},
        {"unknown variable stays as text", "[UNSET]==1", -1, 2},
        {"unknown variable quoted on both sides", "'[UNSET]'=='[UNSET]'", 1, 2},
    };
    for (const ConditionCase& c : cases) {
        ProbeInstaller installer;
        installer.SetVar("ONE", "1");
        installer.SetVar("EMPTY", "");
        installer.SetVar("PORT", "linux_console");
        EXPECT_EQ(installer.EvalCondition(c.text.c_str()), c.result) << c.title;
        const std::string& log = installer.log.text();
        int lines = 0;
        for (size_t at = log.find("\r\n"); at != std::string::npos; at = log.find("\r\n", at + 2))
            ++lines;
        EXPECT_EQ(lines, c.warnings) << c.title << "\n" << log;
        if (c.result == -1) {
            EXPECT_TRUE(installer.logged("WARNING: Encountered errors in condition: \"" + c.text + "\"\r\n"))
                << c.title;
        }
    }
    ProbeInstaller installer;
    EXPECT_EQ(installer.EvalCondition(nullptr), 1);
}

TEST(EvalCondition, BufferGrowsForLongExpansions)
{
    ProbeInstaller installer;
    const std::string part(500, 'z');
    installer.SetVar("PART", part.c_str());
    std::string side = "[PART][PART][PART][PART][PART]";  // 2500 characters once expanded
    std::string condition = "'" + side + "'=='" + side + "'";
    EXPECT_EQ(installer.conditionBuffer.capacity, 2048);
    EXPECT_EQ(installer.EvalCondition(condition.c_str()), 1);
    EXPECT_EQ(installer.conditionBuffer.capacity, 6144);  // 5007 bytes, in steps of 2048
    EXPECT_EQ(std::string(installer.conditionBuffer.data), "'" + std::string(2500, 'z') + "'=='" +
                                                               std::string(2500, 'z') + "'");
    // The buffer never shrinks.
    EXPECT_EQ(installer.EvalCondition("1"), 1);
    EXPECT_EQ(installer.conditionBuffer.capacity, 6144);
}

TEST(ConditionParser, PositionsAfterOperands)
{
    struct Case {
        const char* text;
        int value;
        int end;  // position after the operand
        const char* string;
    } cases[] = {
        {"  42 rest", 42, 4, nullptr},
        {"'ab'c", -2, 4, "ab"},
        {"'abcdef", -2, 4, "abc"},  // cut by a buffer of 4: the position stays inside
        {"'abc'x", -2, 5, "abc"},   // exactly fits: the closing quote is stepped over
        {"0", 0, 1, nullptr},
        {"0z", 0, 1, nullptr},
        {"0x1g", 1, 3, nullptr},
        {"(1;0) tail", 1, 5, nullptr},
        {"(1=1)", -1, 2, nullptr},  // stops at the bad operator
        {"(1==)", -1, 5, nullptr},  // a parenthesis at the error is stepped over
        {"(1=1", -1, 2, nullptr},
        {"-1", -1, 0, nullptr},
    };
    for (const Case& c : cases) {
        char buffer[4] = "";
        int pos = 0;
        EXPECT_EQ(ConditionParser::getString(c.text, pos, buffer, sizeof(buffer)), c.value) << c.text;
        EXPECT_EQ(pos, c.end) << c.text;
        if (c.string) {
            EXPECT_STREQ(buffer, c.string) << c.text;
        }
    }
}

} // namespace
