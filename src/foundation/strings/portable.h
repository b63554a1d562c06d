#pragma once
// Thin wrappers over the C library, kept in one place so that callers read the same everywhere.
#include <cstddef>
#include <cstdio>

// atoi that takes a null text as "0".
int teskutils_atoi(const char* text);
// Writes `value` in the given radix (2..36; anything else counts as 10) into `buffer`, cut to
// `size` bytes including the terminator. Negative values get a '-' in radix 10 only; other
// radixes show the two's complement bits, as itoa does. Returns `buffer`.
char* teskutils_itoa_n(int value, char* buffer, size_t size, int radix = 10);
// A bounded sprintf: formats into `buffer`, cut to `size` bytes and always terminated (with a
// size above 0). Returns what vsnprintf returns: the length the full text would have had, or
// a negative value on an encoding error.
int teskutils_sprintf_n(char* buffer, size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
// Sets the environment variable `name` to `value`, overwriting it; a null value removes the
// variable. A null or empty name is refused. Returns 0, or -1 on failure.
int teskutils_putenv(const char* name, const char* value);
// fopen that refuses a null path or mode (giving null).
FILE* teskutils_fopen(const char* path, const char* mode);

namespace TeskUtils {

// Milliseconds since the first call, which itself gives 0 (monotonic clock).
unsigned long getTickCount();

} // namespace TeskUtils
