#pragma once
// StringBuilder: a growing text buffer for joining pieces.
//
// The buffer grows in multiples of `blockSize` (at least 16). With a `growth` factor above 1 a
// reallocation takes at least the old capacity times that factor, so that repeated appends cost
// few copies. No buffer exists until the first append or clear().
#include "foundation/strings/char_string.h"
#include "foundation/strings/table.h"

namespace TeskUtils {

class StringBuilder
{
public:
    // `blockSize` below 16 counts as 16. `growth` not above 1 counts as 0 (no factor); it is
    // at most 1024.
    explicit StringBuilder(long blockSize = 256, float growth = 2.0f);
    ~StringBuilder() { delete[] buffer; }
    StringBuilder(const StringBuilder&) = delete;
    StringBuilder& operator=(const StringBuilder&) = delete;

    // Appends at most n characters of `text`, stopping at a NUL. A null or empty text or an n
    // below 1 does nothing.
    StringBuilder& append(const char* text, int n);
    // Appends all of `text`.
    StringBuilder& append(const char* text);
    // Appends the items joined by `separator` (a null separator joins without one). Null items
    // count as empty.
    StringBuilder& append(const char* const* items, int count, const char* separator);
    StringBuilder& append(const Table<const char*, 100>& items, const char* separator);
    // Appends printf-style formatted text.
    StringBuilder& appendFormat(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // The NUL character is ignored.
    StringBuilder& operator<<(char c);
    StringBuilder& operator<<(const char* text) { return append(text); }
    StringBuilder& operator<<(const CharString& text) { return append(text.data()); }
    // The decimal form of a number.
    StringBuilder& operator<<(int value);
    StringBuilder& operator<<(long value);

    // Makes a first block if there is none and empties the text; the capacity stays.
    void clear();

    // The text so far; "" when no block exists.
    const char* c_str() const { return buffer ? buffer : ""; }
    // A copy of the text; a null string when no block exists.
    CharString getCharString() const;
    long getLength() const { return length; }
    long getCapacity() const { return capacity; }
    long getBlockSize() const { return blockSize; }
    float getGrowth() const { return growth; }

private:
    // Gives the buffer room for `needed` bytes (see the class comment for the rule).
    void reallocate(long needed);

    long blockSize;
    float growth;
    long capacity;
    long length;
    char* buffer;
};

} // namespace TeskUtils
