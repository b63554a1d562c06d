// The action language of buttons, alone and together with the button's shift.
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

} // namespace

TEST(ButtonActions, WordsAreTakenInOrder)
{
    struct Row {
        const char* name;
        const char* action;
        std::vector<bool> cancelAnswers;
        const char* x;          // the variable X afterwards
        int cancelled;
        std::vector<std::string> sequences;
        int help;
        const char* logLine;
    };
    const Row rows[] = {
        {"an assignment", "[X]='1'", {}, "1", 0, {}, 0, nullptr},
        {"a cancel drops what follows", "Cancel;[X]='1'", {true}, "0", 1, {}, 0, nullptr},
        {"what stands before a cancel runs", "[X]='1';Cancel", {true}, "1", 1, {}, 0, nullptr},
        {"a cancel the user declines", "cancel", {false}, "0", 0, {}, 0, nullptr},
        {"help", "Help;[X]='2'", {}, "2", 0, {}, 1, nullptr},
        {"a sequence", "Run:Docs", {}, "0", 0, {"Docs"}, 0, nullptr},
        {"a sequence takes the rest of the action as its name", "Run:Docs;[X]='3'", {}, "3", 0, {"Docs;[X]='3'"}, 0,
         nullptr},
        {"a sequence without a name", "Run:", {}, "0", 0, {}, 0, "WARNING: Empty action tag in a button!"},
        {"button triggers", "EvalTriggers", {}, "0", 0, {}, 0, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        ASSERT_EQ(quilbtest::loadWizard(engine, ui, wizardXml()), 0);
        engine.EvSetDlg(0, &ui);
        engine.SetVar("X", "0");
        engine.SetVar("TRACE", "");
        ui.cancelAnswers.assign(row.cancelAnswers.begin(), row.cancelAnswers.end());
        engine.PerformButtonAction(&ui, row.action);
        EXPECT_EQ(engine.var("X"), row.x);
        EXPECT_EQ(engine.GetStateCancel(), row.cancelled);
        EXPECT_EQ(engine.sequences, row.sequences);
        EXPECT_EQ(engine.helpCalls, row.help);
        EXPECT_EQ(engine.var("TRACE"), std::string(row.action) == "EvalTriggers" ? "|W!" : "");
        if (row.logLine) {
            EXPECT_TRUE(engine.logged(row.logLine)) << engine.log.text();
        }
    }
}

TEST(ButtonActions, ActionRunsBeforeTheShift)
{
    TestEngine engine;
    ScriptedUI ui;
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, wizardXml()), 0);
    engine.EvSetDlg(0, &ui);

    // The Customize button of the welcome: sets CUSTOMIZE and moves on.
    BUTTONINFO* customize = engine.GetDlgButton(0, 1, -1);
    ASSERT_NE(customize, nullptr);
    ASSERT_EQ(customize->flags & (BUTTON_HAS_ACTION | BUTTON_HAS_SHIFT), BUTTON_HAS_ACTION | BUTTON_HAS_SHIFT);
    engine.PerformButtonAction(&ui, customize->action);
    engine.PerformButtonDlgShift(&ui, customize->shift);
    EXPECT_EQ(engine.var("CUSTOMIZE"), "1");
    engine.EvNext(&ui, 1);
    engine.EvNext(&ui, 1);
    engine.EvNext(&ui, 1);
    ASSERT_EQ(engine.GetCurSubDlg(), 2);

    // The Express button of the last sub-dialog clears CUSTOMIZE and goes back: the walk
    // already sees the options as passed over.
    ui.calls.clear();
    BUTTONINFO* express = engine.GetDlgButton(3, 0, 2);
    ASSERT_NE(express, nullptr);
    engine.PerformButtonAction(&ui, express->action);
    engine.PerformButtonDlgShift(&ui, express->shift);
    EXPECT_EQ(ui.only({"SetDlg(", "SetSubDlg("}), "SetSubDlg(3,0)");
}
