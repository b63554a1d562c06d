// quilb_pack end to end: packages and installers are made by the real program and read
// back through the engine's own loader.
#include "installer/installer.h"
#include "package/integrity_trailer.h"
#include "package/md5.h"
#include "support/paths.h"
#include "support/process.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

using quilbtest::TempDir;
using quilbtest::readFile;
using quilbtest::shellQuote;
using quilbtest::writeFile;

std::string pack(const std::string& arguments)
{
    return shellQuote(quilbtest::binDir() + "/quilb_pack") + " " + arguments;
}

std::string bytes(size_t size, unsigned seed)
{
    std::string out(size, '\0');
    unsigned x = seed * 2654435761u + 17;
    for (size_t i = 0; i < size; ++i) {
        x = x * 1103515245u + 12345u;
        out[i] = (i / 4096) % 3 == 0 ? static_cast<char>(x >> 23) : static_cast<char>("installer "[(x >> 16) % 10]);
    }
    return out;
}

// Every alias of a loaded cabinet with its content; checks each record's digest on the way.
std::multimap<std::string, std::string> readAll(const Installer& engine)
{
    std::multimap<std::string, std::string> files;
    for (int i = 0; i < engine.cabinetFiles.size(); ++i) {
        int size = -1;
        TeskUtils::PtrArray<unsigned char> out;
        unsigned char recorded[16];
        EXPECT_EQ(engine.Decompress(i, size, out, &recorded), 0);
        unsigned char actual[16];
        CalcMD5Buf(out.data, size, actual);
        EXPECT_EQ(std::memcmp(recorded, actual, 16), 0) << engine.cabinetFiles[i].alias;
        files.emplace(engine.cabinetFiles[i].alias, std::string(reinterpret_cast<char*>(out.data), size));
    }
    return files;
}

std::string contentOf(const Installer& engine, const char* alias)
{
    int size = -1;
    TeskUtils::PtrArray<unsigned char> out;
    if (engine.Decompress(alias, size, out, nullptr) != 0)
        return "<missing>";
    return std::string(reinterpret_cast<char*>(out.data), size);
}

struct Product {
    TempDir dir;
    std::string templateText;
    std::map<std::string, std::string> expected; // alias -> content

    void add(const std::string& path, const std::string& content)
    {
        std::string full = dir.file(path);
        std::string parent = full.substr(0, full.rfind('/'));
        quilbtest::runCommand("mkdir -p " + shellQuote(parent));
        ASSERT_TRUE(writeFile(full, content));
    }
};

TEST(QuilbPack, PackageRoundTrip)
{
    Product product;
    const std::string big = bytes(3 * 1024 * 1024 + 123, 5);
    product.add("files/empty.txt", "");
    product.add("files/one", "x");
    product.add("files/big.bin", big);
    product.add("files/first.txt", "first");
    product.add("files/second.txt", "second");
    product.add("files/odd:name/f.dat", "colon");
    product.templateText =
        "<?xml version=\"1.0\"?>\n<QuilbGroupInstallation><Installation>\n"
        "<!-- <FileSet><FN>files/not-packed</FN></FileSet> -->\n"
        "<FileSet Name=\"Main\">\n"
        "  <FN Dest=\"[INSTALLDIR]\">files/empty.txt</FN>\n"
        "  <FN Dest=\"[INSTALLDIR]\" Alias=\"single\">files/one</FN>\n"
        "  <FN Dest=\"[INSTALLDIR]\">  files/big.bin  </FN>\n"
        "  <FN Dest=\"[INSTALLDIR]\" alias=\"dup\">files/first.txt</FN>\n"
        "  <FN Dest=\"[INSTALLDIR]\" ALIAS=\"dup\">files/second.txt</FN>\n"
        "  <FN Dest=\"[INSTALLDIR]\">files/odd:name/f.dat</FN>\n"
        "  <FN Dest=\"[INSTALLDIR]\" OkIfMissing=\"1\">files/absent</FN>\n"
        "</FileSet></Installation></QuilbGroupInstallation>\n";
    ASSERT_TRUE(writeFile(product.dir.file("install.xml"), product.templateText));
    product.add("extra.txt", "added by name");

    for (int chunks : {1, 2, 7, 8, 256}) {
        std::string output = product.dir.file("product.pkg");
        quilbtest::CommandResult result = quilbtest::runCommand(
            pack("package -t " + shellQuote(product.dir.file("install.xml")) + " --add extra=" + shellQuote(product.dir.file("extra.txt"))
                 + " --chunks " + std::to_string(chunks) + " -o " + shellQuote(output)));
        ASSERT_EQ(result.exitCode, 0) << result.output;

        Installer engine;
        ASSERT_EQ(engine.Init(output.c_str(), 0, 0), 0) << chunks << " chunks";
        EXPECT_EQ(engine.cabinetIsSolid, 1);
        std::multimap<std::string, std::string> files = readAll(engine);
        EXPECT_EQ(files.size(), 8u);
        EXPECT_EQ(contentOf(engine, "filesempty.txt"), "");
        EXPECT_EQ(contentOf(engine, "single"), "x");
        EXPECT_TRUE(contentOf(engine, "filesbig.bin") == big);
        EXPECT_EQ(contentOf(engine, "dup"), "second") << "the later of two equal aliases wins";
        EXPECT_EQ(files.count("dup"), 2u);
        EXPECT_EQ(contentOf(engine, "filesoddnamef.dat"), "colon");
        EXPECT_EQ(contentOf(engine, "extra"), "added by name");
        EXPECT_EQ(contentOf(engine, "install.xml"), product.templateText);
        EXPECT_EQ(contentOf(engine, "filesnot-packed"), "<missing>");
        EXPECT_STREQ(engine.cabinetFiles[2].name, "big.bin");
        EXPECT_NE(result.output.find("left out (OkIfMissing)"), std::string::npos) << result.output;
    }
}

// A file whose record ends exactly where the second of two chunks begins.
TEST(QuilbPack, RecordEndingOnAChunkBoundary)
{
    TempDir dir;
    const std::string templateText = "<FileSet><FN Alias=\"a\">a</FN><FN Alias=\"b\">b</FN></FileSet>";
    // Stream: 4 headers of 616 bytes, the files a and b (1 byte) and the template.
    const size_t a = 1232 + 1 + templateText.size();
    const std::string contentA = bytes(a, 3);
    ASSERT_TRUE(writeFile(dir.file("a"), contentA));
    ASSERT_TRUE(writeFile(dir.file("b"), "b"));
    ASSERT_TRUE(writeFile(dir.file("install.xml"), templateText));
    std::string output = dir.file("p.pkg");
    quilbtest::CommandResult result =
        quilbtest::runCommand(pack("package -t " + shellQuote(dir.file("install.xml")) + " --chunks 2 --level 1 -o " + shellQuote(output)));
    ASSERT_EQ(result.exitCode, 0) << result.output;

    std::string package = readFile(output);
    uint64_t second = 0;
    std::memcpy(&second, package.data() + 72 + 20 + 32, 8); // uncompressed offset of chunk 1
    EXPECT_EQ(second, 616 + a);
    Installer engine;
    ASSERT_EQ(engine.Init(output.c_str(), 0, 0), 0);
    EXPECT_TRUE(contentOf(engine, "a") == contentA);
    EXPECT_EQ(contentOf(engine, "b"), "b");
}

TEST(QuilbPack, InstallerFromADummyLauncher)
{
    TempDir dir;
    // A launcher image: some bytes, the offset word, more bytes.
    const std::string image = bytes(3000, 1) + std::string("_BINARYIMAGEOFFSET_", 20) + bytes(4000, 2);
    ASSERT_TRUE(writeFile(dir.file("launcher"), image));
    ASSERT_TRUE(writeFile(dir.file("install.xml"), "<FileSet><FN Alias=\"doc\">doc.txt</FN></FileSet>"));
    ASSERT_TRUE(writeFile(dir.file("doc.txt"), "the product's file"));
    ASSERT_TRUE(writeFile(dir.file("console.sh"), "#!/bin/sh\nexit 0\n"));
    ASSERT_TRUE(writeFile(dir.file("uninstall.sh"), "#!/bin/sh\nexit 0\n"));
    std::string installerPath = dir.file("setup.bin");
    quilbtest::CommandResult result = quilbtest::runCommand(pack(
        "installer -t " + shellQuote(dir.file("install.xml")) + " --launcher " + shellQuote(dir.file("launcher"))
        + " --frontend installer_console=" + shellQuote(dir.file("console.sh")) + " --frontend uninstaller_console="
        + shellQuote(dir.file("uninstall.sh")) + " -o " + shellQuote(installerPath)));
    ASSERT_EQ(result.exitCode, 0) << result.output;

    std::string installer = readFile(installerPath);
    struct stat info;
    ASSERT_EQ(stat(installerPath.c_str(), &info), 0);
    EXPECT_TRUE(info.st_mode & S_IXUSR) << "an installer is executable";
    uint32_t offset = 0;
    std::memcpy(&offset, installer.data() + 3000, 4);
    EXPECT_EQ(offset, image.size());
    EXPECT_EQ(installer.compare(3004, 16, std::string("ARYIMAGEOFFSET_", 16)), 0) << "the rest of the word stays";
    EXPECT_EQ(installer.compare(installer.size() - 23, 7, "v2sum: "), 0);
    EXPECT_EQ(verifyFileMD5Checksum(installerPath.c_str()), 1);

    Installer outer;
    ASSERT_EQ(outer.Init(installerPath.c_str(), static_cast<int>(offset), 0), 0);
    std::string list = contentOf(outer, "install.xml");
    EXPECT_NE(list.find("<FN Alias=\"binary\" Dest=\"install_files\">binary</FN>"), std::string::npos) << list;
    EXPECT_NE(list.find("<FN Alias=\"installer_console\" Dest=\"install_files\" Executable=\"1\">installer_console</FN>"),
              std::string::npos)
        << list;
    EXPECT_NE(list.find("uninstaller_console"), std::string::npos) << list;
    EXPECT_EQ(list.find("installer_gtk2"), std::string::npos) << "front ends not given are left out";
    EXPECT_EQ(contentOf(outer, "installer_console"), "#!/bin/sh\nexit 0\n");

    // The inner package is a cabinet of its own, with the template and the product's file.
    ASSERT_TRUE(writeFile(dir.file("binary"), contentOf(outer, "binary")));
    Installer inner;
    ASSERT_EQ(inner.Init(dir.file("binary").c_str(), 0, 0), 0);
    EXPECT_EQ(contentOf(inner, "doc"), "the product's file");
    EXPECT_EQ(contentOf(inner, "install.xml"), readFile(dir.file("install.xml")));

    // A change behind the first 5000 bytes breaks the trailer.
    installer[6000] ^= 1;
    ASSERT_TRUE(writeFile(dir.file("broken.bin"), installer));
    EXPECT_EQ(verifyFileMD5Checksum(dir.file("broken.bin").c_str()), 0);
}

TEST(QuilbPack, CustomFileListAndFiles)
{
    TempDir dir;
    ASSERT_TRUE(writeFile(dir.file("launcher"), std::string("_BINARYIMAGEOFFSET_", 20) + bytes(6000, 4)));
    const std::string list = "<QuilbGroupInstallation><Installation><FileSet><FN Alias=\"x\" Dest=\"d\">x</FN></FileSet></Installation></QuilbGroupInstallation>";
    ASSERT_TRUE(writeFile(dir.file("list.xml"), list));
    ASSERT_TRUE(writeFile(dir.file("x"), "payload"));
    quilbtest::CommandResult result = quilbtest::runCommand(
        pack("installer --launcher " + shellQuote(dir.file("launcher")) + " --file-list " + shellQuote(dir.file("list.xml"))
             + " --add x=" + shellQuote(dir.file("x")) + " -o " + shellQuote(dir.file("out.bin"))));
    ASSERT_EQ(result.exitCode, 0) << result.output;
    Installer outer;
    ASSERT_EQ(outer.Init(dir.file("out.bin").c_str(), 6020, 0), 0);
    EXPECT_EQ(contentOf(outer, "install.xml"), list);
    EXPECT_EQ(contentOf(outer, "x"), "payload");
    EXPECT_EQ(contentOf(outer, "binary"), "<missing>");
}

TEST(QuilbPack, Failures)
{
    TempDir dir;
    ASSERT_TRUE(writeFile(dir.file("ok.xml"), "<FileSet><FN>present</FN></FileSet>"));
    ASSERT_TRUE(writeFile(dir.file("present"), "here"));
    ASSERT_TRUE(writeFile(dir.file("missing.xml"), "<FileSet><FN>nowhere/file.bin</FN></FileSet>"));
    ASSERT_TRUE(writeFile(dir.file("long.xml"), "<FileSet><FN Alias=\"" + std::string(259, 'a') + "\">present</FN></FileSet>"));
    ASSERT_TRUE(writeFile(dir.file("fit.xml"), "<FileSet><FN Alias=\"" + std::string(258, 'a') + "\">present</FN></FileSet>"));
    ASSERT_TRUE(writeFile(dir.file("huge.xml"), "<FileSet><FN>huge</FN></FileSet>"));
    ASSERT_EQ(truncate(dir.file("huge").c_str(), 0), -1); // not there yet
    ASSERT_TRUE(writeFile(dir.file("huge"), ""));
    ASSERT_EQ(truncate(dir.file("huge").c_str(), int64_t(1) << 31), 0); // sparse: no disk used
    ASSERT_TRUE(writeFile(dir.file("no-marker"), bytes(9000, 1)));
    ASSERT_TRUE(writeFile(dir.file("tiny-launcher"), std::string("_BINARYIMAGEOFFSET_", 20)));
    ASSERT_TRUE(writeFile(dir.file("two-markers"),
                          std::string("_BINARYIMAGEOFFSET_", 20) + bytes(6000, 1) + std::string("_BINARYIMAGEOFFSET_", 20)));
    ASSERT_TRUE(writeFile(dir.file("old.out"), "previous content"));

    const std::string out = " -o " + shellQuote(dir.file("old.out"));
    struct Row {
        const char* name;
        std::string arguments;
        int exitCode;
        const char* message;
    } rows[] = {
        {"help", "--help", 0, "Usage:"},
        {"no mode", "", 1, "no mode given"},
        {"unknown option", "package --bogus x" + out, 1, "unknown option '--bogus'"},
        {"missing file", "package -t " + shellQuote(dir.file("missing.xml")) + out, 1, "missing file '"},
        {"unreadable template", "package -t " + shellQuote(dir.file("absent.xml")) + out, 1, "can't read the template"},
        {"template is a directory", "package -t " + shellQuote(dir.path()) + out, 1, "it is a directory"},
        {"alias over 258 characters", "package -t " + shellQuote(dir.file("long.xml")) + out, 1, "is 259 characters long; at most 258"},
        {"package of 2 GiB", "package -t " + shellQuote(dir.file("huge.xml")) + out, 1, "must stay below 2 GiB"},
        {"bad chunk count", "package -t " + shellQuote(dir.file("ok.xml")) + " --chunks 257" + out, 1, "from 1 to 256"},
        {"launcher without offset word",
         "installer -t " + shellQuote(dir.file("ok.xml")) + " --launcher " + shellQuote(dir.file("no-marker")) + out, 1,
         "holds no offset word"},
        {"launcher with two offset words",
         "installer -t " + shellQuote(dir.file("ok.xml")) + " --launcher " + shellQuote(dir.file("two-markers")) + out, 1,
         "more than once"},
        {"installer too short for its checksum",
         "installer -t " + shellQuote(dir.file("ok.xml")) + " --launcher " + shellQuote(dir.file("tiny-launcher"))
             + " --frontend-dir " + shellQuote(dir.file("no-front-ends")) + out,
         1,
         "too short for its checksum"},
        {"missing launcher", "installer -t " + shellQuote(dir.file("ok.xml")) + " --launcher " + shellQuote(dir.file("nope")) + out,
         1, "can't read the launcher image"},
        {"no output", "package -t " + shellQuote(dir.file("ok.xml")), 1, "no output file given"},
    };
    for (const Row& row : rows) {
        quilbtest::CommandResult result = quilbtest::runCommand(pack(row.arguments) + " 2>&1");
        EXPECT_EQ(result.exitCode, row.exitCode) << row.name << "\n" << result.output;
        EXPECT_NE(result.output.find(row.message), std::string::npos) << row.name << "\n" << result.output;
        EXPECT_TRUE(readFile(dir.file("old.out")) == "previous content") << row.name << ": the output must stay as it was";
    }
    quilbtest::CommandResult listing = quilbtest::runCommand("ls " + shellQuote(dir.path()));
    EXPECT_EQ(listing.output.find("old.out."), std::string::npos) << "no temporary file left behind:\n" << listing.output;

    quilbtest::CommandResult fits = quilbtest::runCommand(pack("package -t " + shellQuote(dir.file("fit.xml")) + out));
    EXPECT_EQ(fits.exitCode, 0) << fits.output;
}

} // namespace
