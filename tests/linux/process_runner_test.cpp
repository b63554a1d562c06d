// The process runner with real children: how the command line is split into words, what
// the result says for each way a child can end, output capture, polling with the front end
// alive, opening documents through "xdg-open" or a browser found on PATH, and the user's
// environment that a child gets back. Everything runs in temporary directories.
#include <chrono>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/streams/pconsole.h"
#include "foundation/streams/pmemory_console.h"
#include "linux/linux_installer.h"
#include "linux/process_runner.h"
#include "support/paths.h"
#include "support/process.h"

using namespace quilbtest;

namespace {

std::vector<std::string> split(const char* line)
{
    TeskUtils::Table<TeskUtils::CharString, 16> words;
    int count = ProcessRunner::splitCommandLine(line, words);
    std::vector<std::string> out;
    for (int i = 0; i < words.count; ++i)
        out.push_back(words[i].c_str());
    EXPECT_EQ(count, words.count);
    return out;
}

TEST(ProcessRunnerTest, LineIsSplitIntoWordsOfTheFirstCommand)
{
    using Words = std::vector<std::string>;
    const struct
    {
        const char* name;
        const char* line;
        Words words;
    } rows[] = {
        { "quoted program with a blank", "\"/opt/my tool\" -a  b", { "/opt/my tool", "-a", "b" } },
        { "both quotes group", "a 'b c' \"d\te\"", { "a", "b c", "d\te" } },
        { "tabs and runs of blanks separate", "a\t\t b ", { "a", "b" } },
        { "escaped blank", "a\\ b", { "a b" } },
        { "escaped quote", "say \\\"hi\\\"", { "say", "\"hi\"" } },
        { "doubled backslash vanishes", "a\\\\b", { "ab" } },
        { "quotes inside a word", "--dir='/a b'/c", { "--dir=/a b/c" } },
        { "empty quotes make an empty word", "a \"\" b", { "a", "", "b" } },
        { "only the first command runs", "a b;c d", { "a", "b" } },
        { "a quoted or escaped ; stays", "a \";\" \\; 'x;y'", { "a", ";", ";", "x;y" } },
        { "blank commands don't count", " ; ;a", { "a" } },
        { "unbalanced double quote", "\"a b", {} },
        { "unbalanced single quote", "a 'b", {} },
        { "the other kind of quote counts too", "\"it's\"", {} },
        { "backslash at the end", "a\\", {} },
        { "empty", "", {} },
        { "blanks", "  \t", {} },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(split(row.line), row.words);
    }
    EXPECT_EQ(split(nullptr), Words {});
}

// A front end that counts the polling.
class PollUI : public InstallerUI
{
public:
    void Idle() override { ++idles; }
    void SetOverallProgress(int percent) override { progress.push_back(percent); }
    int idles = 0;
    std::vector<int> progress;
};

struct Outcome
{
    int code;
    std::string message;
    std::string output;
};

Outcome run(const LinuxInstaller& runner, const char* cmd, const char* args, unsigned flags,
    const char* workDir = nullptr, InstallerUI* ui = nullptr, unsigned pollMs = 0)
{
    TeskUtils::CharString output("<none>");
    TeskUtils::ErrorCode result = runner.runProgram(cmd, args, flags, workDir, ui, pollMs, &output, nullptr);
    return { result.getError(), result.getMessage() ? result.getMessage() : "", output.c_str() };
}

const unsigned kRoot = Installer::RUN_AS_ROOT; // the child keeps the test's own identity
const unsigned kWait = Installer::RUN_WAIT;
const unsigned kCapture = Installer::RUN_CAPTURE;

TEST(ProcessRunnerTest, ResultTellsHowTheChildEnded)
{
    TempDir dir;
    ASSERT_TRUE(writeFile(dir.file("my tool"), "#!/bin/sh\nprintf '%s|' \"$@\"\n"));
    ASSERT_EQ(chmod(dir.file("my tool").c_str(), 0755), 0);
    const std::string tool = dir.file("my tool");
    const std::string exited = "Child process exited with error code";
    const std::string stderrProbe = "-c 'if [ -e /proc/self/fd/2 ]; then echo open; else echo closed; fi'";

    const struct
    {
        const char* name;
        const char* cmd;
        std::string args;
        unsigned flags;
        int code;
        std::string message;
        std::string output; // "<none>" when nothing was captured
    } rows[] = {
        { "success", "/bin/sh", "-c 'exit 0'", kWait, 0, "", "<none>" },
        { "exit code", "/bin/sh", "-c 'exit 3'", kWait, 3, exited, "<none>" },
        { "killed by a signal: the raw status", "/bin/sh", "-c 'kill -9 $$'", kWait, 9,
            "Child process did not exit normally", "<none>" },
        { "missing program: the errno of the exec", "/no/such/program", "", kWait, ENOENT, exited, "<none>" },
        { "unbalanced quote: no words", "/bin/sh", "-c 'exit 3", kWait, ENOENT, exited, "<none>" },
        { "empty command", "", "", kWait, -1, "Empty command line!", "<none>" },
        { "capture waits without the flag", "/bin/sh", "-c 'echo hello; exit 4'", kCapture, 4, exited,
            "hello\n" },
        { "only the part before ; runs", "/bin/echo", "a;echo b", kCapture, 0, "", "a\n" },
        { "program with a blank, arguments as they stand", tool.c_str(), "x 'y z' \"\"", kCapture, 0, "",
            "x|y z||" },
        { "standard error stays open", "/bin/sh", stderrProbe, kCapture, 0, "", "open\n" },
        { "standard error closed", "/bin/sh", stderrProbe, kCapture | Installer::RUN_NO_STDERR, 0, "",
            "closed\n" },
    };
    LinuxInstaller runner(0, false, nullptr, nullptr);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Outcome outcome
            = run(runner, row.cmd, row.args.empty() ? nullptr : row.args.c_str(), row.flags | kRoot);
        EXPECT_EQ(outcome.code, row.code);
        EXPECT_EQ(outcome.message, row.message);
        EXPECT_EQ(outcome.output, row.output);
    }

    Outcome here = run(runner, "/bin/pwd", nullptr, kCapture | kRoot, dir.path().c_str());
    EXPECT_EQ(here.output, dir.path() + "\n") << "the working directory";
}

TEST(ProcessRunnerTest, ChildIsLeftRunningWithoutWaitOrCapture)
{
    LinuxInstaller runner(0, false, nullptr, nullptr);
    const auto start = std::chrono::steady_clock::now();
    // A capture flag without a string to capture into doesn't count either.
    TeskUtils::ErrorCode result = runner.runProgram(
        "/bin/sh", "-c 'sleep 2; exit 5'", kRoot | kCapture, nullptr, nullptr, 0, nullptr, nullptr);
    EXPECT_FALSE(result.isError());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
}

TEST(ProcessRunnerTest, PollingKeepsTheFrontEndAliveAndMovesTheProgress)
{
    LinuxInstaller runner(0, false, nullptr, nullptr);
    const unsigned asynchronous = Installer::RUN_ASYNCHRONOUS | kRoot;
    const struct
    {
        const char* name;
        unsigned flags;
        bool progress;
    } rows[] = {
        { "polled", asynchronous, false },
        { "polled with progress", asynchronous | Installer::RUN_PROGRESS, true },
        { "captured first, then polled", asynchronous | kCapture | Installer::RUN_PROGRESS, true },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        PollUI ui;
        // The output is closed early, so that a capture is drained before the child ends.
        Outcome outcome = run(
            runner, "/bin/sh", "-c 'echo out; exec >&-; sleep 0.3; exit 6'", row.flags, nullptr, &ui, 10);
        EXPECT_EQ(outcome.code, 6);
        EXPECT_EQ(outcome.output, row.flags & kCapture ? "out\n" : "<none>");
        EXPECT_GE(ui.idles, 5);
        if (!row.progress) {
            EXPECT_TRUE(ui.progress.empty());
            continue;
        }
        ASSERT_EQ(static_cast<int>(ui.progress.size()), ui.idles);
        for (size_t i = 0; i < ui.progress.size(); ++i)
            EXPECT_EQ(ui.progress[i], static_cast<int>(std::min<size_t>(i, 100)));
    }

    // Without a front end the child is polled all the same.
    Outcome quiet = run(runner, "/bin/sh", "-c 'sleep 0.1; exit 2'", asynchronous, nullptr, nullptr, 5);
    EXPECT_EQ(quiet.code, 2);
}

// Sets environment variables for the length of a test and restores them.
class ScopedEnvironment
{
public:
    void set(const char* name, const char* value)
    {
        const char* old = getenv(name);
        saved.push_back({ name, old ? old : "", old != nullptr });
        if (value)
            setenv(name, value, 1);
        else
            unsetenv(name);
    }
    ~ScopedEnvironment()
    {
        for (auto it = saved.rbegin(); it != saved.rend(); ++it) {
            if (it->present)
                setenv(it->name.c_str(), it->value.c_str(), 1);
            else
                unsetenv(it->name.c_str());
        }
    }

private:
    struct Saved
    {
        std::string name;
        std::string value;
        bool present;
    };
    std::vector<Saved> saved;
};

TEST(ProcessRunnerTest, DocumentsOpenThroughXdgOpenOrABrowser)
{
    TempDir dir;
    const std::string bin = dir.file("bin");
    ASSERT_EQ(mkdir(bin.c_str(), 0755), 0);
    const std::string opener = "#!/bin/sh\n"
                               "if [ -e /proc/self/fd/2 ]; then e=open; else e=closed; fi\n"
                               "printf '%s %s %s' \"${0##*/}\" \"$1\" $e > "
        + dir.file("opened") + "\n";
    ASSERT_TRUE(writeFile(dir.file("opener"), opener));
    ASSERT_EQ(chmod(dir.file("opener").c_str(), 0755), 0);

    LinuxInstaller runner(0, false, nullptr, nullptr);
    const unsigned open = Installer::RUN_OPEN | kWait | kRoot;
    const char* document = "/docs/read \"me\".txt";
    ScopedEnvironment environment;
    environment.set("PATH", bin.c_str());

    // Neither xdg-open nor a browser: error 1 and no child.
    Outcome none = run(runner, document, nullptr, open);
    EXPECT_EQ(none.code, 1);
    EXPECT_EQ(none.message, "Could not obtain usable browser");
    EXPECT_FALSE(fileExists(dir.file("opened")));

    // A browser of the list: its standard error stays open.
    ASSERT_EQ(symlink(dir.file("opener").c_str(), (bin + "/lynx").c_str()), 0);
    Outcome browser = run(runner, document, nullptr, open);
    EXPECT_EQ(browser.code, 0) << browser.message;
    EXPECT_EQ(readFile(dir.file("opened")), "lynx /docs/read \"me\".txt open");

    // xdg-open goes first, with standard error closed.
    ASSERT_EQ(symlink(dir.file("opener").c_str(), (bin + "/xdg-open").c_str()), 0);
    Outcome xdg = run(runner, document, nullptr, open);
    EXPECT_EQ(xdg.code, 0) << xdg.message;
    EXPECT_EQ(readFile(dir.file("opened")), "xdg-open /docs/read \"me\".txt closed");
}

TEST(ProcessRunnerTest, ChildGetsTheUserEnvironmentBackOrDoesNotRun)
{
    TempDir dir;
    PFileConsole log;
    ASSERT_EQ(log.Create(dir.file("debug.log").c_str(), 0), 0);
    log.flags = 0;
    LinuxInstaller runner(0, false, nullptr, nullptr);
    runner.InitDebugMode(&log, 0);

    ScopedEnvironment environment;
    for (const char* name : { "SUDO_UID", "SUDO_GID", "SUDO_USER" })
        environment.set(name, nullptr);
    environment.set("QUILB_INSTALL_ORIGINAL_UID", std::to_string(getuid()).c_str());
    environment.set("QUILB_INSTALL_ORIGINAL_GID", std::to_string(getgid()).c_str());
    environment.set("QUILB_INSTALL_ORIGINAL_EGID", std::to_string(getegid()).c_str());
    environment.set("QUILB_INSTALL_ORIGINAL_USER_NAME", "someone");
    environment.set("QUILB_INSTALL_ORIGINAL_HOME", dir.path().c_str());

    Outcome restored = run(runner, "/bin/sh", "-c 'echo $HOME'", kCapture);
    EXPECT_EQ(restored.code, 0) << restored.message;
    EXPECT_EQ(restored.output, dir.path() + "\n");
    Outcome asRoot = run(runner, "/bin/sh", "-c 'echo $HOME'", kCapture | kRoot);
    EXPECT_NE(asRoot.output, dir.path() + "\n") << "the installer's own environment";

    for (const char* name : { "QUILB_INSTALL_ORIGINAL_UID", "QUILB_INSTALL_ORIGINAL_GID",
             "QUILB_INSTALL_ORIGINAL_EGID", "QUILB_INSTALL_ORIGINAL_HOME" })
        environment.set(name, nullptr);
    Outcome missing = run(runner, "/bin/sh", "-c 'echo ran'", kCapture);
    EXPECT_EQ(missing.code, 1);
    EXPECT_EQ(missing.output, "") << "the program never started";

    Outcome failedExec = run(runner, "/no/such/program", "-x", kWait | kRoot);
    EXPECT_EQ(failedExec.code, ENOENT);
    log.Done();
    const std::string text = readFile(dir.file("debug.log"));
    EXPECT_NE(
        text.find("WARNING: Could not restore user environment because of missing variables for {uid, "),
        std::string::npos)
        << text;
    EXPECT_NE(text.find("ERROR: Could not exec process: \"/no/such/program\" -x\r\n"), std::string::npos)
        << text;
}

TEST(ProcessRunnerTest, ExtendedParametersAreOnlyReported)
{
    PMemoryConsole log;
    log.flags = 0;
    LinuxInstaller runner(0, false, nullptr, nullptr);
    runner.InitDebugMode(&log, 0);
    ExtendedRunProgramParams params;
    params.environment.append().name = "X";
    TeskUtils::CharString output;
    TeskUtils::ErrorCode result = runner.runProgram(
        "/bin/sh", "-c 'echo ${X:-unset}'", kCapture | kRoot, nullptr, nullptr, 0, &output, &params);
    EXPECT_FALSE(result.isError());
    EXPECT_EQ(std::string(output.c_str()), "unset\n");
    EXPECT_EQ(log.text(), "WARNING: Extended params are not supported on Linux/OSX yet\r\n");
}

TEST(ProcessRunnerTest, FileDescriptorIsReadToItsEnd)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string data(5000, 'q');
    ASSERT_EQ(write(ends[1], data.data(), data.size()), static_cast<ssize_t>(data.size()));
    close(ends[1]);
    TeskUtils::CharString out;
    EXPECT_EQ(LinuxInstaller::readFileDescriptor(ends[0], out), 0);
    EXPECT_EQ(std::string(out.c_str()), data);
    close(ends[0]);

    EXPECT_EQ(LinuxInstaller::readFileDescriptor(-1, out), EBADF);
    EXPECT_EQ(std::string(out.c_str()), "");
}

} // namespace
