// Command lines and configuration files that the console front end refuses: the message,
// the exit status, and a working directory left as it was.
#include "console/e2e/console_e2e_helpers.h"

#include "support/paths.h"

#include <gtest/gtest.h>

using namespace quilbtest;

namespace {

const std::string kFailed = "There was an error during the (un)installation: -1\n";

struct Refusal {
    const char* name;
    bool uninstaller;                 // run under the uninstaller's name
    std::vector<std::string> args;
    std::vector<std::pair<std::string, std::string>> files;  // put into the working directory first
    std::string input;                // standard input
    int exitCode;                     // -1: any status but 0
    std::string output;               // the whole output, or its start when `prefixOnly`
    bool prefixOnly = false;
};

class BadInputTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        QUILB_REQUIRE_SANDBOX();
    }
};

TEST_F(BadInputTest, RefusedWithTheirMessageAndStatusLeavingNothingBehind)
{
    const std::string bin = "-bin=" + promptsPackage();
    const std::string package = readFile(promptsPackage());
    const std::string several = "Several .ibin files are found - please choose one of them:\n"
                                "\t1) a.ibin\n\t2) b.ibin\n\t3) Exit\n\n>";
    const std::vector<Refusal> refusals = {
        {"configuration file missing", false, {bin, "-configFile=missing.xml"}, {}, "", 255,
         "The file \"missing.xml\" does not exist! Please specify existing file!\n" + kFailed},
        {"configuration file missing, not quiet: the engine says so too", false,
         {bin, "-configFile=missing.xml", "-quiet=0"}, {}, "", 255,
         "The file \"missing.xml\" does not exist! Please specify existing file!\n\n"
         "Error loading configuration file \"missing.xml\" (2). Installation can not continue.\n"
         "Press Enter to continue..." + kFailed},
        {"configuration file not XML", false, {bin, "-configFile=notes.txt"},
         {{"notes.txt", "just some words\n"}}, "", 255,
         "The file \"notes.txt\" is not a propper XML installation config file. The installation can not "
         "continue!\n" + kFailed},
        {"configuration file without DefValues", false, {bin, "-configFile=other.xml"},
         {{"other.xml", "<Values><Value Name=\"OWNER\" DataType=\"value\">x</Value></Values>\n"}}, "", 255,
         "The file \"other.xml\" is not a propper XML installation config file. The installation can not "
         "continue!\n" + kFailed},
        {"configuration file at an address nobody answers", false,
         {bin, "-configFile=http://127.0.0.1:9/x.xml", "-quiet=0"}, {}, "", 255, kFailed},
        {"a package that isn't there", false, {"-bin=nowhere.ibin", "-configFile=answers.xml"},
         {{"answers.xml", "<DefValues/>\n"}}, "", -1, "There was an error during the (un)installation: -", true},
        {"a package that is no package", false, {"-bin=junk.ibin", "-quiet=0"},
         {{"junk.ibin", std::string(4000, 'j')}}, "", -1, "There was an error during the (un)installation: -", true},
        {"no package in the working directory", false, {}, {}, "", 1,
         "Cannot install. Use -bin=... to specify .ibin file!\n"},
        {"no package, with a configuration file", false, {"-configFile=answers.xml"},
         {{"answers.xml", "<DefValues/>\n"}}, "", 1, "Cannot install. Use -bin=... to specify .ibin file!\n"},
        {"several packages, wrong numbers asked again, then Exit", false, {},
         {{"a.ibin", package}, {"b.ibin", package}}, "9\nnone\n0\n3\n", 1,
         several + "Please, enter a number in [1 - 3]: Please, enter a number in [1 - 3]: "
                   "Please, enter a number in [1 - 3]: "},
        {"several packages and the input ends", false, {}, {{"a.ibin", package}, {"b.ibin", package}}, "", 1,
         several},
        {"uninstall without an action log", true, {}, {}, "", 1,
         "Cannot uninstall. Use -log=... to specify the action log file!\n"},
        {"uninstall without an application", true, {"-log=notes.log"}, {}, "", 1,
         "Cannot uninstall. Use -uninstallApp=... to specify application!\n"},
        {"-uninstallApp= makes the installer uninstall", false, {bin, "-uninstallApp=Prompt Check"}, {}, "", 1,
         "Cannot uninstall. Use -log=... to specify the action log file!\n"},
        {"automatic uninstall in GUI mode: warning first", true, {"-auto", "-gui=1", "-uninstallapp=X"}, {}, "",
         1,
         "Warning: Cannot automatically (un)install in GUI mode (reverting to CLI mode)\n"
         "Cannot uninstall. Use -log=... to specify the action log file!\n"},
        {"-gui=1 is refused and the console carries on", false, {bin, "-gui=1", "-VARIABLE_EDITION=0"}, {}, "", 0,
         "Cannot initialize the graphic user interface. Please, use the console installer (-gui=0)\n"
         "*******************************\n",
         true},
        {"-testRun says nothing", false, {"-testRun"}, {}, "", 0, ""},
        {"-testRun wins over everything else", false,
         {"-configFile=missing.xml", "-gui=1", "-bin=nowhere.ibin", "-testRun", "-quiet=0"}, {}, "", 0, ""},
        {"-testRun under the uninstaller's name", true, {"-testRun"}, {}, "", 0, ""},
        {"-testRun with half an uninstall", false, {"-uninstallApp=X", "-testRun"}, {}, "", 0, ""},
    };
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.name);
        TempDir work;
        for (const auto& [name, content] : refusal.files)
            ASSERT_TRUE(writeFile(work.file(name), content));
        std::vector<std::string> before = snapshot(work.path());
        CommandResult result = runSandboxed(refusal.uninstaller ? uninstallerConsole() : installerConsole(),
                                            refusal.args, work.path(), refusal.input);
        if (refusal.exitCode == -1)
            EXPECT_NE(result.exitCode, 0) << result.output;
        else
            EXPECT_EQ(result.exitCode, refusal.exitCode) << result.output;
        if (refusal.prefixOnly)
            EXPECT_EQ(result.output.substr(0, refusal.output.size()), refusal.output) << result.output;
        else if (refusal.args.size() > 1 && refusal.args[1].find("http://") != std::string::npos)
            // The fetching tool has its say about the address first.
            EXPECT_TRUE(result.output.size() >= kFailed.size() &&
                        result.output.compare(result.output.size() - kFailed.size(), kFailed.size(), kFailed) == 0)
                << result.output;
        else
            EXPECT_EQ(result.output, refusal.output);
        EXPECT_EQ(snapshot(work.path()), before);
    }
}

TEST(BadInputPlainTest, TestRunAnswersAtOnceOutsideAnySandbox)
{
    // The launcher probes front ends this way before anything else: it must need nothing.
    TempDir work;
    for (const std::string& program : {installerConsole(), uninstallerConsole()}) {
        CommandResult result = runPlain(program, {"-testRun"}, work.path());
        EXPECT_EQ(result.exitCode, 0) << program;
        EXPECT_EQ(result.output, "") << program;
    }
    EXPECT_EQ(snapshot(work.path()), std::vector<std::string>{});
}

} // namespace
