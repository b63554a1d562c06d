// The launcher in a directory it can't write to, run inside the sandbox so that the fixed
// fallback directory below /tmp and the read-only mounts never touch the host.
#include "launcher/launcher_helpers.h"
#include "support/paths.h"

#include <gtest/gtest.h>

namespace quilbtest {
namespace {

// Shell lines that copy `file` into a fresh read-only directory /opt/quilb_ro and enter it.
std::string readOnlyCopy(const std::string& file)
{
    return "rm -rf /tmp/tesk_install_dir && mkdir -p /opt/quilb_ro && cp " + shellQuote(file)
        + " /opt/quilb_ro/installer && mount --bind /opt/quilb_ro /opt/quilb_ro && "
          "mount -o remount,ro,bind /opt/quilb_ro && cd /opt/quilb_ro && ulimit -c 0 && ";
}

TEST(LauncherSandbox, ReadOnlyDirectoryUnpacksBelowTmpAndRemovesIt)
{
    QUILB_REQUIRE_SANDBOX();
    TempDir work, records;
    ASSERT_TRUE(buildInstaller(standardContent(records.path(), {}, {}, {}), work.file("installer")));
    CommandResult result = runInSandbox(readOnlyCopy(work.file("installer"))
            + "{ ./installer -x; echo \"exit=$?\"; }; "
              "if [ -e /tmp/tesk_install_dir ]; then echo LEFT; fi",
        { work.path(), records.path() });
    const std::string files = "/tmp/tesk_install_dir/install_files/";
    EXPECT_NE(result.output.find("Created temporary dir: " + files + "\n"), std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("Removed directory: /tmp/tesk_install_dir\n"), std::string::npos);
    EXPECT_NE(result.output.find("exit=0\n"), std::string::npos);
    EXPECT_EQ(result.output.find("LEFT"), std::string::npos);

    FrontEndRecord record = readFrontEndRecord(records.path(), "installer_gtk2");
    ASSERT_TRUE(record.ran);
    EXPECT_EQ(record.args,
        (std::vector<std::string> { files + "installer_gtk2", "-x", "-bin=" + files + "binary" }));
    EXPECT_EQ(record.installerDir, "/opt/quilb_ro/");
    EXPECT_EQ(record.binContent, "product package");
}

TEST(LauncherSandbox, NoWritableDirectoryIsReportedBeforeAnythingElse)
{
    QUILB_REQUIRE_SANDBOX();
    // A launcher image without a package: the missing directory still wins.
    CommandResult result = runInSandbox(readOnlyCopy(binDir() + "/launcher")
        + "mount -t tmpfs -o ro quilb_ro /tmp && { ./installer -quiet; echo \"exit=$?\"; }");
    EXPECT_EQ(result.output,
        "The launcher could not find a directory for unpacking necessary files.\n"
        "Please start it in a directory with proper write rights or start it as root!\n"
        "exit=255\n");
}

} // namespace
} // namespace quilbtest
