// Template conditions: expansion, then the grammar of alternatives, clauses and operands.
#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "installer/variables/variables_helpers.h"

TEST(EvalCondition, Grammar)
{
    const std::string a1023(1023, 'a');
    // warnings: lines in the log
    const struct
    {
        const char* title;
        std::string text;
        int result, warnings;
    } cases[] = {
        { "empty condition", "", 1, 0 },
        { "false alternatives", "0 ; 4>5;5>=6", 0, 0 },
        { "hex without digits", "0x", 0, 0 },
        { "hex in either case, eight digits kept", " 0x10,0XfF==255,0x123456789==0x12345678", 1, 0 },
        { "hex with the bit pattern of an error", "0xFFFFFFFF", -1, 1 },
        { "hex with the bit pattern of a string", "0xFFFFFFFE==5", -1, 1 },
        { "octal, taking 9 as a digit", "010==8,09==9", 1, 0 },
        { "decimal wraps at 32 bits", "4294967297==1", 1, 0 },
        { "strings, empty or unclosed", "'abc','','x", 1, 0 },
        { "negative literal", "-1", -1, 1 },
        { "bare word", "yes", -1, 1 },
        { "single equals sign", "1=1", -1, 1 },
        { "operator without a right operand", "1==", -1, 1 },
        { "order operators, blanks around them", "2<3,3<=3,5>=5,4!=5,1 \t== \t1", 1, 0 },
        { "strings by bytes", "''=='','a'<'b'", 1, 0 },
        { "string case matters, or is ignored", "'A'=='a';'A'!~'a'", 0, 0 },
        { "case ignored", "'A'=~'a'", 1, 0 },
        { "case ignored on numbers", "1=~1", -1, 1 },
        { "string against number", "'a'==1", -1, 1 },
        { "number against string is false", "1=='a'", 0, 0 },
        { "number against string compares with -2", "1!='a',5>'x'", 1, 0 },
        { "strings are cut at 1023 characters", "'" + a1023 + "'=='" + a1023 + "b'", 1, 0 },
        { "and binds tighter than or", "1==1,0;1", 1, 0 },
        { "group, compared as a number", "1,(0;1),('a'=='a')==1", 1, 0 },
        { "group without closing parenthesis", "(1==1", 1, 0 },
        { "extra closing parenthesis ends parsing", "(1==1))", 1, 0 },
        { "error inside a group", "1,(1=1)", -1, 1 },
        { "every clause is parsed", "1;x", -1, 1 },
        { "trailing text is ignored", "1==1 junk", 1, 0 },
        { "trailing text after a false clause", "0 1", 0, 0 },
        { "variable", "[ONE]==1", 1, 0 },
        { "condition that expands to nothing", "[EMPTY]", -1, 1 },
        { "predefined in quotes", "'[WX_PORT]'=='linux_console'", 1, 0 },
        { "unknown variable stays as text", "[UNSET]==1", -1, 2 },
        { "unknown variable quoted on both sides", "'[UNSET]'=='[UNSET]'", 1, 2 },
    };
    for (const auto& c : cases) {
        ProbeInstaller installer;
        installer.SetVar("ONE", "1");
        installer.SetVar("EMPTY", "");
        EXPECT_EQ(installer.EvalCondition(c.text.c_str()), c.result) << c.title;
        const std::string& log = installer.log.text();
        EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), c.warnings) << c.title << "\n" << log;
        EXPECT_TRUE(c.result != -1
            || installer.logged("WARNING: Encountered errors in condition: \"" + c.text + "\"\r\n"))
            << c.title;
    }
    ProbeInstaller installer;
    EXPECT_EQ(installer.EvalCondition(nullptr), 1);
}

TEST(EvalCondition, BufferGrowsForLongExpansions)
{
    ProbeInstaller installer;
    installer.SetVar("PART", std::string(500, 'z').c_str());
    std::string side = "[PART][PART][PART][PART][PART]"; // 2500 characters once expanded
    std::string condition = "'" + side + "'=='" + side + "'";
    EXPECT_EQ(installer.conditionBuffer.capacity, 2048);
    EXPECT_EQ(installer.EvalCondition(condition.c_str()), 1);
    EXPECT_EQ(installer.conditionBuffer.capacity, 6144); // 5007 bytes, in steps of 2048
    EXPECT_EQ(std::string(installer.conditionBuffer.data),
        "'" + std::string(2500, 'z') + "'=='" + std::string(2500, 'z') + "'");
    // The buffer never shrinks.
    EXPECT_EQ(installer.EvalCondition("1"), 1);
    EXPECT_EQ(installer.conditionBuffer.capacity, 6144);
}
