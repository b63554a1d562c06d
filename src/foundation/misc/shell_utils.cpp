#include "foundation/misc/shell_utils.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>

#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/path_size.h"

namespace ShellUtils {

int CommandExists(const char* command)
{
    if (!command)
        return 0;
    char line[4096];
    snprintf(line, sizeof line, "command -v %s >/dev/null 2>&1", command);
    return system(line) == 0 ? 1 : 0;
}

} // namespace ShellUtils

int get_PATH(char*& buffer, const char**& dirs, int& count)
{
    buffer = nullptr;
    dirs = nullptr;
    count = 0;
    const char* path = getenv("PATH");
    if (!path)
        return 0;

    size_t length = strlen(path);
    buffer = new char[length + 1];
    memcpy(buffer, path, length + 1);

    int parts = 1;
    for (const char* c = buffer; *c; ++c)
        if (*c == ':')
            ++parts;
    dirs = new const char*[parts];
    dirs[count++] = buffer;
    for (char* c = buffer; *c; ++c) {
        if (*c != ':')
            continue;
        *c = '\0';
        dirs[count++] = c + 1;
    }
    return 1;
}

int get_useable_www_browser(char* buffer, int size)
{
    static const char* const browsers[]
        = { "firefox", "mozilla", "netscape", "galeon", "konqueror", "opera", "epiphany", "lynx", "links" };
    if (!buffer || size < 1)
        return 0;
    char* pathCopy = nullptr;
    const char** dirs = nullptr;
    int count = 0;
    if (!get_PATH(pathCopy, dirs, count))
        return 0;

    int found = 0;
    for (const char* browser : browsers) {
        for (int i = 0; i < count && !found; ++i) {
            char candidate[TeskUtils::kPathSize];
            TeskUtils::copyBounded(candidate, dirs[i], sizeof candidate);
            size_t length = strlen(candidate);
            if (length > 0 && candidate[length - 1] != '/')
                TeskUtils::appendBounded(candidate, "/", sizeof candidate);
            TeskUtils::appendBounded(candidate, browser, sizeof candidate);
            struct stat info;
            if (stat(candidate, &info) == 0)
                found = 1;
        }
        if (found) {
            TeskUtils::copyBounded(buffer, browser, static_cast<size_t>(size));
            break;
        }
    }
    delete[] dirs;
    delete[] pathCopy;
    return found;
}

int tryOpenDocumentWx(const char*, bool)
{
    return 0;
}
