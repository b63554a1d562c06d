#pragma once
// File-system helpers below the engine: thin forwarders to the C library, directory creation
// that counts the levels it made, removal of exactly those levels again, wildcard deletion,
// whole-file reading and the temporary folder.
//
// Paths are plain `char*` of at most 520 bytes (519 characters and the terminator); longer
// paths are cut silently. Nothing here prints or throws: results are the only report.
#include <cstdio>

#include "foundation/strings/char_string.h"
#include "foundation/strings/ptr_array.h"

class PConsole;
class InstallerUI;
class LogCollector;

namespace InstallerFileUtils {

// Plain forwarders: the named C library call and its result.
int unlink(const char* path);
int rmdir(const char* path);
int rename(const char* from, const char* to);
int remove(const char* path);
FILE* fopen(const char* path, const char* mode);

// Makes every missing directory level of `path` that ends in a `/` or `\`, from the top down.
// The text behind the last slash is never made, so a file's path makes its directory only;
// to make a directory itself, end its path in `/`. The first three characters are not
// looked at, which leaves the root of an absolute path alone; a path shorter than 4
// characters makes nothing. `created` receives the number of levels made.
// Returns 0, or -1 for a null path or a level that could not be made (the levels made
// before it stay and are counted).
int RecursiveCreateDirFromFileName(const char* path, int& created);
int RecursiveCreateDirFromFileName(const char* path);

// Removes `path` if it is an empty directory, then its parent if that became empty, and so
// on up. Returns the number of directories removed. The path must not end in a slash.
// A directory that is empty but can't be removed is retried without end, so callers pass
// only directories that they are entitled to remove.
int DeleteEmptyDirectoriesChain(const char* path);

// DeleteEmptyDirectoriesChain on a copy of `path` with `\` turned into `/` and trailing
// slashes cut. A null or empty path gives 0. Returns the number of directories removed.
int DeleteEmptyDirs(const char* path);

// How DirInfo::Delete shows the outcome of a removal: called with a non-null front end only.
// It is to call StartDecompress on the front end, add `message` to the collector (when there
// is one and `failed` is 1) and show `message` by EndDecompress(message, false). The
// foundation knows the engine's classes only by name, so the engine installs the handler
// once at its start; without one nothing is shown.
using DirDeleteReport = void (*)(InstallerUI* ui, LogCollector* collector, const char* message, int failed);
void setDirDeleteReport(DirDeleteReport report);

// A directory that was made, with the number of path levels that were created for it, so
// that exactly those levels can be removed again.
struct DirInfo
{
    TeskUtils::CharString path;
    int levels = 0;

    DirInfo() = default;
    DirInfo(const char* dirPath, int createdLevels)
        : path(dirPath)
        , levels(createdLevels)
    {
    }

    // Removes the empty directory `path` and its empty parents. Returns 0 when the path is
    // gone afterwards (or never existed), 1 when it is still there. Logs "Dir: <path> (ok)"
    // or "(failed)" to `console`, and with a front end reports "Remove <path>" or
    // "FAILED to remove <path>" through the installed DirDeleteReport. All three of
    // `console`, `ui` and `collector` may be null.
    static int Delete(const char* path, PConsole* console, InstallerUI* ui, LogCollector* collector);

    // Removes the `levels` innermost levels of `path`, each as above. A path that does not
    // end in a slash is first removed whole, which uses up no level. Returns 0, or 1 when any
    // removal failed. `path` is cut as the walk goes up and afterwards holds the topmost
    // level tried; a null or empty path or `levels` below 1 does nothing and gives 0.
    int Delete(PConsole* console, InstallerUI* ui, LogCollector* collector);
};

// Removes, in `dir` and every directory below it, the files matching `wildcard` (a glob
// pattern). With `removeDir`, each directory left empty afterwards is removed too.
// Returns the number of removals tried (failed ones count too), or -1 for a null argument
// or a `dir` that does not exist.
int recursiveDeleteWildcard(const char* dir, const char* wildcard, bool removeDir);

// Reads the whole file into a new array, which replaces `data` only after a complete read;
// `size` receives the file's length as measured. Returns 0, -1 for a null path, or another
// non-zero value (the errno where there is one) for a file that can't be opened, measured,
// allocated or read; then `data` stays as it was.
int ReadFileBuf(const char* path, int& size, TeskUtils::PtrArray<unsigned char>& data);

// The temporary folder: $TMPDIR without trailing slashes, or "/tmp" when it isn't set,
// bounded by `size`. A null buffer or a size of 0 does nothing. Always returns 0.
int getTempFolder(char* buffer, int size);

} // namespace InstallerFileUtils
