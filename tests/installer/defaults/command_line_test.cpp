// Variables from the command line and from a configuration file, and which source wins.
#include <gtest/gtest.h>

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

} // namespace

TEST(CommandLine, VariableOptionsSetVariables)
{
    struct Row {
        const char* name;
        std::vector<const char*> args;
        std::vector<std::pair<const char*, const char*>> expect;  // name, value
        std::vector<const char*> excluded;     // made up on the command line
        std::vector<const char*> notRecorded;  // no record may exist of these
    };
    const Row rows[] = {
        {"an existing variable", {"-VARIABLE_EDITION=pro"}, {{"EDITION", "pro"}}, {}, {}},
        {"without a value", {"-VARIABLE_FAST"}, {{"FAST", "1"}}, {"FAST"}, {}},
        {"an empty value", {"-VARIABLE_EDITION="}, {{"EDITION", ""}}, {}, {}},
        {"the prefix in any case, the name as given", {"-variable_Mixed=v"}, {{"Mixed", "v"}}, {"Mixed"}, {}},
        {"the first of one name counts", {"-VARIABLE_EDITION=first", "-VARIABLE_EDITION=second"},
         {{"EDITION", "first"}}, {}, {}},
        {"a predefined variable can't be set", {"-VARIABLE_GUI_INSTALL=1"}, {{"GUI_INSTALL", "0"}}, {},
         {"GUI_INSTALL"}},
        {"a bare prefix is no variable", {"-VARIABLE_=1", "-VARIABLES"}, {}, {}, {"", "S"}},
        {"other options are left alone", {"-configFile=x.xml", "-quiet"}, {{"EDITION", "basic"}}, {},
         {"configFile", "quiet"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<const char*> argv = {"installer"};
        argv.insert(argv.end(), row.args.begin(), row.args.end());
        CLParser parser(static_cast<int>(argv.size()), argv.data());
        TestEngine engine;
        ScriptedUI ui;
        engine.InitCmdLineParser(&parser);
        ASSERT_EQ(quilbtest::loadWizard(engine, ui, productXml()), 0);
        for (const auto& e : row.expect)
            EXPECT_EQ(engine.var(e.first), e.second) << e.first;
        for (const char* name : row.excluded) {
            EXPECT_TRUE(engine.isVarExcluded(name, Installer::EXCLUDE_FROM_LOG)) << name;
            EXPECT_TRUE(engine.isVarExcluded(name, Installer::EXCLUDE_FROM_CONFIG)) << name;
        }
        for (const char* name : row.notRecorded) {
            for (const VariableRecord& record : engine.variables)
                EXPECT_STRNE(record.name, name);
        }
        EXPECT_FALSE(engine.isVarExcluded("EDITION", Installer::EXCLUDE_FROM_LOG | Installer::EXCLUDE_FROM_CONFIG));
    }
}

TEST(CommandLine, CommandLineOverConfigurationFileOverTemplate)
{
    quilbtest::TempDir dir;
    const std::string config = dir.file("config.xml");
    ASSERT_TRUE(quilbtest::writeFile(config, "<DefValues>\n"
                                             " <Value Name=\"EDITION\" DataType=\"value\">config</Value>\n"
                                             " <Value Name=\"PORT\" DataType=\"value\">9090</Value>\n"
                                             " <Value Name=\"EXTRA\" DataType=\"value\">$STDROOT/extra</Value>\n"
                                             "</DefValues>\n"));
    const char* argv[] = {"installer", "-VARIABLE_EDITION=cmd"};
    CLParser parser(2, argv);

    TestEngine engine;
    ScriptedUI ui;
    engine.configFile = config;
    engine.InitCmdLineParser(&parser);
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, productXml()), 0);
    EXPECT_EQ(engine.var("EDITION"), "cmd");
    EXPECT_EQ(engine.var("PORT"), "9090");
    EXPECT_EQ(engine.var("EXTRA"), "/opt/defaults/extra");
    EXPECT_EQ(engine.var("SECRET"), "s3cret");
}

TEST(CommandLine, AConfigurationFileThatCantBeUsedStopsTheInstall)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(quilbtest::writeFile(dir.file("wrong.xml"), "<Settings><Value Name=\"A\">x</Value></Settings>"));
    ASSERT_TRUE(quilbtest::writeFile(dir.file("text.xml"), "EDITION=pro\n"));
    struct Row {
        const char* name;
        std::string path;
        const char* message;  // the front end's message box, or "" for none
    };
    const std::string missing = dir.file("missing.xml");
    const std::string box = "MessageBox(Error loading configuration file \"" + missing +
                            "\" (2). Installation can not continue.,1)";
    const Row rows[] = {
        {"a file that can't be read", missing, box.c_str()},
        {"a document without DefValues", dir.file("wrong.xml"), ""},
        {"not a document at all", dir.file("text.xml"), ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        ScriptedUI ui;
        PMemoryConsole log;
        log.flags = 0;
        engine.configFile = row.path;
        quilbtest::putTemplateInCabinet(engine, productXml());
        EXPECT_EQ(engine.RunInstallerUI(&ui, &log), -1);
        EXPECT_EQ(ui.only({"MessageBox", "StartUI"}), row.message);
        EXPECT_NE(log.text().find("Initializing default values\r\n"
                                  "ERROR: Parsing XML Default values (This may indicate wrong configuration file "
                                  "format)\r\n"),
                  std::string::npos)
            << log.text();
    }

    // The command line is still applied after such a failure.
    const char* argv[] = {"installer", "-VARIABLE_PORT=1"};
    CLParser parser(2, argv);
    TestEngine engine;
    ScriptedUI ui;
    engine.configFile = missing;
    engine.InitCmdLineParser(&parser);
    quilbtest::putTemplateInCabinet(engine, productXml());
    engine.RunInstallerUI(&ui, nullptr);
    EXPECT_EQ(engine.var("PORT"), "1");
}
