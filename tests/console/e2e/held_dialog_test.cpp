// A dialog that holds the wizard while a program runs: it is entered again, and its texts
// must not come twice; a dialog marked Automated waits for the program instead.
#include "console/e2e/console_e2e_helpers.h"

#include "support/paths.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace quilbtest;

namespace {

const std::string kHeldMessage = "The installation can not continue, because the processes listed above are running.";

size_t occurrences(const std::string& text, const std::string& word)
{
    size_t count = 0;
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + word.size()))
        ++count;
    return count;
}

// A copy of sleep(1) named quilb_held_app, running for `seconds`; killed when the object dies.
// It is reaped the moment it ends: a zombie would still be listed as "[quilb_held_app]" and
// count as running.
class HeldApp {
public:
    HeldApp(const std::string& dir, int seconds)
    {
        std::string path = dir + "/quilb_held_app";
        if (runCommand("cp /bin/sleep " + shellQuote(path)).exitCode != 0)
            return;
        std::string duration = std::to_string(seconds);
        pid = fork();
        if (pid == 0) {
            execl(path.c_str(), "quilb_held_app", duration.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
        if (pid < 0)
            return;
        reaper = std::thread([this] {
            waitpid(pid, nullptr, 0);
            ended = true;
        });
        // Until the copy runs under its own name, the wizard couldn't see it.
        std::string link = "/proc/" + std::to_string(pid) + "/exe";
        for (int i = 0; i < 200; ++i) {
            char target[600] = "";
            ssize_t length = readlink(link.c_str(), target, sizeof target - 1);
            if (length > 0 && std::string(target, static_cast<size_t>(length)) == path)
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    ~HeldApp()
    {
        if (pid > 0 && !ended)
            kill(pid, SIGKILL);
        if (reaper.joinable())
            reaper.join();
    }
    HeldApp(const HeldApp&) = delete;
    HeldApp& operator=(const HeldApp&) = delete;

private:
    pid_t pid = -1;
    std::atomic<bool> ended{false};
    std::thread reaper;
};

struct HeldRun {
    const char* name;
    std::vector<std::string> args;
    int seconds;                       // how long the program runs
    int exitCode;
    std::vector<std::string> once;     // texts shown exactly once
    std::vector<std::string> never;
};

TEST(HeldDialogTest, TextsComeOnceWhenTheDialogIsEnteredAgain)
{
    QUILB_REQUIRE_SANDBOX();
    const std::string bin = "-bin=" + heldPackage();
    const std::vector<HeldRun> runs = {
        {"held: entered again, then the run ends",
         {bin, "-auto"},
         30,
         255,
         {"* Quilb Group installer       *", "Welcome to Held Check.\n", "Please close quilb_held_app first.\n",
          "It holds files of Held Check.\n", "There was an error during the (un)installation: -1\n"},
         {"Held Check is done."}},
        {"held in a quiet run: the texts come on entering again, once",
         {bin, "-auto", "-quiet"},
         30,
         255,
         {"Please close quilb_held_app first.\n", "It holds files of Held Check.\n"},
         {"Quilb Group installer", "Welcome to Held Check."}},
        {"an Automated dialog waits until the program has ended",
         {bin, "-auto", "-VARIABLE_WAIT=1"},
         1,
         0,
         {"Waiting for quilb_held_app to end.\n", "Held Check is done.\n", "Automatic installation was successful!\n"},
         {"There was an error"}},
    };
    for (const HeldRun& run : runs) {
        SCOPED_TRACE(run.name);
        TempDir work;
        TempDir programDir;
        HeldApp app(programDir.path(), run.seconds);
        CommandResult result = runSandboxed(installerConsole(), run.args, work.path());
        if (result.output.find(kHeldMessage) == std::string::npos && result.output.find("Held Check is done.") != std::string::npos &&
            run.exitCode != 0)
            GTEST_SKIP() << "the engine doesn't hold a RunningApps dialog yet:\n" << result.output;
        EXPECT_EQ(result.exitCode, run.exitCode) << result.output;
        for (const std::string& text : run.once)
            EXPECT_EQ(occurrences(result.output, text), 1u) << "\"" << text << "\" in:\n" << result.output;
        for (const std::string& text : run.never)
            EXPECT_EQ(result.output.find(text), std::string::npos) << "\"" << text << "\" in:\n" << result.output;
    }
}

} // namespace
