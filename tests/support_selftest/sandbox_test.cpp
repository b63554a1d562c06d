#include "support/paths.h"
#include "support/process.h"

#include <gtest/gtest.h>

// The sandbox must keep writes to system paths away from the host, and keep bound
// directories shared; every later test that touches system paths relies on both.
TEST(Sandbox, WritesToSystemPathsStayInsideAndBindsAreShared)
{
    QUILB_REQUIRE_SANDBOX();
    quilbtest::TempDir dir;
    std::string marker = "/etc/profile.d/quilb-sandbox-selftest.sh";
    std::string device = "/dev/quilb-sandbox-selftest";
    quilbtest::CommandResult run
        = quilbtest::runInSandbox("echo inside > " + marker + " && cat " + marker + " && echo device > "
                + device + " && echo shared > " + dir.file("out") + " && echo quiet > /dev/null",
            { dir.path() });
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_EQ(run.output, "inside\n");
    EXPECT_FALSE(quilbtest::fileExists(marker));
    EXPECT_FALSE(quilbtest::fileExists(device));
    EXPECT_EQ(quilbtest::readFile(dir.file("out")), "shared\n");
}

TEST(Sandbox, PassesTheExitStatusOn)
{
    QUILB_REQUIRE_SANDBOX();
    EXPECT_EQ(quilbtest::runInSandbox("exit 7").exitCode, 7);
}
