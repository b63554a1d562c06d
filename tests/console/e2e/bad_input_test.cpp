// Command lines and configuration files that the console front end refuses: the message,
// the exit status, and a working directory left as it was.
#include "console/e2e/console_e2e_helpers.h"

using namespace quilbtest;

namespace {

TEST(BadInputTest, RefusedWithTheirMessageAndStatusLeavingNothingBehind)
{
    QUILB_REQUIRE_SANDBOX();
    const std::string bin = "-bin=" + promptsPackage();
    const std::string package = readFile(promptsPackage());
    const std::vector<std::pair<std::string, std::string>> two
        = { { "a.ibin", package }, { "b.ibin", package } };
    const std::string several = "Several .ibin files are found - please choose one of them:\n"
                                "\t1) a.ibin\n\t2) b.ibin\n\t3) Exit\n\n>";
    const std::string missing = "The file \"missing.xml\" does not exist! Please specify existing file!\n";
    const std::string noLog = "Cannot uninstall. Use -log=... to specify the action log file!\n";
    checkRuns({
        { "configuration file missing", { bin, "-configFile=missing.xml" }, 255, missing + kFailed },
        { "configuration file missing, not quiet: the engine says so too",
            { bin, "-configFile=missing.xml", "-quiet=0" }, 255,
            missing
                + "\nError loading configuration file \"missing.xml\" (2). Installation can not continue.\n"
                  "Press Enter to continue..."
                + kFailed },
        { "configuration file not XML", { bin, "-configFile=notes.txt" }, 255,
            "The file \"notes.txt\" is not a propper XML installation config file. The installation can not "
            "continue!\n"
                + kFailed,
            Match::Whole, "", { { "notes.txt", "just some words\n" } } },
        // The fetching tool has its say about the address first.
        { "configuration file at an address nobody answers",
            { bin, "-configFile=http://127.0.0.1:9/x.xml", "-quiet=0" }, 255, kFailed, Match::End },
        // A quote in the address stays inside the fetching command: no file appears.
        { "an address with a quote in it",
            { bin, "-configFile=http://127.0.0.1:9/x.xml';touch injected;'", "-quiet=0" }, 255, kFailed,
            Match::End },
        { "a package that isn't there",
            { "-bin=nowhere.ibin", "-configFile=" + consoleData() + "/answers.xml" }, -1,
            "There was an error during the (un)installation: -", Match::Start },
        { "a package that is no package", { "-bin=junk.ibin", "-quiet=0" }, -1,
            "There was an error during the (un)installation: -", Match::Start, "",
            { { "junk.ibin", std::string(4000, 'j') } } },
        { "no package in the working directory", {}, 1,
            "Cannot install. Use -bin=... to specify .ibin file!\n" },
        { "several packages, wrong numbers asked again, then Exit", {}, 1,
            several
                + "Please, enter a number in [1 - 3]: Please, enter a number in [1 - 3]: "
                  "Please, enter a number in [1 - 3]: ",
            Match::Whole, "9\nnone\n0\n3\n", two },
        { "several packages and the input ends", {}, 1, several, Match::Whole, "", two },
        { "uninstall without an action log", {}, 1, noLog, Match::Whole, "", {}, true },
        { "uninstall without an application", { "-log=notes.log" }, 1,
            "Cannot uninstall. Use -uninstallApp=... to specify application!\n", Match::Whole, "", {}, true },
        { "-uninstallApp= makes the installer uninstall", { bin, "-uninstallApp=Prompt Check" }, 1, noLog },
        { "automatic uninstall in GUI mode: warning first", { "-auto", "-gui=1", "-uninstallapp=X" }, 1,
            "Warning: Cannot automatically (un)install in GUI mode (reverting to CLI mode)\n" + noLog,
            Match::Whole, "", {}, true },
        { "-gui=1 is refused and the console carries on", { bin, "-gui=1", "-VARIABLE_EDITION=0" }, 0,
            "Cannot initialize the graphic user interface. Please, use the console installer (-gui=0)\n"
                + kBanner,
            Match::Start },
        { "-testRun wins over everything else",
            { "-configFile=missing.xml", "-gui=1", "-bin=nowhere.ibin", "-uninstallApp=X", "-testRun",
                "-quiet=0" },
            0, "" },
    });
}

TEST(BadInputTest, TestRunAnswersAtOnceOutsideAnySandbox)
{
    // The launcher probes front ends this way before anything else: it must need nothing.
    TempDir work;
    for (const std::string& program : { installerConsole(), uninstallerConsole() }) {
        CommandResult result = runConsole(program, { "-testRun" }, work.path(), "", {}, false);
        EXPECT_EQ(result.exitCode, 0) << program;
        EXPECT_EQ(result.output, "") << program;
    }
    EXPECT_EQ(snapshot(work.path()), "");
}

} // namespace
