#include "foundation/strings/portable.h"

#include "foundation/strings/bounded_copy.h"

#include <cstdarg>
#include <cstdlib>
#include <ctime>

int teskutils_atoi(const char* text)
{
    return text ? atoi(text) : 0;
}

char* teskutils_itoa_n(int value, char* buffer, size_t size, int radix)
{
    if (!buffer || size == 0)
        return buffer;
    if (radix < 2 || radix > 36)
        radix = 10;
    static const char digits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    // Digits are put down from the end of `text`, lowest first.
    char text[40];
    size_t start = sizeof text - 1;
    text[start] = '\0';
    bool negative = radix == 10 && value < 0;
    unsigned int rest = negative ? 0u - static_cast<unsigned int>(value) : static_cast<unsigned int>(value);
    do {
        text[--start] = digits[rest % static_cast<unsigned int>(radix)];
        rest /= static_cast<unsigned int>(radix);
    } while (rest);
    if (negative)
        text[--start] = '-';
    TeskUtils::copyBounded(buffer, text + start, size);
    return buffer;
}

int teskutils_sprintf_n(char* buffer, size_t size, const char* format, ...)
{
    if (!buffer || size == 0 || !format)
        return -1;
    va_list args;
    va_start(args, format);
    int result = vsnprintf(buffer, size, format, args);
    va_end(args);
    if (result < 0)
        buffer[0] = '\0';
    return result;
}

int teskutils_putenv(const char* name, const char* value)
{
    if (!name || !*name)
        return -1;
    if (!value)
        return unsetenv(name) == 0 ? 0 : -1;
    return setenv(name, value, 1) == 0 ? 0 : -1;
}

FILE* teskutils_fopen(const char* path, const char* mode)
{
    if (!path || !mode)
        return nullptr;
    return fopen(path, mode);
}

namespace TeskUtils {

unsigned long getTickCount()
{
    static bool started = false;
    static struct timespec start;
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (!started) {
        start = now;
        started = true;
        return 0;
    }
    long long ms = (now.tv_sec - start.tv_sec) * 1000LL + (now.tv_nsec - start.tv_nsec) / 1000000LL;
    return ms < 0 ? 0 : static_cast<unsigned long>(ms);
}

} // namespace TeskUtils
