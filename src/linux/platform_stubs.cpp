// The platform operations that this system leaves undone: INI files are a matter of other
// platforms, and no firewall is configured. The steps that call them see "nothing to undo"
// and "error".
#include "foundation/streams/pconsole.h"
#include "linux/linux_installer.h"

int LinuxInstaller::addFirewallPort(const FirewallPort& port)
{
    (void)port;
    if (debugConsole)
        debugConsole->Dump(
            "WARNING: Attempting to add firewall to system that doesn't support port exceptions!");
    return 2;
}
