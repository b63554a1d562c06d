// Null and empty strings, sharing and copy on write.
#include <gtest/gtest.h>

#include <cstring>

#include "foundation/strings/char_string.h"

using TeskUtils::CharString;

namespace {

TEST(CharString, NullDiffersFromEmpty)
{
    CharString none, fromNull(static_cast<const char*>(nullptr)), empty("");
    EXPECT_TRUE(none.isNull());
    EXPECT_TRUE(fromNull.isNull());
    EXPECT_FALSE(empty.isNull());
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(none.data(), nullptr);
    EXPECT_STREQ(none.c_str(), "");
    EXPECT_FALSE(none == empty);
    EXPECT_LT(none.compare(""), 0);
    EXPECT_TRUE(CharString("MiXed").equalsNoCase("mixed"));
    EXPECT_EQ(CharString("abcdef", 3), "abc");
    EXPECT_EQ(CharString("ab", 10), "ab");
    EXPECT_EQ(CharString::format("%s-%03d", "x", 7), "x-007");
}

TEST(CharString, AppendCopiesASharedBufferFirst)
{
    CharString first("abc"), second = first;
    EXPECT_EQ(first.shareCount(), 2);
    EXPECT_EQ(first.data(), second.data());

    second.append("def");
    EXPECT_EQ(first, "abc");
    EXPECT_EQ(second, "abcdef");
    EXPECT_EQ(first.shareCount(), 1);
    EXPECT_EQ(second.shareCount(), 1);

    second.append(nullptr);
    EXPECT_EQ(second, "abcdef");
    second.append(second.data() + 3); // a text inside the own buffer
    EXPECT_EQ(second, "abcdefdef");
    second.append("xyz", 2);
    EXPECT_EQ(second, "abcdefdefxy");

    CharString none;
    none.append("");
    EXPECT_FALSE(none.isNull()) << "appending to a null string makes a buffer";
    EXPECT_EQ(none, "");

    CharString& alias = first;
    first = alias;
    EXPECT_EQ(first, "abc") << "self-assignment keeps the text";

    CharString third = first;
    third = "other";
    EXPECT_EQ(first, "abc");
    third.freeMem();
    EXPECT_TRUE(third.isNull());
    EXPECT_EQ(first.shareCount(), 1);
}

TEST(CharString, SplitBufferMakesAPrivateBufferOfTheGivenSize)
{
    // A null `text` starts from a null string; `expected` is the buffer's text.
    struct Row
    {
        const char* name;
        const char* text;
        bool shared;
        int size, keep;
        const char* expected;
    };
    const Row rows[] = {
        { "null string gets an empty buffer", nullptr, false, 8, 1, "" },
        { "private buffer keeps its text", "abcdef", false, 16, 0, "abcdef" },
        { "shared buffer, keep", "abcdef", true, 16, 1, "abcdef" },
        { "shared buffer, no keep", "abcdef", true, 16, 0, "" },
        { "shared buffer, keep with terminator just fitting", "abc", true, 4, 1, "abc" },
    };
    for (const Row& row : rows) {
        CharString text(row.text);
        CharString other = text;
        if (!row.shared)
            other.freeMem();
        char* out = text.splitBuffer(row.size, row.keep);
        ASSERT_NE(out, nullptr) << row.name;
        EXPECT_EQ(out, text.data()) << row.name;
        EXPECT_EQ(text.shareCount(), 1) << row.name;
        EXPECT_STREQ(out, row.expected) << row.name;
        memset(out, 'z', static_cast<size_t>(row.size - 1)); // the whole size is writable
        out[row.size - 1] = '\0';
        if (row.shared) {
            EXPECT_STREQ(other.c_str(), row.text) << row.name << ": the other holder is unchanged";
        }
    }

    CharString longText("abcdef");
    CharString holder = longText;
    char* cut = longText.splitBuffer(3, 1);
    EXPECT_EQ(memcmp(cut, "abc", 3), 0) << "takes over at most size characters";
    EXPECT_EQ(holder, "abcdef");

    CharString zero("abc");
    EXPECT_EQ(zero.splitBuffer(0, 1), nullptr);
    EXPECT_TRUE(zero.isNull());
}

} // namespace
