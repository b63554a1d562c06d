// The launcher run as a user runs it: real installers packed from scripted front ends.
#include "launcher/launcher_helpers.h"
#include "support/paths.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace quilbtest {
namespace {

const FrontEndScript kWorks;
const FrontEndScript kFailsTest { 1, 0, 0 };

TEST(LauncherRun, PrintsEachStepAndRemovesWhatItWrote)
{
    PackedInstaller packed(standardContent("", kWorks, kWorks, kWorks));
    CommandResult result = packed.run();
    const std::string files = packed.dir + "/install_files/";
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output,
        "Initializing...\n"
        "Verifying installer integrity...OK.\n"
        "Gathering file information...\n"
        "Decompressing...\n"
        "Created temporary dir: "
            + files
            + "\n"
              "Created binary file as: "
            + files
            + "binary\n"
              "Created installer_gtk2 file as: "
            + files
            + "installer_gtk2\n"
              "Created installer_x11 file as: "
            + files
            + "installer_x11\n"
              "Created installer_console file as: "
            + files + "installer_console\n" + files
            + "installer_gtk2 is a suitable installer. Installing...\n"
              "Deleted "
            + files
            + "binary\n"
              "Deleted "
            + files
            + "installer_gtk2\n"
              "Deleted "
            + files
            + "installer_x11\n"
              "Deleted "
            + files
            + "installer_console\n"
              "Removed directory: "
            + packed.dir + "/install_files\n");
    EXPECT_TRUE(packed.onlyInstallerLeft());
}

TEST(LauncherRun, ChoosesTheFirstWorkingFrontEndAndHandsOverEverything)
{
    struct Case
    {
        const char* name;
        FrontEndScript gtk2, x11, console;
        std::vector<std::string> tested; // front ends asked "-testRun", in order
        const char* chosen; // null: none may run
        int exitCode;
    };
    const Case cases[] = {
        { "gtk2 first", kWorks, kWorks, kWorks, { "installer_gtk2" }, "installer_gtk2", 0 },
        { "x11 when gtk2 fails", kFailsTest, kWorks, kWorks, { "installer_gtk2", "installer_x11" },
            "installer_x11", 0 },
        { "console last", kFailsTest, kFailsTest, kWorks,
            { "installer_gtk2", "installer_x11", "installer_console" }, "installer_console", 0 },
        { "none works", kFailsTest, { 9, 0, 0 }, { 255, 0, 0 },
            { "installer_gtk2", "installer_x11", "installer_console" }, nullptr, 253 },
        { "front end code 7 is no failure", { 0, 7, 0 }, kWorks, kWorks, { "installer_gtk2" },
            "installer_gtk2", 0 },
        { "signal 11 passes through", { 0, 0, 11 }, kWorks, kWorks, { "installer_gtk2" }, "installer_gtk2",
            11 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TempDir records;
        PackedInstaller packed(standardContent(records.path(), c.gtk2, c.x11, c.console));
        const std::vector<std::string> args = { "-debug", "-PRODUCT_NAME=two words", "--verbose", "-debug" };
        CommandResult result = packed.run(args);

        EXPECT_EQ(result.exitCode, c.exitCode) << result.output;
        EXPECT_EQ(testedFrontEnds(records.path()), c.tested);
        EXPECT_TRUE(packed.onlyInstallerLeft()) << result.output;
        for (const char* frontEnd : { "installer_gtk2", "installer_x11", "installer_console" }) {
            FrontEndRecord record = readFrontEndRecord(records.path(), frontEnd);
            bool chosen = c.chosen && std::string(frontEnd) == c.chosen;
            ASSERT_EQ(record.ran, chosen) << frontEnd;
            if (!chosen)
                continue;
            std::vector<std::string> expected = { packed.dir + "/install_files/" + frontEnd };
            expected.insert(expected.end(), args.begin(), args.end());
            expected.push_back("-bin=" + packed.dir + "/install_files/binary");
            EXPECT_EQ(record.args, expected);
            EXPECT_EQ(record.installerDir, packed.dir + "/");
            EXPECT_EQ(record.binContent, "product package");
        }
        if (!c.chosen) {
            EXPECT_NE(result.output.find("No installer could be started. Please verify you have execution "
                                         "rights and try again.\n"),
                std::string::npos);
        }
    }
}

TEST(LauncherRun, QuietOptions)
{
    struct Case
    {
        std::vector<std::string> args;
        bool quiet;
    };
    const Case cases[] = {
        { { "-quiet" }, true },
        { { "-quietly" }, true },
        { { "-quiet=x" }, true },
        { { "-quiet=0", "-quiet" }, false },
        { { "-quiet", "-quiet=0" }, false },
        { { "-quiet=0", "-quiet=2" }, true },
        { { "-configFile=x" }, true },
        { { "-configFile=a", "-quiet=0" }, false },
    };
    PackedInstaller packed(standardContent("", kWorks, kWorks, kWorks));
    for (const Case& c : cases) {
        std::string name;
        for (const std::string& arg : c.args)
            name += arg + " ";
        SCOPED_TRACE(name);
        CommandResult result = packed.run(c.args);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.output.empty(), c.quiet) << result.output;
        EXPECT_TRUE(packed.onlyInstallerLeft());
    }
}

TEST(LauncherRun, UnpackOnlyWritesTheChosenFilesAndKeepsThem)
{
    struct Case
    {
        const char* name;
        std::vector<std::string> args;
        std::vector<std::string> tree;
    };
    const Case cases[] = {
        { "binary", { "-unpack=binary" }, { "install_files", "install_files/binary", "installer" } },
        { "two aliases", { "-unpack=installer_console", "-quiet", "-unpack=binary" },
            { "install_files", "install_files/binary", "install_files/installer_console", "installer" } },
        { "unknown alias", { "-unpack=nothing" }, { "installer" } },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TempDir records;
        PackedInstaller packed(standardContent(records.path(), kWorks, kWorks, kWorks));
        CommandResult result = packed.run(c.args);
        EXPECT_EQ(result.exitCode, 0) << result.output;
        EXPECT_EQ(listTree(packed.dir), c.tree);
        EXPECT_TRUE(testedFrontEnds(records.path()).empty());
        // Programs get execute permission, the product package does not.
        struct stat info;
        if (stat((packed.dir + "/install_files/installer_console").c_str(), &info) == 0) {
            EXPECT_EQ(info.st_mode & 07777, 0775u);
        }
        if (stat((packed.dir + "/install_files/binary").c_str(), &info) == 0) {
            EXPECT_EQ(info.st_mode & 0111, 0u);
            EXPECT_EQ(readFile(packed.dir + "/install_files/binary"), "product package");
        }
    }
}

} // namespace
} // namespace quilbtest
