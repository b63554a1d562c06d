// The hash, the bucket sizes a map moves through, and the node pool.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "foundation/strings/char_string.h"
#include "foundation/strings/hash_map.h"

using TeskUtils::CharString;
using TeskUtils::HashMap;
using TeskUtils::hashlittle;

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
    const int expected[] = {521, 257, 127, 59, 29, 13, 13, 13};
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
    const struct { int keys, buckets; } checkpoints[] = {{10, 13}, {11, 29}, {23, 29}, {24, 59}};
    int inserted = 0;
    for (const auto& point : checkpoints) {
        for (; inserted < point.keys; ++inserted)
            map[CharString::format("k%d", inserted)] = inserted;
        EXPECT_EQ(map.bucketCount(), point.buckets) << point.keys << " keys";
    }
}

TEST(HashMap, ManyKeysAcrossManySizes)
{
    NumberMap map;
    const int total = 50000;
    int lastBuckets = map.bucketCount();
    int resizes = 0;
    for (int i = 0; i < total; ++i) {
        char key[32];
        snprintf(key, sizeof key, "entry/%d", i);
        map[key] = static_cast<unsigned long>(i) * 3;
        if (map.bucketCount() != lastBuckets) {
            ++resizes;
            lastBuckets = map.bucketCount();
            ASSERT_GE(TeskUtils::hashMapPrimeIndex(lastBuckets), 0) << lastBuckets;
        }
    }
    EXPECT_EQ(map.size(), total);
    EXPECT_EQ(map.bucketCount(), 67409);
    EXPECT_GE(resizes, 8);
    for (int i = 0; i < total; ++i) {
        char key[32];
        snprintf(key, sizeof key, "entry/%d", i);
        const unsigned long* value = map.find(key);
        ASSERT_NE(value, nullptr) << key;
        EXPECT_EQ(*value, static_cast<unsigned long>(i) * 3) << key;
    }

    // Removing leaves the size; a hit never resizes, a miss shrinks one step.
    for (int i = 10; i < total; ++i) {
        char key[32];
        snprintf(key, sizeof key, "entry/%d", i);
        ASSERT_EQ(map.remove(key), 1);
    }
    EXPECT_EQ(map.bucketCount(), 67409);
    EXPECT_EQ(map["entry/3"], 9ul);
    EXPECT_EQ(map.bucketCount(), 67409);
    EXPECT_EQ(map["new"], 0ul) << "a new key starts empty";
    EXPECT_EQ(map.bucketCount(), 33703);
    EXPECT_EQ(map.size(), 11);
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

struct Counted {
    static int alive;
    Counted() { ++alive; }
    ~Counted() { --alive; }
    char payload[24];
};
int Counted::alive = 0;

TEST(SimplePool, ReusesFreedNodesAndAddsWholeBlocks)
{
    TeskUtils::SimplePool<Counted, 1000, false> pool;
    std::vector<Counted*> nodes;
    for (int i = 0; i < 1000; ++i)
        nodes.push_back(pool.alloc());
    EXPECT_EQ(pool.blockCount(), 1);
    EXPECT_EQ(Counted::alive, 1000);

    Counted* freed = nodes[500];
    pool.release(freed);
    EXPECT_EQ(Counted::alive, 999);
    EXPECT_EQ(pool.alloc(), freed) << "a freed node is handed out again";
    EXPECT_EQ(pool.blockCount(), 1);

    nodes.push_back(pool.alloc());
    EXPECT_EQ(pool.blockCount(), 2);
    for (Counted* node : nodes)
        pool.release(node);
    EXPECT_EQ(Counted::alive, 0);
}

} // namespace
