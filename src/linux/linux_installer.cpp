#include "linux/linux_installer.h"

LinuxInstaller::LinuxInstaller(int uiMode_, bool automated_, VarsJournal* journal_, EnvCache* cache_)
    : automated(automated_), uiMode(uiMode_), journal(journal_), cache(cache_)
{
}

LinuxInstaller::~LinuxInstaller() = default;
