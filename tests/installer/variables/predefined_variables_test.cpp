// Predefined variables: each row, their precedence over records, and the shell probes,
// which go through runShellStatus (counted here, never run) on every read.
#include <climits>
#include <cstdlib>
#include <string>
#include <unistd.h>

#include <gtest/gtest.h>

#include "installer/variables/variables_helpers.h"
#include "support/paths.h"

namespace {

// A front end that calls itself graphical.
class GraphicalUI : public InstallerUI
{
public:
    bool IsGUIInstaller() override { return true; }
};

} // namespace

const char* const kProxyNames[] = { "HTTP_PROXY", "HTTPS_PROXY", "FTP_PROXY", "NO_PROXY", "http_proxy",
    "https_proxy", "ftp_proxy", "no_proxy" };

TEST(PredefinedVariables, RowsGoBeforeRecordsAndProbesRunOnEveryRead)
{
    char self[PATH_MAX] = {};
    ASSERT_GT(readlink("/proc/self/exe", self, sizeof(self) - 1), 0);
    const std::string program = self;

    for (const char* name : kProxyNames) // a proxy of the machine would change the answers
        unsetenv(name);
    setenv("HTTP_PROXY", "http://plain:8080", 1);
    setenv("https_proxy", "http://secure:8443", 1);
    setenv("TMPDIR", "/var/tmp/quilb//", 1);
    const struct
    {
        const char* name;
        std::string expected;
    } cases[] = {
        { "GUI_INSTALL", "0" }, { "INSTALLER_BINARY_NAME", "product.bin" }, { "TEMP_DIR", "/var/tmp/quilb" },
        { "INSTALLER_DIR", program.substr(0, program.rfind('/') + 1) },
        { "installer_file_name", program.substr(program.rfind('/') + 1) }, { "WX_PORT", "linux_console" },
        { "Operating_System", "linux" }, { "OS_HTTP_PROXY", "http://plain:8080" },
        { "OS_HTTPS_PROXY", "http://secure:8443" },
        { "os_https_proxy", "http://plain:8080" }, // only the upper-case 'S' picks HTTPS
    };
    quilbtest::TempDir dir; // holds no package: Init keeps the path all the same
    const std::string package = dir.path() + "/build//product.bin";
    for (const auto& c : cases) {
        ProbeInstaller installer;
        EXPECT_EQ(installer.Init(package.c_str(), 0, 0), -2) << "no package, only its path";
        installer.appendRecord(c.name, "record");
        char buffer[520];
        EXPECT_EQ(installer.GetVar(c.name, buffer, sizeof(buffer)), -2) << c.name;
        EXPECT_EQ(buffer, c.expected) << c.name;
        EXPECT_EQ(installer.shellRuns, 0) << c.name;
    }
    for (const char* name : kProxyNames)
        unsetenv(name);
    unsetenv("TMPDIR");

    ProbeInstaller installer;
    GraphicalUI gui;
    installer.noteFrontEnd(gui);
    installer.frontEndPort = "linux_gtk";
    EXPECT_EQ(installer.value("GUI_INSTALL") + installer.value("WX_PORT"), "1linux_gtk");
    EXPECT_EQ(installer.value("TEMP_DIR") + installer.value("OS_HTTPS_PROXY"), "/tmp");
    EXPECT_EQ(installer.getPredefinedVar("NOT_PREDEFINED", nullptr, 0), -1);

    // The package probes run on every read, also on a mere existence test.
    EXPECT_EQ(installer.value("have_rpm"), "1");
    EXPECT_EQ(installer.lastCommand, "rpm --version > /dev/nul 2>&1");
    installer.shellStatus = 256;
    EXPECT_EQ(installer.value("HAVE_DPKG"), "0");
    EXPECT_EQ(installer.lastCommand, "dpkg --version > /dev/nul 2>&1");
    EXPECT_EQ(installer.GetVar("HAVE_DPKG", nullptr, 0), -2);
    EXPECT_EQ(installer.shellRuns, 3);
}
