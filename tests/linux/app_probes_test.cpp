// LinuxInstaller's probes: a running program found by its file name, and a product found
// by the path its name template expands to; and the stopping of a running program.
#include <csignal>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "foundation/streams/pmemory_console.h"
#include "foundation/strings/path_size.h"
#include "linux/linux_installer.h"
#include "support/paths.h"
#include "support/process.h"

namespace {

TEST(AppProbes, RunningProgramIsFoundByItsFileName)
{
    // This test program itself runs; the directory plays no part.
    char self[TeskUtils::kPathSize] = {};
    ASSERT_GT(readlink("/proc/self/exe", self, sizeof(self) - 1), 0);
    const std::string name = strrchr(self, '/') + 1;
    LinuxInstaller installer(0, false, nullptr, nullptr);
    EXPECT_TRUE(installer.isAppRunning(name.c_str(), "/ignored"));
    EXPECT_FALSE(installer.isAppRunning((name + "_not").c_str(), nullptr));
    EXPECT_FALSE(installer.isAppRunning(nullptr, nullptr));
}

TEST(AppProbes, InstalledByPathTemplate)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("present.txt"), "x"));

    PMemoryConsole log;
    log.flags = 0;
    LinuxInstaller installer(0, false, nullptr, nullptr);
    installer.InitDebugMode(&log, 0);
    installer.SetVarExt("ROOT", dir.path().c_str(), nullptr, 0, nullptr);

    EXPECT_TRUE(installer.IsInstalled("[ROOT]/present.txt", 2));
    EXPECT_TRUE(installer.IsInstalled("[ROOT]", 3));
    EXPECT_FALSE(installer.IsInstalled("[ROOT]/missing.txt", 2));
    EXPECT_FALSE(installer.IsInstalled(nullptr, 2));
    EXPECT_EQ(log.text(), "");
    EXPECT_FALSE(installer.IsInstalled("", 2));
    EXPECT_EQ(log.text(), "ERROR: Could not expand the provided application name for existance check: \r\n");
}

TEST(AppProbes, TerminateSignalsOnlyProcessesBelowThePath)
{
    // A copy of sleep with a name of its own, so that nothing else on the machine matches.
    quilbtest::TempDir dir;
    ASSERT_EQ(mkdir(dir.file("bin").c_str(), 0755), 0);
    const std::string name = "quilb_sleeper_" + std::to_string(getpid());
    const std::string program = dir.file("bin/" + name);
    ASSERT_EQ(quilbtest::runCommand("cp /bin/sleep " + quilbtest::shellQuote(program)).exitCode, 0);
    pid_t pid = fork();
    if (pid == 0) {
        execl(program.c_str(), name.c_str(), "30", static_cast<char*>(nullptr));
        _exit(127);
    }
    ASSERT_GT(pid, 0);
    LinuxInstaller installer(0, false, nullptr, nullptr);
    for (int i = 0; i < 100 && !installer.isAppRunning(name.c_str(), nullptr); ++i)
        usleep(20000);
    ASSERT_TRUE(installer.isAppRunning(name.c_str(), nullptr));

    struct Row
    {
        const char* what;
        const char* name;
        std::string path;
    } spared[] = {
        { "no path", name.c_str(), "" },
        { "another directory", name.c_str(), dir.file("elsewhere") },
        { "no name", nullptr, dir.path() },
        { "another program", "quilb_no_such_program", dir.path() },
    };
    for (const Row& row : spared) {
        const char* path = row.path.empty() ? nullptr : row.path.c_str();
        EXPECT_FALSE(installer.terminateApp(row.name, true, path)) << row.what;
    }
    int status = 0;
    EXPECT_EQ(waitpid(pid, &status, WNOHANG), 0) << "the program was stopped too early";

    // The path is corrected first: doubled slashes and a trailing space don't matter.
    const std::string sloppy = dir.path() + "//bin/ ";
    EXPECT_TRUE(installer.terminateApp(name.c_str(), false, sloppy.c_str()));
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
}

} // namespace
