#pragma once
// LinuxInstaller: the engine on Linux. It fills in what the engine asks of the operating
// system: identity around elevation, shortcuts, process control, the list of installed
// applications and the environment journal.
#include "foundation/strings/char_string.h"
#include "foundation/strings/hash_map.h"
#include "foundation/strings/path_size.h"
#include "installer/installer.h"

class InstallerUI;
class VarsJournal;

class LinuxInstaller : public Installer
{
public:
    // The map of environment values set in this run, shared with the front end.
    typedef TeskUtils::HashMap<TeskUtils::CharString, 1, 1024, 0, 1000> EnvCache;

    // `uiMode` is the front end's -gui value (1 for a graphical one); `automated` means
    // no user at the keyboard. The journal and the cache belong to the caller and may be
    // null; the launcher passes 0 and null throughout.
    LinuxInstaller(int uiMode, bool automated, VarsJournal* journal, EnvCache* cache);
    ~LinuxInstaller() override;

    // Process and installation probes (app_probes.cpp).
    // True when a process whose program file is called `name` runs; the second argument
    // plays no part. False for a null name.
    bool isAppRunning(const char* name, const char* ignored) override;
    // With bit value 2 in `flags`: whether the path that `name` expands to exists.
    // Otherwise whether `name` (the product's own name for null) is registered as installed.
    bool IsInstalled(const char* name, unsigned int flags) override;

    // The configuration file named by -configFile= (config_file_name.cpp). get copies at
    // most size-1 characters (nothing for a size below 1) and always gives 1; set ignores
    // a null name and keeps at most 519 characters.
    int getConfigFileName(char* buffer, int size) override;
    void setConfigFileName(const char* name) override;

    // A fresh empty file "tesktemp_XXXXXX" in the temporary folder, its name copied into
    // `buffer` (at most size-1 characters); the caller removes it. 0, or -1 when mkstemp
    // failed (the buffer is untouched then).
    int GetTempFile(char* buffer, int size) override;
    // Makes a file written for an FN with Executable mode 0755.
    void applyCustomFileProcessing(const char* path, const FILENAMES& record) override;

    // Set for the second object of an integrated uninstall, otherwise null.
    InstallerUI* ui = nullptr;
    bool automated;
    int uiMode;
    char configFileName[TeskUtils::kPathSize] = {};
    VarsJournal* journal;
    EnvCache* cache;
};
