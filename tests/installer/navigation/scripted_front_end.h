#pragma once
// A scripted front end and an engine double, for tests that drive the engine the way a
// front end does and look at what the front end was told.
//
// ScriptedUI records the engine's calls as "Name(arg,arg)" and answers from its fields.
// TestEngine answers the questions that reach the machine (running and installed
// applications, action sequences, earlier installations, the configuration file name)
// from what a test sets up; its log and shell probes are those of ProbeInstaller.
#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "foundation/strings/bounded_copy.h"
#include "installer/installer.h"
#include "installer/variables/variables_helpers.h"
#include "installer/wizard/dialog_conditions.h"
#include "support/paths.h"

namespace quilbtest {

class ScriptedUI : public InstallerUI
{
public:
    std::vector<std::string> calls;
    std::function<int()> script; // the body of StartUI; none gives 0
    bool confirmCancel = false; // the answer of ConfirmCancel
    bool gui = false;
    InstallExchangeInfo* exchange = nullptr; // when set, UpdateValidation records its state

    int StartUI() override { return add("StartUI"), script ? script() : 0; }
    int EndUI() override { return add("EndUI"), 0; }
    void SetDlg(int d) override { add("SetDlg", { d }); }
    void SetSubDlg(int d, int s) override { add("SetSubDlg", { d, s }); }
    void UpdateSubDlg(int d, int s, UPDATETYPE mask, bool force) override
    {
        add("UpdateSubDlg", { d, s, mask, force });
    }
    void ShowUIElements(int d, int s, bool show) override { add("ShowUIElements", { d, s, show }); }
    void UpdateValidation(int d, int s) override
    {
        add("UpdateValidation", { d, s, exchange ? exchange->GetStateSettings() : -1 });
    }
    void NBeginDialog(int d) override { add("NBeginDialog", { d }); }
    void NBeginSubDialog(int d, int s) override { add("NBeginSubDialog", { d, s }); }
    void NEndDialog(int d) override { add("NEndDialog", { d }); }
    void NEndSubDialog(int d, int s) override { add("NEndSubDialog", { d, s }); }
    void ClearTasks() override { add("ClearTasks"); }
    void ClearSubCtrls() override { add("ClearSubCtrls"); }
    void RetainSubCtrl(const char* name) override { add(std::string("RetainSubCtrl(") + name + ")"); }
    void ManageWindow(UIAction action) override { add("ManageWindow", { action }); }
    bool IsGUIInstaller() override { return gui; }
    bool MessageBox(const char* text, int type) override
    {
        return add(std::string("MessageBox(") + text + "," + std::to_string(type) + ")"), true;
    }
    void SetTask(const char* name, const char* label, TASKSTATUS status) override
    {
        add(std::string("SetTask(") + name + "," + label + "," + std::to_string(status) + ")");
    }
    bool ConfirmCancel() override { return add("ConfirmCancel"), confirmCancel; }

    // The recorded calls that begin with one of `prefixes`, joined by blanks; {""} gives all.
    std::string only(std::initializer_list<const char*> prefixes) const
    {
        std::string joined;
        for (const std::string& call : calls)
            if (std::any_of(prefixes.begin(), prefixes.end(),
                    [&](const char* prefix) { return call.rfind(prefix, 0) == 0; }))
                joined += (joined.empty() ? "" : " ") + call;
        return joined;
    }

private:
    void add(const std::string& call) { calls.push_back(call); }
    void add(const char* name, std::initializer_list<int> args)
    {
        std::string call = std::string(name) + "(";
        for (int arg : args)
            call += (call.back() == '(' ? "" : ",") + std::to_string(arg);
        calls.push_back(call + ")");
    }
};

class TestEngine : public ProbeInstaller
{
public:
    std::vector<std::string> sequences; // what RunFiles was asked to run
    std::string configFile;
    std::map<std::string, bool> running, installed;
    // An installed copy of the product and the variables its action log holds.
    bool previousInstall = false;
    std::vector<std::pair<std::string, std::string>> previousVars;
    // Action logs of other applications: application -> variable -> value.
    std::map<std::string, std::map<std::string, std::string>> appLogs;

    int RunFiles(InstallerUI*, const char* tag) override { return sequences.push_back(tag), 0; }
    int getConfigFileName(char* out, int size) override
    {
        return TeskUtils::copyBounded(out, configFile.c_str(), size_t(size)), 0;
    }
    bool isAppRunning(const char* name, const char*) override { return running[name]; }
    bool IsInstalled(const char* name, unsigned int) override { return installed[name]; }
    int CheckPreviousInstallation(InstallerUI*, int) override
    {
        return previousInstallState = previousInstall;
    }
    int InitValuesFromLog(const char*) override
    {
        for (const auto& entry : previousVars)
            SetVar(entry.first.c_str(), entry.second.c_str());
        return 0;
    }
    bool getAppLogFileName(const char* name, char* out, int size) override
    {
        return appLogs.count(name) && (TeskUtils::copyBounded(out, name, size_t(size)), true);
    }
    bool getLogFileVar(const char* logPath, const char* name, char* out, int outSize) override
    {
        return appLogs[logPath].count(name)
            && (TeskUtils::copyBounded(out, appLogs[logPath][name].c_str(), size_t(outSize)), true);
    }

    bool logged(const std::string& line) const { return log.text().find(line + "\r\n") != std::string::npos; }
};

// The text of the test file `name` below the installer's test data.
inline std::string testData(const std::string& name)
{
    return readFile(dataDir() + "/installer/" + name);
}

// The template most engine tests start from.
inline std::string productXml()
{
    return testData("defaults/product.xml");
}

// Puts `xml` into the engine's cabinet as the file "install.xml" of a solid package.
inline void putTemplateInCabinet(Installer& engine, const std::string& xml)
{
    engine.freeCompressData();
    engine.cabinetData = new unsigned char[kCabinetRecordHeaderSize + xml.size()]();
    memcpy(engine.cabinetData + kCabinetRecordHeaderSize, xml.data(), xml.size());
    engine.cabinetIsSolid = 1;
    CabinetFile& file = engine.cabinetFiles.append();
    memset(&file, 0, sizeof(file));
    file.size = file.storedSize = xml.size();
    TeskUtils::copyBounded(file.name, "install.xml", sizeof(file.name));
}

// Starts the engine on `xml` as an install whose StartUI does nothing, so that the wizard
// stands before its first dialog; the calls of the start are forgotten.
inline int loadWizard(TestEngine& engine, ScriptedUI& ui, const std::string& xml)
{
    putTemplateInCabinet(engine, xml);
    int result = engine.RunInstallerUI(&ui, nullptr);
    ui.calls.clear();
    return result;
}

// Starts the wizard of navigation/wizard.xml on its first dialog, with `vars` set before
// it is entered; TRACE and the calls of the start are emptied. Its dialogs: 0 Welcome,
// 1 Extra ([SHOW_EXTRA]==1), 2 Licence, 3 Frame with the sub-dialogs Prepare, Options
// ([CUSTOMIZE]==1) and Copy, 4 Ready (AutoNext on [AUTO_OK]==1), 5 Finish ([END_OK]==1).
// Each adds "|<letter>+" to TRACE on entering and "|<letter>-" on leaving.
inline void startOnWelcome(
    TestEngine& engine, ScriptedUI& ui, const std::map<std::string, std::string>& vars = {})
{
    loadWizard(engine, ui, testData("navigation/wizard.xml"));
    for (const auto& var : vars)
        engine.SetVar(var.first.c_str(), var.second.c_str());
    engine.EvSetDlg(engine.GetCurDlg(), &ui);
    engine.SetVar("TRACE", "");
    ui.calls.clear();
}

// A condition object that answers from a list, the last answer repeating.
class ScriptedCondition : public DlgCondition
{
public:
    explicit ScriptedCondition(std::vector<bool> script)
        : answers(std::move(script))
    {
    }
    bool Eval(Installer*, InstallerUI*) override
    {
        return answers[asked < answers.size() ? asked++ : asked - 1];
    }
    std::vector<bool> answers;
    size_t asked = 0;
};

} // namespace quilbtest
