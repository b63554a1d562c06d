#include "foundation/streams/pconsole.h"
#include "foundation/streams/pmemory_console.h"

#include "support/paths.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <pthread.h>
#include <string>
#include <vector>

namespace {

int fixedMonth = 2;
bool haveLocalTime = true;

bool fixedClock(struct tm& out)
{
    out.tm_year = 124;
    out.tm_mon = fixedMonth;
    out.tm_mday = 5;
    out.tm_hour = 14;
    out.tm_min = 3;
    out.tm_sec = 9;
    return haveLocalTime;
}

// Keeps every Write call apart, to check how a line is cut into writes.
class SplitConsole : public PConsole
{
public:
    std::vector<std::string> writes;
    void Write(const char* text, int size) override { writes.emplace_back(text, size); }
};

class Console : public ::testing::Test
{
protected:
    void SetUp() override
    {
        fixedMonth = 2;
        haveLocalTime = true;
        PConsole::SetLocalTimeSource(fixedClock);
    }
    void TearDown() override { PConsole::SetLocalTimeSource(nullptr); }
};

std::string threadTag()
{
    char tag[64];
    snprintf(tag, sizeof tag, "[TID:0x%016llX] ", (unsigned long long)pthread_self());
    return tag;
}

} // namespace

TEST_F(Console, LinePrefixForEachFlagCombination)
{
    const std::string stamp = "[2024/Mar/5|14:03:09]    ";
    const struct
    {
        const char* name;
        int flags;
        int lineNumber;
        int month;
        bool localTime;
        std::string prefix;
    } rows[] = {
        { "default flags", -1, 7, 2, true, "   7:  " + stamp },
        { "no decorations", 0, 7, 2, true, "" },
        { "line number only", 1, 7, 2, true, "   7:  " },
        { "wide line number", 1, 12345, 2, true, "12345:  " },
        { "time stamp only", 2, 7, 2, true, stamp },
        { "thread id only", 4, 7, 2, true, threadTag() },
        { "all three in order", 7, 7, 2, true, "   7:  " + threadTag() + stamp },
        { "no local time leaves the spaces", 3, 7, 2, false, "   7:      " },
        { "first month", 2, 0, 0, true, "[2024/Jan/5|14:03:09]    " },
        { "month below range", 2, 0, -4, true, "[2024/Jan/5|14:03:09]    " },
        { "last month", 2, 0, 11, true, "[2024/Dec/5|14:03:09]    " },
        { "month above range", 2, 0, 12, true, "[2024/Dec/5|14:03:09]    " },
    };
    for (const auto& row : rows) {
        fixedMonth = row.month;
        haveLocalTime = row.localTime;
        PMemoryConsole console;
        if (row.flags >= 0)
            console.flags = row.flags;
        console.lineNumber = row.lineNumber;
        console.Dump("text %d", 42);
        EXPECT_EQ(console.text(), row.prefix + "text 42\r\n") << row.name;
        EXPECT_EQ(console.lineNumber, row.lineNumber + (console.flags & 1)) << row.name;
    }
}

TEST_F(Console, DumpIsThreeWritesCutsLongLinesAndObeysEnabled)
{
    SplitConsole console;
    console.flags = 1;
    console.Dump("%s", std::string(2000, 'x').c_str());
    ASSERT_EQ(console.writes.size(), 3u);
    EXPECT_EQ(console.writes[0], "   0:  ");
    EXPECT_EQ(console.writes[1], std::string(1022, 'x'));
    EXPECT_EQ(console.writes[2], "\r\n");

    console.writes.clear();
    console << "plain";
    EXPECT_EQ(console.writes, (std::vector<std::string> { "   1:  ", "plain" }));

    console.writes.clear();
    console.enabled = false;
    console.Dump("lost");
    console << "lost";
    EXPECT_TRUE(console.writes.empty());
    EXPECT_EQ(console.lineNumber, 2);
}

TEST_F(Console, FileConsoleDropsLinesWithoutAFile)
{
    quilbtest::TempDir dir;
    const std::string path = dir.file("debug.log");
    quilbtest::writeFile(path, "earlier\r\n");
    PFileConsole console;
    console.flags = 0;
    console.Dump("before create");
    EXPECT_EQ(console.stream, nullptr);

    ASSERT_EQ(console.Create(path.c_str(), 1), 0);
    console.Dump("continued");
    ASSERT_EQ(console.Create(path.c_str(), 1), 0);
    console.Dump("again");
    EXPECT_EQ(quilbtest::readFile(path), "earlier\r\ncontinued\r\nagain\r\n");

    ASSERT_EQ(console.Create(path.c_str(), 0), 0);
    console.Dump("fresh");
    EXPECT_EQ(console.Done(), -1);
    console.Dump("after done");
    EXPECT_EQ(quilbtest::readFile(path), "fresh\r\n");

    EXPECT_EQ(console.Create(dir.path().c_str(), 0), 21);
    console.Dump("nowhere");
}
