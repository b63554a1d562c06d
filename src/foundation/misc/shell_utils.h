#pragma once
// Finding programs through the search path, and a browser for opening web addresses.

namespace ShellUtils {

// Asks the shell whether `command` can be run ("command -v"). Returns 1 when it can, else 0
// (also for a null command).
int CommandExists(const char* command);

// Replaces this process by the running program started again as root, with the arguments
// argv[1..argc-1] (the caller adds "-child"). `gui` true tries "gksudo -k", then "gksu -S -k",
// with the arguments as one shell command text; without either, a process on a terminal goes
// on as with `gui` false, and one without a terminal tries "pkexec", through "env" so that the
// display, the X authority, the installer's variables and the user's identity survive
// pkexec's cleared environment. `gui` false uses "sudo -E argv[0] argv[1] ..." where sudo
// exists, otherwise "su -m -c" with the command text. Returns only on failure, with false:
// the program's path could not be had, no graphical tool was found off a terminal, or the
// exec failed.
bool execSuperuserCmd(int argc, const char* const* argv, bool gui);

// Writes `argument` into `out` (at most size-1 characters and a NUL) for a shell command
// text: an argument with an '=' among its first size-2 characters gets its value behind the
// '=' put between two `quote` characters (-log=/a b becomes -log='/a b'); any other argument
// is copied unchanged, spaces and all. Does nothing for a null argument or output or a size
// below 1.
void WrapArgumentValue(const char* argument, char* out, int size, char quote);

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
