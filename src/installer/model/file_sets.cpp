// The file tables of the template: install types, file sets and the files of each set,
// and where a packed file lands.
#include "installer/model/file_sets.h"

#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "foundation/misc/path_utils.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/tokenize.h"
#include "installer/installer.h"

namespace {

// The alias of an FN without an Alias attribute: its text less every '/', '\' and ':',
// cut at the field's width.
void deriveAlias(const char* text, char* alias, size_t size)
{
    size_t used = 0;
    for (const char* c = text; *c && used + 1 < size; ++c) {
        if (*c == '/' || *c == '\\' || *c == ':')
            continue;
        alias[used++] = *c;
    }
    alias[used] = '\0';
}

} // namespace

int Installer::getLogDestination(const char* logList)
{
    if (!logList || !*logList)
        return LOG_DEST_UNINSTALL;
    TeskUtils::Table<TeskUtils::CharString, 100> tokens;
    TeskUtils::tokenize(logList, ';', tokens, 0);
    int mask = 0;
    for (const TeskUtils::CharString& token : tokens) {
        if (token.equalsNoCase("None"))
            return 0;
        if (token.equalsNoCase("Uninstall"))
            mask |= LOG_DEST_UNINSTALL;
        else if (token.equalsNoCase("Cleanup"))
            mask |= LOG_DEST_CLEANUP;
    }
    return mask;
}

int Installer::GetFilesInfo()
{
    for (int node = templateXml.FindTag("InstallType", -1); node >= 0;
         node = templateXml.FindTag("InstallType", node)) {
        InstallTypeInfo type;
        memset(&type, 0, sizeof(type));
        TeskUtils::copyBounded(type.name, templateXml.ParVal(node, "Name"), sizeof(type.name) - 1);
        int desc = templateXml.FindChild(node, "Desc", -1);
        TeskUtils::copyBounded(type.desc, templateXml.GetData(desc), sizeof(type.desc) - 1);
        const char* defaultType = templateXml.ParVal(node, "Default");
        type.defaultType = defaultType ? atoi(defaultType) : 0;
        const char* editFileSets = templateXml.ParVal(node, "EditFileSets");
        if (editFileSets) {
            type.editFileSets = atoi(editFileSets);
        } else {
            // A type counts as default only together with an EditFileSets attribute.
            type.editFileSets = 0;
            type.defaultType = 0;
        }
        installTypes.append(type);
    }

    for (int set = templateXml.FindTag("FileSet", -1); set >= 0; set = templateXml.FindTag("FileSet", set)) {
        const char* setName = templateXml.ParVal(set, "Name");
        if (!setName)
            continue;
        FileSetInfo info;
        memset(&info, 0, sizeof(info));
        TeskUtils::copyBounded(info.name, setName, sizeof(info.name) - 1);
        TeskUtils::copyBounded(info.desc, templateXml.ParVal(set, "Desc"), sizeof(info.desc) - 1);
        TeskUtils::copyBounded(
            info.condition, templateXml.ParVal(set, "Condition"), sizeof(info.condition) - 1);
        int setIndex = fileSets.append(info);

        // The files of a set are taken from the last node to the first, so that they stand
        // in reverse document order; the install run works through them in that order.
        for (int node = templateXml.GetCount() - 1; node >= 0; --node) {
            if (templateXml.GetParent(node) != set)
                continue;
            const char* tag = templateXml.GetName(node);
            const char* text = templateXml.GetData(node);
            if (!tag || strcmp(tag, "FN") != 0 || !text || !*text)
                continue;

            FILENAMES file;
            memset(&file, 0, sizeof(file));
            file.fileSet = setIndex;
            TeskUtils::copyBounded(file.dest, templateXml.ParVal(node, "Dest"), sizeof(file.dest) - 1);
            const char* alias = templateXml.ParVal(node, "Alias");
            if (alias)
                TeskUtils::copyBounded(file.alias, alias, sizeof(file.alias) - 1);
            else
                deriveAlias(text, file.alias, sizeof(file.alias) - 1);
            // A trailing slash doesn't make the name empty: it stays with the name.
            TeskUtils::copyBounded(
                file.name, TeskUtils::fileNamePart(text, "/\\", true), sizeof(file.name) - 1);

            for (int i = cabinetFiles.count - 1; i >= 0; --i) {
                if (strcmp(cabinetFiles[i].alias, file.alias) == 0) {
                    file.size = static_cast<int>(cabinetFiles[i].size);
                    break;
                }
            }

            file.expandVarsInFile = templateXml.ParVal(node, "ExpandVarsInFile") != nullptr;
            file.executable = templateXml.ParVal(node, "Executable") != nullptr;
            file.okIfMissing = templateXml.ParVal(node, "OkIfMissing") != nullptr;
            file.backupExisting = templateXml.ParVal(node, "BackupExisting") != nullptr;
            const char* strip = templateXml.ParVal(node, "StripExeExt");
            file.stripExeExt = file.executable && strip && EvalCondition(strip) != 0;
            file.log = static_cast<unsigned char>(getLogDestination(templateXml.ParVal(node, "Log")));
            TeskUtils::copyBounded(file.condition, templateXml.ParVal(node, "Condition"), 511);
            fileNames.append(file);
        }
    }
    return 0;
}

void Installer::freeFilesInfo()
{
    installTypes.freeData();
    fileSets.freeData();
    fileNames.freeData();
}

int Installer::GetAliasDestination(const char* alias, char* out, int size) const
{
    if (!alias || !out || size < 1)
        return -1;

    int hit = -1;
    for (int set = templateXml.FindTag("FileSet", -1); set >= 0 && hit < 0;
         set = templateXml.FindTag("FileSet", set)) {
        PList<int> children;
        templateXml.GetChildren(set, &children);
        for (int i = 0; i < children.Count(); ++i) {
            const char* childAlias = templateXml.ParVal(children[i], "Alias");
            if (childAlias && strcmp(childAlias, alias) == 0) {
                hit = children[i];
                break;
            }
        }
    }
    if (hit < 0)
        return -1;

    const char* dest = templateXml.ParVal(hit, "Dest");
    const char* text = templateXml.GetData(hit);
    if (!dest || !text)
        return -1;

    char path[TeskUtils::kPathSize] = {};
    // Expansion reads the variable store only; the store's operations aren't const.
    const_cast<Installer*>(this)->ExpandString(dest, path, sizeof(path), false);
    TeskUtils::appendBounded(path, "/", sizeof(path));
    TeskUtils::appendBounded(path, TeskUtils::fileNamePart(text), sizeof(path));
    TeskUtils::uniFixPathDelimiters(path, '/');
    TeskUtils::copyBounded(out, path, static_cast<size_t>(size));
    return -1;
}
