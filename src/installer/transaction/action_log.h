#pragma once
// The action log: the text file that an installation writes to make itself undoable, and
// the only link between an installation and its later uninstallation.
//
// Lines end in "\r\n" (a PConsole line with every decoration off, whose text is cut at
// 1022 characters); fields are separated by one TAB and nothing is escaped:
//
//   line 1          the uninstall template's path (expanded), no keyword
//   line 2          the final backup container's path, no keyword
//   line 3          NUMVARS <TAB> count
//   count lines     VAR <TAB> name <TAB> value       (an empty value ends in the TAB)
//   then            action records in the order the run performed them:
//     DIR <TAB> count <TAB> directory/             count levels made at the path's tail
//     FILE <TAB> CREATE|OVER <TAB> path            OVER when the file had BackupExisting
//     ENV <TAB> journal record                     "ADDVAR name" or "NOP"
//     INI <TAB> record                             empty on Linux
//     MODIFYFILE <TAB> ADDAFTER <TAB> target <TAB> modification file
//     SHORTCUT <TAB> SYMLINK|SHORTCUT <TAB> path   followed by an empty line of its own
//     FIREWALL <TAB> APP <TAB> path
//     FIREWALL <TAB> PORT <TAB> port <TAB> protocol <TAB> name
//
// Readers take a line into 1564 bytes, strip trailing white space, recognise a keyword by
// its letters as a prefix (so "DIRECTORY..." reads as DIR) and skip any run of TABs behind
// it; fields inside a record are separated by runs of TABs too. Unknown lines are passed
// over by every reader.
//
// The operations of the engine on the variable block (WriteVars, ReadVars, getLogFileVar,
// initValuesFromLogFile, UpdateVars) are members of Installer (log_variables.cpp).
#include <cstdio>

class PConsole;

namespace ActionLog {

// Bytes of a reader's line buffer.
constexpr int kReadLineSize = 1564;

enum RecordKind {
    RecordUnknown = 0,
    RecordDir,
    RecordFile,
    RecordEnv,
    RecordIni,
    RecordModifyFile,
    RecordShortcut,
    RecordFirewall,
};

// The record writers of the install run and its steps: one line each.
void writeDir(PConsole& log, int count, const char* directory);     // "DIR", count, directory
void writeFile(PConsole& log, bool over, const char* path);         // "FILE", "OVER"/"CREATE", path
void writeRecord(PConsole& log, const char* keyword, const char* text);  // keyword, TAB, text

// Reads one line of at most kReadLineSize-1 characters into `buffer` (kReadLineSize
// bytes) and strips the trailing white space. False at end of file.
bool readLine(FILE* stream, char* buffer);

// The kind of a line, by keyword prefix, tried in the order DIR, FILE, ENV, INI,
// SHORTCUT, FIREWALL, MODIFYFILE.
RecordKind recordKind(const char* line);
// The text behind the keyword of `kind` and the run of TABs that follows it.
const char* recordText(const char* line, RecordKind kind);
// A DIR record: the count (parsed with "%d") and the directory behind the next TABs.
// False when the count doesn't parse.
bool splitDir(const char* line, int& count, const char*& directory);
// A FILE record: `over` for "OVER", false for "CREATE"; the path behind the next TABs.
// False for any other word.
bool splitFile(const char* line, bool& over, const char*& path);

// Positions `stream` at the first action record: behind the variable block when a line
// parses as its count, else (no block before the end) at the start of the file, so that
// the whole file is read as records. The first two lines are not special here.
void seekRecords(FILE* stream);

} // namespace ActionLog

// An owner of text lines read from a stream, one array of the exact length per line.
class LineArray {
public:
    LineArray() = default;
    ~LineArray() { free(); }
    LineArray(const LineArray&) = delete;
    LineArray& operator=(const LineArray&) = delete;

    // Frees what is held, then reads `count` lines with fgets into 1024 bytes, one
    // trailing "\n" removed (a longer line arrives as several entries). False for a
    // negative count, at end of file before `count` lines, or when memory runs out; the
    // lines read so far stay valid.
    bool read(FILE* f, int count);
    // Deletes every line and the table; count becomes 0.
    void free();

    int count = 0;
    char** lines = nullptr;
};
