#pragma once
// The command-line splitter of the process runner: a small shell-like parser of its own
// (no shell is involved), which turns the line that runProgram builds into the words that
// execvp gets.
#include "foundation/strings/char_string.h"
#include "foundation/strings/table.h"

namespace ProcessRunner {

// Appends the words of the first command of `line` to `words`. Double and single quotes
// group blanks into a word and are removed; a backslash makes the next character plain
// (a doubled backslash vanishes). A ";" outside quotes ends a command, and only the first
// command that holds a non-blank character counts; what follows is dropped. A line whose
// quotes or final backslash are left open is unusable. Returns the number of words
// appended: 0 for an unusable, empty or null line.
int splitCommandLine(const char* line, TeskUtils::Table<TeskUtils::CharString, 16>& words);

} // namespace ProcessRunner
