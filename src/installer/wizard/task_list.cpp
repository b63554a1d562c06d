// The task list of a dialog with sub-dialogs: one task per sub-dialog, whose status and
// label the front end shows as the wizard moves.
#include "installer/installer.h"

int Installer::UpdateTaskList(InstallerUI* ui)
{
    DLGINFO* dialog = GetDialogInfo(currentDlg, -1);
    if (!dialog)
        return 0;
    int first = currentSubDlg + 1 > 0 ? currentSubDlg + 1 : 0;
    for (int t = first; t < dialog->tasks.count; ++t) {
        const TASKINFO& task = dialog->tasks[t];
        if (!task.enableCondition[0])
            continue;
        TASKSTATUS status = EvalCondition(task.enableCondition) == 0 ? TASK_INACTIVE : task.status;
        UpdateTaskListItem(ui, currentDlg, t, status);
    }
    return 0;
}

int Installer::UpdateTaskListItem(InstallerUI* ui, int dlg, int task, TASKSTATUS status)
{
    DLGINFO* dialog = GetDialogInfo(dlg, -1);
    if (!ui || !dialog)
        return -1;
    if (task < 0 || task >= dialog->tasks.count)
        return 0;
    TASKINFO& info = dialog->tasks[task];
    if (status != TASK_INACTIVE)
        info.status = status;

    if (status == TASK_NOT_REACHED && EvalCondition(info.enableCondition) == 0)
        status = TASK_INACTIVE;
    // A missing label falls back to the current one.
    auto orCurrent = [&info](const char* label) { return label[0] ? label : info.currentLabel; };
    const char* label;
    switch (status) {
    case TASK_NOT_REACHED:
    case TASK_INACTIVE:
        label = orCurrent(info.unreachedLabel);
        break;
    case TASK_CURRENT:
        label = info.currentLabel;
        break;
    case TASK_FINISHED_GOOD:
    case TASK_FINISHED_BAD:
        label = orCurrent(info.finishLabel);
        break;
    default:
        label = "";
        break;
    }
    ui->SetTask(info.name, label, status);
    return 0;
}
