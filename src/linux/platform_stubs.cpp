// The platform operations that this system leaves undone: INI files are a matter of other
// platforms, and no firewall is configured. The steps that call them see "nothing to undo"
// and "error".
#include "foundation/streams/pconsole.h"
#include "linux/linux_installer.h"

bool LinuxInstaller::doIniFile(const char* file, const char* section, const char* key, const char* value,
    INIAction action, char* record, int recordSize, InstallerUI* progressUI, int isPath,
    const char* beforeKey)
{
    (void)file;
    (void)section;
    (void)key;
    (void)value;
    (void)action;
    (void)record;
    (void)recordSize;
    (void)progressUI;
    (void)isPath;
    (void)beforeKey;
    return true;
}

bool LinuxInstaller::undoIniFile(const char* record, InstallerUI* progressUI)
{
    (void)record;
    (void)progressUI;
    return true;
}

int LinuxInstaller::addFirewallApp(const char* path, const char* name)
{
    (void)path;
    (void)name;
    return 2;
}

int LinuxInstaller::removeFirewallApp(const char* record)
{
    (void)record;
    return 2;
}

int LinuxInstaller::addFirewallPort(const FirewallPort& port)
{
    (void)port;
    if (debugConsole)
        debugConsole->Dump(
            "WARNING: Attempting to add firewall to system that doesn't support port exceptions!");
    return 2;
}

int LinuxInstaller::removeFirewallPort(const char* record)
{
    (void)record;
    return 2;
}
