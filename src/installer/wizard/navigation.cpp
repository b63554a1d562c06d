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

// True when the current position is a dialog or sub-dialog marked Finish.
bool atFinishDialog(Installer& engine)
{
    const DLGINFO* dialog = engine.GetDialogInfo(engine.currentDlg, -1);
    const DLGINFO* sub = subDialogAt(engine, engine.currentDlg, engine.currentSubDlg);
    return (dialog && (dialog->flags & DLG_FINISH)) || (sub && (sub->flags & DLG_FINISH));
}

// The condition object of `record`, the dialog `dlg` (sub -1) or its sub-dialog `sub`: when it
// fails and isn't weak, the position is entered again and the object gets one more try.
// False when it fails that one too.
bool holdsAfterRetry(Installer& engine, InstallerUI* ui, DLGINFO* record, int dlg, int sub)
{
    if (!record || !record->conditionObject || record->conditionObject->Eval(&engine, ui)
        || (record->flags & DLG_WEAK_CONDITION))
        return true;
    if (sub < 0)
        engine.EvSetDlg(dlg, ui);
    else
        engine.EvSetSubDlg(dlg, sub, ui);
    return !record->conditionObject || record->conditionObject->Eval(&engine, ui);
}

// A condition object of the current dialog, then of its sub-dialog, that fails holds the
// wizard (after its one more try). False when the wizard is held.
bool currentConditionsHold(Installer& engine, InstallerUI* ui)
{
    const int dlg = engine.currentDlg;
    const int sub = engine.currentSubDlg;
    DLGINFO* dialog = engine.GetDialogInfo(dlg, -1);
    DLGINFO* subDialog = subDialogAt(engine, dlg, sub);
    return holdsAfterRetry(engine, ui, dialog, dlg, -1) && holdsAfterRetry(engine, ui, subDialog, dlg, sub);
}

// After entering (dlg, sub): a condition object that fails stops the walk (false); one that
// holds lets it go on as if the dialog had gone on by itself, adding one to `gained`.
bool enteredConditionsHold(Installer& engine, InstallerUI* ui, int dlg, int sub, int& gained)
{
    DLGINFO& entered = engine.dialogs[dlg];
    if (entered.conditionObject) {
        if (!entered.conditionObject->Eval(&engine, ui))
            return false;
        ++gained;
    }
    DLGINFO* enteredSub = subDialogAt(engine, dlg, sub);
    if (enteredSub && enteredSub->conditionObject) {
        if (!enteredSub->conditionObject->Eval(&engine, ui))
            return false;
        ++gained;
    }
    return true;
}

// What one step of a forward walk came to.
enum class Step {
    Passed, // the position's Condition is false, or the dialogs ended: nothing entered
    Stopped, // a condition object of the entered position failed
    Entered, // entered; `gained` holds what entering gave
};

// Moves (dlg, sub) to the next position, the next sub-dialog of the dialog or else the next
// dialog (with its first sub-dialog), and enters it unless its Condition is false. `gained`
// receives the stage dispatch results of the entries plus what the condition objects add.
Step enterNext(Installer& engine, InstallerUI* ui, int& dlg, int& sub, int& gained)
{
    DLGINFO& walked = engine.dialogs[dlg];
    if (hasSubDialogs(walked) && sub < walked.subDialogs.count - 1) {
        ++sub;
        if (engine.EvalCondition(walked.subDialogs[sub].condition) == 0)
            return Step::Passed;
        engine.UpdateTaskListItem(ui, engine.currentDlg, engine.currentSubDlg,
            engine.stateError ? TASK_FINISHED_BAD : TASK_FINISHED_GOOD);
        gained = engine.EvSetSubDlg(dlg, sub, ui);
    } else {
        ++dlg;
        sub = 0;
        if (dlg >= engine.dialogs.count || engine.EvalCondition(engine.dialogs[dlg].condition) == 0)
            return Step::Passed;
        gained = engine.EvSetDlg(dlg, ui);
        if (hasSubDialogs(engine.dialogs[dlg]))
            gained += engine.EvSetSubDlg(dlg, 0, ui);
    }
    return enteredConditionsHold(engine, ui, dlg, sub, gained) ? Step::Entered : Step::Stopped;
}

// The forward walk of EvNext from (dlg, sub), the current position: each entered position
// spends one unit of `shift` and gives back what entering gained. True when the walk ended
// where it should (shift spent, a Finish dialog, a failed condition object); false when it
// ran past the dialogs, with (dlg, sub) where it stopped.
bool walkForward(Installer& engine, InstallerUI* ui, int shift, int& dlg, int& sub)
{
    int remaining = shift;
    while (dlg >= 0 && dlg < engine.dialogs.count) {
        const DLGINFO& walked = engine.dialogs[dlg];
        if (hasSubDialogs(walked) && sub >= walked.subDialogs.count)
            break;
        if (atFinishDialog(engine)) {
            engine.stateFinish = 1;
            return true;
        }
        int gained = 0;
        Step step = enterNext(engine, ui, dlg, sub, gained);
        if (step == Step::Stopped)
            return true;
        if (step == Step::Entered)
            remaining += gained - 1;
        if (remaining < 1 || engine.stateFinish)
            return true;
    }
    return false;
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
    if (atFinishDialog(*this)) {
        stateFinish = 1;
        return 0;
    }
    if (!currentConditionsHold(*this, ui))
        return -1;
    if (shift < 1 || stateFinish)
        return 0;

    int dlg = currentDlg;
    int sub = currentSubDlg;
    if (walkForward(*this, ui, shift, dlg, sub))
        return 0;
    if (debugConsole)
        debugConsole->Dump(
            "ERROR: Bad dialog next shifting. Current dialogs: (%d, %d) - Next dialogs: (%d, %d)", currentDlg,
            currentSubDlg, dlg, sub);
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
        debugConsole->Dump("ERROR: Bad dialog back shifting. Current dialog: %d, current subdialog: %d",
            currentDlg, currentSubDlg);
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
