#pragma once
// The program's string: one pointer to a shared, reference-counted buffer.
//
// A CharString either has no buffer at all (a "null" string, the state of a string that has
// never been given a value) or points to a CharStringBuf holding a malloc'ed, NUL-terminated text.
// A null string and an empty one are different things: isNull() tells them apart.
//
// Copying and assignment share the buffer and add one reference; every operation that changes
// the text first makes the buffer private (copy on write). Reference counts are plain ints, so a
// CharString must not be shared between threads without a lock.
#include <cstdarg>

namespace TeskUtils {

// The shared buffer behind a CharString. `data` comes from malloc (or is null), `refCount`
// starts at 1. The object itself is made with `new` and dies through deleteThis().
class CharStringBuf
{
public:
    CharStringBuf()
        : data(nullptr)
        , refCount(1)
    {
    }

    // With size 0 frees the data and sets it null; otherwise mallocs or reallocs it to `size`
    // bytes, keeping what fits of the old content.
    virtual void resize(int size);
    // Frees the data and this object.
    virtual void deleteThis();

    char* data;
    int refCount;

protected:
    virtual ~CharStringBuf() { }
};

class CharString
{
public:
    // A null string.
    CharString()
        : buf(nullptr)
    {
    }
    // A copy of `text`; a null text gives a null string.
    CharString(const char* text);
    // A copy of at most `length` characters of `text`, stopping at a NUL (a negative length
    // copies all of it). A null text gives a null string.
    CharString(const char* text, int length);
    CharString(const CharString& other);
    CharString(CharString&& other) noexcept
        : buf(other.buf)
    {
        other.buf = nullptr;
    }
    ~CharString() { release(); }

    CharString& operator=(const CharString& other);
    CharString& operator=(CharString&& other) noexcept;
    // Replaces the text by a copy of `text`; a null text makes the string null.
    CharString& operator=(const char* text);

    // A string made with printf-style formatting (never null).
    static CharString format(const char* format, ...) __attribute__((format(printf, 1, 2)));
    static CharString formatV(const char* format, va_list args);

    // Puts `text` behind the current text. A null text does nothing; on a null string the text
    // is copied into a new buffer. A shared buffer is copied first, so other holders keep theirs.
    void append(const char* text);
    // As append(text), for at most `length` characters of `text`, stopping at a NUL.
    void append(const char* text, int length);
    // Drops this holder's reference; the string becomes null.
    void freeMem();
    // Makes the buffer private to this string and `size` bytes large, and returns it for writing.
    // A null string gets a new buffer holding an empty text. A private buffer is only resized
    // (content kept as far as it fits; no terminator is added). A shared buffer is replaced by a
    // new one which, when `keep` is non-zero, takes over at most `size` bytes of the old text
    // including its terminator where that fits, and otherwise holds an empty text.
    // With a size of 0 the result is null (the string keeps a buffer without data).
    char* splitBuffer(int size, int keep);

    // The text, or null for a null string (or a buffer without data).
    const char* data() const { return buf ? buf->data : nullptr; }
    // The text, or "" where data() would be null: safe to hand to printf and strcmp.
    const char* c_str() const
    {
        const char* d = data();
        return d ? d : "";
    }
    // True when there is no text at all (no buffer or a buffer without data).
    bool isNull() const { return data() == nullptr; }
    // True when null or of length 0.
    bool isEmpty() const
    {
        const char* d = data();
        return !d || !*d;
    }
    // Length of the text; 0 for a null string.
    int length() const;
    // Number of holders sharing this buffer; 0 for a string without a buffer.
    int shareCount() const { return buf ? buf->refCount : 0; }
    CharStringBuf* getBuffer() const { return buf; }

    // Byte comparison in which a null string orders before everything, including "".
    int compare(const char* text) const;
    int compare(const CharString& other) const { return compare(other.data()); }
    // Equality by content; a null string equals only a null text.
    bool equals(const char* text) const { return compare(text) == 0; }
    bool equals(const CharString& other) const { return compare(other.data()) == 0; }
    // As equals(), ignoring ASCII case.
    bool equalsNoCase(const char* text) const;

    bool operator==(const char* text) const { return equals(text); }
    bool operator!=(const char* text) const { return !equals(text); }
    bool operator==(const CharString& other) const { return equals(other); }
    bool operator!=(const CharString& other) const { return !equals(other); }
    bool operator<(const CharString& other) const { return compare(other) < 0; }

private:
    void release();

    CharStringBuf* buf;
};

} // namespace TeskUtils
