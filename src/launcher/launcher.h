#pragma once
// Internal interface of the launcher program: the records of its file list, the state that
// its steps share, and the steps themselves. Nothing outside src/launcher includes this.
//
// The launcher is one executable with a package appended behind its image. It checks its
// own file, unpacks the front ends and the product package, hands over to the first front
// end that answers "-testRun" with exit code 0, waits for it and removes what it wrote.
// Everything runs on the main thread; child processes come from fork and execvp.

#include "foundation/misc/installer_file_utils.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/tesk_utils.h"

class LinuxInstaller;

namespace Launcher {

// One file of the launcher's file list. Copied bytewise as a table element.
struct FileInfo
{
    char alias[520]; // cabinet alias; for -unpack= entries the text after the '='
    char fileName[TeskUtils::kPathSize]; // name under which the file is written
    char destination[TeskUtils::kPathSize]; // unpackDirectory + "/" + Dest
    bool unpack; // to be unpacked; after unpacking: it exists on disk
    bool okIfMissing; // a failure to decompress it is no error
    bool executable; // gets mode 0775
};

// A rename from the file list: files with `alias` are written as `newName` (expanded).
struct RenameEntry
{
    char alias[520];
    char newName[TeskUtils::kPathSize];
};

// ---- Shared state (launcher_main.cpp) ----------------------------------------------------
extern char pathToExecutable[TeskUtils::kPathSize]; // directory of the running launcher, with trailing slash
extern char unpackDirectory[TeskUtils::kPathSize]; // where everything is unpacked; empty at start
extern bool quiet; // no progress lines
extern bool customFiles; // -unpack= given: unpack the selected files only, run nothing
extern TeskUtils::Table<FileInfo, 100> xmlFiles; // the file list, in document order
extern TeskUtils::Table<FileInfo, 100> selectedFiles; // aliases named by -unpack=
extern TeskUtils::Table<RenameEntry, 100> renames; // renames read from the file list
extern TeskUtils::Table<InstallerFileUtils::DirInfo, 100> createdDirs; // dirs made, with levels

// Builds "%s/%s" of the file's destination and name in `out` (520 bytes), slashes collapsed.
void formFullPath(const FileInfo& file, char (&out)[TeskUtils::kPathSize]);
// Prints `line` with puts, quiet or not, and flushes at once.
void sayLine(const char* line);

// ---- Main flow (launcher_main.cpp) ---------------------------------------------------------
// Chooses unpackDirectory: beside the launcher, else "/tmp/tesk_install_dir". Non-zero on
// success.
int FindUnpackDirectory();
// Reads -unpack=, -quiet, -quiet=N and -configFile=. Always 0.
int ParseCmdLine(int argc, char** argv);
// Checks the file's trailer and loads the package at `offset`. 0, -1 when the own path
// can't be read, -26 on a checksum mismatch, or the code of Installer::Init.
int InitInstaller(LinuxInstaller& installer, int offset);
// Removes the unpacked files and the directories made for them, reporting each.
void CleanFiles();

// ---- File list and unpacking (file_sets.cpp) -----------------------------------------------
// Reads the list under the alias "install.xml" into renames and xmlFiles. 0, -1 when the
// list is not in the cabinet, or the XML reader's failure. A list without "FileSet" gives 0.
int ParseLauncherXml(LinuxInstaller& installer);
// Writes every file marked for unpacking. 0; 1 when a file could not be written; or the
// directory failure of the last file handled.
int UnpackFiles(LinuxInstaller& installer);

// ---- Front ends (front_ends.cpp) -----------------------------------------------------------
// Index into xmlFiles of the first front end (gtk2, x11, console) that answers "-testRun"
// with exit code 0, or -1.
int TestInstallers();
// 1 when the program of argv[0] ran with argv and ended with wait status 0.
int IsExecutable(int argc, char* const* argv);
// Runs the front end with the launcher's arguments and "-bin=<binary>"; the raw wait status.
int RunWithArgs(const FileInfo& installer, const FileInfo& binary, int argc, char** argv);

} // namespace Launcher
