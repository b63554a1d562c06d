// Sorting string pointers and searching files by pattern.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "foundation/strings/find_data.h"
#include "foundation/strings/quick_sort.h"
#include "support/paths.h"

using TeskUtils::CharString;

namespace {

TEST(QuickSort, OrdersBytewiseWithNullsFirst)
{
    // Sizes on both sides of the selection-sort threshold, with duplicates, nulls and
    // bytes above 127.
    srand(7);
    for (int size : { 1, 2, 9, 10, 11, 64, 500 }) {
        std::vector<CharString> strings;
        for (int i = 0; i < size; ++i) {
            int kind = rand() % 10;
            strings.push_back(kind == 0 ? CharString()
                    : kind == 1         ? CharString("\xff"
                                                             "high")
                                        : CharString::format("s%d", rand() % (size / 2 + 1)));
        }
        std::vector<CharString*> pointers;
        for (CharString& s : strings)
            pointers.push_back(&s);
        pointers.push_back(nullptr);
        std::vector<CharString*> original = pointers;

        TeskUtils::quickSort__(pointers.data(), 0, static_cast<int>(pointers.size()) - 1);

        std::vector<CharString*> sortedCopy = pointers;
        std::sort(sortedCopy.begin(), sortedCopy.end());
        std::sort(original.begin(), original.end());
        EXPECT_EQ(sortedCopy, original) << "a permutation, size " << size;
        for (size_t i = 1; i < pointers.size(); ++i) {
            const char *a = pointers[i - 1] ? pointers[i - 1]->data() : nullptr,
                       *b = pointers[i] ? pointers[i]->data() : nullptr;
            EXPECT_TRUE(!a || (b && strcmp(a, b) <= 0)) << "size " << size << " at " << i;
        }
    }
}

TEST(FindData, MatchesMarkDirectoriesAndKeepOldResultsOnNoMatch)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("a.txt"), "a"));
    ASSERT_TRUE(quilbtest::writeFile(dir.file("b.txt"), "b"));
    ASSERT_EQ(mkdir(dir.file("sub").c_str(), 0755), 0);

    TeskUtils::FindData found((dir.path() + "/*").c_str());
    ASSERT_EQ(found.size(), 3);
    EXPECT_EQ(std::string(found[0]), dir.file("a.txt"));
    EXPECT_EQ(std::string(found[2]), dir.file("sub") + "/") << "directories end in a slash";
    EXPECT_EQ(found[3], nullptr);
    EXPECT_EQ(found[-1], nullptr);

    EXPECT_EQ(found.search((dir.path() + "/*.none").c_str()), 0);
    EXPECT_EQ(found.size(), 3) << "no match leaves the previous results";
    EXPECT_EQ(found.search((dir.path() + "/b*").c_str()), 1);
    EXPECT_EQ(std::string(found.next()), dir.file("b.txt"));
    EXPECT_EQ(found.next(), nullptr);

    TeskUtils::FindData nothing("/nonexistent-dir-for-quilb/*");
    EXPECT_TRUE(nothing.empty());
}

} // namespace
