// LinuxInstaller's answers to "does this program run?" and "is this product installed?",
// which the dialog conditions and the default values ask, and the stopping of a program
// before its file is replaced.
#include <cerrno>
#include <csignal>
#include <cstring>

#include "foundation/misc/path_utils.h"
#include "foundation/misc/process_list.h"
#include "foundation/streams/pconsole.h"
#include "foundation/strings/tesk_utils.h"
#include "linux/linux_installer.h"

bool LinuxInstaller::isAppRunning(const char* name, const char* ignored)
{
    (void)ignored;
    if (!name)
        return false;
    TeskUtils::Table<int, 100> pids;
    TeskUtils::uniListProcessesMatching(name, pids);
    return pids.count > 0;
}

bool LinuxInstaller::terminateApp(const char* name, bool force, const char* path)
{
    (void)force;
    if (!name)
        return false;
    TeskUtils::Table<int, 100> pids;
    TeskUtils::uniListProcessesMatching(name, pids);
    // Only processes whose program lies below the given path are signalled: without a path
    // nobody is, so that a caller waiting for the program goes straight on.
    if (!path)
        return false;
    char directory[TeskUtils::kPathSize];
    TeskUtils::copyBounded(directory, path, sizeof directory);
    TeskUtils::uniCorrectPathString(directory);

    bool signalled = false;
    for (int i = 0; i < pids.count; ++i) {
        char program[TeskUtils::kPathSize];
        if (!getProcessFileName(program, sizeof program, pids[i]))
            continue;
        TeskUtils::uniCorrectPathString(program);
        if (!strstr(program, directory))
            continue;
        if (kill(pids[i], SIGTERM) == 0) {
            signalled = true;
        } else if (debugConsole) {
            debugConsole->Dump("WARNING: Failed to send kill signal to %d (%s)", pids[i], strerror(errno));
        }
    }
    return signalled;
}

bool LinuxInstaller::IsInstalled(const char* name, unsigned int flags)
{
    if (flags & 2) {
        // The name is a path template: installed means that the path exists.
        int length = name ? ExpandString(name, nullptr, 0, false) : 0;
        if (!name || length < 1) {
            if (name && debugConsole)
                debugConsole->Dump(
                    "ERROR: Could not expand the provided application name for existance check: %s", name);
            return false;
        }
        char* path = new char[length + 1];
        ExpandString(name, path, length + 1, false);
        bool exists = TeskUtils::uniPathOrFileExists(path) != 0;
        delete[] path;
        return exists;
    }

    char application[512];
    if (name)
        TeskUtils::copyBounded(application, name, sizeof(application));
    else if (GetAppName(application, sizeof(application)) != 0)
        application[0] = '\0';
    // PLACEHOLDER: the list of installed applications ("/var/log/quilb_installs") is not
    // read here yet; until its lookup joins the Linux layer no product counts as installed.
    return false;
}
