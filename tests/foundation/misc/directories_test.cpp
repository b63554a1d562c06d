#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/misc/installer_file_utils.h"
#include "misc_test_helpers.h"
#include "support/paths.h"

using InstallerFileUtils::DirInfo;
using InstallerFileUtils::RecursiveCreateDirFromFileName;
using quilbtest::fileExists;
using quilbtest::TempDir;
using quilbtest::writeFile;

namespace {

TEST(RecursiveCreateDir, MakesOnlyLevelsEndingInASlashAndCountsThem)
{
    struct Case {
        const char* name;
        const char* relative;  // below the temporary directory
        int result, created;
        const char* made;      // must exist afterwards, or null
        const char* notMade;   // must not exist afterwards, or null
    };
    const Case cases[] = {
        {"file name is never made", "/x", 0, 0, nullptr, "/x"},
        {"trailing slash makes the directory", "/x/", 0, 1, "/x/", nullptr},
        {"each missing level counts", "/a/b/c/file", 0, 3, "/a/b/c/", "/a/b/c/file"},
        {"existing levels count nothing", "/a/b/c/", 0, 0, "/a/b/c/", nullptr},
        {"backslashes separate levels", "/w\\v\\", 0, 2, "/w/v/", nullptr},
        {"a file in the way fails", "/plain/sub/", -1, 0, nullptr, "/plain/sub"},
    };
    TempDir dir;
    ASSERT_TRUE(writeFile(dir.file("plain"), "x"));
    for (const Case& c : cases) {
        int created = -7;
        EXPECT_EQ(RecursiveCreateDirFromFileName((dir.path() + c.relative).c_str(), created), c.result) << c.name;
        EXPECT_EQ(created, c.created) << c.name;
        EXPECT_TRUE(!c.made || fileExists(dir.path() + c.made)) << c.name;
        EXPECT_TRUE(!c.notMade || !fileExists(dir.path() + c.notMade)) << c.name;
    }
}

TEST(DeleteEmptyDirs, RemovesEmptyDirectoriesUpToTheFirstThatIsNotEmpty)
{
    TempDir dir;
    ASSERT_TRUE(writeFile(dir.file("keep"), "")); // stops the chain at the temporary directory
    ASSERT_EQ(RecursiveCreateDirFromFileName(dir.file("a/b/c/d/").c_str()), 0);
    ASSERT_TRUE(writeFile(dir.file("a/file"), ""));
    ASSERT_TRUE(writeFile(dir.file("a/b/c/d/inner"), ""));

    EXPECT_EQ(InstallerFileUtils::DeleteEmptyDirs(dir.file("a/b/c/d").c_str()), 0);
    ASSERT_EQ(unlink(dir.file("a/b/c/d/inner").c_str()), 0);
    EXPECT_EQ(InstallerFileUtils::DeleteEmptyDirs((dir.path() + "\\a\\b\\c/d//").c_str()), 3);
    EXPECT_FALSE(fileExists(dir.file("a/b")));
    EXPECT_TRUE(fileExists(dir.file("a/file")));
    ASSERT_EQ(unlink(dir.file("a/file").c_str()), 0);
    EXPECT_EQ(InstallerFileUtils::DeleteEmptyDirs(dir.file("a").c_str()), 1);
    EXPECT_TRUE(fileExists(dir.path()));
}

// What DirInfo::Delete reported to a front end: message and failure flag.
std::vector<std::pair<std::string, int>> reports;

void recordReport(InstallerUI*, LogCollector*, const char* message, int failed)
{
    reports.emplace_back(message, failed);
}

// Stand-in for the engine's front end: DirInfo only passes the pointer on.
InstallerUI* fakeUI()
{
    static char ui;
    return reinterpret_cast<InstallerUI*>(&ui);
}

class DirInfoDelete : public ::testing::Test {
protected:
    void SetUp() override
    {
        reports.clear();
        InstallerFileUtils::setDirDeleteReport(recordReport);
        ASSERT_TRUE(writeFile(dir.file("keep"), ""));
        ASSERT_EQ(mkdir(dir.file("base").c_str(), 0755), 0);
        ASSERT_TRUE(writeFile(dir.file("base/other"), ""));
    }
    void TearDown() override { InstallerFileUtils::setDirDeleteReport(nullptr); }

    TempDir dir;
    misctest::CaptureConsole console;
};

TEST_F(DirInfoDelete, RemovesExactlyTheLevelsItMadeAndKeepsTheTopmostTried)
{
    std::string leaf = dir.file("base/x/y/z/");
    DirInfo info;
    ASSERT_EQ(RecursiveCreateDirFromFileName(leaf.c_str(), info.levels), 0);
    info.path = leaf.c_str();
    DirInfo copy = info;

    EXPECT_EQ(info.Delete(&console, nullptr, nullptr), 0);
    EXPECT_FALSE(fileExists(dir.file("base/x")));
    EXPECT_TRUE(fileExists(dir.file("base")));
    EXPECT_STREQ(info.path.c_str(), dir.file("base/x").c_str());
    EXPECT_STREQ(copy.path.c_str(), leaf.c_str()); // a shared string is not cut
    EXPECT_EQ(console.lines.find("Dir: " + dir.file("base/x/y/z") + " (ok)\r\n"), 0u) << console.lines;
    EXPECT_TRUE(reports.empty()); // no front end, no report

    // Without a trailing slash the path itself is tried first, and one level more than counted.
    ASSERT_EQ(RecursiveCreateDirFromFileName(dir.file("base/p/q/").c_str()), 0);
    DirInfo bare(dir.file("base/p/q").c_str(), 1);
    EXPECT_EQ(bare.Delete(nullptr, fakeUI(), nullptr), 0);
    EXPECT_FALSE(fileExists(dir.file("base/p")));
    EXPECT_EQ(reports, (decltype(reports){{"Remove " + dir.file("base/p/q"), 0}, {"Remove " + dir.file("base/p"), 0}}));
}

TEST_F(DirInfoDelete, DirectoryHoldingAFileFailsAndIsReported)
{
    ASSERT_EQ(mkdir(dir.file("base/g").c_str(), 0755), 0);
    ASSERT_TRUE(writeFile(dir.file("base/g/data"), "1"));
    DirInfo info(dir.file("base/g/").c_str(), 1);

    EXPECT_EQ(info.Delete(&console, fakeUI(), nullptr), 1);
    EXPECT_TRUE(fileExists(dir.file("base/g/data")));
    EXPECT_EQ(reports, (decltype(reports){{"FAILED to remove " + dir.file("base/g"), 1}}));
    EXPECT_EQ(console.lines, "Dir: " + dir.file("base/g") + " (failed)\r\n");

    DirInfo none;
    EXPECT_EQ(none.Delete(&console, fakeUI(), nullptr), 0);
    EXPECT_EQ(reports.size(), 1u);
}

TEST(RecursiveDeleteWildcard, RemovesMatchesInTheWholeTreeAndEmptiedDirectories)
{
    for (bool removeDir : {true, false}) {
        TempDir dir;
        for (const char* file : {"w/a.log", "w/b.txt", "w/sub/c.log", "w/sub/deeper/d.log", "w/keep/e.txt"}) {
            ASSERT_EQ(RecursiveCreateDirFromFileName(dir.file(file).c_str()), 0);
            ASSERT_TRUE(writeFile(dir.file(file), "x"));
        }
        EXPECT_EQ(InstallerFileUtils::recursiveDeleteWildcard(dir.file("w").c_str(), "*.log", removeDir), 3);
        EXPECT_FALSE(fileExists(dir.file("w/a.log")) || fileExists(dir.file("w/sub/deeper/d.log")));
        EXPECT_TRUE(fileExists(dir.file("w/b.txt")) && fileExists(dir.file("w/keep/e.txt")));
        EXPECT_EQ(fileExists(dir.file("w/sub")), !removeDir) << "removeDir " << removeDir;
    }
    EXPECT_EQ(InstallerFileUtils::recursiveDeleteWildcard("/nonexistent/quilb", "*", true), -1);
}

} // namespace
