// The default values: the DefValues section of the template and of a configuration file,
// and the "-VARIABLE_NAME=value" options of the command line, read into the variable store
// before the first dialog.
//
// A DefValues section is read in two passes. The first makes every variable exist, with an
// empty value and its default, so that the expressions and conditions of the second pass
// can refer to variables defined further down. The second computes the values in document
// order, by data type, and collects the section's triggers, which run once at the end.
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "foundation/misc/cl_parser.h"
#include "foundation/misc/path_utils.h"
#include "foundation/streams/pconsole.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/tokenize.h"
#include "installer/installer.h"
#include "installer/model/variable_record.h"

namespace {

const int kValueBufferSize = 1024;

// True when `dataType` begins with `keyword`, case ignored: only the keyword's length is
// compared.
bool isDataType(const char* dataType, const char* keyword)
{
    return dataType && strncasecmp(dataType, keyword, strlen(keyword)) == 0;
}

bool isEmpty(const char* text)
{
    return !text || !*text;
}

// The attributes and text of one Value element.
struct ValueElement
{
    const char* name;
    const char* dataType;
    const char* condition;
    const char* useOld;
    const char* defaultValue;
    const char* recalculate;
    const char* flags;
    const char* appName;
    const char* directory;
    const char* argName;
    const char* text;

    ValueElement(const PXML& doc, int node)
        : name(doc.ParVal(node, "Name"))
        , dataType(doc.ParVal(node, "DataType"))
        , condition(doc.ParVal(node, "Condition"))
        , useOld(doc.ParVal(node, "UseOld"))
        , defaultValue(doc.ParVal(node, "Default"))
        , recalculate(doc.ParVal(node, "Recalculate"))
        , flags(doc.ParVal(node, "Flags"))
        , appName(doc.ParVal(node, "AppName"))
        , directory(doc.ParVal(node, "Directory"))
        , argName(doc.ParVal(node, "ArgName"))
        , text(doc.GetData(node))
    {
    }
};

} // namespace

void Installer::InitCmdLineParser(const CLParser* parser)
{
    cmdLineParser = parser;
}

int Installer::InitDefValues(InstallerUI* ui)
{
    int result = GetDefaultValuesFromXML(templateXml);

    if (!logStream && result == 0) {
        char configName[TeskUtils::kPathSize] = {};
        getConfigFileName(configName, sizeof(configName));
        if (configName[0]) {
            PXML config;
            int code = config.ParseFile(configName);
            if (code == 0) {
                result = GetDefaultValuesFromXML(config);
            } else {
                char text[1200];
                snprintf(text, sizeof(text),
                    "Error loading configuration file \"%s\" (%i). Installation can not continue.",
                    configName, code);
                if (ui)
                    ui->MessageBox(text, 1);
                result = -1;
            }
        }
    }

    GetDefaultValuesFromCMD();

    if (debugLevel >= 2 && debugConsole) {
        debugConsole->Dump("Installation variables used (%d):", variables.count);
        for (const VariableRecord& record : variables) {
            if (strcasecmp(record.value, record.defaultValue) != 0)
                debugConsole->Dump("  [%s] = \"%s\" (%s)", record.name, record.value, record.defaultValue);
            else
                debugConsole->Dump("  [%s] = \"%s\"", record.name, record.value);
        }
    }
    return result;
}

namespace {

// The second pass's work on one Value element, by data type. `exists` tells whether the
// variable was known before the element, `current` is its value then.
class ValueReader
{
public:
    ValueReader(Installer& owner, const ValueElement& element, const char* before, bool known)
        : engine(owner)
        , e(element)
        , current(before)
        , exists(known)
    {
    }

    void read()
    {
        flags
            = static_cast<unsigned int>(TeskUtils::maskFromStringList(e.flags, "recalculate;verbatim", ';'));
        if (!isEmpty(e.recalculate) && engine.EvalCondition(e.recalculate) != 0)
            flags |= VARFLAG_RECALCULATE;
        takeNew = !e.useOld || !exists || engine.EvalCondition(e.useOld) == 0;

        if (isDataType(e.dataType, "registry")) {
            if (engine.debugConsole)
                engine.debugConsole->Dump(
                    "WARNING: Registry value type used on non Windows system (Variable: [%s])", e.name);
        } else if (isDataType(e.dataType, "installvar")) {
            readInstallVar();
        } else if (isDataType(e.dataType, "install_app")) {
            readInstallApp();
        } else if (isDataType(e.dataType, "value")) {
            readValue();
        } else if (isDataType(e.dataType, "expandvar")) {
            readExpandVar();
        } else if (isDataType(e.dataType, "checkproc")) {
            readCheckProc();
        } else if (isDataType(e.dataType, "cmdlinearg")) {
            readCommandLineArg();
        } else if (isDataType(e.dataType, "checkfile")) {
            readCheckFile();
        } else if (isDataType(e.dataType, "envvar")) {
            readEnvVar();
        }
    }

private:
    // Makes `value` the variable's default (and, for a new variable, its value).
    void setDefault(const char* value) { engine.SetVarExt(e.name, nullptr, nullptr, VARFLAG_KEEP, value); }

    // The default taken from the log of another installed application.
    void readInstallVar()
    {
        if (!e.appName || isEmpty(e.text))
            return;
        char logPath[TeskUtils::kPathSize] = {};
        char found[VARIABLE_VALUE_SIZE] = {};
        const char* value = nullptr;
        if (engine.getAppLogFileName(e.appName, logPath, sizeof(logPath))
            && engine.getLogFileVar(logPath, e.text, found, sizeof(found)))
            value = found;
        else if (e.defaultValue)
            value = e.defaultValue;
        if (!value)
            return;
        setDefault(value);
        if (takeNew)
            engine.SetVar(e.name, value);
    }

    void readInstallApp()
    {
        if (e.defaultValue)
            setDefault(e.defaultValue);
        if (engine.IsInstalled(e.text, 0))
            engine.SetVar(e.name, "1");
        else
            engine.SetVar(e.name, e.defaultValue ? e.defaultValue : "0");
    }

    void readValue()
    {
        char expansion[kValueBufferSize];
        if (!engine.expandVariables(e.text, expansion, sizeof(expansion)))
            return;

        if (!e.recalculate || e.recalculate[0] == '0') {
            flags &= ~static_cast<unsigned int>(VARFLAG_RECALCULATE);
        } else if (e.useOld && e.useOld[0] != '0' && exists) {
            // A recalculated path that a previous installation changed by hand stops
            // following its expression.
            char oldPath[kValueBufferSize];
            char newPath[kValueBufferSize];
            TeskUtils::copyBounded(oldPath, current, sizeof(oldPath));
            TeskUtils::copyBounded(newPath, expansion, sizeof(newPath));
            TeskUtils::uniCorrectPathString(oldPath);
            TeskUtils::uniCorrectPathString(newPath);
            if (strncmp(oldPath, newPath, sizeof(oldPath)) != 0)
                flags &= ~static_cast<unsigned int>(VARFLAG_RECALCULATE);
        }
        const char* value = takeNew || !current[0] ? expansion : nullptr;
        engine.SetVarExt(e.name, value, e.text, flags, expansion);
    }

    void readExpandVar()
    {
        if (!takeNew) {
            engine.SetVarExt(e.name, nullptr, e.text, flags, e.defaultValue);
            return;
        }
        char expansion[VARIABLE_VALUE_SIZE];
        if (engine.ExpandString(e.text, expansion, sizeof(expansion), e.defaultValue != nullptr) == 0) {
            if (!e.defaultValue) {
                if (engine.debugConsole)
                    engine.debugConsole->Dump("WARNING: Could not expand variable (and no default provided): "
                                              "%s with expression: %s",
                        e.name, e.text ? e.text : "");
                return;
            }
            if (engine.ExpandString(e.defaultValue, expansion, sizeof(expansion), false) == 0) {
                if (engine.debugConsole)
                    engine.debugConsole->Dump(
                        "WARNING: Could not expand default variable: %s with expression: %s", e.name,
                        e.defaultValue);
                return;
            }
            engine.SetVarExt(e.name, expansion, e.text, flags, e.defaultValue);
            return;
        }
        const char* value = expansion[0] ? expansion : e.defaultValue;
        engine.SetVarExt(e.name, value, e.text, flags, e.defaultValue);
    }

    void readCheckProc()
    {
        char directory[TeskUtils::kPathSize] = {};
        bool haveDirectory = false;
        if (e.directory) {
            engine.ExpandString(e.directory, directory, sizeof(directory), true);
            TeskUtils::uniCorrectPathString(directory);
            haveDirectory = true;
        }
        bool running = engine.isAppRunning(e.text, haveDirectory ? directory : nullptr);
        engine.SetVar(e.name, running ? "1" : "0");
    }

    void readCommandLineArg()
    {
        const CLParser* parser = engine.cmdLineParser;
        if (!parser)
            return;
        int index = parser->FindLastParam(e.argName ? e.argName : e.name);
        if (index >= 0) {
            const char* value = parser->GetParamValue(index);
            engine.SetVar(e.name, value ? value : "1");
            return;
        }
        if (!e.text)
            return;
        setDefault(e.text);
        if (takeNew)
            engine.SetVar(e.name, e.text);
    }

    void readCheckFile()
    {
        char path[TeskUtils::kPathSize];
        if (!engine.expandVariables(e.text, path, sizeof(path)))
            return;
        TeskUtils::uniCorrectPathString(path);
        const char* fallback = e.defaultValue ? e.defaultValue : "0";
        if (TeskUtils::uniPathOrFileExists(path)) {
            engine.SetVarExt(e.name, path, nullptr, VARFLAG_KEEP, fallback);
            return;
        }
        engine.SetVar(e.name, fallback);
        if (!takeNew) {
            setDefault(fallback);
            if (engine.debugConsole)
                engine.debugConsole->Dump(
                    "WARNING: File check variables should NOT be used from previous installations!");
        }
    }

    void readEnvVar()
    {
        if (e.defaultValue)
            setDefault(e.defaultValue);
        const char* value = e.text ? getenv(e.text) : nullptr;
        if (!value)
            value = e.defaultValue ? e.defaultValue : "";
        engine.SetVar(e.name, value);
    }

    Installer& engine;
    const ValueElement& e;
    const char* current;
    bool exists;
    unsigned int flags = 0;
    bool takeNew = true;
};

// Reads one Trigger element of DefValues into `trigger`; false (logged) when it is unusable.
bool readDefaultsTrigger(const PXML& doc, int node, PConsole* log, TRIGGER_INFO& trigger)
{
    const char* type = doc.ParVal(node, "Type");
    const char* variable = doc.ParVal(node, "Variable");
    const char* value = doc.ParVal(node, "Value");

    const bool reset = type && strcasecmp(type, "VarReset") == 0;
    if (!variable || (!value && !reset)) {
        if (log)
            log->Dump("ERROR: Insufficient trigger attributes in DefValues!");
        return false;
    }
    if (type && !reset && strcasecmp(type, "VarChange") != 0) {
        if (log)
            log->Dump("WARNING: Unrecognized trigger type in DefValues: %s", type);
        return false;
    }
    trigger.type = reset ? TRIGGER_VAR_RESET : TRIGGER_VAR_CHANGE;
    trigger.evaluation = TRIGGER_ON_ALL;
    TeskUtils::copyBounded(trigger.variable, variable, sizeof(trigger.variable));
    TeskUtils::copyBounded(trigger.value, value ? value : "", sizeof(trigger.value));
    TeskUtils::copyBounded(trigger.condition, doc.ParVal(node, "Condition"), sizeof(trigger.condition));
    return true;
}

} // namespace

int Installer::GetDefaultValuesFromXML(const PXML& doc)
{
    suspendRecalculation = true;
    int section = doc.FindTag("DefValues", -1);
    if (section < 0) {
        suspendRecalculation = false;
        return -1;
    }
    PList<int> children;
    doc.GetChildren(section, &children);

    // First pass: every variable exists, with an empty value and its default.
    for (int i = 0; i < children.Count(); ++i) {
        int node = children[i];
        const char* tag = doc.GetName(node);
        if (!tag || strcmp(tag, "Value") != 0)
            continue;
        ValueElement e(doc, node);
        if (e.useOld && EvalCondition(e.useOld) != 0)
            continue;
        if (EvalCondition(e.condition) == 0)
            continue;
        const char* defaultText;
        if (isDataType(e.dataType, "registry"))
            continue;
        if (isDataType(e.dataType, "checkproc"))
            defaultText = "0";
        else if (isDataType(e.dataType, "checkfile"))
            defaultText = e.defaultValue ? e.defaultValue : "0";
        else
            defaultText = e.text;
        if (e.name && defaultText)
            SetVarExt(e.name, "", "", 0, defaultText);
    }

    // Second pass, in document order.
    TeskUtils::Table<TRIGGER_INFO, 8> triggers;
    for (int i = 0; i < children.Count(); ++i) {
        int node = children[i];
        const char* tag = doc.GetName(node);
        if (tag && strcmp(tag, "Trigger") == 0) {
            TRIGGER_INFO trigger;
            if (readDefaultsTrigger(doc, node, debugConsole, trigger))
                triggers.append(trigger);
            continue;
        }
        if (!tag || strcmp(tag, "Value") != 0) {
            if (debugConsole)
                debugConsole->Dump(
                    "WARNING: Unrecognized tag type \"%s\" in <DefValues> tag!", tag ? tag : "");
            continue;
        }

        ValueElement e(doc, node);
        if (!e.dataType || !e.name) {
            if (debugConsole) {
                char withName[VARIABLE_NAME_SIZE + 16] = {};
                if (e.name) {
                    TeskUtils::copyBounded(withName, " with name: ", sizeof(withName));
                    TeskUtils::appendBounded(withName, e.name, sizeof(withName));
                }
                debugConsole->Dump(
                    "WARNING: A variable in <DefValues> is missing %s%s%s attribute! (Value index: %d%s)",
                    e.dataType ? "" : "\"Type\"", !e.dataType && !e.name ? " and " : "",
                    e.name ? "" : "\"Name\"", i, withName);
            }
            continue;
        }
        if (EvalCondition(e.condition) == 0)
            continue;

        char current[kValueBufferSize] = {};
        bool exists = GetVar(e.name, current, sizeof(current)) != -1;
        ValueReader(*this, e, current, exists).read();
    }

    suspendRecalculation = false;
    if (triggers.count > 0)
        evaluateTriggerList(nullptr, TRIGGER_ON_ALL, triggers);
    return 0;
}

int Installer::GetDefaultValuesFromCMD()
{
    if (!cmdLineParser || cmdLineParser->GetParamCount() == 0)
        return 0;

    const char* const prefix = "VARIABLE_";
    const size_t prefixLength = strlen(prefix);
    const int count = cmdLineParser->GetParamCount();
    for (int i = 0; i < count; ++i) {
        const char* param = cmdLineParser->GetParamName(i);
        if (!param || strncasecmp(param, prefix, prefixLength) != 0 || !param[prefixLength])
            continue;
        // Of several parameters of one name only the first counts.
        bool seen = false;
        for (int k = 0; k < i && !seen; ++k) {
            const char* earlier = cmdLineParser->GetParamName(k);
            seen = earlier && strcmp(earlier, param) == 0;
        }
        if (seen)
            continue;

        const char* name = param + prefixLength;
        const char* value = cmdLineParser->GetParamValue(i);
        if (!value)
            value = "1";
        int index = GetVar(name, nullptr, 0);
        if (index == -2)
            continue; // predefined or environment: not to be set from here
        if (index == -1)
            addExcludeVar(name, EXCLUDE_FROM_LOG | EXCLUDE_FROM_CONFIG);
        SetVar(name, value);
    }
    return 0;
}
