// Action sequences: template elements whose children are small commands (run or open a
// program, copy, remove or create a file, change an owner), performed in document order
// by RunFiles. A failing action never stops its sequence; its result goes only to the
// debug console and to the variable that its ResultVariable names.
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/misc/installer_file_utils.h"
#include "foundation/misc/installer_string_utils.h"
#include "foundation/misc/path_utils.h"
#include "foundation/streams/pconsole.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/exceptions.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/tokenize.h"
#include "installer/installer.h"

namespace {

// Command lines and argument texts.
const int kLineSize = 4096;
// A packed file is expanded only below this size, into a buffer of this size.
const int kExpansionBufferSize = 0x100000;
// The mode of a created file when FileMod doesn't say.
const unsigned kDefaultFileMode = 0444;
// Documents and URLs are polled at this interval when they are opened.
const unsigned kOpenPollMs = 100;

enum ActionKind {
    ACTION_OPEN_DOCUMENT,
    ACTION_OPEN_URL,
    ACTION_RUN_PROGRAM,
    ACTION_RUN_PROGRAM_EX,
    ACTION_COPY_FILE,
    ACTION_REGISTRY,
    ACTION_REMOVE_FILE,
    ACTION_REMOVE_DIR,
    ACTION_CREATE_FILE,
    ACTION_CHANGE_OWNER,
};

struct ActionName
{
    const char* name;
    ActionKind kind;
};
const ActionName kActions[] = {
    { "OpenDocument", ACTION_OPEN_DOCUMENT },
    { "OpenURL", ACTION_OPEN_URL },
    { "RunProgram", ACTION_RUN_PROGRAM },
    { "RunProgramEx", ACTION_RUN_PROGRAM_EX },
    { "CopyFile", ACTION_COPY_FILE },
    { "Registry", ACTION_REGISTRY },
    { "RemoveFile", ACTION_REMOVE_FILE },
    { "RemoveDir", ACTION_REMOVE_DIR },
    { "CreateFile", ACTION_CREATE_FILE },
    { "ChangeOwner", ACTION_CHANGE_OWNER },
};

// The action of a child's name (case ignored); false for an unknown one.
bool findAction(const char* name, ActionKind& kind)
{
    for (const ActionName& action : kActions) {
        if (strcasecmp(action.name, name) == 0) {
            kind = action.kind;
            return true;
        }
    }
    return false;
}

// The "Details" tokens.
enum DetailFlags {
    DETAIL_NO_EXPANSION = 1,
    DETAIL_NO_PATH_CORRECTION = 2,
    DETAIL_LOWERCASE = 4,
    DETAIL_UPPERCASE = 8,
    DETAIL_LESS_DEBUG = 16,
};
struct DetailName
{
    const char* name;
    unsigned flag;
};
const DetailName kDetails[] = {
    { "NoExpansion", DETAIL_NO_EXPANSION },
    { "NoPathCorrection", DETAIL_NO_PATH_CORRECTION },
    { "Lowercase", DETAIL_LOWERCASE },
    { "Uppercase", DETAIL_UPPERCASE },
    { "LessDebug", DETAIL_LESS_DEBUG },
};

// The mask of the ";"-separated `details` of the child `child` of sequence `tag`;
// unknown tokens are logged and ignored, and Lowercase with Uppercase cancel out.
unsigned parseDetails(const char* details, const char* tag, const char* child, PConsole* console)
{
    if (!details)
        return 0;
    TeskUtils::Table<TeskUtils::CharString, 100> tokens;
    TeskUtils::tokenize(details, ';', tokens, 0);
    unsigned mask = 0;
    for (int i = 0; i < tokens.count; ++i) {
        const char* token = tokens[i].data();
        if (!token)
            continue;
        bool known = false;
        for (const DetailName& detail : kDetails) {
            if (strcasecmp(detail.name, token) == 0) {
                mask |= detail.flag;
                known = true;
            }
        }
        if (!known && console)
            console->Dump("WARNING: Unrecognized details flag (%s) for tag %s", token, child);
    }
    const unsigned both = DETAIL_LOWERCASE | DETAIL_UPPERCASE;
    if ((mask & both) == both) {
        mask &= ~both;
        if (console)
            console->Dump(
                "WARNING: Encountered Details attribute containing both Lowercase and Uppercase (tag: %s, "
                "child: %s)!",
                tag, child);
    }
    return mask;
}

// The text of an error for the debug lines: " | " and its message, or nothing.
TeskUtils::CharString errorSuffix(const TeskUtils::ErrorCode& error)
{
    if (!error.isError())
        return TeskUtils::CharString("");
    char text[600];
    snprintf(text, sizeof text, " | %s", error.getMessage() ? error.getMessage() : "");
    return TeskUtils::CharString(text);
}

} // namespace

TeskUtils::ErrorCode Installer::runProgram(const char* cmd, const char* args, unsigned flags,
    const char* workDir, InstallerUI* ui, unsigned pollMs, TeskUtils::CharString* output,
    const ExtendedRunProgramParams* ext) const
{
    (void)cmd;
    (void)args;
    (void)flags;
    (void)workDir;
    (void)ui;
    (void)pollMs;
    (void)output;
    (void)ext;
    return TeskUtils::ErrorCode("runProgram", -1, "Programs can't be run on this platform");
}

TeskUtils::ErrorCode Installer::runProgramAndReport(const RunProgramContext& context,
    const ExtendedRunProgramParams* ext, InstallerUI* ui, int pollMs, const char* label,
    unsigned lessDebug) const
{
    TeskUtils::ErrorCode result = runProgram(context.program, context.arguments, context.flags,
        context.workDir, ui, static_cast<unsigned>(pollMs), nullptr, ext);
    if (!debugConsole)
        return result;
    const bool failed = result.isError();
    if (lessDebug) {
        debugConsole->Dump("%s%s was %sstarted: (%d)", failed ? "ERROR: " : "", label, failed ? "NOT " : "",
            result.getError());
    } else {
        debugConsole->Dump("%s%s was %sstarted: (%d%s) \"%s %s\"", failed ? "ERROR: " : "", label,
            failed ? "NOT " : "", result.getError(), errorSuffix(result).data(),
            context.program ? context.program : "", context.arguments ? context.arguments : "");
    }
    return result;
}

TeskUtils::ErrorCode Installer::extractExtendedRunPipe(
    ExtendedRunProgramParams::Pipe& pipe, const NODEI& node)
{
    const char* type = node.attrs ? node.attrs->GetValue("Type") : nullptr;
    if (!type || !type[0])
        return TeskUtils::ErrorCode("Pipe", -1, "Pipes require \"Type\" attribute");
    if (strcasecmp(type, "stdout") == 0)
        pipe.type = ExtendedRunProgramParams::Pipe::Stdout;
    else if (strcasecmp(type, "stderr") == 0)
        pipe.type = ExtendedRunProgramParams::Pipe::Stderr;
    else if (strcasecmp(type, "stdin") == 0)
        pipe.type = ExtendedRunProgramParams::Pipe::Stdin;
    else
        return TeskUtils::ErrorCode("Pipe", -1, "Unknown pipe type %s", type);

    const char* dest = node.attrs->GetValue("Dest");
    if (dest && dest[0] && strcasecmp(dest, "void") == 0) {
        pipe.dest = ExtendedRunProgramParams::Pipe::Void;
        return TeskUtils::ErrorCode();
    }
    if (dest && dest[0] && strcasecmp(dest, "file") != 0)
        return TeskUtils::ErrorCode("Pipe", -1, "Specified pipe destination is not supported: %s", dest);
    pipe.dest = ExtendedRunProgramParams::Pipe::File;
    TeskUtils::CharString fileName;
    if (!node.data || ExpandCharString(node.data, fileName, false) < 1 || !fileName.data()
        || !fileName.data()[0])
        return TeskUtils::ErrorCode("Pipe", -1, "Invalid or no pipe destination file name provided");
    pipe.fileName = fileName;
    return TeskUtils::ErrorCode();
}

TeskUtils::ErrorCode Installer::extractExtendedRunEnvironment(
    ExtendedRunProgramParams::Environment& environment, const NODEI& node)
{
    const char* name = node.attrs ? node.attrs->GetValue("Name") : nullptr;
    if (!name)
        return TeskUtils::ErrorCode(
            "Environment", -1, "Could not expand environment variable name: %s", "<unknown>");
    TeskUtils::CharString expanded;
    if (ExpandCharString(name, expanded, true) < 1 || !expanded.data() || !expanded.data()[0])
        return TeskUtils::ErrorCode(
            "Environment", -1, "Could not expand environment variable name: %s", name);
    environment.name = expanded;
    environment.flags = static_cast<unsigned>(
        TeskUtils::maskFromStringList(node.attrs->GetValue("Flags"), "KeepCurrent;Append;Prepend", ';'));
    if (environment.flags & ExtendedRunProgramParams::Environment::KeepCurrent)
        return TeskUtils::ErrorCode();
    if (!node.data || !node.data[0])
        return TeskUtils::ErrorCode("Environment", -1, "Environment variable tag is missing a value");
    TeskUtils::CharString value("");
    ExpandCharString(node.data, value, false);
    environment.value = value;
    return TeskUtils::ErrorCode();
}

TeskUtils::ErrorCode Installer::extractExtendedRunParams(
    ExtendedRunProgramParams& params, TeskUtils::CharString& fileName, int node)
{
    const char* context = "RunProgramEx";
    if (!templateXml.IsValid(node))
        return TeskUtils::ErrorCode(context, -1, "Invalid input node index");
    PList<int> children;
    if (templateXml.GetChildren(node, &children) != 0)
        return TeskUtils::ErrorCode(context, -2, "Unable to enumerate node children");

    for (int i = 0; i < children.Count(); ++i) {
        const NODEI* child = templateXml.GetNode(children[i]);
        if (!child || !child->name || !child->attrs)
            continue;
        const char* condition = child->attrs->GetValue("Condition");
        if (condition && EvalCondition(condition) == 0)
            continue;

        if (strcasecmp(child->name, "FileName") == 0) {
            TeskUtils::CharString expanded;
            if (!child->data || ExpandCharString(child->data, expanded, true) < 2 || !expanded.data())
                return TeskUtils::ErrorCode(
                    context, -3, "Could not expand the FileName tag data (missing variables?)");
            char path[TeskUtils::kPathSize];
            TeskUtils::copyBounded(path, expanded.data(), sizeof path);
            TeskUtils::uniCorrectPathString(path);
            fileName = TeskUtils::CharString(path);
        } else if (strcasecmp(child->name, "Environment") == 0) {
            ExtendedRunProgramParams::Environment environment;
            TeskUtils::ErrorCode error = extractExtendedRunEnvironment(environment, *child);
            if (!error.isError())
                params.environment.append(environment);
            else if (debugConsole)
                debugConsole->Dump("WARNING: [%s] %s", error.getWhere(), error.getMessage());
        } else if (strcasecmp(child->name, "Pipe") == 0) {
            ExtendedRunProgramParams::Pipe pipe;
            TeskUtils::ErrorCode error = extractExtendedRunPipe(pipe, *child);
            if (!error.isError())
                params.pipes.append(pipe);
            else if (debugConsole)
                debugConsole->Dump("WARNING: [%s] %s", error.getWhere(), error.getMessage());
        } else if (strcasecmp(child->name, "SystemErrorHandling") == 0) {
            unsigned value = 0;
            if (!child->data || !child->data[0]) {
                if (debugConsole)
                    debugConsole->Dump("WARNING: SystemErrorHandling requires node data");
            } else if (!TeskUtils::fromString(value, child->data, 16)) {
                if (debugConsole)
                    debugConsole->Dump("WARNING: SystemErrorHandling data must be a number");
            } else {
                params.systemErrorHandling = static_cast<int>(value);
                params.hasSystemErrorHandling = true;
            }
        } else if (debugConsole) {
            debugConsole->Dump(
                "WARNING: Unrecognized child tag in %s encountered (%s)", context, child->name);
        }
    }
    return TeskUtils::ErrorCode();
}

TeskUtils::CharString Installer::createFileFromAlias(
    const char* alias, const char* destDir, bool expand, bool stripExt, unsigned mode)
{
    if (!alias || !alias[0] || !destDir || !destDir[0])
        throw InstallerError("ERROR: Alias and/or destingation are not specified!");
    int record = -1;
    for (int i = cabinetFiles.count - 1; i >= 0 && record < 0; --i)
        if (strcmp(cabinetFiles[i].alias, alias) == 0)
            record = i;
    if (record < 0)
        throw InstallerError("WARNING: Alias \"%s\" is not included in the installation", alias);

    int size = 0;
    TeskUtils::PtrArray<unsigned char> data = GetAliasData(alias, size);
    if (!data.get() || size < 1)
        throw InstallerError("ERROR: Could not decompress the specified alias (%s)!", alias);
    if (!TeskUtils::isDirectory(destDir))
        throw InstallerError("ERROR: Destination directory does NOT exist (%s)!", destDir);

    char target[TeskUtils::kPathSize];
    TeskUtils::copyBounded(target, destDir, sizeof target);
    TeskUtils::appendToFolder(target, TeskUtils::fileNamePart(cabinetFiles[record].name), sizeof target);

    const char* bytes = reinterpret_cast<const char*>(data.get());
    char* expanded = nullptr;
    if (expand && size < kExpansionBufferSize) {
        // The content as a text: GetAliasData puts a NUL behind it.
        expanded = new char[kExpansionBufferSize];
        int length = ExpandString(bytes, expanded, kExpansionBufferSize, false);
        size = length > 0 ? static_cast<int>(strlen(expanded)) : 0;
        bytes = expanded;
    }
    if (stripExt)
        InstallerStringUtils::stripExt(target);

    FILE* file = fopen(target, "wb");
    if (!file) {
        delete[] expanded;
        throw InstallerError("ERROR: Could not create file (%s)!", target);
    }
    fwrite(bytes, 1, static_cast<size_t>(size), file);
    fclose(file);
    chmod(target, mode);
    delete[] expanded;
    return TeskUtils::CharString(target);
}

int Installer::changeFileOwner(const char* file, const char* owner)
{
    if (!file || !owner) {
        if (debugConsole)
            debugConsole->Dump("ERROR: Change file owner without file name attribute and/or user string!");
        return -1;
    }
    int length = ExpandString(file, nullptr, 0, false);
    if (length < 1) {
        if (debugConsole)
            debugConsole->Dump("ERROR: Could not expand file name for changing owner (%s)", file);
        return -1;
    }
    char* path = new char[length];
    ExpandString(file, path, length, false);

    TeskUtils::Table<TeskUtils::CharString, 100> tokens;
    TeskUtils::tokenize(owner, ';', tokens, TeskUtils::TOKENIZE_KEEP_EMPTY);
    int result = -1;
    if (tokens.count < 1) {
        if (debugConsole)
            debugConsole->Dump("ERROR: Could not tokenize the change owner specification");
    } else if (tokens.count > 2) {
        if (debugConsole)
            debugConsole->Dump("WARNING: More than two tokens provided for change owner ids (expected "
                               "<userId>;<groupId> got %s)",
                owner);
    } else {
        int ids[2] = { -1, -1 };
        for (int i = 0; i < tokens.count; ++i) {
            const char* token = tokens[i].data();
            if (token && isdigit(static_cast<unsigned char>(token[0])))
                ids[i] = atoi(token);
        }
        result = chown(path, static_cast<uid_t>(ids[0]), static_cast<gid_t>(ids[1]));
        if (result != 0 && debugConsole) {
            if (errno == ENOENT)
                debugConsole->Dump("WARNING: The file for owner changing does not exist! (%s)", path);
            else
                debugConsole->Dump("ERROR: Could not change owner of \"%s\" with (%d, %d) - Error %d", path,
                    ids[0], ids[1], errno);
        }
    }
    delete[] path;
    return result;
}

namespace {

// What one action of a sequence reads of its element, whatever its kind.
struct ActionAttributes
{
    const char* condition;
    const char* arguments;
    const char* wait;
    const char* asRoot;
    const char* asynchronous;
    const char* progressUpdate;
    const char* errorOutput;
    const char* workDir;
    const char* dest;
    const char* stripExeExt;
    const char* log;
    const char* details;
    const char* resultVariable;
};

ActionAttributes readAttributes(const PXML& xml, int node)
{
    ActionAttributes a;
    a.condition = xml.ParVal(node, "Condition");
    a.arguments = xml.ParVal(node, "Arguments");
    a.wait = xml.ParVal(node, "Wait");
    a.asRoot = xml.ParVal(node, "AsRoot");
    a.asynchronous = xml.ParVal(node, "Asynchronous");
    a.progressUpdate = xml.ParVal(node, "ProgressUpdate");
    a.errorOutput = xml.ParVal(node, "ErrorOutput");
    a.workDir = xml.ParVal(node, "WorkDir");
    a.dest = xml.ParVal(node, "Dest");
    a.stripExeExt = xml.ParVal(node, "StripExeExt");
    a.log = xml.ParVal(node, "Log");
    a.details = xml.ParVal(node, "Details");
    a.resultVariable = xml.ParVal(node, "ResultVariable");
    return a;
}

} // namespace

int Installer::RunFiles(InstallerUI* ui, const char* tag)
{
    if (!tag)
        return -1;
    if (debugConsole)
        debugConsole->Dump("Running Files for installation tag: <%s>", tag);

    // A condition attribute that is absent counts as `absent`; one that can't be parsed
    // (-1) as true.
    auto holds = [this](const char* condition, bool absent) {
        return condition ? EvalCondition(condition) != 0 : absent;
    };

    int result = 0;
    for (int element = templateXml.FindTag(tag, -1); element >= 0;
         element = templateXml.FindTag(tag, element)) {
        if (!holds(templateXml.ParVal(element, "Condition"), true))
            continue;
        PList<int> children;
        templateXml.GetChildren(element, &children);
        for (int c = 0; c < children.Count(); ++c) {
            const int node = children[c];
            const char* name = templateXml.GetName(node);
            const ActionAttributes attrs = readAttributes(templateXml, node);
            if (!name || !name[0] || !holds(attrs.condition, true))
                continue;
            unsigned details = parseDetails(attrs.details, tag, name, debugConsole);

            if (ui && attrs.log && attrs.log[0]) {
                int length = ExpandString(attrs.log, nullptr, 0, false);
                if (length > 1) {
                    char* text = new char[length];
                    ExpandString(attrs.log, text, length, false);
                    ui->EndDecompress(text, true);
                    delete[] text;
                }
            }

            ActionKind kind;
            if (!findAction(name, kind)) {
                if (debugConsole)
                    debugConsole->Dump("WARNING: Unknown action (skipped): %s", name);
                continue;
            }

            unsigned flags = 0;
            if (holds(attrs.wait, false))
                flags |= RUN_WAIT;
            if (holds(attrs.asRoot, false))
                flags |= RUN_AS_ROOT;
            if (holds(attrs.asynchronous, false))
                flags |= RUN_ASYNCHRONOUS;
            const int pollMs = attrs.progressUpdate ? atoi(attrs.progressUpdate) * 10 : 0;
            if (pollMs != 0)
                flags |= RUN_PROGRESS;
            if (!holds(attrs.errorOutput, true))
                flags |= RUN_NO_STDERR;

            const char* data = templateXml.GetData(node);
            const bool hasText = data && data[0];
            if (!hasText && kind != ACTION_REGISTRY && kind != ACTION_RUN_PROGRAM_EX)
                continue;

            if (kind == ACTION_OPEN_URL)
                details |= DETAIL_NO_PATH_CORRECTION;
            char text[TeskUtils::kPathSize] = {};
            if (details & DETAIL_NO_EXPANSION)
                TeskUtils::copyBounded(text, data ? data : "", sizeof text);
            else if (data)
                ExpandString(data, text, sizeof text, false);
            if (!(details & DETAIL_NO_PATH_CORRECTION))
                TeskUtils::uniCorrectPathString(text);
            for (char* p = text; *p; ++p) {
                if (details & DETAIL_LOWERCASE)
                    *p = static_cast<char>(tolower(static_cast<unsigned char>(*p)));
                else if (details & DETAIL_UPPERCASE)
                    *p = static_cast<char>(toupper(static_cast<unsigned char>(*p)));
            }
            char workDir[TeskUtils::kPathSize] = {};
            if (attrs.workDir) {
                ExpandString(attrs.workDir, workDir, sizeof workDir, false);
                TeskUtils::uniCorrectPathString(workDir);
            }
            const bool stripExt = holds(attrs.stripExeExt, false);
            if (stripExt)
                InstallerStringUtils::stripExt(text);
            char arguments[kLineSize] = {};
            if (attrs.arguments)
                ExpandString(attrs.arguments, arguments, sizeof arguments, false);

            int outcome = 0;
            switch (kind) {
            case ACTION_OPEN_DOCUMENT:
            case ACTION_OPEN_URL: {
                TeskUtils::ErrorCode error = runProgram(
                    text, nullptr, flags | RUN_OPEN, nullptr, nullptr, kOpenPollMs, nullptr, nullptr);
                outcome = error.getError();
                if (debugConsole) {
                    const bool failed = error.isError();
                    debugConsole->Dump("%s%s was %sopened: (%d%s) \"%s\"", failed ? "ERROR: " : "",
                        kind == ACTION_OPEN_URL ? "URL" : "Document", failed ? "NOT " : "", outcome,
                        errorSuffix(error).data(), text);
                }
                break;
            }
            case ACTION_RUN_PROGRAM: {
                RunProgramContext context = { text, arguments, attrs.workDir ? workDir : nullptr, flags };
                outcome = runProgramAndReport(
                    context, nullptr, ui, pollMs, "RunProgram", details & DETAIL_LESS_DEBUG)
                              .getError();
                break;
            }
            case ACTION_RUN_PROGRAM_EX: {
                ExtendedRunProgramParams params;
                TeskUtils::CharString program("");
                TeskUtils::ErrorCode error = extractExtendedRunParams(params, program, node);
                if (error.isError()) {
                    if (debugConsole)
                        debugConsole->Dump("ERROR: Failed to extract extended run program params: %s",
                            error.getErrorString().data());
                    outcome = error.getError();
                    break;
                }
                RunProgramContext context = { program.data() ? program.data() : "", arguments,
                    attrs.workDir ? workDir : nullptr, flags };
                outcome = runProgramAndReport(
                    context, &params, ui, pollMs, "RunProgramEx", details & DETAIL_LESS_DEBUG)
                              .getError();
                break;
            }
            case ACTION_COPY_FILE: {
                if (!attrs.dest || !attrs.dest[0]) {
                    outcome = debugConsole ? 1 : 0;
                    if (debugConsole)
                        debugConsole->Dump("ERROR: Copy file without Dest attribute!");
                    break;
                }
                char dest[TeskUtils::kPathSize] = {};
                ExpandString(attrs.dest, dest, sizeof dest, false);
                TeskUtils::removeDoubleSlashes(dest);
                const bool failed = !copyFile(text, dest);
                outcome = failed ? 1 : 0;
                if (debugConsole)
                    debugConsole->Dump("%sAdditional copy %s: \"%s\"", failed ? "ERROR: " : "",
                        failed ? "FAILED " : "", dest);
                break;
            }
            case ACTION_REGISTRY:
                if (debugConsole)
                    debugConsole->Dump("WARNING: Registry operation on Linux/OSX system!");
                break;
            case ACTION_REMOVE_FILE:
                if (InstallerFileUtils::remove(text) == 0) {
                    if (debugConsole)
                        debugConsole->Dump("Additionally removed file : \"%s\"", text);
                    break;
                }
                outcome = TeskUtils::uniPathOrFileExists(text);
                if (debugConsole) {
                    if (outcome > 0)
                        debugConsole->Dump("ERROR: Remove file could not remove file \"%s\"!", text);
                    else
                        debugConsole->Dump(
                            "WARNING: Tried to remove a file that doesn't exist \"%s\".", text);
                }
                break;
            case ACTION_REMOVE_DIR:
                if (InstallerFileUtils::DeleteEmptyDirs(text) > 0) {
                    if (debugConsole)
                        debugConsole->Dump("Additionally removed dir : \"%s\"", text);
                    break;
                }
                outcome = TeskUtils::uniPathOrFileExists(text);
                if (debugConsole) {
                    if (outcome > 0)
                        debugConsole->Dump("ERROR: Remove dir could not remove directories \"%s\"!", text);
                    else
                        debugConsole->Dump(
                            "WARNING: Tried to remove a directory that doesn't exist \"%s\".", text);
                }
                break;
            case ACTION_CREATE_FILE: {
                if (!attrs.dest) {
                    if (debugConsole)
                        debugConsole->Dump(
                            "ERROR: Create file without Dest attribute (alias: \"%s\")!", text);
                    break;
                }
                char dest[TeskUtils::kPathSize] = {};
                ExpandString(attrs.dest, dest, sizeof dest, false);
                TeskUtils::removeDoubleSlashes(dest);
                const bool expand = holds(templateXml.ParVal(node, "ExpandVarsInFile"), false);
                unsigned mode = kDefaultFileMode;
                const char* fileMod = templateXml.ParVal(node, "FileMod");
                if (fileMod && !TeskUtils::fromString(mode, fileMod, 0)) {
                    mode = kDefaultFileMode;
                    if (debugConsole)
                        debugConsole->Dump(
                            "WARNING: Failed to parse file modification - provided string: %s", fileMod);
                }
                try {
                    createFileFromAlias(text, dest, expand, stripExt, mode);
                    if (debugConsole)
                        debugConsole->Dump("Created a file from alias(%s) : \"%s\" (0%o)", text, dest, mode);
                } catch (const InstallerError& failure) {
                    if (debugConsole)
                        debugConsole->Dump("%s", failure.what());
                    outcome = 1;
                    result = 1;
                }
                break;
            }
            case ACTION_CHANGE_OWNER:
                outcome = changeFileOwner(attrs.dest, text);
                break;
            }

            if (attrs.resultVariable && attrs.resultVariable[0]) {
                char value[16];
                snprintf(value, sizeof value, "%ld", labs(static_cast<long>(outcome)));
                SetVar(attrs.resultVariable, value);
            }
        }
        if (ui)
            ui->EndDecompress(nullptr, true);
    }
    return result;
}

int Installer::postInstall(InstallerUI* ui)
{
    if (postInstallDone)
        return 0;
    postInstallDone = true;
    RunFiles(ui, "PostInstall");
    try {
        UpdateVars();
    } catch (const GenericError& failure) {
        if (debugConsole)
            debugConsole->Dump("%s", failure.what());
    }

    char name[TeskUtils::kPathSize] = {};
    getConfigFileName(name, sizeof name);
    if (guiInstall || name[0])
        return 0;

    // The installer's directory, or the folder of the program when no directory is known.
    GetInstallerPath(name, sizeof name);
    struct stat info;
    if (stat(name, &info) != 0 || !S_ISDIR(info.st_mode)) {
        char* slash = strrchr(name, '/');
        if (slash)
            slash[1] = '\0';
        else
            name[0] = '\0';
    }
    if (name[0])
        TeskUtils::appendBounded(name, "/", sizeof name);
    TeskUtils::appendBounded(name, "config.xml", sizeof name);
    TeskUtils::removeDoubleSlashes(name);
    if (CreateConfigFile(name) == 0) {
        if (ui) {
            char line[TeskUtils::kPathSize + 64];
            snprintf(line, sizeof line, "Successfully created configuration file:\n\t\"%s\"", name);
            ui->EndDecompress(line, false);
            ui->EndDecompress(
                "You can use the file to automatically install the same product on different machine "
                "with the same settings, by running the installer with the following arguments:",
                false);
            snprintf(line, sizeof line, " -configFile=\"%s\" {-ignoreErrors=1}", name);
            ui->EndDecompress(line, true);
        }
    } else if (ui) {
        ui->EndDecompress("The installer could not create configuration file!", true);
    }
    return 0;
}
