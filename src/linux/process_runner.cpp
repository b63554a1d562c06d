// The process runner: the one way in which the engine starts a child program. The command
// line is built from the program (quoted) and its arguments, or from a document handed to
// "xdg-open" or a browser; it is split into words here, and the child is forked and exec'd
// directly. The parent waits, polls with the front end alive, drains the child's output,
// or leaves it running, as the flags say.
#include "linux/process_runner.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/misc/shell_utils.h"
#include "foundation/streams/pconsole.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/string_builder.h"
#include "installer/wizard/installer_ui.h"
#include "linux/linux_installer.h"

namespace {

// The splitter's state bits.
enum SplitState {
    IN_DOUBLE_QUOTES = 1,
    IN_SINGLE_QUOTES = 2,
    ESCAPED = 4,
};

bool isBlank(char c)
{
    return isspace(static_cast<unsigned char>(c)) != 0;
}

// The first pass: the extent [start, end) of the first command that holds a non-blank
// character. False when the line is unusable (open quotes or a final backslash) or holds
// no such command.
bool firstCommand(const char* line, int& start, int& end)
{
    int state = 0;
    int commandStart = 0;
    bool nonBlank = false;
    bool found = false;
    int i = 0;
    for (; line[i]; ++i) {
        const char c = line[i];
        if (c == '\\') {
            state ^= ESCAPED;
            nonBlank = true;
            continue;
        }
        if (c == ';' && state == 0) {
            if (nonBlank && !found) {
                start = commandStart;
                end = i;
                found = true;
            }
            commandStart = i + 1;
            nonBlank = false;
            continue;
        }
        if (!(state & ESCAPED)) {
            if (c == '"')
                state ^= IN_DOUBLE_QUOTES;
            else if (c == '\'')
                state ^= IN_SINGLE_QUOTES;
        }
        state &= ~ESCAPED;
        if (!isBlank(c))
            nonBlank = true;
    }
    if (state != 0)
        return false;
    if (!found && nonBlank) {
        start = commandStart;
        end = i;
        found = true;
    }
    return found;
}

// The arguments of execvp: the words as an array ending in null. The words must outlive it.
struct ArgumentVector
{
    explicit ArgumentVector(const TeskUtils::Table<TeskUtils::CharString, 16>& words)
        : items(new char*[words.count + 1])
    {
        for (int i = 0; i < words.count; ++i)
            items[i] = const_cast<char*>(words[i].c_str());
        items[words.count] = nullptr;
    }
    ~ArgumentVector() { delete[] items; }
    ArgumentVector(const ArgumentVector&) = delete;
    ArgumentVector& operator=(const ArgumentVector&) = delete;

    char** items;
};

// Judges a wait status: success for 0, otherwise how the child ended.
TeskUtils::ErrorCode judgeStatus(int status)
{
    if (status == 0)
        return TeskUtils::ErrorCode();
    if (status & 0x7f)
        return TeskUtils::ErrorCode("runProgram", status, "Child process did not exit normally");
    return TeskUtils::ErrorCode("runProgram", (status >> 8) & 255, "Child process exited with error code");
}

// Polls `pid` until it ends (or can no longer be waited for), keeping `ui` alive and, with
// `progress`, moving the overall progress by one per poll up to 100.
void pollChild(pid_t pid, int& status, InstallerUI* ui, bool progress, unsigned pollMs)
{
    pid_t ended = waitpid(pid, &status, WNOHANG);
    int percent = 0;
    while (ended == 0) {
        if (ui) {
            ui->Idle();
            if (progress) {
                ui->SetOverallProgress(percent);
                if (percent <= 99)
                    ++percent;
            }
        }
        if (pollMs)
            usleep(pollMs * 1000);
        ended = waitpid(pid, &status, WNOHANG);
    }
}

} // namespace

namespace ProcessRunner {

int splitCommandLine(const char* line, TeskUtils::Table<TeskUtils::CharString, 16>& words)
{
    int start = 0;
    int end = 0;
    if (!line || !firstCommand(line, start, end))
        return 0;

    // The second pass, over the first command only: quotes and backslashes go, blanks
    // inside quotes or behind a backslash stay in the word.
    const int before = words.count;
    TeskUtils::StringBuilder word(256, 2.0f);
    word.clear();
    bool started = false;
    int state = 0;
    for (int i = start; i < end; ++i) {
        const char c = line[i];
        if (state & ESCAPED) {
            state &= ~ESCAPED;
            if (c != '\\') {
                word << c;
                started = true;
            }
            continue;
        }
        if (c == '\\') {
            state |= ESCAPED;
        } else if (c == '"') {
            state ^= IN_DOUBLE_QUOTES;
            started = true;
        } else if (c == '\'') {
            state ^= IN_SINGLE_QUOTES;
            started = true;
        } else if (isBlank(c) && state == 0) {
            if (started)
                words.append(word.getCharString());
            word.clear();
            started = false;
        } else {
            word << c;
            started = true;
        }
    }
    if (started)
        words.append(word.getCharString());
    return words.count - before;
}

} // namespace ProcessRunner

int LinuxInstaller::readFileDescriptor(int fd, TeskUtils::CharString& out)
{
    TeskUtils::StringBuilder text(2048, 1.5f);
    text.clear();
    char block[2048];
    int result = 0;
    for (;;) {
        ssize_t count = read(fd, block, sizeof block);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            result = errno;
            break;
        }
        if (count == 0)
            break;
        text.append(block, static_cast<int>(count));
    }
    out = text.getCharString();
    return result;
}

TeskUtils::ErrorCode LinuxInstaller::runProgram(const char* cmd, const char* args, unsigned flags,
    const char* workDir, InstallerUI* progressUI, unsigned pollMs, TeskUtils::CharString* output,
    const ExtendedRunProgramParams* ext) const
{
    if (!cmd || !cmd[0])
        return TeskUtils::ErrorCode("runProgram", -1, "Empty command line!");
    if (ext && debugConsole)
        debugConsole->Dump("WARNING: Extended params are not supported on Linux/OSX yet");

    TeskUtils::StringBuilder line(4096, 2.0f);
    line.clear();
    TeskUtils::CharString program = TeskUtils::escapeCharacter(cmd, '"', '\\');
    if (!(flags & RUN_OPEN)) {
        line << "\"" << program << "\"";
        if (args)
            line << " " << args;
    } else {
        if (tryOpenDocumentWx(cmd, (flags & RUN_WAIT) != 0))
            return TeskUtils::ErrorCode();
        if (ShellUtils::CommandExists("xdg-open")) {
            line << "xdg-open \"" << program << "\"";
            flags |= RUN_NO_STDERR;
        } else {
            char browser[TeskUtils::kPathSize];
            if (!get_useable_www_browser(browser, sizeof browser))
                return TeskUtils::ErrorCode("runProgram", 1, "Could not obtain usable browser");
            line << browser << " \"" << program << "\"";
        }
    }

    const bool capture = output && (flags & RUN_CAPTURE);
    int pipeEnds[2] = { -1, -1 };
    if (capture && pipe(pipeEnds) != 0) {
        int error = errno;
        if (debugConsole)
            debugConsole->Dump("ERROR: Could not open pipe for capturing output");
        return TeskUtils::ErrorCode("runProgram", error, "Could not open pipe");
    }

    // The words are made before the fork, so that the child only execs.
    TeskUtils::Table<TeskUtils::CharString, 16> words;
    ProcessRunner::splitCommandLine(line.c_str(), words);
    ArgumentVector argv(words);

    fflush(nullptr);
    pid_t pid = fork();
    if (pid < 0) {
        int error = errno;
        if (capture) {
            close(pipeEnds[0]);
            close(pipeEnds[1]);
        }
        if (debugConsole)
            debugConsole->Dump("ERROR: Could not fork process to run a program!");
        return TeskUtils::ErrorCode("runProgram", error, "fork() failed: %s", strerror(error));
    }

    if (pid == 0) {
        // The child. It leaves through exec or _exit, never through the parent's code.
        if (!(flags & RUN_AS_ROOT)) {
            unsigned failures = restoreUserEnvironment();
            if (failures) {
                if (debugConsole) {
                    const bool missing = (failures & kEnvMissing) != 0;
                    debugConsole->Dump("%s: Could not restore user environment because of %s %s",
                        missing ? "WARNING" : "ERROR", missing ? "missing variables for" : "failed calls for",
                        environmentErrorStringFromMask(failures).c_str());
                }
                if (capture) {
                    close(pipeEnds[0]);
                    close(pipeEnds[1]);
                }
                _exit(1);
            }
        }
        if (workDir && chdir(workDir) != 0) {
            // A working directory that can't be entered is not noticed.
        }
        if (flags & RUN_NO_STDERR)
            fclose(stderr);
        if (capture) {
            while (dup2(pipeEnds[1], 1) < 0 && errno == EINTR) { }
            close(pipeEnds[0]);
            close(pipeEnds[1]);
        }
        // An unusable or empty line has no first word: the exec fails as for a missing program.
        if (argv.items[0])
            execvp(argv.items[0], argv.items);
        else
            errno = ENOENT;
        int error = errno;
        if (debugConsole)
            debugConsole->Dump("ERROR: Could not exec process: %s", line.c_str());
        _exit(error);
    }

    int status = -1;
    if (capture) {
        close(pipeEnds[1]);
        status = readFileDescriptor(pipeEnds[0], *output);
        if (status != 0 && debugConsole)
            debugConsole->Dump("ERROR: Encountered errors in pipe with child process \"%s\" - Error: %d",
                line.c_str(), status);
        close(pipeEnds[0]);
        flags |= RUN_WAIT;
    }
    if (flags & RUN_ASYNCHRONOUS)
        pollChild(pid, status, progressUI, (flags & RUN_PROGRESS) != 0, pollMs);
    else if (flags & RUN_WAIT)
        waitpid(pid, &status, 0);
    else
        return TeskUtils::ErrorCode();
    return judgeStatus(status);
}
