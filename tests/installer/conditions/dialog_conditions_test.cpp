// Object conditions of dialogs: polling running applications without flicker, installed
// products, and the message line.
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "installer/installer.h"
#include "installer/wizard/dialog_conditions.h"
#include "installer/wizard/installer_ui.h"

namespace {

// Answers from sets of names and notes each question as "name@directory" or "name#flags".
struct FakeMachine : Installer
{
    bool isAppRunning(const char* name, const char* directory) override
    {
        return asked += std::string(name) + "@" + directory + " ", running.count(name) > 0;
    }
    bool IsInstalled(const char* name, unsigned int flags) override
    {
        return asked += std::string(name) + "#" + std::to_string(flags) + " ", installed.count(name) > 0;
    }
    std::set<std::string> running, installed;
    std::string asked;
};

// Notes the list operations: "clear", "+line" (open), "!line" (closing), "close".
struct ListRecorder : InstallerUI
{
    int StartUI() override { return 0; }
    void ClearList() override { calls += "clear "; }
    int EndDecompress(const char* text, bool close) override
    {
        return calls += text ? std::string(close ? "!" : "+") + text + " " : close ? "close " : "null ", 7;
    }
    std::string calls;
};

TEST(RunningAppsCondition, ListChangesOnlyWithWhatRuns)
{
    const struct
    {
        std::set<std::string> running;
        bool result;
        const char* calls;
    } polls[] = {
        { {}, true, "" },
        { { "editor" }, false, "clear +editor close " },
        { { "editor" }, false, "" },
        { { "editor", "viewer" }, false, "clear +editor +viewer close " },
        { { "viewer" }, false, "clear +viewer close " },
        { {}, true, "clear close " },
        { {}, true, "" },
    };
    FakeMachine machine;
    ListRecorder ui;
    RunningAppsCondition condition;
    condition.addEntry("editor", "/opt/editor");
    condition.addEntry("viewer", nullptr);
    for (size_t round = 0; round < sizeof(polls) / sizeof(polls[0]); ++round) {
        machine.running = polls[round].running;
        ui.calls = machine.asked = "";
        EXPECT_EQ(condition.Eval(&machine, &ui), polls[round].result) << "poll " << round;
        EXPECT_EQ(ui.calls, polls[round].calls) << "poll " << round;
        EXPECT_EQ(machine.asked, "editor@/opt/editor viewer@ ");
    }
}

TEST(DlgCondition, NothingToAskAndMessages)
{
    FakeMachine machine;
    machine.running = { "editor" };
    machine.installed = { "OtherTool" };
    ListRecorder ui;
    RunningAppsCondition apps;
    EXPECT_TRUE(apps.Eval(&machine, &ui)); // no entries
    apps.addEntry("editor", "");
    EXPECT_TRUE(apps.Eval(&machine, nullptr) && apps.Eval(nullptr, &ui));
    EXPECT_EQ(machine.asked, "");

    ExternalInstallationCondition products;
    products.addEntry("OldSuite", 2);
    EXPECT_TRUE(products.Eval(&machine, &ui));
    products.addEntry("OtherTool", 3);
    EXPECT_FALSE(products.Eval(&machine, &ui));
    EXPECT_TRUE(products.Eval(&machine, nullptr));
    EXPECT_EQ(machine.asked, "OldSuite#2 OldSuite#2 OtherTool#3 ");

    EXPECT_EQ(products.DisplayMessage(&ui, "still running"), 7);
    EXPECT_EQ(ui.calls, "!still running ");
    EXPECT_EQ(products.DisplayMessage(nullptr, "text"), -1);
}

} // namespace
