// Walking the wizard forward and back: which dialogs a front end is asked to build, where
// the wizard stands afterwards, what it is told on the way, and the task list.
#include <gtest/gtest.h>

#include "installer/navigation/scripted_front_end.h"

using quilbtest::ScriptedUI;
using quilbtest::startOnWelcome;
using quilbtest::TestEngine;

TEST(Navigation, WalksForwardAndBack)
{
    // path: the (sub-)dialogs built, in order
    const std::string kToCopy = "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,2)";
    const struct
    {
        const char* name;
        std::map<std::string, std::string> vars;
        std::vector<int> shifts;
        std::string path;
        int dlg, sub, finish, error;
        const char* logLine;
    } rows[] = {
        { "a false condition passes over a dialog", {}, { 1 }, "SetDlg(2)", 2, -1, 0, 0, nullptr },
        { "a true one shows it", { { "SHOW_EXTRA", "1" } }, { 1 }, "SetDlg(1)", 1, -1, 0, 0, nullptr },
        { "a shift of two builds the dialog it passes", { { "SHOW_EXTRA", "1" } }, { 2 },
            "SetDlg(1) SetDlg(2)", 2, -1, 0, 0, nullptr },
        { "a frame is entered on its first sub-dialog", {}, { 1, 1 }, "SetDlg(2) SetDlg(3) SetSubDlg(3,0)", 3,
            0, 0, 0, nullptr },
        { "a false sub-dialog is passed over", {}, { 1, 1, 1 }, kToCopy, 3, 2, 0, 0, nullptr },
        { "a true one is shown", { { "CUSTOMIZE", "1" } }, { 1, 1, 1 },
            "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,1)", 3, 1, 0, 0, nullptr },
        { "AutoNext with a false condition stands", {}, { 1, 1, 1, 1 }, kToCopy + " SetDlg(4)", 4, -1, 0, 0,
            nullptr },
        { "AutoNext with a true one goes on", { { "AUTO_OK", "1" } }, { 1, 1, 1, 1 },
            kToCopy + " SetDlg(4) SetDlg(5)", 5, -1, 0, 0, nullptr },
        { "leaving Finish ends the wizard", { { "AUTO_OK", "1" } }, { 1, 1, 1, 1, 1 },
            kToCopy + " SetDlg(4) SetDlg(5)", 5, -1, 1, 0, nullptr },
        { "nothing left to go to", { { "END_OK", "0" } }, { 1, 1, 1, 1, 1 }, kToCopy + " SetDlg(4)", 4, -1, 1,
            1, "ERROR: Bad dialog next shifting. Current dialogs: (4, -1) - Next dialogs: (6, 0)" },
        { "back passes over a false dialog", {}, { 1, -1 }, "SetDlg(2) SetDlg(0)", 0, -1, 0, 0, nullptr },
        { "back into a frame lands on its last sub-dialog", {}, { 1, 1, 1, 1, -1 },
            kToCopy + " SetDlg(4) SetDlg(3) SetSubDlg(3,2)", 3, 2, 0, 0, nullptr },
        { "back within a frame passes over a false sub-dialog", {}, { 1, 1, 1, -1 },
            kToCopy + " SetSubDlg(3,0)", 3, 0, 0, 0, nullptr },
        { "back out of a frame", {}, { 1, 1, -1 }, "SetDlg(2) SetDlg(3) SetSubDlg(3,0) SetDlg(2)", 2, -1, 0,
            0, nullptr },
        { "back by two", { { "SHOW_EXTRA", "1" } }, { 1, 1, -2 }, "SetDlg(1) SetDlg(2) SetDlg(0)", 0, -1, 0,
            0, nullptr },
        { "back from the first dialog", {}, { -1 }, "", 0, -1, 1, 1,
            "ERROR: Bad dialog back shifting. Current dialog: 0, current subdialog: -1" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        startOnWelcome(engine, ui, row.vars);
        for (int shift : row.shifts)
            engine.PerformButtonDlgShift(&ui, shift);
        EXPECT_EQ(ui.only({ "SetDlg(", "SetSubDlg(" }), row.path);
        EXPECT_EQ(std::make_tuple(engine.GetCurDlg(), engine.GetCurSubDlg(), engine.GetStateFinish(),
                      engine.GetStateError()),
            std::make_tuple(row.dlg, row.sub, row.finish, row.error));
        EXPECT_TRUE(!row.logLine || engine.logged(row.logLine)) << engine.log.text();
    }
}

TEST(Navigation, EnteringTellsTheFrontEndInOrder)
{
    TestEngine engine;
    ScriptedUI ui;
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, quilbtest::testData("navigation/wizard.xml")), 0);
    // The first entry finds dialog 0 current: it is left (its End triggers: "iconize")
    // before it is entered (its Set triggers: "show").
    EXPECT_EQ(engine.EvSetDlg(0, &ui), 0);
    EXPECT_EQ(ui.only({ "" }),
        "RetainSubCtrl(Banner) NEndDialog(0) ClearTasks ClearSubCtrls ManageWindow(3) ManageWindow(1) "
        "NBeginDialog(0) SetDlg(0) ShowUIElements(0,-1,1)");
    // A frame: the dialog, then its first sub-dialog with its task current, each shown once.
    engine.EvNext(&ui, 1);
    ui.calls.clear();
    engine.EvNext(&ui, 1);
    EXPECT_EQ(ui.only({ "" }),
        "NEndDialog(2) ClearTasks ClearSubCtrls NBeginDialog(3) SetDlg(3) ShowUIElements(3,-1,1) "
        "NEndSubDialog(3,-1) SetTask(Prepare,Preparing,1) NBeginSubDialog(3,0) SetSubDlg(3,0) "
        "ShowUIElements(3,0,1)");
    EXPECT_TRUE(engine.logged("Setting dialog \"Frame\" (3, -1)\r\nSetting dialog \"Prepare\" (3, 0)"))
        << engine.log.text();
    // A shift of two runs the triggers of the sub-dialog it passes; the tasks left are
    // finished (badly after an error), and going back sets them back.
    engine.SetVar("CUSTOMIZE", "1");
    ui.calls.clear();
    engine.EvNext(&ui, 2);
    EXPECT_EQ(engine.value("TRACE"), "|W-|W+|W-|L+|L-|F+|F-|P+|P-|O+|O-|C+");
    engine.SetVar("CUSTOMIZE", "0");
    engine.stateError = 1;
    engine.EvBack(&ui, 1);
    engine.EvNext(&ui, 1);
    EXPECT_EQ(ui.only({ "SetTask(" }),
        "SetTask(Prepare,Prepared,2) SetTask(Options,Choosing options,1) SetTask(Options,Choosing options,2) "
        "SetTask(Copy,Copying,1) SetTask(Copy,Copying,0) SetTask(Options,Options,4) "
        "SetTask(Prepare,Preparing,1) SetTask(Prepare,Prepared,3) SetTask(Copy,Copying,1)");

    // A Busy dialog is shown in state 5 and runs its DlgEval triggers, then is idle again;
    // with its AutoCondition false it stands.
    ui.exchange = &engine;
    ui.calls.clear();
    EXPECT_EQ(engine.EvNext(&ui, 1), 0);
    EXPECT_EQ(ui.only({ "UpdateValidation", "ShowUIElements", "ManageWindow" }),
        "UpdateValidation(4,-1,5) ShowUIElements(4,-1,1) ManageWindow(4) UpdateValidation(4,-1,0)");
    EXPECT_EQ(std::make_pair(engine.GetCurDlg(), engine.GetStateSettings()), std::make_pair(4, SETTING_IDLE));
}

TEST(Navigation, ConditionObjectsHoldTheWizard)
{
    // dialog: where the object sits; the wizard stands on the Licence (2)
    const struct
    {
        const char* name;
        int dialog;
        bool weak;
        std::vector<bool> answers;
        int shift, result, dlg;
        const char* path;
    } rows[] = {
        { "a failing object holds its dialog after entering it again", 2, false, { false }, 1, -1, 2,
            "SetDlg(2)" },
        { "it lets go when the second question passes", 2, false, { false, true }, 1, 0, 3,
            "SetDlg(2) SetDlg(3) SetSubDlg(3,0)" },
        { "a weak one doesn't hold", 2, true, { false }, 1, 0, 3, "SetDlg(3) SetSubDlg(3,0)" },
        { "a failing object on a dialog entered stops the walk", 4, false, { false }, 3, 0, 4,
            "SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,2) SetDlg(4)" },
        { "a passing one gives its shift back", 4, false, { true }, 3, 0, 5,
            "SetDlg(3) SetSubDlg(3,0) SetSubDlg(3,2) SetDlg(4) SetDlg(5)" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        startOnWelcome(engine, ui);
        engine.EvNext(&ui, 1);
        engine.dialogs[row.dialog].flags |= row.weak ? DLG_WEAK_CONDITION : 0;
        engine.dialogs[row.dialog].setConditionObject(new quilbtest::ScriptedCondition(row.answers), nullptr);
        ui.calls.clear();
        EXPECT_EQ(engine.EvNext(&ui, row.shift), row.result);
        EXPECT_EQ(engine.GetCurDlg(), row.dlg);
        EXPECT_EQ(ui.only({ "SetDlg(", "SetSubDlg(" }), row.path);
    }

    // What a polling front end asks: 2 without an object, else its answer, also in the
    // DlgCondition variable, which entering a dialog sets back to "0".
    TestEngine engine;
    ScriptedUI ui;
    startOnWelcome(engine, ui);
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 2);
    engine.dialogs[0].setConditionObject(new quilbtest::ScriptedCondition({ false, true }), nullptr);
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 0);
    EXPECT_EQ(engine.value("DLG_CONDITION"), "0");
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 1);
    EXPECT_EQ(engine.value("DLG_CONDITION"), "1");
    engine.EvSetDlg(0, &ui);
    EXPECT_EQ(engine.value("DLG_CONDITION"), "0");

    // On a frame before its first sub-dialog there is no sub-dialog to ask: no record for
    // the poll, and leaving asks only the frame's own object.
    engine.EvSetDlg(3, &ui);
    engine.dialogs[3].setConditionObject(new quilbtest::ScriptedCondition({ true }), nullptr);
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 0);
    engine.dialogs[3].setConditionObject(new quilbtest::ScriptedCondition({ false, true, false }), nullptr);
    EXPECT_EQ(engine.EvNext(&ui, 1), 0);
    EXPECT_EQ(engine.GetCurSubDlg(), 0);
}
