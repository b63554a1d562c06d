// Predefined variables: each row of the table, their precedence over records, and the
// shell probes, which run through the engine's runShellStatus (counted here, never run).
#include <climits>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "installer/variables/variables_helpers.h"

namespace {

// Sets or clears environment variables for the life of the object, restoring them after.
class ScopedEnv {
public:
    void set(const char* name, const char* value)
    {
        const char* old = getenv(name);
        saved.push_back({name, old ? old : "", old != nullptr});
        if (value)
            setenv(name, value, 1);
        else
            unsetenv(name);
    }
    ~ScopedEnv()
    {
        for (auto it = saved.rbegin(); it != saved.rend(); ++it) {
            if (it->wasSet)
                setenv(it->name.c_str(), it->value.c_str(), 1);
            else
                unsetenv(it->name.c_str());
        }
    }

private:
    struct Saved {
        std::string name, value;
        bool wasSet;
    };
    std::vector<Saved> saved;
};

std::string ownProgram()
{
    char path[PATH_MAX] = {};
    ssize_t length = readlink("/proc/self/exe", path, sizeof(path) - 1);
    return length > 0 ? std::string(path, static_cast<size_t>(length)) : std::string();
}

TEST(PredefinedVariables, EveryRow)
{
    const std::string program = ownProgram();
    const std::string programDir = program.substr(0, program.rfind('/') + 1);
    const std::string programName = program.substr(program.rfind('/') + 1);

    ScopedEnv env;
    env.set("TMPDIR", "/var/tmp/quilb//");
    for (const char* name : {"HTTP_PROXY", "HTTPS_PROXY", "FTP_PROXY", "NO_PROXY", "http_proxy", "https_proxy",
                             "ftp_proxy", "no_proxy"})
        env.set(name, nullptr);
    env.set("HTTP_PROXY", "http://plain:8080");
    env.set("https_proxy", "http://secure:8443");

    struct Case {
        const char* name;
        std::string expected;
    } cases[] = {
        {"GUI_INSTALL", "0"},
        {"INSTALLER_DIR", programDir},
        {"installer_file_name", programName},
        {"INSTALLER_BINARY_NAME", "product.bin"},
        {"TEMP_DIR", "/var/tmp/quilb"},
        {"WX_PORT", "linux_console"},
        {"Operating_System", "linux"},
        {"OS_HTTP_PROXY", "http://plain:8080"},
        {"OS_HTTPS_PROXY", "http://secure:8443"},
        // The lower-case spelling is accepted but answers with the HTTP proxy.
        {"os_https_proxy", "http://plain:8080"},
    };
    for (const Case& c : cases) {
        ProbeInstaller installer;
        strcpy(installer.installerPath, "/tmp/build//product.bin");
        installer.appendRecord(c.name, "record");  // never answers: predefined names go first
        char buffer[520];
        EXPECT_EQ(installer.GetVar(c.name, buffer, sizeof(buffer)), -2) << c.name;
        EXPECT_EQ(std::string(buffer), c.expected) << c.name;
        EXPECT_EQ(installer.getPredefinedVar(c.name, nullptr, 0), -2) << c.name;
        EXPECT_EQ(installer.shellRuns, 0) << c.name;
    }
}

TEST(PredefinedVariables, FrontEndSettingsAndMissingProxy)
{
    ScopedEnv env;
    for (const char* name : {"HTTP_PROXY", "HTTPS_PROXY", "FTP_PROXY", "NO_PROXY", "http_proxy", "https_proxy",
                             "ftp_proxy", "no_proxy"})
        env.set(name, nullptr);
    env.set("TMPDIR", nullptr);

    ProbeInstaller installer;
    installer.guiInstall = true;
    installer.frontEndPort = "linux_gtk";
    EXPECT_EQ(installer.value("GUI_INSTALL"), "1");
    EXPECT_EQ(installer.value("WX_PORT"), "linux_gtk");
    EXPECT_EQ(installer.value("TEMP_DIR"), "/tmp");
    EXPECT_EQ(installer.value("OS_HTTP_PROXY"), "");
    EXPECT_EQ(installer.value("OS_HTTPS_PROXY"), "");
    EXPECT_EQ(installer.getPredefinedVar("NOT_PREDEFINED", nullptr, 0), -1);
    EXPECT_EQ(installer.getPredefinedVar(nullptr, nullptr, 0), -1);
    EXPECT_EQ(installer.log.text(), "");
}

TEST(PredefinedVariables, PackageProbes)
{
    struct Case {
        const char* name;
        int status;
        const char* command;
        const char* expected;
    } cases[] = {
        {"HAVE_RPM", 0, "rpm --version > /dev/nul 2>&1", "1"},
        {"have_rpm", 127 << 8, "rpm --version > /dev/nul 2>&1", "0"},
        {"HAVE_DPKG", 0, "dpkg --version > /dev/nul 2>&1", "1"},
        {"HAVE_DPKG", 1 << 8, "dpkg --version > /dev/nul 2>&1", "0"},
    };
    for (const Case& c : cases) {
        ProbeInstaller installer;
        installer.shellStatus = c.status;
        EXPECT_EQ(installer.value(c.name), c.expected) << c.name;
        EXPECT_EQ(installer.lastCommand, c.command) << c.name;
        // A mere existence test runs the probe too.
        EXPECT_EQ(installer.GetVar(c.name, nullptr, 0), -2) << c.name;
        EXPECT_EQ(installer.shellRuns, 2) << c.name;
    }
}

} // namespace
