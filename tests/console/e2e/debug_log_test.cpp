// The console front end's debug log: where it goes, how it is named by level, and what its
// first lines tell.
#include "console/e2e/console_e2e_helpers.h"

#include "support/paths.h"

#include <gtest/gtest.h>
#include <regex>

using namespace quilbtest;

namespace {

struct DebugRun {
    const char* name;
    std::vector<std::string> args;     // behind the package and the configuration file
    std::string variable;              // QUILB_INSTALLER_DEBUG, empty for unset
    std::string fileName;              // pattern of the log's name; empty for no log
};

TEST(DebugLogTest, NamedByLevelInTheTemporaryFolder)
{
    QUILB_REQUIRE_SANDBOX();
    const std::string stamp = "_20[0-9]{2}_[01][0-9]_[0-3][0-9]_[0-2][0-9]_[0-5][0-9]";
    const std::vector<DebugRun> runs = {
        {"no level, no log", {}, "", ""},
        {"-debug=0 and a variable of 0", {"-debug=0"}, "0", ""},
        {"-debug is level 1: one name", {"-debug"}, "", "installer_debug\\.log"},
        {"the variable's \"TRUE\" is level 1", {}, "TRUE", "installer_debug\\.log"},
        {"level 2 adds the minute", {"-debug=2"}, "", "installer_debug" + stamp + "\\.log"},
        {"the greater level counts", {"-debug=1"}, "3",
         "installer_debug" + stamp + "_[0-5][0-9]\\.log"},
        {"a level above 4 counts as 4", {"-debug=9"}, "", "installer_debug" + stamp + "_[0-5][0-9]\\.log"},
    };
    for (const DebugRun& run : runs) {
        SCOPED_TRACE(run.name);
        TempDir work;
        std::string temp = work.file("tmp");  // inside the directory the sandbox shares
        ASSERT_EQ(runCommand("mkdir " + shellQuote(temp)).exitCode, 0);
        const std::string& pattern = run.fileName;
        // An old log of the same name is emptied first.
        ASSERT_TRUE(writeFile(temp + "/installer_debug.log", "stale line\n"));
        std::vector<std::string> args = {"-bin=" + promptsPackage(),
                                         "-configFile=" + dataDir() + "/console/answers.xml"};
        args.insert(args.end(), run.args.begin(), run.args.end());
        std::vector<std::string> env = {"TMPDIR=" + temp + "//"};
        if (!run.variable.empty())
            env.push_back("QUILB_INSTALLER_DEBUG=" + run.variable);
        CommandResult result = runSandboxed(installerConsole(), args, work.path(), "", env);
        EXPECT_EQ(result.exitCode, 0) << result.output;

        std::vector<std::string> files = snapshot(temp);
        if (pattern.empty()) {
            EXPECT_EQ(result.output, "Automatic installation was successful!\n");
            EXPECT_EQ(readFile(temp + "/installer_debug.log"), "stale line\n");
            continue;
        }
        std::string logName;
        for (const std::string& entry : files) {
            std::string name = entry.substr(0, entry.find(' '));
            if (std::regex_match(name, std::regex(pattern)))
                logName = name;
        }
        ASSERT_FALSE(logName.empty()) << "no log named like " << pattern << " in " << temp;
        EXPECT_EQ(result.output, "Installer debug log file:\n\t" + temp + "/" + logName +
                                     "\nAutomatic installation was successful!\n");
        std::string log = readFile(temp + "/" + logName);
        EXPECT_EQ(log.find("stale line"), std::string::npos);
        std::vector<std::string> lines = {
            "Installer build: ", "Parsing command line arguments", "Installation was called with arguments:",
            "  [ARG 00] " + installerConsole(), "  [ARG 01] -bin=" + promptsPackage(),
            "  [ARG 02] -configFile=", "Installation started", "Initializing install input: input=\"",
            "Setting ignoreErrors to 0", "Initializing with external bin file: \"" + promptsPackage() + "\"",
            "Running installation"};
        size_t at = 0;
        for (const std::string& line : lines) {
            size_t found = log.find(line, at);
            EXPECT_NE(found, std::string::npos) << "\"" << line << "\" missing (in order) from:\n" << log;
            if (found != std::string::npos)
                at = found + line.size();
        }
    }
}

TEST(DebugLogTest, AFolderThatCantBeWrittenIsReportedAndTheRunGoesOn)
{
    QUILB_REQUIRE_SANDBOX();
    TempDir work;
    CommandResult result =
        runSandboxed(installerConsole(),
                     {"-bin=" + promptsPackage(), "-configFile=" + dataDir() + "/console/answers.xml",
                      "-debug"},
                     work.path(), "", {"TMPDIR=" + work.file("no/such/folder")});
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.output, "ERROR: Failed to create installer debug log file:\n\t" +
                                 work.file("no/such/folder/installer_debug.log") +
                                 "\nAutomatic installation was successful!\n");
    EXPECT_EQ(snapshot(work.path()), std::vector<std::string>{});
}

} // namespace
