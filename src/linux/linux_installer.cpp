#include "linux/linux_installer.h"

#include <sys/stat.h>
#include <unistd.h>

#include "foundation/misc/installer_file_utils.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/path_size.h"

LinuxInstaller::LinuxInstaller(int uiMode_, bool automated_, VarsJournal* journal_, EnvCache* cache_)
    : automated(automated_)
    , uiMode(uiMode_)
    , journal(journal_)
    , cache(cache_)
{
}

LinuxInstaller::~LinuxInstaller() = default;

int LinuxInstaller::GetTempFile(char* buffer, int size)
{
    char path[TeskUtils::kPathSize];
    InstallerFileUtils::getTempFolder(path, sizeof path);
    TeskUtils::appendBounded(path, "/tesktemp_XXXXXX", sizeof path);
    int fd = mkstemp(path);
    if (fd == -1)
        return -1;
    close(fd);
    if (buffer && size > 0)
        TeskUtils::copyBounded(buffer, path, static_cast<size_t>(size));
    return 0;
}

void LinuxInstaller::applyCustomFileProcessing(const char* path, const FILENAMES& record)
{
    if (record.executable)
        chmod(path, 0755);
}
