// The stage dispatch: what entering a dialog does beyond showing it. It runs at the end of
// every EvSetDlg and EvSetSubDlg, shows the dialog exactly once, before any lasting work,
// and tells the walk whether the dialog goes on by itself.
#include "foundation/streams/pconsole.h"
#include "installer/installer.h"

int Installer::SetDlgHelper(int dlg, int sub, InstallerUI* ui, DLGINFO& info)
{
    if (!ui)
        return 0;
    if (debugConsole)
        debugConsole->Dump("Setting dialog \"%s\" (%d, %d)", info.name, dlg, sub);
    setControlVariable(CV_DLG_CONDITION, "0");

    bool shown = false;
    if (info.flags & DLG_BUSY) {
        SetStateSettings(SETTING_BUSY);
        ui->UpdateValidation(dlg, sub);
        ui->ShowUIElements(dlg, sub, true);
        evaluateTriggers(ui, TRIGGER_ON_DLG_EVAL, dlg, sub);
        shown = true;
    }

    // The work hung on dialog names (installing, uninstalling, reverting, registering,
    // waiting for running applications ...) joins here as those stages are written; a
    // name without work only shows.
    int result = 0;

    if (!shown)
        ui->ShowUIElements(dlg, sub, true);
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
