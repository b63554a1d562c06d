#pragma once
// Running the console front end as a user would: real packages made by quilb_pack, runs with
// piped input, and runs at a pseudo-terminal. Runs that reach the engine go through the
// private sandbox, since the engine probes and writes fixed system paths.
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/paths.h"
#include "support/process.h"

namespace quilbtest {

// Made on first use, once per test program; a packing failure fails the running test.
std::string promptsPackage(); // tests/data/console/prompts with its documents
std::string notesPackage(); // examples/quilb-notes
std::string promptsInstaller(); // launcher + prompts package; empty without a launcher

inline std::string installerConsole()
{
    return binDir() + "/installer_console";
}
inline std::string uninstallerConsole()
{
    return binDir() + "/uninstaller_console";
}
inline std::string consoleData()
{
    return dataDir() + "/console";
}

const std::string kBanner = "*******************************\n"
                            "* Quilb Group installer       *\n"
                            "*******************************\n";
const std::string kSuccess = "Automatic installation was successful!\n";
const std::string kFailed = "There was an error during the (un)installation: -1\n";
const std::string kClearedLine = "\r" + std::string(78, ' ') + "\r\n";

// Runs `program` in `workDir` (in the sandbox with `workDir` shared, unless not `sandboxed`),
// reading `input` from a pipe; empty input reads as end of file. QUILB_INSTALLER_DIR is
// `workDir`, so that nothing lands beside the built programs; `env` adds "NAME=value"s.
CommandResult runConsole(const std::string& program, const std::vector<std::string>& args,
    const std::string& workDir, const std::string& input = "", const std::vector<std::string>& env = {},
    bool sandboxed = true);

// A run with piped input and the output it must give: whole, or only its start or its end.
enum class Match { Whole, Start, End };
struct ConsoleRun
{
    const char* name;
    std::vector<std::string> args;
    int exitCode; // -1: any status but 0
    std::string output;
    Match match = Match::Whole;
    std::string input = "";
    std::vector<std::pair<std::string, std::string>> files = {}; // put into the working directory
    bool uninstaller = false; // run under the uninstaller's name
};
// Runs each in a directory of its own, which must be left as it was.
void checkRuns(const std::vector<ConsoleRun>& runs);

// Every path below `dir`, files with their sizes, sorted: a picture to compare before and after.
std::string snapshot(const std::string& dir);
size_t occurrences(const std::string& text, const std::string& word);
// Each fragment must come in this order, after the one before.
::testing::AssertionResult inOrder(const std::string& text, const std::vector<std::string>& fragments);

// A program at a pseudo-terminal, inside the sandbox. Output is kept with CR LF turned into
// LF; the terminal echoes what is sent, as a real one does. A wait gives up after 10 seconds.
class PtySession
{
public:
    // 0 rows leaves the size unset, as on a terminal that can't tell it.
    PtySession(const std::string& program, const std::vector<std::string>& args, const std::string& workDir,
        int rows, int columns);
    ~PtySession();
    PtySession(const PtySession&) = delete;
    PtySession& operator=(const PtySession&) = delete;

    // Waits until `text` appears after the last match. The output from the last match to the
    // end of this one goes to `before`, when given.
    bool expect(const std::string& text, std::string* before = nullptr);
    void send(const std::string& line); // types `line` and Enter
    bool waitForNoEcho(); // as a password prompt reads
    void resize(int rows, int columns);
    int finish(); // reads to the end: the exit status, or -1 when it had to be killed
    std::string transcript();

private:
    // Reads what is there, waiting at most `timeoutMs`; false once the output has ended.
    bool pump(int timeoutMs);

    int master = -1;
    pid_t child = -1;
    bool ended = false;
    std::string raw;
    size_t mark = 0;
};

} // namespace quilbtest
