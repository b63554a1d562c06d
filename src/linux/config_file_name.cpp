// The name of the configuration file that -configFile= gave, kept for the default values.
#include "foundation/strings/bounded_copy.h"
#include "linux/linux_installer.h"

int LinuxInstaller::getConfigFileName(char* buffer, int size)
{
    if (buffer && size >= 1)
        TeskUtils::copyBounded(buffer, configFileName, static_cast<size_t>(size));
    return 1;
}

void LinuxInstaller::setConfigFileName(const char* name)
{
    if (!name)
        return;
    TeskUtils::copyBounded(configFileName, name, sizeof(configFileName));
}
