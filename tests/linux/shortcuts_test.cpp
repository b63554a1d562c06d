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
