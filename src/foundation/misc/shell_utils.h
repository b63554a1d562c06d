#pragma once
// Finding programs through the search path, and a browser for opening web addresses.

namespace ShellUtils {

// Asks the shell whether `command` can be run ("command -v"). Returns 1 when it can, else 0
// (also for a null command).
int CommandExists(const char* command);

} // namespace ShellUtils

// Copies $PATH into `buffer` (new[]) and splits it in place at each ':' into `dirs`, an
// array (new[]) of `count` pointers into that copy. The caller frees both with delete[].
// Returns 1, or 0 when PATH is not set (then `buffer` and `dirs` are null and `count` 0).
int get_PATH(char*& buffer, const char**& dirs, int& count);

// Looks for a known web browser in the directories of $PATH, trying the browsers in a fixed
// order of preference and, for each, the directories in order. The first one found goes
// into `buffer` as its bare program name (bounded by `size`). Returns 1 when one is found,
// 0 when none is (or PATH is unset, or the buffer is null).
int get_useable_www_browser(char* buffer, int size);

// Opening a document through a toolkit: there is none in these programs, so this gives 0
// and the caller goes on to "xdg-open".
int tryOpenDocumentWx(const char* document, bool wait);
