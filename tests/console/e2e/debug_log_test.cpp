// The console front end's debug log: where it goes, how it is named by level, and what its
// first lines tell.
#include "console/e2e/console_e2e_helpers.h"

#include <regex>

using namespace quilbtest;

namespace {

TEST(DebugLogTest, NamedByLevelInTheTemporaryFolder)
{
    QUILB_REQUIRE_SANDBOX();
    const std::string answers = "-configFile=" + consoleData() + "/answers.xml";
    const std::string minute = "installer_debug_20[0-9]{2}_[01][0-9]_[0-3][0-9]_[0-2][0-9]_[0-5][0-9]";
    const struct
    {
        const char* name;
        std::string debug; // the -debug argument
        std::string variable; // QUILB_INSTALLER_DEBUG
        std::string pattern; // of the log's name; empty for no log
    } runs[] = {
        { "-debug=0 and a variable of 0: no log", "-debug=0", "0", "" },
        { "-debug is level 1: one name", "-debug", "", "installer_debug\\.log" },
        { "the variable's \"TRUE\" is level 1", "-debug=0", "TRUE", "installer_debug\\.log" },
        { "level 2 adds the minute", "-debug=2", "", minute + "\\.log" },
        { "the greater level counts, level 3 adds the second", "-debug=1", "3",
            minute + "_[0-5][0-9]\\.log" },
    };
    for (const auto& run : runs) {
        SCOPED_TRACE(run.name);
        TempDir work;
        // A folder inside the directory the sandbox shares, with an old log of the name that
        // level 1 uses: it is emptied first.
        std::string temp = work.file("tmp");
        ASSERT_EQ(runCommand("mkdir " + shellQuote(temp)).exitCode, 0);
        ASSERT_TRUE(writeFile(temp + "/installer_debug.log", "stale\n"));
        CommandResult result
            = runConsole(installerConsole(), { "-bin=" + promptsPackage(), answers, run.debug }, work.path(),
                "", { "TMPDIR=" + temp + "//", "QUILB_INSTALLER_DEBUG=" + run.variable });
        EXPECT_EQ(result.exitCode, 0) << result.output;
        std::string files = snapshot(temp);
        if (run.pattern.empty()) {
            EXPECT_EQ(result.output, kSuccess);
            EXPECT_EQ(files, "./installer_debug.log 6\n");
            continue;
        }
        std::smatch found;
        ASSERT_TRUE(std::regex_search(files, found, std::regex("\\./(" + run.pattern + ") "))) << files;
        std::string path = temp + "/" + found[1].str();
        EXPECT_EQ(result.output, "Installer debug log file:\n\t" + path + "\n" + kSuccess);
        std::string log = readFile(path);
        EXPECT_EQ(log.find("stale"), std::string::npos);
        EXPECT_TRUE(inOrder(log,
            { "Installer build: ", "Parsing command line arguments",
                "Installation was called with arguments:", "  [ARG 00] " + installerConsole(),
                "  [ARG 01] -bin=" + promptsPackage(), "  [ARG 02] -configFile=", "Installation started",
                "Initializing install input: input=\"", "Setting ignoreErrors to 0",
                "Initializing with external bin file: \"" + promptsPackage() + "\"",
                "Running installation" }));
    }
}

TEST(DebugLogTest, AFolderThatCantBeWrittenIsReportedAndTheRunGoesOn)
{
    QUILB_REQUIRE_SANDBOX();
    TempDir work;
    CommandResult result = runConsole(installerConsole(),
        { "-bin=" + promptsPackage(), "-configFile=" + consoleData() + "/answers.xml", "-debug" },
        work.path(), "", { "TMPDIR=" + work.file("no/such/folder") });
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.output,
        "ERROR: Failed to create installer debug log file:\n\t"
            + work.file("no/such/folder/installer_debug.log") + "\n" + kSuccess);
    EXPECT_EQ(snapshot(work.path()), "");
}

} // namespace
