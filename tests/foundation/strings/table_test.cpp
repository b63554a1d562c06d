// Growth of tables and sharing of arrays.
#include <gtest/gtest.h>

#include <vector>

#include "foundation/strings/char_string.h"
#include "foundation/strings/ptr_array.h"
#include "foundation/strings/table.h"

using TeskUtils::CharString;
using TeskUtils::PtrArray;
using TeskUtils::Table;

namespace {

// Capacity after appending one element at a time, sampled after the given counts.
template <int STEP> std::vector<int> capacitiesWhileAppending(const std::vector<int>& samples)
{
    Table<int, STEP> table;
    std::vector<int> seen;
    size_t next = 0;
    for (int n = 1; next < samples.size(); ++n) {
        table.append(n);
        if (n == samples[next]) {
            seen.push_back(table.capacity);
            ++next;
        }
    }
    return seen;
}

TEST(TableGrowth, AppendFollowsTheStepRule)
{
    EXPECT_EQ(capacitiesWhileAppending<100>({ 1, 99, 100, 101, 199, 200, 201 }),
        (std::vector<int> { 100, 100, 100, 200, 200, 200, 300 }));
    EXPECT_EQ(capacitiesWhileAppending<3>({ 1, 2, 3, 4, 6, 7 }), (std::vector<int> { 3, 3, 3, 6, 6, 9 }));
    EXPECT_EQ(
        capacitiesWhileAppending<-1>({ 1, 2, 3, 4, 5, 8, 9 }), (std::vector<int> { 1, 2, 4, 4, 8, 8, 16 }));
    EXPECT_EQ(capacitiesWhileAppending<0>({ 1, 2, 3, 5 }), (std::vector<int> { 1, 2, 4, 8 }));
}

TEST(TableGrowth, SetCountUsesTheRuleOrExactSize)
{
    // `start`: count set first (0: untouched); `capacity`: expected afterwards.
    struct Row
    {
        const char* name;
        int start, n, exact, capacity;
    };
    const Row rows[] = {
        { "step rule on empty table goes strictly above n", 0, 100, 0, 200 },
        { "step rule below a multiple", 0, 37, 0, 100 },
        { "exact on empty table", 0, 100, 1, 100 },
        { "room already there keeps capacity", 150, 120, 0, 200 },
        { "room already there ignores exact", 150, 10, 1, 200 },
        { "exact growth of a filled table", 150, 333, 1, 333 },
    };
    for (const Row& row : rows) {
        Table<int, 100> table;
        if (row.start)
            table.setCount(row.start, 0);
        table.setCount(row.n, row.exact);
        EXPECT_EQ(table.capacity, row.capacity) << row.name;
        EXPECT_EQ(table.count, row.n) << row.name;
    }

    Table<int, -1> doubling;
    doubling.setCount(3, 0);
    EXPECT_EQ(doubling.capacity, 3);
    doubling.setCount(7, 0);
    EXPECT_EQ(doubling.capacity, 12);
}

TEST(TableGrowth, StringElementsKeepOneReferenceEach)
{
    CharString text("shared");
    Table<CharString, 2> table;
    for (int i = 0; i < 5; ++i)
        table.append(text); // grows twice while holding references
    EXPECT_EQ(text.shareCount(), 6);
    table.append(table[0]); // appending an own element across a growth
    EXPECT_EQ(table[5], "shared");
    {
        Table<CharString, 2> copy(table);
        EXPECT_EQ(text.shareCount(), 13);
    }
    table.setCount(2);
    EXPECT_EQ(text.shareCount(), 3) << "elements dropped by setCount let go";
    table.setCount(3);
    EXPECT_TRUE(table[2].isNull()) << "and come back as new";
    table.freeData();
    EXPECT_EQ(text.shareCount(), 1);
    EXPECT_EQ(table.count + table.capacity, 0);
    EXPECT_EQ(table.data, nullptr);
}

TEST(PtrArraySharing, CopiesShareUntilTheLastLetsGo)
{
    PtrArray<unsigned char> first;
    EXPECT_TRUE(first.isNull());
    unsigned char* data = first.allocArray(4);
    data[0] = 7;
    EXPECT_EQ(first.count, 4);

    PtrArray<unsigned char> second(first), third;
    third = second;
    EXPECT_EQ(first.shareCount(), 3);
    EXPECT_EQ(third.get(), data);

    first.freeMem();
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(first.count, 0);
    EXPECT_EQ(second.shareCount(), 2);
    EXPECT_EQ(second[0], 7) << "data stays alive for the remaining holders";

    PtrArray<unsigned char>& alias = third;
    third = alias; // self-assignment keeps the data
    EXPECT_EQ(third[0], 7);
    second.allocArray(2);
    EXPECT_EQ(third.shareCount(), 1);
    EXPECT_EQ(third[0], 7);
}

} // namespace
