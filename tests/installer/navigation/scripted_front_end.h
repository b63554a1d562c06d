#pragma once
// A scripted front end and an engine double, for tests that drive the engine the way a
// front end does and look at what the front end was told.
//
// ScriptedUI records every call the engine makes, as "Name(arg,arg)", and answers from its
// fields. TestEngine replaces the operations that reach the machine (running and installed
// applications, action sequences, earlier installations, the configuration file name) by
// answers that a test sets up, and logs to a memory console without decorations.
#include <cstring>
#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include "foundation/streams/pmemory_console.h"
#include "foundation/strings/bounded_copy.h"
#include "installer/installer.h"
#include "installer/model/dialog_conditions.h"

namespace quilbtest {

class ScriptedUI : public InstallerUI {
public:
    std::vector<std::string> calls;
    // The body of StartUI, which gives its result; none gives 0.
    std::function<int(ScriptedUI&)> script;
    // Answers of ConfirmCancel, taken in order; false when used up.
    std::deque<bool> cancelAnswers;
    bool gui = false;

    int StartUI() override
    {
        record("StartUI");
        return script ? script(*this) : 0;
    }
    int EndUI() override
    {
        record("EndUI");
        return 0;
    }
    void SetDlg(int dlg) override { record("SetDlg", {dlg}); }
    void SetSubDlg(int dlg, int sub) override { record("SetSubDlg", {dlg, sub}); }
    void UpdateValidation(int dlg, int sub) override { record("UpdateValidation", {dlg, sub}); }
    void UpdateSubDlg(int dlg, int sub, int mask, bool force) override
    {
        record("UpdateSubDlg", {dlg, sub, mask, force ? 1 : 0});
    }
    void ShowUIElements(int dlg, int sub, bool show) override { record("ShowUIElements", {dlg, sub, show ? 1 : 0}); }
    void NBeginDialog(int dlg) override { record("NBeginDialog", {dlg}); }
    void NBeginSubDialog(int dlg, int sub) override { record("NBeginSubDialog", {dlg, sub}); }
    void NEndDialog(int dlg) override { record("NEndDialog", {dlg}); }
    void NEndSubDialog(int dlg, int sub) override { record("NEndSubDialog", {dlg, sub}); }
    void ClearTasks() override { record("ClearTasks"); }
    void ClearSubCtrls() override { record("ClearSubCtrls"); }
    void RetainSubCtrl(const char* name) override { record(std::string("RetainSubCtrl(") + name + ")"); }
    bool ConfirmCancel() override
    {
        record("ConfirmCancel");
        if (cancelAnswers.empty())
            return false;
        bool answer = cancelAnswers.front();
        cancelAnswers.pop_front();
        return answer;
    }
    int EndDecompress(const char* text, bool close) override
    {
        record(std::string("EndDecompress(") + (text ? text : "null") + "," + (close ? "1" : "0") + ")");
        return 0;
    }
    void ClearList() override { record("ClearList"); }
    bool MessageBox(const char* text, int type) override
    {
        record(std::string("MessageBox(") + text + "," + std::to_string(type) + ")");
        return true;
    }
    bool IsGUIInstaller() override { return gui; }
    void SetTask(const char* name, const char* label, TASKSTATUS status) override
    {
        record(std::string("SetTask(") + name + "," + label + "," + std::to_string(status) + ")");
    }
    void ManageWindow(UIAction action) override { record("ManageWindow", {action}); }

    // The recorded calls that begin with one of `prefixes`, joined by blanks.
    std::string only(std::initializer_list<const char*> prefixes) const
    {
        std::string joined;
        for (const std::string& call : calls) {
            for (const char* prefix : prefixes) {
                if (call.compare(0, strlen(prefix), prefix) == 0) {
                    joined += (joined.empty() ? "" : " ") + call;
                    break;
                }
            }
        }
        return joined;
    }

private:
    void record(const std::string& call) { calls.push_back(call); }
    void record(const char* name, std::initializer_list<int> args)
    {
        std::string call = std::string(name) + "(";
        bool first = true;
        for (int arg : args) {
            call += (first ? "" : ",") + std::to_string(arg);
            first = false;
        }
        calls.push_back(call + ")");
    }
};

class TestEngine : public Installer {
public:
    PMemoryConsole log;
    std::vector<std::string> sequences;  // the tags RunFiles was asked for
    int helpCalls = 0;
    std::string configFile;
    std::map<std::string, bool> running;    // isAppRunning by name
    std::map<std::string, bool> installed;  // IsInstalled by name
    // An installed copy of the product and the variables its action log holds.
    bool previousInstall = false;
    std::vector<std::pair<std::string, std::string>> previousVars;
    // Action logs of other applications: application -> (variable -> value).
    std::map<std::string, std::map<std::string, std::string>> appLogs;

    TestEngine()
    {
        log.flags = 0;
        debugConsole = &log;
    }

    int RunFiles(InstallerUI* ui, const char* tag) override
    {
        (void)ui;
        sequences.push_back(tag ? tag : "(null)");
        return 0;
    }
    int EvHelp(InstallerUI* ui) override
    {
        (void)ui;
        ++helpCalls;
        return 0;
    }
    int getConfigFileName(char* buffer, int size) override
    {
        TeskUtils::copyBounded(buffer, configFile.c_str(), static_cast<size_t>(size));
        return 0;
    }
    bool isAppRunning(const char* name, const char* directory) override
    {
        (void)directory;
        return name && running[name];
    }
    bool IsInstalled(const char* name, unsigned int flags) override
    {
        (void)flags;
        return name && installed[name];
    }
    int CheckPreviousInstallation(InstallerUI* ui, int flag) override
    {
        (void)ui;
        (void)flag;
        previousInstallState = previousInstall ? 1 : 0;
        return previousInstall ? 1 : 0;
    }
    int InitValuesFromLog(const char* logPath) override
    {
        (void)logPath;
        for (const auto& entry : previousVars)
            SetVar(entry.first.c_str(), entry.second.c_str());
        return 0;
    }
    bool getAppLogFileName(const char* name, char* out, int size) override
    {
        if (!appLogs.count(name))
            return false;
        TeskUtils::copyBounded(out, name, static_cast<size_t>(size));
        return true;
    }
    bool getLogFileVar(const char* logPath, const char* name, char* out, int outSize) override
    {
        auto app = appLogs.find(logPath);
        if (app == appLogs.end() || !app->second.count(name))
            return false;
        TeskUtils::copyBounded(out, app->second[name].c_str(), static_cast<size_t>(outSize));
        return true;
    }

    // The logged lines, without their line ends.
    std::vector<std::string> logLines() const
    {
        std::vector<std::string> lines;
        const std::string& text = log.text();
        size_t start = 0;
        for (size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2)
            lines.push_back(text.substr(start, end - start));
        return lines;
    }
    bool logged(const std::string& line) const
    {
        for (const std::string& each : logLines())
            if (each == line)
                return true;
        return false;
    }
    // The value of a variable, or "<unknown>".
    std::string var(const char* name)
    {
        char value[1024];
        return GetVar(name, value, sizeof(value)) == -1 ? "<unknown>" : value;
    }
    std::string defaultOf(const char* name)
    {
        char value[1024];
        return GetVarDefaultValue(name, value, sizeof(value)) == -1 ? "<unknown>" : value;
    }
};

// Puts `xml` into the engine's cabinet as the file "install.xml", as a solid package holds it.
inline void putTemplateInCabinet(Installer& engine, const std::string& xml)
{
    const size_t size = xml.size();
    engine.freeCompressData();
    engine.cabinetData = new unsigned char[kCabinetRecordHeaderSize + size];
    memset(engine.cabinetData, 0, kCabinetRecordHeaderSize);
    memcpy(engine.cabinetData + kCabinetRecordHeaderSize, xml.data(), size);
    engine.cabinetDataSize = static_cast<long>(kCabinetRecordHeaderSize + size);
    engine.cabinetIsSolid = 1;
    CabinetFile& file = engine.cabinetFiles.append();
    memset(&file, 0, sizeof(file));
    file.tag = kCabinetFileTag;
    file.size = size;
    file.storedSize = size;
    TeskUtils::copyBounded(file.name, "install.xml", sizeof(file.name));
    TeskUtils::copyBounded(file.alias, "install.xml", sizeof(file.alias));
}

// Starts the engine on `xml` as an install with a front end whose StartUI does nothing, so
// that the wizard stands before its first dialog; the calls of the start are forgotten.
// Gives RunInstallerUI's result.
inline int loadWizard(TestEngine& engine, ScriptedUI& ui, const std::string& xml)
{
    putTemplateInCabinet(engine, xml);
    int result = engine.RunInstallerUI(&ui, nullptr);
    ui.calls.clear();
    return result;
}

// A condition object that answers from a list (the last answer repeats) and counts its
// questions.
class ScriptedCondition : public DlgCondition {
public:
    explicit ScriptedCondition(std::vector<bool> answers) : answers(std::move(answers)) {}
    bool Eval(Installer* installer, InstallerUI* ui) override
    {
        (void)installer;
        (void)ui;
        size_t at = asked < answers.size() ? asked : answers.size() - 1;
        ++asked;
        return answers[at];
    }
    std::vector<bool> answers;
    size_t asked = 0;
};

} // namespace quilbtest
