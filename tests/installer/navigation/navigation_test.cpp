// Walking the wizard forward and back: which dialogs a front end is asked to build, where
// the wizard stands afterwards, and what it tells the front end on the way.
#include <gtest/gtest.h>

#include "installer/navigation/scripted_front_end.h"
#include "support/paths.h"

using quilbtest::ScriptedUI;
using quilbtest::TestEngine;

namespace {

std::string wizardXml()
{
    return quilbtest::readFile(quilbtest::dataDir() + "/installer/navigation/wizard.xml");
}

// An engine on the test wizard, standing on its first dialog, with the given variables.
void startOnWelcome(TestEngine& engine, ScriptedUI& ui, const std::map<std::string, std::string>& vars)
{
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, wizardXml()), 0);
    for (const auto& var : vars)
        engine.SetVar(var.first.c_str(), var.second.c_str());
    engine.EvSetDlg(engine.GetCurDlg(), &ui);
    ui.calls.clear();
}

void walk(TestEngine& engine, ScriptedUI& ui, const std::vector<int>& shifts)
{
    for (int shift : shifts)
        engine.PerformButtonDlgShift(&ui, shift);
}

} // namespace

TEST(Navigation, WalksForwardAndBackPassingOverWhatItShould)
{
    struct Row {
        const char* name;
        std::map<std::string, std::string> vars;
        std::vector<int> shifts;
        const char* path;  // the dialogs built, in order
        int dlg, sub;
        int finish, error;
        const char* logLine;  // a line the walk must log, or null
    };
    const Row rows[] = {
        {"a dialog whose condition is false is passed over", {}, {1}, "SetDlg(2)", 2, -1, 0, 0, nullptr},
        {"a dialog whose condition is true is shown", {{"SHOW_EXTRA", "1"}}, {1}, "SetDlg(1)", 1, -1, 0, 0, nullptr},
        {"a shift of two builds the dialog it passes", {{"SHOW_EXTRA", "1"}}, {2}, "SetDlg(1) SetDlg(2)", 2, -1, 0, 0,
         nullptr},
        {"a frame is entered on its first sub-dialog", {}, {1, 1}, "SetDlg(2) SetDlg(3) SetSubDlg(3,0)", 3, 0, 0, 0,
         nullptr},
        {"a sub-dialog whose condition is false is passed over", {}, {1, 1, 1},
         "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,2)", 3, 2, 0, 0, nullptr},
        {"a sub-dialog whose condition is true is shown", {{"CUSTOMIZE", "1"}}, {1, 1, 1},
         "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,1)", 3, 1, 0, 0, nullptr},
        {"an AutoNext dialog whose condition fails stands", {}, {1, 1, 1, 1},
         "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,2) SetDlg(4)", 4, -1, 0, 0, nullptr},
        {"an AutoNext dialog whose condition holds goes on by itself", {{"AUTO_OK", "1"}}, {1, 1, 1, 1},
         "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,2) SetDlg(4) SetDlg(5)", 5, -1, 0, 0, nullptr},
        {"leaving a Finish dialog ends the wizard", {{"AUTO_OK", "1"}}, {1, 1, 1, 1, 1},
         "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,2) SetDlg(4) SetDlg(5)", 5, -1, 1, 0, nullptr},
        {"nothing left to go to is a bad shift", {{"END_OK", "0"}}, {1, 1, 1, 1, 1},
         "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,2) SetDlg(4)", 4, -1, 1, 1,
         "ERROR: Bad dialog next shifting. Current dialogs: (4, -1) - Next dialogs: (6, 0)"},
        {"back passes over a dialog whose condition is false", {}, {1, -1}, "SetDlg(2) SetDlg(0)", 0, -1, 0, 0,
         nullptr},
        {"back into a frame lands on its last sub-dialog", {}, {1, 1, 1, 1, -1},
         "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,2) SetDlg(4) SetDlg(3) SetSubDlg(3,2)", 3, 2, 0, 0, nullptr},
        {"back within a frame passes over a sub-dialog whose condition is false", {}, {1, 1, 1, -1},
         "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,2) SetSubDlg(3,0)", 3, 0, 0, 0, nullptr},
        {"back out of a frame's first sub-dialog", {}, {1, 1, -1}, "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetDlg(2)", 2,
         -1, 0, 0, nullptr},
        {"back by two", {{"SHOW_EXTRA", "1"}}, {1, 1, -2}, "SetDlg(1) SetDlg(2) SetDlg(0)", 0, -1, 0, 0, nullptr},
        {"back from the first dialog is a bad shift", {}, {-1}, "", 0, -1, 1, 1,
         "ERROR: Bad dialog back shifting. Current dialog: 0, current subdialog: -1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        startOnWelcome(engine, ui, row.vars);
        walk(engine, ui, row.shifts);
        EXPECT_EQ(ui.only({"SetDlg(", "SetSubDlg("}), row.path);
        EXPECT_EQ(engine.GetCurDlg(), row.dlg);
        EXPECT_EQ(engine.GetCurSubDlg(), row.sub);
        EXPECT_EQ(engine.GetStateFinish(), row.finish);
        EXPECT_EQ(engine.GetStateError(), row.error);
        if (row.logLine) {
            EXPECT_TRUE(engine.logged(row.logLine)) << engine.log.text();
        }
    }
}

TEST(Navigation, EnteringTellsTheFrontEndInOrderAndRunsTriggersAroundIt)
{
    TestEngine engine;
    ScriptedUI ui;
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, wizardXml()), 0);
    EXPECT_EQ(engine.GetCurDlg(), 0);

    // The first entry finds dialog 0 current already: it is left (End triggers, here an
    // "iconize") before it is entered (Set triggers, here a "show").
    EXPECT_EQ(engine.EvSetDlg(0, &ui), 0);
    const std::vector<std::string> first = {
        "RetainSubCtrl(Banner)", "NEndDialog(0)", "ClearTasks", "ClearSubCtrls", "ManageWindow(3)",
        "ManageWindow(1)",       "NBeginDialog(0)", "SetDlg(0)", "ShowUIElements(0,-1,1)",
    };
    EXPECT_EQ(ui.calls, first);
    EXPECT_EQ(engine.var("TRACE"), "|W-|W+");

    // Into the frame: the dialog, then its first sub-dialog, each shown once, and the
    // first task marked current before the sub-dialog is built.
    engine.EvNext(&ui, 1);
    ui.calls.clear();
    engine.log.Clear();
    engine.EvNext(&ui, 1);
    const std::vector<std::string> frame = {
        "NEndDialog(2)",    "ClearTasks",       "ClearSubCtrls",
        "NBeginDialog(3)",  "SetDlg(3)",        "ShowUIElements(3,-1,1)",
        "NEndSubDialog(3,-1)", "SetTask(Prepare,Preparing,1)", "NBeginSubDialog(3,0)",
        "SetSubDlg(3,0)",   "ShowUIElements(3,0,1)",
    };
    EXPECT_EQ(ui.calls, frame);
    EXPECT_TRUE(engine.logged("Setting dialog \"Frame\" (3, -1)"));
    EXPECT_TRUE(engine.logged("Setting dialog \"Prepare\" (3, 0)"));
    // Entering the first sub-dialog leaves the frame itself once more.
    EXPECT_EQ(engine.var("TRACE"), "|W-|W+|W-|L+|L-|F+|F-|P+");

    // A shift of two runs the triggers of the sub-dialog it passes.
    engine.SetVar("CUSTOMIZE", "1");
    engine.EvNext(&ui, 2);
    EXPECT_EQ(engine.var("TRACE"), "|W-|W+|W-|L+|L-|F+|F-|P+|P-|O+|O-|C+");
}

TEST(Navigation, TasksFollowTheWalk)
{
    struct Row {
        const char* name;
        std::map<std::string, std::string> vars;
        std::vector<int> shifts;
        int errorBeforeLast;  // state error set before the last shift
        const char* tasks;
    };
    const Row rows[] = {
        {"a left sub-dialog is finished well", {}, {1, 1, 1}, 0,
         "SetTask(Prepare,Preparing,1) SetTask(Prepare,Prepared,2) SetTask(Copy,Copying,1)"},
        {"with the error state it is finished badly", {}, {1, 1, 1}, 1,
         "SetTask(Prepare,Preparing,1) SetTask(Prepare,Prepared,3) SetTask(Copy,Copying,1)"},
        {"going back sets the crossed tasks back, a disabled one as inactive", {}, {1, 1, 1, -1}, 0,
         "SetTask(Prepare,Preparing,1) SetTask(Prepare,Prepared,2) SetTask(Copy,Copying,1) "
         "SetTask(Copy,Copying,0) SetTask(Options,Options,4) SetTask(Prepare,Preparing,1)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        startOnWelcome(engine, ui, row.vars);
        walk(engine, ui, std::vector<int>(row.shifts.begin(), row.shifts.end() - 1));
        engine.stateError = row.errorBeforeLast;
        walk(engine, ui, {row.shifts.back()});
        EXPECT_EQ(ui.only({"SetTask("}), row.tasks);
    }
}

TEST(Navigation, ConditionObjectsHoldTheWizard)
{
    struct Row {
        const char* name;
        int dialog;                 // where the condition object sits
        bool weak;
        std::vector<bool> answers;  // of its Eval, in order
        int shift;
        int result;
        int dlg;                    // where the wizard stands afterwards
        const char* path;
    };
    // The wizard stands on the Licence (2) when EvNext is called.
    const Row rows[] = {
        {"a failing object on the current dialog holds it after entering it again", 2, false, {false, false}, 1, -1,
         2, "SetDlg(2)"},
        {"it lets go when the second question passes", 2, false, {false, true}, 1, 0, 3,
         "SetDlg(2) SetDlg(3) SetSubDlg(3,0)"},
        {"a weak condition doesn't hold", 2, true, {false}, 1, 0, 3, "SetDlg(3) SetSubDlg(3,0)"},
        {"a failing object on a dialog entered stops the walk there", 4, false, {false}, 3, 0, 4,
         "SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,2) SetDlg(4)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        startOnWelcome(engine, ui, {});
        engine.EvNext(&ui, 1);
        if (row.weak)
            engine.dialogs[row.dialog].flags |= DLG_WEAK_CONDITION;
        engine.dialogs[row.dialog].setConditionObject(new quilbtest::ScriptedCondition(row.answers), nullptr);
        ui.calls.clear();
        EXPECT_EQ(engine.EvNext(&ui, row.shift), row.result);
        EXPECT_EQ(engine.GetCurDlg(), row.dlg);
        EXPECT_EQ(ui.only({"SetDlg(", "SetSubDlg("}), row.path);
    }
}

TEST(Navigation, ConditionObjectThatHoldsGivesItsShiftBack)
{
    TestEngine engine;
    ScriptedUI ui;
    startOnWelcome(engine, ui, {});
    // An object that passes on the Licence: one shift from the Welcome goes through it
    // into the frame.
    engine.dialogs[2].setConditionObject(new quilbtest::ScriptedCondition({true}), nullptr);
    engine.EvNext(&ui, 1);
    EXPECT_EQ(ui.only({"SetDlg(", "SetSubDlg("}), "SetDlg(2) SetDlg(3) SetSubDlg(3,0)");
    EXPECT_EQ(engine.GetCurDlg(), 3);
}

TEST(Navigation, DialogConditionEvaluationForTheFrontEnd)
{
    TestEngine engine;
    ScriptedUI ui;
    startOnWelcome(engine, ui, {});
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 2);

    auto* condition = new quilbtest::ScriptedCondition({false, true});
    engine.dialogs[0].setConditionObject(condition, nullptr);
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 0);
    EXPECT_EQ(engine.var("DLG_CONDITION"), "0");
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 1);
    EXPECT_EQ(engine.var("DLG_CONDITION"), "1");

    // Entering a dialog puts DLG_CONDITION back to "0".
    engine.EvNext(&ui, 1);
    EXPECT_EQ(engine.var("DLG_CONDITION"), "0");

    // Inside a frame the sub-dialog is asked.
    engine.EvNext(&ui, 1);
    engine.dialogs[3].subDialogs[0].setConditionObject(new quilbtest::ScriptedCondition({true}), nullptr);
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 1);
}

TEST(Navigation, EventsWithoutAFrontEndOrOutOfRange)
{
    TestEngine engine;
    ScriptedUI ui;
    startOnWelcome(engine, ui, {});
    EXPECT_EQ(engine.EvNext(nullptr, 1), -1);
    EXPECT_EQ(engine.EvBack(nullptr, 1), -1);
    EXPECT_EQ(engine.EvCancel(nullptr), -1);
    EXPECT_EQ(engine.EvSetDlg(0, nullptr), -1);
    EXPECT_EQ(engine.EvSetDlg(6, &ui), -1);
    EXPECT_EQ(engine.EvSetSubDlg(3, 3, &ui), -1);
    EXPECT_EQ(engine.EvSetSubDlg(0, 0, &ui), -1);
    EXPECT_EQ(engine.EvNext(&ui, 0), 0);
    EXPECT_EQ(engine.PerformButtonDlgShift(&ui, 0), 0);
    EXPECT_TRUE(ui.calls.empty());
    EXPECT_EQ(engine.GetCurDlg(), 0);
}
