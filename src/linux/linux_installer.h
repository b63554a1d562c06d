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

    // The user's identity across the elevation (user_environment.cpp). The environment
    // variables that carry it:
    static const char* const kOriginalUidVar; // "QUILB_INSTALL_ORIGINAL_UID", real user id
    static const char* const kOriginalGidVar; // "QUILB_INSTALL_ORIGINAL_GID", real group id
    static const char* const kOriginalEgidVar; // "QUILB_INSTALL_ORIGINAL_EGID", effective group id
    static const char* const kOriginalUserNameVar; // "QUILB_INSTALL_ORIGINAL_USER_NAME", login name
    static const char* const kOriginalHomeVar; // "QUILB_INSTALL_ORIGINAL_HOME", home directory

    // Bits of the mask that the identity operations give; 0 means all went well.
    enum EnvironmentError : unsigned {
        kEnvMissing = 1, // a value was missing, rather than failing to apply
        kEnvUid = 2,
        kEnvGid = 4,
        kEnvEgid = 8,
        kEnvHome = 16,
        kEnvUser = 32,
    };

    // Stores this process's ids, login name and $HOME in the five variables (overwriting).
    // True only when all was stored and HOME was set.
    static bool saveUserEnvironment();
    // Which of the five variables are missing: each one adds its bit and bit value 1; 0 when
    // all are there.
    static unsigned checkOriginalUserEnvironment();
    // For a process that was started as root directly (by sudo, pkexec or root itself): the
    // variables derived from SUDO_USER, SUDO_UID and SUDO_GID, or, where SUDO_UID is missing,
    // from PKEXEC_UID and the password database; the home comes from the password database.
    // The mask of what could not be had (46 for a bare root); 0 when all was stored.
    static unsigned saveElevatedEnvironment();
    // Takes on the user's identity from the variables (group first, then user, then HOME),
    // falling back to SUDO_GID/SUDO_UID and the password database's home. Changes the process
    // for good: for children only. The mask of failures (bit value 1: values were missing).
    static unsigned restoreUserEnvironment();
    // "{uid, home}" for the bits of `mask` (bit value 1 has no name, so 1 gives "{}"); "" for 0.
    static TeskUtils::CharString environmentErrorStringFromMask(unsigned mask);

    // The process runner (process_runner.cpp). Starts `cmd` quoted, with `args` unchanged
    // behind it, or with RUN_OPEN opens the document `cmd` through "xdg-open" or a known
    // browser; the child gets back the calling user's environment unless RUN_AS_ROOT is set,
    // and is waited for, polled every `pollMs` with `progressUI` alive, or left running, as
    // `flags` say (see Installer::RunProgramFlags); with RUN_CAPTURE its standard output
    // goes into `output`. Extended parameters are logged and not acted on. An empty
    // ErrorCode on success; else -1 for an empty command, 1 for no browser, an errno for a
    // failed pipe or fork, the raw wait status of a child that did not exit, or its exit
    // code (an exec failure exits with its errno, a missing user environment with 1).
    TeskUtils::ErrorCode runProgram(const char* cmd, const char* args, unsigned flags, const char* workDir,
        InstallerUI* progressUI, unsigned pollMs, TeskUtils::CharString* output,
        const ExtendedRunProgramParams* ext) const override;
    // Reads `fd` to its end into `out` (also what came before a failure). 0 at the end of
    // the file, else the errno of the failed read.
    static int readFileDescriptor(int fd, TeskUtils::CharString& out);

    // Process and installation probes (app_probes.cpp).
    // True when a process whose program file is called `name` runs; the second argument
    // plays no part. False for a null name.
    bool isAppRunning(const char* name, const char* ignored) override;
    // Sends SIGTERM to every process of the program `name` whose program file lies below
    // `path`; `force` plays no part. Without a path nobody is signalled. True when at least
    // one signal went out; false for a null name or path.
    bool terminateApp(const char* name, bool force, const char* path) override;
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

    // Shortcuts (shortcuts.cpp). Types 0 and 1 make the symbolic link `path` to `target` (one
    // that exists already counts as made), types 2 and 4 a bash script that changes into
    // `startPath` and starts `target` with `arguments`, type 3 a script that opens the address
    // `target` in a browser found on PATH; 5 and above make nothing. `record` gets
    // "SYMLINK" or "SHORTCUT", a TAB, the path and a line break. False for a null path, a
    // link or file that could not be made, no browser, or an unknown type.
    bool createShortcut(ShortcutType type, const char* path, const char* target, const char* description,
        const char* arguments, const char* startPath, const char* iconPath, char* record, int recordSize,
        unsigned elevate, InstallerUI* progressUI) override;
    // Unlinks the path of a "SYMLINK" or "SHORTCUT" record. True when the record named a
    // path, whatever the unlink gave; false for any other record.
    bool undoShortcut(const char* record, InstallerUI* progressUI) override;

    // The help page (help_page.cpp), opened by a forked child as the original user, through
    // xdg-open or a browser. 0 once the child runs, -1 when fork failed.
    int EvHelp(InstallerUI* progressUI) override;

    // INI files and the other firewall operations keep the engine's defaults, which do
    // nothing (INI: true, firewall: 2). Adding a port also warns (platform_stubs.cpp).
    int addFirewallPort(const FirewallPort& port) override;

    // Set for the second object of an integrated uninstall, otherwise null.
    InstallerUI* ui = nullptr;
    bool automated;
    int uiMode;
    char configFileName[TeskUtils::kPathSize] = {};
    VarsJournal* journal;
    EnvCache* cache;
};
