// Tokenizers, list masks, number parsing and path helpers.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "foundation/strings/tokenize.h"
#include "support/paths.h"

using namespace TeskUtils;

namespace {

using Tokens = std::vector<std::string>;

// Tokens as strings, "<null>" standing for a null token.
Tokens texts(const Table<CharString, 100>& tokens)
{
    Tokens out;
    for (const CharString& token : tokens)
        out.push_back(token.isNull() ? "<null>" : token.data());
    return out;
}

// `text` copied into a path-sized buffer, `edit` applied: the buffer's text afterwards.
template <typename Edit> std::string edited(const char* text, Edit edit)
{
    char buffer[520];
    strcpy(buffer, text);
    edit(buffer);
    return buffer;
}

TEST(Tokenize, DelimitersAndFlags)
{
    // `set`, when not null, is used instead of the delimiter.
    struct Row
    {
        const char* name;
        const char* text;
        char delimiter;
        const char* set;
        int flags;
        Tokens expected;
    };
    const Row rows[] = {
        { "empty tokens left out", "a;;b", ';', nullptr, 0, { "a", "b" } },
        { "empty set", "a,b", 0, "", 2, {} },
        { "empty tokens kept as null", "a;;b", ';', nullptr, 2, { "a", "<null>", "b" } },
        { "empty tokens kept as text", "a;;b", ';', nullptr, 6, { "a", "", "b" } },
        { "bit 2 alone changes nothing", "a;;b", ';', nullptr, 4, { "a", "b" } },
        { "only a delimiter", ";", ';', nullptr, 0, {} },
        { "only a delimiter, keep empty", ";", ';', nullptr, 2, { "<null>", "<null>" } },
        { "leading and trailing", ";x;", ';', nullptr, 2, { "<null>", "x", "<null>" } },
        { "NUL delimiter splits nothing", "a;b", '\0', nullptr, 0, { "a;b" } },
        { "empty text", "", ';', nullptr, 2, {} },
        { "null text", nullptr, ';', nullptr, 2, {} },
        { "any character of a set",
            "a,b;c\xe9"
            "d",
            0, ",;\xe9", 0, { "a", "b", "c", "d" } },
    };
    for (const Row& row : rows) {
        Table<CharString, 100> tokens;
        int added = row.set ? tokenize(row.text, row.set, tokens, row.flags)
                            : tokenize(row.text, row.delimiter, tokens, row.flags);
        EXPECT_EQ(added, static_cast<int>(row.expected.size())) << row.name;
        EXPECT_EQ(texts(tokens), row.expected) << row.name;
    }
}

TEST(Tokenize, AppendsReservesAndReportsLengths)
{
    Table<CharString, 100> tokens;
    tokens.append(CharString());
    tokens.append(CharString(""));
    EXPECT_EQ(tokenize("x;;y", ';', tokens, 6), 3);
    EXPECT_EQ(texts(tokens), (Tokens { "", "", "x", "", "y" })) << "earlier empty tokens get text too";

    Table<CharString, 100> reserved;
    EXPECT_EQ(tokenize("a;b;c", ';', reserved, 1), 3);
    EXPECT_EQ(reserved.capacity, 3) << "room reserved exactly";

    Table<int, 100> positions;
    EXPECT_EQ(getCharPositions("ab:cd:e", ":", positions), 7);
    Table<CharString, 100> parts;
    Table<int, 100> lengths;
    EXPECT_EQ(tokenizePositions("ab:cd:e", 7, parts, &lengths, positions, 3), 3);
    EXPECT_EQ(texts(parts), (Tokens { "ab", "cd", "e" }));
    EXPECT_EQ(std::vector<int>(lengths.begin(), lengths.end()), (std::vector<int> { 2, 2, 1 }));
    EXPECT_EQ(lengths.capacity, 3);

    Table<CharString, 100> cut;
    EXPECT_EQ(tokenizePositions("ab:cd:e", 4, cut, nullptr, positions, 0), 2);
    EXPECT_EQ(texts(cut), (Tokens { "ab", "c" })) << "the length bounds the last token";
}

TEST(Tokenize, SplitCharString)
{
    // A null head or tail stands for a null string.
    const struct
    {
        const char* text;
        char delimiter;
        const char* head;
        const char* tail;
    } rows[] = {
        { "abc", '=', "abc", nullptr },
        { "a=b=c", '=', "a", "b=c" },
        { "=x", '=', nullptr, "x" },
        { "x=", '=', "x", nullptr },
        { "", '=', nullptr, nullptr },
        { "a=b", '\0', nullptr, nullptr },
    };
    for (const auto& row : rows) {
        auto parts = splitCharString(row.text, row.delimiter);
        EXPECT_TRUE(parts.first == row.head) << row.text;
        EXPECT_TRUE(parts.second == row.tail) << row.text;
    }
}

TEST(Tokenize, MasksAndNameLists)
{
    const struct
    {
        const char* list;
        const char* names;
        char delimiter;
        unsigned long expected;
    } masks[] = {
        { "b;A", "a;b;c", ';', 3 },
        { "c", "a;;c", ';', 4 },
        { ";;", "a;b", ';', 0 },
        { "a", nullptr, ';', 0 },
        { "a", "a", '\0', 0 },
        { "x,Y", "y,z,x", ',', 5 },
    };
    for (const auto& row : masks)
        EXPECT_EQ(maskFromStringList(row.list, row.names, row.delimiter), row.expected) << row.list;

    const char* names[] = { "one", "two", "three" };
    EXPECT_EQ(stringListFromMask(5, names, 3, ", "), "one, three");
    EXPECT_EQ(stringListFromMask(8 | 2, names, 3, ", "), "two") << "bits beyond count ignored";
    for (CharString empty : { stringListFromMask(0, names, 3, ","), stringListFromMask(1, names, 65, ","),
             stringListFromMask(1, names, 3, nullptr), stringListFromMask(8, names, 3, ",") }) {
        EXPECT_FALSE(empty.isNull());
        EXPECT_EQ(empty, "");
    }

    EXPECT_EQ(escapeCharacter("say \"hi\"", '"', '\\'), "say \\\"hi\\\"");
    EXPECT_FALSE(escapeCharacter(nullptr, '"', '\\').isNull());
}

TEST(Tokenize, RemoveNeighbouringCharacters)
{
    // `expected` is read at buffer + `offset`.
    const struct
    {
        const char* name;
        const char* text;
        char character;
        const char* others;
        RelativeCharPosition where;
        int removed;
        const char* expected;
        int offset;
    } rows[] = {
        { "runs collapse", "a//b///c/", '/', nullptr, AfterCharacter, 3, "a/b/c/", 0 },
        { "spaces after", "a  =  b = c", '=', " ", AfterCharacter, 3, "a  =b =c", 0 },
        { "spaces before, moved to start", "a  =  b = c", '=', " ", BeforeCharacter, 3, "a=  b= c", 0 },
        { "spaces before, left at end", "a  =  b = c", '=', " ", BeforeCharacterAtEnd, 3, "a=  b= c", 3 },
        { "empty text", "", '/', nullptr, AfterCharacter, -1, "", 0 },
    };
    for (const auto& row : rows) {
        char buffer[64];
        strcpy(buffer, row.text);
        EXPECT_EQ(removeNeighbouringCharacters(buffer, row.character, row.others, row.where), row.removed)
            << row.name;
        EXPECT_STREQ(buffer + row.offset, row.expected) << row.name;
    }
}

TEST(Tokenize, DelimitedSubstringAndTrim)
{
    const struct
    {
        const char* text;
        char open, close;
        unsigned int size;
        int result;
        const char* expected;
    } rows[] = {
        { "f(x(y))z", '(', ')', 32, 1, "x(y)" },
        { "ab)c", '(', ')', 32, 1, "ab" },
        { "a(bc", '(', ')', 32, 1, "bc" },
        { ")x(", '(', ')', 32, 0, "" },
        { "f(xyz)", '(', ')', 3, 1, "xy" },
        { "|", '|', '|', 32, 0, "" },
        { "(a)", '(', ')', 0, 0, "" },
    };
    for (const auto& row : rows) {
        char out[32] = "";
        EXPECT_EQ(delimitedSubstring(row.text, row.open, row.close, out, row.size), row.result) << row.text;
        EXPECT_STREQ(out, row.expected) << row.text;
    }

    const struct
    {
        const char* text;
        int removed;
        const char* expected;
    } trims[] = { { "  ab c \t\n", 5, "ab c" }, { "   ", 3, "" }, { "x", 0, "x" } };
    for (const auto& row : trims) {
        char buffer[32];
        strcpy(buffer, row.text);
        EXPECT_EQ(trimWhitespace(buffer), row.removed) << '"' << row.text << '"';
        EXPECT_STREQ(buffer, row.expected);
    }
}

TEST(Tokenize, FromStringBounds)
{
    const struct
    {
        const char* text;
        int ok, value;
    } ints[] = {
        { "12", 1, 12 },
        { "-5", 1, -5 },
        { "+7", 1, 7 },
        { "-2147483648", 1, -2147483647 - 1 },
        { "2147483648", 0, 0 },
        { "-2147483649", 0, 0 },
        { "12x", 0, 0 },
        { " 12", 0, 0 },
        { "", 0, 0 },
        { "-", 0, 0 },
        { "99999999999999999999", 0, 0 },
    };
    for (const auto& row : ints) {
        int value = 4711;
        EXPECT_EQ(fromString(value, row.text), row.ok) << row.text;
        EXPECT_EQ(value, row.ok ? row.value : 4711) << "value left alone on failure";
    }

    const struct
    {
        const char* text;
        int base, ok;
        unsigned int value;
    } unsigneds[] = {
        { "ff", 16, 1, 255 },
        { "ff", 10, 0, 0 },
        { "0x1f", 0, 1, 31 },
        { "4294967295", 10, 1, 4294967295u },
        { "4294967296", 10, 0, 0 },
        { "-1", 16, 0, 0 },
        { "z", 36, 1, 35 },
        { "12", 37, 0, 0 },
        { "", 16, 0, 0 },
        { "12 ", 10, 0, 0 },
    };
    for (const auto& row : unsigneds) {
        unsigned int value = 4711;
        EXPECT_EQ(fromString(value, row.text, row.base), row.ok) << row.text << " base " << row.base;
        EXPECT_EQ(value, row.ok ? row.value : 4711u) << row.text;
    }
}

TEST(Tokenize, PathHelpers)
{
    const struct
    {
        const char* in;
        const char* out;
    } doubles[] = { { "a//b\\\\c", "a/b\\c" }, { "/\\x", "\\x" }, { "\\/x", "/x" }, { "///", "/" } };
    for (const auto& row : doubles)
        EXPECT_EQ(edited(row.in, removeDoubleSlashes), row.out) << row.in;

    const struct
    {
        const char* in;
        int size;
        const char* out;
    } ends[] = { { "/a/b//", 520, "/a/b" }, { "///", 520, "/" }, { "a\\", 520, "a\\" }, { "a//", 2, "a" } };
    for (const auto& row : ends)
        EXPECT_EQ(edited(row.in, [&](char* path) { removeSlashesAtEnd(path, row.size); }), row.out) << row.in;

    const struct
    {
        const char* folder;
        const char* name;
        int size;
        const char* out;
    } joins[] = { { "", "x", 520, "x" }, { "/a", "b", 520, "/a/b" }, { "/a/", "b", 520, "/a/b" },
        { "/abc", "def", 6, "/abc/" } };
    for (const auto& row : joins)
        EXPECT_EQ(
            edited(row.folder, [&](char* folder) { appendToFolder(folder, row.name, row.size); }), row.out)
            << row.folder << " + " << row.name;

    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("plain"), "x"));
    EXPECT_EQ(isDirectory(dir.path().c_str()), 1);
    EXPECT_EQ(isDirectory(dir.file("plain").c_str()), 0);
}

TEST(Tokenize, FileNamePart)
{
    // `at` is where the name starts in `path`: the result points into the path itself.
    struct Row
    {
        const char* name;
        const char* path;
        const char* separators;
        bool keepTrailing;
        int at;
    };
    const Row rows[] = {
        { "slashes", "/opt/app/bin/tool", "/\\", false, 13 },
        { "backslashes", "dir\\sub\\file.txt", "/\\", false, 8 },
        { "the later of both wins", "a/b\\c", "/\\", false, 4 },
        { "the later of both wins, reversed", "a\\b/c", "/\\", false, 4 },
        { "no separator: all name", "plain", "/\\", false, 0 },
        { "empty path", "", "/\\", false, 0 },
        { "trailing slash: empty name", "a/b/", "/\\", false, 4 },
        { "trailing slash kept with the name", "a/b/", "/\\", true, 2 },
        { "trailing backslash kept with the name", "a\\b\\", "/\\", true, 2 },
        { "only a slash, kept", "/", "/\\", true, 0 },
        { "only a slash, cut", "/", "/\\", false, 1 },
        { "double trailing slash, kept", "a//", "/\\", true, 2 },
        { "one character, kept", "x", "/\\", true, 0 },
        { "slash only: a backslash is part of the name", "a/b\\c", "/", false, 2 },
        { "slash only: no slash", "a\\b", "/", false, 0 },
        { "no separators at all", "a/b", "", false, 0 },
        { "null separators", "a/b", nullptr, false, 0 },
    };
    for (const Row& row : rows)
        EXPECT_EQ(fileNamePart(row.path, row.separators, row.keepTrailing) - row.path, row.at) << row.name;
    const char* path = "/usr/bin\\tool";
    EXPECT_EQ(fileNamePart(path), path + 9) << "both separators by default";
    EXPECT_STREQ(fileNamePart(nullptr), "");
    EXPECT_STREQ(fileNamePart(nullptr, "/", true), "");
}

} // namespace
