#include "foundation/strings/exceptions.h"

#include <cstdarg>
#include <cstdio>

namespace {

// Formats into `text`, cut at `size`; a null format leaves the text empty.
void formatText(char* text, size_t size, const char* format, va_list args)
{
    text[0] = '\0';
    if (format)
        vsnprintf(text, size, format, args);
}

} // namespace

namespace TeskUtils {

ExceptionMsg::ExceptionMsg(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    formatText(text, sizeof text, format, args);
    va_end(args);
}

} // namespace TeskUtils

GenericError::GenericError(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    formatText(text, sizeof text, format, args);
    va_end(args);
}

InstallerError::InstallerError(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    formatText(text, sizeof text, format, args);
    va_end(args);
}
