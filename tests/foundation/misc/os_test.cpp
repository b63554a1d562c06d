#include <climits>
#include <csignal>
#include <cstdlib>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/misc/permissions.h"
#include "foundation/misc/process_list.h"
#include "foundation/misc/proxy_config.h"
#include "foundation/misc/shell_utils.h"
#include "foundation/strings/path_size.h"
#include "misc_test_helpers.h"
#include "support/paths.h"
#include "support/process.h"

using misctest::EnvGuard;

namespace {

TEST(SearchPath, CommandsAndBrowsersAreFoundOnlyThroughPATH)
{
    quilbtest::TempDir dir;
    for (const char* name : { "quilb-probe-tool", "lynx", "opera" }) {
        ASSERT_TRUE(quilbtest::writeFile(dir.file(name), "#!/bin/sh\nexit 0\n"));
        ASSERT_EQ(chmod(dir.file(name).c_str(), 0755), 0);
    }
    char browser[TeskUtils::kPathSize] = "";
    {
        EnvGuard path("PATH", ("/nonexistent:" + dir.path() + "/").c_str());
        EXPECT_EQ(ShellUtils::CommandExists("quilb-probe-tool"), 1);
        EXPECT_EQ(ShellUtils::CommandExists("quilb-no-such-tool"), 0);
        EXPECT_EQ(get_useable_www_browser(browser, sizeof browser), 1);
        EXPECT_STREQ(browser, "opera"); // opera is preferred to lynx
    }
    EnvGuard unset("PATH", nullptr);
    EXPECT_EQ(get_useable_www_browser(browser, sizeof browser), 0);
}

TEST(SearchPath, GetPathSplitsEveryPartIncludingEmptyOnes)
{
    struct Case
    {
        const char* path;
        std::vector<std::string> dirs;
    }; // path null: unset
    const Case cases[] = { { "/bin:/usr/bin", { "/bin", "/usr/bin" } }, { ":/a::", { "", "/a", "", "" } },
        { "", { "" } }, { nullptr, {} } };
    for (const Case& c : cases) {
        EnvGuard env("PATH", c.path);
        char* buffer = reinterpret_cast<char*>(1);
        const char** dirs = nullptr;
        int count = -1;
        EXPECT_EQ(get_PATH(buffer, dirs, count), c.path ? 1 : 0);
        EXPECT_EQ(std::vector<std::string>(dirs, dirs + count), c.dirs) << (c.path ? c.path : "(unset)");
        delete[] dirs;
        delete[] buffer;
    }
}

TEST(Permissions, ProbesWriteAFileInBothEtcAndUsr)
{
    // try_create_and_delete_file leaves nothing behind and doesn't touch its template.
    quilbtest::TempDir dir;
    const std::string probe = dir.file("probe_XXXXXX");
    EXPECT_EQ(try_create_and_delete_file(probe.c_str()), 1);
    EXPECT_EQ(quilbtest::runCommand("ls -A " + quilbtest::shellQuote(dir.path())).output, "");
    EXPECT_EQ(try_create_and_delete_file(dir.file("none/probe_XXXXXX").c_str()), 0);

    // The real probe writes to /etc and /usr: only inside the sandbox, where this test runs
    // itself again.
    if (!getenv("QUILB_IN_SANDBOX")) {
        QUILB_REQUIRE_SANDBOX();
        char self[TeskUtils::kPathSize];
        ASSERT_EQ(getProcessFileName(self, sizeof self, 0), 1);
        quilbtest::CommandResult run
            = quilbtest::runInSandbox(quilbtest::shellQuote(self) + " --gtest_filter=Permissions.*");
        EXPECT_EQ(run.exitCode, 0) << run.output;
        return;
    }
    // Root may write both; an ordinary user needs rights in both places, one is not enough.
    EXPECT_EQ(have_install_permissions(), 1);
    struct Case
    {
        mode_t etc, usr;
        int expected;
    };
    const Case cases[] = { { 0755, 0755, 0 }, { 0777, 0755, 0 }, { 0755, 0777, 0 }, { 0777, 0777, 1 } };
    for (const Case& c : cases) {
        ASSERT_EQ(chmod("/etc", c.etc) | chmod("/usr", c.usr), 0);
        pid_t child = fork();
        if (child == 0)
            _exit(setgid(65534) == 0 && setuid(65534) == 0 ? have_install_permissions() : 100);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, c.expected)
            << std::oct << c.etc << " " << c.usr;
    }
    EXPECT_EQ(quilbtest::runCommand("ls -d /etc/tkinst_* /usr/tkinst_* 2>/dev/null").output, "");
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
    ASSERT_EQ(config.noProxyItems.getCount(), 3);
    EXPECT_STREQ(config.noProxyItems[1].c_str(), ".example.com");
    EXPECT_STREQ(config.noProxyItems[2].c_str(), "10.0.0.1");

    // Without refresh the first reading stands; with it, the emptied environment shows.
    EnvGuard clear1("http_proxy", nullptr), clear2("HTTPS_PROXY", nullptr);
    EnvGuard clear3("https_proxy", nullptr), clear4("no_proxy", nullptr);
    TeskUtils::getSystemProxyConfiguration(config, 0);
    EXPECT_STREQ(config.httpProxy.c_str(), "http://lower:3128");
    TeskUtils::getSystemProxyConfiguration(config, 1);
    EXPECT_EQ(config.found, 0);
    EXPECT_TRUE(config.httpProxy.isNull() && config.noProxy.isNull());
    EXPECT_EQ(config.noProxyItems.getCount(), 0);
}

// A child running `program` "300" under the given argv[0]; killed when the object dies.
struct Child
{
    Child(const std::string& program, const std::string& argv0)
        : pid(fork())
    {
        if (pid == 0) {
            execl(program.c_str(), argv0.c_str(), "300", static_cast<char*>(nullptr));
            _exit(127);
        }
        // Wait until the new image runs, so that the process list shows its command.
        char exe[TeskUtils::kPathSize];
        for (int i = 0; i < 200 && !(getProcessFileName(exe, sizeof exe, pid) && program == exe); ++i)
            usleep(10000);
    }
    ~Child()
    {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    pid_t pid;
};

TEST(ProcessFile, OwnProgramAndItsDirectory)
{
    char file[TeskUtils::kPathSize], dir[TeskUtils::kPathSize], tiny[4];
    ASSERT_EQ(getProcessFileName(file, sizeof file, 0), 1);
    ASSERT_EQ(getProcessPath(dir, sizeof dir), 1);
    std::string own = file, path = dir;
    EXPECT_EQ(own.rfind('/'), path.size() - 1) << path;
    EXPECT_EQ(own.compare(0, path.size(), path), 0) << own;
    EXPECT_EQ(getProcessFileName(file, sizeof file, getpid()), 1);
    EXPECT_EQ(own, file);
    EXPECT_EQ(getProcessFileName(tiny, sizeof tiny, 0), 1);
    EXPECT_EQ(std::string(tiny), own.substr(0, 3)); // cut at size - 1
    EXPECT_EQ(getProcessFileName(file, sizeof file, 0x7ffffff0), 0);
}

TEST(ProcessList, MatchesTheProgramFileNameOrAnExactBracketedName)
{
    quilbtest::TempDir dir;
    char sleep[PATH_MAX];
    ASSERT_NE(realpath("/bin/sleep", sleep), nullptr);
    std::string name = "quilbsleeper" + std::to_string(getpid());
    std::string program = dir.file(name);
    ASSERT_EQ(
        quilbtest::runCommand("cp " + std::string(sleep) + " " + quilbtest::shellQuote(program)).exitCode, 0);

    Child plain(program, name);
    Child renamed(program, "something-else"); // the listed command must hold the name...
    Child lookalike(sleep, name + "-lookalike"); // ...and the program file must match it
    Child bracketed(sleep, "[" + name + "]");

    TeskUtils::Table<int, 100> pids;
    pids.append(-5); // the table is emptied first
    ASSERT_EQ(TeskUtils::uniListProcessesMatching(name.c_str(), pids), 0);
    EXPECT_EQ(std::multiset<int>(pids.data, pids.data + pids.getCount()),
        (std::multiset<int> { plain.pid, bracketed.pid }));

    std::string prefix = name.substr(0, name.size() - 1);
    ASSERT_EQ(TeskUtils::uniListProcessesMatching(prefix.c_str(), pids), 0);
    EXPECT_EQ(pids.getCount(), 0);
    EXPECT_EQ(TeskUtils::uniListProcessesMatching(nullptr, pids), 1);
}

} // namespace
