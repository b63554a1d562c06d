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

TEST_F(FullTemplate, Controls)
{
    struct Case {
        int dlg, index, sub;
        int type;
        int x, y, w, h;
        int hAlign, vAlign;
        const char* name;
        const char* details;
        const char* text;
    } cases[] = {
        {0, 0, -1, CTRL_TEXT, 20, 20, -20, 40, ALIGN_CENTER, ALIGN_TOP, "greeting", "",
         "first\r\nsecond"},
        {0, 1, -1, CTRL_IMAGE, 0, 0, 100, 300, 0, 0, "", "stretch", "side.png"},
        {0, 2, -1, CTRL_HLINE, 1, 70, -1, 1, ALIGN_LEFT, ALIGN_BOTTOM, "", "", nullptr},  // dress
        {1, 0, -1, CTRL_RICH_EDIT_TEXT, 20, 60, -20, -80, 0, 0, "", "QuilbMarkdown", "license.md"},
        {1, 1, -1, CTRL_PLAIN_EDIT_TEXT, 1, 2, 0, 0, 0, 0, "", "QuilbMarkdown", "notes.md"},
        {1, 2, -1, CTRL_HTML_EDIT_TEXT, 1, 2, 0, 0, 0, 0, "", "", "page.html"},
        {3, 0, -1, CTRL_TASK_LB, 10, 10, 200, -10, 0, 0, "", "size=18", ""},
        {3, 0, 0, CTRL_LIST, 1, 1, 0, 0, 0, 0, "Destfilelist", "", ""},
        {3, 0, 1, CTRL_PROGRESS, 1, 2, 3, 4, 0, 0, "", "", ""},
        {3, 1, 1, CTRL_BORDER, 0, 0, 0, 0, 0, 0, "", "", ""},
        {3, 2, 1, CTRL_SLIDE_SHOW, 0, 0, 0, 0, 0, 0, "", "", "slides"},
        {4, 0, -1, CTRL_HLINE, 1, 70, 0, 0, 0, 0, "", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.dlg) + "/" + std::to_string(c.sub) + "/" + std::to_string(c.index));
        const UICTRL* ctrl = engine().GetDlgItem(c.dlg, c.index, c.sub);
        ASSERT_NE(nullptr, ctrl);
        EXPECT_EQ(c.type, ctrl->type);
        EXPECT_EQ(c.x, ctrl->x);
        EXPECT_EQ(c.y, ctrl->y);
        EXPECT_EQ(c.w, ctrl->w);
        EXPECT_EQ(c.h, ctrl->h);
        EXPECT_EQ(c.hAlign, ctrl->hAlign);
        EXPECT_EQ(c.vAlign, ctrl->vAlign);
        EXPECT_STREQ(c.name, ctrl->name);
        EXPECT_STREQ(c.details, ctrl->details);
        if (c.text)
            EXPECT_STREQ(c.text, ctrl->text);
        else
            EXPECT_EQ(nullptr, ctrl->text);
    }
    // The Text without x is dropped; the dress line follows the Image.
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
    EXPECT_STREQ("Target", target.label);
    EXPECT_EQ(10, target.x);
    EXPECT_EQ(24, target.h);
    EXPECT_STREQ("1", target.condition);
    EXPECT_STREQ("[E]==1", target.enableCondition);
    EXPECT_STREQ("VALID", target.validationVariable);
    EXPECT_STREQ("Where to", target.tooltip.c_str());
    EXPECT_STREQ("wide", target.style.c_str());
    EXPECT_EQ(ALIGN_RIGHT, target.hAlign);
    EXPECT_EQ(ALIGN_BOTTOM, target.vAlign);

    const FIELDINFO& link = *engine().GetField(2, 1, -1);
    EXPECT_EQ(-1, link.x);
    EXPECT_EQ(-1, link.y);
    EXPECT_EQ(-1, link.w);
    EXPECT_EQ(-1, link.h);
    EXPECT_TRUE(link.tooltip.isNull());

    const FIELDINFO& edition = *engine().GetField(2, 2, -1);
    EXPECT_STREQ("A;B;C", edition.content);
    EXPECT_STREQ("a;b;c", edition.description);
    EXPECT_STREQ("1;1;0", edition.enableCondition);
    EXPECT_STREQ("PREP", engine().GetField(3, 0, 0)->variable);
}

TEST_F(FullTemplate, Buttons)
{
    struct Case {
        const char* label;
        int flags;
        int shift;
        const char* action;
        int w, h, hAlign, vAlign;
    } cases[] = {
        {"&Accept", BUTTON_HAS_SHIFT | BUTTON_DEFAULT, 1, "", 80, 30, ALIGN_RIGHT, ALIGN_BOTTOM},
        {"&Back", BUTTON_HAS_SHIFT, -1, "", 90, 25, 0, 0},  // no centring for buttons
        {"&Cancel", BUTTON_HAS_ACTION | BUTTON_DISABLEABLE, 0, "Cancel", 80, 30, 0, 0},
        {"Help", BUTTON_HAS_ACTION, 0, "Help", 80, 30, 0, 0},
        {"Custom", BUTTON_HAS_SHIFT | BUTTON_HAS_ACTION, 1, "[CUSTOMIZE]='1'", 80, 30, 0, 0},
        {"Quick", BUTTON_HAS_SHIFT | BUTTON_HAS_ACTION, -1, "[CUSTOMIZE]='0'", 80, 30, 0, 0},
        {"Docs", BUTTON_HAS_SHIFT | BUTTON_HAS_ACTION | BUTTON_LINK_STYLE, 2, "Run:Docs", 80, 30, 0, 0},
    };
    // A button without text or without x is not taken.
    ASSERT_EQ(7, engine().GetDlgButtonCount(1, -1));
    for (int i = 0; i < 7; ++i) {
        SCOPED_TRACE(cases[i].label);
        const BUTTONINFO* button = engine().GetDlgButton(1, i, -1);
        ASSERT_NE(nullptr, button);
        EXPECT_STREQ(cases[i].label, button->label);
        EXPECT_EQ(cases[i].flags, button->flags);
        EXPECT_EQ(cases[i].shift, button->shift);
        EXPECT_STREQ(cases[i].action, button->action);
        EXPECT_EQ(cases[i].w, button->w);
        EXPECT_EQ(cases[i].h, button->h);
        EXPECT_EQ(cases[i].hAlign, button->hAlign);
        EXPECT_EQ(cases[i].vAlign, button->vAlign);
    }
    EXPECT_STREQ("[A]==1", engine().GetDlgButton(1, 6, -1)->condition);
    EXPECT_STREQ("[B]==1", engine().GetDlgButton(1, 6, -1)->enableCondition);
}

TEST_F(FullTemplate, DefaultDress)
{
    struct Case {
        int dlg;
        const char* labels;
    } cases[] = {
        {0, "&Next|&Cancel|"},  // Welcome: no Back
        {2, "&Next|&Cancel|&Back|"},
        {3, ""},  // a sub-dialog has a button: no dress
        {4, "&Next|&Cancel|"},
        {5, "&Next|&Cancel|"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.dlg);
        std::string labels;
        for (int i = 0; i < engine().GetDlgButtonCount(c.dlg, -1); ++i)
            labels += std::string(engine().GetDlgButton(c.dlg, i, -1)->label) + "|";
        EXPECT_EQ(c.labels, labels);
    }

    const BUTTONINFO& next = *engine().GetDlgButton(2, 0, -1);
    EXPECT_EQ(BUTTON_HAS_SHIFT, next.flags);
    EXPECT_EQ(1, next.shift);
    EXPECT_EQ(100, next.x);
    EXPECT_EQ(ALIGN_RIGHT, next.hAlign);
    const BUTTONINFO& cancel = *engine().GetDlgButton(2, 1, -1);
    EXPECT_EQ(BUTTON_HAS_ACTION, cancel.flags);
    EXPECT_STREQ("Cancel", cancel.action);
    EXPECT_EQ(ALIGN_LEFT, cancel.hAlign);
    const BUTTONINFO& back = *engine().GetDlgButton(2, 2, -1);
    EXPECT_EQ(-1, back.shift);
    EXPECT_EQ(190, back.x);
    EXPECT_EQ(ALIGN_BOTTOM, back.vAlign);
}

TEST_F(FullTemplate, Triggers)
{
    const DLGINFO& settings = *engine().GetDialogInfo(2, -1);
    struct Case {
        int evaluation;
        int type;
        const char* variable;
        const char* value;
        int updateMask;
    } cases[] = {
        {TRIGGER_ON_SET | TRIGGER_ON_END, TRIGGER_VAR_CHANGE, "X", "[Y]", UPDATE_FIELDS | UPDATE_BUTTONS},
        {TRIGGER_ON_DYNAMIC, TRIGGER_VAR_RESET, "X", "", 0},
        {TRIGGER_ON_DLG_EVAL | TRIGGER_ON_BUTTON | TRIGGER_ON_SET, TRIGGER_FREE_MEMORY, "", "", 0},
        {TRIGGER_ON_END, TRIGGER_VAR_CHANGE, "", "v", 0},  // unknown type counts as VarChange
        {TRIGGER_ON_END, TRIGGER_DEBUG_EXPRESSION, "", "", UPDATE_TASKS | UPDATE_CONTROLS},
    };
    ASSERT_EQ(5, settings.triggers.count);
    for (int i = 0; i < 5; ++i) {
        SCOPED_TRACE(i);
        const TRIGGER_INFO& trigger = settings.triggers[i];
        EXPECT_EQ(cases[i].evaluation, trigger.evaluation);
        EXPECT_EQ(cases[i].type, trigger.type);
        EXPECT_STREQ(cases[i].variable, trigger.variable);
        EXPECT_STREQ(cases[i].value, trigger.value);
        EXPECT_EQ(cases[i].updateMask, trigger.updateMask);
    }
    EXPECT_STREQ("[Z]==1", settings.triggers[0].condition);
    EXPECT_STREQ("text", settings.triggers[0].text.c_str());

    EXPECT_EQ(1, t.logCount("WARNING: Unrecognized trigger evaluation: Bogus (Parent dlg name: Settings)\r\n"));
    EXPECT_EQ(1, t.logCount("WARNING: Unrecognized trigger type = Weird (Parent dlg name: Settings)\r\n"));
    EXPECT_EQ(2, t.logCount("WARNING: Extracted a trigger with no type nor specified value (Parent dlg "
                            "name: Settings)\r\n"));
    EXPECT_EQ(1, engine().GetDialogInfo(3, 1)->triggers.count);
}

TEST_F(FullTemplate, TasksAndSubDialogs)
{
    ASSERT_EQ(5, engine().GetTaskInfoCount(3));
    const TASKINFO& prepare = *engine().GetTaskInfo(3, 0);
    EXPECT_EQ(TASK_NOT_REACHED, prepare.status);
    EXPECT_STREQ("Prepare", prepare.name);
    EXPECT_STREQ("Preparing", prepare.currentLabel);
    EXPECT_STREQ("Prepared", prepare.finishLabel);
    EXPECT_STREQ("Prepare", prepare.unreachedLabel);
    EXPECT_STREQ("1", prepare.showCondition);
    EXPECT_STREQ("[P]==1", prepare.enableCondition);
    // A hidden task still has its sub-dialog at its own index.
    EXPECT_STREQ("0", engine().GetTaskInfo(3, 2)->showCondition);
    EXPECT_STREQ("Hidden", engine().GetDialogInfo(3, 2)->name);
    // A task without a sub-dialog: from there on task and sub-dialog indices part.
    EXPECT_STREQ("Orphan", engine().GetTaskInfo(3, 3)->name);
    EXPECT_STREQ("Register", engine().GetDialogInfo(3, 3)->name);
    EXPECT_EQ(nullptr, engine().GetDialogInfo(3, 4));
    EXPECT_EQ(nullptr, engine().GetTaskInfo(3, 5));
    EXPECT_EQ(0, engine().GetTaskInfoCount(1));
    EXPECT_EQ(BUTTON_HAS_SHIFT | BUTTON_DEFAULT, engine().GetDlgButton(3, 0, 3)->flags);

    // Item getters: sub -1 is the dialog itself, 0 or more a sub-dialog.
    EXPECT_EQ(CTRL_TASK_LB, engine().GetDlgItem(3, 0, -1)->type);
    EXPECT_EQ(CTRL_LIST, engine().GetDlgItem(3, 0, 0)->type);
    EXPECT_EQ(nullptr, engine().GetDialogInfo(99, -1));
    EXPECT_EQ(nullptr, engine().GetDlgItem(3, 0, 9));
    EXPECT_EQ(0, engine().GetDlgItemCount(99, -1));
}

TEST_F(FullTemplate, FrontEndReadsEverythingThroughTheExchange)
{
    EXPECT_EQ("Welcome c3 f0 b2 t0 500x390\n"
              "License c3 f0 b7 t0 760x520\n"
              "Settings c1 f8 b3 t0 500x390\n"
              "Progress c1 f0 b0 t5 760x520\n"
              "  Prepare c1 f1 b0\n"
              "  CopyProgress c3 f0 b0\n"
              "  Hidden c0 f0 b0\n"
              "  Register c0 f0 b1\n"
              "Finish c2 f0 b2 t0 500x390\n"
              "BadFinish c1 f0 b2 t0 500x390\n",
              quilbtest::describeWizard(engine()));

    LoadedTemplate uninstall;
    ASSERT_TRUE(uninstall.loadFile("dialogs_full.xml"));
    ASSERT_EQ(0, uninstall.installer->ExtractDialogsInfo(1));
    EXPECT_EQ("PreUninstall c1 f0 b3 t0 500x390\n"
              "CopyProgress c1 f0 b3 t0 500x390\n",
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

TEST(Dialogs, SpecialWordsAndSizes)
{
    struct Case {
        const char* attributes;
        int flags;
        int width;
    } cases[] = {
        {"Special='AutoNext;Busy'", 36, 760},
        {"Special='autonext;;BUSY'", 36, 760},
        {"Special='1' w='640'", DLG_BAD_FINISH, 640},
        {"Special='HasSubDialogs'", DLG_HAS_SUBDIALOGS, 760},
        {"", 0, 760},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.attributes);
        LoadedTemplate t;
        t.loadText(std::string("<QuilbGroupInstallation><Dialogs><A ") + c.attributes +
                   "><TaskList/><SubDialogs/><Button x='1' y='1'>B</Button></A></Dialogs>"
                   "</QuilbGroupInstallation>");
        ASSERT_EQ(0, t.installer->ExtractDialogsInfo(0));
        EXPECT_EQ(c.flags, t.installer->GetDialogInfo(0, -1)->flags);
        EXPECT_EQ(c.width, t.installer->GetDialogWidth(0));
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
