// The help page of the product, opened in the user's browser by a process of its own, so
// that the wizard never waits for the browser.
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include "foundation/misc/shell_utils.h"
#include "foundation/streams/pconsole.h"
#include "linux/linux_installer.h"

namespace {

// Size of the help address and of the command line that opens it.
const int kUrlSize = 4096;

// True when the installer was raised from an ordinary user, whose group it carries.
bool haveOrdinaryUser()
{
    const char* gid = getenv(LinuxInstaller::kOriginalGidVar);
    return gid && atoi(gid) != 0;
}

} // namespace

int LinuxInstaller::EvHelp(InstallerUI* progressUI)
{
    (void)progressUI;
    pid_t pid = fork();
    if (pid == -1)
        return -1;
    if (pid != 0)
        return 0;

    // The child: the browser runs as the user who started the installer.
    char url[kUrlSize];
    if (GetInstallHelpURL(url, sizeof url) != 0)
        _exit(1);
    bool ordinaryUser = haveOrdinaryUser();
    unsigned mask = restoreUserEnvironment();
    if (mask && debugConsole)
        debugConsole->Dump("WARNING: Encoutered errors during user environment restore (mask: %x)", mask);

    char command[kUrlSize + 600];
    int status = 1;
    if (ordinaryUser && ShellUtils::CommandExists("xdg-open")) {
        snprintf(command, sizeof command, "xdg-open '%s'", url);
        status = system(command);
        if (status == 0)
            _exit(0);
    }
    char browser[512];
    if (get_useable_www_browser(browser, sizeof browser)) {
        snprintf(command, sizeof command, "%s '%s'", browser, url);
        status = system(command);
    }
    _exit(status == 0 ? 0 : 1);
}
