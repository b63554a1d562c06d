// Product description, template paths, abort messages and control variable names.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "installer/template/template_helpers.h"

using quilbtest::LoadedTemplate;

namespace {

using TextGetter = int (Installer::*)(char*, int);

struct AccessorCase
{
    const char* label;
    const char* templateFile;
    TextGetter getter;
    int size;
    int result;
    const char* text;
};

TEST(TemplateAccessors, ReadTagsAsTemplatesWriteThem)
{
    const AccessorCase cases[] = {
        { "name", "product_full.xml", &Installer::GetAppName, 200, 0, "ExampleProduct" },
        { "major version", "product_full.xml", &Installer::GetAppMajorVer, 200, 0, "5" },
        { "full version", "product_full.xml", &Installer::GetAppFullVer, 200, 0, "5.1.1" },
        { "website", "product_full.xml", &Installer::GetAppWebsite, 200, 0, "https://example.invalid" },
        { "support mail", "product_full.xml", &Installer::GetAppSupportEmail, 200, 0,
            "help@example.invalid" },
        { "help url", "product_full.xml", &Installer::GetInstallHelpURL, 200, 0,
            "https://example.invalid/install" },
        { "expanded title", "product_full.xml", &Installer::GetAppTitle, 200, 0, "Example Setup" },
        { "log file expanded", "product_full.xml", &Installer::GetInstallLogFile, 200, 0,
            "/opt/ex/uninstall.log" },
        { "backup expands to nothing", "product_full.xml", &Installer::GetInstallBackupFile, 200, 1, "" },
        { "command", "product_full.xml", &Installer::GetUninstallCmd, 200, 0, "/opt/ex/bin/remove" },
        { "xml file without text", "product_bare.xml", &Installer::GetUninstallXMLFile, 200, -1, "" },
        { "empty xml file tag", "product_full.xml", &Installer::GetUninstallXMLFile, 200, 1, "" },
        { "missing website", "product_bare.xml", &Installer::GetAppWebsite, 200, -1, "" },
        { "empty minor version", "product_bare.xml", &Installer::GetAppFullVer, 200, -1, "2." },
        { "title falls back to name", "product_bare.xml", &Installer::GetAppTitle, 200, 0, "BareProduct" },
        { "plain text leaves two bytes", "product_full.xml", &Installer::GetAppName, 8, 0, "Exampl" },
    };
    for (const AccessorCase& c : cases) {
        SCOPED_TRACE(c.label);
        LoadedTemplate t;
        ASSERT_TRUE(t.loadFile(c.templateFile));
        t.installer->SetVar("PRODUCT_LABEL", "Example");
        t.installer->SetVar("TARGET", "/opt/ex");
        t.installer->SetVar("EMPTY", "");
        char buffer[200];
        memset(buffer, 'x', sizeof(buffer));
        EXPECT_EQ(c.result, (t.installer.get()->*c.getter)(buffer, c.size));
        EXPECT_STREQ(c.text, buffer);
        EXPECT_EQ(-1, (t.installer.get()->*c.getter)(nullptr, 10));
    }
}

TEST(TemplateAccessors, TitleFallbacks)
{
    const char* const nameAndVersion = "<Fullname>Name</Fullname><MajorVersion>1</MajorVersion>"
                                       "<MinorVersion>2</MinorVersion><MinestVersion>3</MinestVersion>";
    struct Case
    {
        const char* label;
        const char* productDesc;
        int size;
        int result;
        const char* title;
    } cases[] = {
        { "name and version", nameAndVersion, 200, 0, "Name - ver. 1.2.3" },
        { "as far as the buffer holds", nameAndVersion, 12, 0, "Name - ver." },
        { "unset variable stays as text", "<Title>[X]</Title><Fullname>Name</Fullname>", 200, 0, "[X]" },
        { "empty title is no title", "<Title></Title><Fullname>Name</Fullname>", 200, 0, "Name" },
        { "no name at all", "<MajorVersion>1</MajorVersion>", 200, -1, "Unknown title" },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        LoadedTemplate t;
        t.loadText(std::string("<QuilbGroupInstallation><ProductDesc>") + c.productDesc
            + "</ProductDesc></QuilbGroupInstallation>");
        char buffer[200];
        EXPECT_EQ(c.result, t.installer->GetAppTitle(buffer, c.size));
        EXPECT_STREQ(c.title, buffer);
    }
}

TEST(TemplateAccessors, AbortMessageFollowsTheState)
{
    struct Case
    {
        SETTINGSTATE state;
        const char* quiet;
        const char* message;
        int skip;
    } cases[] = {
        { SETTING_IDLE, "0", "Stop installing Example?", 0 },
        { SETTING_WAITING, "0", "Stop installing Example?", 0 },
        { SETTING_WORKING, "0", "Installing now, can't stop.", 0 },
        { SETTING_WORKING, "1", "Installing now, can't stop.", 1 },
        { SETTING_BUSY, "1", "Busy.", 0 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.state);
        LoadedTemplate t;
        ASSERT_TRUE(t.loadFile("product_full.xml"));
        t.installer->SetVar("PRODUCT_LABEL", "Example");
        t.installer->SetVar("QUIET", c.quiet);
        int skip = 7;
        TeskUtils::CharString message = t.installer->GetAbortMessage(c.state, skip);
        EXPECT_STREQ(c.message, message.c_str());
        EXPECT_EQ(c.skip, skip);
    }

    LoadedTemplate bare;
    ASSERT_TRUE(bare.loadFile("product_bare.xml"));
    int skip = 7;
    EXPECT_STREQ("", bare.installer->GetAbortMessage(SETTING_IDLE, skip).c_str());
    EXPECT_EQ(0, skip);
}

TEST(TemplateAccessors, ProductDescriptionRecord)
{
    LoadedTemplate t;
    std::string longName(300, 'n');
    t.loadText("<QuilbGroupInstallation><ProductDesc><Fullname>" + longName
        + "</Fullname><LetterVersion>b</LetterVersion><Supportsite>s</Supportsite>"
          "</ProductDesc></QuilbGroupInstallation>");
    Installer::ProductDescription desc;
    ASSERT_EQ(0, t.installer->GetProductDesc(desc));
    EXPECT_EQ(std::string(198, 'n'), desc.fullName);
    EXPECT_STREQ("b", desc.letterVersion);
    EXPECT_STREQ("s", desc.supportSite);
    EXPECT_STREQ("", desc.website);

    LoadedTemplate none;
    none.loadText("<QuilbGroupInstallation><Dialogs/></QuilbGroupInstallation>");
    EXPECT_EQ(-1, none.installer->GetProductDesc(desc));
}

TEST(ControlVariables, NamesAndWarnings)
{
    LoadedTemplate t;
    ASSERT_TRUE(t.loadFile("product_full.xml"));
    ASSERT_EQ(0, t.installer->ExtractControlVariableNames());
    const Installer& engine = *t.installer;
    EXPECT_STREQ("PREVIOUS", engine.getControlVariableName(Installer::CV_PREVIOUS_INSTALLATION));
    EXPECT_STREQ("COUNT", engine.getControlVariableName(Installer::CV_INSTALLATIONS_COUNT));
    EXPECT_STREQ("", engine.getControlVariableName(Installer::CV_PROGRESS_DETAILS));

    // A tag without text, a missing tag whose product part exists, and a missing tag whose
    // precondition fails (no ExternalLegacyApplication: no warning).
    EXPECT_EQ(1,
        t.logCount("WARNING: Missing tag data for variable specifier in the installation "
                   "template. (tag ProgressDetails)\r\n"));
    EXPECT_EQ(1,
        t.logCount("WARNING: Missing control variable specifier in the installation "
                   "template. (tag LegacyInstallation)\r\n"));
    EXPECT_EQ(0, t.logCount("(tag ExternalLegacyInstallation)"));
    EXPECT_EQ(2, t.logCount("WARNING:"));

    LoadedTemplate bare;
    ASSERT_TRUE(bare.loadFile("product_bare.xml"));
    ASSERT_EQ(0, bare.installer->ExtractControlVariableNames());
    // Always-warned rows: all but the three with a precondition, less InstallError.
    EXPECT_EQ(6, bare.logCount("WARNING: Missing control variable specifier"));
    EXPECT_EQ(0, bare.logCount("(tag InstallationsCount)"));

    LoadedTemplate none;
    none.loadText("<QuilbGroupInstallation><ProductDesc/></QuilbGroupInstallation>");
    EXPECT_EQ(-1, none.installer->ExtractControlVariableNames());
    EXPECT_EQ(1,
        none.logCount("WARNING: There are no control variable names provided in the installation xml!\r\n"));
}

} // namespace
