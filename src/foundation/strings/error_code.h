#pragma once
// ErrorCode: how the lower layers report failure.
//
// An ErrorCode is one pointer to a chain of ErrorMsg records, null meaning "no error": a function
// returning an ErrorCode without a message has succeeded. Each record holds where it was raised,
// a formatted message and a code; the chain runs from the newest record (the head, the outermost
// explanation) to the oldest cause. Records are reference counted and never changed once made, so
// copies of an ErrorCode share them freely.
#include <cstddef>

#include "foundation/strings/char_string.h"

namespace TeskUtils {

struct ErrorMsg
{
    // Where the error was raised, e.g. a function name. The pointer is kept, not copied: pass a
    // string that lives as long as the program (a literal). May be null.
    const char* where;
    char message[512];
    int code;
    ErrorMsg* next;
    int refCount;

    // Drops one reference; at zero releases the next link in the same way and frees this one.
    void destroy();
};

class ErrorCode
{
public:
    // No error.
    ErrorCode()
        : head(nullptr)
    {
    }
    // A new error of one record: message formatted with a limit of 511 bytes (at most 510
    // characters), no cause.
    ErrorCode(const char* where, int code, const char* format, ...) __attribute__((format(printf, 4, 5)));
    ErrorCode(const ErrorCode& other);
    ErrorCode(ErrorCode&& other) noexcept
        : head(other.head)
    {
        other.head = nullptr;
    }
    ErrorCode& operator=(const ErrorCode& other);
    ErrorCode& operator=(ErrorCode&& other) noexcept;
    ~ErrorCode() { clear(); }

    // Puts a new record in front of the chain, making the current error its cause. On an
    // ErrorCode without error the new record is the only one. Returns *this.
    ErrorCode& addError(const char* where, int code, const char* format, ...)
        __attribute__((format(printf, 4, 5)));
    // Forgets the error (drops this holder's reference to the chain).
    void clear();

    // True when an error is held.
    bool isError() const { return head != nullptr; }
    explicit operator bool() const { return head != nullptr; }

    // The code of the record at `depth` (0 is the head), or 0 with no error or beyond the end.
    int getError(int depth = 0) const;
    // The message / where of the record at `depth`, or null with no error or beyond the end.
    const char* getMessage(int depth = 0) const;
    const char* getWhere(int depth = 0) const;
    // Number of records in the chain.
    int depth() const;
    const ErrorMsg* get() const { return head; }

    // "No error" without an error; otherwise, for each record from the head, "[where] " where
    // `where` is set (not null, not empty), then the message, with " | " between records.
    CharString getErrorString() const;
    // The same text, cut to fit `size` bytes including the terminator. Returns `buffer`.
    const char* getErrorString(char* buffer, size_t size) const;

private:
    ErrorMsg* head;
};

} // namespace TeskUtils
