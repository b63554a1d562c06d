// The launcher's main flow: its own path, the unpack directory, the command line, the
// integrity check and loading of the package, the hand-over and the clean-up.

#include "launcher/launcher.h"

#include "foundation/misc/permissions.h"
#include "foundation/misc/process_list.h"
#include "foundation/strings/path_size.h"
#include "linux/linux_installer.h"
#include "package/integrity_trailer.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifndef QUILB_SUPPORT_ADDRESS
#define QUILB_SUPPORT_ADDRESS "support@quilb.example"
#endif

// The package offset word, patched by the packing tool (image_offset.cpp).
extern char exportedoffset[20];

namespace Launcher {

char pathToExecutable[TeskUtils::kPathSize];
char unpackDirectory[TeskUtils::kPathSize];
bool quiet = false;
bool customFiles = false;
TeskUtils::Table<FileInfo, 100> xmlFiles;
TeskUtils::Table<FileInfo, 100> selectedFiles;
TeskUtils::Table<RenameEntry, 100> renames;
TeskUtils::Table<InstallerFileUtils::DirInfo, 100> createdDirs;

void formFullPath(const FileInfo& file, char (&out)[TeskUtils::kPathSize])
{
    TeskUtils::copyBounded(out, file.destination, sizeof out);
    TeskUtils::appendBounded(out, "/", sizeof out);
    TeskUtils::appendBounded(out, file.fileName, sizeof out);
    TeskUtils::removeDoubleSlashes(out);
}

void sayLine(const char* line)
{
    puts(line);
    fflush(stdout);
}

namespace {

const char kTmpUnpackDirectory[] = "/tmp/tesk_install_dir";

// Prints a progress line unless quiet, and flushes.
void progress(const char* line)
{
    if (!quiet)
        sayLine(line);
}

// Cuts the file name from a program path, keeping the slash before it. A path of fewer
// than two characters, or without a slash, stays whole.
void cutFileName(char* path)
{
    int length = static_cast<int>(strlen(path));
    for (int i = length - 2; i >= 0; --i) {
        if (path[i] == '/' || path[i] == '\\') {
            path[i + 1] = '\0';
            return;
        }
    }
}

// Reads the package offset that the packing tool patched into the image. The read goes
// through a volatile pointer so that no compiler ever folds the initial text into it.
bool readPackageOffset(int& offset)
{
    const volatile unsigned char* word = reinterpret_cast<const volatile unsigned char*>(exportedoffset);
    unsigned char bytes[4] = { word[0], word[1], word[2], word[3] };
    if (memcmp(bytes, "_BIN", 4) == 0)
        return false;
    offset = static_cast<int>(static_cast<unsigned int>(bytes[0]) | static_cast<unsigned int>(bytes[1]) << 8
        | static_cast<unsigned int>(bytes[2]) << 16 | static_cast<unsigned int>(bytes[3]) << 24);
    return true;
}

// Everything from loading the package to the hand-over, with the engine object alive
// throughout and destroyed on every way out.
int runWithInstaller(int argc, char** argv, int offset)
{
    LinuxInstaller installer(0, false, nullptr, nullptr);

    progress("Initializing...");
    int result = InitInstaller(installer, offset);
    if (result != 0) {
        sayLine("An error occured in installer initialization!");
        return result;
    }

    progress("Gathering file information...");
    result = ParseLauncherXml(installer);
    if (result != 0) {
        sayLine("An error occured in gathering installation information!");
        return result;
    }

    progress("Decompressing...");
    result = UnpackFiles(installer);
    if (result != 0) {
        sayLine("An error occured in decompressing installation files!");
        CleanFiles();
        return result;
    }

    if (customFiles)
        return 0;

    int chosen = TestInstallers();
    if (chosen == -1) {
        puts("No installer could be started. Please verify you have execution rights and try again.");
        CleanFiles();
        fflush(stdout);
        return -3;
    }

    const FileInfo* binary = nullptr;
    for (int i = 0; i < xmlFiles.count; ++i) {
        if (strcmp(xmlFiles[i].alias, "binary") == 0) {
            binary = &xmlFiles[i];
            break;
        }
    }
    if (!binary || !binary->unpack) {
        printf("The installer has no binary file or encountered problem decompressing it!\n"
               "Please download a new installer package or contact us at %s\n",
            QUILB_SUPPORT_ADDRESS);
        CleanFiles();
        fflush(stdout);
        return -3;
    }

    setenv("QUILB_INSTALLER_DIR", pathToExecutable, 1);
    int status = RunWithArgs(xmlFiles[chosen], *binary, argc, argv);
    CleanFiles();
    return status;
}

} // namespace

int FindUnpackDirectory()
{
    char probe[TeskUtils::kPathSize];
    TeskUtils::copyBounded(probe, pathToExecutable, sizeof probe);
    TeskUtils::appendBounded(probe, "testfile_XXXXXX", sizeof probe);
    if (try_create_and_delete_file(probe)) {
        TeskUtils::copyBounded(unpackDirectory, pathToExecutable, sizeof unpackDirectory);
        return 1;
    }

    if (!try_create_and_delete_file("/tmp/testfile_XXXXXX"))
        return 0;

    // Without a trailing slash the last level is not made here; the first file unpacked
    // makes it as part of its own directory, and records it for removal.
    int created = 0;
    if (InstallerFileUtils::RecursiveCreateDirFromFileName(kTmpUnpackDirectory, created) != 0) {
        printf("Error in creating dir: %s\n", kTmpUnpackDirectory);
        return 0;
    }
    TeskUtils::copyBounded(unpackDirectory, kTmpUnpackDirectory, sizeof unpackDirectory);
    if (created >= 1)
        createdDirs.append(InstallerFileUtils::DirInfo(kTmpUnpackDirectory, created));
    return 1;
}

int ParseCmdLine(int argc, char** argv)
{
    if (argc < 2)
        return 0;
    bool explicitSet = false;
    int explicitQuiet = 0;
    for (int i = 1; i < argc; ++i) {
        const char* arg = argv[i];
        if (strncmp(arg, "-unpack=", 8) == 0) {
            customFiles = true;
            FileInfo selected;
            memset(&selected, 0, sizeof selected);
            TeskUtils::copyBounded(selected.alias, arg + 8, sizeof selected.alias);
            selectedFiles.append(selected);
        } else if (strncmp(arg, "-quiet", 6) == 0) {
            quiet = true;
            int value = 0;
            if (strncmp(arg, "-quiet=", 7) == 0 && sscanf(arg, "-quiet=%d", &value) == 1) {
                explicitSet = true;
                explicitQuiet = value;
            }
        } else if (strncmp(arg, "-configFile=", 12) == 0) {
            quiet = true;
        }
    }
    if (explicitSet)
        quiet = explicitQuiet != 0;
    return 0;
}

int InitInstaller(LinuxInstaller& installer, int offset)
{
    char path[TeskUtils::kPathSize] = "";
    if (!getProcessFileName(path, sizeof path, 0))
        return -1;

    if (!quiet) {
        fputs("Verifying installer integrity...", stdout);
        fflush(stdout);
    }
    if (verifyFileMD5Checksum(path)) {
        progress("OK.");
        return installer.Init(path, offset, 0);
    }

    if (!quiet)
        puts("Failed!\n");
    printf("The checksum of the installer doesn't match. This could indicate a broken download.\n"
           "Please, try downloading again or contact us at %s\n",
        QUILB_SUPPORT_ADDRESS);
    fflush(stdout);
    return -26;
}

void CleanFiles()
{
    for (int i = 0; i < xmlFiles.count; ++i) {
        const FileInfo& file = xmlFiles[i];
        if (!file.unpack)
            continue;
        char path[TeskUtils::kPathSize];
        formFullPath(file, path);
        if (InstallerFileUtils::remove(path) != 0)
            printf("File: %s could not be deleted by the launcher. Please remove it manually.\n", path);
        else if (!quiet)
            printf("Deleted %s\n", path);
        fflush(stdout);
    }

    for (int i = createdDirs.count - 1; i >= 0; --i) {
        InstallerFileUtils::DirInfo& dir = createdDirs[i];
        if (dir.Delete(nullptr, nullptr, nullptr) != 0)
            printf("Directory: %s could not be removed by the launcher. Please remove it manually.\n",
                dir.path.c_str());
        else if (!quiet)
            printf("Removed directory: %s\n", dir.path.c_str());
        fflush(stdout);
    }
}

} // namespace Launcher

int main(int argc, char** argv)
{
    using namespace Launcher;

    if (getProcessFileName(pathToExecutable, sizeof pathToExecutable, 0))
        TeskUtils::removeDoubleSlashes(pathToExecutable);
    cutFileName(pathToExecutable);

    if (!FindUnpackDirectory()) {
        sayLine("The launcher could not find a directory for unpacking necessary files.\n"
                "Please start it in a directory with proper write rights or start it as root!");
        return -1;
    }

    int offset = 0;
    if (!readPackageOffset(offset)) {
        sayLine("The launcher can not be used without a packed fat binary!");
        return 1;
    }

    xmlFiles.freeData();
    selectedFiles.freeData();
    ParseCmdLine(argc, argv);

    return runWithInstaller(argc, argv, offset);
}
