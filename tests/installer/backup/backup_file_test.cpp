#include "installer/transaction/backup_file.h"

#include "foundation/streams/pmemory_console.h"
#include "installer/wizard/installer_ui.h"
#include "support/paths.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using quilbtest::fileExists, quilbtest::readFile, quilbtest::writeFile;

const std::string kHeaderBytes("Quilb Software installer backup file.\n\0", 39);
const std::string kEndMark("\x01\x00\x00", 3);

std::string le(uint64_t value, int bytes)
{
    std::string out;
    for (int i = 0; i < bytes; ++i)
        out += static_cast<char>(value >> (8 * i));
    return out;
}

std::string record(const std::string& name, const std::string& content, uint32_t sum)
{
    return le(name.size() + 1, 2) + name + '\0' + le(content.size(), 8) + le(sum, 4) + content;
}

unsigned sumOf(const std::string& data)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(data.data());
    return BackupFile::checksum(bytes, static_cast<long>(data.size()));
}

// Everything a front end hears, one call per entry: "s" for StartDecompress, "e:TEXT:R"
// for EndDecompress (TEXT "-" for null, R the refresh flag), "p:N" for progress.
struct RecordingUI : InstallerUI
{
    std::vector<std::string> calls;
    void StartDecompress() override { calls.push_back("s"); }
    int EndDecompress(const char* text, bool close) override
    {
        calls.push_back("e:" + std::string(text ? text : "-") + ":" + (close ? "1" : "0"));
        return 0;
    }
    void SetOverallProgress(int percent) override { calls.push_back("p:" + std::to_string(percent)); }
};

// `calls` joins what the front end heard with "|".
struct Unpacked
{
    int result;
    std::string log, calls;
};

Unpacked unpack(const std::string& path)
{
    BackupFile backup;
    PMemoryConsole log;
    log.flags = 0;
    RecordingUI ui;
    EXPECT_EQ(backup.OpenRead(path.c_str()), 0);
    Unpacked out { backup.unpackAll(log, &ui), log.text(), "" };
    for (const std::string& call : ui.calls)
        out.calls += (out.calls.empty() ? "" : "|") + call;
    return out;
}

// A container whose Write fails with ENOSPC from the `failAt`-th call after arm() on.
struct FailingBackup : BackupFile
{
    using BackupFile::Size;
    int calls = -1, failAt = 0;
    long fakeSize = -1;
    void arm(int at)
    {
        calls = 0;
        failAt = at;
    }
    int Write(const void* data, int size, int& written) override
    {
        if (calls >= 0 && ++calls == failAt) {
            written = 0;
            return ENOSPC;
        }
        return BackupFile::Write(data, size, written);
    }
    long Size(const char* path) override { return fakeSize >= 0 ? fakeSize : BackupFile::Size(path); }
};

TEST(BackupFile, Checksums)
{
    std::string multi(32773, '\0');
    multi.replace(0, 4, "\x44\x33\x22\x11").replace(32768, 5, "\x01\x02\x03\x04\x80");
    struct
    {
        const char* name;
        std::string data;
        unsigned sum;
    } rows[] = {
        { "empty", "", 0 },
        { "one byte", "A", 1 ^ 0x41 },
        { "three bytes", "abc", 3 ^ 0x61 ^ 0x62 ^ 0x63 },
        { "one word", "\x01\x02\x03\x04", 0x04030201 ^ 4 },
        { "word and byte", "\x01\x02\x03\x04\xff", 0x04030201 ^ 5 ^ 0xff },
        { "two blocks", multi, 0x8005 ^ 0x11223344 ^ 0x04030201 ^ 0x80 },
        { "equal words cancel", std::string(8, 'x'), 8 },
    };
    quilbtest::TempDir dir;
    for (const auto& row : rows) {
        EXPECT_EQ(sumOf(row.data), row.sum) << row.name;
        ASSERT_TRUE(writeFile(dir.file("f"), row.data));
        EXPECT_EQ(BackupFile::fileChecksum(dir.file("f").c_str()), row.sum) << row.name;
    }
    EXPECT_EQ(BackupFile::fileChecksum(dir.file("missing").c_str()), 0u);
}

TEST(BackupFile, WritesRecordsAndEndMark)
{
    quilbtest::TempDir dir;
    const std::string a = dir.file("a"), empty = dir.file("empty"), nested = dir.file("nested.bak");
    ASSERT_TRUE(writeFile(a, "hello") && writeFile(empty, "") && writeFile(nested, kHeaderBytes + "rest"));
    const std::string out = dir.file("out");
    BackupFile backup;
    ASSERT_EQ(backup.OpenWrite(out.c_str()), 0);
    EXPECT_EQ(backup.mode, BackupFile::ModeWrite);
    EXPECT_FALSE(backup.addFile(a.c_str(), 520, 0xA1B2C3D4, true));
    EXPECT_FALSE(backup.addFile(empty.c_str(), 520, 7, true));
    EXPECT_FALSE(backup.addFile(a.c_str(), 520, 1, false)) << "checksum taken from the disk";
    EXPECT_FALSE(backup.addFile(nested.c_str(), 520, 1, true)) << "a container is never stored";
    EXPECT_FALSE(backup.addFile(dir.file("gone").c_str(), 520, 0, false)) << "no file: size 0, no open";
    EXPECT_FALSE(backup.addFile(a.c_str(), static_cast<int>(a.size()), 9, true)) << "name cut to the bound";
    EXPECT_FALSE(backup.addFile(a.c_str(), 0, 9, true)) << "no room for a name";
    EXPECT_EQ(backup.Close(), 0);
    EXPECT_EQ(backup.mode, BackupFile::ModeClosed);
    EXPECT_EQ(readFile(out),
        kHeaderBytes + record(a, "hello", 0xA1B2C3D4) + record(empty, "", 7)
            + record(a, "hello", 5 ^ 0x6c6c6568 ^ 'o') + record(dir.file("gone"), "", 0)
            + record(a.substr(0, a.size() - 1), "hello", 9) + record("", "hello", 9) + kEndMark);

    ASSERT_EQ(backup.OpenWrite(out.c_str()), 0);
    backup.Close();
    EXPECT_EQ(readFile(out), kHeaderBytes + kEndMark);
    EXPECT_EQ(readFile(out).size(), 42u);
    {
        BackupFile scoped;
        scoped.OpenWrite(out.c_str());
    }
    EXPECT_EQ(readFile(out).size(), 42u) << "the destructor ends the container";
    EXPECT_EQ(unpack(out).result, 0);
}

TEST(BackupFile, AddFileErrors)
{
    quilbtest::TempDir dir;
    const std::string a = dir.file("a"), out = dir.file("out");
    ASSERT_TRUE(writeFile(a, "0123"));
    // failAt counts the writes of one record: length word, name, size, checksum, content.
    struct
    {
        const char* name;
        int failAt;
        long fakeSize;
        const char* message;
    } rows[] = {
        { "length word", 1, -1, "Error writing file name" },
        { "name", 2, -1, "Error writing file name" },
        { "size", 3, -1, "Error writing file size" },
        { "checksum", 4, -1, "Error writing check sum" },
        { "content", 5, -1, "Error copying stream (28)" },
        { "file shorter than its size", 0, 10, "Copy stream mismatch: wanted 10 bytes, read 4, written 4" },
    };
    for (const auto& row : rows) {
        FailingBackup backup;
        ASSERT_EQ(backup.OpenWrite(out.c_str()), 0);
        ASSERT_FALSE(backup.addFile(a.c_str(), 520, 1, true));
        backup.arm(row.failAt);
        backup.fakeSize = row.fakeSize;
        TeskUtils::ErrorCode error = backup.addFile(a.c_str(), 520, 2, true);
        EXPECT_STREQ(error.getWhere(), "addFile") << row.name;
        EXPECT_EQ(error.getError(), -1) << row.name;
        EXPECT_STREQ(error.getMessage(), row.message) << row.name;
        EXPECT_TRUE(backup.hasError) << row.name;
        EXPECT_STREQ(backup.addFile(a.c_str(), 520, 3, true).getMessage(), "There is a previous error")
            << row.name;
        backup.arm(0);
        backup.Close();
        // The end mark lands where the failed record began; its tail stays unread.
        const std::string good = kHeaderBytes + record(a, "0123", 1);
        EXPECT_EQ(readFile(out).substr(0, good.size() + 3), good + kEndMark) << row.name;
        EXPECT_EQ(unpack(out).result, 0) << row.name;
    }

    FailingBackup missing;
    ASSERT_EQ(missing.OpenWrite(out.c_str()), 0);
    missing.fakeSize = 4;
    EXPECT_STREQ(missing.addFile(dir.file("none").c_str(), 520, 0, true).getMessage(), "Error opening file");

    BackupFile closed, unopened, reading;
    EXPECT_STREQ(closed.addFile(a.c_str(), 520, 0, true).getMessage(), "Not in write mode");
    EXPECT_NE(unopened.OpenWrite(dir.file("no/such/dir").c_str()), 0);
    EXPECT_EQ(unopened.mode, BackupFile::ModeWrite);
    EXPECT_STREQ(unopened.addFile(a.c_str(), 520, 0, true).getMessage(), "There is a previous error");
    ASSERT_EQ(reading.OpenRead(out.c_str()), 0);
    EXPECT_STREQ(reading.addFile(a.c_str(), 520, 0, true).getMessage(), "Not in write mode");
    EXPECT_NE(closed.OpenRead(dir.file("none").c_str()), 0);
    EXPECT_EQ(closed.mode, BackupFile::ModeClosed);
    PMemoryConsole log;
    EXPECT_EQ(closed.unpackAll(log, nullptr), -1);
}

int percent(size_t position, size_t total)
{
    return static_cast<int>(std::ceil(static_cast<double>(position) / static_cast<double>(total) * 100));
}

TEST(BackupFile, UnpackAll)
{
    quilbtest::TempDir dir;
    const std::string p = dir.file("p");
    // `disk` is the file at p before the restore, null for none. In `log` and `calls` %s
    // stands for p, in `calls` %P for the progress behind the record.
    struct
    {
        const char* name;
        const char* disk;
        std::string record, after, log, calls;
    } rows[] = {
        { "missing file restored", nullptr, record(p, "old", 99), "old", "Restored %s",
            "s|e:Restore %s:0|%P" },
        { "unchanged file restored", "new", record(p, "old", sumOf("new")), "old", "Restored %s",
            "s|e:Restore %s:0|%P" },
        { "changed file left", "user", record(p, "old", sumOf("new")), "user",
            "Saved check sum different than existing one for %s; skipping", "s|e:Left %s:0|%P" },
        { "empty file exists although its checksum is 0", "", record(p, "old", 5), "",
            "Saved check sum different than existing one for %s; skipping", "s|e:Left %s:0|%P" },
        { "zero size, file absent", nullptr, record(p, "", 0), "",
            "Zero saved size for %s; creating blank file", "s|e:Restore %s:0" },
        { "zero size, file present", "keep", record(p, "", 0), "keep", "", "s" },
    };
    for (const auto& row : rows) {
        remove(p.c_str());
        ASSERT_TRUE(!row.disk || writeFile(p, row.disk));
        const std::string all = kHeaderBytes + row.record + kEndMark;
        ASSERT_TRUE(writeFile(dir.file("c"), all));
        auto fill = [&](std::string text) {
            for (size_t at; (at = text.find("%s")) != std::string::npos;)
                text.replace(at, 2, p);
            for (size_t at; (at = text.find("%P")) != std::string::npos;)
                text.replace(at, 2, "p:" + std::to_string(percent(all.size() - 3, all.size())));
            return text;
        };
        Unpacked got = unpack(dir.file("c"));
        EXPECT_EQ(got.result, 0) << row.name;
        EXPECT_EQ(readFile(p), row.after) << row.name;
        EXPECT_EQ(got.log, row.log.empty() ? "" : fill(row.log) + "\r\n") << row.name;
        EXPECT_EQ(got.calls, "p:0|" + fill(row.calls) + "|e:-:1") << row.name;
    }
}

TEST(BackupFile, RestoreIntoVanishedDirectoryPassesOverTheContent)
{
    quilbtest::TempDir dir;
    const std::string lost = dir.file("vanished/q"), p = dir.file("p");
    const std::string first = record(lost, std::string(40000, 'b'), 1);
    const std::string all = kHeaderBytes + first + record(p, "old", 1) + kEndMark;
    ASSERT_TRUE(writeFile(dir.file("c"), all));
    Unpacked got = unpack(dir.file("c"));
    EXPECT_EQ(got.result, 0);
    EXPECT_EQ(readFile(p), "old");
    EXPECT_EQ(got.log, "Restored " + lost + "\r\nRestored " + p + "\r\n");
    EXPECT_EQ(got.calls,
        "p:0|s|e:Restore " + lost + ":0|p:" + std::to_string(percent(39 + first.size(), all.size()))
            + "|s|e:Restore " + p + ":0|p:" + std::to_string(percent(all.size() - 3, all.size())) + "|e:-:1");
}

TEST(BackupFile, RefreshEvery32ndRecordCountingSilentOnes)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(writeFile(dir.file("0"), "x"));
    std::string records;
    for (int i = 0; i < 64; ++i)
        records += record(dir.file(std::to_string(i)), "", 0);
    ASSERT_TRUE(writeFile(dir.file("c"), kHeaderBytes + records + kEndMark));
    // Record 0 finds its file and says nothing, but still counts for the refresh.
    std::string calls = "p:0|s";
    for (int i = 1; i < 64; ++i)
        calls += "|s|e:Restore " + dir.file(std::to_string(i)) + (i % 32 == 31 ? ":1" : ":0");
    Unpacked got = unpack(dir.file("c"));
    EXPECT_EQ(got.result, 0);
    EXPECT_EQ(got.calls, calls + "|e:-:1");
    EXPECT_EQ(readFile(dir.file("0")), "x");
}

TEST(BackupFile, DamagedContainers)
{
    quilbtest::TempDir dir;
    const std::string p = dir.file("p");
    std::string longName = dir.path();
    while (longName.size() < 518)
        longName += "/d";
    longName.resize(518);
    struct
    {
        const char* name;
        std::string body;
        int result;
    } rows[] = {
        { "name length 519", record(longName, "", 0), 0 },
        { "name length 520", record(longName + "x", "", 0), -1 },
        { "name length 0", le(0, 2) + le(0, 8) + le(0, 4), -1 },
        { "negative size", le(p.size() + 1, 2) + p + '\0' + le(uint64_t(-4), 8) + le(0, 4), -1 },
        { "size beyond the end", le(p.size() + 1, 2) + p + '\0' + le(100, 8) + le(0, 4) + "abc", -1 },
    };
    for (const auto& row : rows) {
        ASSERT_TRUE(writeFile(dir.file("c"), kHeaderBytes + row.body + kEndMark));
        EXPECT_EQ(unpack(dir.file("c")).result, row.result) << row.name;
        EXPECT_FALSE(fileExists(p)) << row.name;
    }

    // Every cut of a whole container fails, and a record cut in its content leaves its file alone.
    ASSERT_TRUE(writeFile(dir.file("q"), "user"));
    const std::string whole = kHeaderBytes + record(dir.file("q"), "old", 0) + record(dir.file("z"), "", 0)
        + record(p, "old", 0) + kEndMark;
    for (size_t cut = 0; cut < whole.size(); ++cut) {
        remove(p.c_str());
        ASSERT_TRUE(writeFile(dir.file("c"), whole.substr(0, cut)));
        EXPECT_EQ(unpack(dir.file("c")).result, -1) << "cut at " << cut;
        EXPECT_EQ(fileExists(p), cut >= whole.size() - 3) << "cut at " << cut;
        EXPECT_EQ(readFile(dir.file("q")), "user");
    }
    ASSERT_TRUE(writeFile(dir.file("c"), whole));
    EXPECT_EQ(unpack(dir.file("c")).result, 0);
}

} // namespace
