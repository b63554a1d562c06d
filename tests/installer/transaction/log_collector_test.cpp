// The error rows of a run: how they are kept, how they are shown at the end, and how a
// failed directory removal joins them.
#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>
#include <vector>

#include "foundation/misc/installer_file_utils.h"
#include "installer/installer.h"
#include "support/paths.h"

namespace {

struct ListUI : InstallerUI
{
    std::vector<std::string> lines;
    void StartDecompress() override { lines.push_back("start"); }
    int EndDecompress(const char* text, bool close) override
    {
        lines.push_back(std::string(text ? text : "null") + (close ? "+" : ""));
        return 0;
    }
};

TEST(LogCollector, KeepsRowsCutToTheirBuffer)
{
    LogCollector collector;
    collector.AddEntry(nullptr);
    collector.AddEntry("first");
    collector.AddEntry(std::string(600, 'x').c_str());
    ASSERT_EQ(collector.GetCount(), 2);
    EXPECT_STREQ(collector.GetEntry(0), "first");
    EXPECT_EQ(std::string(collector.GetEntry(1)), std::string(519, 'x'));
    EXPECT_EQ(collector.GetEntry(2), nullptr);
    EXPECT_EQ(collector.GetEntry(-1), nullptr);
}

TEST(LogCollector, ShowsTitleRowsAndARefreshEvery32Rows)
{
    LogCollector collector;
    for (int i = 0; i < 34; ++i)
        collector.AddEntry(("row " + std::to_string(i)).c_str());
    ListUI ui;
    collector.OutputLogCollection(&ui, "Title:");
    std::vector<std::string> expected = { "start", "Title:" };
    for (int i = 0; i < 34; ++i) {
        expected.push_back("start");
        expected.push_back("row " + std::to_string(i) + (i % 32 == 0 ? "+" : ""));
    }
    expected.push_back("null+");
    EXPECT_EQ(ui.lines, expected);

    ListUI untitled;
    LogCollector one;
    one.AddEntry("only");
    one.OutputLogCollection(&untitled, nullptr);
    EXPECT_EQ(untitled.lines, (std::vector<std::string> { "start", "only+", "null+" }));
    one.OutputLogCollection(nullptr, "no front end, nothing at all");
}

TEST(LogCollector, FailedDirectoryRemovalIsCollected)
{
    Installer engine; // installs the engine's report of directory removals
    quilbtest::TempDir dir;
    ASSERT_EQ(mkdir(dir.file("full").c_str(), 0755), 0);
    ASSERT_TRUE(quilbtest::writeFile(dir.file("full/file"), ""));
    ASSERT_EQ(mkdir(dir.file("empty").c_str(), 0755), 0);
    ListUI ui;
    EXPECT_EQ(
        InstallerFileUtils::DirInfo::Delete(dir.file("full").c_str(), nullptr, &ui, &engine.logCollector), 1);
    EXPECT_EQ(
        InstallerFileUtils::DirInfo::Delete(dir.file("empty").c_str(), nullptr, &ui, &engine.logCollector),
        0);
    ASSERT_EQ(engine.logCollector.GetCount(), 1);
    EXPECT_EQ(std::string(engine.logCollector.GetEntry(0)), "FAILED to remove " + dir.file("full"));
    EXPECT_EQ(ui.lines[1], "FAILED to remove " + dir.file("full"));
}

} // namespace
