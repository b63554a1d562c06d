#pragma once
// PConsole: the log sink. Every diagnostic line goes through Dump, which puts the
// decorations chosen by `flags` in front of the text and "\r\n" behind it:
//
//   flags 1  line number   "%4i:  "
//   flags 4  thread id     "[TID:0x%016llX] "
//   flags 2  time stamp    "[2024/Mar/5|14:03:09]    " (only the four spaces when the
//                          local time is not available)
//
// always in that order. With the default flags (3) a line reads
// "   7:  [2024/Mar/5|14:03:09]    text\r\n". A console reports nothing: a line that
// can't be written is dropped.
#include <ctime>

class PFileStream;

class PConsole
{
public:
    enum {
        FlagLineNumber = 1,
        FlagTimeStamp = 2,
        FlagThreadId = 4,
    };

    PConsole();
    virtual ~PConsole();

    // Attaches the console to a file; gives -1 here.
    virtual int Create(const char* path, int flags);
    // Detaches the console; gives -1 here.
    virtual int Done();
    // Does nothing here.
    virtual void Clear();
    // Sends `size` bytes of `text` to wherever the console writes.
    virtual void Write(const char* text, int size) = 0;
    // Gives null here.
    virtual PConsole* GetReadableConsole();

    // Writes the prefix (one Write) and the text (a second Write), without a line end.
    // Does nothing while `enabled` is false.
    PConsole& operator<<(const char* text);
    // One log line: the text formatted into at most 1022 characters, then "\r\n".
    // Does nothing while `enabled` is false.
    void Dump(const char* format, ...) __attribute__((format(printf, 2, 3)));

    // Where the time stamp comes from: fills `out` with the local time and gives true,
    // or gives false when the local time isn't available.
    typedef bool (*LocalTimeSource)(struct tm& out);
    // Replaces the source of the time stamp for every console (test programs use it to
    // get fixed stamps); null restores the system clock.
    static void SetLocalTimeSource(LocalTimeSource source);

    int lineNumber;
    bool enabled;
    int flags;
    int autoFlush;

    PConsole(const PConsole&) = delete;
    PConsole& operator=(const PConsole&) = delete;
};

// A console that sends its lines to a file. Until Create is called it has no file and
// drops every line.
class PFileConsole : public PConsole
{
public:
    PFileConsole();
    ~PFileConsole() override;

    // Drops any earlier file, then opens `path` through PFileStream::Create: with bit 0
    // of `flags` the log continues an existing file, otherwise the file is emptied.
    // Clears `autoFlush`. Gives 0 or the errno of the failed open.
    int Create(const char* path, int flags) override;
    // Closes and deletes the stream; always gives -1.
    int Done() override;
    // Writes to the stream, if there is one, and flushes when `autoFlush` is set.
    void Write(const char* text, int size) override;

    PFileStream* stream;
    int reserved;
};
