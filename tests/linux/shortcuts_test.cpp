// Shortcuts of every type, made in a temporary directory: the link or script that lands,
// what the script does when run, the record for the action log, and the removal by that
// record.
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "linux/linux_installer.h"
#include "support/paths.h"
#include "support/process.h"

namespace {

const char kScriptHead[] = "#!/bin/bash\n\n# This is a shortcut, created by the Quilb Installer.\n\n";

// Puts an executable that prints its name and arguments at `path`.
bool writeEcho(const std::string& path)
{
    return quilbtest::writeFile(path, "#!/bin/sh\necho \"${0##*/}:$*\"\n") && chmod(path.c_str(), 0755) == 0;
}

TEST(Shortcuts, LauncherScriptsStartTheirTarget)
{
    quilbtest::TempDir dir;
    const std::string start = dir.file("my app");
    ASSERT_EQ(mkdir(start.c_str(), 0755), 0);
    ASSERT_EQ(mkdir((start + "/bin").c_str(), 0755), 0);
    ASSERT_TRUE(writeEcho(start + "/bin/run"));
    ASSERT_TRUE(writeEcho(start + "/bin/run it"));
    ASSERT_TRUE(writeEcho(start + "/say\"hi"));

    struct Row
    {
        const char* name;
        ShortcutType type;
        std::string target;
        const char* arguments;
        std::string line; // the script's last line
        std::string ran; // what running the script printed
    } rows[] = {
        { "relative", SHORTCUT_FILE, "bin/run", "-x", "./bin/run -x\n", "run:-x\n" },
        { "absolute", SHORTCUT_FILE, start + "/bin/run", "", "\"" + start + "/bin/run\" \n", "run:\n" },
        { "with a space", SHORTCUT_UNINSTALL, "bin/run it", "-a -b", "\"./bin/run it\" -a -b\n",
            "run it:-a -b\n" },
        { "quoted already", SHORTCUT_FILE, "\"bin/run it\"", "-q", "./\"bin/run it\" -q\n", "run it:-q\n" },
        { "with a double quote", SHORTCUT_FILE, "say\"hi", "1", "./say\\\"hi 1\n", "say\"hi:1\n" },
    };
    LinuxInstaller installer(0, false, nullptr, nullptr);
    for (const Row& row : rows) {
        const std::string path = dir.file("shortcut.sh");
        char record[4096] = "old";
        ASSERT_TRUE(installer.createShortcut(row.type, path.c_str(), row.target.c_str(), "description",
            row.arguments, start.c_str(), "icon.png", record, sizeof record, 0, nullptr))
            << row.name;
        EXPECT_EQ(quilbtest::readFile(path), kScriptHead + ("cd \"" + start + "\"\n") + row.line) << row.name;
        struct stat info;
        ASSERT_EQ(stat(path.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, 0775u) << row.name;
        EXPECT_EQ(std::string(record), "SHORTCUT\t" + path + "\n") << row.name;
        EXPECT_EQ(quilbtest::runCommand(quilbtest::shellQuote(path)).output, row.ran) << row.name;

        EXPECT_TRUE(installer.undoShortcut(record, nullptr)) << row.name;
        EXPECT_FALSE(quilbtest::fileExists(path)) << row.name;
    }
}

TEST(Shortcuts, SymbolicLinks)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("present"), "mine"));
    LinuxInstaller installer(0, false, nullptr, nullptr);
    for (ShortcutType type : { SHORTCUT_LINK, SHORTCUT_SYMLINK }) {
        const std::string path = dir.file("link");
        char record[4096];
        ASSERT_TRUE(installer.createShortcut(type, path.c_str(), "/opt/target", nullptr, nullptr, nullptr,
            nullptr, record, sizeof record, 0, nullptr));
        char pointsTo[256] = {};
        ASSERT_GT(readlink(path.c_str(), pointsTo, sizeof pointsTo - 1), 0);
        EXPECT_STREQ(pointsTo, "/opt/target");
        EXPECT_EQ(std::string(record), "SYMLINK\t" + path + "\n");
        EXPECT_TRUE(installer.undoShortcut(record, nullptr));
        struct stat info;
        EXPECT_NE(lstat(path.c_str(), &info), 0);
    }

    // Something in the way counts as made and is recorded, though it is no link of ours.
    char record[4096];
    const std::string present = dir.file("present");
    EXPECT_TRUE(installer.createShortcut(SHORTCUT_SYMLINK, present.c_str(), "/opt/target", nullptr, nullptr,
        nullptr, nullptr, record, sizeof record, 0, nullptr));
    EXPECT_EQ(std::string(record), "SYMLINK\t" + present + "\n");
    EXPECT_EQ(quilbtest::readFile(present), "mine");

    // A directory that isn't there: no link, no record.
    const std::string missing = dir.file("no/link");
    EXPECT_FALSE(installer.createShortcut(SHORTCUT_LINK, missing.c_str(), "/opt/target", nullptr, nullptr,
        nullptr, nullptr, record, sizeof record, 0, nullptr));
    EXPECT_STREQ(record, "");
}

TEST(Shortcuts, WebLauncherOpensTheAddressInABrowser)
{
    quilbtest::TempDir dir, bin;
    ASSERT_TRUE(writeEcho(bin.file("lynx")));
    const std::string oldPath = getenv("PATH") ? getenv("PATH") : "";
    const std::string path = dir.file("web.sh");
    LinuxInstaller installer(0, false, nullptr, nullptr);
    char record[4096];

    setenv("PATH", bin.path().c_str(), 1);
    bool made = installer.createShortcut(SHORTCUT_URL, path.c_str(), "http://example.org/a b", nullptr,
        nullptr, nullptr, nullptr, record, sizeof record, 0, nullptr);
    setenv("PATH", (bin.path() + ":" + oldPath).c_str(), 1);
    const std::string ran = quilbtest::runCommand(quilbtest::shellQuote(path)).output;
    setenv("PATH", dir.path().c_str(), 1);
    bool madeWithoutBrowser = installer.createShortcut(SHORTCUT_URL, dir.file("none.sh").c_str(), "http://x",
        nullptr, nullptr, nullptr, nullptr, record + 2048, 2048, 0, nullptr);
    setenv("PATH", oldPath.c_str(), 1);

    ASSERT_TRUE(made);
    EXPECT_EQ(quilbtest::readFile(path),
        "#!/bin/bash\n\n# This is a www shortcut, created by the Quilb Installer.\n\nlynx "
        "\"http://example.org/a b\"\n");
    EXPECT_EQ(std::string(record), "SHORTCUT\t" + path + "\n");
    EXPECT_EQ(ran, "lynx:http://example.org/a b\n");
    EXPECT_FALSE(madeWithoutBrowser);
    EXPECT_FALSE(quilbtest::fileExists(dir.file("none.sh")));
}

TEST(Shortcuts, NothingForUnknownTypesAndForeignRecords)
{
    quilbtest::TempDir dir;
    LinuxInstaller installer(0, false, nullptr, nullptr);
    char record[64] = "old";
    EXPECT_FALSE(installer.createShortcut(static_cast<ShortcutType>(5), dir.file("x").c_str(), "t", nullptr,
        nullptr, nullptr, nullptr, record, sizeof record, 0, nullptr));
    EXPECT_STREQ(record, "");
    EXPECT_FALSE(quilbtest::fileExists(dir.file("x")));
    EXPECT_FALSE(installer.createShortcut(
        SHORTCUT_FILE, nullptr, "t", nullptr, nullptr, nullptr, nullptr, record, sizeof record, 0, nullptr));

    ASSERT_TRUE(quilbtest::writeFile(dir.file("keep"), "k"));
    const std::string keep = dir.file("keep");
    for (const std::string& foreign :
        { "FILE\t" + keep, std::string("SYMLINK\t"), "SHORTCUT " + keep, "symlink\t" + keep }) {
        EXPECT_FALSE(installer.undoShortcut(foreign.c_str(), nullptr)) << foreign;
        EXPECT_TRUE(quilbtest::fileExists(keep)) << foreign;
    }
    EXPECT_FALSE(installer.undoShortcut(nullptr, nullptr));
    // A record whose path is gone already still counts as undone.
    EXPECT_TRUE(installer.undoShortcut(("SHORTCUT\t" + dir.file("gone")).c_str(), nullptr));
}

} // namespace

namespace {

// Inside the sandbox: shortcuts of every kind in the places an installer puts them, used, and
// removed by their records.
void makeShortcutsInSystemPlaces()
{
    ASSERT_EQ(
        quilbtest::runCommand("mkdir -p '/opt/quilb notes/bin' /opt/quilb_browser /usr/share/applications "
                              "/root/Desktop && printf '#!/bin/sh\\necho \"${0##*/}:$*\"\\n' | tee "
                              "'/opt/quilb notes/bin/notes' /opt/quilb_browser/lynx >/dev/null && chmod 755 "
                              "'/opt/quilb notes/bin/notes' /opt/quilb_browser/lynx")
            .exitCode,
        0);
    const std::string oldPath = getenv("PATH") ? getenv("PATH") : "";
    setenv("PATH", ("/opt/quilb_browser:" + oldPath).c_str(), 1);

    struct Row
    {
        ShortcutType type;
        const char* path;
        const char* target;
        const char* ran; // what running the shortcut printed
    } rows[] = {
        { SHORTCUT_FILE, "/usr/share/applications/quilb_notes.sh", "bin/notes", "notes:--start\n" },
        { SHORTCUT_UNINSTALL, "/usr/share/applications/quilb_uninstall.sh", "/opt/quilb notes/bin/notes",
            "notes:--start\n" },
        { SHORTCUT_URL, "/root/Desktop/quilb_web.sh", "http://example.org/notes",
            "lynx:http://example.org/notes\n" },
        { SHORTCUT_SYMLINK, "/usr/bin/quilb-notes", "/opt/quilb notes/bin/notes", "quilb-notes:--start\n" },
        { SHORTCUT_LINK, "/root/Desktop/Notes", "/opt/quilb notes/bin/notes", "Notes:--start\n" },
    };
    LinuxInstaller installer(0, false, nullptr, nullptr);
    for (const Row& row : rows) {
        char record[4096];
        ASSERT_TRUE(installer.createShortcut(row.type, row.path, row.target, nullptr, "--start",
            "/opt/quilb notes", nullptr, record, sizeof record, 0, nullptr))
            << row.path;
        struct stat info;
        ASSERT_EQ(lstat(row.path, &info), 0) << row.path;
        bool link = row.type == SHORTCUT_LINK || row.type == SHORTCUT_SYMLINK;
        EXPECT_EQ(S_ISLNK(info.st_mode), link) << row.path;
        std::string command = quilbtest::shellQuote(row.path);
        // A script brings its own arguments; a link is given them.
        if (link)
            command += " --start";
        EXPECT_EQ(quilbtest::runCommand(command).output, row.ran) << row.path;
        EXPECT_TRUE(installer.undoShortcut(record, nullptr)) << row.path;
        EXPECT_NE(lstat(row.path, &info), 0) << row.path;
    }
    setenv("PATH", oldPath.c_str(), 1);
}

TEST(ShortcutsInSandbox, LandInSystemPlacesAndGoAgain)
{
    if (getenv("QUILB_IN_SANDBOX") && getenv("QUILB_SHORTCUTS_INSIDE")) {
        makeShortcutsInSystemPlaces();
        return;
    }
    QUILB_REQUIRE_SANDBOX();
    char self[4096] = {};
    ASSERT_GT(readlink("/proc/self/exe", self, sizeof self - 1), 0);
    quilbtest::CommandResult result
        = quilbtest::runInSandbox("QUILB_SHORTCUTS_INSIDE=1 " + quilbtest::shellQuote(self)
            + " --gtest_filter=ShortcutsInSandbox.LandInSystemPlacesAndGoAgain; echo \"exit=$?\"");
    EXPECT_NE(result.output.find("[  PASSED  ] 1 test.\nexit=0\n"), std::string::npos) << result.output;
    EXPECT_FALSE(quilbtest::fileExists("/usr/share/applications/quilb_notes.sh"));
}

} // namespace
