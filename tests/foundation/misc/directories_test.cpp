#include <string>
#include <sys/stat.h>
#include <unistd.h>
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
    // relative: below the temporary directory; made / notMade: must (not) exist afterwards, or null
    struct Case
    {
        const char *name, *relative;
        int result, created;
        const char *made, *notMade;
    };
    const Case cases[] = {
        { "file name is never made", "/x", 0, 0, nullptr, "/x" },
        { "trailing slash makes the directory", "/x/", 0, 1, "/x/", nullptr },
        { "each missing level counts", "/a/b/c/file", 0, 3, "/a/b/c/", "/a/b/c/file" },
        { "existing levels count nothing", "/a/b/c/", 0, 0, "/a/b/c/", nullptr },
        { "backslashes separate levels", "/w\\v\\", 0, 2, "/w/v/", nullptr },
        { "a file in the way fails", "/plain/sub/", -1, 0, nullptr, "/plain/sub" },
    };
    TempDir dir;
    ASSERT_TRUE(writeFile(dir.file("plain"), "x"));
    for (const Case& c : cases) {
        int created = -7;
        EXPECT_EQ(RecursiveCreateDirFromFileName((dir.path() + c.relative).c_str(), created), c.result)
            << c.name;
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
}

// Stand-in for a front end: the foundation knows the engine's front-end class by name only and
// passes the pointer on to the report handler, which records here what it would show.
struct RecordingUI
{
    int started = 0;
    std::vector<std::string> shown;
};

std::vector<std::string> collected;
// Does what the engine's handler does (StartDecompress, the collector, EndDecompress), with a
// recorder in place of the front end and a list in place of the error collector.
void report(InstallerUI* ui, LogCollector* collector, const char* message, int failed)
{
    RecordingUI* recorder = reinterpret_cast<RecordingUI*>(ui);
    ++recorder->started;
    if (collector && failed == 1)
        collected.push_back(message);
    recorder->shown.push_back(message);
}

class DirInfoDelete : public ::testing::Test
{
protected:
    void SetUp() override
    {
        collected.clear();
        InstallerFileUtils::setDirDeleteReport(report);
        ASSERT_TRUE(writeFile(dir.file("keep"), ""));
        ASSERT_EQ(mkdir(dir.file("base").c_str(), 0755), 0);
        ASSERT_TRUE(writeFile(dir.file("base/other"), ""));
    }
    void TearDown() override { InstallerFileUtils::setDirDeleteReport(nullptr); }

    // Stand-in for the engine's collector: DirInfo only passes the pointer on.
    LogCollector* collector() { return reinterpret_cast<LogCollector*>(&dir); }
    InstallerUI* ui() { return reinterpret_cast<InstallerUI*>(&recorder); }

    TempDir dir;
    misctest::CaptureConsole console;
    RecordingUI recorder;
};

TEST_F(DirInfoDelete, RemovesExactlyTheLevelsItMadeAndKeepsTheTopmostTried)
{
    std::string leaf = dir.file("base/x/y/z/");
    DirInfo info;
    ASSERT_EQ(RecursiveCreateDirFromFileName(leaf.c_str(), info.levels), 0);
    info.path = leaf.c_str();
    DirInfo copy = info;

    EXPECT_EQ(info.Delete(&console, nullptr, collector()), 0);
    EXPECT_FALSE(fileExists(dir.file("base/x")));
    EXPECT_TRUE(fileExists(dir.file("base")));
    EXPECT_STREQ(info.path.c_str(), dir.file("base/x").c_str());
    EXPECT_STREQ(copy.path.c_str(), leaf.c_str()); // a shared string is not cut
    EXPECT_EQ(console.lines.find("Dir: " + dir.file("base/x/y/z") + " (ok)\r\n"), 0u) << console.lines;

    // Without a trailing slash the path itself is tried first, and one level more than counted.
    ASSERT_EQ(RecursiveCreateDirFromFileName(dir.file("base/p/q/").c_str()), 0);
    DirInfo bare(dir.file("base/p/q").c_str(), 1);
    EXPECT_EQ(bare.Delete(nullptr, ui(), collector()), 0);
    EXPECT_FALSE(fileExists(dir.file("base/p")));
    EXPECT_EQ(recorder.started, 2);
    EXPECT_EQ(recorder.shown,
        (std::vector<std::string> { "Remove " + dir.file("base/p/q"), "Remove " + dir.file("base/p") }));
    EXPECT_TRUE(collected.empty());
}

TEST_F(DirInfoDelete, DirectoryHoldingAFileFailsAndIsReported)
{
    ASSERT_EQ(mkdir(dir.file("base/g").c_str(), 0755), 0);
    ASSERT_TRUE(writeFile(dir.file("base/g/data"), "1"));
    const std::string message = "FAILED to remove " + dir.file("base/g");

    DirInfo info(dir.file("base/g/").c_str(), 1);
    EXPECT_EQ(info.Delete(&console, ui(), collector()), 1);
    EXPECT_TRUE(fileExists(dir.file("base/g/data")));
    EXPECT_EQ(recorder.shown, std::vector<std::string> { message });
    EXPECT_EQ(collected, std::vector<std::string> { message });
    EXPECT_EQ(console.lines, "Dir: " + dir.file("base/g") + " (failed)\r\n");

    // Without a collector the front end still shows it; an empty DirInfo does nothing.
    DirInfo again(dir.file("base/g/").c_str(), 1), none;
    EXPECT_EQ(again.Delete(nullptr, ui(), nullptr), 1);
    EXPECT_EQ(none.Delete(&console, ui(), collector()), 0);
    EXPECT_EQ(recorder.shown.size(), 2u);
    EXPECT_EQ(collected.size(), 1u);
}

TEST(RecursiveDeleteWildcard, RemovesMatchesInTheWholeTreeAndEmptiedDirectories)
{
    for (bool removeDir : { true, false }) {
        TempDir dir;
        for (const char* file :
            { "w/a.log", "w/b.txt", "w/sub/c.log", "w/sub/deeper/d.log", "w/keep/e.txt" }) {
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

TEST(ReadFileBuf, OnlyACompleteReadReplacesTheData)
{
    TempDir dir;
    ASSERT_TRUE(writeFile(dir.file("f"), std::string("a\0b", 3)));
    ASSERT_TRUE(writeFile(dir.file("empty"), ""));
    TeskUtils::PtrArray<unsigned char> data;
    int size = -1;
    ASSERT_EQ(InstallerFileUtils::ReadFileBuf(dir.file("f").c_str(), size, data), 0);
    ASSERT_EQ(size, 3);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(data.data), 3), std::string("a\0b", 3));

    const unsigned char* before = data.data;
    for (const std::string& bad : { dir.file("missing"), dir.path() }) {
        EXPECT_NE(InstallerFileUtils::ReadFileBuf(bad.c_str(), size, data), 0) << bad;
        EXPECT_EQ(data.data, before) << bad;
    }
    EXPECT_EQ(InstallerFileUtils::ReadFileBuf(nullptr, size, data), -1);
    EXPECT_EQ(InstallerFileUtils::ReadFileBuf(dir.file("empty").c_str(), size, data), 0);
    EXPECT_EQ(size, 0);
}

TEST(GetTempFolder, TmpdirWithoutTrailingSlashesOrTmp)
{
    struct Case
    {
        const char* tmpdir;
        int size;
        const char* expected;
    }; // tmpdir null: unset
    const Case cases[] = {
        { nullptr, 520, "/tmp" },
        { "", 520, "/tmp" },
        { "/var/t//", 520, "/var/t" },
        { "/", 520, "/" },
        { "/var/tmp", 5, "/var" },
        { "/x", 0, "unchanged" },
    };
    for (const Case& c : cases) {
        misctest::EnvGuard env("TMPDIR", c.tmpdir);
        char buffer[520] = "unchanged";
        EXPECT_EQ(InstallerFileUtils::getTempFolder(buffer, c.size), 0);
        EXPECT_STREQ(buffer, c.expected) << (c.tmpdir ? c.tmpdir : "(unset)");
    }
    EXPECT_EQ(InstallerFileUtils::getTempFolder(nullptr, 520), 0);
}

} // namespace
