#pragma once
// InstallerUI: what the engine sees of a front end. The engine tells it which dialog to
// show, what changed and how far the work has come; all calls come on the thread that runs
// StartUI, from inside the front end's own calls into the engine (EvNext and the like), and
// long work runs inside them, so a front end stays alive through Idle and the progress
// calls. The engine doesn't own the front end.
//
// Every operation has a body that does nothing (and gives 0, false, or true for MessageBox
// as a quiet front end would), so that a front end writes only what it shows; a real one
// writes StartUI at least.
#include "installer/wizard/exchange_enums.h"

class InstallerUI
{
public:
    // What ManageWindow does to the main window.
    enum UIAction {
        UIA_SHOW = 1,
        UIA_HIDE = 2,
        UIA_ICONIZE = 3,
        UIA_MAXIMIZE = 4,
    };

    virtual ~InstallerUI() { }

    // Runs the wizard; called once as the last step of the engine's start. Gives the run's
    // result.
    virtual int StartUI() { return 0; }
    // Closing words, right after StartUI; gives 0.
    virtual int EndUI() { return 0; }
    // Builds dialog `dlg` (after NBeginDialog).
    virtual void SetDlg(int dlg) { (void)dlg; }
    // Builds sub-dialog `sub` of `dlg` (after NBeginSubDialog).
    virtual void SetSubDlg(int dlg, int sub)
    {
        (void)dlg;
        (void)sub;
    }
    // Re-checks the enabled state of buttons and the validation of fields; called at each
    // change of SETTINGSTATE in the stage work.
    virtual void UpdateValidation(int dlg, int sub)
    {
        (void)dlg;
        (void)sub;
    }
    // Refreshes the parts of (dlg, sub) named by `updateMask` (UPDATETYPE bits); the engine
    // passes UPDATE_ALL and true.
    virtual void UpdateSubDlg(int dlg, int sub, UPDATETYPE updateMask, bool force)
    {
        (void)dlg;
        (void)sub;
        (void)updateMask;
        (void)force;
    }
    virtual void UpdateDlgFields(int dlg, int sub)
    {
        (void)dlg;
        (void)sub;
    }
    virtual void UpdateDlgCtrls() { }
    // Makes the elements of (dlg, sub) visible; once per entered dialog, before its work.
    virtual void ShowUIElements(int dlg, int sub, bool show)
    {
        (void)dlg;
        (void)sub;
        (void)show;
    }
    virtual void NBeginDialog(int dlg) { (void)dlg; }
    virtual void NBeginSubDialog(int dlg, int sub)
    {
        (void)dlg;
        (void)sub;
    }
    virtual void NEndDialog(int dlg) { (void)dlg; }
    virtual void NEndSubDialog(int dlg, int sub)
    {
        (void)dlg;
        (void)sub;
    }
    // Empties the task list; on leaving a dialog.
    virtual void ClearTasks() { }
    // Removes the sub-dialogs' controls; on leaving a dialog.
    virtual void ClearSubCtrls() { }
    // Keeps the control `name` with its content for the next (sub-)dialog; called before
    // the clearing, for each name of the dialog's Retain list.
    virtual void RetainSubCtrl(const char* name) { (void)name; }
    // True when the user confirmed a cancel; a front end consults GetStateSettings and
    // GetAbortMessage of the engine.
    virtual bool ConfirmCancel() { return false; }
    // Enables or disables the buttons marked Disableable.
    virtual void EnableButtons(bool enable) { (void)enable; }
    // Keeps the front end alive during long work.
    virtual void Idle() { }
    // Percentages of the whole work and of the current file.
    virtual void SetOverallProgress(int percent) { (void)percent; }
    virtual void SetCurrentProgress(int percent) { (void)percent; }
    // The file being worked on; also used for lines of the list control.
    virtual void SetDestination(const char* text) { (void)text; }
    // Before decompressing a file.
    virtual void StartDecompress() { }
    // After decompressing a file, and the general way of adding a line to the list
    // control; a null text with `close` true closes a batch. Gives 0.
    virtual int EndDecompress(const char* text, bool close)
    {
        (void)text;
        (void)close;
        return 0;
    }
    // Empties the list control.
    virtual void ClearList() { }
    // Tells or asks the user: type 0 OK/Cancel, 1 a plain message, 2 yes/no. True for the
    // first answer; a quiet front end gives true at once.
    virtual bool MessageBox(const char* text, int type)
    {
        (void)text;
        (void)type;
        return true;
    }
    // Around a copy.
    virtual void ProgressStart() { }
    virtual void ProgressEnd() { }
    // True for a graphical front end; asked once at the start.
    virtual bool IsGUIInstaller() { return false; }
    // Non-zero when a failed install step is not to stop the run.
    virtual int IgnoreErrors() { return 0; }
    // Shows task `name` with `label` in `status`.
    virtual void SetTask(const char* name, const char* label, TASKSTATUS status)
    {
        (void)name;
        (void)label;
        (void)status;
    }
    // Applies `action` to the main window.
    virtual void ManageWindow(UIAction action) { (void)action; }
    virtual void ShowHelp() { }
    // Chooses the input provider from `text`; `automated` receives whether the run asks
    // nothing. Called by the program's main only.
    virtual void init_input(const char* text, bool& automated)
    {
        (void)text;
        automated = false;
    }
    // Keep and display a fatal error; called by the program's main only.
    virtual void setErrorMessage(const char* text, const char* title)
    {
        (void)text;
        (void)title;
    }
    virtual void showErrorMessage() { }
};
