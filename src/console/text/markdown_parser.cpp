// Block and inline reader of the product's Markdown dialect.
#include "console/text/markdown.h"

#include "foundation/strings/string_builder.h"

#include <cctype>
#include <cstring>

QuilbMarkDownNode::~QuilbMarkDownNode()
{
    QuilbMarkDownNode* child = firstChild;
    while (child) {
        QuilbMarkDownNode* following = child->next;
        delete child;
        child = following;
    }
}

QuilbMarkDownNode* QuilbMarkDownNode::add(QuilbMarkDownNode* child)
{
    if (lastChild)
        lastChild->next = child;
    else
        firstChild = child;
    lastChild = child;
    return child;
}

namespace {

// A line of the source without its line end, possibly with leading columns taken off.
struct Line
{
    const char* text;
    int length;
};

const int tabWidth = 4;

bool isBlankLine(const Line& line)
{
    for (int i = 0; i < line.length; ++i) {
        if (line.text[i] != ' ' && line.text[i] != '\t')
            return false;
    }
    return true;
}

// Columns of leading white space.
int indentOf(const Line& line)
{
    int columns = 0;
    for (int i = 0; i < line.length; ++i) {
        if (line.text[i] == ' ')
            ++columns;
        else if (line.text[i] == '\t')
            columns += tabWidth - columns % tabWidth;
        else
            break;
    }
    return columns;
}

// The line with up to `columns` columns of leading white space taken off.
Line stripColumns(const Line& line, int columns)
{
    int taken = 0;
    int i = 0;
    while (i < line.length && taken < columns) {
        if (line.text[i] == ' ')
            ++taken;
        else if (line.text[i] == '\t')
            taken += tabWidth - taken % tabWidth;
        else
            break;
        ++i;
    }
    return Line { line.text + i, line.length - i };
}

Line trimmedStart(const Line& line)
{
    return stripColumns(line, 1 << 20);
}

bool startsWith(const Line& line, const char* prefix)
{
    int n = static_cast<int>(strlen(prefix));
    return line.length >= n && memcmp(line.text, prefix, n) == 0;
}

// Heading level of a (left-trimmed) line, 0 when it is none.
int headingLevel(const Line& line)
{
    int level = 0;
    while (level < line.length && line.text[level] == '#')
        ++level;
    if (level < 1 || level > 6)
        return 0;
    if (level < line.length && line.text[level] != ' ' && line.text[level] != '\t')
        return 0;
    return level;
}

bool isRule(const Line& line)
{
    char mark = 0;
    int count = 0;
    for (int i = 0; i < line.length; ++i) {
        char c = line.text[i];
        if (c == ' ' || c == '\t')
            continue;
        if (c != '-' && c != '*' && c != '_')
            return false;
        if (mark && c != mark)
            return false;
        mark = c;
        ++count;
    }
    return count >= 3;
}

// A list marker at the start of a left-trimmed line. Gives the marker's length including
// the blank behind it (0 when there is none), whether it is ordered, and its number.
int listMarker(const Line& line, bool& ordered, int& number)
{
    if (line.length >= 1 && (line.text[0] == '-' || line.text[0] == '*' || line.text[0] == '+')) {
        if (line.length == 1 || line.text[1] == ' ' || line.text[1] == '\t') {
            ordered = false;
            number = 0;
            return line.length == 1 ? 1 : 2;
        }
        return 0;
    }
    int i = 0;
    int value = 0;
    while (i < line.length && i < 9 && isdigit(static_cast<unsigned char>(line.text[i]))) {
        value = value * 10 + (line.text[i] - '0');
        ++i;
    }
    if (i == 0 || i >= line.length || (line.text[i] != '.' && line.text[i] != ')'))
        return 0;
    if (i + 1 < line.length && line.text[i + 1] != ' ' && line.text[i + 1] != '\t')
        return 0;
    ordered = true;
    number = value;
    return i + 1 < line.length ? i + 2 : i + 1;
}

bool isFence(const Line& line)
{
    return startsWith(trimmedStart(line), "```") || startsWith(trimmedStart(line), "~~~");
}

// True when a line begins a block of its own and so ends a paragraph.
bool interruptsParagraph(const Line& line)
{
    if (indentOf(line) >= 4)
        return false;
    Line body = trimmedStart(line);
    bool ordered;
    int number;
    return headingLevel(body) || isRule(body) || isFence(line) || startsWith(body, ">")
        || listMarker(body, ordered, number);
}

class InlineReader
{
public:
    static void read(const char* text, int length, QuilbMarkDownNode* parent)
    {
        InlineReader reader(text, length);
        reader.run(parent);
    }

private:
    InlineReader(const char* text, int length)
        : text_(text)
        , length_(length)
        , pending_(64, 1.618f)
    {
    }

    void flush(QuilbMarkDownNode* parent)
    {
        if (pending_.getLength() > 0) {
            QuilbMarkDownNode* node = parent->add(new QuilbMarkDownNode(QuilbMarkDownNode::Text));
            node->text = pending_.getCharString();
            pending_.clear();
        }
    }

    // Position of the next `marker` (of `markerLength` characters) at or after `from`, -1 when none.
    int find(int from, const char* marker, int markerLength) const
    {
        for (int i = from; i + markerLength <= length_; ++i) {
            if (text_[i] == '\\') {
                ++i;
                continue;
            }
            if (memcmp(text_ + i, marker, markerLength) == 0)
                return i;
        }
        return -1;
    }

    void addText(QuilbMarkDownNode* parent, QuilbMarkDownNode::Type type, const char* text, int length)
    {
        flush(parent);
        QuilbMarkDownNode* node = parent->add(new QuilbMarkDownNode(type));
        TeskUtils::StringBuilder builder(64, 1.618f);
        builder.clear();
        builder.append(text, length);
        node->text = builder.getCharString();
    }

    void run(QuilbMarkDownNode* parent)
    {
        int i = 0;
        while (i < length_) {
            char c = text_[i];
            if (c == '\\' && i + 1 < length_) {
                char following = text_[i + 1];
                if (following == '\n') {
                    flush(parent);
                    parent->add(new QuilbMarkDownNode(QuilbMarkDownNode::LineBreak));
                    i += 2;
                    continue;
                }
                if (ispunct(static_cast<unsigned char>(following))) {
                    pending_ << following;
                    i += 2;
                    continue;
                }
            }
            if (c == '\n') {
                // Two blanks before a line end break the line; otherwise it is a blank.
                const char* so = pending_.c_str();
                long length = pending_.getLength();
                if (length >= 2 && so[length - 1] == ' ' && so[length - 2] == ' ') {
                    while (length > 0 && so[length - 1] == ' ')
                        --length;
                    TeskUtils::CharString kept(so, static_cast<int>(length));
                    pending_.clear();
                    pending_ << kept;
                    flush(parent);
                    parent->add(new QuilbMarkDownNode(QuilbMarkDownNode::LineBreak));
                } else {
                    pending_ << ' ';
                }
                ++i;
                continue;
            }
            if (c == '`' && readCode(parent, i))
                continue;
            if ((c == '*' || c == '_') && readEmphasis(parent, i))
                continue;
            if (c == '[' && readLink(parent, i))
                continue;
            if (c == '<' && readAutoLink(parent, i))
                continue;
            pending_ << c;
            ++i;
        }
        flush(parent);
    }

    bool readCode(QuilbMarkDownNode* parent, int& i)
    {
        int run = 0;
        while (i + run < length_ && text_[i + run] == '`')
            ++run;
        char marker[16];
        if (run >= static_cast<int>(sizeof marker))
            return false;
        memset(marker, '`', run);
        int close = -1;
        for (int j = i + run; j + run <= length_; ++j) {
            if (memcmp(text_ + j, marker, run) == 0) {
                close = j;
                break;
            }
        }
        if (close < 0)
            return false;
        int start = i + run;
        int end = close;
        if (end - start >= 2 && text_[start] == ' ' && text_[end - 1] == ' ') {
            ++start;
            --end;
        }
        addText(parent, QuilbMarkDownNode::Code, text_ + start, end - start);
        i = close + run;
        return true;
    }

    bool readEmphasis(QuilbMarkDownNode* parent, int& i)
    {
        char c = text_[i];
        bool strong = i + 1 < length_ && text_[i + 1] == c;
        int width = strong ? 2 : 1;
        // An underscore inside a word is a plain character (snake_case stays as it is).
        if (c == '_' && i > 0 && isalnum(static_cast<unsigned char>(text_[i - 1])))
            return false;
        if (i + width >= length_ || text_[i + width] == ' ' || text_[i + width] == '\n')
            return false;
        char marker[2] = { c, c };
        int close = find(i + width, marker, width);
        if (!strong) {
            // A single marker must not be the start of a double one.
            while (close >= 0 && close + 1 < length_ && text_[close + 1] == c)
                close = find(close + 2, marker, 1);
        }
        if (close < 0 || close == i + width || text_[close - 1] == ' ')
            return false;
        flush(parent);
        QuilbMarkDownNode* node = parent->add(
            new QuilbMarkDownNode(strong ? QuilbMarkDownNode::Strong : QuilbMarkDownNode::Emphasis));
        read(text_ + i + width, close - i - width, node);
        i = close + width;
        return true;
    }

    bool readLink(QuilbMarkDownNode* parent, int& i)
    {
        int closeText = find(i + 1, "]", 1);
        if (closeText < 0 || closeText + 1 >= length_ || text_[closeText + 1] != '(')
            return false;
        int closeAddress = find(closeText + 2, ")", 1);
        if (closeAddress < 0)
            return false;
        flush(parent);
        QuilbMarkDownNode* node = parent->add(new QuilbMarkDownNode(QuilbMarkDownNode::Link));
        TeskUtils::StringBuilder address(64, 1.618f);
        address.clear();
        address.append(text_ + closeText + 2, closeAddress - closeText - 2);
        node->text = address.getCharString();
        read(text_ + i + 1, closeText - i - 1, node);
        i = closeAddress + 1;
        return true;
    }

    bool readAutoLink(QuilbMarkDownNode* parent, int& i)
    {
        static const char* const schemes[] = { "http://", "https://", "ftp://", "mailto:" };
        bool known = false;
        for (const char* scheme : schemes) {
            int n = static_cast<int>(strlen(scheme));
            if (i + 1 + n <= length_ && strncmp(text_ + i + 1, scheme, n) == 0)
                known = true;
        }
        int close = known ? find(i + 1, ">", 1) : -1;
        if (close < 0)
            return false;
        for (int j = i + 1; j < close; ++j) {
            if (text_[j] == ' ' || text_[j] == '\n')
                return false;
        }
        addText(parent, QuilbMarkDownNode::Link, text_ + i + 1, close - i - 1);
        QuilbMarkDownNode* link = parent->lastChild;
        QuilbMarkDownNode* label = link->add(new QuilbMarkDownNode(QuilbMarkDownNode::Text));
        label->text = link->text;
        i = close + 1;
        return true;
    }

    const char* text_;
    int length_;
    TeskUtils::StringBuilder pending_;
};

void parseBlocks(const Line* lines, int count, QuilbMarkDownNode* parent);

// Joins lines with "\n" (after taking their leading white space off) and reads them inline.
void addInlineBlock(QuilbMarkDownNode* block, const Line* lines, int count)
{
    TeskUtils::StringBuilder joined(256, 1.618f);
    joined.clear();
    for (int i = 0; i < count; ++i) {
        Line body = trimmedStart(lines[i]);
        // Trailing blanks of the last line never break anything.
        if (i + 1 == count) {
            while (
                body.length > 0 && (body.text[body.length - 1] == ' ' || body.text[body.length - 1] == '\t'))
                --body.length;
        }
        if (i > 0)
            joined << '\n';
        joined.append(body.text, body.length);
    }
    InlineReader::read(joined.c_str(), static_cast<int>(joined.getLength()), block);
}

void addCode(QuilbMarkDownNode* parent, const Line* lines, int count, int stripIndent)
{
    while (count > 0 && isBlankLine(lines[count - 1]))
        --count;
    TeskUtils::StringBuilder code(256, 1.618f);
    code.clear();
    for (int i = 0; i < count; ++i) {
        Line body = stripColumns(lines[i], stripIndent);
        code.append(body.text, body.length);
        code << '\n';
    }
    QuilbMarkDownNode* node = parent->add(new QuilbMarkDownNode(QuilbMarkDownNode::CodeBlock));
    node->text = code.getCharString();
}

// Reads a list that starts at lines[0]; gives the number of lines it took.
int parseList(const Line* lines, int count, QuilbMarkDownNode* parent)
{
    bool ordered = false;
    int number = 0;
    int listIndent = indentOf(lines[0]);
    listMarker(trimmedStart(lines[0]), ordered, number);
    QuilbMarkDownNode* list = parent->add(new QuilbMarkDownNode(QuilbMarkDownNode::List));
    list->level = ordered ? 1 : 0;
    list->number = number;

    Line* itemLines = new Line[count];
    int i = 0;
    while (i < count) {
        Line body = trimmedStart(lines[i]);
        bool itemOrdered;
        int itemNumber;
        int markerLength = listMarker(body, itemOrdered, itemNumber);
        if (markerLength == 0 || itemOrdered != ordered || indentOf(lines[i]) > listIndent + 3)
            break;
        int contentColumn = indentOf(lines[i]) + markerLength;
        int itemCount = 0;
        itemLines[itemCount++] = Line { body.text + markerLength, body.length - markerLength };
        ++i;
        bool previousBlank = false;
        while (i < count) {
            const Line& line = lines[i];
            if (isBlankLine(line)) {
                itemLines[itemCount++] = line;
                previousBlank = true;
                ++i;
                continue;
            }
            int indent = indentOf(line);
            if (indent >= contentColumn) {
                itemLines[itemCount++] = stripColumns(line, contentColumn);
            } else if (!previousBlank && !interruptsParagraph(line)) {
                // A lazy continuation of the item's paragraph.
                itemLines[itemCount++] = trimmedStart(line);
            } else {
                break;
            }
            previousBlank = false;
            ++i;
        }
        QuilbMarkDownNode* item = list->add(new QuilbMarkDownNode(QuilbMarkDownNode::ListItem));
        parseBlocks(itemLines, itemCount, item);
        // Blank lines between items belong to the list.
        while (i < count && isBlankLine(lines[i]) && i + 1 < count) {
            Line next = trimmedStart(lines[i + 1]);
            bool nextOrdered;
            int nextNumber;
            if (!listMarker(next, nextOrdered, nextNumber) || nextOrdered != ordered)
                break;
            ++i;
        }
    }
    delete[] itemLines;
    return i;
}

void parseBlocks(const Line* lines, int count, QuilbMarkDownNode* parent)
{
    int i = 0;
    while (i < count) {
        const Line& line = lines[i];
        if (isBlankLine(line)) {
            ++i;
            continue;
        }
        Line body = trimmedStart(line);
        if (indentOf(line) >= 4) {
            int end = i;
            while (end < count && (isBlankLine(lines[end]) || indentOf(lines[end]) >= 4))
                ++end;
            addCode(parent, lines + i, end - i, 4);
            i = end;
            continue;
        }
        if (isFence(line)) {
            int end = i + 1;
            while (end < count && !isFence(lines[end]))
                ++end;
            addCode(parent, lines + i + 1, end - i - 1, 0);
            i = end < count ? end + 1 : end;
            continue;
        }
        if (int level = headingLevel(body)) {
            Line rest { body.text + level, body.length - level };
            while (
                rest.length > 0 && (rest.text[rest.length - 1] == '#' || rest.text[rest.length - 1] == ' '))
                --rest.length;
            QuilbMarkDownNode* heading = parent->add(new QuilbMarkDownNode(QuilbMarkDownNode::Heading));
            heading->level = level;
            addInlineBlock(heading, &rest, 1);
            ++i;
            continue;
        }
        if (isRule(body)) {
            parent->add(new QuilbMarkDownNode(QuilbMarkDownNode::Rule));
            ++i;
            continue;
        }
        if (startsWith(body, ">")) {
            int end = i;
            while (end < count && startsWith(trimmedStart(lines[end]), ">"))
                ++end;
            Line* inner = new Line[end - i];
            for (int j = i; j < end; ++j) {
                Line quoted = trimmedStart(lines[j]);
                quoted.text += 1;
                quoted.length -= 1;
                inner[j - i] = stripColumns(quoted, 1);
            }
            QuilbMarkDownNode* quote = parent->add(new QuilbMarkDownNode(QuilbMarkDownNode::Quote));
            parseBlocks(inner, end - i, quote);
            delete[] inner;
            i = end;
            continue;
        }
        bool ordered;
        int number;
        if (listMarker(body, ordered, number)) {
            i += parseList(lines + i, count - i, parent);
            continue;
        }
        int end = i + 1;
        while (end < count && !isBlankLine(lines[end]) && !interruptsParagraph(lines[end]))
            ++end;
        QuilbMarkDownNode* paragraph = parent->add(new QuilbMarkDownNode(QuilbMarkDownNode::Paragraph));
        addInlineBlock(paragraph, lines + i, end - i);
        i = end;
    }
}

} // namespace

QuilbMarkDownNode* QuilbMarkDownParser::parse(const char* text)
{
    QuilbMarkDownNode* document = new QuilbMarkDownNode(QuilbMarkDownNode::Document);
    if (!text || !*text)
        return document;
    int count = 1;
    for (const char* p = text; *p; ++p) {
        if (*p == '\n')
            ++count;
    }
    Line* lines = new Line[count];
    int used = 0;
    const char* start = text;
    for (const char* p = text;; ++p) {
        if (*p == '\n' || *p == '\0') {
            int length = static_cast<int>(p - start);
            if (length > 0 && start[length - 1] == '\r')
                --length;
            lines[used++] = Line { start, length };
            if (!*p)
                break;
            start = p + 1;
        }
    }
    parseBlocks(lines, used, document);
    delete[] lines;
    return document;
}

TeskUtils::CharString QuilbMarkDownParser::parse(const char* text, QuilbMarkDownTranslator& translator)
{
    QuilbMarkDownNode* document = parse(text);
    TeskUtils::CharString result = translator.translate(*document);
    delete document;
    return result;
}
