// LinuxInstaller's probes: a running program found by its file name, and a product found
// by the path its name template expands to.
#include <csignal>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "foundation/streams/pmemory_console.h"
#include "linux/linux_installer.h"
#include "support/paths.h"
#include "support/process.h"

namespace {

TEST(AppProbes, RunningProgramIsFoundByItsFileName)
{
    quilbtest::TempDir dir;
    const std::string program = quilbtest::shellQuote(dir.file("quilbprobe_sleeper"));
    LinuxInstaller installer(0, false, nullptr, nullptr);
    EXPECT_FALSE(installer.isAppRunning("quilbprobe_sleeper", nullptr));

    auto started = quilbtest::runCommand("cp /bin/sleep " + program + " && (" + program + " 30 >/dev/null 2>&1 & echo $!)");
    ASSERT_EQ(started.exitCode, 0) << started.output;
    const pid_t child = static_cast<pid_t>(std::stol(started.output));
    // The listing may come before the child has replaced its image: ask a few times.
    bool seen = false;
    for (int i = 0; i < 50 && !seen; ++i, usleep(20000))
        seen = installer.isAppRunning("quilbprobe_sleeper", "/ignored");
    EXPECT_TRUE(seen);
    EXPECT_FALSE(installer.isAppRunning("quilbprobe_sleepe", nullptr));  // names match whole
    kill(child, SIGKILL);
    for (int i = 0; i < 50 && installer.isAppRunning("quilbprobe_sleeper", nullptr); ++i)
        usleep(20000);  // reaped by init, not by us
    EXPECT_FALSE(installer.isAppRunning("quilbprobe_sleeper", nullptr));
    EXPECT_FALSE(installer.isAppRunning(nullptr, nullptr));
}

TEST(AppProbes, InstalledByPathTemplate)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("present.txt"), "x"));

    PMemoryConsole log;
    log.flags = 0;
    LinuxInstaller installer(0, false, nullptr, nullptr);
    installer.debugConsole = &log;
    installer.SetVarExt("ROOT", dir.path().c_str(), nullptr, 0, nullptr);

    EXPECT_TRUE(installer.IsInstalled("[ROOT]/present.txt", 2));
    EXPECT_TRUE(installer.IsInstalled("[ROOT]", 3));
    EXPECT_FALSE(installer.IsInstalled("[ROOT]/missing.txt", 2));
    EXPECT_FALSE(installer.IsInstalled(nullptr, 2));
    EXPECT_EQ(log.text(), "");
    EXPECT_FALSE(installer.IsInstalled("", 2));
    EXPECT_EQ(log.text(), "ERROR: Could not expand the provided application name for existance check: \r\n");
}

} // namespace
