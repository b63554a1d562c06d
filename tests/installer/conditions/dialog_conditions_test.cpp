// Object conditions of dialogs: polling running applications without flicker, installed
// products, and the message line.
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "installer/installer.h"
#include "installer/model/dialog_conditions.h"
#include "installer/wizard/installer_ui.h"

namespace {

class FakeMachine : public Installer {
public:
    bool isAppRunning(const char* name, const char* directory) override
    {
        asked.push_back(std::string(name ? name : "<null>") + "@" + (directory ? directory : "<null>"));
        return name && running.count(name);
    }
    bool IsInstalled(const char* name, unsigned int flags) override
    {
        asked.push_back(std::string(name ? name : "<null>") + "#" + std::to_string(flags));
        return name && installed.count(name);
    }

    std::set<std::string> running;
    std::set<std::string> installed;
    std::vector<std::string> asked;
};

// Records the list operations as text: "clear", "+name", "close".
class ListRecorder : public InstallerUI {
public:
    int StartUI() override { return 0; }
    void ClearList() override { calls += "clear "; }
    int EndDecompress(const char* text, bool close) override
    {
        if (text)
            calls += std::string(close ? "!" : "+") + text + " ";
        else
            calls += close ? "close " : "null ";
        return answer;
    }

    std::string calls;
    int answer = 0;
};

TEST(RunningAppsCondition, ListChangesOnlyWithWhatRuns)
{
    struct Poll {
        std::set<std::string> running;
        bool result;
        const char* calls;
    } polls[] = {
        {{}, true, ""},
        {{"editor"}, false, "clear +editor close "},
        {{"editor"}, false, ""},
        {{"editor", "viewer"}, false, "clear +editor +viewer close "},
        {{"viewer"}, false, "clear +viewer close "},
        {{}, true, "clear close "},
        {{}, true, ""},
    };
    FakeMachine machine;
    ListRecorder ui;
    RunningAppsCondition condition;
    condition.addEntry("editor", "/opt/editor");
    condition.addEntry("viewer", nullptr);
    int round = 0;
    for (const Poll& poll : polls) {
        machine.running = poll.running;
        ui.calls.clear();
        EXPECT_EQ(condition.Eval(&machine, &ui), poll.result) << "poll " << round;
        EXPECT_EQ(ui.calls, poll.calls) << "poll " << round;
        ++round;
    }
    // Every poll asks for every application, with its directory.
    ASSERT_EQ(machine.asked.size(), 2u * round);
    EXPECT_EQ(machine.asked[0], "editor@/opt/editor");
    EXPECT_EQ(machine.asked[1], "viewer@");
}

TEST(RunningAppsCondition, NothingToAsk)
{
    FakeMachine machine;
    machine.running = {"editor"};
    ListRecorder ui;
    RunningAppsCondition condition;
    EXPECT_TRUE(condition.Eval(&machine, &ui));  // no entries
    condition.addEntry("editor", "");
    EXPECT_TRUE(condition.Eval(&machine, nullptr));
    EXPECT_TRUE(condition.Eval(nullptr, &ui));
    EXPECT_TRUE(machine.asked.empty());
    EXPECT_FALSE(condition.Eval(&machine, &ui));
    condition.clearEntries();
    EXPECT_TRUE(condition.Eval(&machine, &ui));
}

TEST(ExternalInstallationCondition, HoldsWhileAProductIsInstalled)
{
    FakeMachine machine;
    ListRecorder ui;
    ExternalInstallationCondition condition;
    condition.addEntry("OldSuite", 2);
    condition.addEntry("OtherTool", 3);
    EXPECT_TRUE(condition.Eval(&machine, &ui));
    EXPECT_EQ(machine.asked, (std::vector<std::string>{"OldSuite#2", "OtherTool#3"}));

    machine.installed = {"OtherTool"};
    EXPECT_FALSE(condition.Eval(&machine, &ui));
    // Without a front end nothing is asked and nothing holds.
    machine.asked.clear();
    EXPECT_TRUE(condition.Eval(&machine, nullptr));
    EXPECT_TRUE(machine.asked.empty());
}

TEST(DlgCondition, DisplayMessageForwardsToTheList)
{
    ListRecorder ui;
    ui.answer = 7;
    RunningAppsCondition condition;
    EXPECT_EQ(condition.DisplayMessage(&ui, "still running"), 7);
    EXPECT_EQ(ui.calls, "!still running ");
    EXPECT_EQ(condition.DisplayMessage(nullptr, "text"), -1);
    EXPECT_EQ(condition.DisplayMessage(&ui, nullptr), -1);
    EXPECT_EQ(ui.calls, "!still running ");
}

} // namespace
