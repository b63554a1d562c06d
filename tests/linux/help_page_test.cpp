// The help page opened by a child of its own: through xdg-open as the original user when
// there is one, otherwise, or when xdg-open fails, in a browser. The tools are recording
// stand-ins in a temporary directory that is the whole PATH.
#include <cstdlib>
#include <map>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "linux/linux_installer.h"
#include "support/paths.h"

namespace {

const char kTemplate[] = "<QuilbGroupInstallation><Desc><ProductDesc><InstallHelpURL>http://example.org/help "
                         "page</InstallHelpURL></ProductDesc></Desc></QuilbGroupInstallation>";

// A stand-in that appends its name, its argument and the user id it runs as to `record`,
// and exits with `status`.
bool writeStandIn(const std::string& path, const std::string& record, int status)
{
    return quilbtest::writeFile(path,
               "#!/bin/sh\necho \"${0##*/}:$1:$(/usr/bin/id -u)\" >>" + record + "\nexit "
                   + std::to_string(status) + "\n")
        && chmod(path.c_str(), 0755) == 0;
}

TEST(HelpPage, OpensTheAddressAsTheUserOrInABrowser)
{
    if (getuid() != 0)
        GTEST_SKIP() << "the child takes on another user's identity, which needs root";
    struct Row
    {
        const char* name;
        std::map<std::string, int> tools; // stand-in and its exit status
        std::map<std::string, std::string> env;
        std::string recorded;
    } rows[] = {
        { "an ordinary user gets xdg-open", { { "xdg-open", 0 }, { "lynx", 0 } },
            { { "QUILB_INSTALL_ORIGINAL_GID", "1" }, { "QUILB_INSTALL_ORIGINAL_UID", "1" } },
            "xdg-open:http://example.org/help page:1\n" },
        { "root without an original group goes to the browser", { { "xdg-open", 0 }, { "lynx", 0 } }, {},
            "lynx:http://example.org/help page:0\n" },
        { "an original group of 0 is root's", { { "xdg-open", 0 }, { "links", 0 } },
            { { "QUILB_INSTALL_ORIGINAL_GID", "0" } }, "links:http://example.org/help page:0\n" },
        { "a failing xdg-open gives way to the browser", { { "xdg-open", 3 }, { "lynx", 0 } },
            { { "QUILB_INSTALL_ORIGINAL_GID", "1" }, { "QUILB_INSTALL_ORIGINAL_UID", "1" } },
            "xdg-open:http://example.org/help page:1\nlynx:http://example.org/help page:1\n" },
    };
    const char* const names[] = { "QUILB_INSTALL_ORIGINAL_GID", "QUILB_INSTALL_ORIGINAL_UID",
        "QUILB_INSTALL_ORIGINAL_EGID", "QUILB_INSTALL_ORIGINAL_HOME", "QUILB_INSTALL_ORIGINAL_USER_NAME",
        "SUDO_GID", "SUDO_UID", "PATH" };
    std::map<std::string, std::string> saved;
    for (const char* name : names)
        if (getenv(name))
            saved[name] = getenv(name);

    for (const Row& row : rows) {
        quilbtest::TempDir dir;
        // The child may run as another user, who must reach the tools and the record.
        ASSERT_EQ(chmod(dir.path().c_str(), 0777), 0);
        const std::string record = dir.file("record");
        for (const auto& tool : row.tools)
            ASSERT_TRUE(writeStandIn(dir.file(tool.first), record, tool.second));

        LinuxInstaller installer(0, false, nullptr, nullptr);
        std::vector<char> text(kTemplate, kTemplate + sizeof kTemplate);
        installer.templateXml.ParseTag(text.data());
        for (const char* name : names)
            unsetenv(name);
        for (const auto& entry : row.env)
            setenv(entry.first.c_str(), entry.second.c_str(), 1);
        setenv("PATH", dir.path().c_str(), 1);
        int result = installer.EvHelp(nullptr);
        for (const char* name : names)
            unsetenv(name);
        for (const auto& entry : saved)
            setenv(entry.first.c_str(), entry.second.c_str(), 1);

        EXPECT_EQ(result, 0) << row.name;
        // The parent doesn't wait for the child; the test does.
        int status = 0;
        EXPECT_GT(waitpid(-1, &status, 0), 0) << row.name;
        EXPECT_EQ(quilbtest::readFile(record), row.recorded) << row.name;
    }
}

} // namespace
