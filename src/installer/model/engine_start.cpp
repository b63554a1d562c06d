// The start of the engine: from a loaded cabinet (or an open action log) to the front
// end's StartUI, in a fixed order of steps, each announced in the log. Also the two ends
// of a run that a front end's main calls around it: the debug mode and Done.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "foundation/misc/installer_file_utils.h"
#include "foundation/streams/pbuf_stream.h"
#include "foundation/streams/pconsole.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/path_size.h"
#include "installer/installer.h"

namespace {

const char* const kTemplateFileName = "install.xml";

void logLine(PConsole* log, const char* text)
{
    if (log)
        log->Dump("%s", text);
}

// The index of the last cabinet record whose file name is `name`, or -1.
int findLastFileNamed(const TeskUtils::Table<CabinetFile, 100>& files, const char* name)
{
    for (int i = files.count - 1; i >= 0; --i) {
        if (strcmp(files[i].name, name) == 0)
            return i;
    }
    return -1;
}

// Cuts trailing white space.
void cutTrailingSpace(char* text)
{
    size_t length = strlen(text);
    while (length > 0 && isspace(static_cast<unsigned char>(text[length - 1])))
        text[--length] = '\0';
}

} // namespace

void Installer::InitDebugMode(PConsole* log, int level)
{
    debugConsole = log;
    debugLevel = level;
}

int Installer::GetPreviousInstall()
{
    return previousInstallState;
}

void Installer::setControlVariable(ControlVariable which, const char* value)
{
    const char* name = getControlVariableName(which);
    if (name && *name)
        SetVar(name, value);
}

int Installer::RunInstallerUI(InstallerUI* ui, PConsole* log)
{
    if (!ui) {
        logLine(log, "ERROR: No installer UI handler specified");
        return -1;
    }
    noteFrontEnd(*ui);
    const bool uninstall = logStream != nullptr;

    // The template's text, from the file that the action log names or from the cabinet.
    TeskUtils::PtrArray<unsigned char> templateData;
    int templateSize = 0;
    bool failed = false;
    if (uninstall) {
        logLine(log, "Reading installation file name from action log");
        char path[TeskUtils::kPathSize] = {};
        rewind(logStream);
        if (!fgets(path, sizeof(path), logStream) || !path[0]) {
            logLine(log, "ERROR: Could not obtain installation file from action log. Exiting!");
            return -1;
        }
        logLine(log, "Reading previous installation variables");
        if (ReadVars() != 0)
            logLine(log, "ERROR: Failed to read variables from log");
        cutTrailingSpace(path);
        logLine(log, "Reading installation file");
        if (InstallerFileUtils::ReadFileBuf(path, templateSize, templateData) != 0) {
            logLine(log, "ERROR: Failed reading installation file");
            failed = true;
        }
    } else {
        logLine(log, "Decompressing installation file");
        int index = findLastFileNamed(cabinetFiles, kTemplateFileName);
        if (index < 0 || Decompress(index, templateSize, templateData, nullptr) != 0) {
            logLine(log, "ERROR: Decompressing installation file");
            failed = true;
        }
    }
    if (failed) {
        logLine(log, "ERROR: Cannot continue due to error(s). Exiting!");
        return -1;
    }

    logLine(log, "Parsing installation file");
    PBufStream stream;
    stream.SetBuf(templateData.data, templateSize);
    if (templateXml.ParseStream(stream) != 0) {
        logLine(log, "ERROR: Parsing installation file. Exiting!");
        return -1;
    }

    logLine(log, "Getting product description");
    ProductDescription description;
    if (GetProductDesc(description) != 0)
        return -1;
    logLine(log, "Getting file sets");
    if (GetFilesInfo() != 0)
        return -1;
    if (guiInstall) {
        logLine(log, "Getting GUI colour theme info");
        ExtractColourThemeInfo();
    }
    logLine(log, "Getting UI dialogs");
    if (ExtractDialogsInfo(uninstall ? 1 : 0) != 0) {
        logLine(log, "ERROR: Getting dialogs info. Aborting!");
        return -1;
    }
    logLine(log, "Getting control variables names");
    ExtractControlVariableNames();
    InitExcludeVars();
    if (guiInstall) {
        logLine(log, "Initializing GUI colour theme");
        SetDlgThemeColours();
    }

    int installations = getInstallationCount();
    if (log)
        log->Dump("QuilbGroup installations found: %d", installations);
    char number[32];
    snprintf(number, sizeof(number), "%d", installations);
    setControlVariable(CV_INSTALLATIONS_COUNT, number);

    logLine(log, "Checking for previous and legacy installations for this product");
    bool productFound = CheckPreviousInstallation(ui, 0) == 1;
    if (productFound || legacyCount > 0)
        setControlVariable(CV_SHOULD_UNINSTALL, "1");
    if (productFound) {
        logLine(log, "Initializing previous install's variable values from log");
        InitValuesFromLog(nullptr);
    }

    logLine(log, "Initializing default values");
    if (InitDefValues(ui) != 0) {
        logLine(log, "ERROR: Parsing XML Default values (This may indicate wrong configuration file format)");
        return -1;
    }

    CheckDefaultPreviousInstallation(0);
    if (legacyCount > 0 || legacyLogCount > 0)
        setControlVariable(CV_LEGACY_INSTALLATION, "1");
    if (previousInstallState != 0) {
        char state[2] = { static_cast<char>('0' + previousInstallState % 10), '\0' };
        setControlVariable(CV_PREVIOUS_INSTALLATION, state);
        setControlVariable(CV_SHOULD_UNINSTALL, "1");
    }
    CheckExternalInstallations();

    currentDlg = 0;
    logLine(log, "Starting installation UI");
    int result = ui->StartUI();
    logLine(log, "Ending installation UI");
    ui->EndUI();
    if (result != 0)
        logLine(log, "ERROR: There were errors during the installation");
    return result;
}

void Installer::Done()
{
    freeCompressData();
    if (logStream) {
        fclose(logStream);
        logStream = nullptr;
    }
    // Later stages register the temporary files they make here (the temporary action log,
    // the backup container, unpacked helpers), so that an interrupted run leaves none.
    for (const TeskUtils::CharString& path : temporaryFiles) {
        if (!path.isNull() && path.length() > 0)
            unlink(path.c_str());
    }
    temporaryFiles.freeData();
}
