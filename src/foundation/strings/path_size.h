#pragma once
// The size of every path buffer of the program. Paths live in plain `char[kPathSize]`
// buffers: at most kPathSize-1 (519) characters and the terminating NUL. A longer path is
// cut silently by the bounded copies (bounded_copy.h), so a path held in such a buffer
// always fits it; pathFits() states that as a testable condition for `assert`.
#include <cstring>

namespace TeskUtils {

// Bytes of a path buffer, terminator included.
constexpr int kPathSize = 520;

// True when `path` is terminated within kPathSize bytes, i.e. it has at most 519 characters
// and fits a path buffer. A null path fits.
inline bool pathFits(const char* path)
{
    return !path || strnlen(path, kPathSize) < static_cast<size_t>(kPathSize);
}

} // namespace TeskUtils
