// Unattended runs from a configuration file, straight from the console program and through
// the self-extracting installer: what is printed and how the run ends.
#include "console/e2e/console_e2e_helpers.h"

#include "support/paths.h"

#include <gtest/gtest.h>

using namespace quilbtest;

namespace {

const std::string kBanner = "*******************************\n"
                            "* Quilb Group installer       *\n"
                            "*******************************\n";
const std::string kLicence = [] {
    std::string text;
    for (int i = 1; i <= 20; ++i)
        text += std::string("- line ") + (i < 10 ? "0" : "") + std::to_string(i) + "\n";
    return text;
}();
const std::string kClearedLine = "\r" + std::string(78, ' ') + "\r\n";
const std::string kSuccess = "Automatic installation was successful!\n";

// The whole output of a run of the test product that isn't quiet; `notes` is what the
// optional notes dialog shows.
std::string promptsRun(const std::string& summary, const std::string& notes = "")
{
    return kBanner + "Welcome to Prompt Check 3.\nPlease read the licence.\n" + kLicence +
           "Tell us how to set things up.\n" + notes + "Summary: " + summary + "\nPrompt Check is set up.\n" +
           kClearedLine + kSuccess;
}

std::string answers()
{
    return dataDir() + "/console/answers.xml";
}

// Each fragment must come in this order, after the one before.
::testing::AssertionResult inOrder(const std::string& text, const std::vector<std::string>& fragments)
{
    size_t at = 0;
    for (const std::string& fragment : fragments) {
        size_t found = text.find(fragment, at);
        if (found == std::string::npos)
            return ::testing::AssertionFailure() << "\"" << fragment << "\" missing (in order) from:\n" << text;
        at = found + fragment.size();
    }
    return ::testing::AssertionSuccess();
}

class UnattendedTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        QUILB_REQUIRE_SANDBOX();
    }
};

struct DirectRun {
    const char* name;
    std::vector<std::string> args;  // the package comes first
    std::string output;             // the whole output
};

TEST_F(UnattendedTest, ConsoleProgramWithConfigurationFile)
{
    const std::string bin = "-bin=" + promptsPackage();
    const std::vector<DirectRun> runs = {
        {"a configuration file makes the run quiet", {bin, "-configFile=" + answers()}, kSuccess},
        {"-fromFile= is another name for it", {bin, "-fromFile=" + answers()}, kSuccess},
        {"-quiet=1 stays quiet", {bin, "-quiet=1", "-configFile=" + answers()}, kSuccess},
        {"-quiet=0 shows banner, texts and licence",
         {bin, "-configFile=" + answers(), "-quiet=0"},
         promptsRun("TARGET=/srv/prompt OWNER=Config Owner CODE= LINK=1 EDITION=1 PLAN=desk plan")},
        {"the command line wins over the file, a bare variable is 1",
         {bin, "-VARIABLE_OWNER=From CLI", "-configFile=" + answers(), "-quiet=0", "-VARIABLE_LINK",
          "-VARIABLE_EDITION=2", "-VARIABLE_EDITION=0"},
         promptsRun("TARGET=/srv/prompt OWNER=From CLI CODE= LINK=1 EDITION=2 PLAN=desk plan")},
        {"a value in the next argument, or in double quotes",
         {bin, "-configFile=" + answers(), "-quiet=0", "-VARIABLE_OWNER=\"In Quotes\"", "--VARIABLE_TARGET",
          "/srv/next"},
         promptsRun("TARGET=/srv/next OWNER=In Quotes CODE= LINK=1 EDITION=1 PLAN=desk plan")},
        {"documents by kind, and a trigger of a field's answer",
         {bin, "-configFile=" + answers(), "-quiet=0", "-VARIABLE_NOTES=1", "-VARIABLE_SERVER_OK=1"},
         promptsRun("TARGET=/srv/prompt OWNER=Config Owner CODE= LINK=1 EDITION=1 PLAN=server plan",
                    "Some notes.\n  Terms of use.\n  Be nice to others.\nPlain notes in the dialect.\n")},
        {"-auto without a file takes the template's values and isn't quiet",
         {bin, "-auto"},
         promptsRun("TARGET=/opt/prompt-check OWNER=nobody CODE= LINK=0 EDITION=7 PLAN=desk plan")},
        {"-gui is refused with a warning, the run goes on",
         {bin, "-gui", "-configFile=" + answers()},
         "Warning: Cannot automatically (un)install in GUI mode (reverting to CLI mode)\n" + kSuccess},
    };
    for (const DirectRun& run : runs) {
        SCOPED_TRACE(run.name);
        TempDir work;
        CommandResult result = runSandboxed(installerConsole(), run.args, work.path());
        EXPECT_EQ(result.exitCode, 0) << result.output;
        EXPECT_EQ(result.output, run.output);
        EXPECT_EQ(snapshot(work.path()), std::vector<std::string>{});
    }
}

TEST_F(UnattendedTest, PackageChosenAmongSeveralInTheWorkingDirectory)
{
    TempDir work;
    ASSERT_TRUE(writeFile(work.file("a.ibin"), readFile(notesPackage())));
    ASSERT_TRUE(writeFile(work.file("b.ibin"), readFile(promptsPackage())));
    CommandResult result =
        runSandboxed(installerConsole(), {"-configFile=" + answers(), "-quiet=0"}, work.path(), "2\n");
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.output, "Several .ibin files are found - please choose one of them:\n"
                             "\t1) a.ibin\n\t2) b.ibin\n\t3) Exit\n\n>" +
                                 promptsRun("TARGET=/srv/prompt OWNER=Config Owner CODE= LINK=1 EDITION=1 PLAN=desk plan"));

    // With one package it is taken without a question.
    TempDir single;
    ASSERT_TRUE(writeFile(single.file("only.ibin"), readFile(promptsPackage())));
    result = runSandboxed(installerConsole(), {"-configFile=" + answers()}, single.path());
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.output, kSuccess);
}

TEST_F(UnattendedTest, SampleProductFromItsOwnConfigurationFile)
{
    TempDir work;
    std::string target = work.file("notes");
    CommandResult result = runSandboxed(installerConsole(),
                                        {"-bin=" + notesPackage(), "-configFile=" + sourceDir() +
                                             "/examples/quilb-notes/config.xml",
                                         "-quiet=0", "-VARIABLE_INSTALLDIR=" + target},
                                        work.path());
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_TRUE(inOrder(result.output, {kBanner, "Welcome to the installation of Quilb Notes 1.2.\n",
                                        "Quilb Notes licence\n", "Where shall Quilb Notes be installed?\n",
                                        "Ready to install Quilb Notes to " + target + " for Demo User.\n" +
                                            "The full edition with note templates will be installed.\n",
                                        "Quilb Notes is installed in " + target + ".", kSuccess}));
    EXPECT_EQ(result.output.find("The standard edition"), std::string::npos);
}

struct LauncherRun {
    const char* name;
    std::vector<std::string> args;
    std::vector<std::string> fragments;  // in this order
    std::vector<std::string> absent;
};

TEST_F(UnattendedTest, ThroughTheSelfExtractingInstaller)
{
    if (promptsInstaller().empty())
        GTEST_SKIP() << "no launcher was built";
    const std::vector<LauncherRun> runs = {
        {"a configuration file silences launcher and front end",
         {"-configFile=answers.xml", "-VARIABLE_OWNER=Launched"},
         {kSuccess},
         {"Initializing...", "Quilb Group installer", "Deleted "}},
        {"-quiet=0 shows both",
         {"-configFile=answers.xml", "-quiet=0", "-VARIABLE_OWNER=Launched"},
         {"Verifying installer integrity...OK.", "is a suitable installer. Installing...", kBanner,
          "Summary: TARGET=/srv/prompt OWNER=Launched CODE= LINK=1 EDITION=1 PLAN=desk plan\n", kSuccess,
          "Deleted "},
         {"ERROR"}},
        {"a failed front end still lets the launcher end with 0",
         {"-configFile=missing.xml"},
         {"The file \"missing.xml\" does not exist! Please specify existing file!\n",
          "There was an error during the (un)installation: -1\n"},
         {kSuccess, "Quilb Group installer"}},
    };
    for (const LauncherRun& run : runs) {
        SCOPED_TRACE(run.name);
        TempDir work;
        ASSERT_TRUE(writeFile(work.file("answers.xml"), readFile(answers())));
        CommandResult copy = runCommand("cp " + shellQuote(promptsInstaller()) + " " +
                                        shellQuote(work.file("setup")));
        ASSERT_EQ(copy.exitCode, 0) << copy.output;
        std::vector<std::string> before = snapshot(work.path());
        CommandResult result = runSandboxed(work.file("setup"), run.args, work.path());
        EXPECT_EQ(result.exitCode, 0) << result.output;
        EXPECT_TRUE(inOrder(result.output, run.fragments));
        for (const std::string& text : run.absent)
            EXPECT_EQ(result.output.find(text), std::string::npos) << "\"" << text << "\" in:\n" << result.output;
        EXPECT_EQ(snapshot(work.path()), before) << "the launcher left files behind";
    }
}

TEST_F(UnattendedTest, SampleProductThroughTheSelfExtractingInstaller)
{
    if (notesInstaller().empty())
        GTEST_SKIP() << "no launcher was built";
    TempDir work;
    std::string target = work.file("notes");
    CommandResult result =
        runSandboxed(notesInstaller(),
                     {"-configFile=" + sourceDir() + "/examples/quilb-notes/config.xml", "-VARIABLE_INSTALLDIR=" + target},
                     work.path());
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.output, kSuccess);
}

} // namespace
