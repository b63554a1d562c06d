#include <gtest/gtest.h>

#include "foundation/misc/cl_parser.h"

namespace {

TEST(CLParser, NamesValuesAndLookupIgnoringCase)
{
    const char* argv[] = { "installer", "-bin=/tmp/p.ibin", "--verbose", "-log", "\"/var/a b.log\"", "-quiet",
        "-VARIABLE_DIR=\"/opt/x\"", "-empty=", "loose", "-QUIET=2" };
    CLParser parser(sizeof argv / sizeof argv[0], argv);
    struct Expected
    {
        const char *name, *value;
    }; // value null: none
    const Expected expected[]
        = { { "bin", "/tmp/p.ibin" }, { "verbose", nullptr }, { "log", "/var/a b.log" }, { "quiet", nullptr },
              { "VARIABLE_DIR", "/opt/x" }, { "empty", "" }, { "", "loose" }, { "QUIET", "2" } };
    ASSERT_EQ(parser.GetParamCount(), 8);
    for (int i = 0; i < 8; ++i) {
        EXPECT_STREQ(parser.GetParamName(i), expected[i].name) << i;
        EXPECT_STREQ(parser.GetParamValue(i), expected[i].value) << i;
    }

    struct Find
    {
        const char* name;
        int after, index;
    };
    const Find finds[] = { { "quiet", -1, 3 }, { "Quiet", 3, 7 }, { "quiet", 7, -1 }, { "QUIET", 20, -1 },
        { "missing", -1, -1 }, { nullptr, -1, -1 } };
    for (const Find& f : finds)
        EXPECT_EQ(parser.FindNextParam(f.name, f.after), f.index)
            << (f.name ? f.name : "(null)") << " " << f.after;
    EXPECT_EQ(parser.FindLastParam("quiet"), 7);
}

} // namespace
