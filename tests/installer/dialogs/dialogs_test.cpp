// The dialog reader: dialogs, controls, fields, buttons, triggers, tasks and sub-dialogs,
// the default dress, malformed elements, and the getters a front end reads them through.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "foundation/strings/path_size.h"
#include "installer/template/template_helpers.h"
#include "installer/wizard/dialog_conditions.h"
#include "support/paths.h"

using quilbtest::LoadedTemplate;

namespace {

class FullTemplate : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(t.loadFile("dialogs_full.xml"));
        ASSERT_EQ(0, t.installer->ExtractDialogsInfo(0));
    }
    Installer& engine() { return *t.installer; }
    LoadedTemplate t;
};

// The labels of the buttons of (dlg, sub), comma-separated, read through the exchange.
std::string buttonLabels(InstallExchangeInfo& exchange, int dlg, int sub)
{
    std::string labels;
    for (int i = 0; i < exchange.GetDlgButtonCount(dlg, sub); ++i)
        labels += std::string(i ? "," : "") + exchange.GetDlgButton(dlg, i, sub)->label;
    return labels;
}

TEST_F(FullTemplate, DialogsAndTheirFlags)
{
    struct Case
    {
        const char* name;
        int flags;
        int width, height;
        int subDialogs;
        const char* buttons;
    } cases[] = {
        { "Welcome", DLG_NO_CAPTION, 500, 390, 0, "&Next,&Cancel" }, // dressed, no Back on a first page
        { "License", 0, 760, 520, 0, "&Accept,&Back,&Cancel,Help,Custom,Quick,Docs" },
        { "Settings", DLG_WEAK_CONDITION, 500, 390, 0, "&Next,&Cancel,&Back" }, // the dress sets the size
        { "Progress", DLG_HAS_SUBDIALOGS | DLG_BUSY, 760, 520, 4, "" }, // a sub-dialog has a button
        { "Finish", DLG_FINISH | DLG_BAD_FINISH | DLG_AUTOMATED, 500, 390, 0, "&Next,&Cancel" },
        { "BadFinish", DLG_BAD_FINISH | DLG_FINISH, 500, 390, 0, "&Next,&Cancel" },
    };
    InstallExchangeInfo& exchange = engine();
    ASSERT_EQ(6, exchange.GetDialogsCount());
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(cases[i].name);
        const DLGINFO* dlg = exchange.GetDialogInfo(i, -1);
        ASSERT_NE(nullptr, dlg);
        EXPECT_STREQ(cases[i].name, dlg->name);
        EXPECT_EQ(cases[i].flags, dlg->flags);
        EXPECT_EQ(cases[i].width, exchange.GetDialogWidth(i));
        EXPECT_EQ(cases[i].height, exchange.GetDialogHeight(i));
        EXPECT_EQ(cases[i].subDialogs, exchange.GetSubDialogsCount(i));
        EXPECT_EQ(cases[i].buttons, buttonLabels(exchange, i, -1));
        EXPECT_STREQ(engine().templateXml.GetName(dlg->node), dlg->name);
        // Every getter answers 0 just past its count.
        EXPECT_EQ(nullptr, exchange.GetDialogInfo(i, cases[i].subDialogs));
        EXPECT_EQ(nullptr, exchange.GetDlgItem(i, exchange.GetDlgItemCount(i, -1), -1));
        EXPECT_EQ(nullptr, exchange.GetField(i, exchange.GetFieldCount(i, -1), -1));
        EXPECT_EQ(nullptr, exchange.GetDlgButton(i, exchange.GetDlgButtonCount(i, -1), -1));
    }
    EXPECT_EQ(nullptr, exchange.GetDialogInfo(6, -1));
    EXPECT_EQ(nullptr, exchange.GetDialogInfo(-1, -1));
    EXPECT_EQ("Go", buttonLabels(exchange, 3, 3));

    const DLGINFO* settings = engine().GetDialogInfo(2, -1);
    EXPECT_STREQ("[CUSTOMIZE]==1", settings->condition);
    ASSERT_EQ(2, settings->retained.count);
    EXPECT_STREQ("Destfilelist", settings->retained[0].c_str());
    EXPECT_STREQ("Log", settings->retained[1].c_str());
    EXPECT_TRUE(settings->autoCondition.isNull());
    EXPECT_STREQ("[READY]==1", engine().GetDialogInfo(3, 0)->autoCondition.c_str());
    EXPECT_EQ(DLG_AUTO_NEXT | DLG_BUSY, engine().GetDialogInfo(3, 1)->flags);
}

// "type x,y,w,h halign/valign name|details|text" of a control.
std::string describe(const UICTRL& c)
{
    return std::to_string(c.type) + " " + std::to_string(c.x) + "," + std::to_string(c.y) + ","
        + std::to_string(c.w) + "," + std::to_string(c.h) + " " + std::to_string(c.hAlign) + "/"
        + std::to_string(c.vAlign) + " " + c.name + "|" + c.details + "|" + (c.text ? c.text : "(null)");
}

TEST_F(FullTemplate, Controls)
{
    struct Case
    {
        int dlg, index, sub;
        const char* control;
    } cases[] = {
        { 0, 0, -1, "10 20,20,-20,40 22/21 greeting||first\r\nsecond" },
        { 0, 1, -1, "11 0,0,100,300 0/0 |stretch|side.png" },
        { 0, 2, -1, "12 1,70,-1,1 20/24 ||(null)" }, // the dress line: the Text without x is gone
        { 1, 0, -1, "13 20,60,-20,-80 0/0 |QuilbMarkdown|license.md" },
        { 1, 2, -1, "19 1,2,0,0 0/0 ||page.html" },
        { 3, 0, -1, "16 10,10,200,-10 0/0 |size=18|" },
        { 3, 0, 0, "15 1,1,0,0 0/0 Destfilelist||" },
        { 3, 0, 1, "14 1,2,3,4 0/0 ||" },
        { 3, 2, 1, "18 0,0,0,0 0/0 ||slides" },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.control);
        const UICTRL* ctrl = engine().GetDlgItem(c.dlg, c.index, c.sub);
        ASSERT_NE(nullptr, ctrl);
        EXPECT_EQ(c.control, describe(*ctrl));
    }
    EXPECT_EQ(3, engine().GetDlgItemCount(0, -1));
}

TEST_F(FullTemplate, Fields)
{
    struct Case
    {
        const char* variable;
        int type;
    } cases[] = {
        { "TARGET", FIELD_DIRECTORY }, { "LINK", FIELD_CHECKBOX }, { "EDITION", FIELD_RADIO_BUTTONS },
        { "VERSION", FIELD_INSTALL_PARAMETER }, { "OWNER", FIELD_EDIT_BOX }, { "SECRET", FIELD_PASSWORD },
        { "SECOND_SECRET", FIELD_PASSWORD }, { "THIRD", FIELD_PASSWORD }, // type of the one before
    };
    ASSERT_EQ(8, engine().GetFieldCount(2, -1));
    for (int i = 0; i < 8; ++i) {
        SCOPED_TRACE(cases[i].variable);
        const FIELDINFO* field = engine().GetField(2, i, -1);
        ASSERT_NE(nullptr, field);
        EXPECT_STREQ(cases[i].variable, field->variable);
        EXPECT_EQ(cases[i].type, field->type);
    }

    const FIELDINFO& target = *engine().GetField(2, 0, -1);
    EXPECT_STREQ("1", target.condition);
    EXPECT_STREQ("[E]==1", target.enableCondition);
    EXPECT_STREQ("VALID", target.validationVariable);
    EXPECT_STREQ("Where to", target.tooltip.c_str());
    EXPECT_EQ(ALIGN_RIGHT, target.hAlign);
    EXPECT_EQ(-1, engine().GetField(2, 1, -1)->x); // absent coordinates
    EXPECT_STREQ("A;B;C", engine().GetField(2, 2, -1)->content);
    EXPECT_STREQ("PREP", engine().GetField(3, 0, 0)->variable);
}

// "label flags shift action x,y,w,h halign/valign" of a button.
std::string describe(const BUTTONINFO& b)
{
    return std::string(b.label) + " " + std::to_string(b.flags) + " " + std::to_string(b.shift) + " "
        + b.action + " " + std::to_string(b.x) + "," + std::to_string(b.y) + "," + std::to_string(b.w) + ","
        + std::to_string(b.h) + " " + std::to_string(b.hAlign) + "/" + std::to_string(b.vAlign);
}

TEST_F(FullTemplate, ButtonsAndTheDefaultDress)
{
    struct Case
    {
        int dlg, index;
        const char* button;
    } cases[] = {
        { 1, 0, "&Accept 17 1  100,50,80,30 23/24" }, // Next: shift and default
        { 1, 1, "&Back 1 -1  190,50,90,25 0/0" }, // no centring for buttons
        { 1, 2, "&Cancel 10 0 Cancel 20,50,80,30 0/0" },
        { 1, 3, "Help 2 0 Help 280,50,80,30 0/0" }, // the preset overrides the Action
        { 1, 4, "Custom 3 1 [CUSTOMIZE]='1' 1,1,80,30 0/0" },
        { 1, 5, "Quick 3 -1 [CUSTOMIZE]='0' 1,1,80,30 0/0" },
        { 1, 6, "Docs 7 2 Run:Docs 1,1,80,30 0/0" }, // Default="2" is not 1
        { 2, 0, "&Next 1 1  100,50,80,30 23/24" }, // the default dress
        { 2, 1, "&Cancel 2 0 Cancel 20,50,80,30 20/24" },
        { 2, 2, "&Back 1 -1  190,50,80,30 23/24" },
    };
    // A button without text or without x is not taken.
    EXPECT_EQ(7, engine().GetDlgButtonCount(1, -1));
    for (const Case& c : cases) {
        const BUTTONINFO* button = engine().GetDlgButton(c.dlg, c.index, -1);
        ASSERT_NE(nullptr, button) << c.button;
        EXPECT_EQ(c.button, describe(*button));
    }
    EXPECT_STREQ("[A]==1", engine().GetDlgButton(1, 6, -1)->condition);
    EXPECT_STREQ("[B]==1", engine().GetDlgButton(1, 6, -1)->enableCondition);
}

// "evaluation type variable|value|condition|text mask" of a trigger.
std::string describe(const TRIGGER_INFO& t)
{
    return std::to_string(t.evaluation) + " " + std::to_string(t.type) + " " + t.variable + "|" + t.value
        + "|" + t.condition + "|" + t.text.c_str() + " " + std::to_string(t.updateMask);
}

TEST_F(FullTemplate, Triggers)
{
    const char* expected[] = {
        "5 0 X|[Y]|[Z]==1|text 10",
        "2 2 X||| 0", // a VarReset needs no value; the unknown word is passed over
        "25 6 ||| 0",
        "4 0 |v|| 0", // an unknown type counts as VarChange
        "4 7 ||| 5", // an empty Value is a value
    };
    const DLGINFO& settings = *engine().GetDialogInfo(2, -1);
    ASSERT_EQ(5, settings.triggers.count);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(expected[i], describe(settings.triggers[i]));
    EXPECT_EQ(
        1, t.logCount("WARNING: Unrecognized trigger evaluation: Bogus (Parent dlg name: Settings)\r\n"));
    EXPECT_EQ(1, t.logCount("WARNING: Unrecognized trigger type = Weird (Parent dlg name: Settings)\r\n"));
    EXPECT_EQ(2,
        t.logCount("WARNING: Extracted a trigger with no type nor specified value (Parent dlg "
                   "name: Settings)\r\n"));
}

TEST_F(FullTemplate, TasksAndSubDialogs)
{
    ASSERT_EQ(5, engine().GetTaskInfoCount(3));
    const TASKINFO& prepare = *engine().GetTaskInfo(3, 0);
    EXPECT_EQ(TASK_NOT_REACHED, prepare.status);
    EXPECT_STREQ("Preparing", prepare.currentLabel);
    EXPECT_STREQ("[P]==1", prepare.enableCondition);
    // A hidden task still has its sub-dialog at its own index.
    EXPECT_STREQ("0", engine().GetTaskInfo(3, 2)->showCondition);
    EXPECT_STREQ("Hidden", engine().GetDialogInfo(3, 2)->name);
    // A task without a sub-dialog: from there on task and sub-dialog indices part.
    EXPECT_STREQ("Orphan", engine().GetTaskInfo(3, 3)->name);
    EXPECT_STREQ("Register", engine().GetDialogInfo(3, 3)->name);
    EXPECT_EQ(nullptr, engine().GetDialogInfo(3, 4));
    EXPECT_EQ(nullptr, engine().GetTaskInfo(3, 5));
    EXPECT_EQ(nullptr, engine().GetDlgItem(3, 0, 9)); // no such sub-dialog
}

TEST(Dialogs, UninstallSectionAndSampleProduct)
{
    // The low bit of the flags given to Init tells an uninstall, even when the log is missing.
    quilbtest::TempDir dir;
    for (unsigned int flags : { 0u, 1u, 3u }) {
        Installer engine;
        EXPECT_FALSE(engine.IsUninstall());
        engine.Init((dir.path() + "/missing.log").c_str(), 0, flags);
        EXPECT_EQ(flags & 1, static_cast<unsigned int>(engine.IsUninstall())) << flags;
    }

    LoadedTemplate uninstall;
    ASSERT_TRUE(uninstall.loadFile("dialogs_full.xml"));
    ASSERT_EQ(0, uninstall.installer->ExtractDialogsInfo(1));
    ASSERT_EQ(2, uninstall.installer->GetDialogsCount());
    EXPECT_STREQ("CopyProgress", uninstall.installer->GetDialogInfo(1, -1)->name);
    EXPECT_EQ("&Next,&Cancel,&Back", buttonLabels(*uninstall.installer, 1, -1));

    LoadedTemplate sample;
    ASSERT_EQ(0,
        sample.installer->templateXml.ParseFile(
            (quilbtest::sourceDir() + "/examples/quilb-notes/install.xml").c_str()));
    ASSERT_EQ(0, sample.installer->ExtractDialogsInfo(0));
    EXPECT_EQ(8, sample.installer->GetDialogsCount());
    EXPECT_EQ("", sample.log.text());
}

TEST(Dialogs, MalformedElementsCostAWarningAtMost)
{
    struct Case
    {
        const char* label;
        const char* dialogs; // children of the root
        int result;
        int dialogCount;
        const char* logged;
    } cases[] = {
        { "no Dialogs section", "<UninstallDialogs><A/></UninstallDialogs>", -1, 0, nullptr },
        { "special word unknown", "<Dialogs><A Special='AutoNext;Sparkly'/></Dialogs>", 0, 1,
            "WARNING: Unknown dialog special attribute encontered: Sparkly\r\n" },
        { "no task list", "<Dialogs><A Special='HasSubDialogs'><SubDialogs/></A></Dialogs>", -1, 0,
            "ERROR: Could NOT find <TaskList> tag! (parent: A)\r\n" },
        { "no sub-dialogs", "<Dialogs><A/><B Special='HasSubDialogs'><TaskList><X/></TaskList></B></Dialogs>",
            -1, 1, "ERROR: Could NOT find <SubDialogs> tag! (parent: B)\r\n" },
        { "numbers that aren't",
            "<Dialogs><A w='wide'><Text x='left' y=''>t</Text>"
            "<Button x='a' y='b' w='' DialogShift='x'>B</Button></A></Dialogs>",
            0, 1, nullptr },
        { "empty dialogs", "<Dialogs/>", 0, 0, nullptr },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        LoadedTemplate t;
        t.loadText(std::string("<QuilbGroupInstallation>") + c.dialogs + "</QuilbGroupInstallation>");
        EXPECT_EQ(c.result, t.installer->ExtractDialogsInfo(0));
        EXPECT_EQ(c.dialogCount, t.installer->GetDialogsCount());
        if (c.logged) {
            EXPECT_EQ(1, t.logCount(c.logged)) << t.log.text();
        }
    }
}

// A condition object that counts its destruction.
class ProbeCondition : public DlgCondition
{
public:
    explicit ProbeCondition(int* counter)
        : destroyed(counter)
    {
    }
    ~ProbeCondition() override { ++*destroyed; }
    bool Eval(Installer*, InstallerUI*) override { return true; }

private:
    int* destroyed;
};

TEST(Dialogs, CopiesShareTheConditionObject)
{
    int destroyed = 0;
    DLGINFO original;
    original.setConditionObject(new ProbeCondition(&destroyed), nullptr);
    {
        DLGINFO copy(original);
        DLGINFO assigned;
        assigned = copy;
        TeskUtils::Table<DLGINFO, 16> table;
        table.append(assigned);
        EXPECT_EQ(4, *original.conditionRefs);
        EXPECT_EQ(original.conditionObject, table[0].conditionObject);
    }
    EXPECT_EQ(0, destroyed);
    EXPECT_EQ(1, *original.conditionRefs);

    // Another object replaces the first, which dies with its last holder.
    original.setConditionObject(new ProbeCondition(&destroyed), nullptr);
    EXPECT_EQ(1, destroyed);
    original.releaseConditionObject();
    EXPECT_EQ(2, destroyed);
    EXPECT_EQ(nullptr, original.conditionObject);
}

TEST_F(FullTemplate, DirectoryVariablesAreCorrected)
{
    engine().SetVar("TARGET", " /opt/a\\b ");
    engine().SetVar("LINK", " keep\\me ");
    engine().correctDirVariables();
    char value[TeskUtils::kPathSize];
    engine().GetVar("TARGET", value, sizeof(value));
    EXPECT_STREQ("/opt/a/b", value);
    engine().GetVar("LINK", value, sizeof(value));
    EXPECT_STREQ(" keep\\me ", value);
    EXPECT_EQ(-1, engine().GetVar("PREP", nullptr, 0)); // no Directory: never created
}

} // namespace
