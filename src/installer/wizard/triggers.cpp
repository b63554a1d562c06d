// Triggers: small actions of a dialog that run when it is entered or left, when a field
// changes, in a Busy dialog's work or on a button; and the test of which parts of a dialog
// depend on a variable, which front ends run after each change of a field.
#include <cstring>
#include <strings.h>

#include "foundation/misc/path_utils.h"
#include "foundation/streams/pconsole.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/path_size.h"
#include "installer/installer.h"

namespace {

bool mentions(const char* text, const char* name)
{
    return text && name && *name && strstr(text, name) != nullptr;
}

} // namespace

int Installer::DialogNeedsUpdate(const char* name, int dlg, int sub)
{
    if (!name)
        return 0;
    DLGINFO* dialog = GetDialogInfo(dlg, -1);
    if (!dialog)
        return 0;
    DLGINFO* record = GetDialogInfo(dlg, sub);
    if (!record)
        record = dialog;

    int mask = 0;
    TeskUtils::Table<const char*, 16> validationVariables;
    for (const FIELDINFO& field : record->fields) {
        if (mentions(field.condition, name) || mentions(field.enableCondition, name))
            mask |= UPDATE_FIELDS;
        if (field.validationVariable[0])
            validationVariables.append(field.validationVariable);
    }

    // A field shows a variable whose expression follows this one.
    if (!(mask & UPDATE_FIELDS)) {
        char reference[VARIABLE_NAME_SIZE + 1];
        reference[0] = '$';
        TeskUtils::copyBounded(reference + 1, name, sizeof(reference) - 1);
        for (const FIELDINFO& field : record->fields) {
            int index = GetVar(field.variable, nullptr, 0);
            if (index >= 0 && strstr(variables[index].expression, reference)) {
                mask |= UPDATE_FIELDS;
                break;
            }
        }
    }

    for (int c = 0; c < record->controls.count && !(mask & UPDATE_CONTROLS); ++c) {
        const char* condition = record->controls[c].condition;
        bool depends = mentions(condition, name);
        for (int v = 0; v < validationVariables.count && !depends; ++v)
            depends = mentions(condition, validationVariables[v]);
        if (depends)
            mask |= UPDATE_CONTROLS;
    }

    for (const BUTTONINFO& button : record->buttons) {
        if (mentions(button.condition, name))
            mask |= UPDATE_BUTTONS;
    }

    for (int t = 0; t < dialog->tasks.count && !(mask & UPDATE_TASKS); ++t) {
        if (mentions(dialog->tasks[t].enableCondition, name))
            mask |= UPDATE_TASKS;
    }

    for (const TRIGGER_INFO& trigger : record->triggers) {
        if (mentions(trigger.condition, name))
            mask |= trigger.updateMask;
    }
    return mask;
}

void Installer::evaluateTriggers(InstallerUI* ui, int mask, int dlg, int sub)
{
    DLGINFO* record = GetDialogInfo(dlg, sub);
    if (!record)
        return;
    evaluateTriggerList(ui, mask, record->triggers);
}

void Installer::evaluateTriggerArray(InstallerUI* ui, int mask, const TRIGGER_INFO* triggers, int count)
{
    for (int t = 0; t < count; ++t) {
        const TRIGGER_INFO& trigger = triggers[t];
        if (!(trigger.evaluation & mask))
            continue;
        if (EvalCondition(trigger.condition) == 0)
            continue;

        switch (trigger.type) {
        case TRIGGER_VAR_CHANGE: {
            char value[1024] = {};
            ExpandString(trigger.value, value, sizeof(value), false);
            SetVar(trigger.variable, value);
            break;
        }
        case TRIGGER_RUN_ACTIONS:
            RunFiles(ui, trigger.value);
            break;
        case TRIGGER_VAR_RESET:
            if (ResetVar(trigger.variable, VARRESET_RECALCULATE) != 0 && debugConsole)
                debugConsole->Dump("WARNING: Trying to reset non-existent variable: %s", trigger.variable);
            break;
        case TRIGGER_VAR_RECALCULATION:
            recalcVariables(GetVar(trigger.variable, nullptr, 0));
            break;
        case TRIGGER_FILE_CHECK: {
            char path[TeskUtils::kPathSize] = {};
            ExpandString(trigger.value, path, sizeof(path), false);
            TeskUtils::uniCorrectPathString(path);
            if (TeskUtils::uniPathOrFileExists(path))
                SetVar(trigger.variable, path);
            else if (ResetVar(trigger.variable, VARRESET_DEFAULT) != 0 && debugConsole)
                debugConsole->Dump("WARNING: Trying to reset non-existent variable: %s", trigger.variable);
            break;
        }
        case TRIGGER_UI:
            performUIAction(ui, trigger.value);
            break;
        case TRIGGER_FREE_MEMORY:
            freeCompressData();
            break;
        case TRIGGER_DEBUG_EXPRESSION: {
            if (!debugConsole)
                break;
            char value[2048] = {};
            ExpandString(trigger.value, value, sizeof(value), false);
            if (!value[0])
                debugConsole->Dump(
                    "WARNING: Empty debug trigger in dialog (%d, %d)", currentDlg, currentSubDlg);
            else
                debugConsole->Dump(
                    "DEBUG: Dlg (%d, %d) trigger expanded value: %s", currentDlg, currentSubDlg, value);
            break;
        }
        default:
            if (debugConsole)
                debugConsole->Dump("WARNING: Unrecognized trigger type (%d)", trigger.type);
            break;
        }
    }
}

void Installer::performUIAction(InstallerUI* ui, const char* action)
{
    if (!ui) {
        if (debugConsole)
            debugConsole->Dump("WARNING: Attempting UI Action when no UI handle is available");
        return;
    }
    if (!action || !*action) {
        if (debugConsole)
            debugConsole->Dump("WARNING: Attempting UI Action with no action specified");
        return;
    }

    struct WindowAction
    {
        const char* word;
        InstallerUI::UIAction action;
    };
    static const WindowAction kWindowActions[] = {
        { "hide", InstallerUI::UIA_HIDE },
        { "show", InstallerUI::UIA_SHOW },
        { "iconize", InstallerUI::UIA_ICONIZE },
        { "maximize", InstallerUI::UIA_MAXIMIZE },
    };
    for (const WindowAction& row : kWindowActions) {
        if (strcasecmp(action, row.word) == 0) {
            ui->ManageWindow(row.action);
            return;
        }
    }
    if (strcasecmp(action, "update") == 0) {
        ui->UpdateSubDlg(currentDlg, currentSubDlg, UPDATE_ALL, true);
        return;
    }
    if (debugConsole)
        debugConsole->Dump("WARNING: Unrecognized UI Action: %s", action);
}
