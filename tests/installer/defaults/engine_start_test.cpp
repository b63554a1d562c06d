// The start of the engine as a front end's main runs it: the order of its steps in the
// log, where it stops, what an earlier installation changes, and the end of a run.
#include <gtest/gtest.h>

#include <algorithm>

#include "installer/navigation/scripted_front_end.h"
#include "support/paths.h"

using quilbtest::ScriptedUI;
using quilbtest::TestEngine;

namespace {

std::string productXml()
{
    return quilbtest::readFile(quilbtest::dataDir() + "/installer/defaults/product.xml");
}

std::string edited(const std::string& from, const std::string& to)
{
    std::string xml = productXml();
    return xml.replace(xml.find(from), from.size(), to);
}

// Runs the start with a log of plain lines; gives the result, the lines in `lines`.
int start(TestEngine& engine, ScriptedUI& ui, std::vector<std::string>& lines)
{
    PMemoryConsole log;
    log.flags = 0;
    int result = engine.RunInstallerUI(&ui, &log);
    std::string text = log.text();
    for (size_t at; (at = text.find("\r\n")) != std::string::npos; text.erase(0, at + 2))
        lines.push_back(text.substr(0, at));
    return result;
}

// The lines of a successful install; `previous` adds the reading of an installed copy.
std::vector<std::string> installSteps(bool gui = false, bool previous = false)
{
    std::vector<std::string> lines = {"Decompressing installation file", "Parsing installation file",
                                      "Getting product description", "Getting file sets"};
    if (gui)
        lines.push_back("Getting GUI colour theme info");
    lines.insert(lines.end(), {"Getting UI dialogs", "Getting control variables names"});
    if (gui)
        lines.push_back("Initializing GUI colour theme");
    lines.insert(lines.end(), {"QuilbGroup installations found: 0", "Checking for previous and legacy installations for this product"});
    if (previous)
        lines.push_back("Initializing previous install's variable values from log");
    lines.insert(lines.end(), {"Initializing default values", "Starting installation UI", "Ending installation UI"});
    return lines;
}

std::vector<std::string> upTo(const std::string& last, std::vector<std::string> more)
{
    std::vector<std::string> lines = installSteps();
    lines.erase(std::find(lines.begin(), lines.end(), last) + 1, lines.end());
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

} // namespace

TEST(EngineStart, StepsOfAnInstall)
{
    for (bool gui : {false, true}) {
        SCOPED_TRACE(gui ? "graphical" : "console");
        TestEngine engine;
        ScriptedUI ui;
        ui.gui = gui;
        int dialogAtStart = -2;
        ui.script = [&] { return dialogAtStart = engine.GetCurDlg(), 0; };
        quilbtest::putTemplateInCabinet(engine, productXml());
        std::vector<std::string> lines;
        EXPECT_EQ(start(engine, ui, lines), 0);
        EXPECT_EQ(lines, installSteps(gui));
        EXPECT_EQ(ui.calls, (std::vector<std::string>{"StartUI", "EndUI"}));
        EXPECT_EQ(dialogAtStart, 0);
        EXPECT_EQ(engine.GetDialogsCount(), 3);
        EXPECT_EQ(engine.var("INSTALLATIONS_COUNT"), "0");
        EXPECT_EQ(engine.var("SHOULD_UNINSTALL"), "<unknown>");
        EXPECT_EQ(engine.var("STDROOT"), "/opt/defaults");
    }

    // An installed copy is read before the defaults, so that UseOld keeps its values.
    TestEngine engine;
    ScriptedUI ui;
    engine.previousInstall = true;
    engine.previousVars = {{"STDROOT", "/home/me/old"}, {"EDITION", "pro"}};
    quilbtest::putTemplateInCabinet(engine, productXml());
    std::vector<std::string> lines;
    EXPECT_EQ(start(engine, ui, lines), 0);
    EXPECT_EQ(lines, installSteps(false, true));
    EXPECT_EQ(engine.var("STDROOT"), "/home/me/old");
    EXPECT_EQ(engine.defaultOf("STDROOT"), "/opt/defaults");
    EXPECT_EQ(engine.var("EDITION"), "basic");
    EXPECT_EQ(engine.var("SHOULD_UNINSTALL"), "1");
    EXPECT_EQ(engine.var("PREVIOUS_INSTALLATION"), "1");
}

TEST(EngineStart, StopsWhereAStepFails)
{
    // xml: the template in the cabinet; empty: nothing there
    const struct { const char* name; std::string xml; int startResult; int result; std::vector<std::string> lines; } rows[] = {
        {"no template", "", 0, -1, {"Decompressing installation file", "ERROR: Decompressing installation file",
                                    "ERROR: Cannot continue due to error(s). Exiting!"}},
        {"no product description", edited("ProductDesc>", "Product>"), 0, -1, upTo("Getting product description", {})},
        {"no dialogs", edited("<Dialogs>", "<Pages>"), 0, -1, upTo("Getting UI dialogs", {"ERROR: Getting dialogs info. Aborting!"})},
        {"no default values", edited("DefValues>", "Defaults>"), 0, -1,
         upTo("Initializing default values", {"ERROR: Parsing XML Default values (This may indicate wrong configuration file format)"})},
        {"the front end fails", productXml(), 3, 3, upTo("Ending installation UI", {"ERROR: There were errors during the installation"})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        ui.script = [&] { return row.startResult; };
        if (!row.xml.empty())
            quilbtest::putTemplateInCabinet(engine, row.xml);
        std::vector<std::string> lines;
        EXPECT_EQ(start(engine, ui, lines), row.result);
        EXPECT_EQ(lines, row.lines);
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
    std::vector<std::string> read = {"Reading installation file name from action log",
                                     "Reading previous installation variables", "Reading installation file"};
    std::vector<std::string> success = read, steps = installSteps();
    success.insert(success.end(), steps.begin() + 1, steps.end());
    read.insert(read.end(), {"ERROR: Failed reading installation file", "ERROR: Cannot continue due to error(s). Exiting!"});
    const struct { const char* name; std::string log; int result; std::vector<std::string> lines; } rows[] = {
        {"the first line names the template", dir.file("product.xml") + " \t\r\nbackup.bin\r\n", 0, success},
        {"an empty log", "", -1, {"Reading installation file name from action log",
                                  "ERROR: Could not obtain installation file from action log. Exiting!"}},
        {"a template that isn't there", dir.file("missing.xml") + "\n", -1, read},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(quilbtest::writeFile(dir.file("install.log"), row.log));
        TestEngine engine;
        ScriptedUI ui;
        ASSERT_EQ(engine.Init(dir.file("install.log").c_str(), 0, 1), 0);
        engine.configFile = dir.file("no-such-config.xml");  // never read for an uninstall
        std::vector<std::string> lines;
        EXPECT_EQ(start(engine, ui, lines), row.result);
        EXPECT_EQ(lines, row.lines);
        EXPECT_EQ(ui.only({"MessageBox"}), "");
        EXPECT_TRUE(row.result != 0 || strcmp(engine.GetDialogInfo(0, -1)->name, "PreUninstall") == 0);
        // The end of the run closes the log and deletes the engine's temporary files.
        ASSERT_TRUE(quilbtest::writeFile(dir.file("tesktemp"), "x"));
        engine.temporaryFiles.append(TeskUtils::CharString(dir.file("tesktemp").c_str()));
        engine.Done();
        EXPECT_EQ(engine.logStream, nullptr);
        EXPECT_FALSE(quilbtest::fileExists(dir.file("tesktemp")));
        EXPECT_TRUE(quilbtest::fileExists(dir.file("install.log")));
    }
}
