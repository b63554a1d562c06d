// Operations that the engine's start, the default values, the wizard and the install run
// already call at their place, but whose work belongs to other parts of the engine. Until
// those land, each body here reports "nothing found" or "nothing done", so that a run
// behaves as on a machine where nothing was ever installed. Every such body carries the
// marker PLACEHOLDER, so that
//     grep -rn PLACEHOLDER src
// lists what remains.
#include "foundation/streams/pconsole.h"
#include "installer/installer.h"

// PLACEHOLDER: filled in with the list of installed applications.
int Installer::getInstallationCount() const
{
    return 0;
}

// PLACEHOLDER: filled in with the detection of earlier installations of the product and of its legacy
// names.
int Installer::CheckPreviousInstallation(InstallerUI* ui, int flag)
{
    (void)ui;
    (void)flag;
    previousInstallState = 0;
    legacyCount = 0;
    return 0;
}

// PLACEHOLDER: filled in with the action log reader: the variables of the installed copy.
int Installer::InitValuesFromLog(const char* logPath)
{
    (void)logPath;
    return 0;
}

// PLACEHOLDER: filled in with the detection of earlier installations known only by their action logs.
bool Installer::CheckDefaultPreviousInstallation(int flag)
{
    (void)flag;
    legacyLogCount = 0;
    return false;
}

// PLACEHOLDER: filled in with the detection of foreign products that must be removed first.
int Installer::CheckExternalInstallations()
{
    return 0;
}

// PLACEHOLDER: filled in with the list of installed applications.
bool Installer::getAppLogFileName(const char* name, char* out, int size)
{
    (void)name;
    if (out && size > 0)
        out[0] = '\0';
    return false;
}

// PLACEHOLDER: filled in with the integrated uninstall of older versions.
int Installer::callUninstaller(InstallerUI* ui)
{
    (void)ui;
    uninstallerCalled = true;
    return 0;
}

// PLACEHOLDER: filled in with the uninstall run.
int Installer::UnInstall(InstallerUI* ui, const char* backupFile)
{
    (void)ui;
    (void)backupFile;
    if (debugConsole)
        debugConsole->Dump("WARNING: Uninstalling is not available in this build");
    return 0;
}

// PLACEHOLDER: filled in with the uninstall run.
int Installer::prepareUninstall(InstallerUI* ui, const char* backupFile)
{
    (void)ui;
    (void)backupFile;
    return 0;
}

// PLACEHOLDER: filled in with the revert of a failed run.
int Installer::RevertInstall(InstallerUI* ui)
{
    (void)ui;
    return 0;
}

// PLACEHOLDER: filled in with the revert of a failed run.
int Installer::RevertUninstall(InstallerUI* ui)
{
    (void)ui;
    return 0;
}

// PLACEHOLDER: filled in with the list of installed applications; nothing is registered.
bool Installer::RegisterApplication()
{
    return false;
}

// PLACEHOLDER: filled in with the list of installed applications.
bool Installer::unregisterApplication(const char* name)
{
    (void)name;
    return false;
}

// PLACEHOLDER: filled in with the cleanup log.
void Installer::showCleanupDetails(InstallerUI* ui)
{
    (void)ui;
}

// PLACEHOLDER: filled in with the cleanup log.
int Installer::CleanupInstall(InstallerUI* ui)
{
    (void)ui;
    return 0;
}

// PLACEHOLDER: filled in with the cleanup log.
int Installer::updateCleanupLog()
{
    return 0;
}

// PLACEHOLDER: filled in with the cleanup log.
void Installer::addCleanupFile(const char* path)
{
    (void)path;
}

// PLACEHOLDER: filled in with the environment journal and its step.
int Installer::UpdateEnv(PConsole& log, InstallerUI* ui)
{
    (void)log;
    (void)ui;
    return 0;
}

// PLACEHOLDER: filled in with the INI step.
int Installer::UpdateINI(PConsole& log, InstallerUI* ui)
{
    (void)log;
    (void)ui;
    return 0;
}

// PLACEHOLDER: filled in with file modification.
int Installer::ModifyFiles(PConsole& log, InstallerUI* ui)
{
    (void)log;
    (void)ui;
    return 0;
}

// PLACEHOLDER: filled in with the shortcut step.
int Installer::UpdateShortcuts(PConsole& log, InstallerUI* ui)
{
    (void)log;
    (void)ui;
    return 0;
}

// PLACEHOLDER: filled in with the firewall step.
int Installer::UpdateFirewall(PConsole& log, InstallerUI* ui)
{
    (void)log;
    (void)ui;
    return 0;
}

// PLACEHOLDER: filled in with the list of installed applications.
int Installer::InstalledList(TeskUtils::Table<TeskUtils::CharString, 16>* hits, const char* name,
    const char* publisher, unsigned int flags)
{
    (void)hits;
    (void)name;
    (void)publisher;
    (void)flags;
    return 0;
}

// PLACEHOLDER: filled in with the uninstall of foreign products.
bool Installer::UnInstallApplication(
    const char* name, unsigned int flags, InstallerUI* ui, const char* arguments)
{
    (void)name;
    (void)flags;
    (void)ui;
    (void)arguments;
    return false;
}
