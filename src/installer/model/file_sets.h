#pragma once
// The file tables derived from the template's InstallType, FileSet and FN elements: what
// the install run copies and the dialogs offer. Records are copied in by value; their
// texts are cut silently at the widths below.
#include "foundation/strings/path_size.h"

// One InstallType element.
struct InstallTypeInfo
{
    char name[200]; // Name, at most 198 characters
    char desc[200]; // text of the child Desc, at most 198 characters
    int defaultType; // Default by atoi; 0 unless EditFileSets is present too
    int editFileSets; // EditFileSets by atoi, else 0
};

// One FileSet element with a Name.
struct FileSetInfo
{
    char name[200]; // Name, at most 198 characters
    char desc[1024]; // Desc, at most 1022 characters
    char condition[512]; // Condition, at most 510 characters
};

// Bits of FILENAMES::log, from the attribute Log.
enum {
    LOG_DEST_UNINSTALL = 1, // the file goes into the uninstall (action) log
    LOG_DEST_CLEANUP = 2, // the file goes into the cleanup log
};

// One FN element with a text: one file of a file set.
struct FILENAMES
{
    int fileSet; // index of the owning FileSetInfo
    char dest[TeskUtils::kPathSize]; // Dest, unexpanded, at most 518 characters
    char alias[260]; // Alias, or the text without '/', '\' and ':'; at most 258
    char name[260]; // the text behind its last '/' or '\', at most 258
    int size; // unpacked size in the package; 0 when the alias isn't there
    bool expandVarsInFile; // ExpandVarsInFile present
    bool executable; // Executable present
    bool okIfMissing; // OkIfMissing present
    bool stripExeExt; // with Executable only: StripExeExt evaluated at load time
    bool backupExisting; // BackupExisting present
    unsigned char log; // LOG_DEST_* bits of Log
    char condition[514]; // Condition, at most 510 characters
};
