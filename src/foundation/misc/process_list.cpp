#include "foundation/misc/process_list.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/tokenize.h"

namespace {

// Line length for reading the process list: the system's limit of a command line, asked
// once, or 1 MiB when the system doesn't say. 0 until asked.
int listLineSize = 0;

// Reads ARG_MAX through getconf. Returns false when the command can't be started.
bool askLineSize()
{
    FILE* pipe = popen("getconf ARG_MAX 2> /dev/null", "r");
    if (!pipe)
        return false;
    char line[64] = "";
    long value = 0;
    if (fgets(line, sizeof line, pipe))
        value = strtol(line, nullptr, 10);
    pclose(pipe);
    listLineSize = value > 0 && value < 0x7fffffff ? static_cast<int>(value) : 0x100000;
    return true;
}

// True when `command` is a kernel-style name in brackets or parentheses around exactly `name`.
bool matchesBracketedName(const char* command, const char* name)
{
    char close = command[0] == '[' ? ']' : ')';
    size_t length = strlen(name);
    return strncmp(command + 1, name, length) == 0 && command[1 + length] == close;
}

// True when the program file of `pid` is called exactly `name`.
bool programFileIs(int pid, const char* name)
{
    char link[64];
    snprintf(link, sizeof link, "/proc/%d/exe", pid);
    char target[260];
    ssize_t length = readlink(link, target, sizeof target - 1);
    if (length < 0)
        return false;
    target[length] = '\0';
    const char* slash = strrchr(target, '/');
    return strcmp(slash ? slash + 1 : target, name) == 0;
}

} // namespace

int getProcessFileName(char* buffer, int size, int pid)
{
    if (!buffer || size < 1)
        return 0;
    char link[64];
    if (pid != 0)
        snprintf(link, sizeof link, "/proc/%d/exe", pid);
    else
        TeskUtils::copyBounded(link, "/proc/self/exe", sizeof link);
    ssize_t length = readlink(link, buffer, static_cast<size_t>(size - 1));
    if (length < 0) {
        buffer[0] = '\0';
        return 0;
    }
    buffer[length] = '\0';
    return 1;
}

int getProcessPath(char* buffer, int size)
{
    if (!getProcessFileName(buffer, size, 0))
        return 0;
    int i = static_cast<int>(strlen(buffer)) - 1;
    if (i < 0)
        return 1;
    while (i > 0 && buffer[i] != '/' && buffer[i] != '\\')
        --i;
    if (i + 1 < size)
        buffer[i + 1] = '\0';
    return 1;
}

namespace TeskUtils {

int uniListProcessesMatching(const char* name, Table<int, 100>& pids)
{
    if (!name)
        return 1;
    if (listLineSize == 0 && !askLineSize())
        return 3;
    FILE* pipe = popen("ps ax -o pid,command 2> /dev/null", "r");
    if (!pipe)
        return 3;
    pids.setCount(0);

    char* line = new char[listLineSize];
    bool header = true;
    while (fgets(line, listLineSize, pipe)) {
        line[listLineSize - 1] = '\0';
        if (header) {
            header = false;
            continue;
        }
        trimWhitespace(line);
        char* command = strchr(line, ' ');
        if (!command)
            continue;
        *command++ = '\0';
        int pid = atoi(line);
        if (!strstr(command, name))
            continue;
        if (command[0] == '[' || command[0] == '(') {
            if (!matchesBracketedName(command, name))
                continue;
        } else if (!programFileIs(pid, name)) {
            continue;
        }
        pids.append(pid);
    }
    delete[] line;
    pclose(pipe);
    return 0;
}

} // namespace TeskUtils
