#pragma once
// The program file of a process, and finding processes by program name.
#include "foundation/strings/table.h"

// The full path of the program file of process `pid` (the link "/proc/<pid>/exe"), or of this
// process for a pid of 0 ("/proc/self/exe"), cut to `size` - 1 characters. Returns 1, or 0
// when the link can't be read (no such process, another user's process) or the buffer is
// null or of size 0.
int getProcessFileName(char* buffer, int size, int pid);

// The directory of this process's program file, with its trailing slash ("/opt/app/").
// A path with no slash keeps only its first character. Returns 1 or 0 as above.
int getProcessPath(char* buffer, int size);

namespace TeskUtils {

// Fills `pids` with the ids of the running processes whose program is called `name`, as
// listed by "ps ax -o pid,command". A kernel-style name in brackets ("[kworker]" or
// "(name)") matches only when the text inside equals `name`; any other process matches when
// the file name of its program file ("/proc/<pid>/exe") equals `name`, so processes of
// other users, whose program file can't be read, never match.
// Returns 0 when the listing ran (whether or not anything matched), 1 for a null name, 3
// when a listing command could not be started.
int uniListProcessesMatching(const char* name, Table<int, 100>& pids);

} // namespace TeskUtils
