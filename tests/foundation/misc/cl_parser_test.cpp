#include <gtest/gtest.h>

#include "foundation/misc/cl_parser.h"

namespace {

TEST(CLParser, ParsesNamesValuesAndFollowingArguments)
{
    const char* argv[] = {"installer", "-bin=/tmp/p.ibin", "--verbose", "-log", "\"/var/a b.log\"",
                          "-quiet", "-auto", "-VARIABLE_DIR=\"/opt/x\"", "-empty=", "loose", "-QUIET=2"};
    CLParser parser(sizeof argv / sizeof argv[0], argv);

    struct Expected {
        const char* name;
        const char* value; // null: no value
    };
    const Expected expected[] = {
        {"bin", "/tmp/p.ibin"}, {"verbose", nullptr}, {"log", "/var/a b.log"}, {"quiet", nullptr},
        {"auto", nullptr},      {"VARIABLE_DIR", "/opt/x"}, {"empty", ""},  {"", "loose"},
        {"QUIET", "2"},
    };
    ASSERT_EQ(parser.GetParamCount(), static_cast<int>(sizeof expected / sizeof expected[0]));
    for (int i = 0; i < parser.GetParamCount(); ++i) {
        EXPECT_STREQ(parser.GetParamName(i), expected[i].name) << i;
        if (expected[i].value) {
            EXPECT_STREQ(parser.GetParamValue(i), expected[i].value) << i;
        } else {
            EXPECT_EQ(parser.GetParamValue(i), nullptr) << i;
        }
    }
    EXPECT_EQ(parser.GetParamName(-1), nullptr);
    EXPECT_EQ(parser.GetParamName(parser.GetParamCount()), nullptr);
}

TEST(CLParser, FindNextParamIgnoresCaseAndStartsBehindAfter)
{
    const char* argv[] = {"p", "-Quiet", "-x=1", "-quiet=1", "-X=2"};
    CLParser parser(5, argv);
    struct Case {
        const char* name;
        int after;
        int index;
    };
    const Case cases[] = {
        {"quiet", -1, 0}, {"QUIET", 0, 2}, {"quiet", 2, -1}, {"x", -1, 1},     {"x", 1, 3},
        {"x", 3, -1},     {"x", 10, -1},   {"x", -5, -1},    {"missing", -1, -1}, {nullptr, -1, -1},
    };
    for (const Case& c : cases)
        EXPECT_EQ(parser.FindNextParam(c.name, c.after), c.index)
            << (c.name ? c.name : "(null)") << " after " << c.after;
    EXPECT_EQ(parser.FindLastParam("X"), 3);
    EXPECT_EQ(parser.FindLastParam("none"), -1);
}

} // namespace
