#pragma once
// Running programs from tests: plain, and inside the private sandbox of scripts/sandbox.sh.
#include <string>
#include <vector>

namespace quilbtest {

struct CommandResult
{
    int exitCode = -1; // exit status, or -1 when the program did not exit normally
    int signal = 0; // the signal that ended it, 0 when it exited
    std::string output; // standard output and standard error, interleaved
};

// Runs a shell command line with /bin/sh and collects its output.
CommandResult runCommand(const std::string& commandLine);

// Quotes a word for /bin/sh.
std::string shellQuote(const std::string& word);

// True when a private mount namespace with an overlay root can be made here; otherwise
// false with the reason in `why`.
bool sandboxAvailable(std::string* why = nullptr);

// Runs a shell command line inside a throw-away overlay of the whole root file system.
// The directories in `binds` stay shared with the host, so files written there survive.
CommandResult runInSandbox(const std::string& commandLine, const std::vector<std::string>& binds = {});

} // namespace quilbtest

// Skips the current test with a clear message where no sandbox can be made.
#define QUILB_REQUIRE_SANDBOX()                                                                              \
    do {                                                                                                     \
        std::string quilbWhy;                                                                                \
        if (!quilbtest::sandboxAvailable(&quilbWhy))                                                         \
            GTEST_SKIP() << "needs a private sandbox, which can't be made here: " << quilbWhy;               \
    } while (0)
