// Starting the program again as root: which tool is called, with which arguments, and how
// the arguments are quoted in the command text. The tools are recording stand-ins in a
// temporary directory that is the whole PATH of a forked child, which calls the operation.
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/misc/shell_utils.h"
#include "support/paths.h"

namespace {

TEST(WrapArgumentValue, QuotesTheValueBehindTheFirstEquals)
{
    struct Row
    {
        const char* argument;
        int size;
        char quote;
        const char* expected;
    } rows[] = {
        { "-log=/a b", 512, '\'', "-log='/a b'" },
        { "-name=", 512, '\'', "-name=''" },
        { "-x=a=b", 512, '"', "-x=\"a=b\"" },
        { "-child", 512, '\'', "-child" },
        { "/path with space", 512, '\'', "/path with space" },
        { "-log=/abc", 9, '\'', "-log='/a" },
        // The '=' lies beyond the first size-2 characters: copied as it stands, cut.
        { "-log=/abc", 6, '\'', "-log=" },
        { "-lo=x", 5, '\'', "-lo=" },
        { "-log=x", 5, '\'', "-log" },
        { "abc", 1, '\'', "" },
    };
    for (const Row& row : rows) {
        char out[512];
        memset(out, 'Z', sizeof out);
        ShellUtils::WrapArgumentValue(row.argument, out, row.size, row.quote);
        EXPECT_STREQ(out, row.expected) << row.argument << " in " << row.size;
    }

    char untouched[4] = "old";
    ShellUtils::WrapArgumentValue(nullptr, untouched, 4, '\'');
    ShellUtils::WrapArgumentValue("-a=b", untouched, 0, '\'');
    EXPECT_STREQ(untouched, "old");
    ShellUtils::WrapArgumentValue("-a=b", nullptr, 4, '\'');
}

// A stand-in that writes its name and each argument in brackets to $RECORD.
const char kStandIn[] = "#!/bin/sh\n"
                        "{ printf '%s\\n' \"${0##*/}\"; for a in \"$@\"; do printf '[%s]\\n' \"$a\"; done; } "
                        ">\"$RECORD\"\n";

// Runs execSuperuserCmd in a child whose PATH holds only stand-ins for `tools`, with standard
// input a terminal or /dev/null, and gives what was recorded, or "returned" when the call
// came back.
std::string elevate(const std::vector<std::string>& tools, bool gui, bool terminal,
    const std::vector<const char*>& argv, const std::vector<std::pair<const char*, const char*>>& env = {})
{
    quilbtest::TempDir dir;
    for (const std::string& tool : tools) {
        const std::string path = dir.file(tool);
        if (!quilbtest::writeFile(path, kStandIn) || chmod(path.c_str(), 0755) != 0)
            return "stand-in not written";
    }
    const std::string record = dir.file("record");
    pid_t pid = fork();
    if (pid == 0) {
        int input = -1;
        if (terminal) {
            int master = posix_openpt(O_RDWR | O_NOCTTY);
            if (master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0)
                input = open(ptsname(master), O_RDWR | O_NOCTTY);
        } else {
            input = open("/dev/null", O_RDONLY);
        }
        if (input < 0 || dup2(input, 0) < 0)
            _exit(3);
        setenv("PATH", dir.path().c_str(), 1);
        setenv("RECORD", record.c_str(), 1);
        for (const char* name : { "DISPLAY", "XAUTHORITY", "QUILB_INSTALLER_DIR", "QUILB_INSTALLER_DEBUG",
                 "QUILB_INSTALL_ORIGINAL_UID", "QUILB_INSTALL_ORIGINAL_GID", "QUILB_INSTALL_ORIGINAL_EGID",
                 "QUILB_INSTALL_ORIGINAL_USER_NAME", "QUILB_INSTALL_ORIGINAL_HOME" })
            unsetenv(name);
        setenv("HOME", dir.path().c_str(), 1);
        for (const auto& entry : env)
            setenv(entry.first, entry.second, 1);
        bool result = ShellUtils::execSuperuserCmd(static_cast<int>(argv.size()), argv.data(), gui);
        quilbtest::writeFile(record, result ? "returned true" : "returned");
        _exit(0);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return "child failed";
    return quilbtest::readFile(record);
}

std::string selfPath()
{
    char self[4096] = {};
    if (readlink("/proc/self/exe", self, sizeof self - 1) < 0)
        return "";
    return self;
}

TEST(ExecSuperuserCmd, ChoosesTheToolAndQuotesTheCommand)
{
    const std::string self = selfPath();
    const std::vector<const char*> argv
        = { "./installer", "-log=/tmp/a b/c", "-x=say \"hi\"", "a b", "-child" };
    const std::string command = "'" + self + "' -log='/tmp/a b/c' -x='say \"hi\"' a b -child";
    const std::string sudo
        = "sudo\n[-E]\n[./installer]\n[-log=/tmp/a b/c]\n[-x=say \"hi\"]\n[a b]\n[-child]\n";
    struct Row
    {
        const char* name;
        std::vector<std::string> tools;
        bool gui;
        bool terminal;
        std::string expected;
    } rows[] = {
        { "sudo keeps the arguments apart", { "sudo", "su", "gksudo" }, false, false, sudo },
        { "su gets the command text", { "su", "gksudo" }, false, true,
            "su\n[-m]\n[-c]\n[" + command + "]\n" },
        { "gksudo first", { "gksudo", "gksu", "pkexec", "sudo" }, true, false,
            "gksudo\n[-k]\n[" + command + "]\n" },
        { "gksu without gksudo", { "gksu", "pkexec", "sudo" }, true, false,
            "gksu\n[-S]\n[-k]\n[" + command + "]\n" },
        { "no graphical tool on a terminal", { "sudo", "pkexec" }, true, true, sudo },
        { "pkexec off a terminal", { "sudo", "pkexec" }, true, false,
            "pkexec\n[env]\n[" + self + "]\n[-log=/tmp/a b/c]\n[-x=say \"hi\"]\n[a b]\n[-child]\n" },
        { "nothing graphical off a terminal", { "sudo", "su" }, true, false, "returned" },
        { "no tool at all", {}, false, false, "returned" },
    };
    for (const Row& row : rows)
        EXPECT_EQ(elevate(row.tools, row.gui, row.terminal, argv), row.expected) << row.name;
}

TEST(ExecSuperuserCmd, PkexecIsToldTheDisplayAndTheIdentity)
{
    const std::string self = selfPath();
    const std::vector<const char*> argv = { "installer", "-child" };
    const std::string recorded = elevate({ "pkexec" }, true, false, argv,
        { { "DISPLAY", ":7" }, { "XAUTHORITY", "/home/u/.Xauthority" },
            { "QUILB_INSTALL_ORIGINAL_UID", "1000" }, { "QUILB_INSTALL_ORIGINAL_GID", "100" },
            { "QUILB_INSTALL_ORIGINAL_EGID", "100" }, { "QUILB_INSTALL_ORIGINAL_USER_NAME", "u" },
            { "QUILB_INSTALL_ORIGINAL_HOME", "/home/u w" } });
    EXPECT_EQ(recorded,
        "pkexec\n[env]\n[DISPLAY=:7]\n[XAUTHORITY=/home/u/.Xauthority]\n"
        "[QUILB_INSTALL_ORIGINAL_UID=1000]\n[QUILB_INSTALL_ORIGINAL_GID=100]\n[QUILB_INSTALL_ORIGINAL_EGID="
        "100]\n"
        "[QUILB_INSTALL_ORIGINAL_USER_NAME=u]\n[QUILB_INSTALL_ORIGINAL_HOME=/home/u w]\n["
            + self + "]\n[-child]\n");
}

} // namespace
