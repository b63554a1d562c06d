#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

#include "foundation/misc/installer_string_utils.h"
#include "foundation/misc/path_utils.h"

namespace {

TEST(CanonicalPath, NormalFormAndItsDirectoryAndFileParts)
{
    struct Case
    {
        const char *path, *canonical, *dir, *file;
    };
    const Case cases[] = {
        { "./a//b/../c", "a/c", "a", "c" },
        { "//usr///lib", "/usr/lib", "/usr", "lib" },
        { "/a/./b/", "/a/b/", "/a/b", "" },
        { "/a/b/..", "/a", "", "a" },
        { "a/..", "", "", "" },
        { "a/../../b", "../b", "..", "b" },
        { "../../x", "../../x", "../..", "x" },
        { "/..", "/..", "", ".." },
        { "file", "file", "file", "file" },
        { "", "", "", "" },
    };
    for (const Case& c : cases) {
        EXPECT_STREQ(TeskUtils::uniCanonicalPath(c.path).c_str(), c.canonical) << c.path;
        EXPECT_STREQ(TeskUtils::uniGetFileDir(c.path).c_str(), c.dir) << c.path;
        EXPECT_STREQ(TeskUtils::uniGetFilenameFromPath(c.path).c_str(), c.file) << c.path;
    }
}

TEST(PathCorrection, DelimitersTurnedAndCollapsedButALeadingDoubleSlashStays)
{
    struct Case
    {
        const char* path;
        char slash;
        const char* result;
        int changes;
    }; // slash 0: uniCorrectPathString; changes -1: some
    const Case cases[] = {
        { "a\\b//c", '/', "a/b/c", 2 },
        { "//server/share", '/', "//server/share", 0 },
        { "\\\\\\x", '/', "//x", 4 },
        { "a/b", '\\', "a\\b", 1 },
        { "  /opt/my app \t/bin\n", 0, "/opt/my app/bin", -1 },
        { "C:\\dir\\\\sub", 0, "C:/dir/sub", -1 },
        { "/a  //b", 0, "/a/b", -1 },
        { " //share/x ", 0, "//share/x", -1 },
        { "/already/clean", 0, "/already/clean", 0 },
        { "", 0, "", 0 },
    };
    for (const Case& c : cases) {
        char path[64];
        strcpy(path, c.path);
        int changes = c.slash ? TeskUtils::uniFixPathDelimiters(path, c.slash)
                              : TeskUtils::uniCorrectPathString(path);
        EXPECT_STREQ(path, c.result) << c.path;
        EXPECT_TRUE(c.changes < 0 ? changes > 0 : changes == c.changes) << c.path << ": " << changes;
    }
}

TEST(StripExt, CutsOnlyARealLastExtension)
{
    struct Case
    {
        const char* name;
        int result;
        const char* stripped;
    };
    const Case cases[] = {
        { "a.tar.gz", 1, "a.tar" },
        { "/opt.d/file", 0, "/opt.d/file" },
        { "d\\x.y\\f", 0, "d\\x.y\\f" },
        { ".hidden", 0, ".hidden" },
        { "a/.b", 0, "a/.b" },
        { "a..b", 0, "a..b" },
        { "name.", 1, "name" },
    };
    for (const Case& c : cases) {
        char name[64];
        strcpy(name, c.name);
        EXPECT_EQ(InstallerStringUtils::stripExt(name), c.result) << c.name;
        EXPECT_STREQ(name, c.stripped) << c.name;
    }
}

TEST(Split, AtTheFirstDelimiterWithTheLastLineFeedCut)
{
    struct Case
    {
        const char *text, *left, *right;
    }; // left null: no split
    const Case cases[] = {
        { "key=value\n", "key", "value" },
        { "a=b=c", "a", "b=c" },
        { "=x", "", "x" },
        { "x=\n\n", "x", "\n" },
        { "none", nullptr, nullptr },
    };
    for (const Case& c : cases) {
        char* left = reinterpret_cast<char*>(1);
        char* right = left;
        EXPECT_EQ(split(c.text, &left, &right, '='), c.left ? 1 : 0) << c.text;
        EXPECT_STREQ(left, c.left) << c.text;
        EXPECT_STREQ(right, c.right) << c.text;
        free(left);
        free(right);
    }
}

} // namespace
