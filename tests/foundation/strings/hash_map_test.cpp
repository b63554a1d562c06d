// The hash, the bucket sizes a map moves through, and the node pool.
#include <gtest/gtest.h>

#include <vector>

#include "foundation/strings/char_string.h"
#include "foundation/strings/hash_map.h"

using TeskUtils::CharString;
using TeskUtils::hashlittle;
using TeskUtils::HashMap;

namespace {

using StringMap = HashMap<CharString, 1, 1024, 0, 1000>;
using NumberMap = HashMap<unsigned long, 1, 256, 0, 1000>;
using SmallMap = HashMap<int, 1, 13, 0, 1000>;

TEST(HashLittle, KnownValues)
{
    const char* text = "Four score and seven years ago";
    EXPECT_EQ(hashlittle("", 0, 0), 0xdeadbeefu);
    EXPECT_EQ(hashlittle("", 0, 0xdeadbeef), 0xbd5b7ddeu);
    EXPECT_EQ(hashlittle(text, 30, 0), 0x17770551u);
    EXPECT_EQ(hashlittle(text, 30, 1), 0xcd628161u);
}

TEST(HashMap, StartsAtAPrimeAndShrinksOneStepPerNewKey)
{
    StringMap map;
    EXPECT_EQ(map.bucketCount(), 1049);
    const int expected[] = { 521, 257, 127, 59, 29, 13, 13, 13 };
    for (int i = 0; i < 8; ++i) {
        map[CharString::format("key%d", i)] = "v";
        EXPECT_EQ(map.bucketCount(), expected[i]) << "after key " << i;
    }
    EXPECT_EQ(NumberMap().bucketCount(), 257);
}

TEST(HashMap, GrowsWhenTheLoadReaches76Percent)
{
    SmallMap map;
    ASSERT_EQ(map.bucketCount(), 13);
    // 10 entries in 13 buckets is a load of 76: the 11th key moves to 29 buckets;
    // 22 entries in 29 is 75, 23 is 79: the 24th key moves to 59.
    const struct
    {
        int keys, buckets;
    } checkpoints[] = { { 10, 13 }, { 11, 29 }, { 23, 29 }, { 24, 59 } };
    int inserted = 0;
    for (const auto& point : checkpoints) {
        for (; inserted < point.keys; ++inserted)
            map[CharString::format("k%d", inserted)] = inserted;
        EXPECT_EQ(map.bucketCount(), point.buckets) << point.keys << " keys";
    }
}

// Keys survive many relinkings; removing never resizes, a hit neither, a miss shrinks one step.
TEST(HashMap, ManyKeysAcrossManySizes)
{
    NumberMap map;
    const int total = 5000;
    auto key = [](int i) { return CharString::format("entry/%d", i); };
    for (int i = 0; i < total; ++i) {
        map[key(i)] = static_cast<unsigned long>(i) * 3;
        ASSERT_GE(TeskUtils::hashMapPrimeIndex(map.bucketCount()), 0) << map.bucketCount();
    }
    EXPECT_EQ(map.size(), total);
    EXPECT_EQ(map.bucketCount(), 8419);
    for (int i = 0; i < total; ++i) {
        const unsigned long* value = map.find(key(i).data());
        ASSERT_NE(value, nullptr) << i;
        EXPECT_EQ(*value, static_cast<unsigned long>(i) * 3) << i;
    }
    for (int i = 10; i < total; ++i)
        ASSERT_EQ(map.remove(key(i).data()), 1);
    EXPECT_EQ(map["entry/3"], 9ul);
    EXPECT_EQ(map.bucketCount(), 8419);
    EXPECT_EQ(map["new"], 0ul) << "a new key starts empty";
    EXPECT_EQ(map.bucketCount(), 4201);
    EXPECT_EQ(map["entry/9"], 27ul) << "entries survive relinking";
}

TEST(HashMap, KeysAreCopiedAndDistinct)
{
    StringMap map;
    char key[] = "name";
    map[key] = "first";
    key[0] = 'g';
    EXPECT_FALSE(map.contains("game"));
    EXPECT_EQ(map["name"], "first");
    EXPECT_TRUE(map["other"].isNull());

    map[static_cast<const char*>(nullptr)] = "for null";
    map[""] = "for empty";
    EXPECT_EQ(*map.find(nullptr), "for null");
    EXPECT_EQ(*map.find(""), "for empty");
    EXPECT_EQ(map.size(), 4);
    EXPECT_EQ(map.remove("absent"), 0);
    EXPECT_EQ(map.remove(nullptr), 1);
    EXPECT_EQ(map.find(nullptr), nullptr);
}

TEST(SimplePool, ReusesFreedNodesAndAddsWholeBlocks)
{
    TeskUtils::SimplePool<CharString, 1000, false> pool;
    std::vector<CharString*> nodes;
    for (int i = 0; i < 1000; ++i)
        nodes.push_back(pool.alloc());
    EXPECT_EQ(pool.blockCount(), 1);
    pool.release(nodes[500]);
    EXPECT_EQ(pool.alloc(), nodes[500]) << "a freed node is handed out again";
    EXPECT_EQ(pool.blockCount(), 1);
    nodes.push_back(pool.alloc());
    EXPECT_EQ(pool.blockCount(), 2);
    for (CharString* node : nodes)
        pool.release(node);
}

} // namespace
