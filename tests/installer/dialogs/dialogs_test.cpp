// The dialog reader: dialogs, controls, fields, buttons, triggers, tasks and sub-dialogs,
// the default dress, malformed elements, and the getters a front end reads them through.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "installer/dialogs/exchange_walker_helpers.h"
#include "installer/model/dialog_conditions.h"
#include "installer/template/template_helpers.h"
#include "support/paths.h"

using quilbtest::LoadedTemplate;

namespace {

class FullTemplate : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(t.loadFile("dialogs_full.xml"));
        ASSERT_EQ(0, t.installer->ExtractDialogsInfo(0));
    }
    Installer& engine() { return *t.installer; }
    LoadedTemplate t;
};

TEST_F(FullTemplate, DialogsAndTheirFlags)
{
    struct Case {
        const char* name;
        int flags;
        int width, height;
        int subDialogs;
    } cases[] = {
        {"Welcome", DLG_NO_CAPTION, 500, 390, 0},
        {"License", 0, 760, 520, 0},
        {"Settings", DLG_WEAK_CONDITION, 500, 390, 0},  // dressed: the dress sets the size
        {"Progress", DLG_HAS_SUBDIALOGS | DLG_BUSY, 760, 520, 4},
        {"Finish", DLG_FINISH | DLG_BAD_FINISH | DLG_AUTOMATED, 500, 390, 0},
        {"BadFinish", DLG_BAD_FINISH | DLG_FINISH, 500, 390, 0},
    };
    ASSERT_EQ(6, engine().GetDialogsCount());
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(cases[i].name);
        const DLGINFO* dlg = engine().GetDialogInfo(i, -1);
        ASSERT_NE(nullptr, dlg);
        EXPECT_STREQ(cases[i].name, dlg->name);
        EXPECT_EQ(cases[i].flags, dlg->flags);
        EXPECT_EQ(cases[i].width, engine().GetDialogWidth(i));
        EXPECT_EQ(cases[i].height, engine().GetDialogHeight(i));
        EXPECT_EQ(cases[i].subDialogs, engine().GetSubDialogsCount(i));
        EXPECT_STREQ(engine().templateXml.GetName(dlg->node), dlg->name);
    }

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
    return std::to_string(c.type) + " " + std::to_string(c.x) + "," + std::to_string(c.y) + "," +
           std::to_string(c.w) + "," + std::to_string(c.h) + " " + std::to_string(c.hAlign) + "/" +
           std::to_string(c.vAlign) + " " + c.name + "|" + c.details + "|" + (c.text ? c.text : "(null)");
}

TEST_F(FullTemplate, Controls)
{
    struct Case {
        int dlg, index, sub;
        const char* control;
    } cases[] = {
        {0, 0, -1, "10 20,20,-20,40 22/21 greeting||first\r\nsecond"},
        {0, 1, -1, "11 0,0,100,300 0/0 |stretch|side.png"},
        {0, 2, -1, "12 1,70,-1,1 20/24 ||(null)"},  // the dress line: the Text without x is gone
        {1, 0, -1, "13 20,60,-20,-80 0/0 |QuilbMarkdown|license.md"},
        {1, 2, -1, "19 1,2,0,0 0/0 ||page.html"},
        {3, 0, -1, "16 10,10,200,-10 0/0 |size=18|"},
        {3, 0, 0, "15 1,1,0,0 0/0 Destfilelist||"},
        {3, 0, 1, "14 1,2,3,4 0/0 ||"},
        {3, 2, 1, "18 0,0,0,0 0/0 ||slides"},
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
    struct Case {
        const char* variable;
        int type;
    } cases[] = {
        {"TARGET", FIELD_DIRECTORY},  {"LINK", FIELD_CHECKBOX},       {"EDITION", FIELD_RADIO_BUTTONS},
        {"VERSION", FIELD_INSTALL_PARAMETER}, {"OWNER", FIELD_EDIT_BOX}, {"SECRET", FIELD_PASSWORD},
        {"SECOND_SECRET", FIELD_PASSWORD}, {"THIRD", FIELD_PASSWORD},  // type of the one before
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
    EXPECT_EQ(-1, engine().GetField(2, 1, -1)->x);  // absent coordinates
    EXPECT_STREQ("A;B;C", engine().GetField(2, 2, -1)->content);
    EXPECT_STREQ("PREP", engine().GetField(3, 0, 0)->variable);
}

// "label flags shift action w,h halign/valign" of a button.
std::string describe(const BUTTONINFO& b)
{
    return std::string(b.label) + " " + std::to_string(b.flags) + " " + std::to_string(b.shift) + " " +
           b.action + " " + std::to_string(b.w) + "," + std::to_string(b.h) + " " +
           std::to_string(b.hAlign) + "/" + std::to_string(b.vAlign);
}

TEST_F(FullTemplate, Buttons)
{
    const char* expected[] = {
        "&Accept 17 1  80,30 23/24",  // Next: shift and default
        "&Back 1 -1  90,25 0/0",      // no centring for buttons
        "&Cancel 10 0 Cancel 80,30 0/0",
        "Help 2 0 Help 80,30 0/0",    // the preset overrides the Action
        "Custom 3 1 [CUSTOMIZE]='1' 80,30 0/0",
        "Quick 3 -1 [CUSTOMIZE]='0' 80,30 0/0",
        "Docs 7 2 Run:Docs 80,30 0/0",  // Default="2" is not 1
    };
    // A button without text or without x is not taken.
    ASSERT_EQ(7, engine().GetDlgButtonCount(1, -1));
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(expected[i], describe(*engine().GetDlgButton(1, i, -1)));
    EXPECT_STREQ("[B]==1", engine().GetDlgButton(1, 6, -1)->enableCondition);
}

TEST_F(FullTemplate, DefaultDress)
{
    // Which dialogs are dressed, and without Back on a first or last page, shows in the
    // wizard's description below; here the details of the dress.
    EXPECT_EQ("&Next 1 1  80,30 23/24", describe(*engine().GetDlgButton(2, 0, -1)));
    EXPECT_EQ("&Cancel 2 0 Cancel 80,30 20/24", describe(*engine().GetDlgButton(2, 1, -1)));
    EXPECT_EQ("&Back 1 -1  80,30 23/24", describe(*engine().GetDlgButton(2, 2, -1)));
    EXPECT_EQ(190, engine().GetDlgButton(2, 2, -1)->x);
}

// "evaluation type variable|value|condition|text mask" of a trigger.
std::string describe(const TRIGGER_INFO& t)
{
    return std::to_string(t.evaluation) + " " + std::to_string(t.type) + " " + t.variable + "|" +
           t.value + "|" + t.condition + "|" + t.text.c_str() + " " + std::to_string(t.updateMask);
}

TEST_F(FullTemplate, Triggers)
{
    const char* expected[] = {
        "5 0 X|[Y]|[Z]==1|text 10",
        "2 2 X||| 0",  // a VarReset needs no value; the unknown word is passed over
        "25 6 ||| 0",
        "4 0 |v|| 0",  // an unknown type counts as VarChange
        "4 7 ||| 5",   // an empty Value is a value
    };
    const DLGINFO& settings = *engine().GetDialogInfo(2, -1);
    ASSERT_EQ(5, settings.triggers.count);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(expected[i], describe(settings.triggers[i]));
    EXPECT_EQ(1, t.logCount("WARNING: Unrecognized trigger evaluation: Bogus (Parent dlg name: Settings)\r\n"));
    EXPECT_EQ(1, t.logCount("WARNING: Unrecognized trigger type = Weird (Parent dlg name: Settings)\r\n"));
    EXPECT_EQ(2, t.logCount("WARNING: Extracted a trigger with no type nor specified value (Parent dlg "
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

    // Item getters: sub -1 is the dialog itself, 0 or more a sub-dialog.
    EXPECT_EQ(CTRL_TASK_LB, engine().GetDlgItem(3, 0, -1)->type);
    EXPECT_EQ(CTRL_LIST, engine().GetDlgItem(3, 0, 0)->type);
    EXPECT_EQ(nullptr, engine().GetDlgItem(3, 0, 9));
}

TEST_F(FullTemplate, FrontEndReadsEverythingThroughTheExchange)
{
    EXPECT_EQ("Welcome c3 f0 b[&Next,&Cancel] t0 500x390\n"
              "License c3 f0 b[&Accept,&Back,&Cancel,Help,Custom,Quick,Docs] t0 760x520\n"
              "Settings c1 f8 b[&Next,&Cancel,&Back] t0 500x390\n"
              "Progress c1 f0 b[] t5 760x520\n"  // a sub-dialog has a button: no dress
              "  Prepare c1 f1 b[]\n"
              "  CopyProgress c3 f0 b[]\n"
              "  Hidden c0 f0 b[]\n"
              "  Register c0 f0 b[Go]\n"
              "Finish c2 f0 b[&Next,&Cancel] t0 500x390\n"
              "BadFinish c1 f0 b[&Next,&Cancel] t0 500x390\n",
              quilbtest::describeWizard(engine()));

    LoadedTemplate uninstall;
    ASSERT_TRUE(uninstall.loadFile("dialogs_full.xml"));
    ASSERT_EQ(0, uninstall.installer->ExtractDialogsInfo(1));
    EXPECT_EQ("PreUninstall c1 f0 b[&Next,&Cancel,&Back] t0 500x390\n"
              "CopyProgress c1 f0 b[&Next,&Cancel,&Back] t0 500x390\n",
              quilbtest::describeWizard(*uninstall.installer));
}

TEST(Dialogs, SampleProductTemplate)
{
    LoadedTemplate t;
    ASSERT_EQ(0, t.installer->templateXml.ParseFile(
                     (quilbtest::sourceDir() + "/examples/quilb-notes/install.xml").c_str()));
    ASSERT_EQ(0, t.installer->ExtractDialogsInfo(0));
    std::string wizard = quilbtest::describeWizard(*t.installer);
    EXPECT_EQ(std::string::npos, wizard.find("past the end"));
    EXPECT_EQ(std::string::npos, wizard.find("null"));
    EXPECT_EQ(8, t.installer->GetDialogsCount());
    EXPECT_EQ("", t.log.text());
}

TEST(Dialogs, MalformedElementsCostAWarningAtMost)
{
    struct Case {
        const char* label;
        const char* dialogs;  // children of the root
        int result;
        int dialogCount;
        const char* logged;
    } cases[] = {
        {"no Dialogs section", "<UninstallDialogs><A/></UninstallDialogs>", -1, 0, nullptr},
        {"special word unknown", "<Dialogs><A Special='AutoNext;Sparkly'/></Dialogs>", 0, 1,
         "WARNING: Unknown dialog special attribute encontered: Sparkly\r\n"},
        {"no task list", "<Dialogs><A Special='HasSubDialogs'><SubDialogs/></A></Dialogs>", -1, 0,
         "ERROR: Could NOT find <TaskList> tag! (parent: A)\r\n"},
        {"no sub-dialogs", "<Dialogs><A/><B Special='HasSubDialogs'><TaskList><X/></TaskList></B></Dialogs>",
         -1, 1, "ERROR: Could NOT find <SubDialogs> tag! (parent: B)\r\n"},
        {"cut off inside a button", "<Dialogs><A><Button x='1' y='2'>Go", 0, 1, nullptr},
        {"attribute without closing quote", "<Dialogs><A w='300 h='2'><Text x='1' y='1'>t</Text></A></Dialogs>",
         0, 1, nullptr},
        {"numbers that aren't", "<Dialogs><A w='wide'><Text x='left' y=''>t</Text>"
                                "<Button x='a' y='b' w='' DialogShift='x'>B</Button></A></Dialogs>",
         0, 1, nullptr},
        {"empty dialogs", "<Dialogs/>", 0, 0, nullptr},
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
        quilbtest::describeWizard(*t.installer);
    }
}

// A condition object that counts its destruction.
class ProbeCondition : public DlgCondition {
public:
    explicit ProbeCondition(int* destroyed) : destroyed(destroyed) {}
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
    char value[520];
    engine().GetVar("TARGET", value, sizeof(value));
    EXPECT_STREQ("/opt/a/b", value);
    engine().GetVar("LINK", value, sizeof(value));
    EXPECT_STREQ(" keep\\me ", value);
    EXPECT_EQ(-1, engine().GetVar("PREP", nullptr, 0));  // no Directory: never created
}

} // namespace
