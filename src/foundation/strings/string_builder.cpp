#include "foundation/strings/string_builder.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace TeskUtils {

StringBuilder::StringBuilder(long block, float factor)
    : blockSize(block < 16 ? 16 : block)
    , growth(factor > 1.0f ? (factor > 1024.0f ? 1024.0f : factor) : 0.0f)
    , capacity(0)
    , length(0)
    , buffer(nullptr)
{
}

void StringBuilder::reallocate(long needed)
{
    long roundedNeed = (needed + blockSize - 1) / blockSize * blockSize;
    long newCapacity = roundedNeed;
    if (growth > 1.0f) {
        long grown = static_cast<long>(static_cast<double>(capacity) * growth);
        if (grown > roundedNeed)
            newCapacity = (grown + blockSize - 1) / blockSize * blockSize;
    }
    char* fresh = new char[newCapacity];
    if (buffer)
        memcpy(fresh, buffer, static_cast<size_t>(length));
    fresh[length] = '\0';
    delete[] buffer;
    buffer = fresh;
    capacity = newCapacity;
}

StringBuilder& StringBuilder::append(const char* text, int n)
{
    if (!text || !*text || n < 1)
        return *this;
    if (length + 1 + n > capacity) {
        // `text` may lie inside our own buffer, which is about to move.
        bool inside = buffer && text >= buffer && text < buffer + capacity;
        long offset = inside ? static_cast<long>(text - buffer) : 0;
        reallocate(length + 1 + n);
        if (inside)
            text = buffer + offset;
    }
    size_t copied = strnlen(text, static_cast<size_t>(n));
    memmove(buffer + length, text, copied);
    length += static_cast<long>(copied);
    buffer[length] = '\0';
    return *this;
}

StringBuilder& StringBuilder::append(const char* text)
{
    if (!text)
        return *this;
    size_t n = strlen(text);
    return append(text, n > 0x7fffffff ? 0x7fffffff : static_cast<int>(n));
}

StringBuilder& StringBuilder::append(const char* const* items, int count, const char* separator)
{
    if (!items)
        return *this;
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            append(separator);
        append(items[i]);
    }
    return *this;
}

StringBuilder& StringBuilder::append(const Table<const char*, 100>& items, const char* separator)
{
    return append(items.data, items.count, separator);
}

StringBuilder& StringBuilder::appendFormat(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CharString text = CharString::formatV(format, args);
    va_end(args);
    return append(text.data());
}

StringBuilder& StringBuilder::operator<<(char c)
{
    return append(&c, 1); // a NUL appends nothing
}

StringBuilder& StringBuilder::operator<<(int value)
{
    return *this << static_cast<long>(value);
}

StringBuilder& StringBuilder::operator<<(long value)
{
    char digits[24];
    snprintf(digits, sizeof digits, "%ld", value);
    return append(digits);
}

void StringBuilder::clear()
{
    if (!buffer)
        reallocate(1);
    length = 0;
    buffer[0] = '\0';
}

CharString StringBuilder::getCharString() const
{
    if (!buffer)
        return CharString();
    return CharString(buffer, static_cast<int>(length));
}

} // namespace TeskUtils
