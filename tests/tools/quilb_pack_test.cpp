// quilb_pack end to end: packages and installers are made by the real program and read
// back through the engine's own loader.
#include "installer/installer.h"
#include "package/integrity_trailer.h"
#include "package/md5.h"
#include "package/test_container_builder.h"
#include "support/paths.h"
#include "support/process.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using quilbtest::readFile;
using quilbtest::shellQuote;
using quilbtest::TempDir;
using quilbtest::writeFile;

std::string pack(const std::string& arguments)
{
    return shellQuote(quilbtest::binDir() + "/quilb_pack") + " " + arguments;
}

std::string contentOf(const Installer& engine, const char* alias)
{
    int size = -1;
    TeskUtils::PtrArray<unsigned char> out;
    if (engine.Decompress(alias, size, out, nullptr) != 0)
        return "<missing>";
    return std::string(reinterpret_cast<char*>(out.data), size);
}

struct Product
{
    TempDir dir;
    std::string templateText;

    void add(const std::string& path, const std::string& content)
    {
        std::string full = dir.file(path);
        std::string parent = full.substr(0, full.rfind('/'));
        quilbtest::runCommand("mkdir -p " + shellQuote(parent));
        ASSERT_TRUE(writeFile(full, content));
    }
};

template <typename T> T valueAt(const std::string& data, size_t at)
{
    T value = 0;
    std::memcpy(&value, data.data() + at, sizeof(T)); // the formats are little-endian, as is the host
    return value;
}

// Checks a package byte by byte: cabinet header, solid header, chunk table, chunks (each the
// level 9 zlib stream of its slice, in order without gaps) and the record stream.
void expectExactLayout(const std::string& package, uint32_t chunks)
{
    ASSERT_GT(package.size(), 92u);
    const uint32_t magics[] = { kCabinetMagic1, kCabinetMagic2, kCabinetMagic3 };
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(valueAt<uint32_t>(package, 4 * i), magics[i]) << "magic word " << i;
    EXPECT_EQ(package.compare(32, 40, std::string(40, '\0')), 0) << "reserved bytes";
    const std::string solid = package.substr(kCabinetHeaderSize);
    EXPECT_EQ(solid.compare(0, 8, std::string("SolidHD", 8)), 0);
    EXPECT_EQ(valueAt<uint32_t>(solid, 8), 100u);
    EXPECT_EQ(valueAt<uint32_t>(solid, 12), 0x20121111u);
    ASSERT_EQ(valueAt<uint32_t>(solid, 16), chunks);
    std::vector<std::string> packed;
    uint64_t total = 0, place = quilbtest::solidHeaderSize(chunks);
    for (uint32_t i = 0; i < chunks; ++i) {
        total += valueAt<uint64_t>(solid, 20 + 32 * i + 8);
        EXPECT_EQ(valueAt<uint64_t>(solid, 20 + 32 * i + 16), place) << "chunk " << i;
        packed.push_back(solid.substr(place, valueAt<uint64_t>(solid, 20 + 32 * i + 24)));
        place += packed.back().size();
    }
    EXPECT_EQ(place, solid.size()) << "nothing behind the last chunk";
    ZlibSolidDecompressor decompressor;
    unsigned char* out = nullptr;
    long outSize = 0;
    ASSERT_EQ(decompressor.decompressData(reinterpret_cast<const unsigned char*>(solid.data()),
                  static_cast<long>(solid.size()), out, outSize),
        0);
    const std::string stream(reinterpret_cast<char*>(out), static_cast<size_t>(outSize));
    delete[] out;
    ASSERT_EQ(stream.size(), total);
    for (uint32_t i = 0; i < chunks; ++i) {
        uint64_t begin = total * i / chunks, end = total * (i + 1) / chunks;
        EXPECT_EQ(valueAt<uint64_t>(solid, 20 + 32 * i), begin) << "chunk " << i;
        EXPECT_EQ(valueAt<uint64_t>(solid, 20 + 32 * i + 8), end - begin) << "chunk " << i;
        EXPECT_TRUE(packed[i] == quilbtest::zlibCompress(stream.substr(begin, end - begin), 9))
            << "chunk " << i;
    }
    uint64_t at = 0, contentTotal = 0;
    uint32_t records = 0;
    for (; at + kCabinetRecordHeaderSize <= stream.size() && valueAt<uint32_t>(stream, at) == kCabinetFileTag;
         ++records) {
        uint64_t size = valueAt<uint64_t>(stream, at + 4);
        EXPECT_EQ(valueAt<uint64_t>(stream, at + 12), size);
        const char *name = stream.data() + at + 40, *alias = stream.data() + at + 340;
        bool image = std::string(name).find(".png") != std::string::npos;
        EXPECT_EQ(valueAt<uint32_t>(stream, at + 20), image ? 1u : 0u) << name;
        EXPECT_EQ(
            stream.compare(at + 40 + strlen(name), 300 - strlen(name), std::string(300 - strlen(name), '\0')),
            0)
            << name;
        EXPECT_EQ(stream.compare(
                      at + 340 + strlen(alias), 276 - strlen(alias), std::string(276 - strlen(alias), '\0')),
            0)
            << alias;
        unsigned char digest[16];
        CalcMD5Buf(stream.data() + at + kCabinetRecordHeaderSize, static_cast<int>(size), digest);
        EXPECT_EQ(stream.compare(at + 24, 16, reinterpret_cast<char*>(digest), 16), 0) << alias;
        contentTotal += size;
        at += kCabinetRecordHeaderSize + size;
    }
    EXPECT_TRUE(stream.substr(at) == quilbtest::endRecord()) << "the end record closes the stream";
    EXPECT_EQ(valueAt<uint64_t>(package, 12), contentTotal);
    EXPECT_EQ(valueAt<uint64_t>(package, 20), contentTotal);
    EXPECT_EQ(valueAt<uint32_t>(package, 28), records);
}

TEST(QuilbPack, PackageRoundTrip)
{
    Product product;
    const std::string big = quilbtest::mixedBytes(3 * 1024 * 1024 + 123, 5);
    for (const auto& [path, content] :
        std::vector<std::pair<const char*, std::string>> { { "files/empty.txt", "" }, { "files/one", "x" },
            { "files/big.bin", big }, { "files/first.txt", "first" }, { "files/second.txt", "second" },
            { "files/odd:name/f.dat", "colon" }, { "abs/logo.png", "not really an image" } })
        product.add(path, content);
    product.templateText = "<?xml version=\"1.0\"?>\n<QuilbGroupInstallation><Installation>\n"
                           "<!-- <FileSet><FN>files/not-packed</FN></FileSet> -->\n"
                           "<FileSet Name=\"Main\">\n"
                           "  <FN Dest=\"[INSTALLDIR]\">files/empty.txt</FN>\n"
                           "  <FN Dest=\"[INSTALLDIR]\" Alias=\"single\">files/one</FN>\n"
                           "  <FN Dest=\"[INSTALLDIR]\">  files/big.bin  </FN>\n"
                           "  <FN Dest=\"[INSTALLDIR]\" alias=\"dup\">files/first.txt</FN>\n"
                           "  <FN Dest=\"[INSTALLDIR]\" ALIAS=\"dup\">files/second.txt</FN>\n"
                           "  <FN Dest=\"[INSTALLDIR]\">files/odd:name/f.dat</FN>\n"
                           "  <FN Dest=\"[INSTALLDIR]\" OkIfMissing=\"1\">files/absent</FN>\n"
                           "  <FN Dest=\"[INSTALLDIR]\" Alias=\"logo\">"
        + product.dir.file("abs/logo.png")
        + "</FN>\n"
          "</FileSet></Installation></QuilbGroupInstallation>\n";
    ASSERT_TRUE(writeFile(product.dir.file("product.xml"), product.templateText));
    product.add("extra.txt", "added by name");

    for (const char* chunks : { "", " --chunks 1", " --chunks 256" }) {
        std::string output = product.dir.file("product.pkg");
        quilbtest::CommandResult result = quilbtest::runCommand(
            pack("package -t " + shellQuote(product.dir.file("product.xml")) + " --add extra="
                + shellQuote(product.dir.file("extra.txt")) + chunks + " -o " + shellQuote(output)));
        ASSERT_EQ(result.exitCode, 0) << result.output;
        EXPECT_NE(result.output.find("left out (OkIfMissing)"), std::string::npos) << result.output;
        if (*chunks == '\0')
            expectExactLayout(readFile(output), 8);

        Installer engine;
        ASSERT_EQ(engine.Init(output.c_str(), 0, 0), 0) << chunks;
        ASSERT_EQ(engine.cabinetFiles.size(), 9);
        // The later of two equal aliases wins; an absolute path is taken as it is.
        const std::pair<const char*, std::string> contents[] = { { "filesempty.txt", "" }, { "single", "x" },
            { "filesbig.bin", big }, { "dup", "second" }, { "filesoddnamef.dat", "colon" },
            { "logo", "not really an image" }, { "extra", "added by name" },
            { "install.xml", product.templateText }, { "filesnot-packed", "<missing>" } };
        for (const auto& [alias, content] : contents)
            EXPECT_TRUE(contentOf(engine, alias) == content) << alias << " with" << chunks;
        EXPECT_STREQ(engine.cabinetFiles[3].alias, "dup");
        EXPECT_STREQ(engine.cabinetFiles[2].name, "big.bin");
        EXPECT_STREQ(engine.cabinetFiles[8].name, "install.xml")
            << "the engine finds the template by this name";
    }
}

TEST(QuilbPack, InstallerFromADummyLauncher)
{
    TempDir dir;
    // A launcher image: some bytes, the offset word, more bytes.
    const std::string image = quilbtest::mixedBytes(3000, 1) + std::string("_BINARYIMAGEOFFSET_", 20)
        + quilbtest::mixedBytes(4000, 2);
    ASSERT_TRUE(writeFile(dir.file("launcher"), image));
    ASSERT_TRUE(writeFile(dir.file("install.xml"), "<FileSet><FN Alias=\"doc\">doc.txt</FN></FileSet>"));
    ASSERT_TRUE(writeFile(dir.file("doc.txt"), "the product's file"));
    for (const char* script : { "console.sh", "uninstall.sh" })
        ASSERT_TRUE(writeFile(dir.file(script), "#!/bin/sh\nexit 0\n"));
    auto file = [&](const char* name) { return shellQuote(dir.file(name)); };
    std::string installerPath = dir.file("setup.bin");
    quilbtest::CommandResult result = quilbtest::runCommand(pack("installer -t " + file("install.xml")
        + " --launcher " + file("launcher") + " --frontend installer_console=" + file("console.sh")
        + " --frontend uninstaller_console=" + file("uninstall.sh") + " -o " + file("setup.bin")));
    ASSERT_EQ(result.exitCode, 0) << result.output;

    std::string installer = readFile(installerPath);
    struct stat info;
    ASSERT_EQ(stat(installerPath.c_str(), &info), 0);
    EXPECT_TRUE(info.st_mode & S_IXUSR) << "an installer is executable";
    uint32_t offset = 0;
    std::memcpy(&offset, installer.data() + 3000, 4);
    EXPECT_EQ(offset, image.size());
    EXPECT_EQ(installer.compare(3004, 16, std::string("ARYIMAGEOFFSET_", 16)), 0)
        << "the rest of the word stays";
    EXPECT_EQ(installer.compare(installer.size() - 23, 7, "v2sum: "), 0);
    EXPECT_EQ(verifyFileMD5Checksum(installerPath.c_str()), 1);
    expectExactLayout(installer.substr(image.size(), installer.size() - image.size() - 23), 8);

    Installer outer;
    ASSERT_EQ(outer.Init(installerPath.c_str(), static_cast<int>(offset), 0), 0);
    std::string list = contentOf(outer, "install.xml");
    for (const char* entry :
        { "<FN Alias=\"binary\" Dest=\"install_files\">binary</FN>", "uninstaller_console",
            "<FN Alias=\"installer_console\" Dest=\"install_files\" "
            "Executable=\"1\">installer_console</FN>" })
        EXPECT_NE(list.find(entry), std::string::npos) << entry << "\n" << list;
    EXPECT_EQ(list.find("installer_gtk2"), std::string::npos) << "front ends not given are left out";
    EXPECT_EQ(contentOf(outer, "installer_console"), "#!/bin/sh\nexit 0\n");

    // The inner package is a cabinet of its own, with the template and the product's file.
    ASSERT_TRUE(writeFile(dir.file("binary"), contentOf(outer, "binary")));
    Installer inner;
    ASSERT_EQ(inner.Init(dir.file("binary").c_str(), 0, 0), 0);
    EXPECT_EQ(contentOf(inner, "doc"), "the product's file");
    EXPECT_EQ(contentOf(inner, "install.xml"), readFile(dir.file("install.xml")));

    // A file list of one's own, extra files, no product package.
    const std::string ownList = "<QuilbGroupInstallation><Installation><FileSet><FN Alias=\"x\" "
                                "Dest=\"d\">x</FN></FileSet></Installation></QuilbGroupInstallation>";
    ASSERT_TRUE(writeFile(dir.file("list.xml"), ownList));
    result = quilbtest::runCommand(
        pack("installer --launcher " + file("launcher") + " --file-list " + file("list.xml")
            + " --frontend-dir " + file("none") + " --add x=" + file("doc.txt") + " -o " + file("out.bin")));
    ASSERT_EQ(result.exitCode, 0) << result.output;
    Installer custom;
    ASSERT_EQ(custom.Init(dir.file("out.bin").c_str(), static_cast<int>(image.size()), 0), 0);
    EXPECT_EQ(contentOf(custom, "install.xml"), ownList);
    EXPECT_EQ(contentOf(custom, "x"), "the product's file");
    EXPECT_EQ(contentOf(custom, "binary"), "<missing>");
}

TEST(QuilbPack, Failures)
{
    TempDir dir;
    const std::string marker("_BINARYIMAGEOFFSET_", 20), aliased = "<FileSet><FN Alias=\"";
    const std::pair<const char*, std::string> files[] = {
        { "ok.xml", "<FileSet><FN>present</FN></FileSet>" },
        { "present", "here" },
        { "missing.xml", "<FileSet><FN>nowhere/file.bin</FN></FileSet>" },
        { "long.xml", aliased + std::string(259, 'a') + "\">present</FN></FileSet>" },
        { "fit.xml", aliased + std::string(258, 'a') + "\">present</FN></FileSet>" },
        { "huge.xml", "<FileSet><FN>huge</FN></FileSet>" },
        { "huge", "" },
        { "no-marker", quilbtest::mixedBytes(9000, 1) },
        { "tiny-launcher", marker },
        { "two-markers", marker + quilbtest::mixedBytes(6000, 1) + marker },
        { "old.out", "previous content" },
    };
    for (const auto& [name, content] : files)
        ASSERT_TRUE(writeFile(dir.file(name), content));
    ASSERT_EQ(truncate(dir.file("huge").c_str(), int64_t(1) << 31), 0); // sparse: no disk used

    auto file = [&](const char* name) { return shellQuote(dir.file(name)); };
    const std::string out = " -o " + file("old.out"),
                      installOk = "installer -t " + file("ok.xml") + " --launcher ";
    // Each fails with exit status 1 and `message` in its output.
    struct Row
    {
        const char* name;
        std::string arguments;
        const char* message;
    } rows[] = {
        { "missing file", "package -t " + file("missing.xml") + out, "missing file '" },
        { "alias over 258 characters", "package -t " + file("long.xml") + out,
            "is 259 characters long; at most 258" },
        { "package of 2 GiB", "package -t " + file("huge.xml") + out, "must stay below 2 GiB" },
        { "bad chunk count", "package -t " + file("ok.xml") + " --chunks 257" + out, "from 1 to 256" },
        { "launcher without offset word", installOk + file("no-marker") + out, "holds no offset word" },
        { "launcher with two offset words", installOk + file("two-markers") + out, "more than once" },
        { "installer too short for its checksum",
            installOk + file("tiny-launcher") + " --frontend-dir " + file("no-front-ends") + out,
            "too short for its checksum" },
    };
    for (const Row& row : rows) {
        quilbtest::CommandResult result = quilbtest::runCommand(pack(row.arguments) + " 2>&1");
        EXPECT_EQ(result.exitCode, 1) << row.name << "\n" << result.output;
        EXPECT_NE(result.output.find(row.message), std::string::npos) << row.name << "\n" << result.output;
        EXPECT_TRUE(readFile(dir.file("old.out")) == "previous content")
            << row.name << ": the output must stay as it was";
    }
    quilbtest::CommandResult listing = quilbtest::runCommand("ls " + shellQuote(dir.path()));
    EXPECT_EQ(listing.output.find("old.out."), std::string::npos) << "no temporary file left behind:\n"
                                                                  << listing.output;

    quilbtest::CommandResult fits = quilbtest::runCommand(pack("package -t " + file("fit.xml") + out));
    EXPECT_EQ(fits.exitCode, 0) << fits.output;
}

} // namespace
