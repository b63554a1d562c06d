#include "foundation/strings/tokenize.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/string_builder.h"

namespace TeskUtils {

namespace {

// A 256-bit set of characters.
class CharSet
{
public:
    explicit CharSet(const char* chars)
    {
        memset(bits, 0, sizeof bits);
        for (; chars && *chars; ++chars)
            add(*chars);
    }
    void add(char c)
    {
        unsigned char u = static_cast<unsigned char>(c);
        bits[u >> 3] |= static_cast<unsigned char>(1u << (u & 7));
    }
    bool has(char c) const
    {
        unsigned char u = static_cast<unsigned char>(c);
        return bits[u >> 3] & (1u << (u & 7));
    }

private:
    unsigned char bits[32];
};

bool isSlash(char c)
{
    return c == '/' || c == '\\';
}

} // namespace

int tokenizePositionArray(const char* text, int length, Table<CharString, 100>& tokens,
    Table<int, 100>* lengths, const int* positions, int count, int flags)
{
    if (!text)
        return 0;
    if (length < 0)
        length = 0;
    if (!positions)
        count = 0;
    if (flags & TOKENIZE_RESERVE) {
        tokens.reserve(tokens.count + count + 1, 1);
        if (lengths)
            lengths->reserve(lengths->count + count + 1, 1);
    }
    bool keepEmpty = (flags & TOKENIZE_KEEP_EMPTY) != 0;
    int kept = 0;
    int start = 0;
    for (int i = 0; i <= count; ++i) {
        int end = i < count ? positions[i] : length;
        if (end > length)
            end = length;
        int tokenLength = end > start ? end - start : 0;
        if (tokenLength > 0) {
            tokens.append(CharString(text + start, tokenLength));
        } else if (keepEmpty) {
            tokens.append(CharString());
        } else {
            start = end + 1;
            continue;
        }
        if (lengths)
            lengths->append(tokenLength);
        ++kept;
        start = end + 1;
    }
    if ((flags & TOKENIZE_KEEP_EMPTY) && (flags & TOKENIZE_EMPTY_AS_TEXT)) {
        for (int i = 0; i < tokens.count; ++i)
            if (tokens[i].isEmpty())
                tokens[i] = CharString("");
    }
    return kept;
}

int getCharPositionArray(const char* text, const char* set, Table<int, 32>& positions)
{
    if (!text || !set || !*set)
        return 0;
    CharSet chars(set);
    int i = 0;
    for (; text[i]; ++i)
        if (chars.has(text[i]))
            positions.append(i);
    return i;
}

int tokenize(const char* text, char delimiter, Table<CharString, 100>& tokens, int flags)
{
    if (!text || !*text)
        return 0;
    Table<int, 32> positions;
    int length = 0;
    for (; text[length]; ++length)
        if (delimiter && text[length] == delimiter)
            positions.append(length);
    return tokenizePositions(text, length, tokens, nullptr, positions, flags);
}

int tokenize(const char* text, const char* delimiters, Table<CharString, 100>& tokens, int flags)
{
    if (!text || !*text || !delimiters || !*delimiters)
        return 0;
    Table<int, 32> positions;
    int length = getCharPositionArray(text, delimiters, positions);
    return tokenizePositions(text, length, tokens, nullptr, positions, flags);
}

std::pair<CharString, CharString> splitCharString(const char* text, char delimiter)
{
    std::pair<CharString, CharString> parts;
    if (!text || !*text || !delimiter)
        return parts;
    const char* at = strchr(text, delimiter);
    if (!at) {
        parts.first = text;
        return parts;
    }
    if (at > text)
        parts.first = CharString(text, static_cast<int>(at - text));
    if (at[1])
        parts.second = at + 1;
    return parts;
}

unsigned long maskFromStringList(const char* list, const char* names, char delimiter)
{
    if (!list || !*list || !names || !*names || !delimiter)
        return 0;
    Table<CharString, 100> items;
    Table<CharString, 100> nameTokens;
    tokenize(list, delimiter, items, 0);
    // Empty names keep their place, so that bit i always stands for the i-th name.
    tokenize(names, delimiter, nameTokens, TOKENIZE_KEEP_EMPTY);
    unsigned long mask = 0;
    const int maxBits = static_cast<int>(sizeof mask * 8);
    for (int i = 0; i < nameTokens.count && i < maxBits; ++i) {
        if (nameTokens[i].isEmpty())
            continue;
        for (int j = 0; j < items.count; ++j) {
            if (nameTokens[i].equalsNoCase(items[j].data())) {
                mask |= 1ul << i;
                break;
            }
        }
    }
    return mask;
}

CharString stringListFromMask(unsigned long mask, const char* const* names, int count, const char* separator)
{
    if (!mask || !names || !separator || count < 1 || count > 64)
        return CharString("");
    StringBuilder joined(64L * count, 1.618f);
    joined.clear();
    bool first = true;
    for (int i = 0; i < count; ++i) {
        if (!(mask & (1ul << i)) || !names[i])
            continue;
        if (!first)
            joined << separator;
        joined << names[i];
        first = false;
    }
    return joined.getCharString();
}

CharString escapeCharacter(const char* text, char character, char escape)
{
    if (!text)
        return CharString("");
    size_t length = strlen(text);
    size_t extra = 0;
    for (size_t i = 0; i < length; ++i)
        if (character && text[i] == character)
            ++extra;
    CharString result;
    char* out = result.splitBuffer(static_cast<int>(length + extra + 1), 0);
    for (size_t i = 0; i < length; ++i) {
        if (character && text[i] == character)
            *out++ = escape;
        *out++ = text[i];
    }
    *out = '\0';
    return result;
}

int removeNeighbouringCharacters(char* text, char character, const char* others, RelativeCharPosition where)
{
    if (!text || !*text)
        return -1;
    CharSet set(others);
    if (!others)
        set.add(character);
    int length = static_cast<int>(strlen(text));

    if (where == AfterCharacter) {
        int out = 0;
        for (int in = 0; in < length; ++in) {
            text[out++] = text[in];
            if (text[in] != character)
                continue;
            while (in + 1 < length && set.has(text[in + 1]))
                ++in;
        }
        text[out] = '\0';
        return length - out;
    }

    // Backward: the kept characters are gathered at the end of the buffer, before the
    // terminator, which stays in place.
    int out = length;
    for (int in = length - 1; in >= 0; --in) {
        char c = text[in];
        text[--out] = c;
        if (c != character)
            continue;
        while (in - 1 >= 0 && set.has(text[in - 1]))
            --in;
    }
    if (where == BeforeCharacter && out > 0)
        memmove(text, text + out, static_cast<size_t>(length - out + 1));
    return out;
}

int delimitedSubstring(const char* text, char open, char close, char* out, unsigned int size)
{
    if (!text || !out || size == 0)
        return 0;
    const char* opening = open ? strchr(text, open) : nullptr;
    const char* closing = close ? strrchr(text, close) : nullptr;
    const char* start = opening ? opening + 1 : text;
    const char* end = closing ? closing : text + strlen(text);
    if (start > end)
        return 0;
    // No NUL lies between start and end, so the copy stops at end or at the size.
    size_t length = static_cast<size_t>(end - start);
    copyBounded(out, start, length + 1 < size ? length + 1 : size);
    return 1;
}

int trimWhitespace(char* text)
{
    if (!text)
        return 0;
    size_t length = strlen(text);
    size_t end = length;
    while (end > 0 && isspace(static_cast<unsigned char>(text[end - 1])))
        --end;
    size_t start = 0;
    while (start < end && isspace(static_cast<unsigned char>(text[start])))
        ++start;
    if (start > 0)
        memmove(text, text + start, end - start);
    text[end - start] = '\0';
    return static_cast<int>(length - (end - start));
}

int fromString(int& value, const char* text)
{
    if (!text)
        return 0;
    char first = text[0];
    if (!isdigit(static_cast<unsigned char>(first)) && first != '-' && first != '+')
        return 0;
    errno = 0;
    char* end = nullptr;
    long parsed = strtol(text, &end, 10);
    if (errno || end == text || *end || parsed < INT_MIN || parsed > INT_MAX)
        return 0;
    value = static_cast<int>(parsed);
    return 1;
}

int fromString(unsigned int& value, const char* text, int base)
{
    if (!text || base < 0 || base == 1 || base > 36)
        return 0;
    if (!isdigit(static_cast<unsigned char>(text[0])) && base <= 10)
        return 0;
    errno = 0;
    char* end = nullptr;
    unsigned long parsed = strtoul(text, &end, base);
    if (errno || end == text || *end || parsed > UINT_MAX)
        return 0;
    value = static_cast<unsigned int>(parsed);
    return 1;
}

void removeDoubleSlashes(char* path)
{
    if (!path)
        return;
    char* out = path;
    for (const char* in = path; *in; ++in) {
        if (isSlash(in[0]) && isSlash(in[1]))
            continue;
        *out++ = *in;
    }
    *out = '\0';
}

void removeSlashesAtEnd(char* path, int size)
{
    if (!path || size <= 0)
        return;
    size_t length = strnlen(path, static_cast<size_t>(size));
    while (length > 1 && path[length - 1] == '/')
        path[--length] = '\0';
}

void appendToFolder(char* folder, const char* name, int size)
{
    if (!folder || size <= 0)
        return;
    size_t length = strnlen(folder, static_cast<size_t>(size));
    if (length > 0 && folder[length - 1] != '/')
        appendBounded(folder, "/", static_cast<size_t>(size));
    appendBounded(folder, name, static_cast<size_t>(size));
}

const char* fileNamePart(const char* path, const char* separators, bool keepTrailing)
{
    if (!path)
        return "";
    size_t end = strlen(path);
    if (keepTrailing && end > 0)
        --end;
    const char* name = path;
    for (size_t i = 0; i < end && separators; ++i)
        if (strchr(separators, path[i]))
            name = path + i + 1;
    return name;
}

int isDirectory(const char* path)
{
    struct stat info;
    if (!path || stat(path, &info) != 0)
        return 0;
    return S_ISDIR(info.st_mode) ? 1 : 0;
}

} // namespace TeskUtils
