// The console front end as the uninstaller: started with the action log and the name of
// the application, unattended or answered by a person.
#include "console/e2e/console_e2e_helpers.h"

#include "support/paths.h"

#include <gtest/gtest.h>

using namespace quilbtest;

namespace {

const std::string kBanner = "*******************************\n"
                            "* Quilb Group uninstaller     *\n"
                            "*******************************\n";
const std::string kClearedLine = "\r" + std::string(78, ' ') + "\r\n";
const std::string kSuccess = "Automatic uninstallation was successful!\n";

struct UninstallRun {
    const char* name;
    std::vector<std::string> args;  // behind -log= and -uninstallApp=
    std::string input;
    int exitCode;
    std::string output;
};

TEST(UninstallTest, TheUninstallWizardFromTheActionLog)
{
    QUILB_REQUIRE_SANDBOX();
    const std::vector<UninstallRun> runs = {
        {"-auto is quiet", {"-auto"}, "", 0, kSuccess},
        {"-auto -quiet=0 shows the uninstaller's banner and texts",
         {"-auto", "-quiet=0"},
         "",
         0,
         kBanner + "Removing Gone Check from /opt/gone.\nGone Check is gone. Keep settings: 1\n" + kClearedLine +
             kSuccess},
        {"-auto in GUI mode: a warning, then the same",
         {"-gui", "-auto"},
         "",
         0,
         "Warning: Cannot automatically (un)install in GUI mode (reverting to CLI mode)\n" + kSuccess},
        {"a person answers",
         {},
         "no\n",
         0,
         kBanner + "Removing Gone Check from /opt/gone.\nKeep settings (no or [yes]): Gone Check is gone. Keep settings: 0\n" +
             kClearedLine},
    };
    for (const UninstallRun& run : runs) {
        SCOPED_TRACE(run.name);
        TempDir work;
        // An action log begins with the template's path and the backup's.
        ASSERT_TRUE(writeFile(work.file("gone.log"),
                              dataDir() + "/console/gone/install.xml\r\n" + work.file("gone.bak") + "\r\n"));
        std::vector<std::string> args = {"-log=" + work.file("gone.log"), "-uninstallApp=Gone Check"};
        args.insert(args.end(), run.args.begin(), run.args.end());
        std::vector<std::string> before = snapshot(work.path());
        CommandResult result = runSandboxed(uninstallerConsole(), args, work.path(), run.input);
        EXPECT_EQ(result.exitCode, run.exitCode) << result.output;
        EXPECT_EQ(result.output, run.output);
        EXPECT_EQ(snapshot(work.path()), before);
    }
}

TEST(UninstallTest, AnActionLogThatNamesNoTemplate)
{
    QUILB_REQUIRE_SANDBOX();
    TempDir work;
    ASSERT_TRUE(writeFile(work.file("empty.log"), ""));
    for (const std::string& log : {work.file("empty.log"), work.file("missing.log")}) {
        SCOPED_TRACE(log);
        CommandResult result =
            runSandboxed(uninstallerConsole(), {"-log=" + log, "-uninstallApp=Gone Check", "-auto"}, work.path());
        EXPECT_NE(result.exitCode, 0);
        EXPECT_EQ(result.output.rfind("There was an error during the (un)installation: -", 0), 0u) << result.output;
        EXPECT_EQ(result.output.find(kSuccess), std::string::npos) << result.output;
    }
}

} // namespace
