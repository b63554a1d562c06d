#include "console/e2e/console_e2e_helpers.h"

#include "support/paths.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace quilbtest {

namespace {

std::string sandboxScript()
{
    return sourceDir() + "/scripts/sandbox.sh";
}

std::string commandOf(const std::string& program, const std::vector<std::string>& args)
{
    std::string line = shellQuote(program);
    for (const std::string& arg : args)
        line += " " + shellQuote(arg);
    return line;
}

// The shell line that runs the program in `workDir` with its input and environment.
std::string runLine(const std::string& program, const std::vector<std::string>& args, const std::string& workDir,
                    const std::string& input, const std::vector<std::string>& env = {})
{
    std::string line = "cd " + shellQuote(workDir) + " && unset QUILB_INSTALLER_DEBUG && ";
    line += input.empty() ? "" : "printf '%s' " + shellQuote(input) + " | ";
    line += "QUILB_INSTALLER_DIR=" + shellQuote(workDir + "/") + " ";
    for (const std::string& setting : env) {
        size_t equals = setting.find('=');
        line += setting.substr(0, equals) + "=" + shellQuote(setting.substr(equals + 1)) + " ";
    }
    // A wizard that waits for ever must not hang the tests.
    line += "timeout -k 5 60 " + commandOf(program, args);
    if (input.empty())
        line += " </dev/null";
    return line;
}

// A product file in the program's own scratch directory, made by `build` the first time.
std::string made(const std::string& name, const std::function<std::vector<std::string>(const std::string&)>& build)
{
    static TempDir dir;
    static std::map<std::string, bool> done;
    std::string path = dir.path() + "/" + name;
    if (done.emplace(name, true).second) {
        CommandResult result = runCommand(commandOf(binDir() + "/quilb_pack", build(path)));
        if (result.exitCode != 0)
            ADD_FAILURE() << "quilb_pack couldn't make " << name << ":\n" << result.output;
    }
    return path;
}

std::string console()
{
    return dataDir() + "/console";
}

// An installer of `package` with only the console front end, lightly compressed: the
// sanitized builds are large.
std::string installerOf(const std::string& name, const std::string& package)
{
    if (!fileExists(binDir() + "/launcher"))
        return "";
    return made(name, [&](const std::string& path) {
        return std::vector<std::string>{"installer", "-p", package, "--level", "1", "--frontend",
                                        "installer_console=" + installerConsole(), "-o", path};
    });
}

std::string normalised(const std::string& raw)
{
    std::string text;
    text.reserve(raw.size());
    for (size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] == '\r' && i + 1 < raw.size() && raw[i + 1] == '\n')
            continue;
        text += raw[i];
    }
    return text;
}

long long nowMs()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

// The engine finds a template by the file name "install.xml", so each lies in a directory
// of its own under that name.
std::string promptsPackage()
{
    return made("prompts.ibin", [](const std::string& path) {
        std::vector<std::string> args = {"package", "-t", console() + "/prompts/install.xml", "-o", path};
        for (const char* document : {"license.md", "terms.rtf", "plain.md", "extra.md"}) {
            args.push_back("--add");
            args.push_back(std::string(document) + "=" + console() + "/prompts/" + document);
        }
        return args;
    });
}

std::string notesPackage()
{
    return made("notes.ibin", [](const std::string& path) {
        std::string notes = sourceDir() + "/examples/quilb-notes";
        return std::vector<std::string>{"package", "-t", notes + "/install.xml", "-b", notes, "--add",
                                        "license.md=" + notes + "/license.md", "-o", path};
    });
}

std::string heldPackage()
{
    return made("held.ibin", [](const std::string& path) {
        return std::vector<std::string>{"package", "-t", console() + "/held/install.xml", "-o", path};
    });
}

std::string promptsInstaller()
{
    return installerOf("setup_prompts", promptsPackage());
}

std::string notesInstaller()
{
    return installerOf("setup_notes", notesPackage());
}

std::string installerConsole()
{
    return binDir() + "/installer_console";
}

std::string uninstallerConsole()
{
    return binDir() + "/uninstaller_console";
}

CommandResult runSandboxed(const std::string& program, const std::vector<std::string>& args,
                           const std::string& workDir, const std::string& input, const std::vector<std::string>& env)
{
    return runInSandbox(runLine(program, args, workDir, input, env), {workDir});
}

CommandResult runPlain(const std::string& program, const std::vector<std::string>& args, const std::string& workDir,
                       const std::string& input)
{
    return runCommand(runLine(program, args, workDir, input));
}

std::vector<std::string> snapshot(const std::string& dir)
{
    namespace fs = std::filesystem;
    std::vector<std::string> entries;
    std::error_code error;
    for (fs::recursive_directory_iterator it(dir, error), end; !error && it != end; it.increment(error)) {
        std::string entry = fs::relative(it->path(), dir).string();
        if (it->is_regular_file())
            entry += " " + std::to_string(it->file_size());
        entries.push_back(entry);
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

PtySession::PtySession(const std::string& program, const std::vector<std::string>& args,
                       const std::string& workDir, int rows, int columns)
{
    master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0)
        return;
    std::string slaveName = ptsname(master);
    if (rows > 0) {
        struct winsize size = {};
        size.ws_row = static_cast<unsigned short>(rows);
        size.ws_col = static_cast<unsigned short>(columns);
        ioctl(master, TIOCSWINSZ, &size);
    }
    std::vector<std::string> words = {"/bin/bash", sandboxScript(), "-b", workDir, "--", program};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(&word[0]);
    argv.push_back(nullptr);
    std::string installerDir = workDir + "/";

    child = fork();
    if (child != 0)
        return;
    // The child: a session of its own with the terminal as its controlling one.
    setsid();
    int slave = open(slaveName.c_str(), O_RDWR);
    if (slave < 0)
        _exit(126);
    ioctl(slave, TIOCSCTTY, 0);
    dup2(slave, 0);
    dup2(slave, 1);
    dup2(slave, 2);
    if (slave > 2)
        close(slave);
    close(master);
    if (chdir(workDir.c_str()) != 0)
        _exit(126);
    unsetenv("QUILB_INSTALLER_DEBUG");
    setenv("QUILB_INSTALLER_DIR", installerDir.c_str(), 1);
    execv(argv[0], argv.data());
    _exit(127);
}

PtySession::~PtySession()
{
    if (child > 0 && status == -1) {
        if (!ended)
            kill(-child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    if (master >= 0)
        close(master);
}

int PtySession::pump(int timeoutMs)
{
    if (ended || master < 0)
        return -1;
    struct pollfd poller = {master, POLLIN, 0};
    int ready = poll(&poller, 1, timeoutMs);
    if (ready == 0 || (ready < 0 && errno == EINTR))
        return 0;
    char buffer[4096];
    ssize_t count = ready > 0 ? read(master, buffer, sizeof buffer) : -1;
    if (count > 0) {
        raw.append(buffer, static_cast<size_t>(count));
        return 1;
    }
    if (count < 0 && errno == EINTR)
        return 0;
    ended = true;  // EIO: every holder of the terminal's other side has gone
    return -1;
}

bool PtySession::expect(const std::string& text, std::string* before, int timeoutMs)
{
    return expectOneOf({text}, before, timeoutMs) == 0;
}

int PtySession::expectOneOf(const std::vector<std::string>& texts, std::string* before, int timeoutMs)
{
    long long deadline = nowMs() + timeoutMs;
    for (;;) {
        std::string all = normalised(raw);
        size_t first = std::string::npos;
        int which = -1;
        for (size_t i = 0; i < texts.size(); ++i) {
            size_t found = all.find(texts[i], mark);
            if (found < first) {
                first = found;
                which = static_cast<int>(i);
            }
        }
        if (which >= 0) {
            size_t end = first + texts[which].size();
            if (before)
                *before = all.substr(mark, end - mark);
            mark = end;
            return which;
        }
        long long left = deadline - nowMs();
        if (left <= 0 || pump(static_cast<int>(left)) < 0)
            return -1;
    }
}

void PtySession::send(const std::string& line)
{
    std::string typed = line + "\r";
    if (master >= 0 && write(master, typed.data(), typed.size()) < 0)
        ended = true;
}

bool PtySession::waitForNoEcho(int timeoutMs)
{
    long long deadline = nowMs() + timeoutMs;
    while (nowMs() < deadline) {
        struct termios modes;
        if (tcgetattr(master, &modes) == 0 && !(modes.c_lflag & ECHO))
            return true;
        pump(20);
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

int PtySession::finish(int timeoutMs)
{
    if (child <= 0)
        return -1;
    if (status != -1)
        return status;
    long long deadline = nowMs() + timeoutMs;
    while (!ended && nowMs() < deadline)
        pump(static_cast<int>(std::max(1LL, deadline - nowMs())));
    int wait = 0;
    if (!ended) {
        kill(-child, SIGKILL);
        waitpid(child, &wait, 0);
        child = -1;
        return -1;
    }
    if (waitpid(child, &wait, 0) == child && WIFEXITED(wait))
        status = WEXITSTATUS(wait);
    else
        status = -2;
    return status;
}

std::string PtySession::transcript()
{
    while (pump(0) > 0) {
    }
    return normalised(raw);
}

} // namespace quilbtest
