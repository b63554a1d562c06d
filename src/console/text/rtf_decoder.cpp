#include "console/text/rtf_decoder.h"

#include "console/text/text_wrap.h"
#include "foundation/strings/string_builder.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

namespace {

// Destinations whose content is no text of the document.
const char* const skippedDestinations[] = {
    "fonttbl",
    "colortbl",
    "stylesheet",
    "info",
    "pict",
    "header",
    "footer",
    "headerl",
    "headerr",
    "headerf",
    "footerl",
    "footerr",
    "footerf",
    "listtable",
    "listoverridetable",
    "rsidtbl",
    "generator",
    "themedata",
    "colorschememapping",
    "datastore",
    "latentstyles",
    "xmlnstbl",
    "mmathPr",
    "pgdsctbl",
    "filetbl",
    "revtbl",
    "object",
    "fldinst",
    "footnote",
    "comment",
    "private",
    "nonshppict",
    "userprops",
    "docvar",
    "bkmkstart",
    "bkmkend",
    "wgrffmtfilter",
};

bool isSkippedDestination(const char* word)
{
    for (const char* name : skippedDestinations) {
        if (strcmp(word, name) == 0)
            return true;
    }
    return false;
}

void appendUtf8(TeskUtils::StringBuilder& out, unsigned long code)
{
    if (code < 0x80) {
        out << static_cast<char>(code);
    } else if (code < 0x800) {
        out << static_cast<char>(0xC0 | (code >> 6));
        out << static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out << static_cast<char>(0xE0 | (code >> 12));
        out << static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out << static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x110000) {
        out << static_cast<char>(0xF0 | (code >> 18));
        out << static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out << static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out << static_cast<char>(0x80 | (code & 0x3F));
    }
}

// Code page 1252 from 0x80 to 0x9F; the rest of the page is Latin-1.
const unsigned short cp1252High[32] = {
    0x20AC,
    0x003F,
    0x201A,
    0x0192,
    0x201E,
    0x2026,
    0x2020,
    0x2021,
    0x02C6,
    0x2030,
    0x0160,
    0x2039,
    0x0152,
    0x003F,
    0x017D,
    0x003F,
    0x003F,
    0x2018,
    0x2019,
    0x201C,
    0x201D,
    0x2022,
    0x2013,
    0x2014,
    0x02DC,
    0x2122,
    0x0161,
    0x203A,
    0x0153,
    0x003F,
    0x017E,
    0x0178,
};

void appendCp1252(TeskUtils::StringBuilder& out, unsigned char byte)
{
    if (byte >= 0x80 && byte < 0xA0)
        appendUtf8(out, cp1252High[byte - 0x80]);
    else
        appendUtf8(out, byte);
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

class Decoder
{
public:
    Decoder(int margin, int width)
        : paragraph_(512, 1.618f)
        , out_(2048, 1.618f)
        , width_(width)
    {
        paragraph_.clear();
        out_.clear();
        states_[0].unicodeSkip = 1;
        int blanks = margin < 0 ? 0 : (margin > 64 ? 64 : margin);
        memset(margin_, ' ', blanks);
        margin_[blanks] = '\0';
    }

    TeskUtils::CharString run(const char* rtf)
    {
        const char* p = rtf ? rtf : "";
        while (*p) {
            char c = *p;
            if (c == '{') {
                push();
                ++p;
            } else if (c == '}') {
                pop();
                ++p;
            } else if (c == '\\') {
                p = control(p + 1);
            } else if (c == '\r' || c == '\n') {
                ++p;
            } else {
                text(c);
                ++p;
            }
        }
        endParagraph(false);
        return out_.getCharString();
    }

private:
    struct State
    {
        bool skip;
        int unicodeSkip;
    };

    void push()
    {
        if (depth_ + 1 < maxDepth)
            states_[depth_ + 1] = states_[depth_];
        ++depth_;
        destinationPending_ = true;
    }

    void pop()
    {
        if (depth_ > 0)
            --depth_;
        destinationPending_ = false;
    }

    State& state() { return states_[depth_ < maxDepth ? depth_ : maxDepth - 1]; }

    void text(char c)
    {
        destinationPending_ = false;
        if (pendingFallback_ > 0) {
            --pendingFallback_;
            return;
        }
        if (!state().skip)
            paragraph_ << c;
    }

    void endParagraph(bool always)
    {
        const char* text = paragraph_.c_str() ? paragraph_.c_str() : "";
        bool blank = true;
        for (const char* p = text; *p; ++p) {
            if (!isspace(static_cast<unsigned char>(*p)))
                blank = false;
        }
        if (blank) {
            if (always)
                out_ << '\n';
        } else {
            ConsoleText::appendWrapped(out_, text, width_, margin_, margin_);
        }
        paragraph_.clear();
    }

    // Reads a control word or symbol behind a backslash; gives the position after it.
    const char* control(const char* p)
    {
        if (!*p)
            return p;
        if (!isalpha(static_cast<unsigned char>(*p)))
            return symbol(p);
        char word[32];
        int length = 0;
        while (isalpha(static_cast<unsigned char>(*p))) {
            if (length + 1 < static_cast<int>(sizeof word))
                word[length++] = *p;
            ++p;
        }
        word[length] = '\0';
        bool hasParameter = false;
        long parameter = 0;
        if (*p == '-' || isdigit(static_cast<unsigned char>(*p))) {
            char* end;
            parameter = strtol(p, &end, 10);
            hasParameter = end != p;
            p = end;
        }
        if (*p == ' ')
            ++p;
        bool atDestination = destinationPending_;
        destinationPending_ = false;
        if (atDestination && (isSkippedDestination(word) || ignorableNext_))
            state().skip = true;
        ignorableNext_ = false;
        if (state().skip)
            return p;
        word_(word, hasParameter, parameter);
        return p;
    }

    void word_(const char* word, bool hasParameter, long parameter)
    {
        if (strcmp(word, "par") == 0 || strcmp(word, "sect") == 0 || strcmp(word, "page") == 0) {
            endParagraph(true);
        } else if (strcmp(word, "line") == 0 || strcmp(word, "row") == 0) {
            endParagraph(false);
        } else if (strcmp(word, "tab") == 0 || strcmp(word, "cell") == 0) {
            paragraph_ << ' ';
        } else if (strcmp(word, "bullet") == 0) {
            appendUtf8(paragraph_, 0x2022);
        } else if (strcmp(word, "emdash") == 0) {
            appendUtf8(paragraph_, 0x2014);
        } else if (strcmp(word, "endash") == 0) {
            appendUtf8(paragraph_, 0x2013);
        } else if (strcmp(word, "lquote") == 0) {
            appendUtf8(paragraph_, 0x2018);
        } else if (strcmp(word, "rquote") == 0) {
            appendUtf8(paragraph_, 0x2019);
        } else if (strcmp(word, "ldblquote") == 0) {
            appendUtf8(paragraph_, 0x201C);
        } else if (strcmp(word, "rdblquote") == 0) {
            appendUtf8(paragraph_, 0x201D);
        } else if (strcmp(word, "uc") == 0 && hasParameter) {
            state().unicodeSkip = parameter < 0 ? 0 : static_cast<int>(parameter);
        } else if (strcmp(word, "u") == 0 && hasParameter) {
            appendUtf8(paragraph_, static_cast<unsigned long>(parameter < 0 ? parameter + 65536 : parameter));
            pendingFallback_ = state().unicodeSkip;
        }
    }

    const char* symbol(const char* p)
    {
        char c = *p;
        destinationPending_ = false;
        if (c == '*') {
            ignorableNext_ = true;
            destinationPending_ = true;
            return p + 1;
        }
        if (c == '\'') {
            int high = hexValue(p[1]);
            int low = high >= 0 ? hexValue(p[2]) : -1;
            if (low < 0)
                return p[1] ? p + 2 : p + 1;
            if (pendingFallback_ > 0)
                --pendingFallback_;
            else if (!state().skip)
                appendCp1252(paragraph_, static_cast<unsigned char>(high * 16 + low));
            return p + 3;
        }
        if (state().skip)
            return p + 1;
        switch (c) {
        case '\\':
        case '{':
        case '}':
            paragraph_ << c;
            break;
        case '~':
            paragraph_ << ' ';
            break;
        case '_':
            paragraph_ << '-';
            break;
        case '\n':
        case '\r':
            endParagraph(true);
            break;
        default:
            break;
        }
        return p + 1;
    }

    static const int maxDepth = 256;
    State states_[maxDepth] = {};
    int depth_ = 0;
    bool destinationPending_ = false;
    bool ignorableNext_ = false;
    int pendingFallback_ = 0;
    TeskUtils::StringBuilder paragraph_;
    TeskUtils::StringBuilder out_;
    int width_;
    char margin_[65];
};

} // namespace

TeskUtils::CharString RTFDecoder::rtf_decode(const char* rtf, int margin, int width)
{
    Decoder decoder(margin, width);
    return decoder.run(rtf);
}
