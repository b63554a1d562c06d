// The engine's own versions of the platform questions that conditions and predefined
// variables ask. A platform subclass (LinuxInstaller) answers them for real; here nothing
// runs and nothing is installed.
#include <cstdlib>

#include "installer/installer.h"

bool Installer::isAppRunning(const char* name, const char* directory)
{
    (void)name;
    (void)directory;
    return false;
}

// The engine alone controls no process: a platform that can stop programs overrides this.
bool Installer::terminateApp(const char* name, bool force, const char* directory)
{
    (void)name;
    (void)force;
    (void)directory;
    return false;
}

bool Installer::IsInstalled(const char* name, unsigned int flags)
{
    (void)name;
    (void)flags;
    return false;
}

int Installer::runShellStatus(const char* command)
{
    return system(command);
}
