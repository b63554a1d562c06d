#include "foundation/strings/error_code.h"

#include <cstdarg>
#include <cstdio>

#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/string_builder.h"

namespace TeskUtils {

void ErrorMsg::destroy()
{
    ErrorMsg* link = this;
    while (link && --link->refCount <= 0) {
        ErrorMsg* following = link->next;
        delete link;
        link = following;
    }
}

namespace {

ErrorMsg* newMessage(const char* where, int code, ErrorMsg* next, const char* format, va_list args)
{
    ErrorMsg* msg = new ErrorMsg;
    msg->where = where;
    msg->code = code;
    msg->next = next;
    msg->refCount = 1;
    msg->message[0] = '\0';
    // The limit handed to vsnprintf is one byte short of the field, so a message keeps at
    // most 510 characters.
    if (format)
        vsnprintf(msg->message, sizeof msg->message - 1, format, args);
    return msg;
}

} // namespace

ErrorCode::ErrorCode(const char* where, int code, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    head = newMessage(where, code, nullptr, format, args);
    va_end(args);
}

ErrorCode::ErrorCode(const ErrorCode& other)
    : head(other.head)
{
    if (head)
        ++head->refCount;
}

ErrorCode& ErrorCode::operator=(const ErrorCode& other)
{
    ErrorMsg* shared = other.head; // `other` may be this very object
    if (shared)
        ++shared->refCount;
    clear();
    head = shared;
    return *this;
}

ErrorCode& ErrorCode::operator=(ErrorCode&& other) noexcept
{
    if (this != &other) {
        clear();
        head = other.head;
        other.head = nullptr;
    }
    return *this;
}

ErrorCode& ErrorCode::addError(const char* where, int code, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    // The new record takes over this holder's reference to the old head.
    head = newMessage(where, code, head, format, args);
    va_end(args);
    return *this;
}

void ErrorCode::clear()
{
    if (head)
        head->destroy();
    head = nullptr;
}

namespace {

const ErrorMsg* linkAt(const ErrorMsg* head, int depth)
{
    if (depth < 0)
        return nullptr;
    while (head && depth-- > 0)
        head = head->next;
    return head;
}

} // namespace

int ErrorCode::getError(int depth) const
{
    const ErrorMsg* link = linkAt(head, depth);
    return link ? link->code : 0;
}

const char* ErrorCode::getMessage(int depth) const
{
    const ErrorMsg* link = linkAt(head, depth);
    return link ? link->message : nullptr;
}

const char* ErrorCode::getWhere(int depth) const
{
    const ErrorMsg* link = linkAt(head, depth);
    return link ? link->where : nullptr;
}

int ErrorCode::depth() const
{
    int n = 0;
    for (const ErrorMsg* link = head; link; link = link->next)
        ++n;
    return n;
}

CharString ErrorCode::getErrorString() const
{
    if (!head)
        return CharString("No error");
    StringBuilder text(256, 2.0f);
    for (const ErrorMsg* link = head; link; link = link->next) {
        if (link != head)
            text << " | ";
        if (link->where && *link->where)
            text << "[" << link->where << "] ";
        text << link->message;
    }
    return text.getCharString();
}

const char* ErrorCode::getErrorString(char* buffer, size_t size) const
{
    if (!buffer || size == 0)
        return buffer;
    copyBounded(buffer, getErrorString().c_str(), size);
    return buffer;
}

} // namespace TeskUtils
