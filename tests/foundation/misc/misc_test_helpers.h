#pragma once
// Shared pieces of the file and OS helper tests.
#include <string>

#include "foundation/streams/pconsole.h"

namespace misctest {

// Sets an environment variable for the life of the object (null unsets it) and puts the
// old value back afterwards.
class EnvGuard {
public:
    EnvGuard(const char* name, const char* value);
    ~EnvGuard();
    EnvGuard(const EnvGuard&) = delete;
    EnvGuard& operator=(const EnvGuard&) = delete;

private:
    std::string name_;
    std::string old_;
    bool hadValue_;
};

// A console that keeps its lines, without decorations.
class CaptureConsole : public PConsole {
public:
    CaptureConsole() { flags = 0; }
    void Write(const char* text, int size) override { lines.append(text, size); }
    std::string lines;
};

bool isDirectory(const std::string& path);
bool makeDirectory(const std::string& path);

} // namespace misctest
