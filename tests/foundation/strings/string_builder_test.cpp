// Growth and joining of the string builder.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/strings/string_builder.h"

using TeskUtils::CharString;
using TeskUtils::StringBuilder;
using TeskUtils::Table;

namespace {

TEST(StringBuilder, ConstructorBoundsItsSettings)
{
    EXPECT_EQ(StringBuilder(5, 2.0f).getBlockSize(), 16);
    EXPECT_EQ(StringBuilder(16, 1.0f).getGrowth(), 0.0f);
    EXPECT_EQ(StringBuilder(64, 5000.0f).getGrowth(), 1024.0f);
    EXPECT_EQ(StringBuilder(64, 1.5f).getCapacity(), 0) << "no block before the first append";
}

TEST(StringBuilder, CapacityGrowsByBlocksAndFactor)
{
    struct Step
    {
        int add;
        long capacity;
    }; // characters appended, capacity expected afterwards
    struct Row
    {
        const char* name;
        long blockSize;
        float growth;
        std::vector<Step> steps;
    };
    const Row rows[] = {
        { "blocks only: the terminator needs room too", 16, 0.0f,
            { { 1, 16 }, { 14, 16 }, { 1, 32 }, { 40, 64 } } },
        { "factor 2 beats the rounded need", 16, 2.0f, { { 1, 16 }, { 20, 32 }, { 11, 64 } } },
        { "factor 1.5, rounded up to blocks", 100, 1.5f,
            { { 99, 100 }, { 1, 200 }, { 100, 300 }, { 100, 500 } } },
        { "a large need beats the factor", 16, 2.0f, { { 1, 16 }, { 100, 112 } } },
    };
    for (const Row& row : rows) {
        StringBuilder builder(row.blockSize, row.growth);
        std::string expected;
        for (const Step& step : row.steps) {
            std::string piece(static_cast<size_t>(step.add), 'x');
            builder.append(piece.c_str(), step.add);
            expected += piece;
            EXPECT_EQ(builder.getCapacity(), step.capacity) << row.name << ", +" << step.add;
        }
        EXPECT_EQ(builder.c_str(), expected) << row.name;
        EXPECT_EQ(builder.getLength(), static_cast<long>(expected.size())) << row.name;
    }
}

TEST(StringBuilder, AppendStopsAtCountOrNul)
{
    StringBuilder builder(16, 0.0f);
    EXPECT_TRUE(builder.getCharString().isNull());
    builder.append("abc", 0).append(nullptr, 5).append("", 3);
    EXPECT_TRUE(builder.getCharString().isNull()) << "nothing appended, no block";
    builder.append("abcdef", 2).append("xy", 10);
    builder << '\0' << '!' << CharString() << CharString("cs") << -12;
    EXPECT_STREQ(builder.c_str(), "abxy!cs-12");
    EXPECT_EQ(builder.getLength(), 10);
    builder.append(builder.c_str(), 4); // a text from its own buffer
    EXPECT_STREQ(builder.c_str(), "abxy!cs-12abxy");

    long capacity = builder.getCapacity();
    builder.clear();
    EXPECT_EQ(builder.getCapacity(), capacity);
    EXPECT_EQ(builder.getCharString(), "");

    StringBuilder fresh;
    fresh.clear();
    EXPECT_FALSE(fresh.getCharString().isNull()) << "clear makes a first block";
}

TEST(StringBuilder, JoinsItemsWithASeparator)
{
    const char* items[] = { "a", nullptr, "c" };
    StringBuilder joined;
    joined.append(items, 3, ", ");
    EXPECT_STREQ(joined.c_str(), "a, , c");

    Table<const char*, 100> table;
    table.append("x");
    table.append("y");
    StringBuilder fromTable;
    fromTable.append(table, nullptr);
    EXPECT_STREQ(fromTable.c_str(), "xy");
    fromTable.appendFormat("[%d]", 5);
    EXPECT_STREQ(fromTable.c_str(), "xy[5]");
}

} // namespace
