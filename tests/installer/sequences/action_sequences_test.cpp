// Action sequences on an engine whose process runner only records: which actions run, in
// which order, with which program, arguments, flags and poll interval, and what lands in the
// ResultVariable and the debug log.
#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "foundation/streams/pmemory_console.h"
#include "installer/installer.h"
#include "support/paths.h"

using namespace quilbtest;

namespace {

class SequenceEngine : public Installer
{
public:
    explicit SequenceEngine(const std::string& sequences)
    {
        log.flags = 0;
        InitDebugMode(&log, 0);
        std::string text = "<QuilbGroupInstallation><Installation>" + sequences
            + "</Installation></QuilbGroupInstallation>";
        std::vector<char> buffer(text.begin(), text.end());
        buffer.push_back('\0');
        templateXml.ParseTag(buffer.data());
        SetVar("DIR", "/opt/x");
    }
    // Records "program|arguments|workDir|flags|pollMs|ui" and gives the next answer.
    TeskUtils::ErrorCode runProgram(const char* cmd, const char* args, unsigned flags, const char* workDir,
        InstallerUI* ui, unsigned pollMs, TeskUtils::CharString* output,
        const ExtendedRunProgramParams* ext) const override
    {
        EXPECT_EQ(output, nullptr) << "a sequence captures nothing";
        calls.push_back(std::string(cmd) + "|" + (args ? args : "-") + "|" + (workDir ? workDir : "-") + "|"
            + std::to_string(flags) + "|" + std::to_string(pollMs) + "|" + (ui ? "ui" : "-"));
        if (ext) {
            for (int i = 0; i < ext->environment.count; ++i)
                calls.back() += " env:" + std::to_string(ext->environment[i].flags) + ","
                    + ext->environment[i].name.c_str() + "=" + ext->environment[i].value.c_str();
            for (int i = 0; i < ext->pipes.count; ++i)
                calls.back() += " pipe:" + std::to_string(ext->pipes[i].type) + ","
                    + std::to_string(ext->pipes[i].dest) + "," + ext->pipes[i].fileName.c_str();
            if (ext->hasSystemErrorHandling)
                calls.back() += " seh:" + std::to_string(ext->systemErrorHandling);
        }
        return answer;
    }
    std::string value(const char* name)
    {
        char buffer[1024];
        return GetVar(name, buffer, sizeof buffer) == -1 ? "<unset>" : buffer;
    }
    bool logged(const std::string& line) const { return log.text().find(line + "\r\n") != std::string::npos; }

    PMemoryConsole log;
    mutable std::vector<std::string> calls;
    TeskUtils::ErrorCode answer;
};

// A front end that keeps the lines it was shown, each with the number of runs before it.
class ListUI : public InstallerUI
{
public:
    explicit ListUI(const SequenceEngine& watched)
        : engine(watched)
    {
    }
    int EndDecompress(const char* text, bool close) override
    {
        lines.push_back(
            std::string(text ? text : "-") + (close ? "|close@" : "@") + std::to_string(engine.calls.size()));
        return 0;
    }
    const SequenceEngine& engine;
    std::vector<std::string> lines;
};

TEST(ActionSequencesTest, ElementsAndActionsRunInDocumentOrderUnderTheirConditions)
{
    SequenceEngine engine(R"(
      <Setup>
        <RunProgram Arguments="one" Log="Installing into [DIR]">/bin/first</RunProgram>
        <RunProgram Condition="0" Log="not shown">/bin/skipped</RunProgram>
        <Frobnicate ResultVariable="R_UNKNOWN" Log="[EMPTY]">x</Frobnicate>
        <RunProgram ResultVariable="R_EMPTY"></RunProgram>
        <Registry ResultVariable="R_REG"/>
        <runprogram Condition="1=1">/bin/second</runprogram>
      </Setup>
      <Setup Condition="0"><RunProgram>/bin/never</RunProgram></Setup>
      <Other><RunProgram>/bin/other</RunProgram></Other>
      <Setup Condition="[FLAG]==1"><RunProgram>/bin/third</RunProgram></Setup>)");
    engine.SetVar("FLAG", "1");
    engine.SetVar("EMPTY", "");
    engine.SetVar("R_UNKNOWN", "untouched");
    engine.SetVar("R_EMPTY", "untouched");
    ListUI ui(engine);
    EXPECT_EQ(engine.RunFiles(&ui, "Setup"), 0);

    EXPECT_EQ(engine.calls,
        (std::vector<std::string> {
            "/bin/first|one|-|0|0|ui", "/bin/second||-|0|0|ui", "/bin/third||-|0|0|ui" }));
    EXPECT_EQ(
        ui.lines, (std::vector<std::string> { "Installing into /opt/x|close@0", "-|close@2", "-|close@3" }));
    EXPECT_EQ(engine.value("R_UNKNOWN"), "untouched");
    EXPECT_EQ(engine.value("R_EMPTY"), "untouched") << "an action without text is passed over";
    EXPECT_EQ(engine.value("R_REG"), "0");
    EXPECT_TRUE(engine.logged("Running Files for installation tag: <Setup>"));
    EXPECT_TRUE(engine.logged("WARNING: Unknown action (skipped): Frobnicate"));
    EXPECT_TRUE(engine.logged("WARNING: Registry operation on Linux/OSX system!"));
    EXPECT_EQ(engine.RunFiles(&ui, nullptr), -1);
}

TEST(ActionSequencesTest, AttributesGiveTextFlagsAndPollInterval)
{
    const struct
    {
        const char* action;
        const char* call;
        const char* warning;
    } rows[] = {
        { "<RunProgram>[DIR]/tool</RunProgram>", "/opt/x/tool||-|0|0|ui", "" },
        { "<RunProgram Details=\"noexpansion\">[DIR]/tool</RunProgram>", "[DIR]/tool||-|0|0|ui", "" },
        { "<RunProgram> /opt//x\\tool </RunProgram>", "/opt/x/tool||-|0|0|ui", "" },
        { "<RunProgram Details=\"NoPathCorrection\">/opt//x</RunProgram>", "/opt//x||-|0|0|ui", "" },
        { "<RunProgram Details=\"LessDebug;Lowercase\">/Opt/TOOL</RunProgram>", "/opt/tool||-|0|0|ui", "" },
        { "<RunProgram Details=\"Lowercase;Uppercase\">/Opt</RunProgram>", "/Opt||-|0|0|ui",
            "WARNING: Encountered Details attribute containing both Lowercase and Uppercase (tag: S, child: "
            "RunProgram)!" },
        { "<RunProgram Details=\"Quietly\" StripExeExt=\"\">/p.exe</RunProgram>", "/p||-|0|0|ui",
            "WARNING: Unrecognized details flag (Quietly) for tag RunProgram" },
        { "<RunProgram Arguments=\"-d=[DIR] 'a  b'\" WorkDir=\"[DIR]//s \">/p</RunProgram>",
            "/p|-d=/opt/x 'a  b'|/opt/x/s|0|0|ui", "" },
        { "<RunProgram Wait=\"\" AsRoot=\"[DIR]=='/opt/x'\" ErrorOutput=\"\">/p</RunProgram>", "/p||-|6|0|ui",
            "" },
        { "<RunProgram Wait=\"0\" Asynchronous=\"((\" ErrorOutput=\"0\">/p</RunProgram>", "/p||-|40|0|ui",
            "" },
        { "<RunProgram ProgressUpdate=\"5\">/p</RunProgram>", "/p||-|16|50|ui", "" },
        { "<OpenURL Wait=\"1\">http://Host//a</OpenURL>", "http://Host//a|-|-|3|100|-", "" },
        { "<OpenDocument>/doc//a.pdf</OpenDocument>", "/doc/a.pdf|-|-|1|100|-", "" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.action);
        SequenceEngine engine(std::string("<S>") + row.action + "</S>");
        ListUI ui(engine);
        engine.RunFiles(&ui, "S");
        EXPECT_EQ(engine.calls, std::vector<std::string> { row.call });
        if (row.warning[0]) {
            EXPECT_TRUE(engine.logged(row.warning)) << engine.log.text();
        }
    }
}

TEST(ActionSequencesTest, ResultsReachTheVariableAndTheLog)
{
    const struct
    {
        const char* action;
        TeskUtils::ErrorCode answer;
        const char* result;
        const char* line;
    } rows[] = {
        { "<RunProgram Arguments=\"a\">/p</RunProgram>", TeskUtils::ErrorCode("runProgram", 3, "Exited"), "3",
            "ERROR: RunProgram was NOT started: (3 | Exited) \"/p a\"" },
        { "<RunProgram>/p</RunProgram>", TeskUtils::ErrorCode("runProgram", -1, "Empty"), "1",
            "ERROR: RunProgram was NOT started: (-1 | Empty) \"/p \"" },
        { "<RunProgram Arguments=\"x\">/p</RunProgram>", TeskUtils::ErrorCode(), "0",
            "RunProgram was started: (0) \"/p x\"" },
        { "<RunProgram Details=\"LessDebug\">/p</RunProgram>", TeskUtils::ErrorCode("r", 7, "x"), "7",
            "ERROR: RunProgram was NOT started: (7)" },
        { "<OpenURL>http://h</OpenURL>", TeskUtils::ErrorCode("r", 1, "No browser"), "1",
            "ERROR: URL was NOT opened: (1 | No browser) \"http://h\"" },
        { "<OpenDocument>/a</OpenDocument>", TeskUtils::ErrorCode(), "0", "Document was opened: (0) \"/a\"" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.action);
        std::string action = row.action;
        action.insert(action.find('>'), " ResultVariable=\"R\"");
        SequenceEngine engine("<S>" + action + "</S>");
        engine.answer = row.answer;
        EXPECT_EQ(engine.RunFiles(nullptr, "S"), 0) << "a failed program doesn't fail the sequence";
        EXPECT_EQ(engine.value("R"), row.result);
        EXPECT_TRUE(engine.logged(row.line)) << engine.log.text();
    }
}

TEST(ActionSequencesTest, ExtendedParametersAreParsedAndChecked)
{
    SequenceEngine engine(R"(<S>
      <RunProgramEx Arguments="-v">
        <FileName>[DIR]//tool</FileName>
        <Environment Name="PATH" Flags="Append">[DIR]</Environment>
        <Environment Name="KEEP" Flags="keepcurrent"/>
        <Pipe Type="stdout" Dest="void"/>
        <Pipe Type="STDERR">[DIR]/err.log</Pipe>
        <Pipe Type="stdin" Condition="0">x</Pipe>
        <SystemErrorHandling>1F</SystemErrorHandling>
        <Bogus/>
      </RunProgramEx>
      <RunProgramEx ResultVariable="R"><FileName>[NOPE]/x</FileName></RunProgramEx>
      <RunProgramEx/>
    </S>)");
    engine.RunFiles(nullptr, "S");
    EXPECT_EQ(engine.calls,
        (std::vector<std::string> { "/opt/x/tool|-v|-|0|0|- env:2,PATH=/opt/x env:1,KEEP= pipe:1,0, "
                                    "pipe:2,1,/opt/x/err.log seh:31",
            "||-|0|0|-" }));
    EXPECT_EQ(engine.value("R"), "3");
    for (const char* line : { "WARNING: Unrecognized child tag in RunProgramEx encountered (Bogus)",
             "ERROR: Failed to extract extended run program params: [RunProgramEx] Could not expand the "
             "FileName tag data (missing variables?)" }) {
        EXPECT_TRUE(engine.logged(line)) << line << "\n" << engine.log.text();
    }
}

TEST(ActionSequencesTest, FileActionsWorkAndReport)
{
    TempDir dir;
    const std::string d = dir.path();
    ASSERT_TRUE(writeFile(d + "/doomed.txt", "x"));
    ASSERT_EQ(mkdir((d + "/full").c_str(), 0755), 0);
    ASSERT_TRUE(writeFile(d + "/full/keep.txt", "x"));
    ASSERT_EQ(mkdir((d + "/empty").c_str(), 0755), 0);
    ASSERT_EQ(mkdir((d + "/empty/inner").c_str(), 0755), 0);
    const struct
    {
        std::string action;
        const char* result;
        std::string line;
    } rows[] = {
        { "<CopyFile Dest=\"[D]//c.txt\">[D]/full/keep.txt</CopyFile>", "0",
            "Additional copy : \"" + d + "/c.txt\"" },
        { "<CopyFile Dest=\"[D]/c2\">[D]/none</CopyFile>", "1",
            "ERROR: Additional copy FAILED : \"" + d + "/c2\"" },
        { "<RemoveFile>[D]/doomed.txt</RemoveFile>", "0",
            "Additionally removed file : \"" + d + "/doomed.txt\"" },
        { "<RemoveFile>[D]/full</RemoveFile>", "1",
            "ERROR: Remove file could not remove file \"" + d + "/full\"!" },
        { "<RemoveDir>[D]/empty/inner</RemoveDir>", "0",
            "Additionally removed dir : \"" + d + "/empty/inner\"" },
        { "<RemoveDir>[D]/full</RemoveDir>", "1",
            "ERROR: Remove dir could not remove directories \"" + d + "/full\"!" },
        { "<ChangeOwner Dest=\"[D]/none\">;</ChangeOwner>", "1",
            "WARNING: The file for owner changing does not exist! (" + d + "/none)" },
        { "<ChangeOwner Dest=\"[D]/c.txt\">1;2;3</ChangeOwner>", "1",
            "WARNING: More than two tokens provided for change owner ids (expected <userId>;<groupId> got "
            "1;2;3)" },
        { "<CreateFile>a.txt</CreateFile>", "0",
            "ERROR: Create file without Dest attribute (alias: \"a.txt\")!" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.action);
        std::string action = row.action;
        action.insert(action.find('>'), " ResultVariable=\"R\"");
        SequenceEngine engine("<S>" + action + "</S>");
        engine.SetVar("D", d.c_str());
        EXPECT_EQ(engine.RunFiles(nullptr, "S"), 0);
        EXPECT_EQ(engine.value("R"), row.result);
        EXPECT_NE(engine.log.text().find(row.line), std::string::npos) << engine.log.text();
    }
    EXPECT_EQ(readFile(d + "/c.txt"), "x");
    EXPECT_FALSE(fileExists(d + "/doomed.txt"));
    EXPECT_FALSE(fileExists(d + "/empty")) << "the emptied parent goes as well";
}

} // namespace
