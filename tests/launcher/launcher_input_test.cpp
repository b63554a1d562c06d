// The launcher on unusual file lists and on damaged installer files: the exact words, the
// exit value, and nothing left on disk.
#include "launcher/launcher_helpers.h"
#include "support/paths.h"

#include <gtest/gtest.h>

#include <functional>

namespace quilbtest {
namespace {

const FrontEndScript kWorks;

// The standard front ends and "binary", under a file list made of `elements`.
InstallerContent contentWithList(const std::string& records, const std::string& elements)
{
    InstallerContent content = standardContent(records, kWorks, kWorks, kWorks);
    content.fileList = fileListXml(elements);
    return content;
}

std::string frontEnds(const std::string& attributes = "Executable=\"1\"")
{
    std::string elements;
    for (const char* alias : { "installer_gtk2", "installer_x11", "installer_console" })
        elements += fnElement(alias, "install_files", std::string("bin/") + alias, attributes);
    return elements;
}

const std::string kBinary = fnElement("binary", "install_files", "out/product.bin");

TEST(LauncherFileList, VocabularyOfTheList)
{
    struct Case
    {
        const char* name;
        std::string elements;
        int exitCode;
        const char* binPath; // the front end's -bin= below the installer's directory, or null
        const char* message; // text the output must hold ('@' for the installer's directory), or null
    };
    const Case cases[] = {
        { "rename with a variable",
            "<Rename Alias=\"binary\">p_[OPERATING_SYSTEM].cab</Rename>" + kBinary + frontEnds(), 0,
            "/install_files/p_linux.cab", nullptr },
        { "last rename before the file wins",
            "<Rename Alias=\"binary\">a.cab</Rename><Rename Alias=\"binary\">b.cab</Rename>" + kBinary
                + frontEnds(),
            0, "/install_files/b.cab", nullptr },
        { "rename behind its file has no effect",
            kBinary + "<Rename Alias=\"binary\">late.cab</Rename>" + frontEnds(), 0,
            "/install_files/product.bin", nullptr },
        { "doubled slashes in Dest", fnElement("binary", "a//b//", "x\\product.bin") + frontEnds(), 0,
            "/a/b/product.bin", nullptr },
        { "name part of a path with backslashes",
            fnElement("binary", "d", "c:\\build\\pkg.bin") + frontEnds(), 0, "/d/pkg.bin", nullptr },
        { "Executable=\"\" is on", kBinary + frontEnds("Executable=\"\""), 0, "/install_files/product.bin",
            nullptr },
        { "Executable=\"0\" is off", kBinary + frontEnds("Executable=\"0\""), 253, nullptr,
            "No installer could be started. Please verify you have execution rights and try again." },
        { "missing alias allowed by OkIfMissing",
            kBinary + frontEnds() + fnElement("absent", "install_files", "absent.txt", "OkIfMissing=\"1\""),
            0, "/install_files/product.bin", nullptr },
        { "missing alias before others is forgotten",
            fnElement("absent", "install_files", "absent.txt") + kBinary + frontEnds(), 0,
            "/install_files/product.bin", nullptr },
        { "missing alias last fails",
            kBinary + frontEnds() + fnElement("absent", "install_files", "absent.txt", "OkIfMissing=\"0\""),
            1, nullptr, "An error occured in decompressing installation files!" },
        { "file without Dest is skipped", "<FN Alias=\"binary\">p.bin</FN>" + frontEnds(), 253, nullptr,
            "The installer has no binary file or encountered problem decompressing it!\n"
            "Please download a new installer package or contact us at " },
        { "directory failure before others is forgotten, but told",
            fnElement("absent", "installer/sub", "a") + kBinary + frontEnds(), 0,
            "/install_files/product.bin",
            "Error in creating dir: @/installer/sub/\nCreated temporary dir: @/install_files/\n" },
        { "directory failure of the last file allowed to be missing",
            kBinary + frontEnds() + fnElement("absent", "installer/sub", "a", "OkIfMissing=\"\""), 255,
            nullptr,
            "Error in creating dir: @/installer/sub/\nAn error occured in decompressing installation "
            "files!\n" },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TempDir records;
        PackedInstaller packed(contentWithList(records.path(), c.elements));
        ASSERT_TRUE(packed.built) << packed.packLog;
        CommandResult result = packed.run();

        EXPECT_EQ(result.exitCode, c.exitCode) << result.output;
        FrontEndRecord record = readFrontEndRecord(records.path(), "installer_gtk2");
        EXPECT_EQ(record.ran, c.binPath != nullptr);
        if (c.binPath) {
            ASSERT_FALSE(record.args.empty());
            EXPECT_EQ(record.args.back(), "-bin=" + packed.dir + c.binPath);
            EXPECT_EQ(record.binContent, "product package");
        }
        if (c.message) {
            std::string message = c.message;
            for (size_t at = message.find('@'); at != std::string::npos; at = message.find('@', at))
                message.replace(at, 1, packed.dir);
            EXPECT_NE(result.output.find(message), std::string::npos) << result.output;
        }
        EXPECT_TRUE(packed.onlyInstallerLeft()) << result.output;
    }
}

TEST(LauncherBadInput, DamagedInstallersAreRefusedCleanly)
{
    const std::string image = readFile(binDir() + "/launcher");
    // Quiet runs still tell the failures.
    const std::string checksumQuiet
        = "The checksum of the installer doesn't match. This could indicate a broken download.\n"
          "Please, try downloading again or contact us at "
        + supportAddress()
        + "\n"
          "An error occured in installer initialization!\n";
    const std::string checksum
        = "Initializing...\nVerifying installer integrity...Failed!\n\n" + checksumQuiet;
    const std::string initFailed = "Initializing...\nVerifying installer integrity...OK.\nAn error occured "
                                   "in installer initialization!\n";
    const std::string noList
        = "Initializing...\nVerifying installer integrity...OK.\nGathering file information...\n"
          "Error decompressing installation file!\n"
          "An error occured in gathering installation information!\n";
    const std::string notXml
        = "Initializing...\nVerifying installer integrity...OK.\nGathering file information...\n"
          "Error in installation file!\nDecompressing...\n"
          "No installer could be started. Please verify you have execution rights and try "
          "again.\n";
    const long imageSize = static_cast<long>(image.size());

    struct Case
    {
        const char* name;
        std::function<void(std::string&)> damage;
        std::string fileList; // the list packed as "install.xml"
        int exitCode;
        std::string output;
        std::vector<std::string> args = {};
    };
    auto truncate = [](std::string& f) { f.resize(f.size() - 100); };
    auto keep = [](std::string&) {};
    const Case cases[] = {
        { "truncated", truncate, fileListXml(""), 230, checksum },
        { "truncated, quiet", truncate, fileListXml(""), 230, checksumQuiet, { "-configFile=x" } },
        { "launcher without package", [&](std::string& f) { f = image; }, fileListXml(""), 1,
            "The launcher can not be used without a packed fat binary!\n" },
        { "cabinet magic wrong",
            [&](std::string& f) {
                f[imageSize] ^= 1;
                rewriteTrailer(f);
            },
            fileListXml(""), 251, initFailed },
        { "list missing",
            [&](std::string& f) {
                editRecordStream(f, imageSize, [](std::string& records) {
                    for (size_t at = records.find("install.xml"); at != std::string::npos;
                         at = records.find("install.xml", at))
                        records[at + 10] = 'X';
                });
            },
            fileListXml(""), 255, noList },
        { "list not XML", keep, "this is { not xml", 253, notXml },
        { "list without FileSet", keep,
            "<QuilbGroupInstallation><Installation><Files/></Installation></QuilbGroupInstallation>", 253,
            notXml },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        InstallerContent content = standardContent("", kWorks, kWorks, kWorks);
        content.fileList = c.fileList;
        PackedInstaller packed(content);
        ASSERT_TRUE(packed.built) << packed.packLog;
        std::string installer = readFile(packed.installer);
        c.damage(installer);
        ASSERT_TRUE(writeFile(packed.installer, installer));

        CommandResult result = packed.run(c.args);
        EXPECT_EQ(result.exitCode, c.exitCode) << result.output;
        EXPECT_EQ(result.output, c.output);
        EXPECT_TRUE(packed.onlyInstallerLeft());
    }
}

} // namespace
} // namespace quilbtest
