// Triggers by type and by evaluation mask, the UI actions they reach, and the test of
// which parts of a dialog depend on a variable.
#include <gtest/gtest.h>

#include "installer/navigation/scripted_front_end.h"
#include "support/paths.h"

using quilbtest::ScriptedUI;
using quilbtest::TestEngine;

namespace {

TRIGGER_INFO makeTrigger(int type, const char* variable, const char* value, const char* condition = "",
                         int evaluation = TRIGGER_ON_SET)
{
    TRIGGER_INFO trigger;
    trigger.type = type;
    trigger.evaluation = evaluation;
    TeskUtils::copyBounded(trigger.variable, variable, sizeof(trigger.variable));
    TeskUtils::copyBounded(trigger.value, value, sizeof(trigger.value));
    TeskUtils::copyBounded(trigger.condition, condition, sizeof(trigger.condition));
    return trigger;
}

} // namespace

TEST(Triggers, EachTypeDoesItsWork)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("present.txt"), "x"));
    const std::string present = dir.file("present.txt");

    struct Row {
        const char* name;
        TRIGGER_INFO trigger;
        const char* variable;  // checked afterwards, or null
        const char* value;
        const char* call;      // the front end's calls, blank-separated
        const char* logLine;   // a line that must be logged, or null
    };
    const Row rows[] = {
        {"VarChange expands its value", makeTrigger(TRIGGER_VAR_CHANGE, "TARGET", "[ROOT]/bin"), "TARGET",
         "/opt/app/bin", "", nullptr},
        {"VarChange keeps an unknown reference", makeTrigger(TRIGGER_VAR_CHANGE, "TARGET", "[NOPE]/bin"), "TARGET",
         "[NOPE]/bin", "", nullptr},
        {"a false condition skips it", makeTrigger(TRIGGER_VAR_CHANGE, "TARGET", "x", "0"), "TARGET",
         "/opt/app/lib", "", nullptr},
        {"VarReset recomputes from the expression", makeTrigger(TRIGGER_VAR_RESET, "LIBDIR", ""), "LIBDIR",
         "/opt/app/lib", "", nullptr},
        {"VarReset of an unknown variable warns", makeTrigger(TRIGGER_VAR_RESET, "NOPE", ""), nullptr, nullptr, "",
         "WARNING: Trying to reset non-existent variable: NOPE"},
        {"FileCheck of an existing path sets it", makeTrigger(TRIGGER_FILE_CHECK, "CHECKED", present.c_str()),
         "CHECKED", present.c_str(), "", nullptr},
        {"FileCheck of a missing path puts the default back",
         makeTrigger(TRIGGER_FILE_CHECK, "CHECKED", (dir.path() + "/missing").c_str()), "CHECKED", "none", "",
         nullptr},
        {"RunActions runs the sequence", makeTrigger(TRIGGER_RUN_ACTIONS, "", "AfterCopy"), nullptr, nullptr, "",
         nullptr},
        {"UI hide", makeTrigger(TRIGGER_UI, "", "hide"), nullptr, nullptr, "ManageWindow(2)", nullptr},
        {"UI maximize, any case", makeTrigger(TRIGGER_UI, "", "MAXIMIZE"), nullptr, nullptr, "ManageWindow(4)",
         nullptr},
        {"UI update refreshes everything", makeTrigger(TRIGGER_UI, "", "update"), nullptr, nullptr,
         "UpdateSubDlg(0,-1,31,1)", nullptr},
        {"UI with an unknown word", makeTrigger(TRIGGER_UI, "", "wobble"), nullptr, nullptr, "",
         "WARNING: Unrecognized UI Action: wobble"},
        {"DebugExpression logs the expansion", makeTrigger(TRIGGER_DEBUG_EXPRESSION, "", "root=[ROOT]"), nullptr,
         nullptr, "", "DEBUG: Dlg (0, -1) trigger expanded value: root=/opt/app"},
        {"an empty DebugExpression warns", makeTrigger(TRIGGER_DEBUG_EXPRESSION, "", ""), nullptr, nullptr, "",
         "WARNING: Empty debug trigger in dialog (0, -1)"},
        {"an unknown type warns", makeTrigger(9, "TARGET", "x"), "TARGET", "/opt/app/lib", "",
         "WARNING: Unrecognized trigger type (9)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        engine.currentDlg = 0;
        engine.SetVar("ROOT", "/opt/app");
        engine.SetVarExt("LIBDIR", "changed by hand", "$ROOT/lib", 0, nullptr);
        engine.SetVar("TARGET", "/opt/app/lib");
        engine.SetVarExt("CHECKED", "old", nullptr, 0, "none");
        TeskUtils::Table<TRIGGER_INFO, 16> list;
        list.append(row.trigger);
        engine.evaluateTriggerList(&ui, TRIGGER_ON_SET, list);
        if (row.variable) {
            EXPECT_EQ(engine.var(row.variable), row.value);
        }
        EXPECT_EQ(ui.only({"ManageWindow", "UpdateSubDlg"}), row.call);
        if (row.logLine) {
            EXPECT_TRUE(engine.logged(row.logLine)) << engine.log.text();
        }
        if (row.trigger.type == TRIGGER_RUN_ACTIONS) {
            EXPECT_EQ(engine.sequences, std::vector<std::string>{"AfterCopy"});
        }
    }
}

TEST(Triggers, RecalculationAndMemoryRelease)
{
    TestEngine engine;
    ScriptedUI ui;
    engine.SetVar("ROOT", "/opt");
    engine.SetVarExt("BIN", "", "$ROOT/bin", VARFLAG_RECALCULATE, nullptr);
    engine.SetVarExt("DOC", "", "$ROOT/doc", VARFLAG_RECALCULATE, nullptr);
    engine.SetVar("ROOT", "/opt");
    ASSERT_EQ(engine.var("BIN"), "/opt/bin");
    // Changing a record by hand recalculates everything else; a VarRecalculation of BIN
    // recalculates all but BIN.
    engine.variables[engine.GetVar("ROOT", nullptr, 0)].value[1] = 'X';
    TeskUtils::Table<TRIGGER_INFO, 16> list;
    list.append(makeTrigger(TRIGGER_VAR_RECALCULATION, "BIN", ""));
    engine.evaluateTriggerList(&ui, TRIGGER_ON_SET, list);
    EXPECT_EQ(engine.var("DOC"), "/Xpt/doc");
    EXPECT_EQ(engine.var("BIN"), "/opt/bin");

    quilbtest::putTemplateInCabinet(engine, "<QuilbGroupInstallation/>");
    list.freeData();
    list.append(makeTrigger(TRIGGER_FREE_MEMORY, "", ""));
    engine.evaluateTriggerList(&ui, TRIGGER_ON_SET, list);
    EXPECT_EQ(engine.cabinetData, nullptr);
    EXPECT_EQ(engine.cabinetFiles.count, 0);
}

TEST(Triggers, OnlyThoseOfTheMaskRunInOrder)
{
    TestEngine engine;
    ScriptedUI ui;
    engine.SetVar("T", "");
    TeskUtils::Table<TRIGGER_INFO, 16> list;
    list.append(makeTrigger(TRIGGER_VAR_CHANGE, "T", "[T]a", "", TRIGGER_ON_SET | TRIGGER_ON_END));
    list.append(makeTrigger(TRIGGER_VAR_CHANGE, "T", "[T]b", "", TRIGGER_ON_DYNAMIC));
    list.append(makeTrigger(TRIGGER_VAR_CHANGE, "T", "[T]c", "", TRIGGER_ON_END));
    list.append(makeTrigger(TRIGGER_VAR_CHANGE, "T", "[T]d", "", TRIGGER_ON_BUTTON));
    const struct {
        int mask;
        const char* expected;
    } rows[] = {
        {TRIGGER_ON_SET, "a"}, {TRIGGER_ON_END, "ac"}, {TRIGGER_ON_DYNAMIC, "b"},
        {TRIGGER_ON_BUTTON, "d"}, {TRIGGER_ON_DLG_EVAL, ""}, {TRIGGER_ON_ALL, "abcd"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mask);
        engine.SetVar("T", "");
        engine.evaluateTriggerList(&ui, row.mask, list);
        EXPECT_EQ(engine.var("T"), row.expected);
    }
}

TEST(Triggers, UIActionWithoutFrontEndOrAction)
{
    TestEngine engine;
    ScriptedUI ui;
    engine.performUIAction(nullptr, "show");
    engine.performUIAction(&ui, "");
    engine.performUIAction(&ui, nullptr);
    EXPECT_EQ(engine.logLines(), (std::vector<std::string>{
                                     "WARNING: Attempting UI Action when no UI handle is available",
                                     "WARNING: Attempting UI Action with no action specified",
                                     "WARNING: Attempting UI Action with no action specified",
                                 }));
    EXPECT_TRUE(ui.calls.empty());
}

TEST(Triggers, DialogNeedsUpdateFindsWhatDependsOnAVariable)
{
    const char* xml = R"(<QuilbGroupInstallation>
  <ProductDesc><Fullname>Updates</Fullname></ProductDesc>
  <DefValues/>
  <Dialogs>
    <Plain>
      <Field Type="EditBox" Condition="[SHOW_NAME]==1" Enable="[EDITABLE]==1">OWNER</Field>
      <Field Type="Directory">TARGET</Field>
      <Text x="1" y="1" Condition="[INTRO]==1">Hello</Text>
      <Button x="1" y="1" Name="Next" Condition="[ACCEPTED]==1">Next</Button>
      <Trigger EvaluateOn="Dynamic" Type="VarChange" Variable="X" Value="1" Condition="[MODE]==2" UpdateList="Controls;Buttons"/>
    </Plain>
    <Validated>
      <Field Type="Directory" ValidationVariable="DIR_OK">TARGET</Field>
      <Text x="1" y="1" Condition="[DIR_OK]==0">Not a directory</Text>
    </Validated>
    <Frame Special="HasSubDialogs">
      <TaskList>
        <Step EnableCondition="[FULL]==1"/>
      </TaskList>
      <SubDialogs>
        <Step><Field Type="EditBox" Condition="[SUBVAR]==1">S</Field></Step>
      </SubDialogs>
    </Frame>
  </Dialogs>
</QuilbGroupInstallation>)";
    TestEngine engine;
    ScriptedUI ui;
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, xml), 0);
    engine.SetVar("ROOT", "/opt");
    engine.SetVarExt("TARGET", "/opt/app", "$ROOT/app", VARFLAG_RECALCULATE, nullptr);

    const struct {
        const char* name;
        int dlg, sub;
        int mask;
    } rows[] = {
        {"SHOW_NAME", 0, -1, UPDATE_FIELDS},
        {"EDITABLE", 0, -1, UPDATE_FIELDS},
        {"ROOT", 0, -1, UPDATE_FIELDS},  // the field's variable follows $ROOT
        {"INTRO", 0, -1, UPDATE_CONTROLS},
        {"ACCEPTED", 0, -1, UPDATE_BUTTONS},
        {"MODE", 0, -1, UPDATE_CONTROLS | UPDATE_BUTTONS},
        {"UNRELATED", 0, -1, 0},
        // A control that tests a validation variable is refreshed on every change.
        {"UNRELATED", 1, -1, UPDATE_CONTROLS},
        {"FULL", 2, -1, UPDATE_TASKS},
        {"FULL", 2, 0, UPDATE_TASKS},
        {"SUBVAR", 2, 0, UPDATE_FIELDS},
        {"SUBVAR", 2, -1, 0},
        {"SUBVAR", 2, 5, 0},  // a bad sub-dialog index means the dialog itself
        {"SHOW_NAME", 9, -1, 0},
        {nullptr, 0, -1, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.name ? row.name : "(null)") + " in " + std::to_string(row.dlg) + "," +
                     std::to_string(row.sub));
        EXPECT_EQ(engine.DialogNeedsUpdate(row.name, row.dlg, row.sub), row.mask);
    }
}
