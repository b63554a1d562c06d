#pragma once
// PMemoryConsole: a console for capturing lines. Everything written to it is appended
// to an in-memory text, so that a test program can hand it to code that logs and then
// look at the exact bytes of the lines, decorations and "\r\n" included.
#include "foundation/streams/pconsole.h"

#include <string>

class PMemoryConsole : public PConsole
{
public:
    void Write(const char* text, int size) override
    {
        if (text && size > 0)
            captured.append(text, static_cast<size_t>(size));
    }
    // Forgets what was captured.
    void Clear() override { captured.clear(); }

    // Everything written so far.
    const std::string& text() const { return captured; }

private:
    std::string captured;
};
