#include "foundation/streams/pconsole.h"

#include "foundation/streams/pfile_stream.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <pthread.h>

namespace {

const char* const kMonthNames[12]
    = { "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec" };

bool systemLocalTime(struct tm& out)
{
    time_t now = time(nullptr);
    return localtime_r(&now, &out) != nullptr;
}

PConsole::LocalTimeSource localTimeSource = systemLocalTime;

const char* monthName(int month)
{
    if (month < 0)
        month = 0;
    if (month > 11)
        month = 11;
    return kMonthNames[month];
}

// Appends printf-formatted text to the prefix, never beyond its size.
void appendFormatted(char* prefix, size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
void appendFormatted(char* prefix, size_t size, const char* format, ...)
{
    size_t used = strnlen(prefix, size - 1);
    va_list args;
    va_start(args, format);
    vsnprintf(prefix + used, size - used, format, args);
    va_end(args);
}

const size_t kPrefixSize = 1024;
// vsnprintf size of a Dump line: at most 1022 characters of text.
const size_t kLineSize = 1023;

} // namespace

PConsole::PConsole()
    : lineNumber(0)
    , enabled(true)
    , flags(FlagLineNumber | FlagTimeStamp)
    , autoFlush(0)
{
}

PConsole::~PConsole() = default;

int PConsole::Create(const char*, int)
{
    return -1;
}

int PConsole::Done()
{
    return -1;
}

void PConsole::Clear() { }

PConsole* PConsole::GetReadableConsole()
{
    return nullptr;
}

void PConsole::SetLocalTimeSource(LocalTimeSource source)
{
    localTimeSource = source ? source : systemLocalTime;
}

PConsole& PConsole::operator<<(const char* text)
{
    if (!enabled)
        return *this;
    char prefix[kPrefixSize];
    prefix[0] = '\0';
    if (flags & FlagLineNumber) {
        appendFormatted(prefix, sizeof prefix, "%4i:  ", lineNumber);
        ++lineNumber;
    }
    if (flags & FlagThreadId)
        appendFormatted(prefix, sizeof prefix, "[TID:0x%016llX] ", (unsigned long long)pthread_self());
    if (flags & FlagTimeStamp) {
        struct tm now;
        memset(&now, 0, sizeof now);
        if (localTimeSource(now))
            appendFormatted(prefix, sizeof prefix, "[%i/%s/%i|%02i:%02i:%02i]", now.tm_year + 1900,
                monthName(now.tm_mon), now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec);
        appendFormatted(prefix, sizeof prefix, "    ");
    }
    Write(prefix, static_cast<int>(strlen(prefix)));
    if (!text)
        text = "";
    Write(text, static_cast<int>(strlen(text)));
    return *this;
}

void PConsole::Dump(const char* format, ...)
{
    if (!enabled)
        return;
    char line[kLineSize];
    line[0] = '\0';
    if (format) {
        va_list args;
        va_start(args, format);
        vsnprintf(line, sizeof line, format, args);
        va_end(args);
    }
    *this << line;
    Write("\r\n", 2);
}

PFileConsole::PFileConsole()
    : stream(nullptr)
    , reserved(0)
{
}

PFileConsole::~PFileConsole()
{
    PFileConsole::Done();
}

int PFileConsole::Create(const char* path, int createFlags)
{
    autoFlush = 0;
    Done();
    stream = new PFileStream();
    return stream->Create(path, createFlags);
}

int PFileConsole::Done()
{
    if (stream) {
        if (stream->fd != -1)
            stream->Close();
        delete stream;
        stream = nullptr;
    }
    return -1;
}

void PFileConsole::Write(const char* text, int size)
{
    if (!stream)
        return;
    int written = 0;
    stream->Write(text, size, written);
    if (autoFlush)
        stream->Flush();
}
