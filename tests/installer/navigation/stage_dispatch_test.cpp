// The work hung on dialog names: which operation entering a dialog runs, what the front end
// is told around it, the state error it leaves, and whether the walk goes on by itself.
#include <gtest/gtest.h>

#include "foundation/strings/exceptions.h"
#include "installer/navigation/scripted_front_end.h"

using quilbtest::loadWizard;
using quilbtest::ScriptedUI;
using quilbtest::TestEngine;

namespace {

// Records the lines the engine adds to the front end's list as well.
class ListingUI : public ScriptedUI
{
public:
    int EndDecompress(const char* text, bool close) override
    {
        calls.push_back(std::string("List(") + (text ? text : "null") + "," + (close ? "1" : "0") + ")");
        return 0;
    }
};

// The stage operations answer from fields and say that they ran.
class StageEngine : public TestEngine
{
public:
    std::vector<std::string> ran;
    int result = 0; // what the stage operations give
    bool throwing = false; // callUninstaller throws
    std::vector<std::string> terminated;

    int callUninstaller(InstallerUI*) override
    {
        ran.push_back("callUninstaller");
        if (throwing)
            throw GenericError("ERROR: Could not obtain Application name");
        return result;
    }
    int UnInstall(InstallerUI*, const char*) override { return ran.push_back("UnInstall"), result; }
    int RevertInstall(InstallerUI*) override { return ran.push_back("RevertInstall"), result; }
    int RevertUninstall(InstallerUI*) override { return ran.push_back("RevertUninstall"), result; }
    bool RegisterApplication() override { return ran.push_back("RegisterApplication"), result == 0; }
    bool unregisterApplication(const char* name) override
    {
        return ran.push_back(std::string("unregisterApplication(") + name + ")"), result == 0;
    }
    void showCleanupDetails(InstallerUI*) override { ran.push_back("showCleanupDetails"); }
    int CleanupInstall(InstallerUI*) override { return ran.push_back("CleanupInstall"), result; }
    int prepareUninstall(InstallerUI*, const char*) override
    {
        return ran.push_back("prepareUninstall"), result;
    }
    bool terminateApp(const char* name, bool force, const char*) override
    {
        terminated.push_back(std::string(name) + (force ? "!" : ""));
        return true;
    }
};

std::string wizardWith(const std::string& dialogs)
{
    return R"(<QuilbGroupInstallation>
  <ProductDesc><Fullname>Stage Test</Fullname><MajorVersion>1</MajorVersion>
    <MinorVersion>0</MinorVersion><MinestVersion>0</MinestVersion></ProductDesc>
  <InstallerControlVariables>
    <InstallError>INSTALL_ERROR</InstallError>
    <UninstallError>UNINSTALL_ERROR</UninstallError>
  </InstallerControlVariables>
  <DefValues>
    <Value Name="UNINSTALL_ERROR" DataType="value">0</Value>
    <Value Name="GO" DataType="value">0</Value>
  </DefValues>
  <Dialogs>)"
        + dialogs +
        R"(</Dialogs>
</QuilbGroupInstallation>
)";
}

struct Entered
{
    int result;
    std::string calls;
};

// Loads a wizard of the one dialog `xml` and enters it.
Entered enter(StageEngine& engine, ListingUI& ui, const std::string& xml, bool uninstallRun = false)
{
    loadWizard(engine, ui, wizardWith(xml));
    ui.exchange = &engine;
    if (uninstallRun) {
        // An uninstall is a run on an open action log.
        quilbtest::TempDir dir;
        EXPECT_TRUE(quilbtest::writeFile(dir.file("install.log"), ""));
        EXPECT_EQ(engine.Init(dir.file("install.log").c_str(), 0, 1), 0);
    }
    engine.stateError = 0;
    int result = engine.SetDlgHelper(0, -1, &ui, *engine.GetDialogInfo(0, -1));
    return { result, ui.only({ "ShowUIElements", "UpdateValidation", "List" }) };
}

const std::string kShown = "ShowUIElements(0,-1,1)";
const std::string kWork = kShown + " UpdateValidation(0,-1,1) UpdateValidation(0,-1,0)";

TEST(StageDispatch, RowsRunTheirOperation)
{
    const struct
    {
        const char* name;
        const char* xml;
        int operationResult;
        bool uninstallRun;
        std::string ran;
        std::string calls;
        int stateError;
        int result;
    } rows[] = {
        { "Uninstall removes the old version as work", "<Uninstall/>", 0, false, "callUninstaller", kWork, 0,
            0 },
        { "its failure is the state error", "<Uninstall/>", 3, false, "callUninstaller", kWork, 3, 0 },
        { "CopyProgress uninstalls in an uninstall run", "<CopyProgress/>", -1, true, "UnInstall", kWork, -1,
            0 },
        { "RevertInstallation", "<RevertInstallation/>", 1, false, "RevertInstall", kWork, 1, 0 },
        { "RevertUninstallation", "<RevertUninstallation/>", 0, false, "RevertUninstall", kWork, 0, 0 },
        { "RegisterApplication is never shown", "<RegisterApplication/>", 0, false, "RegisterApplication", "",
            0, 0 },
        { "a failed registration", "<RegisterApplication/>", 1, false, "RegisterApplication", "", 1, 0 },
        { "RegisterApplication in an uninstall run fails at once", "<RegisterApplication/>", 0, true, "", "",
            1, 0 },
        { "UnregisterApplication only in an uninstall run", "<UnregisterApplication/>", 0, false, "", "", 0,
            0 },
        { "UnregisterApplication names the product", "<UnregisterApplication/>", 0, true,
            "unregisterApplication(Stage Test)", "", 0, 0 },
        { "CleanupDetails lists, then shows", "<CleanupDetails/>", 0, false, "showCleanupDetails", kShown, 0,
            0 },
        { "InstallationCleanup", "<InstallationCleanup/>", 1, false, "CleanupInstall", kWork, 1, 0 },
        { "PreUninstall shows first", "<PreUninstall/>", 0, false, "prepareUninstall", kShown, 0, 0 },
        { "PostInstall goes on by itself", "<PostInstall/>", 0, false, "", kShown, 0, 1 },
        { "a name without work only shows", "<Welcome/>", 0, false, "", kShown, 0, 0 },
        { "AutoNext without a condition goes on", "<Welcome Special=\"AutoNext\"/>", 0, false, "", kShown, 0,
            1 },
        { "a Busy AutoNext dialog with a false condition stands, idle again",
            "<Welcome Special=\"Busy;AutoNext\" AutoCondition=\"[GO]==1\"/>", 0, false, "",
            "UpdateValidation(0,-1,5) " + kShown + " UpdateValidation(0,-1,0)", 0, 0 },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        StageEngine engine;
        ListingUI ui;
        engine.result = row.operationResult;
        engine.configFile = "answers.xml"; // no configuration file is written
        Entered entered = enter(engine, ui, row.xml, row.uninstallRun);
        std::string ran;
        for (const std::string& name : engine.ran)
            ran += (ran.empty() ? "" : " ") + name;
        EXPECT_EQ(ran, row.ran);
        EXPECT_EQ(entered.calls, row.calls);
        EXPECT_EQ(engine.GetStateError(), row.stateError);
        EXPECT_EQ(entered.result, row.result);
        EXPECT_EQ(engine.GetStateSettings(), SETTING_IDLE);
    }
}

TEST(StageDispatch, UninstallFailureSetsItsVariableAndIsCollected)
{
    StageEngine engine;
    ListingUI ui;
    engine.throwing = true;
    Entered entered = enter(engine, ui, "<Uninstall/>");
    EXPECT_EQ(entered.calls,
        kShown
            + " UpdateValidation(0,-1,1) List(ERROR: Could not obtain Application name,1) "
              "UpdateValidation(0,-1,0)");
    EXPECT_EQ(engine.GetStateError(), 1);
    char value[16];
    engine.GetVar("UNINSTALL_ERROR", value, sizeof value);
    EXPECT_STREQ(value, "1");
    ASSERT_EQ(engine.logCollector.GetCount(), 1);
    EXPECT_STREQ(engine.logCollector.GetEntry(0), "ERROR: Could not obtain Application name");
}

TEST(StageDispatch, FinishShowsTheCollectedErrors)
{
    const struct
    {
        const char* name;
        bool uninstallRun;
        int rows;
        std::string list;
    } rows[] = {
        { "no errors, no summary", false, 0, "" },
        { "an install run's summary", false, 2,
            " List(Installation errors summary:,0) List(row 0,1) List(row 1,0) List(null,1)" },
        { "an uninstall run's summary", true, 1,
            " List(Uninstallation errors summary:,0) List(row 0,1) List(null,1)" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        StageEngine engine;
        ListingUI ui;
        for (int i = 0; i < row.rows; ++i)
            engine.logCollector.AddEntry(("row " + std::to_string(i)).c_str());
        Entered entered = enter(engine, ui, "<BadFinish/>", row.uninstallRun);
        EXPECT_EQ(entered.calls, kShown + row.list);
    }
}

TEST(StageDispatch, RunningAppsTerminatesOnceAndHoldsWhileAppsRun)
{
    StageEngine engine;
    ListingUI ui;
    engine.running["editor"] = true;
    Entered first = enter(engine, ui, R"(<RunningApps>
      <TerminateApp Service="TRUE">daemon</TerminateApp>
      <TerminateApp Condition="[GO]==1">skipped</TerminateApp>
      <TerminateSequence>StopAll</TerminateSequence>
      <TestApp>editor</TestApp>
      <TestApp Condition="[GO]==1">viewer</TestApp>
    </RunningApps>)");
    EXPECT_EQ(engine.terminated, std::vector<std::string> { "daemon!" });
    EXPECT_EQ(engine.sequences, std::vector<std::string> { "StopAll" });
    EXPECT_EQ(first.calls,
        "List(editor,0) List(null,1) "
        "List(The installation can not continue, because the processes listed above are running.,1) "
            + kShown + " UpdateValidation(0,-1,3)");
    EXPECT_EQ(engine.GetStateSettings(), SETTING_WAITING);
    EXPECT_TRUE(engine.logged("Running applications found"));
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 0);

    // Entering again tests again, without stopping anything a second time; once the
    // application is gone the dialog lets the wizard go.
    engine.running["editor"] = false;
    ui.calls.clear();
    engine.SetDlgHelper(0, -1, &ui, *engine.GetDialogInfo(0, -1));
    EXPECT_EQ(engine.terminated.size(), 1u);
    EXPECT_EQ(engine.sequences.size(), 1u);
    EXPECT_EQ(ui.only({ "ShowUIElements", "List" }), "List(null,1)")
        << "a dialog whose applications are gone isn't shown";
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 1);
}

TEST(StageDispatch, ExternalUninstallRemovesInstalledProducts)
{
    StageEngine engine;
    ListingUI ui;
    engine.installed["Old Tool"] = true;
    Entered entered = enter(engine, ui, R"(<ExternalUninstall>
      <ExternalLegacyApplication Arguments="--quiet">Old Tool</ExternalLegacyApplication>
      <externallegacyapplication>Absent Tool</externallegacyapplication>
    </ExternalUninstall>)");
    // The test double's uninstall leaves the product installed, so the dialog holds.
    EXPECT_EQ(entered.calls,
        kShown + " UpdateValidation(0,-1,3) List(Uninstalling \"Old Tool\" ...,1) UpdateValidation(0,-1,3)");
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 0);
    engine.installed["Old Tool"] = false;
    EXPECT_EQ(engine.GetDialogConditionEval(&ui), 1);
}

} // namespace
