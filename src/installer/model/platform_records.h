#pragma once
// Records that the install steps hand to the platform's operations for shortcuts and
// firewall rules.

// The kind of a shortcut: 0 and 1 a symbolic link ("Symlink"), 2 a launcher script ("File"),
// 3 a web launcher ("URL"), 4 a launcher script for the uninstaller ("Uninstall"). Values of
// 5 and above make nothing.
enum ShortcutType {
    SHORTCUT_LINK = 0,
    SHORTCUT_SYMLINK = 1,
    SHORTCUT_FILE = 2,
    SHORTCUT_URL = 3,
    SHORTCUT_UNINSTALL = 4,
};

// What an INI step does with its key: 1 adds (or sets) it.
enum INIAction {
    INI_ADD = 1,
};

// A firewall port exception: the port, the rule's name (at most 511 characters) and the
// protocols (bit value 1 TCP, 2 UDP).
struct FirewallPort
{
    long port = 0;
    char name[512] = {};
    unsigned protocols = 0;
};
