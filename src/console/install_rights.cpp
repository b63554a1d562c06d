#include "console/install_rights.h"

#include <cstdio>

#include "foundation/misc/permissions.h"
#include "foundation/misc/shell_utils.h"
#include "foundation/streams/pconsole.h"
#include "linux/linux_installer.h"

namespace {

// Starts this program again as root with the same arguments and "-child". Returns only when
// that failed.
void restartAsRoot(int argc, char** argv, PConsole* log)
{
    LinuxInstaller::saveUserEnvironment();
    if (log)
        log->Dump("Priveleges error, trying workaround with root privileges");
    const char** childArgv = new const char*[argc + 2];
    for (int i = 0; i < argc; ++i)
        childArgv[i] = argv[i];
    childArgv[argc] = "-child";
    childArgv[argc + 1] = nullptr;
    // A terminal program: sudo or su, never a graphical tool.
    ShellUtils::execSuperuserCmd(argc + 1, childArgv, false);
    delete[] childArgv;
    puts("ERROR: opening with root privileges");
    fflush(stdout);
    if (log)
        log->Dump("ERROR: Unsuccessfull starting with root privileges");
}

} // namespace

void ensureInstallRights(bool child, int argc, char** argv, PConsole* log)
{
    if (have_install_permissions()) {
        // Elevated by our own restart the identity is there already; started as root
        // directly (by sudo, pkexec or root itself) it is derived here.
        if (LinuxInstaller::checkOriginalUserEnvironment() == 0)
            return;
        unsigned mask = LinuxInstaller::saveElevatedEnvironment();
        if (mask && log)
            log->Dump("ERROR: Saving elevated environment: %s",
                LinuxInstaller::environmentErrorStringFromMask(mask).c_str());
        return;
    }
    if (!child)
        restartAsRoot(argc, argv, log);
}
