#pragma once
// Where the console front end's answers come from: `User`, a person at the terminal, or
// `Automated`, a run that asks nothing and takes every current value or default (from a
// configuration file, or with no file at all for "-auto").
#include <atomic>

#include "foundation/strings/path_size.h"

class InputProvider
{
public:
    virtual ~InputProvider() { }
    // Prepares the provider; false when the run can't go on with it.
    virtual bool init() = 0;
    // Asks for a line of text. `current` (else `def`) is offered and taken for an empty
    // answer; `echo` false reads without showing what is typed. The answer goes to `buffer`
    // (`size` bytes with the terminator). False when the input was interrupted.
    virtual bool get_line(
        const char* text, char* buffer, int size, const char* current, const char* def, bool echo) const = 0;
    // Asks to choose between two answers; `def` is 0, 1 or none. Gives 0 or 1.
    virtual int question(const char* text, int def, const char* first, const char* second, bool caseSensitive,
        bool prefix) const = 0;
    // Asks to choose one of `count` choices; `enabled[i]` false refuses choice i. `def` is a
    // 0-based index or none. Gives the chosen index.
    virtual int multiplechoice(
        const char* text, int def, const char* const* choices, int count, const bool* enabled) const = 0;
    virtual void showmessage(const char* text) const = 0;
    // Shows `text` and waits for Enter.
    virtual void wait_for_next(const char* text) const { (void)text; }
    // The run is over; `error` tells how it went.
    virtual void finish(bool error) const = 0;
    // Stops any question that is waiting for an answer.
    virtual void interrupt() { }
};

// A person at the terminal.
class User : public InputProvider
{
public:
    User()
        : interrupted(0)
    {
    }
    bool init() override { return true; }
    bool get_line(const char* text, char* buffer, int size, const char* current, const char* def,
        bool echo) const override;
    int question(const char* text, int def, const char* first, const char* second, bool caseSensitive,
        bool prefix) const override;
    int multiplechoice(
        const char* text, int def, const char* const* choices, int count, const bool* enabled) const override;
    void showmessage(const char* text) const override;
    void wait_for_next(const char* text) const override;
    void finish(bool error) const override { (void)error; }
    // Sets the flag and closes standard input, so that a blocked read returns.
    void interrupt() override;
    bool isInterrupted() const { return interrupted.load() != 0; }

private:
    // Reads a line from standard input without its line end; false at the end of the input.
    bool readLine(char* buffer, int size) const;
    // Reads a line without echo, as for a password.
    bool readHidden(char* buffer, int size) const;

    mutable std::atomic<int> interrupted;
};

// A run that asks nothing: every answer is the current value or the default.
class Automated : public InputProvider
{
public:
    // `path`: the configuration file, or null / empty for none.
    Automated(const char* path, bool uninstall);
    // With a file: false, after a message, when it is missing or no configuration file.
    bool init() override;
    bool get_line(const char* text, char* buffer, int size, const char* current, const char* def,
        bool echo) const override;
    int question(const char* text, int def, const char* first, const char* second, bool caseSensitive,
        bool prefix) const override;
    int multiplechoice(
        const char* text, int def, const char* const* choices, int count, const bool* enabled) const override;
    void showmessage(const char* text) const override;
    void finish(bool error) const override;
    // The configuration file it answers from; "" for none.
    const char* file() const { return path; }

private:
    char path[TeskUtils::kPathSize];
    bool uninstall;
};
