// What a front end's controls reach: button actions, triggers by type and mask, the test of
// which parts of a dialog depend on a variable, and the labels of the task list.
#include <gtest/gtest.h>

#include "installer/navigation/scripted_front_end.h"

using quilbtest::ScriptedUI;
using quilbtest::startOnWelcome;
using quilbtest::TestEngine;

namespace {

TRIGGER_INFO trigger(int type, const char* variable, const std::string& value, const char* condition = "")
{
    TRIGGER_INFO t;
    t.type = type;
    t.evaluation = TRIGGER_ON_SET;
    TeskUtils::copyBounded(t.variable, variable, sizeof(t.variable));
    TeskUtils::copyBounded(t.value, value.c_str(), sizeof(t.value));
    TeskUtils::copyBounded(t.condition, condition, sizeof(t.condition));
    return t;
}

} // namespace

TEST(Controls, ButtonActionWordsRunInOrder)
{
    // confirm: the answer to a cancel
    const struct
    {
        const char* action;
        bool confirm;
        const char* x;
        int cancelled;
        std::vector<std::string> sequences;
        const char* trace;
    } rows[] = {
        { "Cancel;[X]='1'", true, "0", 1, {}, "" },
        { "[X]='1';Cancel", true, "1", 1, {}, "" },
        { "cancel", false, "0", 0, {}, "" },
        { "Run:Docs", false, "0", 0, { "Docs" }, "" },
        { "Run:Docs;[X]='3'", false, "3", 0, { "Docs;[X]='3'" }, "" }, // the rest of the action is the name
        { "Run:", false, "0", 0, {}, "" },
        { "EvalTriggers", false, "0", 0, {}, "|W!" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.action);
        TestEngine engine;
        ScriptedUI ui;
        startOnWelcome(engine, ui);
        engine.SetVar("X", "0");
        ui.confirmCancel = row.confirm;
        engine.PerformButtonAction(&ui, row.action);
        EXPECT_EQ(engine.value("X"), row.x);
        EXPECT_EQ(engine.GetStateCancel(), row.cancelled);
        EXPECT_EQ(engine.sequences, row.sequences);
        EXPECT_EQ(engine.value("TRACE"), row.trace);
        EXPECT_EQ(engine.logged("WARNING: Empty action tag in a button!"), std::string(row.action) == "Run:");
    }
}

TEST(Controls, TriggersDoTheirWork)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("present"), "x"));
    const struct
    {
        const char* name;
        TRIGGER_INFO trigger;
        const char* variable;
        std::string value;
        const char* calls;
        const char* logLine;
    } rows[] = {
        { "VarChange expands", trigger(TRIGGER_VAR_CHANGE, "T", "[ROOT]/bin"), "T", "/opt/bin", "", nullptr },
        { "a false condition skips", trigger(TRIGGER_VAR_CHANGE, "T", "x", "0"), "T", "t", "", nullptr },
        { "VarReset recomputes", trigger(TRIGGER_VAR_RESET, "LIB", ""), "LIB", "/opt/lib", "", nullptr },
        { "VarReset of nothing", trigger(TRIGGER_VAR_RESET, "NOPE", ""), nullptr, "", "",
            "WARNING: Trying to reset non-existent variable: NOPE" },
        { "FileCheck finds", trigger(TRIGGER_FILE_CHECK, "F", dir.file("present")), "F", dir.file("present"),
            "", nullptr },
        { "FileCheck misses", trigger(TRIGGER_FILE_CHECK, "F", dir.file("gone")), "F", "none", "", nullptr },
        { "UI hide", trigger(TRIGGER_UI, "", "hide"), nullptr, "", "ManageWindow(2)", nullptr },
        { "UI update", trigger(TRIGGER_UI, "", "update"), nullptr, "", "UpdateSubDlg(0,-1,31,1)", nullptr },
        { "UI unknown", trigger(TRIGGER_UI, "", "wobble"), nullptr, "", "",
            "WARNING: Unrecognized UI Action: wobble" },
        { "DebugExpression", trigger(TRIGGER_DEBUG_EXPRESSION, "", "at [ROOT]"), nullptr, "", "",
            "DEBUG: Dlg (0, -1) trigger expanded value: at /opt" },
        { "empty DebugExpression", trigger(TRIGGER_DEBUG_EXPRESSION, "", ""), nullptr, "", "",
            "WARNING: Empty debug trigger in dialog (0, -1)" },
        { "unknown type", trigger(9, "T", "x"), "T", "t", "", "WARNING: Unrecognized trigger type (9)" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        engine.currentDlg = 0;
        engine.SetVar("ROOT", "/opt");
        engine.SetVar("T", "t");
        engine.SetVarExt("LIB", "by hand", "$ROOT/lib", 0, nullptr);
        engine.SetVarExt("F", "old", nullptr, 0, "none");
        TeskUtils::Table<TRIGGER_INFO, 16> list;
        list.append(row.trigger);
        engine.evaluateTriggerList(&ui, TRIGGER_ON_SET, list);
        EXPECT_EQ(row.variable ? engine.value(row.variable) : "", row.value);
        EXPECT_EQ(ui.only({ "ManageWindow", "UpdateSubDlg" }), row.calls);
        EXPECT_TRUE(!row.logLine || engine.logged(row.logLine)) << engine.log.text();
    }

    // RunActions runs a sequence; FreeMemory lets go of the package.
    TestEngine engine;
    quilbtest::putTemplateInCabinet(engine, "<x/>");
    TeskUtils::Table<TRIGGER_INFO, 16> list;
    list.append(trigger(TRIGGER_RUN_ACTIONS, "", "AfterCopy"));
    list.append(trigger(TRIGGER_FREE_MEMORY, "", ""));
    engine.evaluateTriggerList(nullptr, TRIGGER_ON_ALL, list);
    EXPECT_EQ(engine.sequences, std::vector<std::string> { "AfterCopy" });
    EXPECT_EQ(engine.cabinetData, nullptr);
}

TEST(Controls, DialogNeedsUpdateAndTaskLabels)
{
    TestEngine engine;
    ScriptedUI ui;
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, quilbtest::testData("navigation/updates.xml")), 0);
    engine.SetVar("ROOT", "/opt");
    engine.SetVarExt("TARGET", "/opt/app", "$ROOT/app", VARFLAG_RECALCULATE, nullptr);
    const struct
    {
        const char* name;
        int dlg, sub, mask;
    } rows[] = {
        { "SHOWN", 0, -1, UPDATE_FIELDS },
        { "EDITABLE", 0, -1, UPDATE_FIELDS },
        { "ROOT", 0, -1, UPDATE_FIELDS },
        { "INTRO", 0, -1, UPDATE_CONTROLS },
        { "ACCEPTED", 0, -1, UPDATE_BUTTONS },
        { "MODE", 0, -1, UPDATE_CONTROLS | UPDATE_BUTTONS },
        { "OTHER", 0, -1, 0 },
        { "OTHER", 1, -1, UPDATE_CONTROLS }, // a control tests a validation variable
        { "FULL", 2, 0, UPDATE_TASKS },
        { "SUB", 2, 0, UPDATE_FIELDS },
        { "SUB", 2, 5, 0 },
        { "SHOWN", 9, -1, 0 },
        { nullptr, 0, -1, 0 },
    };
    for (const auto& row : rows)
        EXPECT_EQ(engine.DialogNeedsUpdate(row.name, row.dlg, row.sub), row.mask)
            << (row.name ? row.name : "null") << row.dlg;

    const struct
    {
        int task, status;
        const char* gate;
        const char* call;
        int stored;
    } tasks[] = {
        { 0, 0, "1", "SetTask(Full,todo,0)", 0 },
        { 0, 1, "1", "SetTask(Full,cur,1)", 1 },
        { 0, 2, "1", "SetTask(Full,fin,2)", 2 },
        { 0, 3, "1", "SetTask(Full,fin,3)", 3 },
        { 0, 4, "1", "SetTask(Full,todo,4)", 3 },
        { 0, 7, "1", "SetTask(Full,,7)", 7 },
        { 1, 2, "1", "SetTask(Bare,only,2)", 2 },
        { 1, 0, "1", "SetTask(Bare,only,0)", 0 },
        { 2, 0, "0", "SetTask(Gated,g-todo,4)", 0 },
        { 2, 0, "1", "SetTask(Gated,g-todo,0)", 0 },
        { 5, 1, "1", "", -1 },
    };
    engine.SetVar("FULL", "1");
    for (const auto& row : tasks) {
        ui.calls.clear();
        engine.SetVar("GATE", row.gate);
        EXPECT_EQ(engine.UpdateTaskListItem(&ui, 2, row.task, static_cast<TASKSTATUS>(row.status)), 0);
        EXPECT_EQ(ui.only({ "SetTask(" }), row.call);
        EXPECT_TRUE(row.stored < 0 || engine.GetTaskInfo(2, row.task)->status == row.stored) << row.call;
    }
    EXPECT_EQ(engine.UpdateTaskListItem(nullptr, 2, 0, TASK_CURRENT), -1);

    // The tasks ahead that have an EnableCondition are sent: inactive while it is false,
    // with their own status when it holds.
    engine.EvSetDlg(2, &ui);
    engine.EvSetSubDlg(2, 1, &ui);
    ui.calls.clear();
    engine.SetVar("GATE", "0");
    engine.UpdateTaskList(&ui);
    engine.SetVar("GATE", "1");
    engine.UpdateTaskList(&ui);
    EXPECT_EQ(ui.only({ "SetTask(" }), "SetTask(Gated,g-todo,4) SetTask(Gated,g-todo,0)");
}
