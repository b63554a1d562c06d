// The action log: the variable block written, read back and rewritten, the records
// written and split, and LineArray.
#include <cstdio>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/strings/exceptions.h"
#include "installer/transaction/action_log.h"
#include "installer/variables/variables_helpers.h"
#include "support/paths.h"

using quilbtest::readFile;
using quilbtest::TempDir;
using quilbtest::writeFile;

namespace {

// The text of the InstallerError that `call` threw, or "" when it returned.
template <class Call> std::string thrownText(Call call)
{
    try {
        call();
    } catch (const InstallerError& error) {
        return error.what();
    }
    return "";
}

// UpdateVars on an engine whose template names `logPath` (null: none), holding A="new", an
// excluded variable, EMPTY="" and `name`=`value`; the text it threw.
std::string updateVars(
    const std::string* logPath, const std::string& name = "L", const std::string& value = "")
{
    ProbeInstaller engine;
    std::string text = "<QuilbGroupInstallation><Installation><Uninstall><InstallLogFile>"
        + (logPath ? *logPath : "") + "</InstallLogFile></Uninstall></Installation></QuilbGroupInstallation>";
    std::vector<char> buffer(text.c_str(), text.c_str() + text.size() + 1);
    engine.templateXml.ParseTag(buffer.data());
    engine.appendRecord("A", "new");
    engine.appendRecord("SKIPPED", "x");
    engine.appendRecord("EMPTY", "");
    engine.addExcludeVar("SKIPPED", Installer::EXCLUDE_FROM_LOG);
    engine.appendRecord(name.c_str(), value.c_str());
    return thrownText([&] { engine.UpdateVars(); });
}

const std::string kHead = "/opt/p/uninstall.xml\r\n/opt/p/backup.bin\r\n";

} // namespace

TEST(ActionLogVariables, WriteVarsLeavesOutUnnamedAndLogExcludedVariables)
{
    ProbeInstaller engine;
    const std::string longName(600, 'N'), longValue(519, 'v');
    for (const char* name : { "A", "", "EMPTY", "SECRET", "CONFIG_ONLY", longName.c_str() })
        engine.appendRecord(name, *name == 'E' ? "" : *name == 'N' ? longValue.c_str() : "1");
    engine.addExcludeVar("SECRET", Installer::EXCLUDE_FROM_CONFIG);
    engine.addExcludeVar("SECRET", Installer::EXCLUDE_FROM_LOG | Installer::EXCLUDE_FROM_CONFIG);
    engine.addExcludeVar("CONFIG_ONLY", Installer::EXCLUDE_FROM_CONFIG);
    engine.addExcludeVar("a", Installer::EXCLUDE_FROM_LOG); // names compare exactly
    PMemoryConsole log;
    log.flags = 0;
    EXPECT_EQ(engine.WriteVars(log), 0);
    const std::string cut = ("VAR\t" + longName + "\t" + longValue).substr(0, 1022);
    EXPECT_EQ(
        log.text(), "NUMVARS\t4\r\nVAR\tA\t1\r\nVAR\tEMPTY\t\r\nVAR\tCONFIG_ONLY\t1\r\n" + cut + "\r\n");
}

TEST(ActionLogVariables, ReadersOnGoodAndDamagedBlocks)
{
    // outcome: initValuesFromLogFile's result and then A|B, or its error; getA: what getLogFileVar
    // gives for A ("-" for false); first: the line seekRecords leaves the stream at
    struct
    {
        const char *label, *log, *outcome, *getA, *first, *debug;
    } cases[] = {
        { "good", "h\r\nNUMVARS\t2\r\nVAR\tA\ta 1\r\nVAR\tB\t\t 2 \r\nFILE\tCREATE\t/x\r\n", "0 a 1|2", "a 1",
            "FILE\tCREATE\t/x", "" },
        { "empty value", "NUMVARS\t2\r\nVAR\tA\t\r\nVAR\tB\tb\r\nDIR\t1\t/d/\r\n", "1 <unknown>|b", "-",
            "DIR\t1\t/d/", "ERROR: Format error in variable format in log file (Read buff: VAR\tA)\r\n" },
        { "count 0", "NUMVARS\t0\r\nVAR\tA\t1\r\n", "0 <unknown>|<unknown>", "-", "VAR\tA\t1", "" },
        { "case, line behind the count", "NUMVARS\t1\r\nVAR\ta\tlow\r\nVAR\tA\tup\r\n", "0 low|<unknown>",
            "-", "VAR\tA\tup", "" },
        { "no block", "a\r\nVAR\tA\t1\r\n", "ERROR: No variable number found in the provided log file!", "-",
            "a", "" },
        { "count line not at the start", " NUMVARS\t1\r\nVAR\tA\t1\r\n",
            "ERROR: Error parsing the number of variables in log file!", "-", " NUMVARS\t1", "" },
        { "count beyond the end", "NUMVARS\t3\r\nVAR\tA\t1\r\n",
            "ERROR: Encountered EOF before expected number of variables (3)!", "1", "NUMVARS\t3", "" },
    };
    TempDir dir;
    const std::string path = dir.file("install.log");
    for (const auto& c : cases) {
        ASSERT_TRUE(writeFile(path, c.log));
        ProbeInstaller engine;
        FILE* stream = fopen(path.c_str(), "rb");
        fgetc(stream); // both readers start from the top whatever the position
        int result = -9;
        std::string outcome = thrownText([&] { result = engine.initValuesFromLogFile(stream); });
        outcome = outcome.empty() ? std::to_string(result) + " " + engine.value("A") + "|" + engine.value("B")
                                  : outcome;
        EXPECT_EQ(outcome, c.outcome) << c.label;
        EXPECT_EQ(engine.log.text(), c.debug) << c.label;
        char line[ActionLog::kReadLineSize] = "", out[64] = "-";
        ActionLog::seekRecords(stream);
        ActionLog::readLine(stream, line);
        EXPECT_STREQ(line, c.first) << c.label;
        fclose(stream);
        engine.getLogFileVar(path.c_str(), "A", out, sizeof out);
        EXPECT_STREQ(out, c.getA) << c.label;
    }

    // getLogFileVar cuts the value at its field, then at the caller's buffer (size 0: found, untouched).
    ASSERT_TRUE(writeFile(path, "NUMVARS\t1\r\nVAR\tL\t" + std::string(600, 'x') + "\r\n"));
    ProbeInstaller engine;
    std::string out(1024, '-');
    for (int size : { 1024, 4, 0 })
        EXPECT_TRUE(engine.getLogFileVar(path.c_str(), "L", &out[0], size)) << size;
    EXPECT_EQ(
        out.substr(0, 520), "xxx" + std::string(1, '\0') + std::string(515, 'x') + std::string(1, '\0'));
    EXPECT_FALSE(engine.getLogFileVar(dir.file("missing.log").c_str(), "L", &out[0], 8));
    EXPECT_FALSE(engine.getLogFileVar(nullptr, "L", &out[0], 8)
        || engine.getLogFileVar(path.c_str(), nullptr, &out[0], 8));

    EXPECT_EQ(thrownText([&] { engine.initValuesFromLogFile(nullptr); }),
        "ERROR: Invalid file handle for reading values from log!");
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    FILE* pipeEnd = fdopen(fds[0], "rb");
    EXPECT_EQ(thrownText([&] { engine.initValuesFromLogFile(pipeEnd); }),
        "ERROR: The file handle for reading values from log could not be reset!");
    fclose(pipeEnd);
    close(fds[1]);

    // ReadVars reads the open log; a failure costs a debug line and a non-zero result.
    EXPECT_EQ(engine.ReadVars(), -1);
    EXPECT_EQ(engine.log.text(), "ERROR: Invalid file handle for reading values from log!\r\n");
    ASSERT_EQ(engine.Init(path.c_str(), 0, 1), 0); // opens the log as an uninstall does
    EXPECT_EQ(engine.ReadVars(), 0);
    EXPECT_EQ(engine.value("L"), std::string(519, 'x'));
}

TEST(ActionLogVariables, UpdateVarsReplacesTheBlockAndKeepsTheRecords)
{
    const std::string records
        = "DIR\t1\t/opt/p/\r\nSHORTCUT\tSYMLINK\t/usr/bin/p\n\r\nFILE\tOVER\t/opt/p/VARx\r\n";
    const std::string old = kHead + "NUMVARS\t2\r\nVAR\tA\told\r\nVAR\tGONE\tx\r\n";
    const std::string name(700, 'N'), value(519, 'v'); // whole, though longer than a console line
    const std::string updated
        = kHead + "NUMVARS\t3\r\nVAR\tA\tnew\r\nVAR\tEMPTY\t\r\nVAR\t" + name + "\t" + value + "\r\n";
    // after: the log afterwards, "" when it must stay as it was
    struct
    {
        const char* label;
        std::string before, after, error;
    } cases[] = {
        { "records kept", old + records, updated + records, "" },
        { "a record holding VAR is swallowed", old + "FILE\tCREATE\t/opt/VARIOUS/f\r\n" + records,
            updated + records, "" },
        { "nothing behind the block", old, "", "ERROR: No variables in action file" },
        { "no block", kHead + records, "", "ERROR: No variables in action file" },
    };
    for (const auto& c : cases) {
        TempDir dir;
        const std::string path = dir.file("install.log");
        ASSERT_TRUE(writeFile(path, c.before));
        EXPECT_EQ(updateVars(&path, name, value), c.error) << c.label;
        EXPECT_EQ(readFile(path), c.after.empty() ? c.before : c.after) << c.label;
        EXPECT_FALSE(quilbtest::fileExists(dir.file("templog.log"))) << c.label;
    }

    TempDir dir;
    const std::string missing = dir.file("missing.log"), temp = dir.file("templog.log");
    EXPECT_EQ(updateVars(nullptr), "ERROR: Obtaining install actionlog filename");
    EXPECT_EQ(updateVars(&missing), "ERROR: Opening action file (" + missing + ")");
    ASSERT_TRUE(writeFile(temp, old + records)); // a log can't be its own temporary file
    EXPECT_EQ(updateVars(&temp), "ERROR: Creating temp file for new log (" + temp + ")");
    EXPECT_EQ(readFile(temp), old + records);
}

TEST(ActionLogRecords, WrittenRecordsReadBackBehindTheBlock)
{
    TempDir dir;
    PFileConsole log;
    log.flags = 0;
    ASSERT_EQ(log.Create(dir.file("install.log").c_str(), 0), 0);
    log.Dump("NUMVARS\t1\r\nVAR\tA\t1");
    ActionLog::writeDir(log, 0, "/opt/none/");
    ActionLog::writeDir(log, 2, "/opt/p/");
    ActionLog::writeFile(log, false, "/opt/p/a");
    ActionLog::writeFile(log, true, "/opt/p/b");
    ActionLog::writeRecord(log, "INI", "");
    ActionLog::writeRecord(log, "SHORTCUT", "SYMLINK\t/usr/bin/p\n");
    ActionLog::writeFirewallApp(log, "/opt/p/server");
    ActionLog::writeFirewallPort(log, 8080, "TCP;UDP", "web");
    log.Done();
    EXPECT_EQ(readFile(dir.file("install.log")),
        "NUMVARS\t1\r\nVAR\tA\t1\r\nDIR\t2\t/opt/p/\r\nFILE\tCREATE\t/opt/p/a\r\nFILE\tOVER\t/opt/p/"
        "b\r\nINI\t\r\n"
        "SHORTCUT\tSYMLINK\t/usr/bin/p\n\r\nFIREWALL\tAPP\t/opt/p/"
        "server\r\nFIREWALL\tPORT\t8080\tTCP;UDP\tweb\r\n");

    FILE* stream = fopen(dir.file("install.log").c_str(), "rb");
    ActionLog::seekRecords(stream);
    std::string read;
    for (char line[ActionLog::kReadLineSize]; ActionLog::readLine(stream, line);) {
        ActionLog::RecordKind kind = ActionLog::recordKind(line);
        read += std::to_string(kind) + ":" + ActionLog::recordText(line, kind) + "|";
    }
    fclose(stream);
    EXPECT_EQ(read,
        "1:2\t/opt/p/|2:CREATE\t/opt/p/a|2:OVER\t/opt/p/b|4:|6:SYMLINK\t/usr/bin/p|0:|"
        "7:APP\t/opt/p/server|7:PORT\t8080\tTCP;UDP\tweb|");
}

TEST(ActionLogRecords, RecognisedByPrefixAndSplitAtTabRuns)
{
    // split: of a DIR record "parsed count|directory", of a FILE record "found over|path",
    // with 9 and "-" where nothing was stored
    struct
    {
        const char* line;
        ActionLog::RecordKind kind;
        const char *text, *split;
    } cases[] = {
        { "DIR\t2\t/opt/a/", ActionLog::RecordDir, "2\t/opt/a/", "1 2|/opt/a/" },
        { "DIRECTORY\t1\t/x", ActionLog::RecordDir, "ECTORY\t1\t/x", "0 0|1\t/x" },
        { "DIR\tmany\t/c/", ActionLog::RecordDir, "many\t/c/", "0 0|/c/" },
        { "FILE\tCREATE\t/f", ActionLog::RecordFile, "CREATE\t/f", "1 0|/f" },
        { "FILE\t\tOVER\t\t\t/g h", ActionLog::RecordFile, "OVER\t\t\t/g h", "1 1|/g h" },
        { "FILE\tOVERWRITE\t/f", ActionLog::RecordFile, "OVERWRITE\t/f", "0 9|-" },
        { "FILE\tCREATED\t/f", ActionLog::RecordFile, "CREATED\t/f", "0 9|-" },
        { "FILE\tCREATE", ActionLog::RecordFile, "CREATE", "1 0|" },
        { "MODIFYFILE\tADDAFTER\t/t\t/m", ActionLog::RecordModifyFile, "ADDAFTER\t/t\t/m", "" },
        { "dir\t1\t/x", ActionLog::RecordUnknown, "dir\t1\t/x", "" },
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ActionLog::recordKind(c.line), c.kind) << c.line;
        EXPECT_STREQ(ActionLog::recordText(c.line, c.kind), c.text) << c.line;
        int count = 9;
        bool over = true, ok = false;
        const char* rest = "-";
        if (c.kind == ActionLog::RecordDir)
            ok = ActionLog::splitDir(c.line, count, rest);
        else if (c.kind == ActionLog::RecordFile)
            ok = ActionLog::splitFile(c.line, over, rest), count = ok ? over : 9;
        std::string split = std::to_string(ok) + " " + std::to_string(count) + "|" + rest;
        EXPECT_EQ(*c.split ? split : "", c.split) << c.line;
    }
    EXPECT_EQ(ActionLog::recordKind(nullptr), ActionLog::RecordUnknown);
}

TEST(ActionLogLineArray, ReadsLinesOfBoundedLength)
{
    TempDir dir;
    const std::string x(1500, 'x');
    ASSERT_TRUE(writeFile(dir.file("lines"), "a\nb\r\n\n" + x + "\nlast"));
    const std::string all = "a|b\r||" + x.substr(0, 1023) + "|" + x.substr(1023) + "|last|";
    // lines: "first|second|...", "null" for an entry not read
    struct
    {
        int count;
        bool result;
        std::string lines;
    } cases[] = {
        { 0, true, "" },
        { 2, true, "a|b\r|" },
        { 6, true, all },
        { 8, false, all + "null|null|" },
        { -1, false, "" },
    };
    LineArray array;
    for (const auto& c : cases) {
        FILE* stream = fopen(dir.file("lines").c_str(), "rb");
        EXPECT_EQ(array.read(stream, c.count), c.result) << c.count;
        fclose(stream);
        EXPECT_EQ(array.count, c.count);
        std::string lines;
        for (int i = 0; i < array.count; ++i)
            lines += std::string(array.lines[i] ? array.lines[i] : "null") + "|";
        EXPECT_EQ(lines, c.lines) << c.count;
    }
    array.free();
    EXPECT_TRUE(array.count == 0 && array.lines == nullptr);
}
