// The variable store of the engine: lookup with modifiers and environment references,
// creation and change of records, reset, default values and dependency-ordered
// recalculation. Predefined variables are in predefined_variables.cpp, the two expansion
// languages in expansion.cpp.
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "foundation/streams/pconsole.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/portable.h"
#include "foundation/strings/table.h"
#include "foundation/strings/tokenize.h"
#include "installer/installer.h"

namespace {

// Expansions of recalculated values may run longer than the value field; they are made in
// a buffer of this size and then cut to the field.
const int kRecalcLimit = 1024;

// The last record named `base`, ignoring case: its index, and its value in `buffer` (the
// whole buffer cleared first) when a buffer is given. -1 when there is none.
int readRecord(
    const TeskUtils::Table<VariableRecord, 100>& variables, const char* base, char* buffer, int size)
{
    for (int i = variables.count - 1; i >= 0; --i) {
        if (strncasecmp(base, variables[i].name, VARIABLE_NAME_SIZE) != 0)
            continue;
        if (buffer && size > 0) {
            memset(buffer, 0, static_cast<size_t>(size));
            TeskUtils::copyBounded(buffer, variables[i].value, static_cast<size_t>(size));
        }
        return i;
    }
    return -1;
}

// The environment variable `name` (the text behind the '$', modifiers included) into
// `buffer`: -2. When it isn't defined: -1, the buffer emptied and a warning naming `shown`.
int readEnvironmentVar(const char* name, const char* shown, char* buffer, int size, PConsole* log)
{
    const char* value = getenv(name);
    if (!value) {
        if (buffer && size > 0)
            buffer[0] = '\0';
        if (log)
            log->Dump("WARNING: Environment variable \"%s\" is not defined!", shown);
        return -1;
    }
    if (buffer && size > 0)
        TeskUtils::copyBounded(buffer, value, static_cast<size_t>(size));
    return -2;
}

// Where the kept part of `value` (`length` characters) starts by the start modifier `token`:
// for "#text" behind the first occurrence of the text (0 when there is none), for a number
// that offset, a negative one counting as 0 and one past the end giving the end. An invalid
// number logs a warning about `name` and keeps 0.
long substringStart(const char* token, const char* value, long length, const char* name, PConsole* log)
{
    if (token[0] == '#') {
        const char* found = strstr(value, token + 1);
        return found ? (found - value) + static_cast<long>(strlen(token + 1)) : 0;
    }
    if (!token[0])
        return 0;
    int n = 0;
    if (!TeskUtils::fromString(n, token)) {
        if (log)
            log->Dump("WARNING: Invalid modifier used for substring of a variable: [%s]", name);
        return 0;
    }
    if (n < 0)
        n = 0; // a negative start has no meaning of its own: it counts from the start
    return n < length ? n : length;
}

// Where the kept part from `start` ends by the length modifier `token`: for "#text" at the
// first occurrence of the text from `start` on (the end when there is none), for a number
// that many characters on, never past the end. An invalid number logs a warning about `name`
// and keeps the end.
long substringEnd(
    const char* token, const char* value, long start, long length, const char* name, PConsole* log)
{
    if (token[0] == '#') {
        const char* found = strstr(value + start, token + 1);
        return found ? found - value : length;
    }
    if (!token[0])
        return length;
    int n = 0;
    if (!TeskUtils::fromString(n, token)) {
        if (log)
            log->Dump("WARNING: Invalid modifier used for length of a substring of variable: [%s]", name);
        return length;
    }
    return start + n < length ? start + n : length;
}

// Cuts the value in `buffer` to the part that `modifiers`, "start" or "start:length" behind
// the first ':' of `name`, keep.
void cutBySubstringModifiers(char* buffer, const char* modifiers, const char* name, PConsole* log)
{
    char startToken[VARIABLE_NAME_SIZE];
    char lengthToken[VARIABLE_NAME_SIZE];
    const char* split = strchr(modifiers, ':');
    copyNamePart(startToken, modifiers, split ? static_cast<size_t>(split - modifiers) : strlen(modifiers));
    TeskUtils::copyBounded(lengthToken, split ? split + 1 : "", sizeof(lengthToken));

    const long length = static_cast<long>(strlen(buffer));
    const long start = substringStart(startToken, buffer, length, name, log);
    const long end = substringEnd(lengthToken, buffer, start, length, name, log);
    if (start < end) {
        memmove(buffer, buffer + start, static_cast<size_t>(end - start));
        buffer[end - start] = '\0';
    } else {
        buffer[0] = '\0';
    }
}

} // namespace

int Installer::GetVar(const char* name, char* buffer, int size)
{
    if (!name || !*name)
        return -1;

    // "NAME:start:length": the base names the variable, the rest cuts its value.
    char base[VARIABLE_NAME_SIZE];
    const char* colon = strchr(name, ':');
    const char* modifiers = colon ? colon + 1 : "";
    copyNamePart(base, name, colon ? static_cast<size_t>(colon - name) : strlen(name));

    int result;
    if (base[0] == '$') {
        // The whole argument names the environment variable, modifiers included: "$HOME:1"
        // asks for "HOME:1" and does not fall back to "HOME".
        result = readEnvironmentVar(name + 1, base + 1, buffer, size, debugConsole);
        if (result == -1)
            return -1;
    } else {
        if (!base[0])
            return -1;
        result = getPredefinedVar(base, buffer, size);
        if (result == -1) {
            result = readRecord(variables, base, buffer, size);
            if (result == -1 || !buffer)
                return result;
        }
    }

    if (buffer && size >= 1 && *modifiers)
        cutBySubstringModifiers(buffer, modifiers, name, debugConsole);
    return result;
}

int Installer::SetVar(const char* name, const char* value)
{
    return SetVarExt(name, value, nullptr, VARFLAG_KEEP, nullptr);
}

int Installer::SetVar(const char* text)
{
    if (!text)
        return -1;
    char name[VARIABLE_NAME_SIZE];
    char value[VARIABLE_NAME_SIZE];
    if (!TeskUtils::delimitedSubstring(text, '[', ']', name, sizeof(name)))
        return -1;
    if (!TeskUtils::delimitedSubstring(text, '\'', '\'', value, sizeof(value)))
        return -1;
    return SetVar(name, value);
}

int Installer::SetVarExt(
    const char* name, const char* value, const char* expression, unsigned int flags, const char* defaultValue)
{
    if (!name || !*name)
        return -1;
    if (name[0] == '$') {
        // Callers ignore the result: the environment is set, and no record is made.
        teskutils_putenv(name + 1, value ? value : defaultValue ? defaultValue : "");
        return -1;
    }

    int index = GetVar(name, nullptr, 0);
    if (index == -2)
        return -1;

    if (index == -1) {
        VariableRecord& record = variables.append();
        record.flags = flags & ~static_cast<unsigned int>(VARFLAG_KEEP);
        TeskUtils::copyBounded(record.name, name, sizeof(record.name));
        TeskUtils::copyBounded(
            record.defaultValue, defaultValue ? defaultValue : "", sizeof(record.defaultValue));
        TeskUtils::copyBounded(record.value,
            value              ? value
                : defaultValue ? defaultValue
                               : "",
            sizeof(record.value));
        TeskUtils::copyBounded(record.expression, expression ? expression : "", sizeof(record.expression));
        if (!(record.flags & VARFLAG_VERBATIM)) {
            TeskUtils::removeDoubleSlashes(record.defaultValue);
            TeskUtils::removeDoubleSlashes(record.value);
            TeskUtils::removeDoubleSlashes(record.expression);
        }
        return 0;
    }

    VariableRecord& record = variables[index];
    unsigned int effective = (flags & VARFLAG_KEEP) ? record.flags : flags;
    TeskUtils::copyBounded(record.name, name, sizeof(record.name));
    if (defaultValue)
        TeskUtils::copyBounded(record.defaultValue, defaultValue, sizeof(record.defaultValue));
    if (value)
        TeskUtils::copyBounded(record.value, value, sizeof(record.value));
    if (expression)
        TeskUtils::copyBounded(record.expression, expression, sizeof(record.expression));
    if (!(effective & VARFLAG_VERBATIM)) {
        TeskUtils::removeDoubleSlashes(record.defaultValue);
        TeskUtils::removeDoubleSlashes(record.value);
        TeskUtils::removeDoubleSlashes(record.expression);
    }
    record.flags = effective & ~static_cast<unsigned int>(VARFLAG_KEEP);
    recalcVariables(index);
    return 0;
}

namespace {

// Runs the expression of `record` into its value as an in-place expansion with `limit`
// would: what the expansion writes replaces the start of the old value, the rest of the old
// value stays behind a failed expansion, and the result is cut to the field. Working on a
// copy keeps the other fields intact and lets an expression read the variable's own old
// value.
void expandIntoValue(Installer& installer, int index, int limit)
{
    char work[kRecalcLimit + 1];
    assert(limit <= kRecalcLimit);
    memset(work, 0, sizeof(work));
    char expression[VARIABLE_VALUE_SIZE];
    memcpy(work, installer.variables[index].value, VARIABLE_VALUE_SIZE);
    memcpy(expression, installer.variables[index].expression, VARIABLE_VALUE_SIZE);
    installer.expandVariables(expression, work, limit);
    TeskUtils::copyBounded(installer.variables[index].value, work, VARIABLE_VALUE_SIZE);
}

} // namespace

int Installer::ResetVar(const char* name, VariableResetType kind)
{
    if (!name)
        return -1;
    int index = GetVar(name, nullptr, 0);
    if (index < 0)
        return -1;
    VariableRecord& record = variables[index];
    if (kind == VARRESET_DEFAULT) {
        TeskUtils::copyBounded(record.value, record.defaultValue, sizeof(record.value));
        return 0;
    }
    expandIntoValue(*this, index, VARIABLE_VALUE_SIZE);
    if (kind == VARRESET_RECALCULATE)
        variables[index].flags |= VARFLAG_RECALCULATE;
    else
        variables[index].flags &= ~static_cast<uint32_t>(VARFLAG_RECALCULATE);
    return 0;
}

int Installer::GetVarDefaultValue(const char* name, char* buffer, int size)
{
    if (!name || !buffer)
        return -1;
    int index = GetVar(name, buffer, size);
    if (index >= 0 && size > 0)
        TeskUtils::copyBounded(buffer, variables[index].defaultValue, static_cast<size_t>(size));
    return index;
}

void Installer::recalcVariables(int except)
{
    if (suspendRecalculation || variables.count == 0)
        return;

    // The recalculated records, from the last to the first.
    int* order = new int[variables.count];
    int n = 0;
    for (int i = variables.count - 1; i >= 0; --i) {
        if ((variables[i].flags & VARFLAG_RECALCULATE) && i != except)
            order[n++] = i;
    }
    if (n == 0) {
        delete[] order;
        return;
    }

    // uses[a * n + b]: the expression of collected variable a holds "$" and the name of b,
    // as a plain substring.
    unsigned char* uses = new unsigned char[static_cast<size_t>(n) * n];
    char pattern[VARIABLE_NAME_SIZE + 1];
    for (int b = 0; b < n; ++b) {
        pattern[0] = '$';
        TeskUtils::copyBounded(pattern + 1, variables[order[b]].name, VARIABLE_NAME_SIZE);
        for (int a = 0; a < n; ++a)
            uses[a * n + b] = a != b && strstr(variables[order[a]].expression, pattern) != nullptr;
    }

    // One pass that moves a variable behind the ones it uses; a cycle just gives some order.
    int* position = new int[n];
    for (int i = 0; i < n; ++i)
        position[i] = i;
    for (int p = 0; p + 1 < n; ++p) {
        for (int k = p + 1; k < n; ++k) {
            if (uses[position[p] * n + position[k]]) {
                int held = position[p];
                position[p] = position[k];
                position[k] = held;
            }
        }
    }

    // A failed expansion is not reported and may leave a partial value.
    for (int i = 0; i < n; ++i)
        expandIntoValue(*this, order[position[i]], kRecalcLimit);

    delete[] position;
    delete[] uses;
    delete[] order;
}
