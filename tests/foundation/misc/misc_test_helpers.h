#pragma once
// Shared pieces of the file and OS helper tests.
#include <cstdlib>
#include <string>

#include "foundation/streams/pconsole.h"

namespace misctest {

// Sets an environment variable (null unsets it) for the life of the object, then restores it.
class EnvGuard
{
public:
    EnvGuard(const char* name, const char* value)
        : name_(name)
        , old_(getenv(name) ? getenv(name) : "")
        , hadValue_(getenv(name))
    {
        value ? setenv(name, value, 1) : unsetenv(name);
    }
    ~EnvGuard() { hadValue_ ? setenv(name_.c_str(), old_.c_str(), 1) : unsetenv(name_.c_str()); }

private:
    std::string name_, old_;
    bool hadValue_;
};

// A console that keeps its lines, without decorations.
class CaptureConsole : public PConsole
{
public:
    CaptureConsole() { flags = 0; }
    void Write(const char* text, int size) override { lines.append(text, size); }
    std::string lines;
};

} // namespace misctest
