#include "console/text/text_wrap.h"

#include <cstring>

namespace ConsoleText {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Columns a UTF-8 text occupies: continuation bytes take no column of their own.
int columnsOf(const char* text, int bytes)
{
    int columns = 0;
    for (int i = 0; i < bytes; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80)
            ++columns;
    }
    return columns;
}

// Byte length of the longest prefix of `text` (of `bytes` bytes) that fits in `columns`,
// never splitting a UTF-8 sequence; at least one character.
int bytesForColumns(const char* text, int bytes, int columns)
{
    int used = 0;
    int i = 0;
    while (i < bytes) {
        int next = i + 1;
        while (next < bytes && (static_cast<unsigned char>(text[next]) & 0xC0) == 0x80)
            ++next;
        if (used + 1 > columns && i > 0)
            break;
        ++used;
        i = next;
    }
    return i;
}

} // namespace

void appendWrapped(TeskUtils::StringBuilder& out, const char* text, int width, const char* firstPrefix,
    const char* restPrefix)
{
    if (!text)
        return;
    const char* prefix = firstPrefix ? firstPrefix : "";
    int prefixColumns = columnsOf(prefix, static_cast<int>(strlen(prefix)));
    int lineColumns = 0;
    bool lineOpen = false;
    const char* p = text;
    for (;;) {
        while (*p && isBlank(*p))
            ++p;
        if (!*p)
            break;
        const char* wordStart = p;
        while (*p && !isBlank(*p))
            ++p;
        int wordBytes = static_cast<int>(p - wordStart);
        int wordColumns = columnsOf(wordStart, wordBytes);
        while (wordBytes > 0) {
            if (!lineOpen) {
                out << prefix;
                lineOpen = true;
                lineColumns = prefixColumns;
                int room = width - lineColumns;
                if (room < 1)
                    room = 1;
                if (wordColumns <= room) {
                    out.append(wordStart, wordBytes);
                    lineColumns += wordColumns;
                    wordBytes = 0;
                } else {
                    // A word wider than a whole line: cut it hard.
                    int cut = bytesForColumns(wordStart, wordBytes, room);
                    out.append(wordStart, cut);
                    out << '\n';
                    lineOpen = false;
                    wordStart += cut;
                    wordBytes -= cut;
                    wordColumns = columnsOf(wordStart, wordBytes);
                    prefix = restPrefix ? restPrefix : "";
                    prefixColumns = columnsOf(prefix, static_cast<int>(strlen(prefix)));
                }
            } else if (lineColumns + 1 + wordColumns <= width) {
                out << ' ';
                out.append(wordStart, wordBytes);
                lineColumns += 1 + wordColumns;
                wordBytes = 0;
            } else {
                out << '\n';
                lineOpen = false;
                prefix = restPrefix ? restPrefix : "";
                prefixColumns = columnsOf(prefix, static_cast<int>(strlen(prefix)));
            }
        }
    }
    if (lineOpen)
        out << '\n';
}

} // namespace ConsoleText
