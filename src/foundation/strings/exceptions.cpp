#include "foundation/strings/exceptions.h"

#include <cstdarg>
#include <cstdio>

namespace TeskUtils {

ExceptionMsg::ExceptionMsg(const char* format, ...)
{
    text[0] = '\0';
    if (!format)
        return;
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
}

} // namespace TeskUtils

GenericError::GenericError(const char* format, ...)
{
    text[0] = '\0';
    if (!format)
        return;
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
}

InstallerError::InstallerError(const char* format, ...)
{
    if (!format)
        return;
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof text, format, args);
    va_end(args);
}
