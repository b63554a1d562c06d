// What a front end reads of the dialog records, by index, and the few operations of the
// exchange that work on the records as a whole.
#include "foundation/misc/path_utils.h"
#include "foundation/misc/process_list.h"
#include "foundation/strings/path_size.h"
#include "installer/installer.h"

namespace {

// Element `index` of `table`, or null when out of range.
template <class T, int STEP> T* elementAt(TeskUtils::Table<T, STEP>& table, int index)
{
    return index >= 0 && index < table.count ? &table[index] : nullptr;
}

} // namespace

DLGINFO* Installer::GetDialogInfo(int dlg, int sub)
{
    DLGINFO* info = elementAt(dialogs, dlg);
    if (!info)
        return nullptr;
    return sub < 0 ? info : elementAt(info->subDialogs, sub);
}

int Installer::GetDialogsCount()
{
    return dialogs.count;
}

int Installer::GetDialogWidth(int dlg)
{
    const DLGINFO* info = GetDialogInfo(dlg, -1);
    return info ? info->width : 0;
}

int Installer::GetDialogHeight(int dlg)
{
    const DLGINFO* info = GetDialogInfo(dlg, -1);
    return info ? info->height : 0;
}

int Installer::GetSubDialogsCount(int dlg)
{
    const DLGINFO* info = GetDialogInfo(dlg, -1);
    return info ? info->subDialogs.count : 0;
}

UICTRL* Installer::GetDlgItem(int dlg, int index, int sub)
{
    DLGINFO* info = GetDialogInfo(dlg, sub);
    return info ? elementAt(info->controls, index) : nullptr;
}

int Installer::GetDlgItemCount(int dlg, int sub)
{
    const DLGINFO* info = GetDialogInfo(dlg, sub);
    return info ? info->controls.count : 0;
}

BUTTONINFO* Installer::GetDlgButton(int dlg, int index, int sub)
{
    DLGINFO* info = GetDialogInfo(dlg, sub);
    return info ? elementAt(info->buttons, index) : nullptr;
}

int Installer::GetDlgButtonCount(int dlg, int sub)
{
    const DLGINFO* info = GetDialogInfo(dlg, sub);
    return info ? info->buttons.count : 0;
}

FIELDINFO* Installer::GetField(int dlg, int index, int sub)
{
    DLGINFO* info = GetDialogInfo(dlg, sub);
    return info ? elementAt(info->fields, index) : nullptr;
}

int Installer::GetFieldCount(int dlg, int sub)
{
    const DLGINFO* info = GetDialogInfo(dlg, sub);
    return info ? info->fields.count : 0;
}

int Installer::GetTaskInfoCount(int dlg)
{
    const DLGINFO* info = GetDialogInfo(dlg, -1);
    return info ? info->tasks.count : 0;
}

TASKINFO* Installer::GetTaskInfo(int dlg, int index)
{
    DLGINFO* info = GetDialogInfo(dlg, -1);
    return info ? elementAt(info->tasks, index) : nullptr;
}

bool Installer::IsUninstall()
{
    return (initFlags & 1) != 0;
}

void Installer::SetInstallerPath(const char* path)
{
    TeskUtils::copyBounded(installerDirectory, path, sizeof(installerDirectory));
}

int Installer::GetInstallerPath(char* buffer, int size)
{
    if (!buffer || size < 1)
        return -1;
    if (installerDirectory[0]) {
        TeskUtils::copyBounded(buffer, installerDirectory, static_cast<size_t>(size));
        return 0;
    }
    if (getProcessPath(buffer, size))
        return 0;
    buffer[0] = '\0';
    return -1;
}

namespace {

void correctDirFields(Installer& installer, DLGINFO& dlg)
{
    for (const FIELDINFO& field : dlg.fields) {
        if (field.type != FIELD_DIRECTORY)
            continue;
        char value[TeskUtils::kPathSize];
        if (installer.GetVar(field.variable, value, sizeof(value)) == -1)
            continue;
        if (TeskUtils::uniCorrectPathString(value) > 0)
            installer.SetVar(field.variable, value);
    }
}

} // namespace

void Installer::correctDirVariables()
{
    for (DLGINFO& dlg : dialogs) {
        correctDirFields(*this, dlg);
        for (DLGINFO& sub : dlg.subDialogs)
            correctDirFields(*this, sub);
    }
}
