#pragma once
// Path text helpers of the portability layer, and the few file-system calls they need.
//
// The normalisers work on the text only; they never look at the file system.
#include "foundation/strings/char_string.h"

namespace TeskUtils {

// The normal form of `path`, by text alone: runs of '/' become one, a leading "./" and every
// "." component go, and each ".." removes the component before it (also at the very end).
// A ".." with nothing before it, or behind another "..", stays. A trailing '/' stays.
// A null or empty path gives an empty (not null) string.
CharString uniCanonicalPath(const char* path);

// The directory part of the canonical path: what stands before its last '/', or the whole
// path when it has none.
CharString uniGetFileDir(const char* path);

// The file part of the canonical path: what stands behind its last '/', or the whole path.
CharString uniGetFilenameFromPath(const char* path);

// Turns every '/' and '\' into `slash` and collapses runs of it, from the second character
// on, so that a leading double slash stays. Returns the number of characters changed or
// removed; 0 for a null path.
int uniFixPathDelimiters(char* path, char slash);

// Corrects a path as a user typed it: trims white space at both ends, turns delimiters into
// '/' and collapses their runs, removes white space directly before each '/', then turns and
// collapses once more. Returns the number of changes; 0 for a null or empty path.
int uniCorrectPathString(char* path);

// Makes the directory `path` with every missing level above it (mode 0777 before the
// umask); levels that exist already are fine. A path ending in '/' makes the levels before
// that slash. Returns 1 on success, 0 on failure or for a null path.
int uniMakeDir(const char* path);

// 1 when `stat` finds `path` (file, directory or the target of a link), else 0.
int uniPathOrFileExists(const char* path);

// The text of strerror(code).
CharString uniGetErrorString(int code);

} // namespace TeskUtils
