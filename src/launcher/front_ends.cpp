// Choice of the front end and the hand-over to it.

#include "launcher/launcher.h"

#include "foundation/strings/path_size.h"

#include <cstdio>
#include <cstring>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Launcher {

namespace {

// The front ends in the order in which they are tried.
const char* const kFrontEnds[] = { "installer_gtk2", "installer_x11", "installer_console" };

} // namespace

int TestInstallers()
{
    for (const char* alias : kFrontEnds) {
        int index = -1;
        for (int i = 0; i < xmlFiles.count; ++i) {
            if (xmlFiles[i].unpack && strncmp(xmlFiles[i].alias, alias, 520) == 0) {
                index = i;
                break;
            }
        }
        if (index < 0)
            continue;

        char path[TeskUtils::kPathSize];
        formFullPath(xmlFiles[index], path);
        char testRun[] = "-testRun";
        char* const args[] = { path, testRun, nullptr };
        if (IsExecutable(2, args)) {
            if (!quiet)
                printf("%s is a suitable installer. Installing...\n", path);
            fflush(stdout);
            return index;
        }
        if (!quiet)
            printf("%s could not be run. Trying other installer...\n", path);
        fflush(stdout);
    }
    return -1;
}

int IsExecutable(int argc, char* const* argv)
{
    if (argc < 1 || !argv)
        return 0;
    pid_t child = fork();
    if (child == 0) {
        // A loader's complaint about missing libraries is not for the user's eyes.
        close(2);
        execvp(argv[0], argv);
        _exit(-1);
    }
    int status = -1;
    if (child > 0)
        waitpid(child, &status, 0);
    return status == 0 ? 1 : 0;
}

int RunWithArgs(const FileInfo& installer, const FileInfo& binary, int argc, char** argv)
{
    int status = -1;
    pid_t child = fork();
    if (child == 0) {
        char path[TeskUtils::kPathSize];
        formFullPath(installer, path);
        char binArgument[4096];
        snprintf(binArgument, sizeof binArgument, "-bin=%s/%s", binary.destination, binary.fileName);
        TeskUtils::removeDoubleSlashes(binArgument);

        char** args = new char*[argc + 2];
        args[0] = path;
        for (int i = 1; i < argc; ++i)
            args[i] = argv[i];
        args[argc] = binArgument;
        args[argc + 1] = nullptr;
        execvp(args[0], args);
        sayLine("Error in executing the installer!");
        delete[] args;
        _exit(-2);
    }
    if (child > 0)
        waitpid(child, &status, 0);
    // Not decoded: the launcher exits with the low byte of this word.
    return status;
}

} // namespace Launcher
