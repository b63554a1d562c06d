// The engine's own versions of the operations that the shortcut, INI and firewall steps ask
// of the platform. Here no platform is at hand: nothing is made, and the steps see failures
// (or, for the undo of an INI change, nothing to do). LinuxInstaller fills them in.
#include "installer/installer.h"

bool Installer::createShortcut(ShortcutType type, const char* path, const char* target,
    const char* description, const char* arguments, const char* startPath, const char* iconPath, char* record,
    int recordSize, unsigned elevate, InstallerUI* ui)
{
    (void)type;
    (void)path;
    (void)target;
    (void)description;
    (void)arguments;
    (void)startPath;
    (void)iconPath;
    (void)elevate;
    (void)ui;
    if (record && recordSize > 0)
        record[0] = '\0';
    return false;
}

bool Installer::undoShortcut(const char* record, InstallerUI* ui)
{
    (void)record;
    (void)ui;
    return false;
}

bool Installer::doIniFile(const char* file, const char* section, const char* key, const char* value,
    INIAction action, char* record, int recordSize, InstallerUI* ui, int isPath, const char* beforeKey)
{
    (void)file;
    (void)section;
    (void)key;
    (void)value;
    (void)action;
    (void)record;
    (void)recordSize;
    (void)ui;
    (void)isPath;
    (void)beforeKey;
    return true;
}

bool Installer::undoIniFile(const char* record, InstallerUI* ui)
{
    (void)record;
    (void)ui;
    return true;
}

int Installer::addFirewallApp(const char* path, const char* name)
{
    (void)path;
    (void)name;
    return 2;
}

int Installer::removeFirewallApp(const char* record)
{
    (void)record;
    return 2;
}

int Installer::addFirewallPort(const FirewallPort& port)
{
    (void)port;
    return 2;
}

int Installer::removeFirewallPort(const char* record)
{
    (void)record;
    return 2;
}
