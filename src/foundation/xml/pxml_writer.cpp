// The writer of PXML: every top-level node with everything below it, indented by one
// space per level, attribute values and data escaped with the five entities.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>

#include "foundation/streams/pstream.h"
#include "foundation/strings/portable.h"
#include "foundation/xml/pxml.h"

namespace {

// Values up to this length are escaped into the static buffer, which holds six bytes per
// character (the longest entity) and the terminator; longer ones get a buffer of their own.
const size_t kShortValue = 1023;
char s_escaped[6144];
// Formatting buffer of the stream output; longer lines get a buffer of their own.
char s_line[4096];

// Gives `text` with the five special characters replaced by their entities: in the
// static buffer, or in `spill` for long texts. A null text gives "".
const char* escape(const char* text, std::unique_ptr<char[]>& spill)
{
    if (!text)
        return "";
    size_t length = strlen(text);
    char* out = s_escaped;
    if (length > kShortValue) {
        spill.reset(new char[length * 6 + 1]);
        out = spill.get();
    }
    char* at = out;
    for (const char* in = text; *in; ++in) {
        const PXML::Symbol* match = nullptr;
        for (const PXML::Symbol& symbol : PXML::symmap) {
            if (symbol.character == *in) {
                match = &symbol;
                break;
            }
        }
        if (match) {
            memcpy(at, match->text, (size_t)match->length);
            at += match->length;
        } else {
            *at++ = *in;
        }
    }
    *at = '\0';
    return out;
}

// Formats to `file` when there is one, otherwise to `stream`. Gives 0, or 1 when the
// write fails or comes short.
__attribute__((format(printf, 3, 4))) int output(FILE* file, PStream* stream, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    if (file) {
        int result = vfprintf(file, format, args);
        va_end(args);
        return result < 0 ? 1 : 0;
    }
    if (!stream) {
        va_end(args);
        return 1;
    }
    va_list again;
    va_copy(again, args);
    int length = vsnprintf(s_line, sizeof s_line, format, args);
    va_end(args);
    const char* line = s_line;
    std::unique_ptr<char[]> spill;
    if (length >= (int)sizeof s_line) {
        spill.reset(new char[(size_t)length + 1]);
        vsnprintf(spill.get(), (size_t)length + 1, format, again);
        line = spill.get();
    }
    va_end(again);
    if (length < 0)
        return 1;
    int written = 0;
    if (stream->Write(line, length, written) != 0 || written != length)
        return 1;
    return 0;
}

} // namespace

int PXML::WriteNode(int node, FILE* file, PStream* stream, int depth)
{
    if (!IsValid(node))
        return 1;
    if (depth < 0)
        depth = 0;
    const NODEI& current = nodes[node];
    const char* name = current.name ? current.name : "";
    std::unique_ptr<char[]> spill;

    if (output(file, stream, "%*s<%s", depth, "", name))
        return 1;
    if (current.attrs) {
        for (int i = 0; i < current.attrs->Count(); ++i) {
            const StrPair& pair = (*current.attrs)[i];
            if (output(file, stream, " %s=\"%s\"", pair.name, escape(pair.value, spill)))
                return 1;
        }
    }
    if (output(file, stream, ">"))
        return 1;

    // Children always stand behind their parent in the table.
    bool hasChildren = false;
    for (int i = node + 1; i < nodes.count; ++i) {
        if (nodes[i].parent != node)
            continue;
        if (!hasChildren && output(file, stream, "\n"))
            return 1;
        hasChildren = true;
        if (WriteNode(i, file, stream, depth + 1))
            return 1;
    }
    if (hasChildren)
        return output(file, stream, "%*s</%s>\n", depth, "", name);

    if (current.data && *current.data && output(file, stream, "%s", escape(current.data, spill)))
        return 1;
    return output(file, stream, "</%s>\n", name);
}

int PXML::WriteFile(const char* path)
{
    FILE* file = teskutils_fopen(path, "wt");
    if (!file)
        return -1;
    for (int i = 0; i < nodes.count; ++i) {
        if (nodes[i].parent != -1)
            continue;
        int result = WriteNode(i, file, nullptr, 0);
        if (result != 0) {
            fclose(file);
            return result;
        }
    }
    // A failed close means buffered output was lost.
    return fclose(file) == 0 ? 0 : 1;
}
