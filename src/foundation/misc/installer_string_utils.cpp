#include "foundation/misc/installer_string_utils.h"

#include <cstdlib>
#include <cstring>

namespace {

bool isSlash(char c)
{
    return c == '/' || c == '\\';
}

char* mallocCopy(const char* text, size_t length)
{
    char* copy = static_cast<char*>(malloc(length + 1));
    if (!copy)
        return nullptr;
    memcpy(copy, text, length);
    copy[length] = '\0';
    return copy;
}

} // namespace

namespace InstallerStringUtils {

int getOSPathSlash()
{
    return '/';
}

int stripExt(char* name)
{
    if (!name)
        return 0;
    for (size_t i = strlen(name); i-- > 0;) {
        if (isSlash(name[i]))
            return 0;
        if (name[i] != '.')
            continue;
        if (i == 0 || isSlash(name[i - 1]) || name[i - 1] == '.')
            return 0;
        name[i] = '\0';
        return 1;
    }
    return 0;
}

} // namespace InstallerStringUtils

int split(const char* text, char** left, char** right, char delimiter)
{
    if (left)
        *left = nullptr;
    if (right)
        *right = nullptr;
    if (!text || !left || !right || delimiter == '\0')
        return 0;
    const char* at = strchr(text, delimiter);
    if (!at)
        return 0;
    *left = mallocCopy(text, static_cast<size_t>(at - text));
    *right = mallocCopy(at + 1, strlen(at + 1));
    if (!*left || !*right) {
        free(*left);
        free(*right);
        *left = *right = nullptr;
        return 0;
    }
    size_t length = strlen(*right);
    if (length > 0 && (*right)[length - 1] == '\n')
        (*right)[length - 1] = '\0';
    return 1;
}
