#pragma once
// Object conditions of dialogs: tests of the machine's state that hold the wizard on a
// dialog until they pass. The stage work attaches them to dialogs (RunningApps,
// ExternalUninstall); the wizard asks them through GetDialogConditionEval.
#include "foundation/strings/char_string.h"
#include "foundation/strings/table.h"

class Installer;
class InstallerUI;

class DlgCondition
{
public:
    virtual ~DlgCondition();
    // True when nothing stands in the way of going on.
    virtual bool Eval(Installer* installer, InstallerUI* ui) = 0;
    // Adds `text` as a line to the front end's list (EndDecompress(text, true)) and gives
    // its result; -1 when the front end or the text is null.
    virtual int DisplayMessage(InstallerUI* ui, const char* text);
};

// Applications that must not run while the wizard goes on.
class RunningAppsCondition : public DlgCondition
{
public:
    enum {
        APP_SHOWN = 1, // the name stands in the list on screen
        APP_RUNNING = 2, // the application ran at the last test
    };

    struct Entry
    {
        TeskUtils::CharString name;
        TeskUtils::CharString directory; // expanded Directory attribute; empty when not given
        unsigned char flags = 0;
    };

    // Adds an application with flags 0. A null directory is stored as empty.
    void addEntry(const char* name, const char* directory);
    // Forgets all applications.
    void clearEntries();

    // Asks the engine's isAppRunning for each application and gives true when none runs.
    // The list on screen is rebuilt (ClearList, one EndDecompress(name, false) per running
    // application, EndDecompress(null, true)) only when what runs differs from what is
    // shown, so that polling doesn't flicker. True without asking for a null engine or
    // front end, or with no applications.
    bool Eval(Installer* installer, InstallerUI* ui) override;

    TeskUtils::Table<Entry, 16> entries;
};

// Other products that must not be installed while the wizard goes on.
class ExternalInstallationCondition : public DlgCondition
{
public:
    struct Entry
    {
        TeskUtils::CharString name;
        unsigned int flags = 0; // the flags for IsInstalled
    };

    void addEntry(const char* name, unsigned int flags);
    void clearEntries();

    // True when the engine's IsInstalled is false for every product; true without asking
    // for a null front end (or a null engine).
    bool Eval(Installer* installer, InstallerUI* ui) override;

    TeskUtils::Table<Entry, 16> entries;
};
