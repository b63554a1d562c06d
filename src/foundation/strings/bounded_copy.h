#pragma once
// The one bounded copy of the code base: every copy into a fixed buffer goes through these,
// never through a hand-written loop at the call site.
#include <cstddef>
#include <cstring>

namespace TeskUtils {

// Copies at most size-1 characters of `text` into `out` and terminates it.
// A null text copies as empty; a null `out` or a size of 0 does nothing.
// Returns the number of characters copied.
inline size_t copyBounded(char* out, const char* text, size_t size)
{
    if (!out || size == 0)
        return 0;
    size_t length = 0;
    if (text) {
        while (length + 1 < size && text[length])
            ++length;
        memcpy(out, text, length);
    }
    out[length] = '\0';
    return length;
}

// Appends `text` behind the terminated string in `out`, so that the whole stays within
// `size` bytes including the terminator. Returns the new length.
inline size_t appendBounded(char* out, const char* text, size_t size)
{
    if (!out || size == 0)
        return 0;
    size_t used = strnlen(out, size - 1);
    return used + copyBounded(out + used, text, size - used);
}

} // namespace TeskUtils
