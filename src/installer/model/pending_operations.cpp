// Operations that the engine's start, the default values and the wizard already call at
// their place, but whose work belongs to other parts of the engine. Until those land, each
// body here reports "nothing found" (or, for the action sequences, only logs), so that a
// run behaves as on a machine where nothing was ever installed.
#include "foundation/streams/pconsole.h"
#include "installer/installer.h"

// Filled in with the list of installed applications.
int Installer::getInstallationCount() const
{
    return 0;
}

// Filled in with the detection of earlier installations of the product and of its legacy
// names.
int Installer::CheckPreviousInstallation(InstallerUI* ui, int flag)
{
    (void)ui;
    (void)flag;
    previousInstallState = 0;
    legacyCount = 0;
    return 0;
}

// Filled in with the action log reader: the variables of the installed copy.
int Installer::InitValuesFromLog(const char* logPath)
{
    (void)logPath;
    return 0;
}

// Filled in with the detection of earlier installations known only by their action logs.
bool Installer::CheckDefaultPreviousInstallation(int flag)
{
    (void)flag;
    legacyLogCount = 0;
    return false;
}

// Filled in with the detection of foreign products that must be removed first.
int Installer::CheckExternalInstallations()
{
    return 0;
}

// Filled in with the action log reader: the variable block of the open action log.
int Installer::ReadVars()
{
    return 0;
}

// Filled in with the list of installed applications.
bool Installer::getAppLogFileName(const char* name, char* out, int size)
{
    (void)name;
    if (out && size > 0)
        out[0] = '\0';
    return false;
}

// Filled in with the action log reader.
bool Installer::getLogFileVar(const char* logPath, const char* name, char* out, int outSize)
{
    (void)logPath;
    (void)name;
    (void)out;
    (void)outSize;
    return false;
}

// Filled in with the action sequences. Until then every sequence behaves as one that the
// template doesn't hold: announced, and nothing run.
int Installer::RunFiles(InstallerUI* ui, const char* tag)
{
    (void)ui;
    if (!tag)
        return -1;
    if (debugConsole)
        debugConsole->Dump("Running Files for installation tag: <%s>", tag);
    return 0;
}
