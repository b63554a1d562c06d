#pragma once
// Small text helpers for file names and "key<delimiter>value" lines.

namespace InstallerStringUtils {

// The path delimiter of this system: always '/'.
int getOSPathSlash();

// Cuts the last extension of the file name at the end of `name`, in place. A name whose
// last dot is its first character, or follows a slash or another dot (".hidden", "a/.b",
// "a..b"), keeps it, and so does a name whose last component holds no dot. Returns 1 when an
// extension was cut, else 0 (also for a null name).
int stripExt(char* name);

} // namespace InstallerStringUtils

// Splits `text` at the first `delimiter` into two `malloc` copies, of what stands before and
// behind it; a line feed at the very end of the second is cut. Both outputs are set to null
// first and stay null when there is no delimiter (or a null argument): result 0. Returns 1
// when split; the caller frees both with `free`.
int split(const char* text, char** left, char** right, char delimiter);
