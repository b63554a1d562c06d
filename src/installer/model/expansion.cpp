// The two expansion languages of the engine.
//
// Template texts use [NAME]: a '[' followed by '_', a digit, an ASCII letter or '$' (or
// standing last) opens a reference that runs to the next ']' or to the end of the text. The
// inside goes to GetVar whole, so modifiers ([NAME:2:5], [NAME:#/]) and environment
// references ([$HOME]) work there. An unknown reference stays in the text as "[NAME]", or in
// strict mode makes the whole expansion fail. Values are not expanded again.
//
// Recalculation expressions and value defaults use $NAME: the name is the longest run of
// '$', '_', digits and ASCII letters behind the '$' ("$$HOME" reads the environment), there
// are no modifiers, and an unknown name makes the expansion fail.
#include <cstring>

#include "foundation/streams/pconsole.h"
#include "foundation/strings/char_string.h"
#include "installer/installer.h"

namespace {

bool isAsciiLetterOrDigit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// Whether the '[' at text[i] opens a reference.
bool opensReference(const char* text, size_t i)
{
    char next = text[i + 1];
    return next == '\0' || next == '_' || next == '$' || isAsciiLetterOrDigit(next);
}

bool isNameCharacter(char c)
{
    return c == '$' || c == '_' || isAsciiLetterOrDigit(c);
}

// Output of ExpandString: copies what fits and counts everything, so that a null buffer
// measures.
struct Output
{
    char* buffer;
    size_t size;
    size_t count = 0;

    void put(char c)
    {
        if (buffer && count + 1 < size)
            buffer[count] = c;
        ++count;
    }
    void put(const char* text)
    {
        for (; *text; ++text)
            put(*text);
    }
    void terminate()
    {
        if (buffer && size > 0)
            buffer[count < size ? count : size - 1] = '\0';
    }
};

} // namespace

int Installer::ExpandString(const char* text, char* buffer, int size, bool strict)
{
    if (!text || !*text) {
        if (buffer && size >= 1)
            buffer[0] = '\0';
        return 0;
    }

    Output out { buffer, size > 0 ? static_cast<size_t>(size) : 0 };
    for (size_t i = 0; text[i];) {
        if (text[i] != '[' || !opensReference(text, i)) {
            out.put(text[i++]);
            continue;
        }

        const char* nameStart = text + i + 1;
        const char* close = strchr(nameStart, ']');
        size_t length = close ? static_cast<size_t>(close - nameStart) : strlen(nameStart);
        char name[VARIABLE_NAME_SIZE];
        copyNamePart(name, nameStart, length);
        if (length > VARIABLE_NAME_SIZE && debugConsole)
            debugConsole->Dump("WARNING: Variable [%s] is too long in the expression \"%s\"", name, text);
        i += 1 + length + (close ? 1 : 0);

        char value[VARIABLE_VALUE_SIZE];
        value[0] = '\0';
        if (GetVar(name, value, sizeof(value)) == -1) {
            if (debugConsole)
                debugConsole->Dump(
                    "WARNING: Variable [%s] is not initialized in the expression: \"%s\"", name, text);
            if (strict) {
                if (buffer && size >= 1)
                    buffer[0] = '\0';
                return 0;
            }
            out.put('[');
            out.put(name);
            out.put(']');
            continue;
        }
        out.put(value);
    }
    out.terminate();
    return static_cast<int>(out.count + 1);
}

int Installer::ExpandCharString(const char* text, TeskUtils::CharString& out, bool strict)
{
    int needed = ExpandString(text, nullptr, 0, strict);
    if (needed < 1)
        return 0;
    char* buffer = out.splitBuffer(needed, 0);
    if (!buffer)
        return 0;
    return ExpandString(text, buffer, needed, strict);
}

int Installer::expandVariables(const char* expression, char* buffer, int size)
{
    if (!buffer || size < 1)
        return 0;
    if (!expression)
        expression = "";

    int count = 0;
    for (const char* p = expression; *p;) {
        if (*p != '$') {
            if (count + 1 >= size)
                return 0;
            buffer[count++] = *p++;
            continue;
        }

        const char* nameStart = ++p;
        while (isNameCharacter(*p))
            ++p;
        size_t length = static_cast<size_t>(p - nameStart);
        char name[VARIABLE_NAME_SIZE];
        copyNamePart(name, nameStart, length);

        char value[VARIABLE_NAME_SIZE];
        value[0] = '\0';
        if (GetVar(name, value, sizeof(value)) == -1)
            return 0;
        int valueLength = static_cast<int>(strlen(value));
        if (count + valueLength >= size)
            return 0;
        memcpy(buffer + count, value, static_cast<size_t>(valueLength));
        count += valueLength;
    }
    buffer[count] = '\0';
    return 1;
}
