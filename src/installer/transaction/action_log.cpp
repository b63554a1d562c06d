#include "installer/transaction/action_log.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <new>

#include "foundation/streams/pconsole.h"
#include "foundation/strings/bounded_copy.h"

namespace {

const char kTab = '\t';

// Keywords of the records, in the order a line is tested against them.
struct Keyword
{
    ActionLog::RecordKind kind;
    const char* text;
};
const Keyword kKeywords[] = {
    { ActionLog::RecordDir, "DIR" },
    { ActionLog::RecordFile, "FILE" },
    { ActionLog::RecordEnv, "ENV" },
    { ActionLog::RecordIni, "INI" },
    { ActionLog::RecordShortcut, "SHORTCUT" },
    { ActionLog::RecordFirewall, "FIREWALL" },
    { ActionLog::RecordModifyFile, "MODIFYFILE" },
};

const char* skipTabs(const char* text)
{
    while (*text == kTab)
        ++text;
    return text;
}

// Builds a scanf pattern once, from a printf format that spells out its keyword and TABs.
struct Pattern
{
    char text[64];
};

Pattern makeCountFormat()
{
    Pattern pattern;
    snprintf(pattern.text, sizeof pattern.text, "%s%c%%i", "NUMVARS", kTab);
    return pattern;
}

Pattern makeVariableFormat()
{
    Pattern pattern;
    snprintf(pattern.text, sizeof pattern.text, "%s%c%%[^%c]%c%%[^%c]", "VAR", kTab, kTab, kTab, kTab);
    return pattern;
}

} // namespace

namespace ActionLog {

void writeDir(PConsole& log, int count, const char* directory)
{
    if (count < 1)
        return;
    log.Dump("%s%c%d%c%s", "DIR", kTab, count, kTab, directory ? directory : "");
}

void writeFile(PConsole& log, bool over, const char* path)
{
    log.Dump("%s%c%s%c%s", "FILE", kTab, over ? "OVER" : "CREATE", kTab, path ? path : "");
}

void writeRecord(PConsole& log, const char* keyword, const char* text)
{
    log.Dump("%s%c%s", keyword ? keyword : "", kTab, text ? text : "");
}

void writeFirewallApp(PConsole& log, const char* path)
{
    log.Dump("%s%c%s%c%s", "FIREWALL", kTab, "APP", kTab, path ? path : "");
}

void writeFirewallPort(PConsole& log, long port, const char* protocol, const char* name)
{
    log.Dump("%s%c%s%c%ld%c%s%c%s", "FIREWALL", kTab, "PORT", kTab, port, kTab, protocol ? protocol : "",
        kTab, name ? name : "");
}

const char* countFormat()
{
    static const Pattern pattern = makeCountFormat();
    return pattern.text;
}

const char* variableFormat()
{
    static const Pattern pattern = makeVariableFormat();
    return pattern.text;
}

bool parseCount(const char* line, int& count)
{
    int parsed = 0;
    if (!line || sscanf(line, countFormat(), &parsed) != 1)
        return false;
    count = parsed;
    return true;
}

bool parseVariable(const char* line, char* name, int nameSize, char* value, int valueSize)
{
    if (!line || !name || !value || nameSize < 1 || valueSize < 1)
        return false;
    // Each field is at most as long as the line, so buffers of the line's size can't
    // overflow; the cut to the caller's sizes comes after.
    char bounded[kVariableLineSize];
    TeskUtils::copyBounded(bounded, line, sizeof bounded);
    char parsedName[kVariableLineSize];
    char parsedValue[kVariableLineSize];
    if (sscanf(bounded, variableFormat(), parsedName, parsedValue) != 2)
        return false;
    TeskUtils::copyBounded(name, parsedName, static_cast<size_t>(nameSize));
    TeskUtils::copyBounded(value, parsedValue, static_cast<size_t>(valueSize));
    return true;
}

void stripTrailingSpace(char* line)
{
    if (!line)
        return;
    size_t length = strlen(line);
    while (length > 0 && isspace(static_cast<unsigned char>(line[length - 1])))
        line[--length] = '\0';
}

bool readLine(FILE* stream, char* buffer)
{
    if (!fgets(buffer, kReadLineSize, stream))
        return false;
    stripTrailingSpace(buffer);
    return true;
}

RecordKind recordKind(const char* line)
{
    if (!line)
        return RecordUnknown;
    for (const Keyword& keyword : kKeywords) {
        if (strncmp(line, keyword.text, strlen(keyword.text)) == 0)
            return keyword.kind;
    }
    return RecordUnknown;
}

const char* recordText(const char* line, RecordKind kind)
{
    for (const Keyword& keyword : kKeywords) {
        if (keyword.kind == kind)
            return skipTabs(line + strlen(keyword.text));
    }
    return line;
}

const char* nextField(const char* field)
{
    const char* tab = strchr(field, kTab);
    if (!tab)
        return field + strlen(field);
    return skipTabs(tab);
}

bool splitDir(const char* line, int& count, const char*& directory)
{
    const char* field = recordText(line, RecordDir);
    int parsed = 0;
    bool ok = sscanf(field, "%d", &parsed) == 1;
    count = ok ? parsed : 0;
    directory = nextField(field);
    return ok;
}

bool splitFile(const char* line, bool& over, const char*& path)
{
    const char* field = recordText(line, RecordFile);
    size_t length = strcspn(field, "\t");
    bool isOver;
    if (length == 6 && strncmp(field, "CREATE", 6) == 0)
        isOver = false;
    else if (length == 4 && strncmp(field, "OVER", 4) == 0)
        isOver = true;
    else
        return false;
    over = isOver;
    path = nextField(field);
    return true;
}

void seekRecords(FILE* stream)
{
    char line[kReadLineSize];
    fseek(stream, 0, SEEK_SET);
    int count = 0;
    bool found = false;
    while (!found && fgets(line, sizeof line, stream))
        found = parseCount(line, count);
    for (int i = 0; found && i < count; ++i)
        found = fgets(line, sizeof line, stream) != nullptr;
    if (!found)
        fseek(stream, 0, SEEK_SET);
}

} // namespace ActionLog

bool LineArray::read(FILE* f, int wanted)
{
    free();
    count = wanted;
    if (count < 0)
        return false;
    lines = new (std::nothrow) char*[static_cast<size_t>(count)]();
    if (!lines)
        return false;
    char buffer[ActionLog::kLineArrayReadSize];
    for (int i = 0; i < count; ++i) {
        if (!fgets(buffer, sizeof buffer, f))
            return false;
        size_t length = strlen(buffer);
        if (length > 0 && buffer[length - 1] == '\n')
            buffer[--length] = '\0';
        lines[i] = new (std::nothrow) char[length + 1];
        if (!lines[i])
            return false;
        TeskUtils::copyBounded(lines[i], buffer, length + 1);
    }
    return true;
}

void LineArray::free()
{
    if (lines) {
        for (int i = 0; i < count; ++i)
            delete[] lines[i];
        delete[] lines;
    }
    lines = nullptr;
    count = 0;
}
