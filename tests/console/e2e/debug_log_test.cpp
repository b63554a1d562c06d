// The console front end's debug log: where it goes, how it is named by level, and what its
// first lines tell.
#include "console/e2e/console_e2e_helpers.h"

#include "support/paths.h"

#include <regex>

using namespace quilbtest;

namespace {

TEST(DebugLogTest, NamedByLevelInTheTemporaryFolder)
{
    QUILB_REQUIRE_SANDBOX();
    const std::string minute = "installer_debug_20[0-9]{2}_[01][0-9]_[0-3][0-9]_[0-2][0-9]_[0-5][0-9]";
    const struct {
        const char* name;
        std::string debug;     // the -debug argument, if any
        std::string variable;  // QUILB_INSTALLER_DEBUG, empty for unset
        std::string pattern;   // of the log's name; empty for no log
    } runs[] = {
        {"-debug=0 and a variable of 0: no log", "-debug=0", "0", ""},
        {"-debug is level 1: one name", "-debug", "", "installer_debug\\.log"},
        {"the variable's \"TRUE\" is level 1", "", "TRUE", "installer_debug\\.log"},
        {"level 2 adds the minute", "-debug=2", "", minute + "\\.log"},
        {"the greater level counts, level 3 adds the second", "-debug=1", "3", minute + "_[0-5][0-9]\\.log"},
    };
    for (const auto& run : runs) {
        SCOPED_TRACE(run.name);
        TempDir work;
        std::string temp = work.file("tmp");  // inside the directory the sandbox shares
        ASSERT_EQ(runCommand("mkdir " + shellQuote(temp)).exitCode, 0);
        // An old log of the same name is emptied first.
        ASSERT_TRUE(writeFile(temp + "/installer_debug.log", "stale line\n"));
        std::vector<std::string> args = {"-bin=" + promptsPackage(), "-configFile=" + consoleData() + "/answers.xml"};
        if (!run.debug.empty())
            args.push_back(run.debug);
        std::vector<std::string> env = {"TMPDIR=" + temp + "//"};
        if (!run.variable.empty())
            env.push_back("QUILB_INSTALLER_DEBUG=" + run.variable);
        CommandResult result = runConsole(installerConsole(), args, work.path(), "", env);
        EXPECT_EQ(result.exitCode, 0) << result.output;
        if (run.pattern.empty()) {
            EXPECT_EQ(result.output, kSuccess);
            EXPECT_EQ(readFile(temp + "/installer_debug.log"), "stale line\n");
            continue;
        }
        std::string logName;
        for (const std::string& entry : snapshot(temp)) {
            std::string name = entry.substr(0, entry.find(' '));
            if (std::regex_match(name, std::regex(run.pattern)))
                logName = name;
        }
        ASSERT_FALSE(logName.empty()) << "no log named like " << run.pattern << " in " << temp;
        EXPECT_EQ(result.output, "Installer debug log file:\n\t" + temp + "/" + logName + "\n" + kSuccess);
        std::string log = readFile(temp + "/" + logName);
        EXPECT_EQ(log.find("stale line"), std::string::npos);
        EXPECT_TRUE(inOrder(log, {"Installer build: ", "Parsing command line arguments",
                                  "Installation was called with arguments:", "  [ARG 00] " + installerConsole(),
                                  "  [ARG 01] -bin=" + promptsPackage(), "  [ARG 02] -configFile=",
                                  "Installation started", "Initializing install input: input=\"",
                                  "Setting ignoreErrors to 0",
                                  "Initializing with external bin file: \"" + promptsPackage() + "\"",
                                  "Running installation"}));
    }
}

TEST(DebugLogTest, AFolderThatCantBeWrittenIsReportedAndTheRunGoesOn)
{
    QUILB_REQUIRE_SANDBOX();
    TempDir work;
    CommandResult result = runConsole(
        installerConsole(), {"-bin=" + promptsPackage(), "-configFile=" + consoleData() + "/answers.xml", "-debug"},
        work.path(), "", {"TMPDIR=" + work.file("no/such/folder")});
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.output, "ERROR: Failed to create installer debug log file:\n\t" +
                                 work.file("no/such/folder/installer_debug.log") + "\n" + kSuccess);
    EXPECT_EQ(snapshot(work.path()), std::vector<std::string>{});
}

} // namespace
