#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/misc/installer_file_utils.h"
#include "misc_test_helpers.h"
#include "support/paths.h"

using InstallerFileUtils::DirInfo;
using misctest::isDirectory;
using quilbtest::fileExists;
using quilbtest::TempDir;
using quilbtest::writeFile;

namespace {

struct CreateCase {
    const char* name;
    const char* relative;     // below the temporary directory
    int result;
    int created;
    const char* mustExist;    // a directory that must be there afterwards, or null
    const char* mustNotExist; // a path that must not have been made, or null
};

TEST(RecursiveCreateDir, MakesOnlyLevelsEndingInASlashAndCountsThem)
{
    const CreateCase cases[] = {
        {"file name is never made", "/x", 0, 0, nullptr, "/x"},
        {"trailing slash makes the directory", "/x/", 0, 1, "/x", nullptr},
        {"each missing level counts", "/a/b/c/file.txt", 0, 3, "/a/b/c", "/a/b/c/file.txt"},
        {"existing levels count nothing", "/a/b/c/", 0, 0, "/a/b/c", nullptr},
        {"backslashes separate levels", "/w\\v\\", 0, 2, "/w/v", nullptr},
        {"a file in the way fails", "/plain.txt/sub/", -1, 0, nullptr, "/plain.txt/sub"},
    };
    TempDir dir;
    ASSERT_TRUE(writeFile(dir.file("plain.txt"), "x"));
    for (const CreateCase& c : cases) {
        std::string path = dir.path() + c.relative;
        int created = -7;
        EXPECT_EQ(InstallerFileUtils::RecursiveCreateDirFromFileName(path.c_str(), created), c.result)
            << c.name;
        EXPECT_EQ(created, c.created) << c.name;
        if (c.mustExist) {
            EXPECT_TRUE(isDirectory(dir.path() + c.mustExist)) << c.name;
        }
        if (c.mustNotExist) {
            EXPECT_FALSE(fileExists(dir.path() + c.mustNotExist)) << c.name;
        }
    }
}

TEST(RecursiveCreateDir, ShortAndNullPaths)
{
    int created = 5;
    EXPECT_EQ(InstallerFileUtils::RecursiveCreateDirFromFileName(nullptr, created), -1);
    EXPECT_EQ(InstallerFileUtils::RecursiveCreateDirFromFileName("ab/", created), 0);
    EXPECT_EQ(created, 0);
    EXPECT_FALSE(fileExists("ab"));
}

TEST(DeleteEmptyDirs, RemovesTheChainOfEmptyDirectoriesUpward)
{
    TempDir dir;
    ASSERT_TRUE(writeFile(dir.file("keep"), "")); // stops the chain at the temporary directory
    std::string leaf = dir.path() + "/a/b/c/";
    ASSERT_EQ(InstallerFileUtils::RecursiveCreateDirFromFileName(leaf.c_str()), 0);

    EXPECT_EQ(InstallerFileUtils::DeleteEmptyDirs((dir.path() + "\\a\\b\\c//").c_str()), 3);
    EXPECT_FALSE(fileExists(dir.file("a")));
    EXPECT_TRUE(isDirectory(dir.path()));

    EXPECT_EQ(InstallerFileUtils::DeleteEmptyDirs(nullptr), 0);
    EXPECT_EQ(InstallerFileUtils::DeleteEmptyDirs(""), 0);
    EXPECT_EQ(InstallerFileUtils::DeleteEmptyDirs(dir.file("missing").c_str()), 0);
}

TEST(DeleteEmptyDirs, StopsAtTheFirstDirectoryThatIsNotEmpty)
{
    TempDir dir;
    ASSERT_EQ(InstallerFileUtils::RecursiveCreateDirFromFileName((dir.path() + "/a/b/c/").c_str()), 0);
    ASSERT_TRUE(writeFile(dir.file("a/file"), ""));
    ASSERT_TRUE(writeFile(dir.file("a/b/c/inner"), ""));

    EXPECT_EQ(InstallerFileUtils::DeleteEmptyDirs(dir.file("a/b/c").c_str()), 0);
    ASSERT_TRUE(isDirectory(dir.file("a/b/c")));

    ASSERT_EQ(unlink(dir.file("a/b/c/inner").c_str()), 0);
    EXPECT_EQ(InstallerFileUtils::DeleteEmptyDirs(dir.file("a/b/c").c_str()), 2);
    EXPECT_FALSE(fileExists(dir.file("a/b")));
    EXPECT_TRUE(isDirectory(dir.file("a")));
}

// Collects what DirInfo::Delete reports to a front end.
struct Report {
    std::string message;
    int failed;
    bool withCollector;
};
std::vector<Report> reports;

void recordReport(InstallerUI*, LogCollector* collector, const char* message, int failed)
{
    reports.push_back({message, failed, collector != nullptr});
}

// Stand-ins for the engine's objects: DirInfo only passes the pointers on.
InstallerUI* fakeUI()
{
    static char ui;
    return reinterpret_cast<InstallerUI*>(&ui);
}
LogCollector* fakeCollector()
{
    static char collector;
    return reinterpret_cast<LogCollector*>(&collector);
}

class DirInfoDelete : public ::testing::Test {
protected:
    void SetUp() override
    {
        reports.clear();
        InstallerFileUtils::setDirDeleteReport(recordReport);
        ASSERT_TRUE(writeFile(dir.file("keep"), ""));
    }
    void TearDown() override { InstallerFileUtils::setDirDeleteReport(nullptr); }

    // Makes `relative` (ending in '/') below the temporary directory; gives its DirInfo.
    DirInfo made(const std::string& relative)
    {
        std::string path = dir.path() + "/" + relative;
        int created = 0;
        EXPECT_EQ(InstallerFileUtils::RecursiveCreateDirFromFileName(path.c_str(), created), 0);
        return DirInfo(path.c_str(), created);
    }

    TempDir dir;
};

TEST_F(DirInfoDelete, RemovesExactlyTheLevelsItMadeAndKeepsTheTopmostTried)
{
    ASSERT_TRUE(misctest::makeDirectory(dir.file("base")));
    ASSERT_TRUE(writeFile(dir.file("base/other"), ""));
    DirInfo info = made("base/x/y/z/");
    ASSERT_EQ(info.levels, 3);

    misctest::CaptureConsole console;
    EXPECT_EQ(info.Delete(&console, nullptr, nullptr), 0);
    EXPECT_FALSE(fileExists(dir.file("base/x")));
    EXPECT_TRUE(fileExists(dir.file("base/other")));
    EXPECT_STREQ(info.path.c_str(), dir.file("base/x").c_str());
    EXPECT_NE(console.lines.find("Dir: " + dir.file("base/x/y/z") + " (ok)\r\n"), std::string::npos)
        << console.lines;
    EXPECT_TRUE(reports.empty()); // no front end, no report
}

TEST_F(DirInfoDelete, PathWithoutTrailingSlashIsTriedOneLevelFurther)
{
    DirInfo info = made("p/q/");
    ASSERT_EQ(info.levels, 2);
    info.path = dir.file("p/q").c_str();
    info.levels = 1;
    DirInfo shared = info;

    EXPECT_EQ(info.Delete(nullptr, fakeUI(), nullptr), 0);
    EXPECT_FALSE(fileExists(dir.file("p")));
    EXPECT_STREQ(info.path.c_str(), dir.file("p").c_str());
    EXPECT_STREQ(shared.path.c_str(), dir.file("p/q").c_str()); // the copy keeps its text
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].message, "Remove " + dir.file("p/q"));
    EXPECT_EQ(reports[1].message, "Remove " + dir.file("p"));
}

TEST_F(DirInfoDelete, DirectoryHoldingAFileFailsAndIsReported)
{
    DirInfo info = made("f/g/");
    ASSERT_TRUE(writeFile(dir.file("f/g/data"), "1"));
    info.levels = 1;

    misctest::CaptureConsole console;
    EXPECT_EQ(info.Delete(&console, fakeUI(), fakeCollector()), 1);
    EXPECT_TRUE(fileExists(dir.file("f/g/data")));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "FAILED to remove " + dir.file("f/g"));
    EXPECT_EQ(reports[0].failed, 1);
    EXPECT_TRUE(reports[0].withCollector);
    EXPECT_EQ(console.lines, "Dir: " + dir.file("f/g") + " (failed)\r\n");
}

TEST_F(DirInfoDelete, NothingToDo)
{
    DirInfo none;
    EXPECT_EQ(none.Delete(nullptr, fakeUI(), nullptr), 0);
    DirInfo noLevels(dir.file("keep/").c_str(), 0);
    EXPECT_EQ(noLevels.Delete(nullptr, fakeUI(), nullptr), 0);
    EXPECT_TRUE(reports.empty());
    // A path that is already gone counts as removed.
    EXPECT_EQ(DirInfo::Delete(dir.file("gone").c_str(), nullptr, fakeUI(), nullptr), 0);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "Remove " + dir.file("gone"));
}

TEST(RecursiveDeleteWildcard, RemovesMatchesInTheWholeTreeAndEmptiedDirectories)
{
    for (bool removeDir : {true, false}) {
        TempDir dir;
        for (const char* file : {"w/a.log", "w/b.txt", "w/sub/c.log", "w/sub/deeper/d.log", "w/keep/e.txt"}) {
            std::string path = dir.file(file);
            ASSERT_EQ(InstallerFileUtils::RecursiveCreateDirFromFileName(path.c_str()), 0);
            ASSERT_TRUE(writeFile(path, "x"));
        }
        std::string top = dir.file("w");
        EXPECT_EQ(InstallerFileUtils::recursiveDeleteWildcard(top.c_str(), "*.log", removeDir), 3);
        EXPECT_FALSE(fileExists(dir.file("w/a.log")));
        EXPECT_FALSE(fileExists(dir.file("w/sub/deeper/d.log")));
        EXPECT_TRUE(fileExists(dir.file("w/b.txt")));
        EXPECT_TRUE(fileExists(dir.file("w/keep/e.txt")));
        EXPECT_EQ(fileExists(dir.file("w/sub")), !removeDir) << "removeDir " << removeDir;
        EXPECT_TRUE(isDirectory(top));
    }
    EXPECT_EQ(InstallerFileUtils::recursiveDeleteWildcard("/nonexistent/quilb", "*", true), -1);
    EXPECT_EQ(InstallerFileUtils::recursiveDeleteWildcard(nullptr, "*", true), -1);
    EXPECT_EQ(InstallerFileUtils::recursiveDeleteWildcard("/tmp", nullptr, true), -1);
}

TEST(ReadFileBuf, ReplacesTheDataOnlyAfterACompleteRead)
{
    TempDir dir;
    const std::string content("bin\0ary\xff", 8);
    ASSERT_TRUE(writeFile(dir.file("data"), content));
    ASSERT_TRUE(writeFile(dir.file("empty"), ""));

    TeskUtils::PtrArray<unsigned char> data;
    int size = -1;
    ASSERT_EQ(InstallerFileUtils::ReadFileBuf(dir.file("data").c_str(), size, data), 0);
    ASSERT_EQ(size, 8);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(data.get()), 8), content);

    unsigned char* before = data.get();
    EXPECT_NE(InstallerFileUtils::ReadFileBuf(dir.file("missing").c_str(), size, data), 0);
    EXPECT_NE(InstallerFileUtils::ReadFileBuf(dir.path().c_str(), size, data), 0); // a directory
    EXPECT_EQ(InstallerFileUtils::ReadFileBuf(nullptr, size, data), -1);
    EXPECT_EQ(data.get(), before);
    EXPECT_EQ(data.shareCount(), 1);

    EXPECT_EQ(InstallerFileUtils::ReadFileBuf(dir.file("empty").c_str(), size, data), 0);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(data.size(), 0);
}

TEST(TempFolder, ComesFromTMPDIRWithoutTrailingSlashes)
{
    struct Case {
        const char* tmpdir;
        int size;
        const char* expected;
    };
    const Case cases[] = {
        {nullptr, 520, "/tmp"},
        {"/var/tmp//", 520, "/var/tmp"},
        {"/", 520, "/"},
        {"/scratch/space", 9, "/scratch"},
    };
    for (const Case& c : cases) {
        misctest::EnvGuard env("TMPDIR", c.tmpdir);
        char buffer[520] = "unchanged";
        EXPECT_EQ(InstallerFileUtils::getTempFolder(buffer, c.size), 0);
        EXPECT_STREQ(buffer, c.expected) << (c.tmpdir ? c.tmpdir : "(unset)");
    }
    char buffer[4] = "abc";
    EXPECT_EQ(InstallerFileUtils::getTempFolder(buffer, 0), 0);
    EXPECT_STREQ(buffer, "abc");
}

} // namespace
