// The variable block of the action log: written at the head of a run, read back for an
// uninstall or for another product's defaults, and rewritten after post-install.
#include <cstdio>
#include <cstring>

#include "foundation/streams/pconsole.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/exceptions.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/tokenize.h"
#include "installer/installer.h"
#include "installer/transaction/action_log.h"

namespace {

const char kTab = '\t';
const char kCountKeyword[] = "NUMVARS";
const char kVariableKeyword[] = "VAR";
const char kTempLogName[] = "templog.log";

// Whether a record goes into the action log: it needs a name, and no exclude entry of
// that name may bar it from the log.
bool keptInLog(const Installer& installer, const VariableRecord& record)
{
    return record.name[0] && !installer.isVarExcluded(record.name, Installer::EXCLUDE_FROM_LOG);
}

int countKeptInLog(const Installer& installer)
{
    int count = 0;
    for (const VariableRecord& record : installer.variables) {
        if (keptInLog(installer, record))
            ++count;
    }
    return count;
}

// The body of getLogFileVar on an open log.
bool findLogVariable(FILE* stream, const char* name, char* out, int outSize)
{
    char line[ActionLog::kReadLineSize];
    do {
        if (!fgets(line, sizeof line, stream))
            return false;
    } while (!strstr(line, kCountKeyword));

    int count = 0;
    if (!ActionLog::parseCount(line, count) || count < 1)
        return false;
    for (int i = 0; i < count; ++i) {
        if (!fgets(line, sizeof line, stream))
            return false;
        ActionLog::stripTrailingSpace(line);
        char parsedName[VARIABLE_NAME_SIZE];
        char value[VARIABLE_VALUE_SIZE];
        if (!ActionLog::parseVariable(line, parsedName, sizeof parsedName, value, sizeof value))
            continue;
        if (strcmp(parsedName, name) != 0)
            continue;
        if (out && outSize >= 1)
            TeskUtils::copyBounded(out, value, static_cast<size_t>(outSize));
        return true;
    }
    return false;
}

// The temporary log beside `logPath`: its directory (up to and including the last '/' or
// '\') with "templog.log" behind it. False when that name doesn't fit or is the log itself.
bool makeTempLogName(const char* logPath, char (&out)[TeskUtils::kPathSize])
{
    TeskUtils::copyBounded(out, logPath, sizeof out);
    out[TeskUtils::fileNamePart(out) - out] = '\0';
    size_t directoryLength = strlen(out);
    if (TeskUtils::appendBounded(out, kTempLogName, sizeof out) != directoryLength + strlen(kTempLogName))
        return false;
    return strcmp(out, logPath) != 0;
}

// Copies `in` to `out` with its variable block replaced by the engine's present values.
void rewriteVariableBlock(const Installer& installer, FILE* in, FILE* out)
{
    char line[ActionLog::kVariableLineSize];

    // Everything in front of the block stays as it is; the count line goes.
    for (;;) {
        if (!fgets(line, sizeof line, in))
            throw InstallerError("ERROR: No variables in action file");
        if (strstr(line, kCountKeyword))
            break;
        fputs(line, out);
    }

    // The block ends at the first line without the letters of its keyword; the records
    // start there.
    long recordsStart = 0;
    do {
        recordsStart = ftell(in);
        if (!fgets(line, sizeof line, in))
            throw InstallerError("ERROR: No variables in action file");
    } while (strstr(line, kVariableKeyword));

    snprintf(line, sizeof line, "%s%c%i\r\n", kCountKeyword, kTab, countKeptInLog(installer));
    fputs(line, out);
    for (const VariableRecord& record : installer.variables) {
        if (!keptInLog(installer, record))
            continue;
        snprintf(
            line, sizeof line, "%s%c%s%c%s\r\n", kVariableKeyword, kTab, record.name, kTab, record.value);
        fputs(line, out);
    }

    // The records, byte for byte.
    fseek(in, recordsStart, SEEK_SET);
    size_t got;
    while ((got = fread(line, 1, sizeof line, in)) > 0)
        fwrite(line, 1, got, out);
}

} // namespace

int Installer::WriteVars(PConsole& log)
{
    log.Dump("%s%c%i", kCountKeyword, kTab, countKeptInLog(*this));
    for (const VariableRecord& record : variables) {
        if (keptInLog(*this, record))
            log.Dump("%s%c%s%c%s", kVariableKeyword, kTab, record.name, kTab, record.value);
    }
    return 0;
}

int Installer::ReadVars()
{
    try {
        return initValuesFromLogFile(logStream);
    } catch (const GenericError& error) {
        if (debugConsole)
            debugConsole->Dump("%s", error.what());
        return -1;
    }
}

bool Installer::getLogFileVar(const char* logPath, const char* name, char* out, int outSize)
{
    if (!logPath || !name)
        return false;
    FILE* stream = fopen(logPath, "rt");
    if (!stream)
        return false;
    bool found = findLogVariable(stream, name, out, outSize);
    fclose(stream);
    return found;
}

int Installer::initValuesFromLogFile(FILE* stream)
{
    if (!stream)
        throw InstallerError("ERROR: Invalid file handle for reading values from log!");
    if (fseek(stream, 0, SEEK_SET) != 0)
        throw InstallerError("ERROR: The file handle for reading values from log could not be reset!");

    char line[ActionLog::kVariableLineSize];
    do {
        if (!fgets(line, sizeof line, stream))
            throw InstallerError("ERROR: No variable number found in the provided log file!");
    } while (!strstr(line, kCountKeyword));

    int count = 0;
    if (!ActionLog::parseCount(line, count))
        throw InstallerError("ERROR: Error parsing the number of variables in log file!");
    if (count < 1)
        return 0;

    int result = 0;
    for (int i = 0; i < count; ++i) {
        if (!fgets(line, sizeof line, stream))
            throw InstallerError("ERROR: Encountered EOF before expected number of variables (%d)!", count);
        ActionLog::stripTrailingSpace(line);
        char name[VARIABLE_NAME_SIZE];
        char value[VARIABLE_VALUE_SIZE];
        if (ActionLog::parseVariable(line, name, sizeof name, value, sizeof value)) {
            SetVar(name, value);
            continue;
        }
        if (debugConsole)
            debugConsole->Dump("ERROR: Format error in variable format in log file (Read buff: %s)", line);
        result = 1;
    }
    return result;
}

void Installer::UpdateVars()
{
    char logPath[TeskUtils::kPathSize];
    if (GetInstallLogFile(logPath, sizeof logPath) != 0)
        throw InstallerError("ERROR: Obtaining install actionlog filename");
    FILE* oldLog = fopen(logPath, "rb");
    if (!oldLog)
        throw InstallerError("ERROR: Opening action file (%s)", logPath);

    char tempPath[TeskUtils::kPathSize];
    FILE* newLog = makeTempLogName(logPath, tempPath) ? fopen(tempPath, "wb") : nullptr;
    if (!newLog) {
        fclose(oldLog);
        throw InstallerError("ERROR: Creating temp file for new log (%s)", tempPath);
    }

    try {
        rewriteVariableBlock(*this, oldLog, newLog);
    } catch (...) {
        fclose(oldLog);
        fclose(newLog);
        remove(tempPath);
        throw;
    }
    fclose(oldLog);
    fclose(newLog);
    remove(logPath);
    rename(tempPath, logPath);
}
