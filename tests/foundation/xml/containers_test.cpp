// The string block allocator under the attribute lists.
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/xml/small_str_allocator.h"

namespace {

TEST(SmallStrAllocator, BlockPolicy)
{
    struct Row
    {
        const char* name;
        std::vector<unsigned> sizes;
        int blocks, used; // after the requests
        int own, ownAt; // request that must have a block of its own, and its place (-1: none)
    };
    const Row rows[] = {
        { "SmallRequestsShareTheFirstBlock", { 10, 20, 30 }, 1, 60, -1, 0 },
        { "RequestFillingTheRestStartsNewBlock", { 200, 56 }, 2, 56, -1, 0 },
        { "RequestJustBelowTheRestFits", { 200, 55 }, 1, 255, -1, 0 },
        { "FullBlockRequestStartsNewBlock", { 256 }, 2, 256, -1, 0 },
        { "LargeRequestGoesBeforeCurrent", { 10, 300 }, 2, 10, 1, 0 },
        { "LargeRequestsKeepCurrentLast", { 10, 300, 400, 20 }, 3, 30, 2, 1 },
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
        if (row.own >= 0) {
            EXPECT_EQ(allocator.blocks[row.ownAt], got[row.own]) << row.name;
        }
        // The block in use stays last: the next small request comes from it.
        char* next = allocator.SmallAlloc(1);
        char* current = allocator.blocks[allocator.blocks.count - 1];
        EXPECT_TRUE(next >= current && next < current + 256) << row.name;
    }
}

} // namespace
