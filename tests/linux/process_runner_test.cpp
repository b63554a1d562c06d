// The process runner with real children, in temporary directories: the words of a command
// line, the result for each way a child ends, capture, polling with the front end alive,
// opening documents through a program found on PATH, and the user's environment.
#include <chrono>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/streams/pconsole.h"
#include "linux/linux_installer.h"
#include "linux/process_runner.h"
#include "support/paths.h"

using namespace quilbtest;

namespace {

TEST(ProcessRunnerTest, LineIsSplitIntoWordsOfTheFirstCommand)
{
    const struct
    {
        const char* line;
        std::vector<std::string> words;
    } rows[] = {
        { "\"/opt/my tool\" -a  b\t", { "/opt/my tool", "-a", "b" } },
        { "a 'b c' \"d\te\" --x='/a b'/c \"\"", { "a", "b c", "d\te", "--x=/a b/c", "" } },
        { "a\\ b say \\\"hi\\\" a\\\\b", { "a b", "say", "\"hi\"", "ab" } },
        { "a b;c d", { "a", "b" } },
        { "a \";\" \\; 'x;y'", { "a", ";", ";", "x;y" } },
        { " ; ;a", { "a" } },
        { "\"a b", {} },
        { "a 'b", {} },
        { "\"it's\"", {} }, // a quote of the other kind counts too
        { "a\\", {} },
        { "  ", {} },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        TeskUtils::Table<TeskUtils::CharString, 16> words;
        EXPECT_EQ(ProcessRunner::splitCommandLine(row.line, words), static_cast<int>(row.words.size()));
        std::vector<std::string> got;
        for (int i = 0; i < words.count; ++i)
            got.push_back(words[i].c_str());
        EXPECT_EQ(got, row.words);
    }
}

class PollUI : public InstallerUI
{
public:
    void Idle() override { ++idles; }
    void SetOverallProgress(int percent) override { progress.push_back(percent); }
    int idles = 0;
    std::vector<int> progress;
};

// "code|message|output" of one run; the output is "-" when nothing was captured.
std::string run(const LinuxInstaller& runner, const char* cmd, const char* args, unsigned flags,
    const char* workDir = nullptr, InstallerUI* ui = nullptr, unsigned pollMs = 0)
{
    TeskUtils::CharString output("-");
    TeskUtils::ErrorCode result = runner.runProgram(cmd, args, flags, workDir, ui, pollMs, &output, nullptr);
    return std::to_string(result.getError()) + "|" + (result.getMessage() ? result.getMessage() : "") + "|"
        + output.c_str();
}

const unsigned kRoot = Installer::RUN_AS_ROOT; // the child keeps the test's own identity
const unsigned kWait = Installer::RUN_WAIT;
const unsigned kCapture = Installer::RUN_CAPTURE;

TEST(ProcessRunnerTest, ResultTellsHowTheChildEnded)
{
    TempDir dir;
    const std::string tool = dir.file("my tool");
    ASSERT_TRUE(writeFile(tool, "#!/bin/sh\nprintf '%s|' \"$(pwd)\" \"$@\"\n"));
    ASSERT_EQ(chmod(tool.c_str(), 0755), 0);
    const std::string exited = "|Child process exited with error code|-";
    const std::string probe = "-c 'if [ -e /proc/self/fd/2 ]; then echo open; else echo closed; fi'";
    const struct
    {
        const char* cmd;
        std::string args;
        unsigned flags;
        std::string result;
    } rows[] = {
        { "/bin/sh", "-c 'exit 0'", kWait, "0||-" },
        { "/bin/sh", "-c 'exit 3'", kWait, "3" + exited },
        { "/bin/sh", "-c 'kill -9 $$'", kWait, "9|Child process did not exit normally|-" },
        { "/no/such/program", "", kWait, "2" + exited }, // the errno of the failed exec
        { "/bin/sh", "-c 'exit 3", kWait, "2" + exited }, // no words at all
        { "", "", kWait, "-1|Empty command line!|-" },
        { "/bin/sh", "-c 'echo hi; exit 4'", kCapture, "4|Child process exited with error code|hi\n" },
        { "/bin/echo", "a;echo b", kCapture, "0||a\n" },
        { tool.c_str(), "x 'y z'", kCapture, "0||" + dir.path() + "|x|y z|" },
        { "/bin/sh", probe, kCapture, "0||open\n" },
        { "/bin/sh", probe, kCapture | Installer::RUN_NO_STDERR, "0||closed\n" },
    };
    LinuxInstaller runner(0, false, nullptr, nullptr);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.cmd + (" " + row.args));
        EXPECT_EQ(run(runner, row.cmd, row.args.empty() ? nullptr : row.args.c_str(), row.flags | kRoot,
                      dir.path().c_str()),
            row.result);
    }

    // Neither wait nor capture into a string: success at once, whatever the child does.
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(run(runner, "/bin/sh", "-c 'sleep 2; exit 5'", kRoot), "0||-");
    EXPECT_FALSE(
        runner.runProgram("/bin/sh", "-c 'sleep 2'", kRoot | kCapture, nullptr, nullptr, 0, nullptr, nullptr)
            .isError());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
}

TEST(ProcessRunnerTest, PollingKeepsTheFrontEndAliveAndMovesTheProgress)
{
    LinuxInstaller runner(0, false, nullptr, nullptr);
    const unsigned polled = Installer::RUN_ASYNCHRONOUS | kRoot;
    for (unsigned flags :
        { polled, polled | Installer::RUN_PROGRESS, polled | Installer::RUN_PROGRESS | kCapture }) {
        SCOPED_TRACE(flags);
        PollUI ui;
        // The output closes early, so that a capture is drained before the child ends.
        std::string result
            = run(runner, "/bin/sh", "-c 'echo out; exec >&-; sleep 0.3; exit 6'", flags, nullptr, &ui, 10);
        EXPECT_EQ(result,
            std::string("6|Child process exited with error code|") + (flags & kCapture ? "out\n" : "-"));
        EXPECT_GE(ui.idles, 5);
        std::vector<int> expected;
        for (int i = 0; flags & Installer::RUN_PROGRESS && i < ui.idles; ++i)
            expected.push_back(std::min(i, 100));
        EXPECT_EQ(ui.progress, expected);
    }
}

// Sets environment variables for the length of a test and restores them.
class ScopedEnvironment
{
public:
    void set(const std::string& name, const char* value)
    {
        const char* old = getenv(name.c_str());
        saved.push_back({ name, old ? old : "", old != nullptr });
        value ? setenv(name.c_str(), value, 1) : unsetenv(name.c_str());
    }
    ~ScopedEnvironment()
    {
        for (auto it = saved.rbegin(); it != saved.rend(); ++it)
            it->present ? setenv(it->name.c_str(), it->value.c_str(), 1) : unsetenv(it->name.c_str());
    }

private:
    struct Saved
    {
        std::string name, value;
        bool present;
    };
    std::vector<Saved> saved;
};

TEST(ProcessRunnerTest, DocumentsOpenThroughXdgOpenOrABrowser)
{
    TempDir dir;
    ASSERT_TRUE(writeFile(dir.file("opener"),
        "#!/bin/sh\n[ -e /proc/self/fd/2 ] && e=open || e=closed\nprintf '%s %s %s' \"${0##*/}\" \"$1\" $e > "
            + dir.file("opened") + "\n"));
    ASSERT_EQ(chmod(dir.file("opener").c_str(), 0755), 0);
    LinuxInstaller runner(0, false, nullptr, nullptr);
    const unsigned open = Installer::RUN_OPEN | kWait | kRoot;
    ScopedEnvironment environment;
    environment.set("PATH", dir.path().c_str());

    EXPECT_EQ(run(runner, "/d/a \"b\"", nullptr, open), "1|Could not obtain usable browser|-");
    EXPECT_FALSE(fileExists(dir.file("opened"))) << "no child";
    ASSERT_EQ(symlink(dir.file("opener").c_str(), dir.file("lynx").c_str()), 0);
    EXPECT_EQ(run(runner, "/d/a \"b\"", nullptr, open), "0||-");
    EXPECT_EQ(readFile(dir.file("opened")), "lynx /d/a \"b\" open");
    ASSERT_EQ(symlink(dir.file("opener").c_str(), dir.file("xdg-open").c_str()), 0);
    EXPECT_EQ(run(runner, "/d/a \"b\"", nullptr, open), "0||-");
    EXPECT_EQ(readFile(dir.file("opened")), "xdg-open /d/a \"b\" closed");
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
    const std::string prefix = "QUILB_INSTALL_ORIGINAL_";
    environment.set(prefix + "UID", std::to_string(getuid()).c_str());
    environment.set(prefix + "GID", std::to_string(getgid()).c_str());
    environment.set(prefix + "EGID", std::to_string(getegid()).c_str());
    environment.set(prefix + "USER_NAME", "someone");
    environment.set(prefix + "HOME", dir.path().c_str());

    EXPECT_EQ(run(runner, "/bin/sh", "-c 'echo $HOME'", kCapture), "0||" + dir.path() + "\n");
    EXPECT_NE(run(runner, "/bin/sh", "-c 'echo $HOME'", kCapture | kRoot), "0||" + dir.path() + "\n");
    for (const char* name : { "UID", "GID", "EGID", "HOME" })
        environment.set(prefix + name, nullptr);
    EXPECT_EQ(run(runner, "/bin/sh", "-c 'echo ran'", kCapture), "1|Child process exited with error code|");
    EXPECT_EQ(
        run(runner, "/no/such/program", "-x", kWait | kRoot), "2|Child process exited with error code|-");

    ExtendedRunProgramParams ext;
    EXPECT_FALSE(
        runner.runProgram("/bin/true", nullptr, kWait | kRoot, nullptr, nullptr, 0, nullptr, &ext).isError());
    log.Done();
    const std::string text = readFile(dir.file("debug.log"));
    for (const char* line :
        { "WARNING: Could not restore user environment because of missing variables for {uid, ",
            "ERROR: Could not exec process: \"/no/such/program\" -x\r\n",
            "WARNING: Extended params are not supported on Linux/OSX yet\r\n" })
        EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
}

} // namespace
