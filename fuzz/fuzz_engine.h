#pragma once
// The engine as the fuzz targets of variables and conditions use it: shell probes answered
// without a shell, log lines formatted and dropped, and the store filled from the head of
// the input.
//
// Input layout: definition lines, then a line "--", then the text under test. A definition
// is "NAME=VALUE"; a leading '!' makes VALUE the $NAME expression of a recalculated
// variable, a leading '~' marks the record verbatim. Names beginning with '$' are skipped,
// so that runs don't fill the process environment.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "foundation/streams/pconsole.h"
#include "installer/installer.h"

class DropConsole : public PConsole
{
public:
    void Write(const char* text, int size) override
    {
        (void)text;
        written += size;
    }
    long written = 0;
};

class FuzzEngine : public Installer
{
public:
    FuzzEngine() { debugConsole = &console; }
    int runShellStatus(const char* command) override { return command && command[0] == 'r' ? 0 : 256; }

    // Fills the store from the definitions and gives the text behind them.
    std::string load(const uint8_t* data, size_t size)
    {
        std::string input(reinterpret_cast<const char*>(data), size);
        size_t separator = input.find("\n--\n");
        if (separator == std::string::npos)
            return input;
        size_t start = 0;
        while (start < separator) {
            size_t end = input.find('\n', start);
            if (end == std::string::npos || end > separator)
                end = separator;
            define(input.substr(start, end - start));
            start = end + 1;
        }
        return input.substr(separator + 4);
    }

    DropConsole console;

private:
    void define(const std::string& line)
    {
        unsigned int flags = 0;
        size_t at = 0;
        if (at < line.size() && line[at] == '!') {
            flags |= VARFLAG_RECALCULATE;
            ++at;
        }
        if (at < line.size() && line[at] == '~') {
            flags |= VARFLAG_VERBATIM;
            ++at;
        }
        size_t equals = line.find('=', at);
        if (equals == std::string::npos)
            return;
        std::string name = line.substr(at, equals - at);
        std::string value = line.substr(equals + 1);
        if (name.empty() || name[0] == '$')
            return;
        if (flags & VARFLAG_RECALCULATE)
            SetVarExt(name.c_str(), nullptr, value.c_str(), flags, "");
        else
            SetVarExt(name.c_str(), value.c_str(), nullptr, flags, nullptr);
    }
};

// Stops the run with `what` when an invariant of a target doesn't hold, so that libFuzzer
// keeps the input.
inline void fuzzCheck(bool condition, const char* target, const char* what)
{
    if (!condition) {
        fprintf(stderr, "%s: %s\n", target, what);
        abort();
    }
}
