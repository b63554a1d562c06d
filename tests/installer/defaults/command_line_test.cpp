// Variables from the command line and a configuration file, which source wins, the exclude
// list, and the configuration file that a run writes for unattended repeats.
#include <gtest/gtest.h>

#include "foundation/misc/cl_parser.h"
#include "installer/navigation/scripted_front_end.h"

using quilbtest::productXml;
using quilbtest::ScriptedUI;
using quilbtest::TestEngine;

TEST(CommandLine, VariableOptionsSetVariables)
{
    // madeUp: a variable the command line made, kept out of log and configuration
    const struct
    {
        const char* name;
        std::vector<const char*> args;
        std::vector<std::pair<const char*, const char*>> expect;
        const char* madeUp;
    } rows[] = {
        { "an existing variable", { "-VARIABLE_EDITION=pro" }, { { "EDITION", "pro" } }, nullptr },
        { "without a value", { "-VARIABLE_FAST" }, { { "FAST", "1" } }, "FAST" },
        { "an empty value", { "-VARIABLE_EDITION=" }, { { "EDITION", "" } }, nullptr },
        { "the prefix in any case, the name as given", { "-variable_Mixed=v" }, { { "Mixed", "v" } },
            "Mixed" },
        { "the first of one name counts", { "-VARIABLE_EDITION=1st", "-VARIABLE_EDITION=2nd" },
            { { "EDITION", "1st" } }, nullptr },
        { "a predefined variable can't be set", { "-VARIABLE_GUI_INSTALL=1" }, { { "GUI_INSTALL", "0" } },
            nullptr },
        { "a bare prefix is no variable", { "-VARIABLE_=1", "-quiet" }, { { "EDITION", "basic" } }, nullptr },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<const char*> argv = { "installer" };
        argv.insert(argv.end(), row.args.begin(), row.args.end());
        CLParser parser(static_cast<int>(argv.size()), argv.data());
        TestEngine engine;
        ScriptedUI ui;
        engine.InitCmdLineParser(&parser);
        ASSERT_EQ(quilbtest::loadWizard(engine, ui, productXml()), 0);
        for (const auto& e : row.expect)
            EXPECT_EQ(engine.value(e.first), e.second) << e.first;
        EXPECT_TRUE(!row.madeUp
            || (engine.isVarExcluded(row.madeUp, Installer::EXCLUDE_FROM_LOG)
                && engine.isVarExcluded(row.madeUp, Installer::EXCLUDE_FROM_CONFIG)));
        EXPECT_EQ(engine.variables.count, 10 + (row.madeUp ? 1 : 0)); // no record for the rest
    }
}

TEST(CommandLine, AConfigurationFileThatCantBeUsedStopsTheInstall)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(
        quilbtest::writeFile(dir.file("wrong.xml"), "<Settings><Value Name=\"A\">x</Value></Settings>"));
    const std::string missing = dir.file("missing.xml");
    const std::string box = "MessageBox(Error loading configuration file \"" + missing
        + "\" (2). Installation can not continue.,1)";
    const struct
    {
        std::string path;
        std::string message;
    } rows[] = { { missing, box }, { dir.file("wrong.xml"), "" } };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        const char* argv[] = { "installer", "-VARIABLE_PORT=1" };
        CLParser parser(2, argv);
        TestEngine engine;
        ScriptedUI ui;
        PMemoryConsole log;
        log.flags = 0;
        engine.configFile = row.path;
        engine.InitCmdLineParser(&parser);
        quilbtest::putTemplateInCabinet(engine, productXml());
        EXPECT_EQ(engine.RunInstallerUI(&ui, &log), -1);
        EXPECT_EQ(ui.only({ "MessageBox", "StartUI" }), row.message);
        EXPECT_NE(
            log.text().find("Initializing default values\r\nERROR: Parsing XML Default values (This may "
                            "indicate wrong configuration file format)\r\n"),
            std::string::npos);
        EXPECT_EQ(engine.value("PORT"), "1"); // the command line still counts
    }
}

TEST(ConfigFile, WritesWhatMayBeKeptAndReadsBack)
{
    quilbtest::TempDir dir;
    const char* argv[] = { "installer", "-VARIABLE_MADE_UP=x", "-VARIABLE_PORT=9000" };
    CLParser parser(3, argv);
    TestEngine engine;
    ScriptedUI ui;
    engine.InitCmdLineParser(&parser);
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, productXml()), 0);
    engine.SetVar("EDITION", "a <b> & 'c'");
    engine.SetVar("NEITHER", "");
    engine.SetVar("PREVIOUS_INSTALLATION", "1");

    // Left out: control variables, the field's validation variable, what the template
    // excludes from the configuration, what the command line made up.
    const std::string path = dir.file("config.xml");
    EXPECT_EQ(engine.CreateConfigFile(path.c_str()), 0);
    EXPECT_EQ(quilbtest::readFile(path),
        "<DefValues>\n"
        " <Value Name=\"EDITION\" DataType=\"value\">a &lt;b&gt; &amp; &apos;c&apos;</Value>\n"
        " <Value Name=\"PORT\" DataType=\"value\">9000</Value>\n"
        " <Value Name=\"LOG_ONLY\" DataType=\"value\">l</Value>\n"
        " <Value Name=\"NEITHER\" DataType=\"value\"></Value>\n"
        " <Value Name=\"STDROOT\" DataType=\"value\">/opt/defaults</Value>\n"
        "</DefValues>\n");
    EXPECT_TRUE(engine.isVarExcluded("LOG_ONLY", Installer::EXCLUDE_FROM_LOG)
        && engine.isVarExcluded("PROGRESS_DETAILS", Installer::EXCLUDE_FROM_LOG));
    EXPECT_FALSE(engine.isVarExcluded("PREVIOUS_INSTALLATION", Installer::EXCLUDE_FROM_LOG)
        || engine.isVarExcluded("secret", Installer::EXCLUDE_FROM_CONFIG));
    EXPECT_EQ(engine.value("STDROOT_OK"), "1"); // a validation variable starts as valid

    // An unattended repeat with that file gets the same values; its command line wins over
    // the file, the file over the template. From debug level 2 on, the variables are
    // listed, with a default that differs.
    const char* repeatArgv[] = { "installer", "-VARIABLE_EDITION=cmd" };
    CLParser repeatParser(2, repeatArgv);
    TestEngine repeat;
    repeat.configFile = path;
    repeat.InitCmdLineParser(&repeatParser);
    repeat.InitDebugMode(&repeat.log, 2);
    ASSERT_EQ(quilbtest::loadWizard(repeat, ui, productXml()), 0);
    EXPECT_EQ(repeat.value("EDITION") + "|" + repeat.value("PORT") + "|" + repeat.value("NEITHER") + "|"
            + repeat.value("SECRET"),
        "cmd|9000||s3cret");
    EXPECT_TRUE(repeat.logged("Installation variables used (10):")) << repeat.log.text();
    EXPECT_TRUE(repeat.logged("  [EDITION] = \"cmd\" (a <b> & 'c')"));
    EXPECT_TRUE(repeat.logged("  [SECRET] = \"s3cret\""));

    EXPECT_EQ(engine.CreateConfigFile(nullptr), -1);
    EXPECT_EQ(engine.CreateConfigFile(dir.file("no/such/dir/config.xml").c_str()), -1);
}
