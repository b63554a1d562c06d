#include "foundation/strings/char_string.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace TeskUtils {

void CharStringBuf::resize(int size)
{
    if (size <= 0) {
        free(data);
        data = nullptr;
        return;
    }
    // realloc of a null pointer is malloc.
    char* grown = static_cast<char*>(realloc(data, static_cast<size_t>(size)));
    if (!grown)
        abort();
    data = grown;
}

void CharStringBuf::deleteThis()
{
    free(data);
    data = nullptr;
    delete this;
}

namespace {

// Length of at most `limit` characters of `text` (limit < 0: no limit).
size_t boundedLength(const char* text, int limit)
{
    return limit < 0 ? strlen(text) : strnlen(text, static_cast<size_t>(limit));
}

// A fresh buffer holding `length` characters of `text` and a terminator.
CharStringBuf* newBuffer(const char* text, size_t length)
{
    CharStringBuf* buf = new CharStringBuf;
    buf->resize(static_cast<int>(length + 1));
    if (length)
        memcpy(buf->data, text, length);
    buf->data[length] = '\0';
    return buf;
}

} // namespace

CharString::CharString(const char* text)
    : buf(nullptr)
{
    if (text)
        buf = newBuffer(text, strlen(text));
}

CharString::CharString(const char* text, int length)
    : buf(nullptr)
{
    if (text)
        buf = newBuffer(text, boundedLength(text, length));
}

CharString::CharString(const CharString& other)
    : buf(other.buf)
{
    if (buf)
        ++buf->refCount;
}

CharString& CharString::operator=(const CharString& other)
{
    CharStringBuf* shared = other.buf; // `other` may be this very string
    if (shared)
        ++shared->refCount;
    release();
    buf = shared;
    return *this;
}

CharString& CharString::operator=(CharString&& other) noexcept
{
    if (this != &other) {
        release();
        buf = other.buf;
        other.buf = nullptr;
    }
    return *this;
}

CharString& CharString::operator=(const char* text)
{
    // Build first: `text` may point into our own buffer.
    CharString copy(text);
    *this = static_cast<CharString&&>(copy);
    return *this;
}

CharString CharString::formatV(const char* format, va_list args)
{
    va_list measure;
    va_copy(measure, args);
    int length = vsnprintf(nullptr, 0, format, measure);
    va_end(measure);
    CharString result("");
    if (length <= 0)
        return result;
    char* out = result.splitBuffer(length + 1, 0);
    vsnprintf(out, static_cast<size_t>(length) + 1, format, args);
    return result;
}

CharString CharString::format(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CharString result = formatV(format, args);
    va_end(args);
    return result;
}

void CharString::append(const char* text)
{
    append(text, -1);
}

void CharString::append(const char* text, int length)
{
    if (!text)
        return;
    if (!buf || !buf->data) {
        CharString fresh(text, length);
        *this = static_cast<CharString&&>(fresh);
        return;
    }
    size_t added = boundedLength(text, length);
    size_t oldLength = strlen(buf->data);
    size_t newLength = oldLength + added;
    if (buf->refCount < 2) {
        // The appended text may lie inside our own buffer, which realloc may move.
        const char* base = buf->data;
        bool inside = text >= base && text <= base + oldLength;
        size_t offset = inside ? static_cast<size_t>(text - base) : 0;
        buf->resize(static_cast<int>(newLength + 1));
        if (inside)
            text = buf->data + offset;
        memmove(buf->data + oldLength, text, added);
    } else {
        CharStringBuf* copy = newBuffer(buf->data, oldLength);
        copy->resize(static_cast<int>(newLength + 1));
        memcpy(copy->data + oldLength, text, added);
        release();
        buf = copy;
    }
    buf->data[newLength] = '\0';
}

void CharString::freeMem()
{
    release();
}

char* CharString::splitBuffer(int size, int keep)
{
    if (size < 0)
        size = 0;
    if (!buf) {
        buf = new CharStringBuf;
        buf->resize(size);
        if (size > 0)
            buf->data[0] = '\0';
        return buf->data;
    }
    if (buf->refCount < 2) {
        buf->resize(size);
        return buf->data;
    }
    CharStringBuf* fresh = new CharStringBuf;
    fresh->resize(size);
    if (size > 0) {
        fresh->data[0] = '\0';
        if (keep && buf->data) {
            size_t take = strnlen(buf->data, static_cast<size_t>(size));
            if (take < static_cast<size_t>(size))
                ++take; // the terminator fits as well
            memcpy(fresh->data, buf->data, take);
        }
    }
    release();
    buf = fresh;
    return buf->data;
}

int CharString::length() const
{
    const char* d = data();
    return d ? static_cast<int>(strlen(d)) : 0;
}

int CharString::compare(const char* text) const
{
    const char* d = data();
    if (!d || !text)
        return (d ? 1 : 0) - (text ? 1 : 0);
    return strcmp(d, text);
}

bool CharString::equalsNoCase(const char* text) const
{
    const char* d = data();
    if (!d || !text)
        return d == text;
    return strcasecmp(d, text) == 0;
}

void CharString::release()
{
    if (!buf)
        return;
    if (--buf->refCount <= 0)
        buf->deleteThis();
    buf = nullptr;
}

} // namespace TeskUtils
