#include "foundation/misc/installer_file_utils.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/misc/path_utils.h"
#include "foundation/streams/pconsole.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/find_data.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/tokenize.h"

namespace {

bool isSlash(char c)
{
    return c == '/' || c == '\\';
}

InstallerFileUtils::DirDeleteReport dirDeleteReport = nullptr;

// True when the directory holds nothing but "." and "..". Only the first three entries are
// read: a third one means the directory is not empty either way.
bool isEmptyDirectory(DIR* dir)
{
    int seen = 0;
    bool empty = true;
    while (seen < 3) {
        struct dirent* entry = readdir(dir);
        if (!entry)
            break;
        ++seen;
        if (strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0)
            empty = false;
    }
    return empty && seen < 3;
}

bool isSymbolicLink(const char* path)
{
    struct stat info;
    return lstat(path, &info) == 0 && S_ISLNK(info.st_mode);
}

} // namespace

namespace InstallerFileUtils {

int unlink(const char* path)
{
    return ::unlink(path);
}

int rmdir(const char* path)
{
    return ::rmdir(path);
}

int rename(const char* from, const char* to)
{
    return ::rename(from, to);
}

int remove(const char* path)
{
    return ::remove(path);
}

FILE* fopen(const char* path, const char* mode)
{
    return ::fopen(path, mode);
}

int RecursiveCreateDirFromFileName(const char* path, int& created)
{
    if (!path)
        return -1;
    char copy[TeskUtils::kPathSize];
    TeskUtils::copyBounded(copy, path, sizeof copy);
    created = 0;
    size_t length = strlen(copy);
    if (length < 4)
        return 0;
    for (size_t i = 3; i < length; ++i) {
        if (!isSlash(copy[i]))
            continue;
        copy[i] = '\0';
        if (!TeskUtils::uniPathOrFileExists(copy)) {
            if (!TeskUtils::uniMakeDir(copy))
                return -1;
            ++created;
        }
        copy[i] = '/';
    }
    return 0;
}

int RecursiveCreateDirFromFileName(const char* path)
{
    int created = 0;
    return RecursiveCreateDirFromFileName(path, created);
}

int DeleteEmptyDirectoriesChain(const char* path)
{
    if (!path)
        return 0;
    char current[TeskUtils::kPathSize];
    TeskUtils::copyBounded(current, path, sizeof current);
    int removed = 0;
    for (;;) {
        DIR* dir = opendir(current);
        if (!dir)
            break;
        bool empty = isEmptyDirectory(dir);
        closedir(dir);
        if (!empty)
            break;
        char* lastSlash = strrchr(current, '/');
        if (!lastSlash)
            break;
        // An empty directory that refuses removal is tried again: callers pass only
        // directories they may remove.
        if (::rmdir(current) != 0)
            continue;
        *lastSlash = '\0';
        ++removed;
    }
    return removed;
}

int DeleteEmptyDirs(const char* path)
{
    if (!path || !*path)
        return 0;
    char copy[TeskUtils::kPathSize];
    TeskUtils::copyBounded(copy, path, sizeof copy);
    for (char* c = copy; *c; ++c)
        if (*c == '\\')
            *c = '/';
    size_t length = strlen(copy);
    while (length > 0 && copy[length - 1] == '/')
        copy[--length] = '\0';
    return DeleteEmptyDirectoriesChain(copy);
}

void setDirDeleteReport(DirDeleteReport report)
{
    dirDeleteReport = report;
}

int DirInfo::Delete(const char* path, PConsole* console, InstallerUI* ui, LogCollector* collector)
{
    if (!path)
        return 0;
    int result = 0;
    if (TeskUtils::uniPathOrFileExists(path) && DeleteEmptyDirs(path) == 0)
        result = TeskUtils::uniPathOrFileExists(path) ? 1 : 0;

    if (console)
        console->Dump("Dir: %s (%s)", path, result ? "failed" : "ok");

    if (ui && dirDeleteReport) {
        char message[TeskUtils::kPathSize];
        TeskUtils::copyBounded(message, result ? "FAILED to remove " : "Remove ", sizeof message);
        TeskUtils::appendBounded(message, path, sizeof message);
        dirDeleteReport(ui, collector, message, result);
    }
    return result;
}

int DirInfo::Delete(PConsole* console, InstallerUI* ui, LogCollector* collector)
{
    if (path.isEmpty() || levels < 1)
        return 0;
    int length = path.length();
    // Private copy of the text: the walk below cuts it.
    char* text = path.splitBuffer(length + 1, 1);
    int result = 0;
    if (!isSlash(text[length - 1]) && Delete(text, console, ui, collector) != 0)
        result = 1;
    for (int i = length - 1; i >= 0 && levels > 0; --i) {
        if (!isSlash(text[i]))
            continue;
        --levels;
        text[i] = '\0';
        if (Delete(text, console, ui, collector) != 0)
            result = 1;
    }
    return result;
}

int recursiveDeleteWildcard(const char* dir, const char* wildcard, bool removeDir)
{
    if (!dir || !wildcard || !TeskUtils::uniPathOrFileExists(dir))
        return -1;
    int count = 0;
    char pattern[TeskUtils::kPathSize];
    TeskUtils::copyBounded(pattern, dir, sizeof pattern);
    TeskUtils::appendBounded(pattern, "/*", sizeof pattern);
    TeskUtils::FindData entries(pattern);
    for (int i = 0; i < entries.size(); ++i) {
        char sub[TeskUtils::kPathSize];
        TeskUtils::copyBounded(sub, entries[i], sizeof sub);
        size_t length = strlen(sub);
        // The search marks directories with a trailing slash. A link to a directory is not
        // followed: its target lies outside the tree being cleaned.
        if (length < 2 || sub[length - 1] != '/')
            continue;
        sub[length - 1] = '\0';
        if (isSymbolicLink(sub))
            continue;
        count += recursiveDeleteWildcard(sub, wildcard, removeDir);
    }

    TeskUtils::copyBounded(pattern, dir, sizeof pattern);
    TeskUtils::appendBounded(pattern, "/", sizeof pattern);
    TeskUtils::appendBounded(pattern, wildcard, sizeof pattern);
    TeskUtils::uniFixPathDelimiters(pattern, '/');
    TeskUtils::FindData matches(pattern);
    for (int i = 0; i < matches.size(); ++i) {
        ::remove(matches[i]);
        ++count;
    }

    if (removeDir) {
        TeskUtils::copyBounded(pattern, dir, sizeof pattern);
        TeskUtils::appendBounded(pattern, "/*", sizeof pattern);
        TeskUtils::FindData left(pattern);
        if (left.empty())
            ::rmdir(dir);
    }
    return count;
}

int ReadFileBuf(const char* path, int& size, TeskUtils::PtrArray<unsigned char>& data)
{
    if (!path)
        return -1;
    FILE* file = ::fopen(path, "rb");
    if (!file)
        return errno ? errno : -1;

    int result = 0;
    long length = -1;
    if (fseek(file, 0, SEEK_END) == 0)
        length = ftell(file);
    if (length < 0 || length > INT_MAX) {
        result = errno ? errno : -1;
    } else {
        size = static_cast<int>(length);
        rewind(file);
        TeskUtils::PtrArray<unsigned char> content;
        try {
            content.allocArray(size);
        } catch (const std::bad_alloc&) {
            result = ENOMEM;
        }
        if (result == 0) {
            size_t got = size > 0 ? fread(content.data, 1, static_cast<size_t>(size), file) : 0;
            if (got == static_cast<size_t>(size))
                data = content;
            else
                result = ferror(file) && errno ? errno : -1;
        }
    }
    fclose(file);
    return result;
}

int getTempFolder(char* buffer, int size)
{
    if (!buffer || size < 1)
        return 0;
    const char* tmpdir = getenv("TMPDIR");
    TeskUtils::copyBounded(buffer, tmpdir && *tmpdir ? tmpdir : "/tmp", static_cast<size_t>(size));
    TeskUtils::removeSlashesAtEnd(buffer, size);
    return 0;
}

} // namespace InstallerFileUtils
