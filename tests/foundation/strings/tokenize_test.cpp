// Tokenizers, list masks, number parsing and path helpers.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "foundation/strings/tokenize.h"
#include "support/paths.h"

using namespace TeskUtils;

namespace {

// Tokens as strings, "<null>" standing for a null token.
std::vector<std::string> texts(const Table<CharString, 100>& tokens)
{
    std::vector<std::string> out;
    for (const CharString& token : tokens)
        out.push_back(token.isNull() ? "<null>" : token.data());
    return out;
}

using Tokens = std::vector<std::string>;

TEST(Tokenize, SingleDelimiterAndFlags)
{
    struct Row {
        const char* name;
        const char* text;
        char delimiter;
        int flags;
        Tokens expected;
    };
    const Row rows[] = {
        {"empty tokens left out", "a;;b", ';', 0, {"a", "b"}},
        {"empty tokens kept as null", "a;;b", ';', 2, {"a", "<null>", "b"}},
        {"empty tokens kept as text", "a;;b", ';', 6, {"a", "", "b"}},
        {"bit 2 alone changes nothing", "a;;b", ';', 4, {"a", "b"}},
        {"only a delimiter", ";", ';', 0, {}},
        {"only a delimiter, keep empty", ";", ';', 2, {"<null>", "<null>"}},
        {"leading and trailing", ";x;", ';', 2, {"<null>", "x", "<null>"}},
        {"no delimiter in text", "abc", ';', 0, {"abc"}},
        {"NUL delimiter splits nothing", "a;b", '\0', 0, {"a;b"}},
        {"empty text", "", ';', 2, {}},
        {"null text", nullptr, ';', 2, {}},
    };
    for (const Row& row : rows) {
        Table<CharString, 100> tokens;
        int added = tokenize(row.text, row.delimiter, tokens, row.flags);
        EXPECT_EQ(added, static_cast<int>(row.expected.size())) << row.name;
        EXPECT_EQ(texts(tokens), row.expected) << row.name;
    }
}

TEST(Tokenize, DelimiterSet)
{
    struct Row {
        const char* name;
        const char* text;
        const char* set;
        Tokens expected;
    };
    const Row rows[] = {
        {"any character of the set", "a,b;c d", ",; ", {"a", "b", "c", "d"}},
        {"high characters in the set", "a\xe9" "b", "\xe9", {"a", "b"}},
        {"empty set", "a,b", "", {}},
        {"null set", "a,b", nullptr, {}},
    };
    for (const Row& row : rows) {
        Table<CharString, 100> tokens;
        EXPECT_EQ(tokenize(row.text, row.set, tokens, 0), static_cast<int>(row.expected.size()))
            << row.name;
        EXPECT_EQ(texts(tokens), row.expected) << row.name;
    }
}

TEST(Tokenize, AppendsReservesAndReportsLengths)
{
    Table<CharString, 100> tokens;
    tokens.append(CharString());
    tokens.append(CharString(""));
    EXPECT_EQ(tokenize("x;;y", ';', tokens, 6), 3);
    EXPECT_EQ(texts(tokens), (Tokens{"", "", "x", "", "y"})) << "earlier empty tokens get text too";
    EXPECT_FALSE(tokens[0].isNull());

    Table<CharString, 100> reserved;
    EXPECT_EQ(tokenize("a;b;c", ';', reserved, 1), 3);
    EXPECT_EQ(reserved.capacity, 3) << "room reserved exactly";

    Table<int, 100> positions;
    EXPECT_EQ(getCharPositions("ab:cd:e", ":", positions), 7);
    EXPECT_EQ(positions.count, 2);
    Table<CharString, 100> parts;
    Table<int, 100> lengths;
    EXPECT_EQ(tokenizePositions("ab:cd:e", 7, parts, &lengths, positions, 3), 3);
    EXPECT_EQ(texts(parts), (Tokens{"ab", "cd", "e"}));
    ASSERT_EQ(lengths.count, 3);
    EXPECT_EQ(lengths[0], 2);
    EXPECT_EQ(lengths[2], 1);
    EXPECT_EQ(lengths.capacity, 3);

    Table<CharString, 100> cut;
    EXPECT_EQ(tokenizePositions("ab:cd:e", 4, cut, nullptr, positions, 0), 2);
    EXPECT_EQ(texts(cut), (Tokens{"ab", "c"})) << "the length bounds the last token";
}

TEST(Tokenize, SplitCharString)
{
    struct Row {
        const char* text;
        char delimiter;
        const char* head; // null: null string
        const char* tail;
    };
    const Row rows[] = {
        {"abc", '=', "abc", nullptr}, {"a=b=c", '=', "a", "b=c"}, {"=x", '=', nullptr, "x"},
        {"x=", '=', "x", nullptr},    {"", '=', nullptr, nullptr}, {nullptr, '=', nullptr, nullptr},
        {"a=b", '\0', nullptr, nullptr},
    };
    for (const Row& row : rows) {
        auto parts = splitCharString(row.text, row.delimiter);
        const char* label = row.text ? row.text : "(null)";
        EXPECT_TRUE(parts.first == row.head) << label;
        EXPECT_TRUE(parts.second == row.tail) << label;
    }
}

TEST(Tokenize, MasksAndNameLists)
{
    struct MaskRow {
        const char* list;
        const char* names;
        char delimiter;
        unsigned long expected;
    };
    const MaskRow masks[] = {
        {"b;A", "a;b;c", ';', 3}, {"c", "a;;c", ';', 4},     {";;", "a;b", ';', 0},
        {"", "a", ';', 0},        {"a", nullptr, ';', 0},    {"a", "a", '\0', 0},
        {"x,Y", "y,z,x", ',', 5},
    };
    for (const MaskRow& row : masks)
        EXPECT_EQ(maskFromStringList(row.list, row.names, row.delimiter), row.expected)
            << row.list << " / " << (row.names ? row.names : "(null)");

    const char* names[] = {"one", "two", "three"};
    EXPECT_EQ(stringListFromMask(5, names, 3, ", "), "one, three");
    EXPECT_EQ(stringListFromMask(8 | 2, names, 3, ", "), "two") << "bits beyond count ignored";
    for (CharString empty : {stringListFromMask(0, names, 3, ","), stringListFromMask(1, names, 65, ","),
                             stringListFromMask(1, names, 0, ","), stringListFromMask(1, nullptr, 3, ","),
                             stringListFromMask(1, names, 3, nullptr), stringListFromMask(8, names, 3, ",")}) {
        EXPECT_FALSE(empty.isNull());
        EXPECT_EQ(empty, "");
    }

    EXPECT_EQ(escapeCharacter("say \"hi\"", '"', '\\'), "say \\\"hi\\\"");
    EXPECT_EQ(escapeCharacter(nullptr, '"', '\\'), "");
    EXPECT_FALSE(escapeCharacter(nullptr, '"', '\\').isNull());
}

TEST(Tokenize, RemoveNeighbouringCharacters)
{
    struct Row {
        const char* name;
        const char* text;
        char character;
        const char* others;
        RelativeCharPosition where;
        int removed;
        const char* expected; // read at text + offset
        int offset;
    };
    const Row rows[] = {
        {"runs collapse", "a//b///c/", '/', nullptr, AfterCharacter, 3, "a/b/c/", 0},
        {"spaces after", "a  =  b = c", '=', " ", AfterCharacter, 3, "a  =b =c", 0},
        {"spaces before, moved to start", "a  =  b = c", '=', " ", BeforeCharacter, 3, "a=  b= c", 0},
        {"spaces before, left at end", "a  =  b = c", '=', " ", BeforeCharacterAtEnd, 3, "a=  b= c", 3},
        {"nothing to remove", "abc", '=', " ", BeforeCharacter, 0, "abc", 0},
    };
    for (const Row& row : rows) {
        char buffer[64];
        strcpy(buffer, row.text);
        EXPECT_EQ(removeNeighbouringCharacters(buffer, row.character, row.others, row.where), row.removed)
            << row.name;
        EXPECT_STREQ(buffer + row.offset, row.expected) << row.name;
    }
    char empty[1] = "";
    EXPECT_EQ(removeNeighbouringCharacters(empty, '/', nullptr, AfterCharacter), -1);
    EXPECT_EQ(removeNeighbouringCharacters(nullptr, '/', nullptr, AfterCharacter), -1);
}

TEST(Tokenize, DelimitedSubstringAndTrim)
{
    struct Row {
        const char* text;
        char open, close;
        unsigned int size;
        int result;
        const char* expected;
    };
    const Row rows[] = {
        {"f(x(y))z", '(', ')', 32, 1, "x(y)"}, {"ab)c", '(', ')', 32, 1, "ab"},
        {"a(bc", '(', ')', 32, 1, "bc"},       {")x(", '(', ')', 32, 0, ""},
        {"f(xyz)", '(', ')', 3, 1, "xy"},      {"()", '(', ')', 32, 1, ""},
        {"abc", '(', ')', 1, 1, ""},           {"|", '|', '|', 32, 0, ""},
    };
    for (const Row& row : rows) {
        char out[32] = "";
        EXPECT_EQ(delimitedSubstring(row.text, row.open, row.close, out, row.size), row.result) << row.text;
        EXPECT_STREQ(out, row.expected) << row.text;
    }
    char out[4];
    EXPECT_EQ(delimitedSubstring(nullptr, '(', ')', out, 4), 0);
    EXPECT_EQ(delimitedSubstring("(a)", '(', ')', nullptr, 4), 0);
    EXPECT_EQ(delimitedSubstring("(a)", '(', ')', out, 0), 0);

    const struct {
        const char* text;
        int removed;
        const char* expected;
    } trims[] = {{"  ab c \t\n", 5, "ab c"}, {"   ", 3, ""}, {"", 0, ""}, {"x", 0, "x"}};
    for (const auto& row : trims) {
        char buffer[32];
        strcpy(buffer, row.text);
        EXPECT_EQ(trimWhitespace(buffer), row.removed) << '"' << row.text << '"';
        EXPECT_STREQ(buffer, row.expected);
    }
}

TEST(Tokenize, FromStringBounds)
{
    const struct {
        const char* text;
        int ok;
        int value;
    } ints[] = {
        {"12", 1, 12},          {"-5", 1, -5},          {"+7", 1, 7},
        {"2147483647", 1, 2147483647},                  {"-2147483648", 1, -2147483647 - 1},
        {"2147483648", 0, 0},   {"-2147483649", 0, 0},  {"12x", 0, 0},
        {" 12", 0, 0},          {"", 0, 0},             {"-", 0, 0},
        {"99999999999999999999", 0, 0},                 {nullptr, 0, 0},
    };
    for (const auto& row : ints) {
        int value = 4711;
        EXPECT_EQ(fromString(value, row.text), row.ok) << (row.text ? row.text : "(null)");
        EXPECT_EQ(value, row.ok ? row.value : 4711) << "value left alone on failure";
    }

    const struct {
        const char* text;
        int base;
        int ok;
        unsigned int value;
    } unsigneds[] = {
        {"ff", 16, 1, 255},        {"ff", 10, 0, 0},          {"0x1f", 0, 1, 31},
        {"017", 0, 1, 15},         {"4294967295", 10, 1, 4294967295u},
        {"4294967296", 10, 0, 0},  {"-1", 16, 0, 0},          {"z", 36, 1, 35},
        {"12", 37, 0, 0},          {"1", 1, 0, 0},            {"", 16, 0, 0},
        {"12 ", 10, 0, 0},
    };
    for (const auto& row : unsigneds) {
        unsigned int value = 4711;
        EXPECT_EQ(fromString(value, row.text, row.base), row.ok) << row.text << " base " << row.base;
        EXPECT_EQ(value, row.ok ? row.value : 4711u) << row.text;
    }
}

TEST(Tokenize, PathHelpers)
{
    const struct {
        const char* in;
        const char* out;
    } doubles[] = {{"a//b\\\\c", "a/b\\c"}, {"/\\x", "\\x"}, {"\\/x", "/x"}, {"x", "x"}, {"///", "/"}};
    for (const auto& row : doubles) {
        char path[32];
        strcpy(path, row.in);
        removeDoubleSlashes(path);
        EXPECT_STREQ(path, row.out) << row.in;
    }

    const struct {
        const char* in;
        int size;
        const char* out;
    } ends[] = {{"/a/b//", 520, "/a/b"}, {"///", 520, "/"}, {"a\\", 520, "a\\"}, {"a//", 2, "a"}};
    for (const auto& row : ends) {
        char path[32];
        strcpy(path, row.in);
        removeSlashesAtEnd(path, row.size);
        EXPECT_STREQ(path, row.out) << row.in;
    }

    const struct {
        const char* folder;
        const char* name;
        int size;
        const char* out;
    } joins[] = {
        {"", "x", 520, "x"}, {"/a", "b", 520, "/a/b"}, {"/a/", "b", 520, "/a/b"}, {"/abc", "def", 6, "/abc/"},
    };
    for (const auto& row : joins) {
        char folder[520];
        strcpy(folder, row.folder);
        appendToFolder(folder, row.name, row.size);
        EXPECT_STREQ(folder, row.out) << row.folder << " + " << row.name;
    }

    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("plain"), "x"));
    EXPECT_EQ(isDirectory(dir.path().c_str()), 1);
    EXPECT_EQ(isDirectory(dir.file("plain").c_str()), 0);
    EXPECT_EQ(isDirectory(dir.file("missing").c_str()), 0);
    EXPECT_EQ(isDirectory(nullptr), 0);
}

} // namespace
