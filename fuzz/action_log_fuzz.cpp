// Fuzz target of the action log readers. The input is written as an action log into a
// private temporary directory and read by every reader: getLogFileVar, initValuesFromLogFile
// (into an engine whose template names that log), UpdateVars on it, LineArray::read, and the
// uninstall's walk (seekRecords, readLine, recordKind and the splitters). Checks: results
// within their documented values, copies terminated within their buffers, field pointers
// inside their line, and a failed rewrite leaves the log as it was and no temporary file.
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include "foundation/strings/exceptions.h"
#include "fuzz_engine.h"
#include "installer/transaction/action_log.h"

namespace {

void check(bool condition, const char* what)
{
    fuzzCheck(condition, "action_log_fuzz", what);
}

// The private directory of this process, removed with its files at exit.
struct ScratchDir
{
    std::string path;
    ScratchDir()
    {
        const char* base = getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/quilb-action-log-fuzz.XXXXXX";
        std::vector<char> buffer(pattern.c_str(), pattern.c_str() + pattern.size() + 1);
        check(mkdtemp(buffer.data()) != nullptr, "no scratch directory");
        path = buffer.data();
    }
    ~ScratchDir()
    {
        unlink(file("install.log").c_str());
        unlink(file("templog.log").c_str());
        rmdir(path.c_str());
    }
    std::string file(const char* name) const { return path + "/" + name; }
};

// The fuzz engine with its template naming `logPath` as the action log; "$NAME" variables
// of the input are dropped, so that runs don't fill the process environment.
class LogEngine : public FuzzEngine
{
public:
    explicit LogEngine(const std::string& logPath)
    {
        std::string text = "<QuilbGroupInstallation><Installation><Uninstall><InstallLogFile>" + logPath
            + "</InstallLogFile></Uninstall></Installation></QuilbGroupInstallation>";
        std::vector<char> buffer(text.c_str(), text.c_str() + text.size() + 1);
        templateXml.ParseTag(buffer.data());
    }
    int SetVar(const char* name, const char* value) override
    {
        if (name && name[0] == '$')
            return -1;
        return FuzzEngine::SetVar(name, value);
    }
};

bool writeAll(const std::string& path, const uint8_t* data, size_t size)
{
    FILE* file = fopen(path.c_str(), "wb");
    if (!file)
        return false;
    bool ok = fwrite(data, 1, size, file) == size;
    return fclose(file) == 0 && ok;
}

std::string readAll(const std::string& path)
{
    std::string content;
    FILE* file = fopen(path.c_str(), "rb");
    if (!file)
        return "<missing>";
    char buffer[4096];
    size_t got;
    while ((got = fread(buffer, 1, sizeof buffer, file)) > 0)
        content.append(buffer, got);
    fclose(file);
    return content;
}

bool within(const char* pointer, const char* line)
{
    return pointer >= line && pointer <= line + strlen(line);
}

void checkGetLogFileVar(Installer& engine, const std::string& path, const char* name, int size)
{
    char out[600];
    memset(out, 'z', sizeof out);
    bool found = engine.getLogFileVar(path.c_str(), name, out, size);
    if (found && size > 0)
        check(strnlen(out, static_cast<size_t>(size)) < static_cast<size_t>(size),
            "value not terminated in its buffer");
    else
        check(out[0] == 'z', "value copied without being found");
    if (size < static_cast<int>(sizeof out))
        check(out[size] == 'z', "value written past its buffer");
}

void walkRecords(const std::string& path)
{
    FILE* stream = fopen(path.c_str(), "rb");
    check(stream != nullptr, "log can't be opened");
    ActionLog::seekRecords(stream);
    char line[ActionLog::kReadLineSize];
    while (ActionLog::readLine(stream, line)) {
        size_t length = strlen(line);
        check(length < sizeof line, "line past its buffer");
        check(length == 0 || !isspace(static_cast<unsigned char>(line[length - 1])), "trailing space kept");
        ActionLog::RecordKind kind = ActionLog::recordKind(line);
        const char* text = ActionLog::recordText(line, kind);
        check(
            within(text, line) && (kind != ActionLog::RecordUnknown || text == line), "record text outside");
        int count = -1;
        const char* rest = nullptr;
        bool over = false;
        if (kind == ActionLog::RecordDir) {
            bool parsed = ActionLog::splitDir(line, count, rest);
            check(within(rest, line) && (parsed || count == 0), "DIR split");
        } else if (kind == ActionLog::RecordFile && ActionLog::splitFile(line, over, rest)) {
            check(within(rest, line) && (rest == text + strlen(text) || rest[-1] == '\t'), "FILE split");
        }
        check(within(ActionLog::nextField(text), line), "next field outside");
    }
    fclose(stream);
}

void readLines(const std::string& path, int count)
{
    FILE* stream = fopen(path.c_str(), "rb");
    check(stream != nullptr, "log can't be opened");
    LineArray lines;
    bool complete = lines.read(stream, count);
    check(lines.count == count, "count not kept");
    for (int i = 0; i < count; ++i) {
        check(!complete || lines.lines[i], "entry missing after a complete read");
        if (lines.lines[i])
            check(strlen(lines.lines[i]) < ActionLog::kLineArrayReadSize && !strchr(lines.lines[i], '\n'),
                "line");
    }
    fclose(stream);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static ScratchDir scratch;
    if (size > 65536)
        return 0;
    const std::string path = scratch.file("install.log");
    const std::string input(reinterpret_cast<const char*>(data), size);
    check(writeAll(path, data, size), "log can't be written");

    LogEngine engine(path);
    checkGetLogFileVar(engine, path, "A", size > 0 ? data[0] % 8 : 1);
    checkGetLogFileVar(engine, path, "A", 520);
    checkGetLogFileVar(engine, path, "INSTALLDIR", 0);

    FILE* stream = fopen(path.c_str(), "rb");
    check(stream != nullptr, "log can't be opened");
    try {
        int result = engine.initValuesFromLogFile(stream);
        check(result == 0 || result == 1, "result of initValuesFromLogFile");
    } catch (const InstallerError&) {
    }
    fclose(stream);
    int kept = 0;
    for (const VariableRecord& record : engine.variables) {
        check(strnlen(record.name, sizeof record.name) < sizeof record.name, "name not terminated");
        check(strnlen(record.value, sizeof record.value) < sizeof record.value, "value not terminated");
        kept += record.name[0] != '\0';
    }

    walkRecords(path);
    readLines(path, size > 1 ? data[1] : 0);

    // The rewrite works inside the scratch directory only.
    bool rewritten = true;
    try {
        engine.UpdateVars();
    } catch (const InstallerError&) {
        rewritten = false;
    }
    check(access(scratch.file("templog.log").c_str(), F_OK) != 0, "temporary log left behind");
    if (!rewritten) {
        check(readAll(path) == input, "failed rewrite changed the log");
    } else {
        check(input.find("NUMVARS") != std::string::npos, "rewrite without a block");
        check(readAll(path).find("NUMVARS\t" + std::to_string(kept) + "\r\n") != std::string::npos,
            "new count line");
    }
    unlink(path.c_str());
    return 0;
}
