// Fuzz target of the backup container's reader. The input is what follows the 39-byte
// header: records and an end mark, damaged in any way. The target restores it into a
// private directory, checks what the front end and the log were told, then writes the
// restored files into a fresh container with addFile and restores that one, which must
// succeed and leave every file as it was.
//
// Never writing outside the private directory: record names are absolute paths, and the
// reader opens them for writing. So the target does not hand the input over as it is; it
// walks the records in the same way as the reader and puts the private restore directory
// in front of every name it meets (adjusting the length word), the rest of the bytes left
// as they are. The walk stops at the end mark, at a name length that the reader refuses
// (0 or above 519), at a name or size cut by the end of the input, and at a size that is
// negative or runs past the input: the reader stops at each of these too, before it opens
// any file, and the rest is copied unchanged. Inputs with ".." in a name are skipped, so
// a prefixed name can't climb out. What is left: every name the reader acts on lies
// directly in the restore directory (the reader makes no directories, and nothing there
// is a link). The front end's texts and the log lines are checked to name only such
// paths, which would catch a reader that ever lost its place among the records.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/streams/pmemory_console.h"
#include "fuzz_engine.h"
#include "installer/transaction/backup_file.h"
#include "installer/wizard/installer_ui.h"

namespace {

const size_t kLongestName = 519;
const size_t kFieldBytes = 12;

void check(bool condition, const char* what)
{
    fuzzCheck(condition, "backup_file_fuzz", what);
}

bool startsWith(const std::string& text, const std::string& head)
{
    return text.compare(0, head.size(), head) == 0;
}

// The private directories of this process, removed at exit.
struct Workspace
{
    std::string base, restoreDir, prefix, container, copy;

    Workspace()
    {
        const char* tmp = getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/quilb_backup_fuzz.XXXXXX";
        check(mkdtemp(&pattern[0]) != nullptr, "no private directory");
        base = pattern;
        restoreDir = base + "/r";
        check(mkdir(restoreDir.c_str(), 0700) == 0, "no restore directory");
        prefix = restoreDir + "/";
        container = base + "/container";
        copy = base + "/copy";
    }
    ~Workspace()
    {
        clear();
        rmdir(restoreDir.c_str());
        unlink(container.c_str());
        unlink(copy.c_str());
        rmdir(base.c_str());
    }

    // Every file in the restore directory with its content.
    std::map<std::string, std::string> files() const
    {
        std::map<std::string, std::string> out;
        DIR* dir = opendir(restoreDir.c_str());
        check(dir != nullptr, "restore directory gone");
        while (dirent* entry = readdir(dir)) {
            std::string name = entry->d_name;
            if (name == "." || name == "..")
                continue;
            FILE* file = fopen((prefix + name).c_str(), "rb");
            check(file != nullptr, "unreadable restored file");
            std::string content;
            char block[4096];
            for (size_t got; (got = fread(block, 1, sizeof block, file)) > 0;)
                content.append(block, got);
            fclose(file);
            out[prefix + name] = content;
        }
        closedir(dir);
        return out;
    }

    void clear() const
    {
        for (const auto& file : files())
            unlink(file.first.c_str());
    }

    // Two files that records can meet on the disk: an empty one and one of four bytes.
    void seed() const
    {
        clear();
        writeFile(prefix + "a", "");
        writeFile(prefix + "b", "abcd");
    }

    static void writeFile(const std::string& path, const std::string& content)
    {
        FILE* file = fopen(path.c_str(), "wb");
        check(file != nullptr, "can't write a scratch file");
        fwrite(content.data(), 1, content.size(), file);
        fclose(file);
    }
};

uint64_t littleEndian(const uint8_t* data, int bytes)
{
    uint64_t value = 0;
    for (int i = bytes - 1; i >= 0; --i)
        value = (value << 8) | data[i];
    return value;
}

// The container for `data`: the header, then the records with `prefix` in front of every
// name, as told at the top. False for an input to skip.
bool containerOf(const uint8_t* data, size_t size, const std::string& prefix, std::string& out)
{
    out.assign(BackupFile::kHeader, BackupFile::kHeaderSize);
    size_t at = 0;
    while (size - at >= 2) {
        const size_t length = littleEndian(data + at, 2);
        if (length <= 1 || length > kLongestName)
            break;
        const size_t present = length < size - at - 2 ? length : size - at - 2;
        const std::string name(reinterpret_cast<const char*>(data + at + 2), present);
        if (std::string(name.c_str()).find("..") != std::string::npos)
            return false;
        const size_t newLength = length + prefix.size();
        out += static_cast<char>(newLength & 0xff);
        out += static_cast<char>(newLength >> 8);
        out += prefix + name;
        at += 2 + present;
        if (present < length || size - at < kFieldBytes)
            break;
        const int64_t stored = static_cast<int64_t>(littleEndian(data + at, 8));
        out.append(reinterpret_cast<const char*>(data + at), kFieldBytes);
        at += kFieldBytes;
        if (stored < 0 || static_cast<uint64_t>(stored) > size - at)
            break;
        out.append(reinterpret_cast<const char*>(data + at), static_cast<size_t>(stored));
        at += static_cast<size_t>(stored);
    }
    out.append(reinterpret_cast<const char*>(data + at), size - at);
    return true;
}

// A front end that checks what it is told: progress within 0..100 and never going back,
// texts that name a path in the restore directory, a null text only to close a batch.
class CheckingUI : public InstallerUI
{
public:
    explicit CheckingUI(const std::string& pathPrefix)
        : prefix(pathPrefix)
    {
    }

    void SetOverallProgress(int percent) override
    {
        check(percent >= 0 && percent <= 100, "progress out of range");
        check(percent >= last, "progress went back");
        last = percent;
    }
    int EndDecompress(const char* text, bool close) override
    {
        if (!text) {
            check(close, "null text without closing");
            ++closes;
            return 0;
        }
        std::string line = text;
        if (startsWith(line, "Left "))
            ++left;
        check(startsWith(line, "Restore " + prefix) || startsWith(line, "Left " + prefix),
            "text names a path elsewhere");
        return 0;
    }

    int closes = 0;
    int left = 0;

private:
    std::string prefix;
    int last = 0;
};

// Each log line is one of the reader's three, about a path in the restore directory.
void checkLog(const std::string& log, const std::string& prefix)
{
    size_t start = 0;
    while (start < log.size()) {
        size_t end = log.find("\r\n", start);
        check(end != std::string::npos, "log line without its end");
        std::string line = log.substr(start, end - start);
        start = end + 2;
        check(startsWith(line, "Restored " + prefix) || startsWith(line, "Zero saved size for " + prefix)
                || startsWith(line, "Saved check sum different than existing one for " + prefix),
            "log line about a path elsewhere");
    }
}

int restore(const std::string& container, const std::string& prefix, CheckingUI& ui)
{
    BackupFile backup;
    check(backup.OpenRead(container.c_str()) == 0, "can't open the container");
    PMemoryConsole log;
    log.flags = 0;
    const int result = backup.unpackAll(log, &ui);
    check(result == 0 || result == -1, "unpackAll gave something else than 0 or -1");
    check(result == -1 || ui.closes == 1, "the end not closed with a null text");
    checkLog(log.text(), prefix);
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static Workspace space;
    std::string container;
    if (!containerOf(data, size, space.prefix, container))
        return 0;
    space.seed();
    Workspace::writeFile(space.container, container);
    CheckingUI ui(space.prefix);
    restore(space.container, space.prefix, ui);

    // What the restore left, stored again and played back, stays as it is.
    const std::map<std::string, std::string> before = space.files();
    {
        BackupFile backup;
        check(backup.OpenWrite(space.copy.c_str()) == 0, "can't write the copy");
        for (const auto& file : before)
            check(!backup.addFile(file.first.c_str(), 520, 0, false), "addFile failed");
    }
    CheckingUI again(space.prefix);
    check(restore(space.copy, space.prefix, again) == 0, "a fresh container doesn't restore");
    check(again.left == 0, "an unchanged file was left");
    check(space.files() == before, "restoring unchanged files changed them");
    return 0;
}
