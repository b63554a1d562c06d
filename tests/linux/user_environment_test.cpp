// The user's identity carried across the elevation: what each operation stores, which mask it
// gives, and which identity a child takes on. Identity changes happen in forked children only;
// the test process changes nothing but its own environment, which each case puts back.
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "linux/linux_installer.h"

namespace {

const char* const kVariables[] = { "QUILB_INSTALL_ORIGINAL_UID", "QUILB_INSTALL_ORIGINAL_GID",
    "QUILB_INSTALL_ORIGINAL_EGID", "QUILB_INSTALL_ORIGINAL_USER_NAME", "QUILB_INSTALL_ORIGINAL_HOME",
    "SUDO_USER", "SUDO_UID", "SUDO_GID", "PKEXEC_UID", "HOME" };

typedef std::map<std::string, std::string> Env;

// Clears the identity variables, sets `values`, and puts the old environment back at the end.
class ScopedEnv
{
public:
    explicit ScopedEnv(const Env& values)
    {
        for (const char* name : kVariables) {
            if (const char* value = getenv(name))
                saved_[name] = value;
            unsetenv(name);
        }
        for (const auto& entry : values)
            setenv(entry.first.c_str(), entry.second.c_str(), 1);
    }
    ~ScopedEnv()
    {
        for (const char* name : kVariables)
            unsetenv(name);
        for (const auto& entry : saved_)
            setenv(entry.first.c_str(), entry.second.c_str(), 1);
    }

private:
    Env saved_;
};

std::string var(const char* name)
{
    const char* value = getenv(name);
    return value ? value : "<unset>";
}

TEST(UserEnvironment, SaveUserEnvironmentStoresThisProcess)
{
    ScopedEnv env(Env { { "HOME", "/home/some one" } });
    EXPECT_TRUE(LinuxInstaller::saveUserEnvironment());
    EXPECT_EQ(var("QUILB_INSTALL_ORIGINAL_UID"), std::to_string(getuid()));
    EXPECT_EQ(var("QUILB_INSTALL_ORIGINAL_GID"), std::to_string(getgid()));
    EXPECT_EQ(var("QUILB_INSTALL_ORIGINAL_EGID"), std::to_string(getegid()));
    EXPECT_EQ(var("QUILB_INSTALL_ORIGINAL_HOME"), "/home/some one");
    EXPECT_EQ(LinuxInstaller::checkOriginalUserEnvironment(), 0u);

    ScopedEnv noHome(Env {});
    EXPECT_FALSE(LinuxInstaller::saveUserEnvironment());
    EXPECT_EQ(LinuxInstaller::checkOriginalUserEnvironment(), 17u);
}

TEST(UserEnvironment, CheckNamesEveryMissingVariable)
{
    const Env all = { { "QUILB_INSTALL_ORIGINAL_UID", "1" }, { "QUILB_INSTALL_ORIGINAL_GID", "1" },
        { "QUILB_INSTALL_ORIGINAL_EGID", "1" }, { "QUILB_INSTALL_ORIGINAL_USER_NAME", "daemon" },
        { "QUILB_INSTALL_ORIGINAL_HOME", "/h" } };
    struct Row
    {
        const char* missing;
        unsigned mask;
    } rows[] = {
        { nullptr, 0 },
        { "QUILB_INSTALL_ORIGINAL_UID", 3 },
        { "QUILB_INSTALL_ORIGINAL_GID", 5 },
        { "QUILB_INSTALL_ORIGINAL_EGID", 9 },
        { "QUILB_INSTALL_ORIGINAL_HOME", 17 },
        { "QUILB_INSTALL_ORIGINAL_USER_NAME", 33 },
    };
    for (const Row& row : rows) {
        Env values = all;
        if (row.missing)
            values.erase(row.missing);
        ScopedEnv env(values);
        EXPECT_EQ(LinuxInstaller::checkOriginalUserEnvironment(), row.mask)
            << (row.missing ? row.missing : "none");
    }
    ScopedEnv none(Env {});
    EXPECT_EQ(LinuxInstaller::checkOriginalUserEnvironment(), 63u);
}

TEST(UserEnvironment, SaveElevatedEnvironmentDerivesTheIdentity)
{
    // daemon (uid 1, group 1, home /usr/sbin) and root stand in the password database of
    // every Debian system.
    struct Row
    {
        const char* name;
        Env given;
        unsigned mask;
        const char* user;
        const char* uid;
        const char* gid;
        const char* home;
    } rows[] = {
        { "root directly", {}, 46, "<unset>", "<unset>", "<unset>", "/root" },
        { "sudo",
            { { "SUDO_USER", "daemon" }, { "SUDO_UID", "1" }, { "SUDO_GID", "1" }, { "HOME", "/root" } }, 0,
            "daemon", "1", "1", "/usr/sbin" },
        { "sudo without a user name", { { "SUDO_UID", "1" }, { "SUDO_GID", "1" }, { "PKEXEC_UID", "0" } }, 32,
            "<unset>", "1", "1", "/usr/sbin" },
        { "sudo without a group", { { "SUDO_USER", "daemon" }, { "SUDO_UID", "1" } }, 12, "daemon", "1",
            "<unset>", "/usr/sbin" },
        { "pkexec", { { "PKEXEC_UID", "1" } }, 0, "daemon", "1", "1", "/usr/sbin" },
        { "pkexec of an unknown user", { { "PKEXEC_UID", "3999999" } }, 46, "<unset>", "<unset>", "<unset>",
            "/root" },
    };
    for (const Row& row : rows) {
        ScopedEnv env(row.given);
        EXPECT_EQ(LinuxInstaller::saveElevatedEnvironment(), row.mask) << row.name;
        EXPECT_EQ(var("QUILB_INSTALL_ORIGINAL_USER_NAME"), row.user) << row.name;
        EXPECT_EQ(var("QUILB_INSTALL_ORIGINAL_UID"), row.uid) << row.name;
        EXPECT_EQ(var("QUILB_INSTALL_ORIGINAL_GID"), row.gid) << row.name;
        EXPECT_EQ(var("QUILB_INSTALL_ORIGINAL_EGID"), row.gid) << row.name;
        EXPECT_EQ(var("QUILB_INSTALL_ORIGINAL_HOME"), row.home) << row.name;
    }
}

// What a child saw after restoreUserEnvironment: "mask uid gid egid HOME".
std::string restoreInChild(bool dropFirst)
{
    int fds[2];
    if (pipe(fds) != 0)
        return "pipe failed";
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        if (dropFirst && (setregid(1, 1) != 0 || setuid(1) != 0))
            _exit(2);
        unsigned mask = LinuxInstaller::restoreUserEnvironment();
        std::string seen = std::to_string(mask) + " " + std::to_string(getuid()) + " "
            + std::to_string(getgid()) + " " + std::to_string(getegid()) + " " + var("HOME");
        ssize_t written = write(fds[1], seen.data(), seen.size());
        _exit(written == static_cast<ssize_t>(seen.size()) ? 0 : 3);
    }
    close(fds[1]);
    std::string seen;
    char chunk[256];
    ssize_t got;
    while ((got = read(fds[0], chunk, sizeof chunk)) > 0)
        seen.append(chunk, static_cast<size_t>(got));
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    return seen;
}

TEST(UserEnvironment, RestoreTakesOnTheIdentityInAChild)
{
    if (getuid() != 0)
        GTEST_SKIP() << "changing the identity of a child needs root";
    struct Row
    {
        const char* name;
        Env given;
        bool dropFirst;
        const char* seen;
    } rows[] = {
        { "elevated user",
            { { "QUILB_INSTALL_ORIGINAL_UID", "1" }, { "QUILB_INSTALL_ORIGINAL_GID", "1" },
                { "QUILB_INSTALL_ORIGINAL_EGID", "1" }, { "QUILB_INSTALL_ORIGINAL_HOME", "/home/me" },
                { "HOME", "/root" } },
            false, "0 1 1 1 /home/me" },
        { "only the real group",
            { { "QUILB_INSTALL_ORIGINAL_UID", "1" }, { "QUILB_INSTALL_ORIGINAL_GID", "1" },
                { "QUILB_INSTALL_ORIGINAL_HOME", "/home/me" } },
            false, "0 1 1 0 /home/me" },
        { "sudo only, home from the password database",
            { { "SUDO_UID", "1" }, { "SUDO_GID", "1" }, { "HOME", "/root" } }, false, "0 1 1 1 /usr/sbin" },
        { "root directly after saving", { { "QUILB_INSTALL_ORIGINAL_HOME", "/root" } }, false,
            "3 0 0 0 /root" },
        { "nothing at all", { { "HOME", "/x" } }, false, "19 0 0 0 /x" },
        { "no group, home from the password database",
            { { "QUILB_INSTALL_ORIGINAL_UID", "1" }, { "HOME", "/x" } }, false, "1 1 0 0 /usr/sbin" },
        { "no rights to change",
            { { "QUILB_INSTALL_ORIGINAL_UID", "2" }, { "QUILB_INSTALL_ORIGINAL_GID", "2" },
                { "QUILB_INSTALL_ORIGINAL_EGID", "2" }, { "QUILB_INSTALL_ORIGINAL_HOME", "/h" } },
            true, "14 1 1 1 /h" },
    };
    for (const Row& row : rows) {
        ScopedEnv env(row.given);
        EXPECT_EQ(restoreInChild(row.dropFirst), row.seen) << row.name;
    }
    // The test process itself kept its identity.
    EXPECT_EQ(getuid(), 0u);
}

TEST(UserEnvironment, ErrorStringNamesTheBits)
{
    struct Row
    {
        unsigned mask;
        const char* text;
    } rows[] = {
        { 0, "" },
        { 1, "{}" },
        { 17, "{home}" },
        { 12, "{gid, egid}" },
        { 46, "{uid, gid, egid, user}" },
        { 63, "{uid, gid, egid, home, user}" },
    };
    for (const Row& row : rows)
        EXPECT_STREQ(LinuxInstaller::environmentErrorStringFromMask(row.mask).c_str(), row.text) << row.mask;
}

} // namespace
