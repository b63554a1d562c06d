// The console front end started without install rights: it starts itself again through sudo
// or su with "-child", its arguments intact and the user's identity in the environment. Runs
// inside the sandbox as an unprivileged user made there, with recording stand-ins for the
// elevation tools first on PATH; a stand-in records what it was given and then runs the
// command as that same user, so the copy with "-child" really starts and logs its arguments.
#include <string>

#include <gtest/gtest.h>

#include "console/e2e/console_e2e_helpers.h"
#include "support/process.h"

namespace quilbtest {
namespace {

// Sets up the sandbox: the user, the program at a path with a space, the stand-ins.
std::string setUp()
{
    const std::string record
        = "{ printf '%s\\n' \"${0##*/}\"; for a in \"$@\"; do printf '[%s]\\n' \"$a\"; done; "
          "/usr/bin/env | /usr/bin/grep ^QUILB_INSTALL_ORIGINAL_ | /usr/bin/sort; } "
          ">\"$RECORDS/${0##*/}\"";
    std::string line = "set -e; useradd -m quilbtester; mkdir -p '/opt/quilb elev' /opt/standins /opt/empty; "
                       "cp "
        + shellQuote(installerConsole())
        + " '/opt/quilb elev/installer_console'; chmod 755 '/opt/quilb elev/installer_console'; ";
    const char* const tools[][2] = {
        { "sudo", "shift; exec \"$@\"" },
        { "su", "exec /bin/sh -c \"$3\"" },
        { "gksudo", "exec /bin/sh -c \"$2\"" },
        { "gksu", "exec /bin/sh -c \"$3\"" },
        { "pkexec", "shift; exec /usr/bin/env \"$@\"" },
    };
    for (const auto& tool : tools) {
        line += "printf '%s\\n' '#!/bin/sh' " + shellQuote(record) + " " + shellQuote(tool[1])
            + " >/opt/standins/" + tool[0] + "; chmod 755 /opt/standins/" + tool[0] + "; ";
    }
    line += "echo \"uid=$(id -u quilbtester) gid=$(id -g quilbtester)\"; set +e; ";
    return line;
}

// One run of the program as `user` with the given PATH, in a fresh directory for its records
// and its debug log; afterwards every file there is printed behind a "--- name" line.
std::string run(
    const std::string& name, const std::string& user, const std::string& path, const std::string& env)
{
    const std::string dir = "/tmp/" + name;
    return "mkdir -m 1777 " + dir + "; echo '=== " + name + "'; "
        + (user == "root" ? "" : "runuser -u " + user + " -- ") + "/usr/bin/env -i PATH=" + path
        + " HOME=/home/quilbtester TMPDIR=" + dir + " RECORDS=" + dir + " " + env
        + " ASAN_OPTIONS=detect_leaks=0 '/opt/quilb elev/installer_console' -debug '-bin=/tmp/a b/say "
          "\"hi\".ibin' "
          "'two words' </dev/null >"
        + dir + "/output 2>&1; for f in " + dir + "/*; do echo \"--- ${f##*/}\"; cat \"$f\"; done; ";
}

// The text of the file `file` of the run `name` in the sandbox's output.
std::string section(const std::string& output, const std::string& name, const std::string& file)
{
    size_t runStart = output.find("=== " + name + "\n");
    if (runStart == std::string::npos)
        return "<no run>";
    size_t runEnd = output.find("=== ", runStart + 4);
    const std::string runText
        = output.substr(runStart, runEnd == std::string::npos ? std::string::npos : runEnd - runStart);
    size_t start = runText.find("--- " + file + "\n");
    if (start == std::string::npos)
        return "<no file>";
    start += file.size() + 5;
    size_t end = runText.find("\n--- ", start - 1);
    return runText.substr(start, end == std::string::npos ? std::string::npos : end + 1 - start);
}

// The "[ARG nn]" lines of a debug log.
std::string argumentLines(const std::string& log)
{
    std::string lines;
    size_t at = 0;
    while ((at = log.find("[ARG ", at)) != std::string::npos) {
        size_t end = log.find('\n', at);
        std::string line = log.substr(at, end - at);
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines += line + "\n";
        at = end;
    }
    return lines;
}

TEST(Elevation, RestartsAsRootWithChildAndTheUsersIdentity)
{
    QUILB_REQUIRE_SANDBOX();
    CommandResult result
        = runInSandbox(setUp() + run("sudo", "quilbtester", "/opt/standins", "") + "rm /opt/standins/sudo; "
            + run("su", "quilbtester", "/opt/standins", "") + run("none", "quilbtester", "/opt/empty", ""));
    const std::string& out = result.output;
    size_t ids = out.find("uid=");
    ASSERT_NE(ids, std::string::npos) << out;
    const std::string uid = out.substr(ids + 4, out.find(' ', ids) - ids - 4);
    const std::string gid
        = out.substr(out.find("gid=", ids) + 4, out.find('\n', ids) - out.find("gid=", ids) - 4);
    const std::string identity = "QUILB_INSTALL_ORIGINAL_EGID=" + gid + "\nQUILB_INSTALL_ORIGINAL_GID=" + gid
        + "\nQUILB_INSTALL_ORIGINAL_HOME=/home/quilbtester\nQUILB_INSTALL_ORIGINAL_UID=" + uid
        + "\nQUILB_INSTALL_ORIGINAL_USER_NAME=quilbtester\n";
    const std::string program = "/opt/quilb elev/installer_console";

    // sudo gets the arguments one by one and keeps the environment.
    EXPECT_EQ(section(out, "sudo", "sudo"),
        "sudo\n[-E]\n[" + program + "]\n[-debug]\n[-bin=/tmp/a b/say \"hi\".ibin]\n[two words]\n[-child]\n"
            + identity)
        << out;
    EXPECT_EQ(argumentLines(section(out, "sudo", "installer_debug.log")),
        "[ARG 00] " + program
            + "\n[ARG 01] -debug\n[ARG 02] -bin=/tmp/a b/say \"hi\".ibin\n[ARG 03] two words\n"
              "[ARG 04] -child\n");
    EXPECT_EQ(section(out, "sudo", "su"), "<no file>");
    EXPECT_EQ(section(out, "sudo", "gksudo"), "<no file>");
    EXPECT_EQ(section(out, "sudo", "pkexec"), "<no file>");

    // Without sudo: su with one command text, in which only values behind '=' are quoted.
    EXPECT_EQ(section(out, "su", "su"),
        "su\n[-m]\n[-c]\n['" + program + "' -debug -bin='/tmp/a b/say \"hi\".ibin' two words -child]\n"
            + identity)
        << out;
    EXPECT_EQ(argumentLines(section(out, "su", "installer_debug.log")),
        "[ARG 00] " + program
            + "\n[ARG 01] -debug\n[ARG 02] -bin=/tmp/a b/say \"hi\".ibin\n[ARG 03] two\n"
              "[ARG 04] words\n[ARG 05] -child\n");
    // The copy with "-child" doesn't try again, though it has no more rights than before.
    EXPECT_EQ(section(out, "su", "installer_debug.log").find("Priveleges error"), std::string::npos);

    // No tool at all: the failure is told, and the run goes on.
    EXPECT_NE(section(out, "none", "output").find("ERROR: opening with root privileges\n"), std::string::npos)
        << out;
    const std::string log = section(out, "none", "installer_debug.log");
    EXPECT_TRUE(inOrder(log,
        { "Priveleges error, trying workaround with root privileges\r\n",
            "ERROR: Unsuccessfull starting with root privileges\r\n" }))
        << log;
    EXPECT_EQ(argumentLines(log).find("-child"), std::string::npos);
}

TEST(Elevation, RootStartedDirectlyDerivesTheIdentity)
{
    QUILB_REQUIRE_SANDBOX();
    CommandResult result = runInSandbox(setUp() + run("bare", "root", "/opt/standins", "")
        + run("sudo", "root", "/opt/standins",
            "SUDO_USER=quilbtester SUDO_UID=$(id -u quilbtester) SUDO_GID=$(id -g quilbtester)")
        + run("pkexec", "root", "/opt/standins", "PKEXEC_UID=$(id -u quilbtester)"));
    const std::string& out = result.output;
    const std::string error = "ERROR: Saving elevated environment: ";
    EXPECT_NE(section(out, "bare", "installer_debug.log").find(error + "{uid, gid, egid, user}\r\n"),
        std::string::npos)
        << out;
    EXPECT_EQ(section(out, "sudo", "installer_debug.log").find(error), std::string::npos) << out;
    EXPECT_EQ(section(out, "pkexec", "installer_debug.log").find(error), std::string::npos) << out;
    // Root with the rights never restarts.
    for (const char* tool : { "sudo", "su", "gksudo", "gksu", "pkexec" })
        EXPECT_EQ(section(out, "bare", tool), "<no file>") << tool;
}

} // namespace
} // namespace quilbtest
