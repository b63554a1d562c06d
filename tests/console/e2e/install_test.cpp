// Installing for real: self-extracting installers made with quilb_pack, run through the
// launcher inside the sandbox, and what they leave on the disk: the files with their modes
// and contents, the action log and the backup container, byte for byte.
#include "console/e2e/console_e2e_helpers.h"

#include <chrono>
#include <cstdint>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

using namespace quilbtest;

namespace {

// The checksum of the backup container, written out here on its own: the length as seed,
// each little-endian 32-bit word of a 32768-byte block XORed in, then the block's odd bytes.
uint32_t containerChecksum(const std::string& data)
{
    uint32_t sum = static_cast<uint32_t>(data.size());
    for (size_t block = 0; block < data.size(); block += 32768) {
        size_t end = std::min(data.size(), block + 32768);
        size_t i = block;
        for (; i + 4 <= end; i += 4)
            sum ^= static_cast<uint32_t>(static_cast<unsigned char>(data[i]))
                | static_cast<uint32_t>(static_cast<unsigned char>(data[i + 1])) << 8
                | static_cast<uint32_t>(static_cast<unsigned char>(data[i + 2])) << 16
                | static_cast<uint32_t>(static_cast<unsigned char>(data[i + 3])) << 24;
        for (; i < end; ++i)
            sum ^= static_cast<unsigned char>(data[i]);
    }
    return sum;
}

std::string littleEndian(uint64_t value, int bytes)
{
    std::string out;
    for (int i = 0; i < bytes; ++i)
        out += static_cast<char>((value >> (8 * i)) & 0xff);
    return out;
}

const std::string kContainerHeader = std::string("Quilb Software installer backup file.\n") + '\0';
const std::string kContainerEnd = std::string("\x01\x00\x00", 3);

std::string containerRecord(const std::string& path, const std::string& stored, const std::string& written)
{
    return littleEndian(path.size() + 1, 2) + path + '\0' + littleEndian(stored.size(), 8)
        + littleEndian(containerChecksum(written), 4) + stored;
}

int modeOf(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0 ? static_cast<int>(info.st_mode & 07777) : -1;
}

long mtimeOf(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0 ? static_cast<long>(info.st_mtime) : -1;
}

// The lines of an action log without their "\r\n".
std::vector<std::string> logLines(const std::string& text)
{
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find("\r\n", start);
        if (end == std::string::npos) {
            lines.push_back(text.substr(start) + "<no line end>");
            break;
        }
        lines.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    return lines;
}

// The lines of a log behind its two head lines and its variable block.
std::vector<std::string> records(const std::vector<std::string>& lines)
{
    std::vector<std::string> out;
    size_t i = 2;
    if (i < lines.size() && lines[i].rfind("NUMVARS\t", 0) == 0)
        i += 1 + std::stoul(lines[i].substr(8));
    for (; i < lines.size(); ++i)
        out.push_back(lines[i]);
    return out;
}

std::string valueOf(const std::vector<std::string>& lines, const std::string& name)
{
    for (const std::string& line : lines)
        if (line.rfind("VAR\t" + name + "\t", 0) == 0)
            return line.substr(5 + name.size());
    return "<missing>";
}

// A product in a scratch directory, its self-extracting installer and a working directory
// for its runs (bound into the sandbox, so that what the install leaves there stays).
struct Product
{
    TempDir source;
    TempDir work;
    std::string installer;

    void file(const std::string& name, const std::string& content)
    {
        std::string path = source.file(name);
        runCommand("mkdir -p " + shellQuote(path.substr(0, path.rfind('/'))));
        ASSERT_TRUE(writeFile(path, content)) << path;
    }
    // Packs install.xml and the files below `dir` (the source directory by default) with the
    // launcher and the console front end only; `extra` goes to the package command.
    void pack(std::string dir = "", const std::string& extra = "")
    {
        if (dir.empty())
            dir = source.path();
        std::string package = source.file("product.ibin");
        installer = work.file("setup");
        CommandResult packed
            = runCommand(binDir() + "/quilb_pack package -t " + shellQuote(dir + "/install.xml") + " -b "
                + shellQuote(dir) + " " + extra + " -o " + shellQuote(package));
        ASSERT_EQ(packed.exitCode, 0) << packed.output;
        packed = runCommand(binDir() + "/quilb_pack installer -p " + shellQuote(package)
            + " --level 1 --frontend installer_console=" + shellQuote(installerConsole()) + " -o "
            + shellQuote(installer));
        ASSERT_EQ(packed.exitCode, 0) << packed.output;
    }
    std::string target(const std::string& rest = "") const { return work.path() + "/target" + rest; }
    CommandResult install(
        std::vector<std::string> args, const std::string& input = "", const std::string& variable = "TARGET")
    {
        args.insert(args.begin(), "-VARIABLE_" + variable + "=" + target());
        return runConsole(installer, args, work.path(), input);
    }
};

TEST(InstallTest, SampleProductInstallsItsFilesAndLog)
{
    QUILB_REQUIRE_SANDBOX();
    const std::string example = sourceDir() + "/examples/quilb-notes";
    Product product;
    ASSERT_NO_FATAL_FAILURE(product.pack(example, "--add license.md=" + shellQuote(example + "/license.md")));
    CommandResult run = product.install({ "-configFile=" + example + "/config.xml" }, "", "INSTALLDIR");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_EQ(run.output, kSuccess);

    const std::string t = product.target();
    struct Expected
    {
        const char* path;
        std::string content;
        int mode;
    };
    std::string conf = readFile(example + "/files/share/notes.conf");
    conf.replace(conf.find("[OWNER]"), 7, "Demo User");
    conf.replace(conf.find("[EDITION]"), 9, "1");
    const Expected expected[] = {
        { "/bin/quilb-notes", readFile(example + "/files/bin/quilb-notes"), 0755 },
        { "/share/notes.conf", conf, 0644 },
        { "/share/templates.txt", readFile(example + "/files/share/templates.txt"), 0644 },
        { "/doc/README.txt", readFile(example + "/files/doc/README.txt"), 0644 },
        { "/doc/CHANGES.txt", readFile(example + "/files/doc/CHANGES.txt"), 0644 },
        { "/uninstall/install.xml", readFile(example + "/install.xml"), 0644 },
    };
    for (const Expected& e : expected) {
        SCOPED_TRACE(e.path);
        EXPECT_EQ(readFile(t + e.path), e.content);
        EXPECT_EQ(modeOf(t + e.path), e.mode);
    }
    EXPECT_EQ(runCommand("find " + shellQuote(t) + " -type f | wc -l").output, "8\n")
        << "six files, log, container";

    // The whole log, byte for byte: the head, the variables in the order of the store (the
    // control variables are kept out), then the records in the order of the run.
    const std::vector<std::string> expectedLog = {
        t + "/uninstall/install.xml",
        t + "/uninstall/quilb-notes.bak",
        "NUMVARS\t5",
        "VAR\tMAJOR\t1.2",
        "VAR\tINSTALLDIR\t" + t,
        "VAR\tOWNER\tDemo User",
        "VAR\tEDITION\t1",
        "VAR\tDESKTOP_LINK\t1",
        "DIR\t2\t" + t + "/doc/",
        "FILE\tCREATE\t" + t + "/doc/CHANGES.txt",
        "FILE\tCREATE\t" + t + "/doc/README.txt",
        "DIR\t1\t" + t + "/share/",
        "FILE\tOVER\t" + t + "/share/notes.conf",
        "DIR\t1\t" + t + "/bin/",
        "FILE\tCREATE\t" + t + "/bin/quilb-notes",
        "DIR\t1\t" + t + "/uninstall/",
        "FILE\tCREATE\t" + t + "/uninstall/install.xml",
        "FILE\tCREATE\t" + t + "/share/templates.txt",
    };
    std::string joined;
    for (const std::string& line : expectedLog)
        joined += line + "\r\n";
    EXPECT_EQ(readFile(t + "/uninstall/quilb-notes.log"), joined);
    EXPECT_EQ(readFile(t + "/uninstall/quilb-notes.bak"), kContainerHeader + kContainerEnd)
        << "nothing was overwritten";
}

TEST(InstallTest, SampleProductInstallsAtATerminal)
{
    QUILB_REQUIRE_SANDBOX();
    const std::string example = sourceDir() + "/examples/quilb-notes";
    Product product;
    ASSERT_NO_FATAL_FAILURE(product.pack(example, "--add license.md=" + shellQuote(example + "/license.md")));
    const std::string t = product.target();
    PtySession session(product.installer, {}, product.work.path(), 60, 100);
    ASSERT_TRUE(session.expect("Press Enter to continue..."));
    session.send("");
    ASSERT_TRUE(session.expect("Press ENTER for the next page..."));
    session.send("");
    ASSERT_TRUE(session.expect("Install Quilb Notes to [")) << session.transcript();
    session.send(t);
    ASSERT_TRUE(session.expect("Name of the owner ["));
    session.send("Terminal Owner");
    ASSERT_TRUE(session.expect("Enter your choice [1-2, default is 1]: "));
    session.send("2");
    ASSERT_TRUE(session.expect("(no or [yes]): "));
    session.send("no");
    ASSERT_TRUE(session.expect("Create " + t + "/share/templates.txt"));
    ASSERT_TRUE(session.expect("The installation was successful."));
    EXPECT_EQ(session.finish(), 0) << session.transcript();

    std::string conf = readFile(t + "/share/notes.conf");
    EXPECT_NE(conf.find("owner = Terminal Owner\nedition = 1\n"), std::string::npos) << conf;
    EXPECT_EQ(modeOf(t + "/bin/quilb-notes"), 0755);
    EXPECT_EQ(readFile(t + "/share/templates.txt"), readFile(example + "/files/share/templates.txt"));
    std::vector<std::string> lines = logLines(readFile(t + "/uninstall/quilb-notes.log"));
    EXPECT_EQ(valueOf(lines, "OWNER"), "Terminal Owner");
    EXPECT_EQ(valueOf(lines, "DESKTOP_LINK"), "0");
    // A console install without a configuration file leaves one beside the installer.
    std::string config = readFile(product.work.file("config.xml"));
    EXPECT_NE(config.find("Terminal Owner"), std::string::npos) << config;
}

const char* const kLoopTemplate = R"(<QuilbGroupInstallation>
  <ProductDesc>
    <Fullname>Loop Check</Fullname>
    <MajorVersion>1</MajorVersion><MinorVersion>0</MinorVersion><MinestVersion>0</MinestVersion>
  </ProductDesc>
  <Dialogs>
    <CopyProgress Special="AutoNext"><Text x="1" y="1" w="10" h="1">Copying.</Text></CopyProgress>
    <PostInstall Special="AutoNext"/>
    <Failed Special="Finish" Condition="[INSTALL_ERROR]==1"><Text x="1" y="1" w="10" h="1">Install error noted.</Text></Failed>
    <Finish Special="Finish"><Text x="1" y="1" w="10" h="1">All done.</Text></Finish>
  </Dialogs>
  <Installation>
    <Uninstall>
      <InstallLogFile>[TARGET]/uninstall/loop.log</InstallLogFile>
      <InstallBackupFile>[TARGET]/uninstall/loop.bak</InstallBackupFile>
      <UninstallCmd>[TARGET]/uninstall/uninstaller_console</UninstallCmd>
      <UninstallXmlFile>[TARGET]/uninstall/install.xml</UninstallXmlFile>
    </Uninstall>
    <InstallerControlVariables><InstallError>INSTALL_ERROR</InstallError></InstallerControlVariables>
    <DefValues>
      <Value Name="TARGET" DataType="value">/opt/loop-check</Value>
      <Value Name="OWNER" DataType="value">Ada</Value>
      <Value Name="EXTRA" DataType="value">0</Value>
      <Value Name="SKIP" DataType="value">0</Value>
      <Value Name="BLOCK" DataType="value">0</Value>
      <Value Name="EMPTY" DataType="value"></Value>
      <Value Name="INSTALL_ERROR" DataType="value">0</Value>
    </DefValues>
    <FileSet Name="Main">
      <FN Dest="[TARGET]/uninstall">install.xml</FN>
      <FN Dest="[TARGET]/bin" Executable="">files/qbusytool</FN>
      <FN Dest="[TARGET]/bin" Executable="">files/same</FN>
      <FN Dest="[TARGET]/etc" ExpandVarsInFile="">files/small.conf</FN>
      <FN Dest="[TARGET]/etc" ExpandVarsInFile="">files/large.conf</FN>
      <FN Dest="[TARGET]/etc" BackupExisting="">files/changed.conf</FN>
      <FN Dest="[TARGET]/etc" BackupExisting="">files/fresh.conf</FN>
      <FN Dest="[TARGET]/etc">files/plain.conf</FN>
      <FN Dest="[TARGET]/skipped" Condition="[SKIP]==1">files/skipped.txt</FN>
    </FileSet>
    <FileSet Name="Blocked" Condition="[BLOCK]==1">
      <FN Dest="[TARGET]/late/deep">files/late.txt</FN>
      <FN Dest="[TARGET]/blocked/sub">files/blocked.txt</FN>
    </FileSet>
    <FileSet Name="Extra" Condition="[EXTRA]==1">
      <FN Dest="[TARGET]/extra">files/extra.txt</FN>
    </FileSet>
  </Installation>
</QuilbGroupInstallation>
)";

// The packed contents of the loop product.
struct LoopFiles
{
    std::string tool = "#!/bin/sh\necho tool\n";
    std::string same = "#!/bin/sh\necho same\n";
    std::string small = "owner=[OWNER]\nextra=[EXTRA]\n";
    std::string large = "owner=[OWNER]\n" + std::string(8192 - 14, '#');
    std::string changed = "fresh content of changed.conf\n";
    std::string fresh = "fresh.conf\n";
    std::string plain = "plain.conf, new\n";
};

void makeLoopProduct(Product& product, const LoopFiles& files)
{
    product.file("install.xml", kLoopTemplate);
    product.file("files/qbusytool", files.tool);
    product.file("files/same", files.same);
    product.file("files/small.conf", files.small);
    product.file("files/large.conf", files.large);
    product.file("files/changed.conf", files.changed);
    product.file("files/fresh.conf", files.fresh);
    product.file("files/plain.conf", files.plain);
    product.file("files/skipped.txt", "never installed\n");
    product.file("files/late.txt", "written after a failure\n");
    product.file("files/blocked.txt", "can't be written\n");
    product.file("files/extra.txt", "inactive file set\n");
    product.pack();
}

TEST(InstallTest, FileLoopWritesFilesLogAndContainer)
{
    QUILB_REQUIRE_SANDBOX();
    Product product;
    LoopFiles files;
    ASSERT_NO_FATAL_FAILURE(makeLoopProduct(product, files));

    // What stands before the run: an identical copy of "same" (not executable, old mtime),
    // a changed "changed.conf" and a changed "plain.conf".
    const std::string t = product.target();
    ASSERT_EQ(runCommand("mkdir -p " + shellQuote(t + "/bin") + " " + shellQuote(t + "/etc")).exitCode, 0);
    const std::string oldChanged = "the user's own changed.conf\n";
    writeFile(t + "/bin/same", files.same);
    chmod((t + "/bin/same").c_str(), 0644);
    struct utimbuf old = { 1000000000, 1000000000 };
    utime((t + "/bin/same").c_str(), &old);
    writeFile(t + "/etc/changed.conf", oldChanged);
    writeFile(t + "/etc/plain.conf", "plain.conf, old\n");
    // "qbusytool" stands as a running program, whose file can't be opened for writing.
    ASSERT_EQ(runCommand("cp /bin/sleep " + shellQuote(t + "/bin/qbusytool")).exitCode, 0);
    ASSERT_EQ(runCommand("setsid " + shellQuote(t + "/bin/qbusytool") + " 30 </dev/null >/dev/null 2>&1 &")
                  .exitCode,
        0);
    for (int i = 0; i < 50 && runCommand("pgrep -x qbusytool").exitCode != 0; ++i)
        usleep(20000);

    CommandResult run = product.install({ "-auto", "-quiet=0" });
    runCommand("pkill -x qbusytool");
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_TRUE(inOrder(run.output,
        { "Copying.", "Overwrite " + t + "/etc/plain.conf", "Back up " + t + "/etc/changed.conf",
            "Overwrite " + t + "/etc/changed.conf", "Create " + t + "/bin/same",
            "Overwrite " + t + "/bin/qbusytool", "All done." }))
        << run.output;
    EXPECT_EQ(run.output.find("Install error noted."), std::string::npos) << run.output;

    struct Expected
    {
        const char* path;
        std::string content;
        int mode;
    };
    const Expected expected[] = {
        { "/bin/qbusytool", files.tool, 0755 },
        { "/bin/same", files.same, 0755 }, // left alone, but made executable
        { "/etc/small.conf", "owner=Ada\nextra=0\n", 0644 },
        { "/etc/large.conf", files.large, 0644 }, // 8192 bytes: not expanded
        { "/etc/changed.conf", files.changed, 0644 },
        { "/etc/fresh.conf", files.fresh, 0644 },
        { "/etc/plain.conf", files.plain, 0644 },
        { "/uninstall/install.xml", kLoopTemplate, 0644 },
    };
    for (const Expected& e : expected) {
        SCOPED_TRACE(e.path);
        EXPECT_EQ(readFile(t + e.path), e.content);
        EXPECT_EQ(modeOf(t + e.path), e.mode);
    }
    EXPECT_EQ(mtimeOf(t + "/bin/same"), 1000000000L) << "an identical file is not written";
    EXPECT_FALSE(fileExists(t + "/skipped")) << "a file whose condition is false is skipped";
    EXPECT_FALSE(fileExists(t + "/extra")) << "an inactive file set is skipped";

    std::vector<std::string> lines = logLines(readFile(t + "/uninstall/loop.log"));
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[0], t + "/uninstall/install.xml");
    EXPECT_EQ(lines[1], t + "/uninstall/loop.bak");
    EXPECT_EQ(valueOf(lines, "OWNER"), "Ada");
    EXPECT_EQ(valueOf(lines, "TARGET"), t);
    EXPECT_EQ(valueOf(lines, "EMPTY"), "") << "an empty value ends the line with its TAB";
    const std::vector<std::string> expectedRecords = {
        // Records of a file set come in reverse document order.
        "FILE\tCREATE\t" + t + "/etc/plain.conf",
        "FILE\tOVER\t" + t + "/etc/fresh.conf",
        "FILE\tOVER\t" + t + "/etc/changed.conf",
        "FILE\tCREATE\t" + t + "/etc/large.conf",
        "FILE\tCREATE\t" + t + "/etc/small.conf",
        "FILE\tCREATE\t" + t + "/bin/same",
        "FILE\tCREATE\t" + t + "/bin/qbusytool",
        "DIR\t1\t" + t + "/uninstall/",
        "FILE\tCREATE\t" + t + "/uninstall/install.xml",
    };
    EXPECT_EQ(records(lines), expectedRecords);

    // Only the changed file with BackupExisting is kept: its old content, under the
    // checksum of what the run wrote over it.
    EXPECT_EQ(readFile(t + "/uninstall/loop.bak"),
        kContainerHeader + containerRecord(t + "/etc/changed.conf", oldChanged, files.changed)
            + kContainerEnd);

    // The temporary log and container are gone.
    EXPECT_EQ(runInSandbox("ls /tmp | grep -c tesktemp_ || true").output, "0\n");
}

TEST(InstallTest, FailedFileFailsTheRunAndTheRestIsWritten)
{
    QUILB_REQUIRE_SANDBOX();
    Product product;
    LoopFiles files;
    ASSERT_NO_FATAL_FAILURE(makeLoopProduct(product, files));
    const std::string t = product.target();
    // A plain file where the destination's directory should be.
    ASSERT_EQ(runCommand("mkdir -p " + shellQuote(t)).exitCode, 0);
    writeFile(t + "/blocked", "in the way\n");

    CommandResult run = product.install({ "-auto", "-quiet=0", "-VARIABLE_BLOCK=1" });
    EXPECT_TRUE(inOrder(run.output,
        { "FAILED to Create " + t + "/blocked/sub/blocked.txt", "Create " + t + "/late/deep/late.txt",
            "There were errors during the installation.", "Encountered errors during installation:",
            "FAILED to Create " + t + "/blocked/sub/blocked.txt", "Install error noted." }))
        << run.output;
    EXPECT_EQ(readFile(t + "/late/deep/late.txt"), "written after a failure\n");
    EXPECT_EQ(readFile(t + "/bin/qbusytool"), files.tool);

    std::vector<std::string> lines = logLines(readFile(t + "/uninstall/loop.log"));
    EXPECT_EQ(valueOf(lines, "INSTALL_ERROR"), "1") << "the variables are written again after the run";
    std::vector<std::string> recs = records(lines);
    ASSERT_GE(recs.size(), 3u);
    // The file sets come in document order, so the failing set's records are the last. A
    // file that then fails is logged all the same; the directories made are logged.
    const std::vector<std::string> last(recs.end() - 3, recs.end());
    EXPECT_EQ(last,
        (std::vector<std::string> { "FILE\tCREATE\t" + t + "/blocked/sub/blocked.txt",
            "DIR\t2\t" + t + "/late/deep/", "FILE\tCREATE\t" + t + "/late/deep/late.txt" }));
}

const char* const kWaitTemplate = R"(<QuilbGroupInstallation>
  <ProductDesc>
    <Fullname>Wait Check</Fullname>
    <MajorVersion>1</MajorVersion><MinorVersion>0</MinorVersion><MinestVersion>0</MinestVersion>
  </ProductDesc>
  <Dialogs>
    <RunningApps Special="Automated">
      <Text x="1" y="1" w="10" h="1">Please close the waiter.</Text>
      <TestApp>quilb_waiter</TestApp>
      <TestApp Condition="[NEVER]==1">quilb_never</TestApp>
    </RunningApps>
    <Finish Special="Finish"><Text x="1" y="1" w="10" h="1">Went on.</Text></Finish>
  </Dialogs>
  <Installation>
    <DefValues><Value Name="NEVER" DataType="value">0</Value></DefValues>
  </Installation>
</QuilbGroupInstallation>
)";

TEST(InstallTest, RunningAppsHoldsTheWizardUntilTheProgramEnds)
{
    QUILB_REQUIRE_SANDBOX();
    Product product;
    product.file("install.xml", kWaitTemplate);
    ASSERT_NO_FATAL_FAILURE(product.pack());
    const std::string waiter = product.work.file("quilb_waiter");
    ASSERT_EQ(runCommand("cp /bin/sleep " + shellQuote(waiter)).exitCode, 0);
    const std::string held
        = "The installation can not continue, because the processes listed above are running.";

    struct Case
    {
        const char* name;
        bool terminal;
    };
    for (const Case& c : { Case { "unattended", false }, Case { "at a terminal", true } }) {
        SCOPED_TRACE(c.name);
        // The waiter lives for two seconds, started apart from the test so that nothing
        // waits for its output.
        ASSERT_EQ(runCommand("setsid " + shellQuote(waiter) + " 2 </dev/null >/dev/null 2>&1 &").exitCode, 0);
        auto start = std::chrono::steady_clock::now();
        std::string output;
        int status;
        if (c.terminal) {
            PtySession session(product.installer, {}, product.work.path(), 24, 80);
            EXPECT_TRUE(session.expect("quilb_waiter"));
            EXPECT_TRUE(session.expect(held));
            status = session.finish();
            output = session.transcript();
        } else {
            CommandResult run = product.install({ "-auto" });
            status = run.exitCode;
            output = run.output;
        }
        double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        EXPECT_EQ(status, 0) << output;
        EXPECT_TRUE(inOrder(output, { "Please close the waiter.", "quilb_waiter", held })) << output;
        EXPECT_EQ(output.find("quilb_never"), std::string::npos) << output;
        EXPECT_GE(seconds, 1.0) << "the wizard went on while the program ran";
        EXPECT_EQ(runCommand("pgrep -x quilb_waiter").exitCode, 1) << "the waiter has ended";
    }
}

} // namespace
