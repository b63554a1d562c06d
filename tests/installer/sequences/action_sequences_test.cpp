// Action sequences on an engine whose process runner only records: which actions run, in
// which order, with which program, arguments, flags and poll interval, what the file actions
// do in a temporary directory, and what lands in the ResultVariable and the debug log.
#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "foundation/streams/pmemory_console.h"
#include "installer/installer.h"
#include "support/paths.h"
#include "support/process.h"

using namespace quilbtest;

namespace {

// One call of runProgram as the engine made it.
struct RunCall
{
    std::string program;
    std::string arguments;
    std::string workDir; // "<null>" for none
    unsigned flags;
    unsigned pollMs;
    bool withUI;
    std::string ext; // the extended parameters in short, "<none>" without
};

std::string describe(const ExtendedRunProgramParams* ext)
{
    if (!ext)
        return "<none>";
    std::string out;
    for (int i = 0; i < ext->environment.count; ++i) {
        const ExtendedRunProgramParams::Environment& e = ext->environment[i];
        out += "env(" + std::to_string(e.flags) + "," + e.name.c_str() + "=" + e.value.c_str() + ") ";
    }
    for (int i = 0; i < ext->pipes.count; ++i) {
        const ExtendedRunProgramParams::Pipe& p = ext->pipes[i];
        out += "pipe(" + std::to_string(p.type) + "," + std::to_string(p.dest) + "," + p.fileName.c_str()
            + ") ";
    }
    if (ext->hasSystemErrorHandling)
        out += "seh(" + std::to_string(ext->systemErrorHandling) + ")";
    return out;
}

class SequenceEngine : public Installer
{
public:
    SequenceEngine()
    {
        log.flags = 0;
        InitDebugMode(&log, 0);
    }
    void load(const std::string& sequences)
    {
        std::string text = "<QuilbGroupInstallation><Installation>" + sequences
            + "</Installation></QuilbGroupInstallation>";
        std::vector<char> buffer(text.begin(), text.end());
        buffer.push_back('\0');
        templateXml.ParseTag(buffer.data());
    }
    TeskUtils::ErrorCode runProgram(const char* cmd, const char* args, unsigned flags, const char* workDir,
        InstallerUI* ui, unsigned pollMs, TeskUtils::CharString* output,
        const ExtendedRunProgramParams* ext) const override
    {
        EXPECT_EQ(output, nullptr) << "a sequence captures nothing";
        calls.push_back({ cmd ? cmd : "<null>", args ? args : "<null>", workDir ? workDir : "<null>", flags,
            pollMs, ui != nullptr, describe(ext) });
        if (answers.empty())
            return TeskUtils::ErrorCode();
        TeskUtils::ErrorCode answer = answers.front();
        answers.erase(answers.begin());
        return answer;
    }
    std::string value(const char* name)
    {
        char buffer[1024];
        return GetVar(name, buffer, sizeof buffer) == -1 ? "<unset>" : buffer;
    }
    bool logged(const std::string& line) const { return log.text().find(line + "\r\n") != std::string::npos; }

    PMemoryConsole log;
    mutable std::vector<RunCall> calls;
    mutable std::vector<TeskUtils::ErrorCode> answers;
};

// A front end that keeps the lines it was shown, and the runs they came between.
class ListUI : public InstallerUI
{
public:
    explicit ListUI(SequenceEngine* watched = nullptr)
        : engine(watched)
    {
    }
    int EndDecompress(const char* text, bool close) override
    {
        lines.push_back(std::string(text ? text : "<null>") + (close ? "|close" : "")
            + (engine ? "@" + std::to_string(engine->calls.size()) : ""));
        return 0;
    }
    SequenceEngine* engine;
    std::vector<std::string> lines;
};

TEST(ActionSequencesTest, ElementsAndActionsRunInDocumentOrderUnderTheirConditions)
{
    SequenceEngine engine;
    engine.load(R"(
      <Setup>
        <RunProgram Arguments="one">/bin/first</RunProgram>
        <RunProgram Condition="0">/bin/skipped</RunProgram>
        <Frobnicate ResultVariable="R_UNKNOWN">x</Frobnicate>
        <RunProgram ResultVariable="R_EMPTY"></RunProgram>
        <OpenDocument ResultVariable="R_EMPTY"/>
        <Registry ResultVariable="R_REG"/>
        <runprogram Condition="1=1">/bin/second</runprogram>
      </Setup>
      <Setup Condition="0"><RunProgram>/bin/never</RunProgram></Setup>
      <Other><RunProgram>/bin/other</RunProgram></Other>
      <Setup Condition="[FLAG]==1"><RunProgram>/bin/third</RunProgram></Setup>)");
    engine.SetVar("FLAG", "1");
    engine.SetVar("R_UNKNOWN", "untouched");
    engine.SetVar("R_EMPTY", "untouched");
    ListUI ui;
    EXPECT_EQ(engine.RunFiles(&ui, "Setup"), 0);

    std::vector<std::string> programs;
    for (const RunCall& call : engine.calls)
        programs.push_back(call.program);
    EXPECT_EQ(programs, (std::vector<std::string> { "/bin/first", "/bin/second", "/bin/third" }));
    EXPECT_EQ(engine.calls[0].arguments, "one");
    EXPECT_EQ(engine.value("R_UNKNOWN"), "untouched") << "an unknown action leaves its variable alone";
    EXPECT_EQ(engine.value("R_EMPTY"), "untouched") << "an action without text is skipped without a word";
    EXPECT_EQ(engine.value("R_REG"), "0");
    EXPECT_TRUE(engine.logged("Running Files for installation tag: <Setup>"));
    EXPECT_TRUE(engine.logged("WARNING: Unknown action (skipped): Frobnicate"));
    EXPECT_TRUE(engine.logged("WARNING: Registry operation on Linux/OSX system!"));
    EXPECT_EQ(ui.lines, (std::vector<std::string> { "<null>|close", "<null>|close" }))
        << "one closing line per element that ran";

    EXPECT_EQ(engine.RunFiles(&ui, nullptr), -1);
    EXPECT_EQ(engine.RunFiles(nullptr, "Missing"), 0);
}

TEST(ActionSequencesTest, AttributesGiveFlagsAndPollInterval)
{
    const struct
    {
        const char* attributes;
        unsigned flags;
        unsigned pollMs;
    } rows[] = {
        { "", 0, 0 },
        { "Wait=\"\"", Installer::RUN_WAIT, 0 },
        { "Wait=\"0\"", 0, 0 },
        { "Wait=\"[ONE]==1\" AsRoot=\"1\"", Installer::RUN_WAIT | Installer::RUN_AS_ROOT, 0 },
        { "Wait=\"((\"", Installer::RUN_WAIT, 0 }, // a condition that can't be parsed holds
        { "Asynchronous=\"1\" Wait=\"1\"", Installer::RUN_ASYNCHRONOUS | Installer::RUN_WAIT, 0 },
        { "ProgressUpdate=\"5\"", Installer::RUN_PROGRESS, 50 },
        { "ProgressUpdate=\"0\"", 0, 0 },
        { "ErrorOutput=\"[ONE]==0\"", Installer::RUN_NO_STDERR, 0 },
        { "ErrorOutput=\"\"", 0, 0 },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.attributes);
        SequenceEngine engine;
        engine.SetVar("ONE", "1");
        engine.load(std::string("<S><RunProgram ") + row.attributes + ">/bin/p</RunProgram></S>");
        ListUI ui;
        engine.RunFiles(&ui, "S");
        ASSERT_EQ(engine.calls.size(), 1u);
        EXPECT_EQ(engine.calls[0].flags, row.flags);
        EXPECT_EQ(engine.calls[0].pollMs, row.pollMs);
        EXPECT_TRUE(engine.calls[0].withUI);
        EXPECT_EQ(engine.calls[0].workDir, "<null>");
    }
}

TEST(ActionSequencesTest, TextIsExpandedCorrectedAndCased)
{
    const struct
    {
        const char* name;
        const char* action;
        std::string program;
        std::string arguments;
        std::string workDir;
        const char* warning; // a debug line that must be there, or ""
    } rows[] = {
        { "expanded", "<RunProgram>[DIR]/tool</RunProgram>", "/opt/x/tool", "", "<null>", "" },
        { "not expanded", "<RunProgram Details=\"noexpansion\">[DIR]/tool</RunProgram>", "[DIR]/tool", "",
            "<null>", "" },
        { "path corrected", "<RunProgram> /opt//x\\tool </RunProgram>", "/opt/x/tool", "", "<null>", "" },
        { "not corrected", "<RunProgram Details=\"NoPathCorrection\">/opt//x</RunProgram>", "/opt//x", "",
            "<null>", "" },
        { "lowered", "<RunProgram Details=\"Lowercase\">/Opt/TOOL</RunProgram>", "/opt/tool", "", "<null>",
            "" },
        { "raised", "<RunProgram Details=\"LessDebug;Uppercase\">/opt/tool</RunProgram>", "/OPT/TOOL", "",
            "<null>", "" },
        { "both cases: neither", "<RunProgram Details=\"Lowercase;Uppercase\">/Opt/Tool</RunProgram>",
            "/Opt/Tool", "", "<null>",
            "WARNING: Encountered Details attribute containing both Lowercase and Uppercase (tag: S, child: "
            "RunProgram)!" },
        { "unknown detail", "<RunProgram Details=\"Quietly\">/p</RunProgram>", "/p", "", "<null>",
            "WARNING: Unrecognized details flag (Quietly) for tag RunProgram" },
        { "extension stripped", "<RunProgram StripExeExt=\"\">/opt/tool.exe</RunProgram>", "/opt/tool", "",
            "<null>", "" },
        { "arguments and work dir expanded",
            "<RunProgram Arguments=\"--dir=[DIR] 'a  b'\" WorkDir=\"[DIR]//sub \">/p</RunProgram>", "/p",
            "--dir=/opt/x 'a  b'", "/opt/x/sub", "" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        SequenceEngine engine;
        engine.SetVar("DIR", "/opt/x");
        engine.load(std::string("<S>") + row.action + "</S>");
        engine.RunFiles(nullptr, "S");
        ASSERT_EQ(engine.calls.size(), 1u);
        EXPECT_EQ(engine.calls[0].program, row.program);
        EXPECT_EQ(engine.calls[0].arguments, row.arguments);
        EXPECT_EQ(engine.calls[0].workDir, row.workDir);
        if (row.warning[0]) {
            EXPECT_TRUE(engine.logged(row.warning)) << engine.log.text();
        }
    }
}

TEST(ActionSequencesTest, ResultsReachTheVariableAndTheLog)
{
    const struct
    {
        const char* name;
        const char* action;
        TeskUtils::ErrorCode answer;
        std::string result;
        std::string line;
    } rows[] = {
        { "program exits with 3", "<RunProgram Arguments=\"a\" ResultVariable=\"R\">/bin/p</RunProgram>",
            TeskUtils::ErrorCode("runProgram", 3, "Child process exited with error code"), "3",
            "ERROR: RunProgram was NOT started: (3 | Child process exited with error code) \"/bin/p a\"" },
        { "a code of -1 reads as 1", "<RunProgram ResultVariable=\"R\">/bin/p</RunProgram>",
            TeskUtils::ErrorCode("runProgram", -1, "Empty command line!"), "1",
            "ERROR: RunProgram was NOT started: (-1 | Empty command line!) \"/bin/p \"" },
        { "success", "<RunProgram Arguments=\"x y\" ResultVariable=\"R\">/bin/p</RunProgram>",
            TeskUtils::ErrorCode(), "0", "RunProgram was started: (0) \"/bin/p x y\"" },
        { "less debug", "<RunProgram Details=\"LessDebug\" ResultVariable=\"R\">/bin/p</RunProgram>",
            TeskUtils::ErrorCode("runProgram", 7, "x"), "7", "ERROR: RunProgram was NOT started: (7)" },
        { "URL not opened", "<OpenURL ResultVariable=\"R\">http://Host//a</OpenURL>",
            TeskUtils::ErrorCode("runProgram", 1, "Could not obtain usable browser"), "1",
            "ERROR: URL was NOT opened: (1 | Could not obtain usable browser) \"http://Host//a\"" },
        { "document opened", "<OpenDocument ResultVariable=\"R\">/doc//a.pdf</OpenDocument>",
            TeskUtils::ErrorCode(), "0", "Document was opened: (0) \"/doc/a.pdf\"" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        SequenceEngine engine;
        engine.load(std::string("<S>") + row.action + "</S>");
        engine.answers.push_back(row.answer);
        ListUI ui;
        EXPECT_EQ(engine.RunFiles(&ui, "S"), 0) << "a failed program doesn't fail the sequence";
        EXPECT_EQ(engine.value("R"), row.result);
        EXPECT_TRUE(engine.logged(row.line)) << engine.log.text();
    }

    // Opening goes without the front end, polls every 100 ms, and keeps the action's flags.
    SequenceEngine engine;
    engine.load("<S><OpenURL Wait=\"\">http://x</OpenURL><OpenDocument>/d</OpenDocument></S>");
    ListUI ui;
    engine.RunFiles(&ui, "S");
    ASSERT_EQ(engine.calls.size(), 2u);
    EXPECT_EQ(engine.calls[0].flags, Installer::RUN_OPEN | Installer::RUN_WAIT);
    EXPECT_EQ(engine.calls[1].flags, Installer::RUN_OPEN);
    for (const RunCall& call : engine.calls) {
        EXPECT_EQ(call.pollMs, 100u);
        EXPECT_FALSE(call.withUI);
        EXPECT_EQ(call.arguments, "<null>");
    }
}

TEST(ActionSequencesTest, ExtendedParametersAreParsedAndCheckedInFull)
{
    SequenceEngine engine;
    engine.SetVar("DIR", "/opt/x");
    engine.load(R"(<S>
      <RunProgramEx Arguments="-v" ResultVariable="R">
        <FileName>[DIR]//tool</FileName>
        <Environment Name="PATH" Flags="Append">[DIR]</Environment>
        <Environment Name="KEEP" Flags="keepcurrent"/>
        <Environment>nameless</Environment>
        <Environment Name="NOVALUE"/>
        <Environment Name="[NOPE]">v</Environment>
        <Pipe Type="stdout" Dest="void"/>
        <Pipe Type="STDERR">[DIR]/err.log</Pipe>
        <Pipe Type="stdweird">x</Pipe>
        <Pipe Type="stdin" Dest="file"></Pipe>
        <Pipe Type="stdout" Dest="socket">x</Pipe>
        <Pipe>x</Pipe>
        <Pipe Type="stdin" Condition="0">x</Pipe>
        <SystemErrorHandling>1F</SystemErrorHandling>
        <Bogus/>
      </RunProgramEx>
      <RunProgramEx ResultVariable="R2"><SystemErrorHandling>zz</SystemErrorHandling><SystemErrorHandling/></RunProgramEx>
      <RunProgramEx ResultVariable="R3"><FileName>[NOPE]/x</FileName><Pipe Type="stdout" Dest="void"/></RunProgramEx>
    </S>)");
    engine.RunFiles(nullptr, "S");
    ASSERT_EQ(engine.calls.size(), 2u) << "the third has a FileName that can't be expanded";
    EXPECT_EQ(engine.calls[0].program, "/opt/x/tool");
    EXPECT_EQ(engine.calls[0].arguments, "-v");
    EXPECT_EQ(
        engine.calls[0].ext, "env(2,PATH=/opt/x) env(1,KEEP=) pipe(1,0,) pipe(2,1,/opt/x/err.log) seh(31)");
    EXPECT_EQ(engine.calls[1].program, "") << "no FileName: the runner sees an empty command";
    EXPECT_EQ(engine.calls[1].ext, "");
    EXPECT_EQ(engine.value("R3"), "3");

    for (const char* line : {
             "WARNING: [Environment] Could not expand environment variable name: <unknown>",
             "WARNING: [Environment] Environment variable tag is missing a value",
             "WARNING: [Environment] Could not expand environment variable name: [NOPE]",
             "WARNING: [Pipe] Unknown pipe type stdweird",
             "WARNING: [Pipe] Invalid or no pipe destination file name provided",
             "WARNING: [Pipe] Specified pipe destination is not supported: socket",
             "WARNING: [Pipe] Pipes require \"Type\" attribute",
             "WARNING: Unrecognized child tag in RunProgramEx encountered (Bogus)",
             "WARNING: SystemErrorHandling data must be a number",
             "WARNING: SystemErrorHandling requires node data",
             "ERROR: Failed to extract extended run program params: [RunProgramEx] Could not expand the "
             "FileName tag data (missing variables?)",
         })
        EXPECT_TRUE(engine.logged(line)) << line << "\n" << engine.log.text();

    TeskUtils::CharString fileName;
    ExtendedRunProgramParams params;
    EXPECT_EQ(engine.extractExtendedRunParams(params, fileName, 100000).getError(), -1);
}

TEST(ActionSequencesTest, FileActionsWorkAndReport)
{
    TempDir dir;
    const std::string d = dir.path();
    ASSERT_TRUE(writeFile(d + "/source.txt", "content\n"));
    ASSERT_TRUE(writeFile(d + "/doomed.txt", "x"));
    ASSERT_EQ(mkdir((d + "/full").c_str(), 0755), 0);
    ASSERT_TRUE(writeFile(d + "/full/keep.txt", "x"));
    ASSERT_EQ(mkdir((d + "/empty").c_str(), 0755), 0);
    ASSERT_EQ(mkdir((d + "/empty/inner").c_str(), 0755), 0);
    const std::string owner = std::to_string(getuid()) + ";" + std::to_string(getgid());

    const struct
    {
        const char* name;
        std::string action;
        std::string result;
        std::string line;
    } rows[] = {
        { "copy", "<CopyFile Dest=\"[D]//copy.txt\">[D]/source.txt</CopyFile>", "0",
            "Additional copy : \"" + d + "/copy.txt\"" },
        { "copy of a missing file", "<CopyFile Dest=\"[D]/copy2.txt\">[D]/none.txt</CopyFile>", "1",
            "ERROR: Additional copy FAILED : \"" + d + "/copy2.txt\"" },
        { "copy without Dest", "<CopyFile>[D]/source.txt</CopyFile>", "1",
            "ERROR: Copy file without Dest attribute!" },
        { "remove a file", "<RemoveFile>[D]/doomed.txt</RemoveFile>", "0",
            "Additionally removed file : \"" + d + "/doomed.txt\"" },
        { "remove a missing file", "<RemoveFile>[D]/none.txt</RemoveFile>", "0",
            "WARNING: Tried to remove a file that doesn't exist \"" + d + "/none.txt\"." },
        { "remove a full directory as a file", "<RemoveFile>[D]/full</RemoveFile>", "1",
            "ERROR: Remove file could not remove file \"" + d + "/full\"!" },
        { "remove empty directories", "<RemoveDir>[D]/empty/inner</RemoveDir>", "0",
            "Additionally removed dir : \"" + d + "/empty/inner\"" },
        { "remove a full directory", "<RemoveDir>[D]/full</RemoveDir>", "1",
            "ERROR: Remove dir could not remove directories \"" + d + "/full\"!" },
        { "remove a missing directory", "<RemoveDir>[D]/gone</RemoveDir>", "0",
            "WARNING: Tried to remove a directory that doesn't exist \"" + d + "/gone\"." },
        { "owner kept as it is", "<ChangeOwner Dest=\"[D]/source.txt\">" + owner + "</ChangeOwner>", "0",
            "" },
        { "owner of a missing file", "<ChangeOwner Dest=\"[D]/none.txt\">;</ChangeOwner>", "1",
            "WARNING: The file for owner changing does not exist! (" + d + "/none.txt)" },
        { "owner with three ids", "<ChangeOwner Dest=\"[D]/source.txt\">1;2;3</ChangeOwner>", "1",
            "WARNING: More than two tokens provided for change owner ids (expected <userId>;<groupId> got "
            "1;2;3)" },
        { "owner without Dest", "<ChangeOwner>1</ChangeOwner>", "1",
            "ERROR: Change file owner without file name attribute and/or user string!" },
        { "create without Dest", "<CreateFile>a.txt</CreateFile>", "0",
            "ERROR: Create file without Dest attribute (alias: \"a.txt\")!" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        SequenceEngine engine;
        engine.SetVar("D", d.c_str());
        engine.load("<S>" + row.action.substr(0, row.action.find('>')) + " ResultVariable=\"R\""
            + row.action.substr(row.action.find('>')) + "</S>");
        EXPECT_EQ(engine.RunFiles(nullptr, "S"), 0);
        EXPECT_EQ(engine.value("R"), row.result);
        if (!row.line.empty()) {
            EXPECT_TRUE(engine.logged(row.line)) << engine.log.text();
        }
    }
    EXPECT_EQ(readFile(d + "/copy.txt"), "content\n");
    EXPECT_FALSE(fileExists(d + "/doomed.txt"));
    EXPECT_FALSE(fileExists(d + "/empty")) << "the emptied parent goes as well";
    EXPECT_TRUE(fileExists(d + "/full/keep.txt"));

    // Without a debug console a CopyFile without Dest gives 0.
    SequenceEngine quiet;
    quiet.InitDebugMode(nullptr, 0);
    quiet.load("<S><CopyFile ResultVariable=\"R\">/x</CopyFile></S>");
    quiet.RunFiles(nullptr, "S");
    EXPECT_EQ(quiet.value("R"), "0");
}

TEST(ActionSequencesTest, CreateFileFailureMakesTheSequenceFail)
{
    TempDir dir;
    SequenceEngine engine;
    engine.SetVar("D", dir.path().c_str());
    engine.load(R"(<S>
        <CreateFile Dest="[D]" FileMod="rwx" ResultVariable="R">files/a.txt</CreateFile>
        <RunProgram>/bin/after</RunProgram>
      </S>)");
    EXPECT_EQ(engine.RunFiles(nullptr, "S"), 1);
    EXPECT_EQ(engine.value("R"), "1");
    EXPECT_TRUE(engine.logged("WARNING: Failed to parse file modification - provided string: rwx"));
    EXPECT_TRUE(engine.logged("WARNING: Alias \"files/a.txt\" is not included in the installation"));
    ASSERT_EQ(engine.calls.size(), 1u) << "the sequence goes on";
    EXPECT_THROW(engine.createFileFromAlias("", "/tmp", false, false, 0444), InstallerError);
}

TEST(ActionSequencesTest, LogTextIsShownBeforeTheAction)
{
    SequenceEngine engine;
    engine.SetVar("DIR", "/opt/x");
    engine.SetVar("NOTHING", "");
    engine.load(R"(<S>
        <RunProgram Log="Installing into [DIR]">/bin/a</RunProgram>
        <RunProgram Log="[NOTHING]">/bin/b</RunProgram>
        <Unknown Log="Shown for an unknown action too"/>
        <RunProgram Log="Skipped" Condition="0">/bin/c</RunProgram>
      </S>)");
    ListUI ui(&engine);
    engine.RunFiles(&ui, "S");
    EXPECT_EQ(ui.lines,
        (std::vector<std::string> {
            "Installing into /opt/x|close@0", "Shown for an unknown action too|close@2", "<null>|close@2" }));
}

} // namespace
