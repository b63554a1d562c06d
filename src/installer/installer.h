#pragma once
// The installation engine. One object per process: it owns the cabinet, the template
// document, the variable store, the dialogs and the file tables, and lives as long as the
// front end's main. The platform it runs on is reached only through virtual operations,
// which LinuxInstaller (src/linux) fills in.
//
// The class is large by design. Its member definitions are split by concern into files
// under src/installer/<area>/, and the declarations below are grouped by the same areas,
// in the same order. Add members to the section of their area.

#include "foundation/strings/error_code.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/ptr_array.h"
#include "foundation/strings/table.h"
#include "package/cabinet_format.h"

#include "installer/model/condition_parser.h"
#include "installer/model/variable_record.h"
#include <cstdio>

class PConsole;
class CLParser;
class BackupFile;

#include "foundation/streams/pconsole.h"
#include "foundation/xml/pxml.h"
#include "installer/model/colour_theme.h"
#include "installer/model/file_sets.h"
#include "installer/model/platform_records.h"
#include "installer/transaction/extended_run_params.h"
#include "installer/transaction/log_collector.h"
#include "installer/wizard/dialog_records.h"
#include "installer/wizard/install_exchange_info.h"
#include "installer/wizard/installer_ui.h"

class Installer : public InstallExchangeInfo
{
public:
    // ---- Construction (installer.cpp) -----------------------------------------------------
    Installer();
    virtual ~Installer();
    Installer(const Installer&) = delete;
    Installer& operator=(const Installer&) = delete;

    // Optional log sink, tested for null at each use; not owned; InitDebugMode sets it.
    PConsole* debugConsole = nullptr;

    // ---- Cabinet and alias access (model/cabinet.cpp) -------------------------------------
    // Loads a cabinet. With bit 0 of `flags` (an uninstaller) `path` is an installation
    // log, opened into logStream: 0, or -1 when it can't be opened. Otherwise the file at
    // `path` is read from `offset` to its end, a solid body is decompressed, and a table
    // of the file records is made (appended to any earlier one). Gives 0, or:
    //   -2 not openable, -3 seek failed, -4 read failed or short,
    //   -5/-6/-7 first/second/third magic word wrong, -8 unknown record tag,
    //   -10 no memory for the cabinet, -11 and -21..-29 from the solid decompressor.
    int Init(const char* path, int offset, unsigned int flags);
    // A copy of record `index`'s content with a NUL behind it, into `out` (previous
    // content released); `size` gets its length, `md5` (when not null) the record's
    // digest. Gives 0, or -1 with nothing loaded, a bad index, or (plain cabinet) a
    // stream that doesn't inflate into no room at all; `size` is 0 on every failure.
    int Decompress(
        int index, int& size, TeskUtils::PtrArray<unsigned char>& out, unsigned char (*md5)[16]) const;
    // As above for the last record whose alias is `alias`; -1 without a log line, and
    // `size` untouched, when there is none.
    int Decompress(const char* alias, int& size, TeskUtils::PtrArray<unsigned char>& out,
        unsigned char (*md5)[16]) const;
    // The content of the last record of `alias`, whatever Decompress gave; an empty
    // array, `size` untouched, for an unknown alias.
    TeskUtils::PtrArray<unsigned char> GetAliasData(const char* alias, int& size) const override;
    // Frees the cabinet, its record table and the file tables derived from it.
    void freeCompressData();

    // The cabinet (compressed, or after a solid decompression the record stream); null
    // when nothing is loaded. From new[], freed here or with the object.
    unsigned char* cabinetData = nullptr;
    long cabinetDataSize = 0;
    TeskUtils::Table<CabinetFile, 100> cabinetFiles;
    int cabinetIsSolid = 0;
    // The path given to Init (the package), cut at 519 characters.
    char installerPath[TeskUtils::kPathSize] = {};
    unsigned int initFlags = 2;
    // The installation log in uninstall mode; null otherwise.
    FILE* logStream = nullptr;

private:
    // Frees the cabinet and closes the log when the object dies.
    struct CabinetReleaser
    {
        Installer* owner;
        ~CabinetReleaser();
    } cabinetReleaser { this };

public:
    // ---- Variable store (model/variables.cpp) ---------------------------------------------
    // Records in order of first definition, grown by 100. Predefined variables
    // (model/predefined_variables.cpp) are no records: they are computed at each read, go
    // before any record of the same name and can't be set.
    TeskUtils::Table<VariableRecord, 100> variables;
    // Set while default values are read; recalcVariables does nothing meanwhile.
    bool suspendRecalculation = false;

    // The value of `name` into `buffer` (at most size-1 characters; a null buffer only
    // looks). Gives the record's index, -2 when a predefined or environment variable
    // answered, -1 when unknown. "NAME:start:length" cuts the value ("#text" in either
    // place searches); "$NAME" reads the environment, modifiers included in the name.
    int GetVar(const char* name, char* buffer, int size) override;
    // SetVarExt(name, value, null, VARFLAG_KEEP, null).
    int SetVar(const char* name, const char* value) override;
    // The text "[NAME]='VALUE'": -1 when null or malformed, else SetVar(NAME, VALUE).
    int SetVar(const char* text);
    // Creates or changes a record; a null value, expression or default keeps the stored
    // one (a new record takes the default as its value). "$NAME" sets the environment and
    // gives -1. Gives 0, or -1 for a null or empty name and for a predefined one.
    // Changing an existing record recalculates every other recalculated variable.
    int SetVarExt(const char* name, const char* value, const char* expression, unsigned int flags,
        const char* defaultValue);
    // Recomputes a record from its expression or restores its default. 0, or -1 for an
    // unknown or predefined name.
    int ResetVar(const char* name, VariableResetType kind);
    // The default value of a record; for a predefined or environment name its current value.
    // Results as GetVar; -1 also for a null buffer.
    int GetVarDefaultValue(const char* name, char* buffer, int size) override;
    // Recomputes every record with VARFLAG_RECALCULATE but `except` (-1 for none), each
    // after the ones its expression uses.
    void recalcVariables(int except);

    // ---- Predefined variables (model/predefined_variables.cpp) ----------------------------
    // Whether the front end is a graphical one (its IsGUIInstaller, kept by noteFrontEnd
    // when the UI starts); read as GUI_INSTALL.
    bool guiInstall = false;
    // The toolkit of the front-end program, read as WX_PORT: "linux_gtk", "linux_x11" or
    // "linux_console". Each program sets its own.
    const char* frontEndPort = "linux_console";
    // Keeps what the variables tell of the front end `ui`: whether it is a graphical one.
    void noteFrontEnd(InstallerUI& ui);

    // -2 and the value when `name` is predefined, -1 when not (or when TEMP_DIR can't be
    // had). A null buffer only looks, except that HAVE_RPM and HAVE_DPKG always probe.
    int getPredefinedVar(const char* name, char* buffer, int size);

    // ---- Expansion (model/expansion.cpp) --------------------------------------------------
    // Expands the [NAME] references of a template text into `buffer` (a null buffer
    // measures). Gives the length of the full expansion plus one, 0 for a null or empty
    // text, and with `strict` 0 for any unknown reference (the buffer is emptied then).
    int ExpandString(const char* text, char* buffer, int size, bool strict) override;
    // ExpandString into `out`, sized to fit; a result of 0 leaves `out` alone.
    int ExpandCharString(const char* text, TeskUtils::CharString& out, bool strict);
    // Expands the $NAME references of a recalculation expression. 1, or 0 for an unknown
    // name or an output that would not fit (left unterminated then).
    int expandVariables(const char* expression, char* buffer, int size);

    // ---- Condition expressions (model/conditions.cpp) -------------------------------------
    // 1 true, 0 false, -1 a condition that can't be parsed (which every caller takes as
    // true). A null or empty condition is true.
    int EvalCondition(const char* condition) override;
    // Where conditions are expanded before parsing.
    ConditionBuffer conditionBuffer;

    // ---- Install template and product description (model/template.cpp) --------------------
    // The install template, read once and kept for the whole run; every later lookup goes
    // to it by tag.
    PXML templateXml;

    // The product description as GetProductDesc reads it: texts cut at 198 characters.
    struct ProductDescription
    {
        char fullName[200];
        char majorVersion[200];
        char minorVersion[200];
        char minestVersion[200];
        char letterVersion[200];
        char website[200];
        char supportSite[200];
        char supportEmail[200];
    };
    // Fills `desc` from ProductDesc. Gives 0, or -1 when the tag is missing.
    int GetProductDesc(ProductDescription& desc);

    // Plain accessors: the tag's text, unexpanded. The buffer is cleared over its whole
    // size and receives at most size-2 characters. 0, or -1 for a null buffer or a
    // missing tag or text.
    int GetAppName(char* buffer, int size) override;
    int GetAppMajorVer(char* buffer, int size) override;
    int GetAppWebsite(char* buffer, int size) override;
    int GetAppSupportEmail(char* buffer, int size) override;
    int GetInstallHelpURL(char* buffer, int size) override;
    // "Major.Minor.Minest"; the caller's buffer must hold it (200 bytes). -1 for a null
    // buffer or a missing part, leaving what was built so far.
    int GetAppFullVer(char* buffer, int size) override;
    // The expanded Title, else "Name - ver. x.y.z", else the name alone; "Unknown title"
    // with -1 when there is no name either.
    int GetAppTitle(char* buffer, int size) override;
    // Expanded paths of the Uninstall section: 0, 1 when the expansion is empty, -1 when
    // the tag or its text is missing.
    int GetInstallLogFile(char* buffer, int size) override;
    int GetInstallBackupFile(char* buffer, int size) override;
    int GetUninstallCmd(char* buffer, int size) override;
    int GetUninstallXMLFile(char* buffer, int size) override;
    // The expanded AbortMessages child for `state` (AbortInstall for 1, AbortBusy for 5,
    // Cancel otherwise); `skip` receives EvalCondition of its Skip attribute.
    TeskUtils::CharString GetAbortMessage(SETTINGSTATE state, int& skip) override;

    // The control variables: the names under which the template wants to see the
    // engine's states. Empty when the template names none.
    enum ControlVariable {
        CV_PREVIOUS_INSTALLATION,
        CV_LEGACY_INSTALLATION,
        CV_SHOULD_UNINSTALL,
        CV_CUSTOMIZE_SETTINGS,
        CV_PROGRESS_DETAILS,
        CV_INSTALL_ERROR,
        CV_UNINSTALL_ERROR,
        CV_DLG_CONDITION,
        CV_EXTERNAL_LEGACY_INSTALLATION,
        CV_INSTALLATIONS_COUNT,
        CV_COUNT,
    };
    char controlVariables[CV_COUNT][200] = {};
    // The tag under InstallerControlVariables that names `which`.
    static const char* controlVariableTag(int which);
    // The name configured for `which` ("" when none).
    const char* getControlVariableName(ControlVariable which) const;
    // Reads InstallerControlVariables. Gives 0, or -1 when the section is missing.
    int ExtractControlVariableNames();

    // ---- Colour theme (model/colour_theme.cpp) --------------------------------------------
    // The colour theme. Read only for graphical front ends; the caller checks
    // IsGUIInstaller.
    InstallerTheme theme;
    bool customThemed = false;
    // Whether the template's ColourTheme section was read: only then are the dialogs'
    // unset colours filled from the theme.
    bool themeSectionRead = false;
    // Reads ColourTheme into `theme`. Gives 0, or -1 when the section is missing.
    int ExtractColourThemeInfo();
    // The colour of a colour attribute's value: "Group:name" names a custom group,
    // anything else is 0xRRGGBB; null gives COLOUR_NOT_SET.
    uint64_t getColourReference(const char* value) const;
    // Fills every unset colour of the dialogs from the theme (or, unthemed, only notes
    // whether some dialog sets a colour itself).
    void SetDlgThemeColours();
    bool CustomThemedGUI() override;
    uint64_t GetThemeColour(THEMECOLOUR colour) override;
    int GetDlgColour(int dlg, int sub, uint64_t& background, uint64_t& foreground) override;

    // ---- File sets (model/file_sets.cpp) --------------------------------------------------
    TeskUtils::Table<InstallTypeInfo, -1> installTypes;
    TeskUtils::Table<FileSetInfo, -1> fileSets;
    TeskUtils::Table<FILENAMES, -1> fileNames; // per file set in reverse document order
    // Fills the three tables from the template. Always 0.
    int GetFilesInfo();
    // Empties and frees the three tables.
    void freeFilesInfo();
    // The LOG_DEST_* mask of a Log attribute: 1 for null or empty, 0 once "None" is met.
    static int getLogDestination(const char* logList);
    int GetAliasDestination(const char* alias, char* out, int size) const override;

    // ---- Default values and command line (model/default_values.cpp) -----------------------
    // Fills the store from the template's DefValues, then (for an install) from the
    // configuration file, then from the command line. 0, or -1 when the template or the
    // configuration file has no DefValues or the configuration file can't be read (the
    // user is told through ui->MessageBox then).
    int InitDefValues(InstallerUI* ui);
    // Reads the DefValues section of `doc` (a template or a configuration file) into the
    // store, then runs its triggers. 0; -1 when the document has no DefValues.
    int GetDefaultValuesFromXML(const PXML& doc);
    // Sets a variable for every "-VARIABLE_NAME=value" of the command line. Always 0.
    int GetDefaultValuesFromCMD();
    // The command line, which the engine doesn't own; null when none was given.
    void InitCmdLineParser(const CLParser* parser);
    const CLParser* cmdLineParser = nullptr;

    // ---- Exclude list (model/exclude_vars.cpp) --------------------------------------------
    // The exclude list: variables kept out of the action log (EXCLUDE_FROM_LOG) or out of
    // the configuration file (EXCLUDE_FROM_CONFIG). Names compare exactly.
    enum { EXCLUDE_FROM_LOG = 1, EXCLUDE_FROM_CONFIG = 2 };
    struct ExcludeVar
    {
        TeskUtils::CharString name;
        int flags = 0;
    };
    TeskUtils::Table<ExcludeVar, 100> excludeVars;
    // Adds the control variables, the fields' validation variables (which start as "1")
    // and the template's InstallerExcludeVariables to the list.
    void InitExcludeVars();
    void addExcludeVar(const char* name, int flags);
    // True when some entry of `name` has a bit of `mask`.
    bool isVarExcluded(const char* name, int mask) const;

    // ---- Configuration file (model/config_file.cpp) ---------------------------------------
    // Writes every variable not barred from the configuration file as a DefValues
    // document to `path`. 0; -1 for a null path; 1 when the document can't be built;
    // otherwise what PXML::WriteFile gives.
    int CreateConfigFile(const char* path);
    // The configuration file given by -configFile=. Here there is none: an empty name,
    // result 0, and set does nothing; LinuxInstaller keeps the name.
    virtual int getConfigFileName(char* buffer, int size);
    virtual void setConfigFileName(const char* name);

    // ---- Engine start (model/engine_start.cpp) --------------------------------------------
    // The start of the engine: reads the template (from the
    // cabinet, or for an uninstall from the path on the action log's first line), the
    // product description, file sets, theme, dialogs, control variables and exclude list,
    // looks for earlier installations, fills the store, makes dialog 0 current and runs
    // ui->StartUI() and ui->EndUI(). Each step is logged to `log` when given. Gives 0,
    // -1 for a null ui or a failed step, else the non-zero result of StartUI.
    int RunInstallerUI(InstallerUI* ui, PConsole* log);
    // Keeps the log console (debugConsole) and the debug level of the run.
    void InitDebugMode(PConsole* log, int level);
    // 0 none; from 2 on the start lists the variables it made.
    int debugLevel = 0;
    // Ends a run: frees the cabinet, closes the action log and deletes every file in
    // temporaryFiles.
    void Done();
    // Temporary files that the engine made and Done deletes.
    TeskUtils::Table<TeskUtils::CharString, 100> temporaryFiles;

    // Sets the variable that the template names for `which`; nothing when it names none.
    void setControlVariable(ControlVariable which, const char* value);

    // 0 none, 1 in the list of installed applications, 2 only its action log was found.
    int previousInstallState = 0;
    int legacyCount = 0;
    int legacyLogCount = 0;
    int GetPreviousInstall() override;

    // ---- Platform probes, overridden by LinuxInstaller (model/app_probes.cpp) -------------
    // Whether a process whose program is called `name` runs; the second argument is a
    // directory that platforms may use to narrow the search. False here.
    virtual bool isAppRunning(const char* name, const char* directory);
    // Whether the application `name` (the product itself for null) is installed; with bit
    // value 2 in `flags` the name is a path template to test for existence. False here.
    virtual bool IsInstalled(const char* name, unsigned int flags);
    // Runs a shell command line and gives its exit status as system() does; the probes of
    // HAVE_RPM and HAVE_DPKG go through it.
    virtual int runShellStatus(const char* command);
    // Stops the processes of the program `name`; `directory` may narrow the search. True when
    // one was signalled. False here.
    virtual bool terminateApp(const char* name, bool force, const char* directory);

    // ---- Platform steps, overridden by LinuxInstaller (model/platform_steps.cpp) ----------
    // Makes the shortcut `path` of `type` to `target` and describes it for the action log in
    // `record` (recordSize bytes, cleared first). True on success; false here.
    virtual bool createShortcut(ShortcutType type, const char* path, const char* target,
        const char* description, const char* arguments, const char* startPath, const char* iconPath,
        char* record, int recordSize, unsigned elevate, InstallerUI* ui);
    // Removes the shortcut that a createShortcut record names. True if something was
    // removed; false here.
    virtual bool undoShortcut(const char* record, InstallerUI* ui);
    // Sets `key` in `section` of the INI file `file` to `value` as `action` says (before
    // `beforeKey` where given), and describes the change in `record`. True on success; here
    // nothing is done, the record stays as it is, and the result is true.
    virtual bool doIniFile(const char* file, const char* section, const char* key, const char* value,
        INIAction action, char* record, int recordSize, InstallerUI* ui, int isPath, const char* beforeKey);
    // Undoes the INI change of an action log record. True; here nothing is done.
    virtual bool undoIniFile(const char* record, InstallerUI* ui);
    // Firewall exceptions for a program or a port, added and removed: 0 done, 1 the firewall
    // service is off, 2 error. Always 2 here.
    virtual int addFirewallApp(const char* path, const char* name);
    virtual int removeFirewallApp(const char* record);
    virtual int addFirewallPort(const FirewallPort& port);
    virtual int removeFirewallPort(const char* record);

    // ---- Dialog model (wizard/dialogs.cpp) ------------------------------------------------
    TeskUtils::Table<DLGINFO, 16> dialogs;
    // Reads Dialogs (or UninstallDialogs when `uninstall` is non-zero) into `dialogs`.
    // Gives 0, or -1 when the section is missing or a sub-dialog couldn't be read.
    int ExtractDialogsInfo(int uninstall);
    // A dialog's own attributes; an empty dialog of default size for a bad node.
    DLGINFO ExtractDialogInfo(int node);
    // The element readers, each over the children of dlg.node; they give the number of
    // records added (ExtractSubDialogsInfo: the sub-dialogs' buttons, or -1;
    // ExtractTaskListInfo: 0 or -1).
    int ExtractFieldsInfo(DLGINFO& dlg);
    int ExtractControlsInfo(DLGINFO& dlg);
    int ExtractButtonsInfo(DLGINFO& dlg);
    int ExtractTriggersInfo(DLGINFO& dlg);
    int ExtractSubDialogsInfo(DLGINFO& dlg);
    int ExtractTaskListInfo(DLGINFO& dlg);

    // ---- Dialog access (wizard/dialog_access.cpp) -----------------------------------------
    // Cleans the path in the variable of every Directory field and writes it back when
    // it changed.
    void correctDirVariables();

    DLGINFO* GetDialogInfo(int dlg, int sub) override;
    int GetDialogsCount() override;
    int GetDialogWidth(int dlg) override;
    int GetDialogHeight(int dlg) override;
    int GetSubDialogsCount(int dlg) override;
    UICTRL* GetDlgItem(int dlg, int index, int sub) override;
    int GetDlgItemCount(int dlg, int sub) override;
    BUTTONINFO* GetDlgButton(int dlg, int index, int sub) override;
    int GetDlgButtonCount(int dlg, int sub) override;
    FIELDINFO* GetField(int dlg, int index, int sub) override;
    int GetTaskInfoCount(int dlg) override;
    TASKINFO* GetTaskInfo(int dlg, int index) override;
    int GetFieldCount(int dlg, int sub) override;

    // True when Init was told to uninstall (bit 0 of its flags).
    bool IsUninstall() override;

    // The installer's directory, where the configuration file goes; empty until set.
    char installerDirectory[TeskUtils::kPathSize] = {};
    void SetInstallerPath(const char* path) override;
    int GetInstallerPath(char* buffer, int size) override;

    // ---- Navigation (wizard/navigation.cpp) -----------------------------------------------
    // The position (-1 until RunInstallerUI makes dialog 0 current; the sub-dialog -1 on a
    // dialog itself) and the state flags of the wizard.
    int currentDlg = -1;
    int currentSubDlg = -1;
    SETTINGSTATE settingsState = SETTING_IDLE;
    int stateCancel = 0; // EvCancel was confirmed
    int stateFinish = 0; // the wizard is over
    int stateError = 0; // result of the last stage work, or 1 after a bad shift
    int GetCurDlg() override;
    int GetCurSubDlg() override;
    int GetStateCancel() override;
    int GetStateFinish() override;
    int GetStateError() override;
    void SetStateSettings(SETTINGSTATE state) override;
    SETTINGSTATE GetStateSettings() override;

    // Leaves the current (sub-)dialog and walks `shift` dialogs forward, passing over those
    // whose Condition is false. 0; -1 for a null ui or when a condition object holds the
    // wizard on the current dialog. A bad shift logs, sets the error and finish states.
    int EvNext(InstallerUI* ui, int shift) override;
    // Walks back `shift` dialogs. 0, or -1 for a null ui.
    int EvBack(InstallerUI* ui, int shift) override;
    // Sets the cancel state when ui->ConfirmCancel() agrees. 0, or -1 for a null ui.
    int EvCancel(InstallerUI* ui) override;
    // Leave the current position and enter dialog `dlg` (sub-dialog `sub` of dialog
    // `dlg`), telling the front end; the stage dispatch's result (1: the walk may go on
    // by itself), or -1 for a bad index or null ui.
    int EvSetDlg(int dlg, InstallerUI* ui) override;
    int EvSetSubDlg(int dlg, int sub, InstallerUI* ui) override;
    // EvNext for a positive shift, EvBack for a negative one; 0 and nothing for 0.
    int PerformButtonDlgShift(InstallerUI* ui, int shift) override;
    // 2 when the current (sub-)dialog has no condition object, else its Eval as 1 or 0
    // (also stored in the DlgCondition control variable); 0 for a bad position.
    int GetDialogConditionEval(InstallerUI* ui) override;

    // ---- Button actions (wizard/button_actions.cpp) ---------------------------------------
    // Runs a button's action text, ';'-separated: Cancel, Help, Run:<sequence>,
    // EvalTriggers, or a "[NAME]='value'" assignment.
    void PerformButtonAction(InstallerUI* ui, const char* action) override;

    // ---- Triggers (wizard/triggers.cpp) ---------------------------------------------------
    // The UPDATETYPE bits of (dlg, sub) whose texts mention `name`; plain substring tests.
    int DialogNeedsUpdate(const char* name, int dlg, int sub) override;
    void evaluateTriggers(InstallerUI* ui, int mask, int dlg, int sub) override;
    // Runs, in order, the triggers whose evaluation bits meet `mask` and whose Condition
    // holds. `ui` may be null (the triggers of the default values).
    void evaluateTriggerArray(InstallerUI* ui, int mask, const TRIGGER_INFO* triggers, int count);
    template <int STEP>
    void evaluateTriggerList(InstallerUI* ui, int mask, const TeskUtils::Table<TRIGGER_INFO, STEP>& list)
    {
        evaluateTriggerArray(ui, mask, list.data, list.count);
    }
    // "hide", "show", "iconize", "maximize" (to ManageWindow) or "update" (the whole
    // current (sub-)dialog), case ignored; anything else is logged.
    void performUIAction(InstallerUI* ui, const char* action);

    // ---- Task list (wizard/task_list.cpp) -------------------------------------------------
    // Sends the tasks after the current one whose EnableCondition is set: inactive when
    // it is false, their own status when true. Always 0.
    int UpdateTaskList(InstallerUI* ui) override;
    // Stores `status` (unless inactive) and shows the task with the label of its status.
    // 0; -1 for a null ui or a bad dialog; 0 without a call for a bad task.
    int UpdateTaskListItem(InstallerUI* ui, int dlg, int task, TASKSTATUS status) override;

    // ---- Stage dispatch (wizard/stage_dispatch.cpp) ---------------------------------------
    // The work hung on a dialog's name, run at the end of EvSetDlg and EvSetSubDlg; it
    // shows the dialog exactly once. Gives 1 when the walk may go on past it (AutoNext),
    // else 0; 0 for a null ui.
    int SetDlgHelper(int dlg, int sub, InstallerUI* ui, DLGINFO& info);

    // The longer rows of the stage table. stageUninstall gives the state error;
    // the others show the dialog as their rows say and set `shown`.
    int stageUninstall(InstallerUI* ui);
    void stageRunningApps(int dlg, int sub, InstallerUI* ui, DLGINFO& info, bool& shown);
    void stageExternalUninstall(int dlg, int sub, InstallerUI* ui, DLGINFO& info, bool& shown);

    // ---- Install run (transaction/install_run.cpp) ----------------------------------------
    // The one transaction of an installation: removes an earlier version (once per
    // engine), writes the files of the active file sets with a temporary action log and
    // backup container, runs the six steps, updates the cleanup log and puts the log and
    // the container at the template's paths. 0, or -1 when a file or a step failed.
    int DoInstall(InstallerUI* ui);
    // Deletes the executable at `path` so that a busy program file can be written anew;
    // waits up to `timeoutMs` for a program of that name that could be stopped. True when
    // the file was deleted; false without deleting when it isn't executable by its owner.
    int RetryExecutableDelete(InstallerUI* ui, const char* path, unsigned timeoutMs);
    // One record of the file loop (index of count): written, logged, backed up. True when
    // it failed in a way that fails the run.
    bool installFile(InstallerUI* ui, const FILENAMES& record, int index, int count, BackupFile& backup);
    // The failure report of a run: debug lines, the InstallError variable, the collected
    // rows shown on `ui`.
    void reportInstallFailure(InstallerUI* ui, int stepErrors);
    // Moves the temporary log and copies the temporary container to the template's
    // paths, then removes both temporary files. Failures are not examined.
    void placeInstallFiles(const char* tempLog, const char* tempBackup);
    // Copies through 1024-byte blocks; false when a file can't be opened or a stream
    // reports an error at the end.
    virtual bool copyFile(const char* from, const char* to);
    // What the platform does to a file just written (or left because identical). Nothing
    // here; LinuxInstaller makes executables mode 0755.
    virtual void applyCustomFileProcessing(const char* path, const FILENAMES& record);
    // The running install's action log: a console without decorations on the temporary
    // log file, open during DoInstall.
    PFileConsole actionLog;
    // The error rows shown at the end of a failed run (install and uninstall).
    LogCollector logCollector;
    // Set once callUninstaller has run in this engine.
    bool uninstallerCalled = false;
    // Set when an install run reported its failure.
    bool installFailed = false;

    // ---- Action log (transaction/log_variables.cpp) ---------------------------------------
    // Writes the variable block: "NUMVARS", TAB, count, then "VAR", TAB, name, TAB, value
    // for every named variable not excluded from the log. Always 0.
    int WriteVars(PConsole& log);
    // Puts every variable of the log at `stream` into the store. 1 when a line was
    // malformed, else 0; throws InstallerError for a null or unseekable stream, a missing
    // or unparsable count line, and an end of file inside the block.
    int initValuesFromLogFile(FILE* stream);
    // Rewrites the variable block of the final action log with the present values;
    // throws InstallerError.
    void UpdateVars();
    // Reads the variables of the open action log (uninstall) with initValuesFromLogFile:
    // 0; 1 when a line was malformed; -1 when the block couldn't be read, whose reason
    // goes to the debug console.
    virtual int ReadVars();
    // One variable out of the action log at `logPath`; false when it isn't there.
    virtual bool getLogFileVar(const char* logPath, const char* name, char* out, int outSize);

    // ---- Action sequences (transaction/action_sequences.cpp) ------------------------------
    // The flags of runProgram.
    enum RunProgramFlags : unsigned {
        RUN_OPEN = 1, // the program is a document or URL to open
        RUN_WAIT = 2, // block until the child ends
        RUN_AS_ROOT = 4, // keep the installer's identity; otherwise the user's comes back
        RUN_ASYNCHRONOUS = 8, // poll the child while the front end stays alive (Idle)
        RUN_PROGRESS = 16, // move the overall progress by one per poll
        RUN_NO_STDERR = 32, // the child closes its standard error
        RUN_CAPTURE = 128, // read the child's standard output into the given string
    };
    // The fixed arguments of one program run; `arguments` and `workDir` may be null.
    struct RunProgramContext
    {
        const char* program;
        const char* arguments;
        const char* workDir;
        unsigned flags;
    };
    // Starts `cmd` (with `args`, unchanged, behind it), or with RUN_OPEN opens the document
    // `cmd`, and waits, polls every `pollMs` with `ui` alive, captures into `output` or
    // leaves the child running, as `flags` say. An empty ErrorCode on success; otherwise
    // its code is the child's exit code, its raw wait status when it did not exit, an
    // errno, -1 for an empty command line or 1 when no browser was found to open a
    // document. Here no program can be started: always the error -1; LinuxInstaller runs
    // them.
    virtual TeskUtils::ErrorCode runProgram(const char* cmd, const char* args, unsigned flags,
        const char* workDir, InstallerUI* ui, unsigned pollMs, TeskUtils::CharString* output,
        const ExtendedRunProgramParams* ext) const;
    // Performs every template element named `tag`, in document order: their actions (run
    // or open a program, copy, remove or create a file, change an owner), each under its
    // own Condition. -1 for a null tag; 1 when a CreateFile failed; otherwise 0, whatever
    // else failed (the debug console and the actions' ResultVariable see that).
    virtual int RunFiles(InstallerUI* ui, const char* tag);
    // runProgram with no output string, and a debug line on the start of the program
    // named `label` (without the command line when `lessDebug` is set). Gives runProgram's
    // ErrorCode.
    TeskUtils::ErrorCode runProgramAndReport(const RunProgramContext& context,
        const ExtendedRunProgramParams* ext, InstallerUI* ui, int pollMs, const char* label,
        unsigned lessDebug) const;
    // Reads the children of the RunProgramEx element `node` into `params` and its expanded
    // FileName into `fileName`. Bad Environment and Pipe children are logged and left out.
    // Errors (context "RunProgramEx"): -1 bad node, -2 children not enumerable, -3
    // FileName that expands to nothing.
    TeskUtils::ErrorCode extractExtendedRunParams(
        ExtendedRunProgramParams& params, TeskUtils::CharString& fileName, int node);
    // One Pipe / Environment child into its record. Errors carry the code -1.
    TeskUtils::ErrorCode extractExtendedRunPipe(ExtendedRunProgramParams::Pipe& pipe, const NODEI& node);
    TeskUtils::ErrorCode extractExtendedRunEnvironment(
        ExtendedRunProgramParams::Environment& environment, const NODEI& node);
    // Writes the packed file `alias` into the existing directory `destDir` (variables
    // expanded in it when `expand`, its extension cut when `stripExt`) with `mode`. The
    // path written; throws InstallerError on every failure. The file is logged nowhere.
    TeskUtils::CharString createFileFromAlias(
        const char* alias, const char* destDir, bool expand, bool stripExt, unsigned mode);
    // chown of the expanded path `file` to "uid;gid" in `owner` (a part that doesn't start
    // with a digit stays unchanged). chown's result, or -1 for a bad argument.
    int changeFileOwner(const char* file, const char* owner);
    // Once per engine: the sequence "PostInstall", the variable block of the action log
    // rewritten, and for a console install the configuration file for unattended
    // repeats. Always 0.
    int postInstall(InstallerUI* ui);
    bool postInstallDone = false;

    // ---- Later stages (model/pending_operations.cpp until their work lands) ---------------
    // The steps of the run after the files, in their order; each gets the action log and
    // the front end and gives 0 or non-zero.
    virtual int UpdateEnv(PConsole& log, InstallerUI* ui);
    virtual int UpdateINI(PConsole& log, InstallerUI* ui);
    virtual int ModifyFiles(PConsole& log, InstallerUI* ui);
    virtual int UpdateShortcuts(PConsole& log, InstallerUI* ui);
    virtual int UpdateFirewall(PConsole& log, InstallerUI* ui);
    // Adds this installation's leftovers to the system-wide cleanup log. 0.
    virtual int updateCleanupLog();
    // Records `path` for the cleanup log (files whose Log names the cleanup).
    virtual void addCleanupFile(const char* path);

    // What earlier installations left, as the start and the default values ask for it.
    // The bodies here (model/pending_operations.cpp) find nothing; the list of installed
    // applications, the detection of earlier installations and the action log reader
    // fill them in.
    virtual int getInstallationCount() const;
    // 1 when the product is installed, 0 when not, -1 when it can't be told; counts the
    // installed legacy products into legacyCount.
    virtual int CheckPreviousInstallation(InstallerUI* ui, int flag);
    // Reads the variables of the installed copy's action log (null: the product's own)
    // into the store. 0, or non-zero when a line was bad.
    virtual int InitValuesFromLog(const char* logPath);
    // True when only an action log of the product was found; counts legacy logs.
    virtual bool CheckDefaultPreviousInstallation(int flag);
    // The number of foreign products found that must be removed.
    virtual int CheckExternalInstallations();
    // The action log of the installed application `name`; false when there is none.
    virtual bool getAppLogFileName(const char* name, char* out, int size);

    // Removes older versions and legacy products; OR of the uninstalls' results.
    virtual int callUninstaller(InstallerUI* ui);
    // Undoes the installation of the open action log; 0 or -1.
    virtual int UnInstall(InstallerUI* ui, const char* backupFile);
    // Fixes the backup's name and runs "PreUninstall" once. Always 0.
    virtual int prepareUninstall(InstallerUI* ui, const char* backupFile);
    // Undo a failed install run; undo an uninstall of the previous version.
    virtual int RevertInstall(InstallerUI* ui);
    virtual int RevertUninstall(InstallerUI* ui);
    // Enters / removes the product in the list of installed applications.
    virtual bool RegisterApplication();
    virtual bool unregisterApplication(const char* name);
    // The cleanup log shown, and carried out.
    virtual void showCleanupDetails(InstallerUI* ui);
    virtual int CleanupInstall(InstallerUI* ui);
    // Adds the installed products whose names contain `name` to `hits`; their number.
    virtual int InstalledList(TeskUtils::Table<TeskUtils::CharString, 16>* hits, const char* name,
        const char* publisher, unsigned int flags);
    // Runs the uninstaller of the installed product `name`.
    virtual bool UnInstallApplication(
        const char* name, unsigned int flags, InstallerUI* ui, const char* arguments);
};
