#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "foundation/misc/permissions.h"
#include "foundation/misc/process_list.h"
#include "foundation/misc/proxy_config.h"
#include "foundation/misc/shell_utils.h"
#include "misc_test_helpers.h"
#include "support/paths.h"
#include "support/process.h"

using misctest::EnvGuard;
using quilbtest::TempDir;

namespace {

// Puts an executable script called `name` into `dir`.
void makeProgram(const TempDir& dir, const std::string& name)
{
    std::string path = dir.file(name);
    ASSERT_TRUE(quilbtest::writeFile(path, "#!/bin/sh\nexit 0\n"));
    ASSERT_EQ(chmod(path.c_str(), 0755), 0);
}

TEST(CommandExists, LooksOnlyInPATH)
{
    TempDir dir;
    makeProgram(dir, "quilb-probe-tool");
    EnvGuard path("PATH", dir.path().c_str());
    EXPECT_EQ(ShellUtils::CommandExists("quilb-probe-tool"), 1);
    EXPECT_EQ(ShellUtils::CommandExists("quilb-no-such-tool"), 0);
    EXPECT_EQ(ShellUtils::CommandExists(nullptr), 0);
}

TEST(GetPATH, SplitsAtEachColonIncludingEmptyParts)
{
    EnvGuard path("PATH", "/bin::/usr/local/bin:");
    char* buffer = nullptr;
    const char** dirs = nullptr;
    int count = 0;
    ASSERT_EQ(get_PATH(buffer, dirs, count), 1);
    ASSERT_EQ(count, 4);
    EXPECT_STREQ(dirs[0], "/bin");
    EXPECT_STREQ(dirs[1], "");
    EXPECT_STREQ(dirs[2], "/usr/local/bin");
    EXPECT_STREQ(dirs[3], "");
    delete[] dirs;
    delete[] buffer;

    EnvGuard unset("PATH", nullptr);
    EXPECT_EQ(get_PATH(buffer, dirs, count), 0);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(count, 0);
}

TEST(WwwBrowser, FirstKnownBrowserInPreferenceOrderThenPATHOrder)
{
    TempDir first, second;
    makeProgram(first, "lynx");
    makeProgram(second, "opera");
    makeProgram(second, "links");
    std::string both = first.path() + ":" + second.path() + "/";
    char buffer[520];

    {
        EnvGuard path("PATH", both.c_str());
        EXPECT_EQ(get_useable_www_browser(buffer, sizeof buffer), 1);
        EXPECT_STREQ(buffer, "opera"); // opera comes before lynx in the list
        char small[4];
        EXPECT_EQ(get_useable_www_browser(small, sizeof small), 1);
        EXPECT_STREQ(small, "ope");
    }
    {
        EnvGuard path("PATH", first.path().c_str());
        EXPECT_EQ(get_useable_www_browser(buffer, sizeof buffer), 1);
        EXPECT_STREQ(buffer, "lynx");
    }
    {
        TempDir none;
        EnvGuard path("PATH", none.path().c_str());
        EXPECT_EQ(get_useable_www_browser(buffer, sizeof buffer), 0);
    }
    EnvGuard unset("PATH", nullptr);
    EXPECT_EQ(get_useable_www_browser(buffer, sizeof buffer), 0);
}

TEST(ProxyConfiguration, ReadFromTheEnvironmentWithLowerCaseFallback)
{
    EnvGuard http("HTTP_PROXY", ""), httpLower("http_proxy", "http://lower:3128");
    EnvGuard https("HTTPS_PROXY", "https://upper:443"), httpsLower("https_proxy", "https://ignored");
    EnvGuard ftp("FTP_PROXY", nullptr), ftpLower("ftp_proxy", nullptr);
    EnvGuard no("NO_PROXY", nullptr), noLower("no_proxy", "localhost, .example.com\t10.0.0.1,,");

    TeskUtils::SystemProxyConfiguration config;
    EXPECT_FALSE(TeskUtils::getSystemProxyConfiguration(config, 1).isError());
    EXPECT_EQ(config.found, 1);
    EXPECT_STREQ(config.httpProxy.c_str(), "http://lower:3128");
    EXPECT_STREQ(config.httpsProxy.c_str(), "https://upper:443");
    EXPECT_TRUE(config.ftpProxy.isNull());
    EXPECT_STREQ(config.noProxy.c_str(), "localhost, .example.com\t10.0.0.1,,");
    ASSERT_EQ(config.noProxyItems.getCount(), 3);
    EXPECT_STREQ(config.noProxyItems[0].c_str(), "localhost");
    EXPECT_STREQ(config.noProxyItems[1].c_str(), ".example.com");
    EXPECT_STREQ(config.noProxyItems[2].c_str(), "10.0.0.1");

    // Without refresh the first reading stands; with it, the cleared environment shows.
    EnvGuard clearHttp("http_proxy", nullptr), clearHttps("HTTPS_PROXY", nullptr);
    EnvGuard clearHttpsLower("https_proxy", nullptr), clearNo("no_proxy", nullptr);
    EXPECT_FALSE(TeskUtils::getSystemProxyConfiguration(config, 0).isError());
    EXPECT_EQ(config.found, 1);
    EXPECT_STREQ(config.httpProxy.c_str(), "http://lower:3128");
    EXPECT_FALSE(TeskUtils::getSystemProxyConfiguration(config, 1).isError());
    EXPECT_EQ(config.found, 0);
    EXPECT_TRUE(config.httpProxy.isNull());
    EXPECT_TRUE(config.noProxy.isNull());
    EXPECT_EQ(config.noProxyItems.getCount(), 0);
}

// A child process started from `program` with the given argv[0], killed when the object dies.
class Child {
public:
    Child(const std::string& program, const char* argv0)
    {
        pid_ = fork();
        if (pid_ == 0) {
            execl(program.c_str(), argv0, "300", static_cast<char*>(nullptr));
            _exit(127);
        }
    }
    ~Child()
    {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    int pid() const { return pid_; }

private:
    pid_t pid_;
};

bool contains(const TeskUtils::Table<int, 100>& pids, int pid)
{
    for (int i = 0; i < pids.getCount(); ++i)
        if (pids[i] == pid)
            return true;
    return false;
}

// Waits until the child has replaced its image, so that ps shows the new command.
void waitForExec(int pid, const std::string& program)
{
    char path[520];
    for (int i = 0; i < 200; ++i) {
        if (getProcessFileName(path, sizeof path, pid) && program == path)
            return;
        usleep(10000);
    }
}

TEST(ProcessList, FindsProcessesByProgramFileName)
{
    TempDir dir;
    std::string program = dir.file("quilbsleeper" + std::to_string(getpid()));
    std::string name = program.substr(program.rfind('/') + 1);
    char resolved[PATH_MAX];
    ASSERT_NE(realpath("/bin/sleep", resolved), nullptr);
    std::string sleepPath = resolved;
    ASSERT_EQ(quilbtest::runCommand("cp " + sleepPath + " " + quilbtest::shellQuote(program)).exitCode, 0);

    Child plain(program, name.c_str());
    Child renamed(program, "something-else"); // the listed command must hold the name
    Child lookalike(sleepPath, (name + "-lookalike").c_str()); // and the program file match it
    Child bracketed(sleepPath, ("[" + name + "]").c_str());
    waitForExec(plain.pid(), program);
    waitForExec(renamed.pid(), program);
    waitForExec(lookalike.pid(), sleepPath);
    waitForExec(bracketed.pid(), sleepPath);

    TeskUtils::Table<int, 100> pids;
    pids.append(-5); // the table is emptied first
    ASSERT_EQ(TeskUtils::uniListProcessesMatching(name.c_str(), pids), 0);
    EXPECT_TRUE(contains(pids, plain.pid()));
    EXPECT_TRUE(contains(pids, bracketed.pid()));
    EXPECT_FALSE(contains(pids, renamed.pid()));
    EXPECT_FALSE(contains(pids, lookalike.pid()));
    EXPECT_FALSE(contains(pids, -5));

    // A prefix of the name matches neither the file name nor the bracketed name.
    std::string prefix = name.substr(0, name.size() - 1);
    ASSERT_EQ(TeskUtils::uniListProcessesMatching(prefix.c_str(), pids), 0);
    EXPECT_FALSE(contains(pids, plain.pid()));
    EXPECT_FALSE(contains(pids, bracketed.pid()));

    EXPECT_EQ(TeskUtils::uniListProcessesMatching(nullptr, pids), 1);
}

TEST(ProcessFileName, OwnProgramAndItsDirectory)
{
    char self[520];
    ASSERT_EQ(getProcessFileName(self, sizeof self, 0), 1);
    char byPid[520];
    ASSERT_EQ(getProcessFileName(byPid, sizeof byPid, getpid()), 1);
    EXPECT_STREQ(self, byPid);
    EXPECT_NE(strstr(self, "test_foundation_misc"), nullptr) << self;

    char dir[520];
    ASSERT_EQ(getProcessPath(dir, sizeof dir), 1);
    std::string expected(self, strrchr(self, '/') + 1);
    EXPECT_EQ(dir, expected);

    char small[5];
    ASSERT_EQ(getProcessFileName(small, sizeof small, 0), 1);
    EXPECT_EQ(std::string(small), std::string(self, 4));
    EXPECT_EQ(getProcessFileName(self, sizeof self, 999999999), 0);
}

TEST(Permissions, ProbeFileIsMadeAndRemoved)
{
    TempDir dir;
    std::string pattern = dir.file("probe_XXXXXX");
    EXPECT_EQ(try_create_and_delete_file(pattern.c_str()), 1);
    EXPECT_EQ(quilbtest::runCommand("ls -A " + quilbtest::shellQuote(dir.path())).output, "");
    EXPECT_EQ(try_create_and_delete_file(dir.file("missing/probe_XXXXXX").c_str()), 0);
    EXPECT_EQ(try_create_and_delete_file(dir.file("no_template").c_str()), 0);
    EXPECT_EQ(try_create_and_delete_file(nullptr), 0);
}

// Runs inside the sandbox only (started by the test below): prints the probe's answer.
TEST(Permissions, SandboxedProbe)
{
    if (!getenv("QUILB_MISC_PROBE"))
        GTEST_SKIP() << "runs only inside the sandbox";
    printf("have_install_permissions=%d\n", have_install_permissions());
}

TEST(Permissions, InstallRightsFollowWritesToEtcAndUsr)
{
    QUILB_REQUIRE_SANDBOX();
    char self[520];
    ASSERT_EQ(getProcessFileName(self, sizeof self, 0), 1);
    std::string probe = "QUILB_MISC_PROBE=1 " + quilbtest::shellQuote(self) +
                        " --gtest_filter=Permissions.SandboxedProbe";
    std::string leftovers = "; ls /etc/tkinst_* /usr/tkinst_* 2>/dev/null | wc -l";

    quilbtest::CommandResult asRoot = quilbtest::runInSandbox(probe + leftovers);
    EXPECT_NE(asRoot.output.find("have_install_permissions=1"), std::string::npos) << asRoot.output;
    EXPECT_NE(asRoot.output.find("\n0\n"), std::string::npos) << asRoot.output;

    quilbtest::CommandResult readOnlyUsr =
        quilbtest::runInSandbox("mount --bind -o ro /usr /usr && " + probe);
    EXPECT_NE(readOnlyUsr.output.find("have_install_permissions=0"), std::string::npos)
        << readOnlyUsr.output;
}

} // namespace
