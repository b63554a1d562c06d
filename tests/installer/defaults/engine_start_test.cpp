// The start of the engine as a front end's main runs it: the order of its steps in the log,
// where it stops, what an earlier installation changes, and the end of a run.
#include <gtest/gtest.h>

#include <functional>

#include "foundation/misc/cl_parser.h"
#include "installer/navigation/scripted_front_end.h"
#include "support/paths.h"

using quilbtest::ScriptedUI;
using quilbtest::TestEngine;

namespace {

std::string productXml()
{
    return quilbtest::readFile(quilbtest::dataDir() + "/installer/defaults/product.xml");
}

std::vector<std::string> linesOf(const PMemoryConsole& console)
{
    std::vector<std::string> lines;
    const std::string& text = console.text();
    size_t start = 0;
    for (size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2)
        lines.push_back(text.substr(start, end - start));
    return lines;
}

// The product template with `from` replaced by `to`.
std::string edited(const std::string& from, const std::string& to)
{
    std::string xml = productXml();
    size_t at = xml.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? xml : xml.replace(at, from.size(), to);
}

const std::vector<std::string> kInstallSteps = {
    "Decompressing installation file",
    "Parsing installation file",
    "Getting product description",
    "Getting file sets",
    "Getting UI dialogs",
    "Getting control variables names",
    "QuilbGroup installations found: 0",
    "Checking for previous and legacy installations for this product",
    "Initializing default values",
    "Starting installation UI",
    "Ending installation UI",
};

} // namespace

TEST(EngineStart, StepsOfAnInstallInOrder)
{
    for (bool gui : {false, true}) {
        SCOPED_TRACE(gui ? "graphical" : "console");
        TestEngine engine;
        ScriptedUI ui;
        ui.gui = gui;
        PMemoryConsole log;
        log.flags = 0;
        int dialogAtStart = -2;
        ui.script = [&](ScriptedUI&) {
            dialogAtStart = engine.GetCurDlg();
            return 0;
        };
        quilbtest::putTemplateInCabinet(engine, productXml());
        EXPECT_EQ(engine.RunInstallerUI(&ui, &log), 0);

        std::vector<std::string> expected = kInstallSteps;
        if (gui) {
            expected.insert(expected.begin() + 4, "Getting GUI colour theme info");
            expected.insert(expected.begin() + 7, "Initializing GUI colour theme");
        }
        EXPECT_EQ(linesOf(log), expected);
        EXPECT_EQ(ui.calls, (std::vector<std::string>{"StartUI", "EndUI"}));
        EXPECT_EQ(dialogAtStart, 0);
        EXPECT_EQ(engine.guiInstall, gui);
        EXPECT_EQ(engine.GetDialogsCount(), 3);
        EXPECT_EQ(engine.var("INSTALLATIONS_COUNT"), "0");
        EXPECT_EQ(engine.var("SHOULD_UNINSTALL"), "<unknown>");
        EXPECT_EQ(engine.var("STDROOT"), "/opt/defaults");
        EXPECT_EQ(engine.var("STDROOT_OK"), "1");
    }
}

TEST(EngineStart, AnEarlierInstallationIsReadBeforeTheDefaults)
{
    TestEngine engine;
    ScriptedUI ui;
    PMemoryConsole log;
    log.flags = 0;
    engine.previousInstall = true;
    engine.previousVars = {{"STDROOT", "/home/me/old"}, {"EDITION", "pro"}};
    quilbtest::putTemplateInCabinet(engine, productXml());
    EXPECT_EQ(engine.RunInstallerUI(&ui, &log), 0);

    std::vector<std::string> expected = kInstallSteps;
    expected.insert(expected.begin() + 8, "Initializing previous install's variable values from log");
    EXPECT_EQ(linesOf(log), expected);
    // UseOld keeps the installed copy's value; without it the template's value wins.
    EXPECT_EQ(engine.var("STDROOT"), "/home/me/old");
    EXPECT_EQ(engine.defaultOf("STDROOT"), "/opt/defaults");
    EXPECT_EQ(engine.var("EDITION"), "basic");
    EXPECT_EQ(engine.var("SHOULD_UNINSTALL"), "1");
    EXPECT_EQ(engine.var("PREVIOUS_INSTALLATION"), "1");
    EXPECT_EQ(engine.GetPreviousInstall(), 1);
}

TEST(EngineStart, StopsWhereAStepFails)
{
    struct Row {
        const char* name;
        std::string xml;  // the template in the cabinet; empty: none
        std::vector<std::string> lines;
    };
    auto upTo = [](const char* last, std::vector<std::string> more) {
        std::vector<std::string> lines;
        for (const std::string& line : kInstallSteps) {
            lines.push_back(line);
            if (line == last)
                break;
        }
        lines.insert(lines.end(), more.begin(), more.end());
        return lines;
    };
    const Row rows[] = {
        {"no template in the package", "",
         {"Decompressing installation file", "ERROR: Decompressing installation file",
          "ERROR: Cannot continue due to error(s). Exiting!"}},
        {"no product description", edited("ProductDesc>", "ProductInfo>"), upTo("Getting product description", {})},
        {"no dialogs", edited("<Dialogs>", "<Pages>"), upTo("Getting UI dialogs", {"ERROR: Getting dialogs info. Aborting!"})},
        {"no default values", edited("DefValues>", "Defaults>"),
         upTo("Initializing default values",
              {"ERROR: Parsing XML Default values (This may indicate wrong configuration file format)"})},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        PMemoryConsole log;
        log.flags = 0;
        if (!row.xml.empty())
            quilbtest::putTemplateInCabinet(engine, row.xml);
        EXPECT_EQ(engine.RunInstallerUI(&ui, &log), -1);
        EXPECT_EQ(linesOf(log), row.lines);
        EXPECT_TRUE(ui.calls.empty());
    }

    TestEngine engine;
    PMemoryConsole log;
    log.flags = 0;
    EXPECT_EQ(engine.RunInstallerUI(nullptr, &log), -1);
    EXPECT_EQ(linesOf(log), (std::vector<std::string>{"ERROR: No installer UI handler specified"}));
}

TEST(EngineStart, TheFrontEndsResultIsTheRunsResult)
{
    TestEngine engine;
    ScriptedUI ui;
    PMemoryConsole log;
    log.flags = 0;
    ui.script = [](ScriptedUI&) { return 3; };
    quilbtest::putTemplateInCabinet(engine, productXml());
    EXPECT_EQ(engine.RunInstallerUI(&ui, &log), 3);
    std::vector<std::string> expected = kInstallSteps;
    expected.push_back("ERROR: There were errors during the installation");
    EXPECT_EQ(linesOf(log), expected);
    EXPECT_EQ(ui.calls, (std::vector<std::string>{"StartUI", "EndUI"}));
}

TEST(EngineStart, UninstallTakesTheTemplateNamedByTheActionLog)
{
    quilbtest::TempDir dir;
    const std::string templatePath = dir.file("product.xml");
    ASSERT_TRUE(quilbtest::writeFile(templatePath, productXml()));

    struct Row {
        const char* name;
        std::string logText;
        int result;
        std::vector<std::string> lines;
    };
    const std::vector<std::string> readSteps = {"Reading installation file name from action log",
                                                "Reading previous installation variables", "Reading installation file"};
    std::vector<std::string> success = readSteps;
    success.insert(success.end(), kInstallSteps.begin() + 1, kInstallSteps.end());
    std::vector<std::string> unreadable = readSteps;
    unreadable.push_back("ERROR: Failed reading installation file");
    unreadable.push_back("ERROR: Cannot continue due to error(s). Exiting!");
    const Row rows[] = {
        {"the first line names the template", templatePath + " \t\r\n" + "backup.bin\r\n", 0, success},
        {"an empty log", "", -1,
         {"Reading installation file name from action log",
          "ERROR: Could not obtain installation file from action log. Exiting!"}},
        {"a template that isn't there", dir.file("missing.xml") + "\n", -1, unreadable},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string logPath = dir.file("install.log");
        ASSERT_TRUE(quilbtest::writeFile(logPath, row.logText));
        TestEngine engine;
        ScriptedUI ui;
        PMemoryConsole log;
        log.flags = 0;
        ASSERT_EQ(engine.Init(logPath.c_str(), 0, 1), 0);
        // An uninstall never reads a configuration file.
        engine.configFile = dir.file("no-such-config.xml");
        EXPECT_EQ(engine.RunInstallerUI(&ui, &log), row.result);
        EXPECT_EQ(linesOf(log), row.lines);
        if (row.result == 0) {
            ASSERT_EQ(engine.GetDialogsCount(), 2);
            EXPECT_STREQ(engine.GetDialogInfo(0, -1)->name, "PreUninstall");
            EXPECT_EQ(ui.only({"MessageBox"}), "");
        }
        engine.Done();
    }
}

TEST(EngineStart, DebugLevelTwoListsTheVariables)
{
    TestEngine engine;
    ScriptedUI ui;
    engine.InitDebugMode(&engine.log, 2);
    const char* argv[] = {"installer", "-VARIABLE_PORT=9000"};
    CLParser parser(2, argv);
    engine.InitCmdLineParser(&parser);
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, productXml()), 0);
    EXPECT_TRUE(engine.logged("Installation variables used (10):")) << engine.log.text();
    EXPECT_TRUE(engine.logged("  [EDITION] = \"basic\""));
    EXPECT_TRUE(engine.logged("  [PORT] = \"9000\" (8080)"));

    TestEngine quiet;
    quiet.InitDebugMode(&quiet.log, 1);
    ASSERT_EQ(quilbtest::loadWizard(quiet, ui, productXml()), 0);
    EXPECT_EQ(quiet.log.text().find("Installation variables used"), std::string::npos);
}

TEST(EngineStart, DoneReleasesWhatTheRunHeld)
{
    quilbtest::TempDir dir;
    const std::string temporary = dir.file("tesktemp_1");
    ASSERT_TRUE(quilbtest::writeFile(temporary, "x"));
    const std::string logPath = dir.file("install.log");
    ASSERT_TRUE(quilbtest::writeFile(logPath, "x\n"));

    TestEngine engine;
    quilbtest::putTemplateInCabinet(engine, productXml());
    engine.temporaryFiles.append(TeskUtils::CharString(temporary.c_str()));
    engine.Done();
    EXPECT_EQ(engine.cabinetData, nullptr);
    EXPECT_EQ(engine.cabinetFiles.count, 0);
    EXPECT_FALSE(quilbtest::fileExists(temporary));
    EXPECT_EQ(engine.temporaryFiles.count, 0);

    ASSERT_EQ(engine.Init(logPath.c_str(), 0, 1), 0);
    ASSERT_NE(engine.logStream, nullptr);
    engine.Done();
    EXPECT_EQ(engine.logStream, nullptr);
    EXPECT_TRUE(quilbtest::fileExists(logPath));
}
