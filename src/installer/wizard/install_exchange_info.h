#pragma once
// InstallExchangeInfo: what a front end sees of the engine. A front end reads the dialogs
// from it, asks for variables and conditions, and reports the user's actions to it; it
// needs nothing else of the engine. Installer implements it.
//
// Every operation has a default body, so that a partial engine (or a test double) is a
// complete class: text getters give -1, counts and pointers 0, GetDialogConditionEval 2
// ("no such test"), events -1.
//
// Text getters take a buffer and its size in bytes and give 0 on success, -1 on failure.
// Index arguments are bounds-checked. The item getters take (dlg, index, sub), the counters
// (dlg, sub); a negative sub means the dialog itself, 0 or more one of its sub-dialogs.
// Pointers handed out stay valid for the whole run: the dialogs are never rebuilt.
#include <cstdint>

#include "foundation/strings/tesk_utils.h"
#include "installer/model/colour_theme.h"
#include "installer/wizard/dialog_records.h"
#include "installer/wizard/exchange_enums.h"

class InstallerUI;

class InstallExchangeInfo
{
public:
    virtual ~InstallExchangeInfo() { }

    // ---- Product description and template paths ----
    virtual int GetAppName(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    virtual int GetAppTitle(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    virtual int GetAppMajorVer(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    virtual int GetAppFullVer(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    virtual int GetAppWebsite(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    virtual int GetAppSupportEmail(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    // The four paths below give 1 when the tag's expansion is empty.
    virtual int GetInstallLogFile(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    virtual int GetInstallBackupFile(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    virtual int GetUninstallCmd(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    virtual int GetUninstallXMLFile(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    // A fresh temporary file name.
    virtual int GetTempFile(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    virtual int GetInstallHelpURL(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    // The previous-installation state; 0 for none.
    virtual int GetPreviousInstall() { return 0; }
    // True when the engine was started to uninstall.
    virtual bool IsUninstall() { return false; }
    // The text by which a front end asks to confirm a cancel in `state`; `skip` receives
    // non-zero when the question is not to be put at all.
    virtual TeskUtils::CharString GetAbortMessage(SETTINGSTATE state, int& skip)
    {
        (void)state;
        skip = 0;
        return TeskUtils::CharString();
    }
    // The decompressed content of a packed file, with a NUL behind it; an empty array when
    // the alias is unknown, in which case `size` is left alone.
    virtual TeskUtils::PtrArray<unsigned char> GetAliasData(const char* alias, int& size) const
    {
        (void)alias;
        (void)size;
        return TeskUtils::PtrArray<unsigned char>();
    }
    // Where the packed file of `alias` is installed: fills `out`, or leaves it untouched.
    // Gives -1 in either case; judge by the buffer.
    virtual int GetAliasDestination(const char* alias, char* out, int size) const
    {
        (void)alias;
        (void)out;
        (void)size;
        return -1;
    }

    // ---- Dialogs ----
    virtual DLGINFO* GetDialogInfo(int dlg, int sub)
    {
        (void)dlg;
        (void)sub;
        return nullptr;
    }
    virtual int GetDialogsCount() { return 0; }
    virtual int GetDialogWidth(int dlg)
    {
        (void)dlg;
        return 0;
    }
    virtual int GetDialogHeight(int dlg)
    {
        (void)dlg;
        return 0;
    }
    virtual int GetSubDialogsCount(int dlg)
    {
        (void)dlg;
        return 0;
    }
    virtual int GetCurDlg() { return 0; }
    // -1 on a dialog without sub-dialogs.
    virtual int GetCurSubDlg() { return -1; }
    // The UPDATETYPE bits of the parts of (dlg, sub) that depend on `variable`.
    virtual int DialogNeedsUpdate(const char* variable, int dlg, int sub)
    {
        (void)variable;
        (void)dlg;
        (void)sub;
        return 0;
    }
    virtual UICTRL* GetDlgItem(int dlg, int index, int sub)
    {
        (void)dlg;
        (void)index;
        (void)sub;
        return nullptr;
    }
    virtual int GetDlgItemCount(int dlg, int sub)
    {
        (void)dlg;
        (void)sub;
        return 0;
    }
    virtual BUTTONINFO* GetDlgButton(int dlg, int index, int sub)
    {
        (void)dlg;
        (void)index;
        (void)sub;
        return nullptr;
    }
    virtual int GetDlgButtonCount(int dlg, int sub)
    {
        (void)dlg;
        (void)sub;
        return 0;
    }
    virtual FIELDINFO* GetField(int dlg, int index, int sub)
    {
        (void)dlg;
        (void)index;
        (void)sub;
        return nullptr;
    }
    virtual int GetTaskInfoCount(int dlg)
    {
        (void)dlg;
        return 0;
    }
    virtual TASKINFO* GetTaskInfo(int dlg, int index)
    {
        (void)dlg;
        (void)index;
        return nullptr;
    }
    virtual int GetFieldCount(int dlg, int sub)
    {
        (void)dlg;
        (void)sub;
        return 0;
    }

    // ---- Wizard state ----
    virtual int GetStateCancel() { return 0; }
    virtual int GetStateFinish() { return 0; }
    virtual int GetStateError() { return 0; }
    // The directory of the installer (where the configuration file goes); without one set,
    // the directory of the running program.
    virtual void SetInstallerPath(const char* path) { (void)path; }
    virtual int GetInstallerPath(char* buffer, int size)
    {
        (void)buffer;
        (void)size;
        return -1;
    }
    // 0 or 1: the current dialog's condition object failed or held; 2: there is none.
    virtual int GetDialogConditionEval(InstallerUI* ui)
    {
        (void)ui;
        return 2;
    }
    virtual void SetStateSettings(SETTINGSTATE state) { (void)state; }
    virtual SETTINGSTATE GetStateSettings() { return SETTING_IDLE; }

    // ---- Variables and conditions ----
    // Expands the [NAME] references of `text` into `buffer`; gives the length of the full
    // expansion plus one, or 0 for an empty text.
    virtual int ExpandString(const char* text, char* buffer, int size, bool strict)
    {
        (void)text;
        (void)strict;
        if (buffer && size > 0)
            buffer[0] = '\0';
        return 0;
    }
    // The default value of a variable; results as GetVar.
    virtual int GetVarDefaultValue(const char* name, char* buffer, int size)
    {
        (void)name;
        (void)buffer;
        (void)size;
        return -1;
    }
    // The value of a variable: the record's index, -2 for a predefined or environment
    // variable, -1 when unknown.
    virtual int GetVar(const char* name, char* buffer, int size)
    {
        (void)name;
        (void)buffer;
        (void)size;
        return -1;
    }
    // 0 on success, -1 when the variable can't be set.
    virtual int SetVar(const char* name, const char* value)
    {
        (void)name;
        (void)value;
        return -1;
    }
    // 1 true, 0 false, -1 a condition that can't be parsed (which callers take as true).
    virtual int EvalCondition(const char* condition)
    {
        (void)condition;
        return -1;
    }

    // ---- Events of the front end ----
    // Runs a button's action text; called before PerformButtonDlgShift.
    virtual void PerformButtonAction(InstallerUI* ui, const char* action)
    {
        (void)ui;
        (void)action;
    }
    // Moves the wizard by a button's shift: forward for a positive one, back for a
    // negative one, nowhere for 0.
    virtual int PerformButtonDlgShift(InstallerUI* ui, int shift)
    {
        (void)ui;
        (void)shift;
        return -1;
    }
    virtual int EvHelp(InstallerUI* ui)
    {
        (void)ui;
        return -1;
    }
    virtual int EvBack(InstallerUI* ui, int shift)
    {
        (void)ui;
        (void)shift;
        return -1;
    }
    virtual int EvNext(InstallerUI* ui, int shift)
    {
        (void)ui;
        (void)shift;
        return -1;
    }
    virtual int EvCancel(InstallerUI* ui)
    {
        (void)ui;
        return -1;
    }
    virtual int EvSetDlg(int dlg, InstallerUI* ui)
    {
        (void)dlg;
        (void)ui;
        return -1;
    }
    virtual int EvSetSubDlg(int dlg, int sub, InstallerUI* ui)
    {
        (void)dlg;
        (void)sub;
        (void)ui;
        return -1;
    }
    // Runs the triggers of (dlg, sub) whose TRIGGER_EVALUATION bits meet `mask`.
    virtual void evaluateTriggers(InstallerUI* ui, int mask, int dlg, int sub)
    {
        (void)ui;
        (void)mask;
        (void)dlg;
        (void)sub;
    }
    virtual int UpdateTaskList(InstallerUI* ui)
    {
        (void)ui;
        return 0;
    }
    virtual int UpdateTaskListItem(InstallerUI* ui, int dlg, int task, TASKSTATUS status)
    {
        (void)ui;
        (void)dlg;
        (void)task;
        (void)status;
        return -1;
    }

    // ---- Colours ----
    // True when the template has a ColourTheme section or some dialog sets its colours.
    virtual bool CustomThemedGUI() { return false; }
    // The colour of a THEMECOLOUR; COLOUR_NOT_SET for an index outside 0..19.
    virtual uint64_t GetThemeColour(THEMECOLOUR colour)
    {
        (void)colour;
        return COLOUR_NOT_SET;
    }
    // The (background, foreground) pair of dialog `dlg`, or of its sub-dialog `sub` when
    // sub is 0 or more. Gives 0, or -1 for an index out of range (both then unset).
    virtual int GetDlgColour(int dlg, int sub, uint64_t& background, uint64_t& foreground)
    {
        (void)dlg;
        (void)sub;
        background = COLOUR_NOT_SET;
        foreground = COLOUR_NOT_SET;
        return -1;
    }
};
