// LinuxInstaller's probes: a running program found by its file name, and a product found
// by the path its name template expands to.
#include <cstring>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "foundation/streams/pmemory_console.h"
#include "foundation/strings/path_size.h"
#include "linux/linux_installer.h"
#include "support/paths.h"

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

} // namespace
