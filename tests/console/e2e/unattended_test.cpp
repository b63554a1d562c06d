// Unattended runs from a configuration file or under -auto: what is printed and how the run
// ends. The self-extracting installer is run at a terminal.
#include "console/e2e/console_e2e_helpers.h"

#include <algorithm>
#include <unistd.h>

using namespace quilbtest;

namespace {

// The whole output of a run of the test product that isn't quiet.
std::string promptsRun(const std::string& summary)
{
    std::string licence;
    for (int i = 1; i <= 20; ++i)
        licence += std::string("- line ") + (i < 10 ? "0" : "") + std::to_string(i) + "\n";
    return kBanner + "Welcome to Prompt Check 3.\nPlease read the licence.\n" + licence
        + "Tell us how to set things up.\nSummary: " + summary + "\nPrompt Check is set up.\n" + kClearedLine
        + kSuccess;
}

TEST(UnattendedTest, ConsoleProgramWithConfigurationFile)
{
    QUILB_REQUIRE_SANDBOX();
    const std::string bin = "-bin=" + promptsPackage();
    const std::string answers = consoleData() + "/answers.xml";
    const std::string package = readFile(promptsPackage());
    const std::string fromFile
        = "TARGET=/srv/prompt OWNER=Config Owner CODE= LINK=1 EDITION=1 PLAN=desk plan";
    checkRuns({
        { "a configuration file makes the run quiet", { bin, "-configFile=" + answers }, 0, kSuccess },
        { "-fromFile= is another name for it", { bin, "-fromFile=" + answers }, 0, kSuccess },
        { "-quiet=0 shows banner, texts and licence", { bin, "-configFile=" + answers, "-quiet=0" }, 0,
            promptsRun(fromFile) },
        { "the command line wins over the file: values in quotes, in the next argument, bare; the first "
          "counts",
            { bin, "-VARIABLE_OWNER=\"In Quotes\"", "-configFile=" + answers, "-quiet=0", "--VARIABLE_TARGET",
                "/srv/next", "-VARIABLE_SERVER_OK", "-VARIABLE_EDITION=2", "-VARIABLE_EDITION=0" },
            0, promptsRun("TARGET=/srv/next OWNER=In Quotes CODE= LINK=1 EDITION=2 PLAN=server plan") },
        { "-auto without a file takes the template's values and isn't quiet", { bin, "-auto" }, 0,
            promptsRun("TARGET=/opt/prompt-check OWNER=nobody CODE= LINK=0 EDITION=7 PLAN=desk plan") },
        { "-gui is refused with a warning, the run goes on", { bin, "-gui", "-configFile=" + answers }, 0,
            "Warning: Cannot automatically (un)install in GUI mode (reverting to CLI mode)\n" + kSuccess },
        { "the one package in the working directory is taken", { "-configFile=" + answers }, 0, kSuccess,
            Match::Whole, "", { { "only.ibin", package } } },
        { "the sample product installs from its own configuration file",
            { "-bin=" + notesPackage(), "-configFile=" + sourceDir() + "/examples/quilb-notes/config.xml",
                "-quiet=0" },
            0,
            "Ready to install Quilb Notes to /opt/quilb-notes for Demo User.\n"
            "The full edition with note templates will be installed.\nInstalling Quilb Notes...\n"
            "Create /opt/quilb-notes/doc/CHANGES.txt\nCreate /opt/quilb-notes/doc/README.txt\n"
            "Create /opt/quilb-notes/share/notes.conf\nCreate /opt/quilb-notes/bin/quilb-notes\n"
            "Create /opt/quilb-notes/uninstall/install.xml\nCreate /opt/quilb-notes/share/templates.txt\n"
                + kClearedLine
                + "The installation was successful.\n"
                  "Quilb Notes is installed in /opt/quilb-notes. Run /opt/quilb-notes/bin/quilb-notes to "
                  "start.\n"
                + kClearedLine + kSuccess,
            Match::End },
    });
}

TEST(UnattendedTest, ConfigurationFileFetchedFromAnAddress)
{
    QUILB_REQUIRE_SANDBOX();
    if (runCommand("command -v wget && command -v python3").exitCode != 0)
        GTEST_SKIP() << "no wget, or no python3 to serve the file";
    TempDir work;
    const std::string address = "http://127.0.0.1:" + std::to_string(20000 + getpid() % 20000);
    // A web server for the test data runs beside the installer until the installer ends.
    const std::string script = "python3 -m http.server " + address.substr(17)
        + " --bind 127.0.0.1 --directory " + shellQuote(consoleData())
        + " >/dev/null 2>&1 & server=$!; for i in $(seq 50); do "
          "wget -q -O /dev/null "
        + address
        + " && break; sleep 0.1; done; \"$0\" \"$@\"; "
          "status=$?; kill $server; exit $status";
    CommandResult result = runConsole("/bin/sh",
        { "-c", script, installerConsole(), "-bin=" + promptsPackage(),
            "-configFile=" + address + "/answers.xml" },
        work.path());
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.output.substr(result.output.size() - std::min(result.output.size(), kSuccess.size())),
        kSuccess)
        << result.output;
}

} // namespace
