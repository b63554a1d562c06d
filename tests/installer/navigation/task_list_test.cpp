// The task list: labels by status, and the refresh of the tasks still ahead.
#include <gtest/gtest.h>

#include "installer/navigation/scripted_front_end.h"

using quilbtest::ScriptedUI;
using quilbtest::TestEngine;

namespace {

const char* const kFrameXml = R"(<QuilbGroupInstallation>
  <ProductDesc><Fullname>Tasks</Fullname></ProductDesc>
  <DefValues/>
  <Dialogs>
    <Frame Special="HasSubDialogs">
      <TaskList>
        <Full CurrentLabel="cur" FinishLabel="fin" UnreachedLabel="todo"/>
        <Bare CurrentLabel="only"/>
        <Gated CurrentLabel="g-cur" UnreachedLabel="g-todo" EnableCondition="[GATE]==1"/>
      </TaskList>
      <SubDialogs><Full/><Bare/><Gated/></SubDialogs>
    </Frame>
  </Dialogs>
</QuilbGroupInstallation>)";

} // namespace

TEST(TaskList, LabelsFollowTheStatus)
{
    const struct {
        const char* name;
        int task;
        int status;
        const char* gate;
        const char* call;
        int stored;  // the task's status afterwards
    } rows[] = {
        {"not reached", 0, 0, "1", "SetTask(Full,todo,0)", 0},
        {"current", 0, 1, "1", "SetTask(Full,cur,1)", 1},
        {"finished well", 0, 2, "1", "SetTask(Full,fin,2)", 2},
        {"finished badly", 0, 3, "1", "SetTask(Full,fin,3)", 3},
        {"inactive is not stored", 0, 4, "1", "SetTask(Full,todo,4)", 0},
        {"an unknown status has no label", 0, 7, "1", "SetTask(Full,,7)", 7},
        {"missing labels fall back to the current one", 1, 2, "1", "SetTask(Bare,only,2)", 2},
        {"missing unreached label", 1, 0, "1", "SetTask(Bare,only,0)", 0},
        {"not reached and disabled is sent as inactive", 2, 0, "0", "SetTask(Gated,g-todo,4)", 0},
        {"not reached and enabled", 2, 0, "1", "SetTask(Gated,g-todo,0)", 0},
        {"a task out of range", 5, 1, "1", "", -1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        ASSERT_EQ(quilbtest::loadWizard(engine, ui, kFrameXml), 0);
        engine.SetVar("GATE", row.gate);
        EXPECT_EQ(engine.UpdateTaskListItem(&ui, 0, row.task, static_cast<TASKSTATUS>(row.status)), 0);
        EXPECT_EQ(ui.only({"SetTask("}), row.call);
        if (row.stored >= 0) {
            EXPECT_EQ(engine.GetTaskInfo(0, row.task)->status, row.stored);
        }
    }
}

TEST(TaskList, RefreshOfTheTasksAhead)
{
    TestEngine engine;
    ScriptedUI ui;
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, kFrameXml), 0);
    EXPECT_EQ(engine.UpdateTaskListItem(nullptr, 0, 0, TASK_CURRENT), -1);
    EXPECT_EQ(engine.UpdateTaskListItem(&ui, 3, 0, TASK_CURRENT), -1);

    engine.EvSetDlg(0, &ui);
    engine.EvSetSubDlg(0, 0, &ui);
    ui.calls.clear();
    // Only tasks with an EnableCondition are sent: inactive while it is false, with their
    // own status when it holds.
    engine.SetVar("GATE", "0");
    EXPECT_EQ(engine.UpdateTaskList(&ui), 0);
    engine.SetVar("GATE", "1");
    engine.GetTaskInfo(0, 2)->status = TASK_FINISHED_BAD;
    engine.UpdateTaskList(&ui);
    EXPECT_EQ(ui.only({"SetTask("}), "SetTask(Gated,g-todo,4) SetTask(Gated,g-cur,3)");
    // From the last task on, nothing is ahead.
    ui.calls.clear();
    engine.EvSetSubDlg(0, 2, &ui);
    ui.calls.clear();
    engine.UpdateTaskList(&ui);
    EXPECT_EQ(ui.only({"SetTask("}), "");
}
