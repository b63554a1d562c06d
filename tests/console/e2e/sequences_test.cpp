// Action sequences in a real installation: a product whose "AdditionalInstall" and
// "PostInstall" sequences run an installed script in every way a template can ask for,
// packed with quilb_pack and installed through the launcher inside the sandbox. What the
// script wrote, in which order, and the results left in the action log's variables show
// what ran, when, and how each program ended.
#include "console/e2e/console_e2e_helpers.h"

#include <sys/stat.h>

using namespace quilbtest;

namespace {

const char* const kTemplate = R"(<QuilbGroupInstallation>
  <ProductDesc>
    <Fullname>Sequence Check</Fullname>
    <MajorVersion>1</MajorVersion><MinorVersion>0</MinorVersion><MinestVersion>0</MinestVersion>
  </ProductDesc>
  <Dialogs>
    <CopyProgress Special="AutoNext"><Text x="1" y="1" w="10" h="1">Copying.</Text></CopyProgress>
    <PostInstall Special="AutoNext"/>
    <Finish Special="Finish"><Text x="1" y="1" w="10" h="1">All done.</Text></Finish>
  </Dialogs>
  <Installation>
    <Uninstall>
      <InstallLogFile>[TARGET]/uninstall/seq.log</InstallLogFile>
      <InstallBackupFile>[TARGET]/uninstall/seq.bak</InstallBackupFile>
      <UninstallCmd>[TARGET]/uninstall/uninstaller_console</UninstallCmd>
      <UninstallXmlFile>[TARGET]/uninstall/install.xml</UninstallXmlFile>
    </Uninstall>
    <DefValues>
      <Value Name="TARGET" DataType="value">/opt/sequence-check</Value>
      <Value Name="OWNER" DataType="value">Ada</Value>
      <Value Name="SKIP" DataType="value">0</Value>
    </DefValues>
    <FileSet Name="Main">
      <FN Dest="[TARGET]/uninstall">install.xml</FN>
      <FN Dest="[TARGET]/bin" Executable="">files/step.sh</FN>
    </FileSet>
    <AdditionalInstall>
      <RunProgram Log="First step for [OWNER]" Arguments="first" Wait="" AsRoot="" ResultVariable="R_FIRST">[TARGET]/bin/step.sh</RunProgram>
      <RunProgram Condition="[SKIP]==1" Arguments="skipped" Wait="" AsRoot="">[TARGET]/bin/step.sh</RunProgram>
      <RunProgram Arguments="fail" Wait="" AsRoot="" ResultVariable="R_FAIL">[TARGET]/bin/step.sh</RunProgram>
      <RunProgram Wait="" AsRoot="" ResultVariable="R_MISSING">[TARGET]/bin/missing</RunProgram>
      <RunProgram Arguments="hang" AsRoot="" ResultVariable="R_HANG">[TARGET]/bin/step.sh</RunProgram>
      <RunProgram Arguments="poll" Wait="" Asynchronous="" ProgressUpdate="1" AsRoot="" ResultVariable="R_POLL">[TARGET]/bin/step.sh</RunProgram>
      <RunProgram Arguments="home" Wait="" ResultVariable="R_HOME">[TARGET]/bin/step.sh</RunProgram>
      <RunProgram Arguments="args 'two  words' [OWNER];echo dropped" Wait="" AsRoot="" WorkDir="[TARGET]/uninstall">[TARGET]/bin/step.sh</RunProgram>
      <CreateFile Dest="[TARGET]/bin" ExpandVarsInFile="" FileMod="0640" ResultVariable="R_CREATE">files/created.conf</CreateFile>
      <CreateFile Dest="[TARGET]/bin">files/absent.conf</CreateFile>
      <CopyFile Dest="[TARGET]/bin/copy.conf">[TARGET]/bin/created.conf</CopyFile>
    </AdditionalInstall>
    <AdditionalInstall Condition="[SKIP]==1"><RunProgram Arguments="never" Wait="">/bin/x</RunProgram></AdditionalInstall>
    <AdditionalInstall><RunProgram Arguments="second" Wait="" AsRoot="">[TARGET]/bin/step.sh</RunProgram></AdditionalInstall>
    <PostInstall><RunProgram Arguments="post [R_FAIL]" Wait="" AsRoot="">[TARGET]/bin/step.sh</RunProgram></PostInstall>
  </Installation>
</QuilbGroupInstallation>
)";

// Appends one line per call to order.txt beside its own directory. "hang" leaves the
// installer's output at once and outlives the installation.
const char* const kStepScript = R"(#!/bin/sh
out="$(dirname "$0")/../order.txt"
case "$1" in
  fail) echo fail >> "$out"; exit 3 ;;
  hang) exec >/dev/null 2>&1; echo hang-start >> "$out"; sleep 5; echo hang-end >> "$out" ;;
  poll) sleep 0.3; echo poll >> "$out" ;;
  home) echo "home $HOME" >> "$out" ;;
  args) shift; echo "args $(pwd) $#: $*" >> "$out" ;;
  *) echo "$*" >> "$out" ;;
esac
)";

// The product packed into a self-extracting installer, with a working directory shared
// with the sandbox.
struct SequenceProduct
{
    TempDir source;
    TempDir work;
    std::string installer;

    void pack()
    {
        ASSERT_TRUE(writeFile(source.file("install.xml"), kTemplate));
        ASSERT_EQ(runCommand("mkdir -p " + shellQuote(source.file("files"))).exitCode, 0);
        ASSERT_TRUE(writeFile(source.file("files/step.sh"), kStepScript));
        ASSERT_TRUE(writeFile(source.file("created.conf"), "owner=[OWNER]\n"));
        const std::string package = source.file("product.ibin");
        installer = work.file("setup");
        CommandResult packed
            = runCommand(binDir() + "/quilb_pack package -t " + shellQuote(source.file("install.xml"))
                + " -b " + shellQuote(source.path()) + " --add files/created.conf="
                + shellQuote(source.file("created.conf")) + " -o " + shellQuote(package));
        ASSERT_EQ(packed.exitCode, 0) << packed.output;
        packed = runCommand(binDir() + "/quilb_pack installer -p " + shellQuote(package)
            + " --level 1 --frontend installer_console=" + shellQuote(installerConsole()) + " -o "
            + shellQuote(installer));
        ASSERT_EQ(packed.exitCode, 0) << packed.output;
    }
    std::string target(const std::string& rest = "") const { return work.path() + "/target" + rest; }
};

TEST(SequencesTest, SequencesRunInOrderAndEveryProgramReportsItsEnd)
{
    QUILB_REQUIRE_SANDBOX();
    SequenceProduct product;
    ASSERT_NO_FATAL_FAILURE(product.pack());
    const std::string t = product.target();
    std::vector<std::string> env
        = { "QUILB_INSTALL_ORIGINAL_UID=0", "QUILB_INSTALL_ORIGINAL_GID=0", "QUILB_INSTALL_ORIGINAL_EGID=0",
              "QUILB_INSTALL_ORIGINAL_USER_NAME=root", "QUILB_INSTALL_ORIGINAL_HOME=/home/original" };

    // The one failing CreateFile fails the step; every other action still runs.
    CommandResult run = runConsole(
        product.installer, { "-auto", "-quiet=0", "-VARIABLE_TARGET=" + t }, product.work.path(), "", env);
    EXPECT_TRUE(inOrder(run.output,
        { "Create " + t + "/bin/step.sh", "First step for Ada", "There were errors during the installation.",
            "Error during: Running additional installations", "All done." }))
        << run.output;

    // The files came first; the program left running was not waited for; only the part of
    // the arguments before the ";" ran; "PostInstall" saw the result of "AdditionalInstall".
    EXPECT_EQ(readFile(t + "/order.txt"),
        "first\nfail\nhang-start\npoll\nhome /home/original\nargs " + t
            + "/uninstall 2: two  words Ada\nsecond\npost 3\n");
    const std::string log = readFile(t + "/uninstall/seq.log");
    for (const char* result :
        { "R_FIRST\t0", "R_FAIL\t3", "R_MISSING\t2", "R_HANG\t0", "R_POLL\t0", "R_HOME\t0", "R_CREATE\t0" })
        EXPECT_NE(log.find(std::string("\r\nVAR\t") + result + "\r\n"), std::string::npos) << result << "\n"
                                                                                           << log;

    struct stat info;
    ASSERT_EQ(stat((t + "/bin/created.conf").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_EQ(readFile(t + "/bin/created.conf"), "owner=Ada\n");
    EXPECT_EQ(readFile(t + "/bin/copy.conf"), "owner=Ada\n");
    EXPECT_EQ(log.find("created.conf"), std::string::npos) << "a created file is logged nowhere";
}

} // namespace
