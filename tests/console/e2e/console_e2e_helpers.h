#pragma once
// Running the console front end as a user would: real packages made by quilb_pack, runs with
// a given standard input, and runs at a pseudo-terminal whose prompts a test answers.
// Every run that gets as far as the engine goes through the private sandbox, since the
// engine probes and writes fixed system paths.
#include <string>
#include <sys/types.h>
#include <vector>

#include "support/process.h"

namespace quilbtest {

// Packages and installers made on first use, once per test program, from the test
// templates and the sample product. A packing failure counts as a failure of the running
// test; the path is given all the same.
std::string promptsPackage();    // tests/data/console/prompts with its documents
std::string notesPackage();      // examples/quilb-notes
std::string heldPackage();       // tests/data/console/held
std::string promptsInstaller();  // launcher + prompts package; empty without a launcher
std::string notesInstaller();    // launcher + sample package; empty without a launcher

// The console program under either of its names.
std::string installerConsole();
std::string uninstallerConsole();

// Runs `program` with `args` in `workDir`, inside the sandbox with `workDir` shared, reading
// `input` as its standard input (a pipe; empty input reads as end of file). The variable
// QUILB_INSTALLER_DIR is set to `workDir` so that nothing lands beside the built programs;
// `env` adds "NAME=value" settings.
CommandResult runSandboxed(const std::string& program, const std::vector<std::string>& args,
                           const std::string& workDir, const std::string& input = "",
                           const std::vector<std::string>& env = {});

// The same run outside the sandbox, for runs that end before the engine starts.
CommandResult runPlain(const std::string& program, const std::vector<std::string>& args,
                       const std::string& workDir, const std::string& input = "");

// Every path below `dir`, each with its size, sorted: a picture to compare before and after.
std::vector<std::string> snapshot(const std::string& dir);

// A program at a pseudo-terminal. Output is kept with CR LF turned into LF; the terminal
// echoes what is sent, as a real one does.
class PtySession {
public:
    // Starts `program` with `args` in `workDir` inside the sandbox, on a terminal of `rows` by
    // `columns`; 0 rows leaves the size unset, as on a terminal that can't tell it.
    PtySession(const std::string& program, const std::vector<std::string>& args, const std::string& workDir,
               int rows, int columns);
    ~PtySession();
    PtySession(const PtySession&) = delete;
    PtySession& operator=(const PtySession&) = delete;

    // Waits until `text` appears after the last match; true when it did. On success the
    // output from the last match up to the end of this one goes to `before`, when given.
    bool expect(const std::string& text, std::string* before = nullptr, int timeoutMs = 10000);
    // The same for whichever of `texts` comes first: its index, or -1.
    int expectOneOf(const std::vector<std::string>& texts, std::string* before = nullptr,
                    int timeoutMs = 10000);
    // Types `line` and Enter.
    void send(const std::string& line);
    // Waits until the program has switched echo off (a password prompt reads raw).
    bool waitForNoEcho(int timeoutMs = 10000);
    // Changes the terminal's size.
    void resize(int rows, int columns);
    // Reads to the end and gives the exit status; -1 when the program didn't exit by itself
    // within the time (it is then killed).
    int finish(int timeoutMs = 20000);
    // All output so far.
    std::string transcript();

private:
    // Reads what is there, waiting at most `timeoutMs`: 1 when something came, 0 when
    // nothing did, -1 at the end of the output.
    int pump(int timeoutMs);

    int master = -1;
    pid_t child = -1;
    bool ended = false;
    int status = -1;
    std::string raw;
    size_t mark = 0;
};

} // namespace quilbtest
