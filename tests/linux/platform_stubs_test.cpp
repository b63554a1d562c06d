// What this platform leaves undone: INI changes succeed without touching anything, firewall
// changes fail, and a port exception says why in the log.
#include <string>

#include <gtest/gtest.h>

#include "foundation/streams/pmemory_console.h"
#include "linux/linux_installer.h"
#include "support/paths.h"

namespace {

TEST(PlatformStubs, IniDoneNothingFirewallFailed)
{
    quilbtest::TempDir dir;
    const std::string ini = dir.file("app.ini");
    PMemoryConsole log;
    log.flags = 0;
    LinuxInstaller installer(0, false, nullptr, nullptr);
    installer.InitDebugMode(&log, 0);
    Installer& engine = installer;

    char record[64] = "";
    EXPECT_TRUE(engine.doIniFile(
        ini.c_str(), "Main", "Key", "1", INI_ADD, record, sizeof record, nullptr, 0, nullptr));
    EXPECT_STREQ(record, "");
    EXPECT_FALSE(quilbtest::fileExists(ini));
    EXPECT_TRUE(engine.undoIniFile("INI\tx", nullptr));

    FirewallPort port;
    port.port = 8080;
    EXPECT_EQ(engine.addFirewallApp("/opt/app/run", "app"), 2);
    EXPECT_EQ(engine.removeFirewallApp("APP\t/opt/app/run"), 2);
    EXPECT_EQ(engine.removeFirewallPort("PORT\t8080"), 2);
    EXPECT_EQ(log.text(), "");
    EXPECT_EQ(engine.addFirewallPort(port), 2);
    EXPECT_EQ(log.text(),
        "WARNING: Attempting to add firewall to system that doesn't support port exceptions!\r\n");
}

} // namespace
