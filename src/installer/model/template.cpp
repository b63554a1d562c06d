// Access to the install template: the product description, the paths of the Uninstall
// section, the abort messages and the control variable names. Everything is read from
// templateXml by tag at each call; there is no separate object model.
//
// The lookup paths name a "Desc" level that templates don't have: FindFullTag passes over
// a component it can't find and only the last one must exist, so they find ProductDesc
// directly under the root. The paths are kept as they are.
#include <cstddef>
#include <cstring>

#include "foundation/streams/pconsole.h"
#include "installer/installer.h"

namespace {

const char* const kFullnamePath = "QuilbGroupInstallation/Desc/ProductDesc/Fullname";
const char* const kTitlePath = "QuilbGroupInstallation/Desc/ProductDesc/Title";
const char* const kMajorVersionPath = "QuilbGroupInstallation/Desc/ProductDesc/MajorVersion";
const char* const kMinorVersionPath = "QuilbGroupInstallation/Desc/ProductDesc/MinorVersion";
const char* const kMinestVersionPath = "QuilbGroupInstallation/Desc/ProductDesc/MinestVersion";
const char* const kWebsitePath = "QuilbGroupInstallation/Desc/ProductDesc/Website";
const char* const kSupportEmailPath = "QuilbGroupInstallation/Desc/ProductDesc/Supportemail";
const char* const kHelpUrlPath = "QuilbGroupInstallation/Desc/ProductDesc/InstallHelpURL";
const char* const kAbortMessagesPath = "QuilbGroupInstallation/Desc/ProductDesc/AbortMessages";
const char* const kInstallLogFilePath = "QuilbGroupInstallation/Installation/Uninstall/InstallLogFile";
const char* const kInstallBackupFilePath = "QuilbGroupInstallation/Installation/Uninstall/InstallBackupFile";
const char* const kUninstallCmdPath = "QuilbGroupInstallation/Installation/Uninstall/UninstallCmd";
const char* const kUninstallXmlFilePath = "QuilbGroupInstallation/Installation/Uninstall/UninstallXmlFile";

// The text of the tag at `path`, or null when the tag or its text is missing.
const char* tagText(const PXML& xml, const char* path)
{
    int node = xml.FindFullTag(path, -1, nullptr);
    return node < 0 ? nullptr : xml.GetData(node);
}

// The plain accessors: the buffer is cleared over its whole size and receives at most
// size-2 characters of the tag's text, unexpanded.
int copyTagText(const PXML& xml, const char* path, char* buffer, int size)
{
    if (!buffer)
        return -1;
    if (size > 0)
        memset(buffer, 0, size);
    const char* text = tagText(xml, path);
    if (!text)
        return -1;
    if (size > 1)
        TeskUtils::copyBounded(buffer, text, size - 1);
    return 0;
}

// Appends one part of the version; false when its tag or text is missing or empty.
bool appendVersionPart(const PXML& xml, const char* path, char* buffer, int size)
{
    const char* text = tagText(xml, path);
    if (!text || !*text)
        return false;
    TeskUtils::appendBounded(buffer, text, size);
    return true;
}

// The children of ProductDesc that GetProductDesc reads, with their field offsets.
struct ProductField
{
    const char* tag;
    size_t offset;
};

const ProductField kProductFields[] = {
    { "Fullname", offsetof(Installer::ProductDescription, fullName) },
    { "MajorVersion", offsetof(Installer::ProductDescription, majorVersion) },
    { "MinorVersion", offsetof(Installer::ProductDescription, minorVersion) },
    { "MinestVersion", offsetof(Installer::ProductDescription, minestVersion) },
    { "LetterVersion", offsetof(Installer::ProductDescription, letterVersion) },
    { "Website", offsetof(Installer::ProductDescription, website) },
    { "Supportsite", offsetof(Installer::ProductDescription, supportSite) },
    { "Supportemail", offsetof(Installer::ProductDescription, supportEmail) },
};

// The control variables: tag under InstallerControlVariables and, for the rows whose
// missing-tag warning has a precondition, what must exist for the warning to be given.
struct ControlVariableRow
{
    const char* tag;
    const char* precondition; // a path for FindFullTag, a tag for FindTag, or null
    bool preconditionIsPath;
};

const ControlVariableRow kControlVariableRows[Installer::CV_COUNT] = {
    { "PreviousInstallation", nullptr, false },
    { "LegacyInstallation", "/QuilbGroupInstallation/ProductDesc/LegacyApplication", true },
    { "ShouldUninstall", nullptr, false },
    { "CustomizeSettings", nullptr, false },
    { "ProgressDetails", nullptr, false },
    { "InstallError", nullptr, false },
    { "UninstallError", nullptr, false },
    { "DlgCondition", nullptr, false },
    { "ExternalLegacyInstallation", "/QuilbGroupInstallation/ProductDesc/ExternalLegacyApplication", true },
    { "InstallationsCount", "InstallationCleanup", false },
};

} // namespace

int Installer::GetProductDesc(ProductDescription& desc)
{
    memset(&desc, 0, sizeof(desc));
    int node = templateXml.FindTag("ProductDesc", -1);
    if (node < 0)
        return -1;
    for (const ProductField& field : kProductFields) {
        int child = templateXml.FindChild(node, field.tag, -1);
        const char* text = templateXml.GetData(child);
        char* out = reinterpret_cast<char*>(&desc) + field.offset;
        // The fields are 200 bytes, the texts cut at 198 characters.
        TeskUtils::copyBounded(out, text, 199);
    }
    return 0;
}

int Installer::GetAppName(char* buffer, int size)
{
    return copyTagText(templateXml, kFullnamePath, buffer, size);
}

int Installer::GetAppMajorVer(char* buffer, int size)
{
    return copyTagText(templateXml, kMajorVersionPath, buffer, size);
}

int Installer::GetAppWebsite(char* buffer, int size)
{
    return copyTagText(templateXml, kWebsitePath, buffer, size);
}

int Installer::GetAppSupportEmail(char* buffer, int size)
{
    return copyTagText(templateXml, kSupportEmailPath, buffer, size);
}

int Installer::GetInstallHelpURL(char* buffer, int size)
{
    return copyTagText(templateXml, kHelpUrlPath, buffer, size);
}

int Installer::GetAppFullVer(char* buffer, int size)
{
    if (!buffer || size < 1)
        return -1;
    memset(buffer, 0, size);
    if (!appendVersionPart(templateXml, kMajorVersionPath, buffer, size))
        return -1;
    TeskUtils::appendBounded(buffer, ".", size);
    if (!appendVersionPart(templateXml, kMinorVersionPath, buffer, size))
        return -1;
    TeskUtils::appendBounded(buffer, ".", size);
    if (!appendVersionPart(templateXml, kMinestVersionPath, buffer, size))
        return -1;
    return 0;
}

int Installer::GetAppTitle(char* buffer, int size)
{
    if (!buffer)
        return -1;
    const char* title = tagText(templateXml, kTitlePath);
    if (title && *title) {
        if (ExpandString(title, buffer, size, false) != 0)
            return 0;
        TeskUtils::copyBounded(buffer, title, size > 0 ? size : 0);
        return 0;
    }

    char name[200];
    if (GetAppName(name, sizeof(name)) != 0) {
        TeskUtils::copyBounded(buffer, "Unknown title", size > 0 ? size : 0);
        return -1;
    }
    TeskUtils::copyBounded(buffer, name, size > 0 ? size : 0);
    char version[200];
    if (GetAppFullVer(version, sizeof(version)) != 0)
        return 0;
    if (size > 0) {
        TeskUtils::appendBounded(buffer, " - ver. ", size);
        TeskUtils::appendBounded(buffer, version, size);
    }
    return 0;
}

// The expanded paths of the Uninstall section: 0, 1 for an empty expansion, -1 when the
// tag or its text is missing.
static int expandUninstallPath(Installer& installer, const char* path, char* buffer, int size)
{
    if (!buffer || size < 1)
        return -1;
    const char* text = tagText(installer.templateXml, path);
    if (!text) {
        buffer[0] = '\0';
        return -1;
    }
    installer.ExpandString(text, buffer, size, false);
    return buffer[0] ? 0 : 1;
}

int Installer::GetInstallLogFile(char* buffer, int size)
{
    return expandUninstallPath(*this, kInstallLogFilePath, buffer, size);
}

int Installer::GetInstallBackupFile(char* buffer, int size)
{
    return expandUninstallPath(*this, kInstallBackupFilePath, buffer, size);
}

int Installer::GetUninstallCmd(char* buffer, int size)
{
    return expandUninstallPath(*this, kUninstallCmdPath, buffer, size);
}

int Installer::GetUninstallXMLFile(char* buffer, int size)
{
    return expandUninstallPath(*this, kUninstallXmlFilePath, buffer, size);
}

TeskUtils::CharString Installer::GetAbortMessage(SETTINGSTATE state, int& skip)
{
    skip = 0;
    TeskUtils::CharString message("");
    int node = templateXml.FindFullTag(kAbortMessagesPath, -1, nullptr);
    if (node < 0)
        return message;

    const char* childTag = "Cancel";
    if (state == SETTING_WORKING)
        childTag = "AbortInstall";
    else if (state == SETTING_BUSY)
        childTag = "AbortBusy";
    int child = templateXml.FindChild(node, childTag, -1);
    if (child < 0)
        return message;

    ExpandCharString(templateXml.GetData(child), message, false);
    const char* skipCondition = templateXml.ParVal(child, "Skip");
    if (skipCondition && *skipCondition)
        skip = EvalCondition(skipCondition);
    return message;
}

const char* Installer::controlVariableTag(int which)
{
    if (which < 0 || which >= CV_COUNT)
        return nullptr;
    return kControlVariableRows[which].tag;
}

const char* Installer::getControlVariableName(ControlVariable which) const
{
    if (which < 0 || which >= CV_COUNT)
        return "";
    return controlVariables[which];
}

int Installer::ExtractControlVariableNames()
{
    memset(controlVariables, 0, sizeof(controlVariables));
    int section = templateXml.FindTag("InstallerControlVariables", -1);
    if (section < 0) {
        if (debugConsole)
            debugConsole->Dump(
                "WARNING: There are no control variable names provided in the installation xml!");
        return -1;
    }

    for (int i = 0; i < CV_COUNT; ++i) {
        const ControlVariableRow& row = kControlVariableRows[i];
        int child = templateXml.FindChild(section, row.tag, -1);
        if (child >= 0) {
            const char* text = templateXml.GetData(child);
            if (text && *text) {
                TeskUtils::copyBounded(controlVariables[i], text, sizeof(controlVariables[i]));
            } else if (debugConsole) {
                debugConsole->Dump(
                    "WARNING: Missing tag data for variable specifier in the installation template. (tag %s)",
                    row.tag);
            }
            continue;
        }

        bool warn = true;
        if (row.precondition) {
            int found = row.preconditionIsPath ? templateXml.FindFullTag(row.precondition, -1, nullptr)
                                               : templateXml.FindTag(row.precondition, -1);
            warn = found >= 0;
        }
        if (warn && debugConsole)
            debugConsole->Dump(
                "WARNING: Missing control variable specifier in the installation template. (tag %s)",
                row.tag);
    }
    return 0;
}
