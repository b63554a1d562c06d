// The stage dispatch: what entering a dialog does beyond showing it. It runs at the end of
// every EvSetDlg and EvSetSubDlg, maps the dialog's tag name to the work of a stage, shows
// the dialog exactly once, before any lasting work, and tells the walk whether the dialog
// goes on by itself.
#include <cstring>
#include <strings.h>

#include "foundation/streams/pconsole.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/exceptions.h"
#include "foundation/strings/path_size.h"
#include "foundation/xml/plist.h"
#include "installer/installer.h"
#include "installer/wizard/dialog_conditions.h"

namespace {

// The one RunningAppsCondition that serves every RunningApps dialog of the process. The
// holder keeps a reference of its own, so that the object outlives the dialogs that share
// it, and lets go of it at exit.
struct SharedRunningApps
{
    RunningAppsCondition* object = nullptr;
    int* refs = nullptr;

    ~SharedRunningApps()
    {
        if (refs && --*refs == 0) {
            delete object;
            delete refs;
        }
    }
    RunningAppsCondition* get()
    {
        if (!object) {
            object = new RunningAppsCondition;
            refs = new int(1);
        }
        return object;
    }
};

SharedRunningApps& sharedRunningApps()
{
    static SharedRunningApps holder;
    return holder;
}

// The stage helpers shared by the rows: the single showing of a dialog, and the state
// around work that can't be left.
struct StageFrame
{
    Installer& engine;
    InstallerUI* ui;
    int dlg;
    int sub;
    bool shown = false;

    void show()
    {
        if (shown)
            return;
        ui->ShowUIElements(dlg, sub, true);
        shown = true;
    }
    void setState(SETTINGSTATE state)
    {
        engine.SetStateSettings(state);
        ui->UpdateValidation(dlg, sub);
    }
    void enterWork()
    {
        show();
        setState(SETTING_WORKING);
    }
    void leaveWork() { setState(SETTING_IDLE); }
};

// True when the child's Condition attribute is absent, empty or not false.
bool childConditionHolds(Installer& engine, int node)
{
    const char* condition = engine.templateXml.ParVal(node, "Condition");
    return !condition || !*condition || engine.EvalCondition(condition) != 0;
}

// Expands the Directory attribute of `node` into `out`; false when there is none.
bool expandDirectory(Installer& engine, int node, char (&out)[TeskUtils::kPathSize])
{
    const char* directory = engine.templateXml.ParVal(node, "Directory");
    out[0] = '\0';
    if (!directory)
        return false;
    engine.ExpandString(directory, out, sizeof out, false);
    return true;
}

} // namespace

int Installer::stageUninstall(InstallerUI* ui)
{
    int error;
    try {
        error = callUninstaller(ui);
    } catch (const GenericError& failure) {
        if (debugConsole)
            debugConsole->Dump("%s", failure.what());
        ui->EndDecompress(failure.what(), true);
        logCollector.AddEntry(failure.what());
        error = 1;
    }
    if (error)
        setControlVariable(CV_UNINSTALL_ERROR, "1");
    return error;
}

void Installer::stageRunningApps(int dlg, int sub, InstallerUI* ui, DLGINFO& info, bool& shown)
{
    SharedRunningApps& shared = sharedRunningApps();
    if (!info.conditionObject) {
        RunningAppsCondition* condition = shared.get();
        condition->clearEntries();
        PList<int> children;
        templateXml.GetChildren(info.node, &children);
        for (int i = 0; i < children.Count(); ++i) {
            int node = children[i];
            if (!childConditionHolds(*this, node))
                continue;
            const char* tag = templateXml.GetName(node);
            const char* text = templateXml.GetData(node);
            char directory[TeskUtils::kPathSize];
            if (!strcmp(tag, "TerminateApp")) {
                const char* service = templateXml.ParVal(node, "Service");
                bool haveDirectory = expandDirectory(*this, node, directory);
                terminateApp(
                    text, service && !strcasecmp(service, "true"), haveDirectory ? directory : nullptr);
            } else if (!strcmp(tag, "TerminateSequence")) {
                RunFiles(ui, text);
            } else if (!strcmp(tag, "TestApp")) {
                bool haveDirectory = expandDirectory(*this, node, directory);
                condition->addEntry(text, haveDirectory ? directory : nullptr);
            }
        }
    }

    RunningAppsCondition* condition = shared.get();
    if (!condition->Eval(this, ui)) {
        if (!guiInstall)
            condition->DisplayMessage(
                ui, "The installation can not continue, because the processes listed above are running.");
        if (debugConsole)
            debugConsole->Dump("Running applications found");
        ui->ShowUIElements(dlg, sub, true);
        SetStateSettings(SETTING_WAITING);
        ui->UpdateValidation(dlg, sub);
    }
    info.setConditionObject(shared.object, shared.refs);
    shown = true;
}

void Installer::stageExternalUninstall(int dlg, int sub, InstallerUI* ui, DLGINFO& info, bool& shown)
{
    if (!info.conditionObject)
        info.setConditionObject(new ExternalInstallationCondition, nullptr);
    auto* condition = static_cast<ExternalInstallationCondition*>(info.conditionObject);

    StageFrame frame { *this, ui, dlg, sub, shown };
    bool waiting = false;
    PList<int> children;
    templateXml.GetChildren(info.node, &children);
    for (int i = 0; i < children.Count(); ++i) {
        int node = children[i];
        if (strcasecmp(templateXml.GetName(node), "ExternalLegacyApplication") != 0)
            continue;
        if (!childConditionHolds(*this, node))
            continue;
        const char* name = templateXml.GetData(node);
        if (!name)
            continue;

        bool substring = false;
        unsigned int flags = 2;
        if (const char* details = templateXml.ParVal(node, "Details")) {
            char list[1024];
            TeskUtils::copyBounded(list, details, sizeof list);
            char* rest = nullptr;
            for (char* word = strtok_r(list, ";", &rest); word; word = strtok_r(nullptr, ";", &rest)) {
                if (!strcasecmp(word, "substring"))
                    substring = true;
                else if (!strcasecmp(word, "x86"))
                    flags |= 1;
            }
        }

        TeskUtils::Table<TeskUtils::CharString, 16> hits;
        if (substring)
            InstalledList(&hits, name, templateXml.ParVal(node, "Publisher"), flags);
        else if (IsInstalled(name, flags))
            hits.append(TeskUtils::CharString(name));

        TeskUtils::CharString arguments;
        if (const char* text = templateXml.ParVal(node, "Arguments"))
            ExpandCharString(text, arguments, false);

        for (int h = 0; h < hits.count; ++h) {
            frame.show();
            if (!waiting) {
                frame.setState(SETTING_WAITING);
                waiting = true;
            }
            char line[1100];
            snprintf(line, sizeof line, "Uninstalling \"%s\" ...", hits[h].c_str());
            ui->EndDecompress(line, true);
            UnInstallApplication(hits[h].c_str(), flags, ui, arguments.c_str());
            condition->addEntry(hits[h].c_str(), flags);
        }
    }

    if (condition->Eval(this, ui)) {
        frame.shown = true;
    } else {
        frame.show();
        frame.setState(SETTING_WAITING);
    }
    shown = frame.shown;
}

int Installer::SetDlgHelper(int dlg, int sub, InstallerUI* ui, DLGINFO& info)
{
    if (!ui)
        return 0;
    if (debugConsole)
        debugConsole->Dump("Setting dialog \"%s\" (%d, %d)", info.name, dlg, sub);
    setControlVariable(CV_DLG_CONDITION, "0");

    StageFrame frame { *this, ui, dlg, sub };
    if (info.flags & DLG_BUSY) {
        SetStateSettings(SETTING_BUSY);
        ui->UpdateValidation(dlg, sub);
        ui->ShowUIElements(dlg, sub, true);
        evaluateTriggers(ui, TRIGGER_ON_DLG_EVAL, dlg, sub);
        frame.shown = true;
    }

    const bool uninstallRun = logStream != nullptr;
    const char* name = info.name;
    int result = 0;
    if (!strcmp(name, "Uninstall")) {
        frame.enterWork();
        stateError = stageUninstall(ui);
        frame.leaveWork();
    } else if (!strcmp(name, "CopyProgress")) {
        frame.enterWork();
        correctDirVariables();
        stateError = uninstallRun ? UnInstall(ui, nullptr) : DoInstall(ui);
        frame.leaveWork();
    } else if (!strcmp(name, "RevertInstallation")) {
        frame.enterWork();
        stateError = RevertInstall(ui);
        frame.leaveWork();
    } else if (!strcmp(name, "RevertUninstallation")) {
        frame.enterWork();
        stateError = RevertUninstall(ui);
        frame.leaveWork();
    } else if (!strcmp(name, "RegisterApplication")) {
        frame.shown = true;
        stateError = uninstallRun ? 1 : !RegisterApplication();
    } else if (!strcmp(name, "UnregisterApplication")) {
        frame.shown = true;
        if (uninstallRun) {
            char appName[1024];
            if (GetAppName(appName, sizeof appName) != 0)
                stateError = 1;
            else
                stateError = !unregisterApplication(appName);
        }
    } else if (!strcmp(name, "CleanupDetails")) {
        showCleanupDetails(ui);
        frame.show();
    } else if (!strcmp(name, "InstallationCleanup")) {
        frame.enterWork();
        stateError = CleanupInstall(ui);
        frame.leaveWork();
    } else if (!strcmp(name, "PreUninstall")) {
        frame.show();
        stateError = prepareUninstall(ui, nullptr);
    } else if (!strcmp(name, "PostInstall")) {
        stateError = postInstall(ui);
        if (stateError == 0)
            result = 1;
    } else if (!strcmp(name, "RunningApps")) {
        stageRunningApps(dlg, sub, ui, info, frame.shown);
    } else if (!strcmp(name, "ExternalUninstall")) {
        stageExternalUninstall(dlg, sub, ui, info, frame.shown);
    } else if (!strcmp(name, "Finish") || !strcmp(name, "BadFinish")) {
        frame.show();
        if (logCollector.GetCount() > 0) {
            char title[64];
            snprintf(
                title, sizeof title, "%s errors summary:", uninstallRun ? "Uninstallation" : "Installation");
            logCollector.OutputLogCollection(ui, title);
        }
    }

    frame.show();
    if ((info.flags & DLG_BUSY) && settingsState == SETTING_BUSY) {
        SetStateSettings(SETTING_IDLE);
        ui->UpdateValidation(dlg, sub);
    }
    if (info.flags & DLG_AUTO_NEXT) {
        const char* condition = info.autoCondition.c_str();
        result = !*condition || EvalCondition(condition) != 0 ? 1 : 0;
    }
    return result;
}
