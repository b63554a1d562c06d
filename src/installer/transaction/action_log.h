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
//     DIR <TAB> count <TAB> directory/             count levels made at the path's tail,
//                                                  written only for a count above 0
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
// The variable block is read with scanf patterns: "NUMVARS\t%i" for the count and
// "VAR\t%[^\t]\t%[^\t]" for a variable. Both fields of a variable need at least one
// character, so a variable written with an empty value doesn't read back.
//
// The operations of the engine on the variable block (WriteVars, ReadVars, getLogFileVar,
// initValuesFromLogFile, UpdateVars) are members of Installer (log_variables.cpp).
#include <cstdio>

class PConsole;

namespace ActionLog {

// Bytes of a reader's line buffer.
constexpr int kReadLineSize = 1564;
// Bytes of a line buffer of the variable block's reader and rewriter.
constexpr int kVariableLineSize = 2048;
// Bytes of one fgets of LineArray::read.
constexpr int kLineArrayReadSize = 1024;

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

// The record writers of the install run and its steps: one line each, cut at 1022
// characters like every console line. Nothing tells whether the line was written.
// "DIR", count, directory; nothing for a count below 1.
void writeDir(PConsole& log, int count, const char* directory);
// "FILE", "OVER" or "CREATE", path.
void writeFile(PConsole& log, bool over, const char* path);
// keyword, text (a SHORTCUT text brings its own "\n", which makes an empty line behind it).
void writeRecord(PConsole& log, const char* keyword, const char* text);
// "FIREWALL", "APP", path; "FIREWALL", "PORT", port, protocol, name.
void writeFirewallApp(PConsole& log, const char* path);
void writeFirewallPort(PConsole& log, long port, const char* protocol, const char* name);

// The scanf patterns of the variable block, "NUMVARS\t%i" and "VAR\t%[^\t]\t%[^\t]".
const char* countFormat();
const char* variableFormat();
// True when `line` parses as the count line of the variable block; `count` receives the
// count (untouched otherwise).
bool parseCount(const char* line, int& count);
// True when `line` parses as a variable line with two non-empty fields; the name is cut
// at nameSize-1 characters, the value at valueSize-1 (both sizes above 0). Only the first
// kVariableLineSize-1 characters of the line are looked at. Untouched on false.
bool parseVariable(const char* line, char* name, int nameSize, char* value, int valueSize);

// Cuts every trailing character for which isspace is true.
void stripTrailingSpace(char* line);

// Reads one line of at most kReadLineSize-1 characters into `buffer` (kReadLineSize
// bytes) and strips the trailing white space. False at end of file.
bool readLine(FILE* stream, char* buffer);

// The kind of a line, by keyword prefix, tried in the order DIR, FILE, ENV, INI,
// SHORTCUT, FIREWALL, MODIFYFILE. RecordUnknown for null.
RecordKind recordKind(const char* line);
// The text behind the keyword of `kind` and the run of TABs that follows it; `line`
// itself for RecordUnknown. The line must begin with the keyword (recordKind).
const char* recordText(const char* line, RecordKind kind);
// The next field of a record: what follows the first TAB of `field` and the run of TABs
// it starts; the empty text at the end of `field` when it holds no TAB.
const char* nextField(const char* field);
// A DIR record: `count` gets the level count parsed with "%d" from the field behind the
// keyword (0 when it doesn't parse) and `directory` the next field (empty when missing).
// Both are always set; the result tells whether the count parsed.
bool splitDir(const char* line, int& count, const char*& directory);
// A FILE record: the kind word (up to the next TAB) is compared whole, first with
// "CREATE", then with "OVER"; `over` is true for "OVER", and `path` gets the next field.
// False for any other word, with both left untouched.
bool splitFile(const char* line, bool& over, const char*& path);

// Positions `stream` at the first action record: from the start, lines (kReadLineSize)
// are read until one parses as the count line, and then the count lines behind it. When
// the end of the file comes first, in either search, the stream goes back to its start,
// so that the whole file is read as records. The first two lines are not special here.
void seekRecords(FILE* stream);

} // namespace ActionLog

// An owner of text lines read from a stream, one array of the exact length per line.
class LineArray
{
public:
    LineArray() = default;
    ~LineArray() { free(); }
    LineArray(const LineArray&) = delete;
    LineArray& operator=(const LineArray&) = delete;

    // Frees what is held and stores `count`, then reads `count` lines with fgets into
    // 1024 bytes, one trailing "\n" removed (a trailing "\r" stays; a longer line arrives
    // as several entries). False for a negative count, at end of file before `count`
    // lines, or when memory runs out. On false the lines read so far stay valid, the
    // entries behind them are null, and `count` stays what was asked for.
    bool read(FILE* f, int count);
    // Deletes every line and the table; count becomes 0.
    void free();

    int count = 0;
    char** lines = nullptr;
};
