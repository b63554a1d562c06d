#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "foundation/misc/installer_string_utils.h"
#include "foundation/misc/path_utils.h"

namespace {

TEST(CanonicalPath, NormalFormByTextAlone)
{
    struct Case {
        const char* path;
        const char* canonical;
        const char* dir;
        const char* file;
    };
    const Case cases[] = {
        {"./a//b/../c", "a/c", "a", "c"},
        {"/opt/app/bin/run", "/opt/app/bin/run", "/opt/app/bin", "run"},
        {"//usr///lib", "/usr/lib", "/usr", "lib"},
        {"/a/./b/", "/a/b/", "/a/b", ""},
        {"/a/b/..", "/a", "", "a"},
        {"a/..", "", "", ""},
        {"../a", "../a", "..", "a"},
        {"../../x", "../../x", "../..", "x"},
        {"a/../../b", "../b", "..", "b"},
        {"/..", "/..", "", ".."},
        {".", "", "", ""},
        {"file", "file", "file", "file"},
        {"", "", "", ""},
    };
    for (const Case& c : cases) {
        EXPECT_STREQ(TeskUtils::uniCanonicalPath(c.path).c_str(), c.canonical) << c.path;
        EXPECT_STREQ(TeskUtils::uniGetFileDir(c.path).c_str(), c.dir) << c.path;
        EXPECT_STREQ(TeskUtils::uniGetFilenameFromPath(c.path).c_str(), c.file) << c.path;
    }
    EXPECT_FALSE(TeskUtils::uniCanonicalPath(nullptr).isNull());
}

TEST(PathDelimiters, TurnedAndCollapsedButALeadingDoubleSlashStays)
{
    struct Case {
        const char* path;
        char slash;
        const char* fixed;
        int changes;
    };
    const Case cases[] = {
        {"a\\b//c", '/', "a/b/c", 2},
        {"//server/share", '/', "//server/share", 0},
        {"\\\\\\x", '/', "//x", 4},
        {"a/b", '\\', "a\\b", 1},
        {"plain", '/', "plain", 0},
        {"", '/', "", 0},
    };
    for (const Case& c : cases) {
        char path[64];
        strcpy(path, c.path);
        EXPECT_EQ(TeskUtils::uniFixPathDelimiters(path, c.slash), c.changes) << c.path;
        EXPECT_STREQ(path, c.fixed) << c.path;
    }
}

TEST(CorrectPathString, CleansWhatAUserTyped)
{
    struct Case {
        const char* path;
        const char* corrected;
    };
    const Case cases[] = {
        {"  /opt/my app \t/bin\n", "/opt/my app/bin"},
        {"C:\\dir\\\\sub", "C:/dir/sub"},
        {"/a  //b", "/a/b"},
        {" //share/x ", "//share/x"},
        {"/already/clean", "/already/clean"},
    };
    for (const Case& c : cases) {
        char path[64];
        strcpy(path, c.path);
        int changes = TeskUtils::uniCorrectPathString(path);
        EXPECT_STREQ(path, c.corrected) << c.path;
        EXPECT_EQ(changes == 0, strcmp(c.path, c.corrected) == 0) << c.path;
    }
    char empty[1] = "";
    EXPECT_EQ(TeskUtils::uniCorrectPathString(empty), 0);
    EXPECT_EQ(TeskUtils::uniCorrectPathString(nullptr), 0);
}

TEST(StripExt, CutsOnlyARealLastExtension)
{
    struct Case {
        const char* name;
        int result;
        const char* stripped;
    };
    const Case cases[] = {
        {"a.tar.gz", 1, "a.tar"},
        {"/opt.d/file", 0, "/opt.d/file"},
        {"dir\\x.y\\file", 0, "dir\\x.y\\file"},
        {"/opt.d/file.txt", 1, "/opt.d/file"},
        {".hidden", 0, ".hidden"},
        {"a/.b", 0, "a/.b"},
        {"a..b", 0, "a..b"},
        {"name.", 1, "name"},
        {"noext", 0, "noext"},
    };
    for (const Case& c : cases) {
        char name[64];
        strcpy(name, c.name);
        EXPECT_EQ(InstallerStringUtils::stripExt(name), c.result) << c.name;
        EXPECT_STREQ(name, c.stripped) << c.name;
    }
    EXPECT_EQ(InstallerStringUtils::stripExt(nullptr), 0);
}

TEST(Split, AtTheFirstDelimiterWithTheLineFeedCut)
{
    struct Case {
        const char* text;
        char delimiter;
        int result;
        const char* left;
        const char* right;
    };
    const Case cases[] = {
        {"key=value\n", '=', 1, "key", "value"},
        {"a=b=c", '=', 1, "a", "b=c"},
        {"=x", '=', 1, "", "x"},
        {"x=\n\n", '=', 1, "x", "\n"},
        {"novalue", '=', 0, nullptr, nullptr},
    };
    for (const Case& c : cases) {
        char* left = reinterpret_cast<char*>(1);
        char* right = reinterpret_cast<char*>(1);
        EXPECT_EQ(split(c.text, &left, &right, c.delimiter), c.result) << c.text;
        if (c.left) {
            EXPECT_STREQ(left, c.left) << c.text;
            EXPECT_STREQ(right, c.right) << c.text;
        } else {
            EXPECT_EQ(left, nullptr) << c.text;
            EXPECT_EQ(right, nullptr) << c.text;
        }
        free(left);
        free(right);
    }
}

} // namespace
