// The exclude list and the configuration file written from the variables.
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

TEST(ExcludeList, EntriesFromControlVariablesFieldsAndTemplate)
{
    TestEngine engine;
    ScriptedUI ui;
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, productXml()), 0);
    const struct {
        const char* name;
        bool fromLog, fromConfig;
    } rows[] = {
        {"PREVIOUS_INSTALLATION", false, true}, {"PROGRESS_DETAILS", true, true},
        {"INSTALL_ERROR", false, true},         {"UNINSTALL_ERROR", false, true},
        {"CUSTOMIZE", true, true},              {"DLG_CONDITION", true, true},
        {"INSTALLATIONS_COUNT", true, true},    {"SHOULD_UNINSTALL", false, false},
        {"STDROOT_OK", true, true},             {"SECRET", true, true},
        {"LOG_ONLY", true, false},              {"CONFIG_ONLY", false, true},
        {"NEITHER", false, false},              {"STDROOT", false, false},
        {"secret", false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(engine.isVarExcluded(row.name, Installer::EXCLUDE_FROM_LOG), row.fromLog);
        EXPECT_EQ(engine.isVarExcluded(row.name, Installer::EXCLUDE_FROM_CONFIG), row.fromConfig);
    }
    // A validation variable starts as valid.
    EXPECT_EQ(engine.var("STDROOT_OK"), "1");
}

TEST(ConfigFile, WritesWhatMayBeKeptAndReadsBack)
{
    quilbtest::TempDir dir;
    const char* argv[] = {"installer", "-VARIABLE_MADE_UP=x", "-VARIABLE_PORT=9000"};
    CLParser parser(3, argv);
    TestEngine engine;
    ScriptedUI ui;
    engine.InitCmdLineParser(&parser);
    ASSERT_EQ(quilbtest::loadWizard(engine, ui, productXml()), 0);
    engine.SetVar("EDITION", "a <b> & 'c'");
    engine.SetVar("NEITHER", "");

    const std::string path = dir.file("config.xml");
    EXPECT_EQ(engine.CreateConfigFile(path.c_str()), 0);
    EXPECT_EQ(quilbtest::readFile(path),
              "<DefValues>\n"
              " <Value Name=\"EDITION\" DataType=\"value\">a &lt;b&gt; &amp; &apos;c&apos;</Value>\n"
              " <Value Name=\"PORT\" DataType=\"value\">9000</Value>\n"
              " <Value Name=\"LOG_ONLY\" DataType=\"value\">l</Value>\n"
              " <Value Name=\"NEITHER\" DataType=\"value\"></Value>\n"
              // UseOld passes over it in the first pass: it is made last.
              " <Value Name=\"STDROOT\" DataType=\"value\">/opt/defaults</Value>\n"
              "</DefValues>\n");

    // An unattended repeat with that file gets the same values.
    TestEngine repeat;
    repeat.configFile = path;
    ASSERT_EQ(quilbtest::loadWizard(repeat, ui, productXml()), 0);
    EXPECT_EQ(repeat.var("EDITION"), "a <b> & 'c'");
    EXPECT_EQ(repeat.var("PORT"), "9000");
    EXPECT_EQ(repeat.var("NEITHER"), "");
    EXPECT_EQ(repeat.var("MADE_UP"), "<unknown>");

    EXPECT_EQ(engine.CreateConfigFile(nullptr), -1);
    EXPECT_EQ(engine.CreateConfigFile(dir.file("no/such/dir/config.xml").c_str()), -1);
}
