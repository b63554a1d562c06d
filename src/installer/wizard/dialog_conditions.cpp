// The object conditions of dialogs: running applications and installed products.
#include "installer/wizard/dialog_conditions.h"

#include "installer/installer.h"
#include "installer/wizard/installer_ui.h"

DlgCondition::~DlgCondition() = default;

int DlgCondition::DisplayMessage(InstallerUI* ui, const char* text)
{
    if (!ui || !text)
        return -1;
    return ui->EndDecompress(text, true);
}

void RunningAppsCondition::addEntry(const char* name, const char* directory)
{
    Entry& entry = entries.append();
    entry.name = name;
    entry.directory = directory ? directory : "";
    entry.flags = 0;
}

void RunningAppsCondition::clearEntries()
{
    entries.freeData();
}

bool RunningAppsCondition::Eval(Installer* installer, InstallerUI* ui)
{
    if (!installer || !ui || entries.count == 0)
        return true;

    bool anyRunning = false;
    bool changed = false;
    for (Entry& entry : entries) {
        bool running = installer->isAppRunning(entry.name.data(), entry.directory.c_str());
        if (running)
            entry.flags |= APP_RUNNING;
        else
            entry.flags &= static_cast<unsigned char>(~APP_RUNNING);
        anyRunning = anyRunning || running;
        changed = changed || ((entry.flags & APP_SHOWN) != 0) != running;
    }
    if (!changed)
        return !anyRunning;

    ui->ClearList();
    for (Entry& entry : entries) {
        entry.flags &= static_cast<unsigned char>(~APP_SHOWN);
        if (entry.flags & APP_RUNNING) {
            ui->EndDecompress(entry.name.c_str(), false);
            entry.flags |= APP_SHOWN;
        }
    }
    ui->EndDecompress(nullptr, true);
    return !anyRunning;
}

void ExternalInstallationCondition::addEntry(const char* name, unsigned int flags)
{
    Entry& entry = entries.append();
    entry.name = name;
    entry.flags = flags;
}

void ExternalInstallationCondition::clearEntries()
{
    entries.freeData();
}

bool ExternalInstallationCondition::Eval(Installer* installer, InstallerUI* ui)
{
    if (!ui || !installer)
        return true;
    for (const Entry& entry : entries) {
        if (installer->IsInstalled(entry.name.data(), entry.flags))
            return false;
    }
    return true;
}
