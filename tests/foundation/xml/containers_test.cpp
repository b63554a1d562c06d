// The small containers under the document: the string block allocator, the attribute
// list and PList.
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/xml/plist.h"
#include "foundation/xml/pstr_pair_list.h"
#include "foundation/xml/small_str_allocator.h"

namespace {

TEST(SmallStrAllocator, BlockPolicy)
{
    struct Row {
        const char* name;
        std::vector<unsigned> sizes;
        int blocks;  // blocks after the requests
        int used;    // bytes used of the current block
        int lastOwn; // request that must have a block of its own at the given place, -1: none
        int ownAt;
    };
    const Row rows[] = {
        {"FirstUseMakesOneBlock", {10}, 1, 10, -1, 0},
        {"SmallRequestsShareTheBlock", {10, 20, 30}, 1, 60, -1, 0},
        {"RequestFillingTheRestStartsNewBlock", {200, 56}, 2, 56, -1, 0},
        {"RequestJustBelowTheRestFits", {200, 55}, 1, 255, -1, 0},
        {"FullBlockRequestStartsNewBlock", {256}, 2, 256, -1, 0},
        {"LargeRequestGoesBeforeCurrent", {10, 300}, 2, 10, 1, 0},
        {"LargeRequestsKeepCurrentLast", {10, 300, 400, 20}, 3, 30, 2, 1},
    };
    for (const Row& row : rows) {
        SmallStrAllocator<256> allocator;
        std::vector<char*> got;
        for (unsigned size : row.sizes) {
            got.push_back(allocator.SmallAlloc(size));
            memset(got.back(), 'x', size); // the sanitizer catches a short block
        }
        EXPECT_EQ(allocator.blocks.count, row.blocks) << row.name;
        EXPECT_EQ(allocator.used, row.used) << row.name;
        if (row.lastOwn >= 0) {
            EXPECT_EQ(allocator.blocks[row.ownAt], got[row.lastOwn]) << row.name;
        }
        // The block in use stays last: the next small request comes from it.
        char* next = allocator.SmallAlloc(1);
        char* current = allocator.blocks[allocator.blocks.count - 1];
        EXPECT_TRUE(next >= current && next < current + 256) << row.name;
    }
}

TEST(PStrPairList, DeepCopy)
{
    PStrPairList source;
    source.Add("Name", "a");
    source.Add("Empty", nullptr);
    source.Add("NAME", "b");
    PStrPairList copy;
    copy.Add("Old", "gone");
    copy.copy(source);
    source.SetValue(0, "changed");

    ASSERT_EQ(copy.Count(), 3);
    EXPECT_STREQ(copy[0].name, "Name");
    EXPECT_STREQ(copy[0].value, "a");
    EXPECT_EQ(copy[1].value, nullptr);
    EXPECT_EQ(copy[2].allocator, &copy.allocator);
    EXPECT_STREQ(copy.GetValue("name"), "b");
    EXPECT_EQ(copy.Find("Old"), -1);
}

TEST(PList, GrowsByStep)
{
    struct Row {
        const char* name;
        int step;
        int adds;
        int capacity;
    };
    const Row rows[] = {
        {"DefaultStepFirstGrowth", 5, 1, 5},
        {"DefaultStepSecondGrowth", 5, 6, 10},
        {"StepOfThree", 3, 7, 9},
    };
    for (const Row& row : rows) {
        PList<int> list(row.step);
        for (int i = 0; i < row.adds; ++i)
            EXPECT_EQ(list.Add(i * 10), i);
        EXPECT_EQ(list.capacity, row.capacity) << row.name;
        EXPECT_EQ(list[row.adds - 1], (row.adds - 1) * 10) << row.name;
    }
    PList<int> copied;
    copied.Add(1);
    PList<int> other = copied;
    other.Add(2);
    EXPECT_EQ(copied.Count(), 1);
    EXPECT_EQ(other.Count(), 2);
}

} // namespace
