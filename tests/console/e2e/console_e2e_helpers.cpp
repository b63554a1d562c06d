#include "console/e2e/console_e2e_helpers.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <set>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace quilbtest {

namespace {

std::string commandOf(const std::string& program, const std::vector<std::string>& args)
{
    std::string line = shellQuote(program);
    for (const std::string& arg : args)
        line += " " + shellQuote(arg);
    return line;
}

// A product file made by quilb_pack with `args` the first time it is asked for, kept in the
// test program's scratch directory.
std::string made(const std::string& name, std::vector<std::string> args)
{
    static TempDir dir;
    static std::set<std::string> done;
    std::string path = dir.file(name);
    if (done.insert(name).second) {
        args.insert(args.end(), { "-o", path });
        CommandResult result = runCommand(commandOf(binDir() + "/quilb_pack", args));
        if (result.exitCode != 0)
            ADD_FAILURE() << "quilb_pack couldn't make " << name << ":\n" << result.output;
    }
    return path;
}

long long nowMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

// The engine finds a template by the file name "install.xml", so each lies in a directory
// of its own under that name.
std::string promptsPackage()
{
    std::string dir = consoleData() + "/prompts/";
    return made("prompts.ibin",
        { "package", "-t", dir + "install.xml", "--add", "license.md=" + dir + "license.md", "--add",
            "terms.rtf=" + dir + "terms.rtf", "--add", "plain.md=" + dir + "plain.md", "--add",
            "extra.md=" + dir + "extra.md" });
}

std::string notesPackage()
{
    std::string dir = sourceDir() + "/examples/quilb-notes";
    return made("notes.ibin",
        { "package", "-t", dir + "/install.xml", "-b", dir, "--add", "license.md=" + dir + "/license.md" });
}

// Only the console front end, lightly compressed: the sanitized builds are large.
std::string promptsInstaller()
{
    if (!fileExists(binDir() + "/launcher"))
        return "";
    return made("setup_prompts",
        { "installer", "-p", promptsPackage(), "--level", "1", "--frontend",
            "installer_console=" + installerConsole() });
}

// The start of a shell line that enters `workDir` with the settings every run shares.
static std::string entering(const std::string& workDir, const std::vector<std::string>& env)
{
    std::string line = "cd " + shellQuote(workDir)
        + " && unset QUILB_INSTALLER_DEBUG && export QUILB_INSTALLER_DIR=" + shellQuote(workDir + "/");
    for (const std::string& setting : env)
        line += " " + setting.substr(0, setting.find('=') + 1)
            + shellQuote(setting.substr(setting.find('=') + 1));
    return line + " && ";
}

CommandResult runConsole(const std::string& program, const std::vector<std::string>& args,
    const std::string& workDir, const std::string& input, const std::vector<std::string>& env, bool sandboxed)
{
    // A wizard that waits for ever must not hang the tests.
    std::string line = entering(workDir, env)
        + (input.empty() ? "" : "printf '%s' " + shellQuote(input) + " | ") + "timeout -k 5 60 "
        + commandOf(program, args) + (input.empty() ? " </dev/null" : "");
    return sandboxed ? runInSandbox(line, { workDir }) : runCommand(line);
}

void checkRuns(const std::vector<ConsoleRun>& runs)
{
    for (const ConsoleRun& run : runs) {
        SCOPED_TRACE(run.name);
        TempDir work;
        for (const auto& [name, content] : run.files)
            ASSERT_TRUE(writeFile(work.file(name), content));
        std::string before = snapshot(work.path());
        CommandResult result = runConsole(
            run.uninstaller ? uninstallerConsole() : installerConsole(), run.args, work.path(), run.input);
        EXPECT_TRUE(run.exitCode == -1 ? result.exitCode != 0 : result.exitCode == run.exitCode)
            << "exit status " << result.exitCode << ":\n"
            << result.output;
        std::string shown = result.output;
        if (run.match == Match::Start)
            shown = shown.substr(0, run.output.size());
        if (run.match == Match::End && shown.size() > run.output.size())
            shown = shown.substr(shown.size() - run.output.size());
        EXPECT_EQ(shown, run.output) << result.output;
        EXPECT_EQ(snapshot(work.path()), before);
    }
}

std::string snapshot(const std::string& dir)
{
    return runCommand("cd " + shellQuote(dir)
        + " && find . -mindepth 1 \\( -type f -printf '%p %s\\n' -o -printf '%p\\n' \\) | sort")
        .output;
}

size_t occurrences(const std::string& text, const std::string& word)
{
    size_t count = 0;
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + word.size()))
        ++count;
    return count;
}

::testing::AssertionResult inOrder(const std::string& text, const std::vector<std::string>& fragments)
{
    size_t at = 0;
    for (const std::string& fragment : fragments) {
        size_t found = text.find(fragment, at);
        if (found == std::string::npos)
            return ::testing::AssertionFailure() << "\"" << fragment << "\" missing (in order) from:\n"
                                                 << text;
        at = found + fragment.size();
    }
    return ::testing::AssertionSuccess();
}

PtySession::PtySession(const std::string& program, const std::vector<std::string>& args,
    const std::string& workDir, int rows, int columns)
{
    master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
        return;
    std::string slaveName = ptsname(master);
    if (rows > 0)
        resize(rows, columns);
    std::string line = entering(workDir, {}) + "exec /bin/bash "
        + shellQuote(sourceDir() + "/scripts/sandbox.sh") + " -b " + shellQuote(workDir) + " -- "
        + commandOf(program, args);
    child = fork();
    if (child != 0)
        return;
    // The child: a session of its own with the terminal as its controlling one.
    setsid();
    int slave = open(slaveName.c_str(), O_RDWR);
    if (slave < 0)
        _exit(126);
    ioctl(slave, TIOCSCTTY, 0);
    for (int fd = 0; fd < 3; ++fd)
        dup2(slave, fd);
    if (slave > 2)
        close(slave);
    close(master);
    execl("/bin/sh", "sh", "-c", line.c_str(), static_cast<char*>(nullptr));
    _exit(127);
}

PtySession::~PtySession()
{
    if (child > 0) {
        kill(-child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    if (master >= 0)
        close(master);
}

bool PtySession::pump(int timeoutMs)
{
    struct pollfd poller = { master, POLLIN, 0 };
    if (ended || master < 0)
        return false;
    if (poll(&poller, 1, timeoutMs) <= 0)
        return true;
    char buffer[4096];
    ssize_t count = read(master, buffer, sizeof buffer);
    if (count > 0)
        raw.append(buffer, static_cast<size_t>(count));
    else if (count == 0 || errno != EINTR)
        ended = true; // EIO: every holder of the terminal's other side has gone
    return !ended;
}

bool PtySession::expect(const std::string& text, std::string* before)
{
    for (long long deadline = nowMs() + 10000;;) {
        std::string all = transcript();
        size_t found = all.find(text, mark);
        if (found != std::string::npos) {
            if (before)
                *before = all.substr(mark, found + text.size() - mark);
            mark = found + text.size();
            return true;
        }
        long long left = deadline - nowMs();
        if (left <= 0 || !pump(static_cast<int>(left)))
            return false;
    }
}

void PtySession::send(const std::string& line)
{
    std::string typed = line + "\r";
    if (master >= 0 && write(master, typed.data(), typed.size()) < 0)
        ended = true;
}

bool PtySession::waitForNoEcho()
{
    for (long long deadline = nowMs() + 10000; nowMs() < deadline; pump(20)) {
        struct termios modes;
        if (tcgetattr(master, &modes) == 0 && !(modes.c_lflag & ECHO))
            return true;
    }
    return false;
}

void PtySession::resize(int rows, int columns)
{
    struct winsize size = {};
    size.ws_row = static_cast<unsigned short>(rows);
    size.ws_col = static_cast<unsigned short>(columns);
    ioctl(master, TIOCSWINSZ, &size);
}

int PtySession::finish()
{
    for (long long deadline = nowMs() + 20000; !ended && nowMs() < deadline;)
        pump(100);
    if (child <= 0)
        return -1;
    if (!ended)
        kill(-child, SIGKILL);
    int wait = 0;
    bool exited = waitpid(child, &wait, 0) == child && WIFEXITED(wait) && ended;
    child = -1;
    return exited ? WEXITSTATUS(wait) : -1;
}

// Everything so far, with the terminal's CR LF turned into LF.
std::string PtySession::transcript()
{
    size_t size;
    do
        size = raw.size();
    while (pump(0) && raw.size() != size);
    std::string text;
    for (size_t i = 0; i < raw.size(); ++i)
        if (raw[i] != '\r' || i + 1 == raw.size() || raw[i + 1] != '\n')
            text += raw[i];
    return text;
}

} // namespace quilbtest
