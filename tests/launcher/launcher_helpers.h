#pragma once
// Scaffolding for tests that run real installers: front ends as small shell scripts that
// record how they were called, the launcher's file list, and the packing of both into an
// installer by quilb_pack.
#include <functional>
#include <string>
#include <vector>

#include "support/paths.h"
#include "support/process.h"

namespace quilbtest {

// How a scripted front end behaves.
struct FrontEndScript
{
    int testRunExit = 0; // exit code when called with "-testRun" as first argument
    int runExit = 0; // exit code of a real run
    int runSignal = 0; // when non-zero, a real run ends by this signal instead
};

// A shell script that answers "-testRun" with `behaviour.testRunExit` (and notes the call in
// `<recordDir>/tested`), and in a real run writes to `<recordDir>/<name>.run` its arguments
// ("arg: ..." lines, $0 first), "dir: $QUILB_INSTALLER_DIR" and "bin: <content of the file
// named by -bin=>", then exits as told. With an empty `recordDir` it records nothing.
std::string frontEndScriptText(
    const std::string& recordDir, const std::string& name, const FrontEndScript& behaviour);

// What a scripted front end recorded in a real run; `ran` is false when it never ran.
struct FrontEndRecord
{
    bool ran = false;
    std::vector<std::string> args; // argv, $0 first
    std::string installerDir; // QUILB_INSTALLER_DIR
    std::string binContent; // content of the -bin= file as the front end saw it
};
FrontEndRecord readFrontEndRecord(const std::string& recordDir, const std::string& name);

// Names of the front ends called with "-testRun", in order.
std::vector<std::string> testedFrontEnds(const std::string& recordDir);

// One file of the outer package.
struct PackedFile
{
    std::string alias;
    std::string content;
};

// The launcher's file list and the files it names.
struct InstallerContent
{
    std::string fileList; // stored under the alias "install.xml"
    std::vector<PackedFile> files;
};

// One `FN` line of a file list.
std::string fnElement(const std::string& alias, const std::string& dest, const std::string& source,
    const std::string& extraAttributes = "");

// A file list with a `FileSet` holding `elements` as they stand.
std::string fileListXml(const std::string& elements);

// The usual content: "binary" (text `binaryText`) and the three installer front ends as
// scripts behaving as given, all with Dest "install_files", the programs Executable.
InstallerContent standardContent(const std::string& recordDir, const FrontEndScript& gtk2,
    const FrontEndScript& x11, const FrontEndScript& console,
    const std::string& binaryText = "product package");

// Packs `content` behind the built launcher into an executable installer at `path`.
// Returns false, with the packer's output in `log`, when quilb_pack fails.
bool buildInstaller(const InstallerContent& content, const std::string& path, std::string* log = nullptr);

// Runs `program` with `args` (each quoted), in `workDir`, without core dumps, and gives what
// a user would see.
CommandResult runProgram(
    const std::string& program, const std::vector<std::string>& args, const std::string& workDir);

// A fresh directory holding one installer packed from `content`, as "installer".
struct PackedInstaller
{
    TempDir work;
    std::string dir; // real path of the directory, as the launcher sees its own
    std::string installer; // dir + "/installer"
    bool built = false;
    std::string packLog; // what quilb_pack said

    explicit PackedInstaller(const InstallerContent& content);
    CommandResult run(const std::vector<std::string>& args = {}) const
    {
        return runProgram(installer, args, dir);
    }
    // True when the directory holds the installer and nothing else.
    bool onlyInstallerLeft() const;
};

// Every path below `dir` (files and directories, relative, sorted).
std::vector<std::string> listTree(const std::string& dir);

// The support address the launcher was built with (from the build's CMake cache).
std::string supportAddress();

// Unpacks the record stream of an installer whose launcher image is `imageSize` bytes long,
// lets `edit` change it, and packs it again as one chunk with a fresh trailer. False when
// the container can't be read.
bool editRecordStream(std::string& installer, long imageSize, const std::function<void(std::string&)>& edit);

// The v2 trailer: digest of bytes 5000 up to the marker, recomputed after an edit.
void rewriteTrailer(std::string& installer);

} // namespace quilbtest
