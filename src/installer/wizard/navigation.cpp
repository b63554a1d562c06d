// The wizard's state machine: a position (dialog, sub-dialog), the state flags and the
// events of the front end that move the position.
//
// A forward walk spends one unit of shift on every dialog it enters; a dialog that goes on
// by itself (the stage dispatch gives 1) or whose condition object holds gives it back, so
// such dialogs are passed through within the same EvNext. A dialog whose Condition is false
// is passed over without cost. Going back tests no condition objects.
#include "foundation/streams/pconsole.h"
#include "installer/installer.h"
#include "installer/wizard/dialog_conditions.h"

int Installer::GetCurDlg()
{
    return currentDlg;
}

int Installer::GetCurSubDlg()
{
    return currentSubDlg;
}

int Installer::GetStateCancel()
{
    return stateCancel;
}

int Installer::GetStateFinish()
{
    return stateFinish;
}

int Installer::GetStateError()
{
    return stateError;
}

void Installer::SetStateSettings(SETTINGSTATE state)
{
    settingsState = state;
}

SETTINGSTATE Installer::GetStateSettings()
{
    return settingsState;
}

namespace {

bool hasSubDialogs(const DLGINFO& dlg)
{
    return (dlg.flags & DLG_HAS_SUBDIALOGS) != 0;
}

// The record of sub-dialog `sub` of dialog `dlg`; null when the dialog has no sub-dialogs
// or `sub` is no index of one (-1 stands on the dialog itself).
DLGINFO* subDialogAt(Installer& engine, int dlg, int sub)
{
    DLGINFO* dialog = engine.GetDialogInfo(dlg, -1);
    return dialog && hasSubDialogs(*dialog) && sub >= 0 ? engine.GetDialogInfo(dlg, sub) : nullptr;
}

// The first steps of entering a (sub-)dialog: the current position is left. Its Retain
// names are passed on, the front end is told (the end of a whole dialog clears its tasks
// and sub-controls) and its End triggers run.
void leaveCurrentPosition(Installer& engine, InstallerUI* ui, bool wholeDialog)
{
    const int oldDlg = engine.currentDlg;
    const int oldSub = engine.currentSubDlg;
    if (DLGINFO* old = engine.GetDialogInfo(oldDlg, oldSub)) {
        for (const TeskUtils::CharString& name : old->retained)
            ui->RetainSubCtrl(name.c_str());
    }
    if (oldDlg < 0 || oldDlg >= engine.dialogs.count)
        return;
    if (wholeDialog) {
        ui->NEndDialog(oldDlg);
        ui->ClearTasks();
        ui->ClearSubCtrls();
    } else {
        ui->NEndSubDialog(oldDlg, oldSub);
    }
    engine.evaluateTriggers(ui, TRIGGER_ON_END, oldDlg, oldSub);
}

} // namespace

// ---- Entering a dialog ----------------------------------------------------------------------

int Installer::EvSetDlg(int dlg, InstallerUI* ui)
{
    if (!ui || dlg < 0 || dlg >= dialogs.count)
        return -1;

    // The very first entry finds dialog 0 already current and leaves it too.
    leaveCurrentPosition(*this, ui, true);

    currentDlg = dlg;
    currentSubDlg = -1;
    evaluateTriggers(ui, TRIGGER_ON_SET, dlg, -1);
    ui->NBeginDialog(dlg);
    ui->SetDlg(dlg);
    return SetDlgHelper(dlg, -1, ui, dialogs[dlg]);
}

int Installer::EvSetSubDlg(int dlg, int sub, InstallerUI* ui)
{
    DLGINFO* info = GetDialogInfo(dlg, -1);
    if (!ui || !info || sub < 0 || sub >= info->subDialogs.count)
        return -1;

    leaveCurrentPosition(*this, ui, false);

    currentDlg = dlg;
    currentSubDlg = sub;
    evaluateTriggers(ui, TRIGGER_ON_SET, dlg, sub);
    UpdateTaskListItem(ui, dlg, sub, TASK_CURRENT);
    ui->NBeginSubDialog(dlg, sub);
    ui->SetSubDlg(dlg, sub);
    return SetDlgHelper(dlg, sub, ui, info->subDialogs[sub]);
}

// ---- Forward ----------------------------------------------------------------------------------

int Installer::EvNext(InstallerUI* ui, int shift)
{
    if (!ui)
        return -1;

    const int startDlg = currentDlg;
    const int startSub = currentSubDlg;
    DLGINFO* dialog = GetDialogInfo(startDlg, -1);
    DLGINFO* subDialog = subDialogAt(*this, startDlg, startSub);
    if ((dialog && (dialog->flags & DLG_FINISH)) || (subDialog && (subDialog->flags & DLG_FINISH))) {
        stateFinish = 1;
        return 0;
    }

    // A condition object that fails holds the wizard, after one more try on re-entering.
    if (dialog && dialog->conditionObject && !dialog->conditionObject->Eval(this, ui) &&
        !(dialog->flags & DLG_WEAK_CONDITION)) {
        EvSetDlg(startDlg, ui);
        if (dialog->conditionObject && !dialog->conditionObject->Eval(this, ui))
            return -1;
    }
    if (subDialog && subDialog->conditionObject && !subDialog->conditionObject->Eval(this, ui) &&
        !(subDialog->flags & DLG_WEAK_CONDITION)) {
        EvSetSubDlg(startDlg, startSub, ui);
        if (subDialog->conditionObject && !subDialog->conditionObject->Eval(this, ui))
            return -1;
    }

    if (shift < 1 || stateFinish)
        return 0;

    int i = currentDlg;
    int j = currentSubDlg;
    int remaining = shift;
    while (i >= 0 && i < dialogs.count) {
        DLGINFO& walked = dialogs[i];
        if (hasSubDialogs(walked) && j >= walked.subDialogs.count)
            break;

        DLGINFO* current = GetDialogInfo(currentDlg, -1);
        DLGINFO* currentSub = subDialogAt(*this, currentDlg, currentSubDlg);
        if ((current && (current->flags & DLG_FINISH)) || (currentSub && (currentSub->flags & DLG_FINISH))) {
            stateFinish = 1;
            return 0;
        }

        int next;
        if (hasSubDialogs(walked) && j < walked.subDialogs.count - 1) {
            ++j;
            if (EvalCondition(walked.subDialogs[j].condition) == 0)
                goto endOfRound;
            UpdateTaskListItem(ui, currentDlg, currentSubDlg, stateError ? TASK_FINISHED_BAD : TASK_FINISHED_GOOD);
            next = remaining + EvSetSubDlg(i, j, ui);
        } else {
            ++i;
            j = 0;
            if (i >= dialogs.count)
                goto endOfRound;
            if (EvalCondition(dialogs[i].condition) == 0)
                goto endOfRound;
            next = remaining + EvSetDlg(i, ui);
            if (hasSubDialogs(dialogs[i]))
                next += EvSetSubDlg(i, 0, ui);
        }

        {
            // A condition object that fails stops the walk here; one that holds lets it
            // go on as if the dialog had gone on by itself.
            DLGINFO& entered = dialogs[i];
            if (entered.conditionObject) {
                if (!entered.conditionObject->Eval(this, ui))
                    return 0;
                ++next;
            }
            DLGINFO* enteredSub = subDialogAt(*this, i, j);
            if (enteredSub && enteredSub->conditionObject) {
                if (!enteredSub->conditionObject->Eval(this, ui))
                    return 0;
                ++next;
            }
            remaining = next - 1;
        }

    endOfRound:
        if (remaining < 1 || stateFinish)
            return 0;
    }

    if (debugConsole)
        debugConsole->Dump("ERROR: Bad dialog next shifting. Current dialogs: (%d, %d) - Next dialogs: (%d, %d)",
                           currentDlg, currentSubDlg, i, j);
    stateError = 1;
    stateFinish = 1;
    return 0;
}

// ---- Back -------------------------------------------------------------------------------------

int Installer::EvBack(InstallerUI* ui, int shift)
{
    if (!ui)
        return -1;

    int i = currentDlg;
    int j = currentSubDlg;
    while (shift >= 1) {
        if (i < 0 || i >= dialogs.count || (hasSubDialogs(dialogs[i]) && j < 0))
            break;

        DLGINFO& dialog = dialogs[i];
        if (hasSubDialogs(dialog) && j >= 1) {
            // The tasks of the sub-dialogs crossed go back to "not reached".
            UpdateTaskListItem(ui, i, j, TASK_NOT_REACHED);
            --j;
            if (j < dialog.subDialogs.count && EvalCondition(dialog.subDialogs[j].condition) == 0)
                continue;
            if (--shift == 0) {
                EvSetSubDlg(i, j, ui);
                return 0;
            }
            continue;
        }

        --i;
        if (i < 0)
            continue;
        DLGINFO& previous = dialogs[i];
        j = previous.subDialogs.count - 1;
        if (EvalCondition(previous.condition) == 0)
            continue;
        if (hasSubDialogs(previous) && j >= 0 && EvalCondition(previous.subDialogs[j].condition) == 0)
            continue;
        if (--shift == 0) {
            EvSetDlg(i, ui);
            if (hasSubDialogs(previous))
                EvSetSubDlg(i, j, ui);
            return 0;
        }
    }
    if (shift < 1)
        return 0;

    if (debugConsole)
        debugConsole->Dump("ERROR: Bad dialog back shifting. Current dialog: %d, current subdialog: %d", currentDlg,
                           currentSubDlg);
    stateError = 1;
    stateFinish = 1;
    return 0;
}

// ---- Other events -----------------------------------------------------------------------------

int Installer::EvCancel(InstallerUI* ui)
{
    if (!ui)
        return -1;
    if (ui->ConfirmCancel())
        stateCancel = 1;
    return 0;
}

int Installer::PerformButtonDlgShift(InstallerUI* ui, int shift)
{
    if (shift > 0)
        return EvNext(ui, shift);
    if (shift < 0)
        return EvBack(ui, -shift);
    return 0;
}

int Installer::GetDialogConditionEval(InstallerUI* ui)
{
    DLGINFO* dialog = GetDialogInfo(currentDlg, -1);
    if (!dialog)
        return 0;
    DLGINFO* record = dialog;
    if (hasSubDialogs(*dialog)) {
        record = subDialogAt(*this, currentDlg, currentSubDlg);
        if (!record)
            return 0;
    }
    if (!record->conditionObject)
        return 2;
    int result = record->conditionObject->Eval(this, ui) ? 1 : 0;
    setControlVariable(CV_DLG_CONDITION, result ? "1" : "0");
    return result;
}
