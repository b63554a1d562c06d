#include "installer/installer.h"

#include "foundation/streams/pmemory_console.h"
#include "package/test_container_builder.h"
#include "support/paths.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstring>
#include <functional>
#include <string>

namespace {

using quilbtest::PackedFile, quilbtest::cabinetHeader, quilbtest::recordHeader, quilbtest::endRecord,
    quilbtest::solidOf;

struct Loaded
{
    int code;
    std::string log;
};

Loaded load(Installer& engine, const std::string& path, int offset = 0, unsigned flags = 0)
{
    PMemoryConsole console;
    console.flags = 0;
    engine.InitDebugMode(&console, 0);
    Loaded result { engine.Init(path.c_str(), offset, flags), console.text() };
    engine.InitDebugMode(nullptr, 0);
    return result;
}

std::string contentOf(const Installer& engine, const char* alias, int* code = nullptr)
{
    int size = -7;
    TeskUtils::PtrArray<unsigned char> out;
    int result = engine.Decompress(alias, size, out, nullptr);
    if (code)
        *code = result;
    if (result != 0)
        return "<missing>";
    EXPECT_EQ(out.count, size + 1) << alias;
    EXPECT_EQ(out[size], 0) << alias << ": no NUL behind the content";
    return std::string(reinterpret_cast<char*>(out.data), static_cast<size_t>(size));
}

TEST(Cabinet, InitFailures)
{
    const std::string good = quilbtest::solidCabinet({ { "a", "alpha" } });
    auto changed = [&](size_t at, int mask) {
        std::string c = good;
        c[at] = static_cast<char>(c[at] ^ mask);
        return c;
    };
    const char* headersLine = "Finished decompression. Initializing file headers ...";
    // `make` gives the file content, null for no file.
    struct Row
    {
        const char* name;
        std::function<std::string()> make;
        int offset, code;
        std::string lastLine;
    } rows[] = {
        { "no file", nullptr, 0, -2, "ERROR: Failed to open %PATH% for decompressing!" },
        { "seek to a negative offset", [&] { return good; }, -5, -3, "Seeking file offset -5" },
        { "offset beyond the end", [&] { return good; }, 100000, -10,
            "ERROR: Failed to allocate memory for the compressed cabinet (std::bad_array_new_length)" },
        { "first magic word", [&] { return changed(0, 0x40); }, 0, -5,
            "Checking compressed cabinet version compatibility" },
        { "second magic word", [&] { return changed(5, 0x40); }, 0, -6,
            "Checking compressed cabinet version compatibility" },
        { "third magic word", [&] { return changed(11, 0x40); }, 0, -7,
            "Checking compressed cabinet version compatibility" },
        { "shorter than the magic words", [&] { return good.substr(0, 6); }, 0, -6,
            "Checking compressed cabinet version compatibility" },
        { "unknown record tag in a plain cabinet",
            [&] { return cabinetHeader() + recordHeader(0x63280021, 0, 0, "x", "x") + endRecord(); }, 0, -8,
            headersLine },
        { "record stream without an end record",
            [&] {
                return cabinetHeader() + solidOf(recordHeader(kCabinetFileTag, 3, 3, "x", "x") + "abc", 1);
            },
            0, -8, headersLine },
        { "stored size running past the stream",
            [&] {
                return cabinetHeader()
                    + solidOf(recordHeader(kCabinetFileTag, 3, 9999, "x", "x") + "abc" + endRecord(), 2);
            },
            0, -8, headersLine },
        // The first chunk's compressed offset grows by 4 GiB.
        { "solid failure passed on", [&] { return changed(kCabinetHeaderSize + 20 + 16 + 4, 1); }, 0, -27,
            "ERROR: The solid decompressor failed decompressing the data (-27)!" },
    };
    quilbtest::TempDir dir;
    for (const Row& row : rows) {
        std::string path = dir.file(std::string("cab_") + row.name);
        ASSERT_TRUE(!row.make || quilbtest::writeFile(path, row.make())) << row.name;
        Installer engine;
        Loaded loaded = load(engine, path, row.offset);
        EXPECT_EQ(loaded.code, row.code) << row.name << "\n" << loaded.log;
        std::string expected = row.lastLine;
        size_t at = expected.find("%PATH%");
        if (at != std::string::npos)
            expected.replace(at, 6, path);
        EXPECT_EQ(quilbtest::lastLogLine(loaded.log), expected) << row.name;
        EXPECT_EQ(engine.cabinetData, nullptr) << row.name;
        int size = 0;
        TeskUtils::PtrArray<unsigned char> out;
        EXPECT_EQ(engine.Decompress(0, size, out, nullptr), -1) << row.name;
    }
}

TEST(Cabinet, ShortReadGivesMinusFour)
{
    // A sysfs attribute reports a size of 4096 bytes, but a read brings only its few characters.
    const char* path = "/sys/kernel/uevent_seqnum";
    if (access(path, R_OK) != 0)
        GTEST_SKIP() << "needs " << path << " (sysfs) as a file that reads short";
    Installer engine;
    Loaded loaded = load(engine, path, 0);
    EXPECT_EQ(loaded.code, -4) << loaded.log;
    EXPECT_EQ(quilbtest::lastLogLine(loaded.log), "Reading compressed cabinet into memory");
    EXPECT_EQ(engine.cabinetData, nullptr);
}

TEST(Cabinet, SolidRoundTrip)
{
    const std::string big = quilbtest::mixedBytes(300000, 3);
    std::vector<PackedFile> files = { { "empty", "" }, { "one", "1" }, { "install.xml", "<first/>" },
        { "big", big }, { "install.xml", "<second/>" } };
    quilbtest::TempDir dir;
    // A fake image in front of the cabinet, as in an installer file.
    const std::string image = quilbtest::mixedBytes(7000, 9);
    const std::string cabinet = quilbtest::solidCabinet(files) + "v2sum: 0123456789abcdef";
    ASSERT_TRUE(quilbtest::writeFile(dir.file("installer"), image + cabinet));

    Installer engine;
    Loaded loaded = load(engine, dir.file("installer"), static_cast<int>(image.size()));
    ASSERT_EQ(loaded.code, 0) << loaded.log;
    EXPECT_EQ(engine.cabinetIsSolid, 1);
    ASSERT_EQ(engine.cabinetFiles.size(), 5);
    EXPECT_STREQ(engine.installerPath, dir.file("installer").c_str());

    EXPECT_EQ(contentOf(engine, "empty"), "");
    EXPECT_EQ(contentOf(engine, "one"), "1");
    EXPECT_EQ(contentOf(engine, "install.xml"), "<second/>");
    EXPECT_TRUE(contentOf(engine, "big") == big);

    int code = 0;
    EXPECT_EQ(contentOf(engine, "absent", &code), "<missing>");
    EXPECT_EQ(code, -1);

    // The digest comes from the record; by index the first of the duplicates is there too.
    int size = 0;
    TeskUtils::PtrArray<unsigned char> out;
    unsigned char digest[16], expected[16];
    ASSERT_EQ(engine.Decompress(2, size, out, &digest), 0);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(out.data), size), "<first/>");
    CalcMD5Buf("<first/>", 8, expected);
    EXPECT_EQ(std::memcmp(digest, expected, 16), 0);

    size = 5;
    EXPECT_TRUE(engine.GetAliasData("nothing", size).isNull());
    EXPECT_EQ(size, 5) << "an unknown alias leaves the size alone";
    TeskUtils::PtrArray<unsigned char> kept = engine.GetAliasData("one", size);
    EXPECT_EQ(size, 1);

    // A second Init frees the old block and appends its records to the old ones.
    ASSERT_TRUE(quilbtest::writeFile(dir.file("two.cab"), quilbtest::solidCabinet({ { "y", "second" } }, 1)));
    ASSERT_EQ(engine.Init(dir.file("two.cab").c_str(), 0, 0), 0);
    EXPECT_EQ(engine.cabinetFiles.size(), 6);
    EXPECT_EQ(contentOf(engine, "y"), "second");

    engine.freeCompressData();
    EXPECT_EQ(engine.cabinetFiles.size(), 0);
    EXPECT_EQ(contentOf(engine, "one"), "<missing>");
    EXPECT_EQ(kept[0], '1') << "arrays given out outlive the cabinet";

    EXPECT_EQ(loaded.log,
        "Allocating memory for the compressed cabinet (" + std::to_string(cabinet.size())
            + " B)\r\n"
              "Seeking file offset 7000\r\n"
              "Reading compressed cabinet into memory\r\n"
              "Checking compressed cabinet version compatibility\r\n"
              "Starting decompression of data ...\r\n"
              "Decompressor: Allocating memory for uncompressed cabinet ("
            + std::to_string(quilbtest::recordStream(files).size())
            + " B)\r\n"
              "Decompressor: Starting decompression ... (8 chunks)\r\n"
              "Finished decompression. Initializing file headers ...\r\n"
              "Finished file headers initialization.\r\n");
}

TEST(Cabinet, DecompressWarnings)
{
    struct Row
    {
        const char* name;
        bool load;
        int index;
        const char* line;
    } rows[] = {
        { "before Init", false, 0,
            "WARNING: Attempted to Decompress from non-existing memory (No decompressed cabinet)\r\n" },
        { "no records, index 0", true, 0,
            "WARNING: Attempted to Decompress from non-existing memory (Invalid file index)\r\n" },
        { "negative index", true, -1,
            "WARNING: Attempted to Decompress from non-existing memory (Invalid file index)\r\n" },
    };
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("empty.cab"), quilbtest::solidCabinet({})));
    for (const Row& row : rows) {
        Installer engine;
        ASSERT_TRUE(!row.load || engine.Init(dir.file("empty.cab").c_str(), 0, 0) == 0) << row.name;
        PMemoryConsole console;
        console.flags = 0;
        engine.InitDebugMode(&console, 0);
        int size = 9;
        TeskUtils::PtrArray<unsigned char> out;
        EXPECT_EQ(engine.Decompress(row.index, size, out, nullptr), -1) << row.name;
        EXPECT_EQ(size, 0) << row.name;
        EXPECT_EQ(console.text(), row.line) << row.name;
        console.Clear();
        EXPECT_EQ(engine.Decompress("anything", size, out, nullptr), -1);
        EXPECT_EQ(console.text(), "") << "by alias a miss is silent";
        engine.InitDebugMode(nullptr, 0);
    }
}

// A damaged record whose name and alias fill their fields without a NUL: both are cut at
// their last byte, and a lookup stays within the record.
TEST(Cabinet, TextFieldsWithoutTerminatorAreCut)
{
    const std::string name(kCabinetNameSize, 'n'), alias(kCabinetAliasSize, 'a');
    const std::string stream = recordHeader(kCabinetFileTag, 3, 3, name, alias) + "abc"
        + recordHeader(kCabinetFileTag, 1, 1, "next", "next") + "z" + endRecord();
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("full.cab"), cabinetHeader() + solidOf(stream, 1)));
    Installer engine;
    ASSERT_EQ(engine.Init(dir.file("full.cab").c_str(), 0, 0), 0);
    ASSERT_EQ(engine.cabinetFiles.size(), 2);
    EXPECT_EQ(std::strlen(engine.cabinetFiles[0].name), name.size() - 1);
    EXPECT_EQ(std::strlen(engine.cabinetFiles[0].alias), alias.size() - 1);
    EXPECT_EQ(contentOf(engine, alias.substr(1).c_str()), "abc");
    EXPECT_EQ(contentOf(engine, "next"), "z");
}

// A plain cabinet holds a zlib stream per file, and gives out only empty files.
TEST(Cabinet, PlainCabinetGivesOutOnlyEmptyFiles)
{
    const std::string emptyStream = quilbtest::zlibCompress(""),
                      fullStream = quilbtest::zlibCompress("content");
    std::string cabinet = cabinetHeader() + recordHeader(kCabinetFileTag, 0, emptyStream.size(), "e", "e")
        + emptyStream + recordHeader(kCabinetFileTag, 7, fullStream.size(), "f", "f") + fullStream
        + endRecord();
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("plain.cab"), cabinet));
    Installer engine;
    ASSERT_EQ(engine.Init(dir.file("plain.cab").c_str(), 0, 0), 0);
    EXPECT_EQ(engine.cabinetIsSolid, 0);
    ASSERT_EQ(engine.cabinetFiles.size(), 2);

    int size = -1;
    TeskUtils::PtrArray<unsigned char> out;
    ASSERT_EQ(engine.Decompress("e", size, out, nullptr), 0);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(out.count, 1025);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(engine.Decompress("f", size, out, nullptr), -1);
    EXPECT_EQ(size, 0);
}

TEST(Cabinet, UninstallModeOpensTheLog)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("install.log"), "/opt/app/install.xml\n"));
    Installer engine;
    // A package that can't be opened still leaves its path.
    ASSERT_EQ(engine.Init(dir.file("package.bin").c_str(), 0, 0), -2);

    Loaded missing = load(engine, dir.file("absent.log"), 0, 1);
    EXPECT_EQ(missing.code, -1);
    EXPECT_EQ(
        missing.log, "ERROR: Failed to open the installation log file (" + dir.file("absent.log") + ")\r\n");
    EXPECT_EQ(engine.logStream, nullptr);

    Loaded opened = load(engine, dir.file("install.log"), 0, 3);
    EXPECT_EQ(opened.code, 0);
    ASSERT_NE(engine.logStream, nullptr);
    EXPECT_EQ(engine.initFlags, 3u);
    EXPECT_STREQ(engine.installerPath, dir.file("package.bin").c_str());
    char line[64] = {};
    ASSERT_NE(fgets(line, sizeof(line), engine.logStream), nullptr);
    EXPECT_STREQ(line, "/opt/app/install.xml\n");
    EXPECT_EQ(contentOf(engine, "anything"), "<missing>");
}

} // namespace
