#include "foundation/misc/path_utils.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

#include "foundation/strings/tokenize.h"

namespace {

bool isDotDot(const char* text, int length)
{
    return length == 2 && text[0] == '.' && text[1] == '.';
}

// Copy of `path` in a new[] block, for cutting in place.
char* copyOf(const char* path)
{
    size_t length = strlen(path);
    char* copy = new char[length + 1];
    memcpy(copy, path, length + 1);
    return copy;
}

} // namespace

namespace TeskUtils {

CharString uniCanonicalPath(const char* path)
{
    if (!path || !*path)
        return CharString("");

    int length = static_cast<int>(strlen(path));
    // Kept components as offsets and lengths into `path`.
    int* starts = new int[length];
    int* lengths = new int[length];
    int kept = 0;

    for (int i = 0; i < length;) {
        while (i < length && path[i] == '/')
            ++i;
        int start = i;
        while (i < length && path[i] != '/')
            ++i;
        int size = i - start;
        if (size == 0 || (size == 1 && path[start] == '.'))
            continue;
        if (isDotDot(path + start, size) && kept > 0
            && !isDotDot(path + starts[kept - 1], lengths[kept - 1])) {
            --kept;
            continue;
        }
        starts[kept] = start;
        lengths[kept] = size;
        ++kept;
    }

    CharString result("");
    if (path[0] == '/')
        result.append("/");
    for (int k = 0; k < kept; ++k) {
        if (k > 0)
            result.append("/");
        result.append(path + starts[k], lengths[k]);
    }
    if (kept > 0 && path[length - 1] == '/')
        result.append("/");
    delete[] starts;
    delete[] lengths;
    return result;
}

CharString uniGetFileDir(const char* path)
{
    CharString canonical = uniCanonicalPath(path);
    const char* slash = strrchr(canonical.c_str(), '/');
    return slash ? CharString(canonical.c_str(), static_cast<int>(slash - canonical.c_str())) : canonical;
}

CharString uniGetFilenameFromPath(const char* path)
{
    CharString canonical = uniCanonicalPath(path);
    const char* slash = strrchr(canonical.c_str(), '/');
    return slash ? CharString(slash + 1) : canonical;
}

int uniFixPathDelimiters(char* path, char slash)
{
    if (!path)
        return 0;
    int changes = 0;
    for (char* c = path; *c; ++c) {
        if ((*c == '/' || *c == '\\') && *c != slash) {
            *c = slash;
            ++changes;
        }
    }
    // From the second character on, so that a leading "//" stays.
    if (path[0]) {
        int removed = removeNeighbouringCharacters(path + 1, slash, nullptr, AfterCharacter);
        if (removed > 0)
            changes += removed;
    }
    return changes;
}

int uniCorrectPathString(char* path)
{
    if (!path || !*path)
        return 0;
    int changes = trimWhitespace(path);
    changes += uniFixPathDelimiters(path, '/');
    int removed = removeNeighbouringCharacters(path, '/', " \t\n\v\f\r", BeforeCharacter);
    if (removed > 0)
        changes += removed;
    changes += uniFixPathDelimiters(path, '/');
    return changes;
}

int uniMakeDir(const char* path)
{
    if (!path || !*path)
        return 0;
    char* copy = copyOf(path);
    int ok = 1;
    for (char* c = copy + 1; *c && ok; ++c) {
        if (*c != '/')
            continue;
        *c = '\0';
        if (mkdir(copy, 0777) != 0 && errno != EEXIST)
            ok = 0;
        *c = '/';
    }
    size_t length = strlen(copy);
    if (ok && copy[length - 1] != '/' && mkdir(copy, 0777) != 0 && errno != EEXIST)
        ok = 0;
    delete[] copy;
    return ok;
}

int uniPathOrFileExists(const char* path)
{
    struct stat info;
    return path && stat(path, &info) == 0 ? 1 : 0;
}

CharString uniGetErrorString(int code)
{
    return CharString(strerror(code));
}

} // namespace TeskUtils
