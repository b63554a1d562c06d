// The install run: one transaction that writes the files of the active file sets, records
// each of them in a temporary action log and backs up what it overwrites into a temporary
// container, runs the steps after the files, and finally puts the log and the container at
// the paths that the template names. A failed file or step never stops the run; the run
// reports at its end.
#include <cmath>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/misc/installer_file_utils.h"
#include "foundation/misc/installer_string_utils.h"
#include "foundation/streams/pconsole.h"
#include "foundation/streams/pfile_stream.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/exceptions.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/tokenize.h"
#include "installer/installer.h"
#include "installer/transaction/action_log.h"
#include "installer/transaction/backup_file.h"
#include "installer/transaction/file_copy.h"
#include "package/md5.h"

namespace {

// Files from this size on are never compared: they always count as different.
const long kLargestComparedFile = 0x40000000L;
// Files below this size (as packed) are expanded when their FN asks for it.
const int kExpansionLimit = 8192;

// The steps after the file loop, in their order, with the text that the front end shows
// and the failure messages name, and the step's bit in the run's error mask.
struct InstallStep
{
    const char* text;
    int bit;
};
const InstallStep kSteps[] = {
    { "Updating environment variables", 1 },
    { "Updating .ini files", 2 },
    { "Modifying files", 4 },
    { "Creating shortcuts", 8 },
    { "Updating Firewall", 16 },
    { "Running additional installations", 32 },
};

// Copies `from` to `to` through 1024-byte blocks. `streamErrors` receives whether either
// stream reported an error. False only when a file could not be opened.
bool copyThroughBlocks(const char* from, const char* to, bool& streamErrors)
{
    streamErrors = false;
    FILE* source = fopen(from, "rb");
    if (!source)
        return false;
    FILE* target = fopen(to, "wb");
    if (!target) {
        fclose(source);
        return false;
    }
    char block[1024];
    size_t got;
    while ((got = fread(block, 1, sizeof block, source)) > 0) {
        if (fwrite(block, 1, got, target) != got)
            break;
    }
    streamErrors = ferror(source) || ferror(target);
    fclose(source);
    if (fclose(target) != 0)
        streamErrors = true;
    return true;
}

// The state of one file of the loop.
struct FileState
{
    char path[TeskUtils::kPathSize] = {};
    bool existed = false;
    bool differs = true;
    bool failed = false;
};

// Whether the file at `path` differs from packed data with digest `md5`. `existed`
// receives whether it could be opened. A file of 1 GiB or more, or one that can't be read
// whole, counts as different.
bool differsFromPacked(const char* path, const unsigned char (&md5)[16], bool& existed)
{
    PFileStream file;
    existed = false;
    if (file.Open(path, PFileStream::AccessRead, 1, PFileStream::OpenExisting) != 0)
        return true;
    existed = true;
    long size = file.Size();
    if (size < 0 || size >= kLargestComparedFile)
        return true;
    TeskUtils::PtrArray<unsigned char> content;
    unsigned char* data = content.allocArray(static_cast<int>(size) + 1);
    int read = 0;
    if (file.Read(data, static_cast<int>(size), read) != 0 || read != size)
        return true;
    unsigned char digest[16];
    CalcMD5Buf(data, static_cast<int>(size), digest);
    return memcmp(digest, md5, sizeof digest) != 0;
}

// Writes `size` bytes of `content` to the file's path; a busy executable that can't be
// opened is deleted and made anew once. False (with `failed` set) on any failure.
bool writeInstalledFile(
    Installer& engine, InstallerUI* ui, FileState& file, const unsigned char* content, int size)
{
    PFileStream out;
    int result = out.Create(file.path, 0);
    if (result != 0 && file.existed && engine.RetryExecutableDelete(ui, file.path, 2000))
        result = out.Create(file.path, 0);
    if (engine.debugLevel > 2 && engine.debugConsole)
        engine.debugConsole->Dump("+ Creating file \"%s\" (size = %d, iores = %d)", file.path, size, result);
    if (result != 0) {
        file.failed = true;
        return false;
    }
    int written = 0;
    result = out.Write(content, size, written);
    out.Close();
    if (result != 0 || written < size) {
        if (engine.debugLevel > 2 && engine.debugConsole)
            engine.debugConsole->Dump(
                "- ERROR: Writing file failed (iores = %d, written = %d)", result, written);
        file.failed = true;
        return false;
    }
    return true;
}

} // namespace

bool copyFile(const char* from, const char* to)
{
    bool streamErrors;
    return copyThroughBlocks(from, to, streamErrors);
}

bool Installer::copyFile(const char* from, const char* to)
{
    bool streamErrors;
    return copyThroughBlocks(from, to, streamErrors) && !streamErrors;
}

void Installer::applyCustomFileProcessing(const char* path, const FILENAMES& record)
{
    (void)path;
    (void)record;
}

int Installer::RetryExecutableDelete(InstallerUI* ui, const char* path, unsigned timeoutMs)
{
    char name[200];
    TeskUtils::copyBounded(name, TeskUtils::fileNamePart(path), sizeof name);

    struct stat info;
    if (stat(path, &info) != 0 || !(info.st_mode & S_IXUSR))
        return false;

    if (isAppRunning(name, nullptr)
        && (terminateApp(name, false, nullptr) || terminateApp(name, true, nullptr))) {
        unsigned step = timeoutMs / 20 < 50 ? timeoutMs / 20 : 50;
        unsigned waited = 0;
        while (isAppRunning(name, nullptr) && waited <= timeoutMs) {
            waited += step;
            usleep(step * 1000);
            if (ui)
                ui->Idle();
        }
    }
    return InstallerFileUtils::remove(path) == 0;
}

int Installer::DoInstall(InstallerUI* ui)
{
    if (!uninstallerCalled) {
        try {
            callUninstaller(ui);
        } catch (const GenericError& failure) {
            if (debugConsole)
                debugConsole->Dump("%s", failure.what());
        }
    }

    char tempLog[TeskUtils::kPathSize] = {};
    if (GetTempFile(tempLog, sizeof tempLog) != 0) {
        if (debugConsole)
            debugConsole->Dump("ERROR: Obtaining temp filename for install temp log!");
        return -1;
    }
    actionLog.Create(tempLog, 0);
    actionLog.flags = 0;

    char tempBackup[TeskUtils::kPathSize] = {};
    if (GetTempFile(tempBackup, sizeof tempBackup) != 0) {
        if (debugConsole)
            debugConsole->Dump("ERROR: Obtaining temp filename for install temp backup!");
        actionLog.Done();
        InstallerFileUtils::remove(tempLog);
        return -1;
    }
    BackupFile backup;
    backup.OpenWrite(tempBackup);

    char headPath[TeskUtils::kPathSize];
    GetUninstallXMLFile(headPath, sizeof headPath);
    actionLog.Dump("%s", headPath);
    GetInstallBackupFile(headPath, sizeof headPath);
    actionLog.Dump("%s", headPath);
    WriteVars(actionLog);

    if (ui)
        ui->ProgressStart();

    bool fileErrors = false;
    const int n = fileNames.count;
    for (int i = 0; i < n; ++i) {
        const FILENAMES& record = fileNames[i];
        if (installFile(ui, record, i, n, backup))
            fileErrors = true;
    }
    if (ui)
        ui->EndDecompress(nullptr, true);

    int stepErrors = 0;
    for (const InstallStep& step : kSteps) {
        if (ui)
            ui->SetDestination(step.text);
        int outcome;
        switch (step.bit) {
        case 1:
            outcome = UpdateEnv(actionLog, ui);
            break;
        case 2:
            outcome = UpdateINI(actionLog, ui);
            break;
        case 4:
            outcome = ModifyFiles(actionLog, ui);
            break;
        case 8:
            outcome = UpdateShortcuts(actionLog, ui);
            break;
        case 16:
            outcome = UpdateFirewall(actionLog, ui);
            break;
        default:
            outcome = RunFiles(ui, "AdditionalInstall");
            break;
        }
        if (outcome != 0)
            stepErrors |= step.bit;
    }

    if (updateCleanupLog() != 0 && debugConsole)
        debugConsole->Dump("ERROR: Could not update the installation cleanup log.");

    const bool failed = fileErrors || stepErrors != 0;
    if (ui) {
        ui->SetOverallProgress(100);
        ui->ProgressEnd();
        ui->EndDecompress(nullptr, true);
        ui->SetDestination(
            failed ? "There were errors during the installation." : "The installation was successful.");
    }
    actionLog.Done();
    backup.Close();

    if (failed && !(ui && ui->IgnoreErrors()))
        reportInstallFailure(ui, stepErrors);

    placeInstallFiles(tempLog, tempBackup);
    return failed ? -1 : 0;
}

void Installer::reportInstallFailure(InstallerUI* ui, int stepErrors)
{
    if (debugConsole) {
        debugConsole->Dump("WARNING: An error ocurred during installation");
        for (const InstallStep& step : kSteps)
            if (stepErrors & step.bit)
                debugConsole->Dump("ERROR: Encountered an error during %s", step.text);
    }
    setControlVariable(CV_INSTALL_ERROR, "1");
    installFailed = true;
    for (const InstallStep& step : kSteps) {
        if (!(stepErrors & step.bit))
            continue;
        char row[sizeof(LogCollector::Row::text)];
        snprintf(row, sizeof row, "Error during: %s", step.text);
        logCollector.AddEntry(row);
    }
    logCollector.OutputLogCollection(ui, "Encountered errors during installation:");
}

void Installer::placeInstallFiles(const char* tempLog, const char* tempBackup)
{
    char target[TeskUtils::kPathSize];
    GetInstallLogFile(target, sizeof target);
    InstallerFileUtils::remove(target);
    if (InstallerFileUtils::rename(tempLog, target) != 0)
        copyFile(tempLog, target);
    GetInstallBackupFile(target, sizeof target);
    copyFile(tempBackup, target);
    InstallerFileUtils::remove(tempLog);
    InstallerFileUtils::remove(tempBackup);
}

bool Installer::installFile(
    InstallerUI* ui, const FILENAMES& record, int index, int count, BackupFile& backup)
{
    if (!record.dest[0])
        return false;
    if (record.condition[0] && EvalCondition(record.condition) == 0)
        return false;
    if (record.fileSet >= 0 && record.fileSet < fileSets.count) {
        const char* setCondition = fileSets[record.fileSet].condition;
        if (setCondition[0] && EvalCondition(setCondition) == 0)
            return false;
    }

    bool fileErrors = false;
    const bool refresh = index % 32 == 31;
    char directory[TeskUtils::kPathSize] = {};
    if (ExpandString(record.dest, directory, sizeof directory, false) == 0) {
        fileErrors = true;
        if (debugConsole)
            debugConsole->Dump(
                "ERROR: Expanding full destination of a file: %s (alias: %s)", record.dest, record.alias);
    }
    if (strchr(directory, '\\') && debugConsole)
        debugConsole->Dump(
            "WARNING: File destination containing escape characters on Unix system: %s (alias %s)", directory,
            record.alias);
    TeskUtils::appendBounded(directory, "/", sizeof directory);
    TeskUtils::removeDoubleSlashes(directory);

    int created = 0;
    if (InstallerFileUtils::RecursiveCreateDirFromFileName(directory, created) != 0)
        fileErrors = true;
    if (created > 0)
        ActionLog::writeDir(actionLog, created, directory);

    FileState file;
    TeskUtils::copyBounded(file.path, directory, sizeof file.path);
    TeskUtils::appendBounded(file.path, "/", sizeof file.path);
    TeskUtils::appendBounded(file.path, record.name, sizeof file.path);
    TeskUtils::removeDoubleSlashes(file.path);
    if (record.executable && record.stripExeExt)
        InstallerStringUtils::stripExt(file.path);
    if (ui)
        ui->SetDestination(file.path);

    int packed = -1;
    for (int k = cabinetFiles.count - 1; k >= 0; --k) {
        if (!strcmp(cabinetFiles[k].alias, record.alias)) {
            packed = k;
            break;
        }
    }
    int size = 0;
    TeskUtils::PtrArray<unsigned char> data;
    unsigned char md5[16] = {};
    if (packed < 0 || Decompress(packed, size, data, &md5) != 0) {
        if (!record.okIfMissing) {
            fileErrors = true;
            if (debugConsole)
                debugConsole->Dump(
                    "ERROR: File missing from the compressed cabinet! (alias: %s)", record.alias);
        }
        return fileErrors;
    }

    file.differs = differsFromPacked(file.path, md5, file.existed);

    if (file.existed && file.differs && record.backupExisting) {
        unsigned checksum = BackupFile::checksum(data.data, size);
        if (ui)
            ui->StartDecompress();
        TeskUtils::ErrorCode error = backup.addFile(file.path, TeskUtils::kPathSize, checksum, true);
        char message[1100];
        if (!error) {
            snprintf(message, sizeof message, "Back up %s", file.path);
        } else {
            snprintf(message, sizeof message, "FAILED to back up %s: %s", file.path,
                error.getErrorString().c_str());
            logCollector.AddEntry(message);
            fileErrors = true;
        }
        if (ui)
            ui->EndDecompress(message, refresh);
    }

    if (record.log & LOG_DEST_UNINSTALL)
        ActionLog::writeFile(actionLog, record.backupExisting, file.path);
    if (record.log & LOG_DEST_CLEANUP)
        addCleanupFile(file.path);

    if (ui)
        ui->StartDecompress();

    const unsigned char* content = data.data;
    TeskUtils::PtrArray<unsigned char> expanded;
    if (record.expandVarsInFile && size < kExpansionLimit) {
        data.data[size] = '\0';
        unsigned char* text = expanded.allocArray(kExpansionLimit);
        text[0] = '\0';
        ExpandString(
            reinterpret_cast<const char*>(data.data), reinterpret_cast<char*>(text), kExpansionLimit, false);
        size = static_cast<int>(strnlen(reinterpret_cast<char*>(text), kExpansionLimit));
        content = text;
    }

    if (!(file.existed && !file.differs) && !writeInstalledFile(*this, ui, file, content, size))
        fileErrors = true;
    if (!file.failed)
        applyCustomFileProcessing(file.path, record);

    if (ui) {
        ui->SetOverallProgress(static_cast<int>(std::ceil(static_cast<float>(index) / count * 100)));
        char message[1100];
        snprintf(message, sizeof message, "%s%s%s", file.failed ? "FAILED to " : "",
            file.existed && file.differs ? "Overwrite " : "Create ", file.path);
        if (file.failed)
            logCollector.AddEntry(message);
        ui->EndDecompress(message, refresh);
    } else if (file.failed) {
        char message[1100];
        snprintf(message, sizeof message, "FAILED to %s%s",
            file.existed && file.differs ? "Overwrite " : "Create ", file.path);
        logCollector.AddEntry(message);
    }
    return fileErrors;
}
