// The start of the engine as a front end's main runs it: the order of its steps in the
// log, where it stops, what an earlier installation changes, and the end of a run.
#include <gtest/gtest.h>

#include "installer/navigation/scripted_front_end.h"

using quilbtest::productXml;
using quilbtest::ScriptedUI;
using quilbtest::TestEngine;

namespace {

std::string edited(const std::string& from, const std::string& to)
{
    std::string xml = productXml();
    return xml.replace(xml.find(from), from.size(), to);
}

// Runs the start with a log of plain lines; gives "<result>: " and the log, each line
// ended by "\n".
std::string start(TestEngine& engine, ScriptedUI& ui)
{
    PMemoryConsole log;
    log.flags = 0;
    std::string lines = std::to_string(engine.RunInstallerUI(&ui, &log)) + ": " + log.text();
    for (size_t at; (at = lines.find('\r')) != std::string::npos;)
        lines.erase(at, 1);
    return lines;
}

// The lines of a successful install; `gui` and `previous` (an installed copy) add theirs.
std::string installSteps(bool gui = false, bool previous = false)
{
    return std::string(
               "Decompressing installation file\nParsing installation file\nGetting product description\n"
               "Getting file sets\n")
        + (gui ? "Getting GUI colour theme info\n" : "")
        + "Getting UI dialogs\nGetting control variables names\n"
        + (gui ? "Initializing GUI colour theme\n" : "")
        + "QuilbGroup installations found: 0\nChecking for previous and legacy installations for this "
          "product\n"
        + (previous ? "Initializing previous install's variable values from log\n" : "")
        + "Initializing default values\nStarting installation UI\nEnding installation UI\n";
}

// The lines of an install up to `last`, then `more`.
std::string upTo(const std::string& last, const std::string& more = "")
{
    std::string lines = installSteps();
    return lines.substr(0, lines.find(last + "\n") + last.size() + 1) + more;
}

} // namespace

TEST(EngineStart, StepsOfAnInstall)
{
    // previous: an installed copy, read before the defaults so that UseOld keeps its values;
    // state: INSTALLATIONS_COUNT, SHOULD_UNINSTALL and PREVIOUS_INSTALLATION
    const struct
    {
        const char* name;
        bool gui, previous;
        std::string stdroot;
        const char* state;
    } rows[] = {
        { "console", false, false, "/opt/defaults", "0 <unknown> <unknown>" },
        { "graphical", true, false, "/opt/defaults", "0 <unknown> <unknown>" },
        { "over an installed copy", false, true, "/home/me/old", "0 1 1" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        ui.gui = row.gui;
        engine.previousInstall = row.previous;
        engine.previousVars = { { "STDROOT", "/home/me/old" }, { "EDITION", "pro" } };
        int dialogAtStart = -2;
        ui.script = [&] { return dialogAtStart = engine.GetCurDlg(), 0; };
        quilbtest::putTemplateInCabinet(engine, productXml());
        EXPECT_EQ(start(engine, ui), "0: " + installSteps(row.gui, row.previous));
        EXPECT_EQ(ui.only({ "" }) + " on " + std::to_string(dialogAtStart), "StartUI EndUI on 0");
        EXPECT_EQ(
            engine.value("STDROOT") + "|" + engine.value("STDROOT", true) + "|" + engine.value("EDITION"),
            row.stdroot + "|/opt/defaults|basic");
        EXPECT_EQ(engine.value("INSTALLATIONS_COUNT") + " " + engine.value("SHOULD_UNINSTALL") + " "
                + engine.value("PREVIOUS_INSTALLATION"),
            row.state);
    }
}

TEST(EngineStart, StopsWhereAStepFails)
{
    // xml: the template in the cabinet; empty: nothing there
    const struct
    {
        const char* name;
        std::string xml;
        int startResult;
        int result;
        std::string lines;
    } rows[] = {
        { "no template", "", 0, -1,
            "Decompressing installation file\nERROR: Decompressing installation file\n"
            "ERROR: Cannot continue due to error(s). Exiting!\n" },
        { "no product description", edited("ProductDesc>", "Product>"), 0, -1,
            upTo("Getting product description") },
        { "no dialogs", edited("<Dialogs>", "<Pages>"), 0, -1,
            upTo("Getting UI dialogs", "ERROR: Getting dialogs info. Aborting!\n") },
        { "no default values", edited("DefValues>", "Defaults>"), 0, -1,
            upTo("Initializing default values",
                "ERROR: Parsing XML Default values (This may indicate wrong configuration file format)\n") },
        { "the front end fails", productXml(), 3, 3,
            upTo("Ending installation UI", "ERROR: There were errors during the installation\n") },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        ui.script = [&] { return row.startResult; };
        if (!row.xml.empty())
            quilbtest::putTemplateInCabinet(engine, row.xml);
        EXPECT_EQ(start(engine, ui), std::to_string(row.result) + ": " + row.lines);
        EXPECT_EQ(ui.calls.size(), row.startResult ? 2u : 0u);
    }
    TestEngine engine;
    PMemoryConsole log;
    EXPECT_EQ(engine.RunInstallerUI(nullptr, &log), -1);
    EXPECT_NE(log.text().find("ERROR: No installer UI handler specified\r\n"), std::string::npos);
}

TEST(EngineStart, UninstallTakesTheTemplateNamedByTheActionLog)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("product.xml"), productXml()));
    const std::string first = "Reading installation file name from action log\n";
    const std::string variables = first + "Reading previous installation variables\n";
    const std::string read = variables + "Reading installation file\n";
    const struct
    {
        const char* name;
        std::string log;
        int result;
        std::string lines;
    } rows[] = {
        { "the first line names the template",
            dir.file("product.xml") + " \t\r\nbackup.bin\r\nNUMVARS\t1\r\nVAR\tFROM_LOG\tyes\r\n", 0,
            read + installSteps().substr(installSteps().find('\n') + 1) },
        { "an empty log", "", -1,
            first + "ERROR: Could not obtain installation file from action log. Exiting!\n" },
        { "a template that isn't there, in a log without variables", dir.file("missing.xml") + "\n", -1,
            variables
                + "ERROR: Failed to read variables from log\nReading installation file\n"
                  "ERROR: Failed reading installation file\nERROR: Cannot continue due to error(s). "
                  "Exiting!\n" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(quilbtest::writeFile(dir.file("install.log"), row.log));
        TestEngine engine;
        ScriptedUI ui;
        ASSERT_EQ(engine.Init(dir.file("install.log").c_str(), 0, 1), 0);
        engine.configFile = dir.file("no-such-config.xml"); // never read for an uninstall
        EXPECT_EQ(start(engine, ui), std::to_string(row.result) + ": " + row.lines);
        EXPECT_EQ(ui.only({ "MessageBox" }), "");
        EXPECT_TRUE(row.result != 0 || strcmp(engine.GetDialogInfo(0, -1)->name, "PreUninstall") == 0);
        char fromLog[8] = {};
        engine.GetVar("FROM_LOG", fromLog, sizeof fromLog);
        EXPECT_STREQ(fromLog, row.result == 0 ? "yes" : "") << "the installation's variables are read back";
        // The end of the run closes the log and deletes the engine's temporary files.
        ASSERT_TRUE(quilbtest::writeFile(dir.file("tesktemp"), "x"));
        engine.temporaryFiles.append(TeskUtils::CharString(dir.file("tesktemp").c_str()));
        engine.Done();
        EXPECT_EQ(engine.logStream, nullptr);
        EXPECT_TRUE(
            !quilbtest::fileExists(dir.file("tesktemp")) && quilbtest::fileExists(dir.file("install.log")));
    }
}
