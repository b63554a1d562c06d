// The exclude list: variables that the action log or the configuration file must not
// keep. Engine states, validation flags and variables made up on the command line are only
// meaningful for one run.
#include <cstring>
#include <strings.h>

#include "foundation/strings/tokenize.h"
#include "installer/installer.h"

namespace {

// The control variables that are excluded, in the order they are entered, with their bits.
struct ControlExclusion
{
    Installer::ControlVariable which;
    int flags;
};

const ControlExclusion kControlExclusions[] = {
    { Installer::CV_PREVIOUS_INSTALLATION, Installer::EXCLUDE_FROM_CONFIG },
    { Installer::CV_LEGACY_INSTALLATION, Installer::EXCLUDE_FROM_CONFIG },
    { Installer::CV_PROGRESS_DETAILS, Installer::EXCLUDE_FROM_LOG | Installer::EXCLUDE_FROM_CONFIG },
    { Installer::CV_INSTALL_ERROR, Installer::EXCLUDE_FROM_CONFIG },
    { Installer::CV_UNINSTALL_ERROR, Installer::EXCLUDE_FROM_CONFIG },
    { Installer::CV_CUSTOMIZE_SETTINGS, Installer::EXCLUDE_FROM_LOG | Installer::EXCLUDE_FROM_CONFIG },
    { Installer::CV_DLG_CONDITION, Installer::EXCLUDE_FROM_LOG | Installer::EXCLUDE_FROM_CONFIG },
    { Installer::CV_EXTERNAL_LEGACY_INSTALLATION, Installer::EXCLUDE_FROM_CONFIG },
    { Installer::CV_INSTALLATIONS_COUNT, Installer::EXCLUDE_FROM_LOG | Installer::EXCLUDE_FROM_CONFIG },
};

// The bits of an ExcludeFrom list: "all", "log", "config", case ignored; absent means all.
int excludeFlags(const char* list)
{
    const int all = Installer::EXCLUDE_FROM_LOG | Installer::EXCLUDE_FROM_CONFIG;
    if (!list)
        return all;
    TeskUtils::Table<TeskUtils::CharString, 100> words;
    TeskUtils::tokenize(list, ';', words, 0);
    int flags = 0;
    for (const TeskUtils::CharString& word : words) {
        if (strcasecmp(word.c_str(), "all") == 0)
            flags |= all;
        else if (strcasecmp(word.c_str(), "log") == 0)
            flags |= Installer::EXCLUDE_FROM_LOG;
        else if (strcasecmp(word.c_str(), "config") == 0)
            flags |= Installer::EXCLUDE_FROM_CONFIG;
    }
    return flags;
}

} // namespace

void Installer::addExcludeVar(const char* name, int flags)
{
    if (!name)
        return;
    ExcludeVar& entry = excludeVars.append();
    entry.name = TeskUtils::CharString(name);
    entry.flags = flags;
}

bool Installer::isVarExcluded(const char* name, int mask) const
{
    if (!name)
        return false;
    for (const ExcludeVar& entry : excludeVars) {
        if ((entry.flags & mask) && strcmp(entry.name.c_str(), name) == 0)
            return true;
    }
    return false;
}

void Installer::InitExcludeVars()
{
    for (const ControlExclusion& row : kControlExclusions) {
        const char* name = getControlVariableName(row.which);
        if (name && *name)
            addExcludeVar(name, row.flags);
    }

    // A validation variable starts as valid and is never kept.
    auto addValidationVariables = [this](const DLGINFO& dlg) {
        for (const FIELDINFO& field : dlg.fields) {
            if (!field.validationVariable[0])
                continue;
            addExcludeVar(field.validationVariable, EXCLUDE_FROM_LOG | EXCLUDE_FROM_CONFIG);
            SetVarExt(field.validationVariable, "1", "1", 0, nullptr);
        }
    };
    for (const DLGINFO& dlg : dialogs) {
        addValidationVariables(dlg);
        for (const DLGINFO& sub : dlg.subDialogs)
            addValidationVariables(sub);
    }

    int section = templateXml.FindTag("InstallerExcludeVariables", -1);
    if (section < 0)
        return;
    PList<int> children;
    templateXml.GetChildren(section, &children);
    for (int i = 0; i < children.Count(); ++i) {
        const char* text = templateXml.GetData(children[i]);
        if (!text || !*text)
            continue;
        addExcludeVar(text, excludeFlags(templateXml.ParVal(children[i], "ExcludeFrom")));
    }
}
