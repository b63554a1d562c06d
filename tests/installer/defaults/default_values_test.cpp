// The DefValues reader: every data type, the two passes, UseOld against an earlier
// installation, recalculation, malformed elements and the section's triggers.
#include <gtest/gtest.h>

#include <cstdlib>

#include "foundation/misc/cl_parser.h"
#include "installer/navigation/scripted_front_end.h"

using quilbtest::TestEngine;

namespace {

int readDefaults(TestEngine& engine, const std::string& values)
{
    std::string text = "<DefValues>" + values + "</DefValues>";
    PXML doc;
    doc.ParseTag(&text[0]);
    return engine.GetDefaultValuesFromXML(doc);
}

// defaultValue null: not checked
struct Expect { const char* name; std::string value; const char* defaultValue; };

} // namespace

TEST(DefaultValues, EachKindOfElement)
{
    quilbtest::TempDir dir;
    const std::string here = dir.file("here");
    ASSERT_TRUE(quilbtest::writeFile(here, "x"));
    setenv("QUILB_TEST_DEFAULTS_ENV", "from-env", 1);
    const char* argv[] = {"installer", "-mode=fast", "-quick", "-MODE=slow"};
    CLParser parser(4, argv);
    auto value = [](const char* name, const char* text, const char* more = "") {
        return std::string("<Value Name=\"") + name + "\" DataType=\"value\"" + more + ">" + text + "</Value>";
    };

    struct Row { const char* name; std::string values; std::vector<Expect> expect; const char* logLine; };
    const Row rows[] = {
        {"value; the type keyword is a prefix, any case", R"(<Value Name="A" DataType="VALUEs">abc</Value>)", {{"A", "abc", "abc"}}, nullptr},
        {"value expands $ references", value("R", "/opt") + value("P", "$R/app"), {{"P", "/opt/app", "/opt/app"}}, nullptr},
        {"a later variable is still empty", value("P", "$R/app") + value("R", "/opt"), {{"P", "/app", nullptr}}, nullptr},
        {"so is it in a condition", value("A", "early", " Condition=\"'[B]'==''\"") + value("B", "x"), {{"A", "early", nullptr}}, nullptr},
        {"of two conditional elements the true one wins",
         value("M", "one", " Condition=\"[K]==1\"") + value("M", "two", " Condition=\"[K]!=1\""), {{"M", "two", "two"}}, nullptr},
        {"expandvar", value("R", "/opt") + R"(<Value Name="E" DataType="expandvar">[R]/x</Value>)", {{"E", "/opt/x", nullptr}}, nullptr},
        {"expandvar falls back to its default, expanded",
         value("R", "/opt") + R"(<Value Name="E" DataType="expandvar" Default="[R]/d">[NOPE]/x</Value>)", {{"E", "/opt/d", "[R]/d"}}, nullptr},
        {"expandvar of nothing", R"(<Value Name="E" DataType="expandvar"></Value>)", {{"E", "", nullptr}},
         "WARNING: Could not expand variable (and no default provided): E with expression: "},
        {"checkfile finds", "<Value Name=\"F\" DataType=\"checkfile\">" + here + "</Value>", {{"F", here, "0"}}, nullptr},
        {"checkfile misses", R"(<Value Name="F" DataType="checkfile" Default="not_found">/nonexistent/q</Value>)",
         {{"F", "not_found", "not_found"}}, nullptr},
        {"checkproc", R"(<Value Name="RUN" DataType="checkproc">editor</Value><Value Name="NOT" DataType="checkproc">x</Value>)",
         {{"RUN", "1", "0"}, {"NOT", "0", "0"}}, nullptr},
        {"install_app", R"(<Value Name="HAS" DataType="install_app">Viewer</Value><Value Name="NOT" DataType="install_app" Default="no">x</Value>)",
         {{"HAS", "1", nullptr}, {"NOT", "no", "no"}}, nullptr},
        {"installvar", R"(<Value Name="IV" DataType="installvar" AppName="Suite" Default="d">ROOT</Value>
            <Value Name="IV2" DataType="installvar" AppName="None" Default="d">ROOT</Value>
            <Value Name="IV3" DataType="installvar" AppName="None">ROOT</Value>)",
         {{"IV", "/opt/suite", "/opt/suite"}, {"IV2", "d", "d"}, {"IV3", "", "ROOT"}}, nullptr},
        {"envvar", R"(<Value Name="EV" DataType="envvar">QUILB_TEST_DEFAULTS_ENV</Value>
            <Value Name="EV2" DataType="envvar" Default="fallback">QUILB_TEST_DEFAULTS_UNSET</Value>)",
         {{"EV", "from-env", nullptr}, {"EV2", "fallback", "fallback"}}, nullptr},
        {"cmdlinearg takes the last occurrence, by ArgName or its own name",
         R"(<Value Name="MODE" DataType="cmdlinearg">normal</Value><Value Name="SPEED" DataType="cmdlinearg" ArgName="quick">0</Value>
            <Value Name="ABSENT" DataType="cmdlinearg">dflt</Value>)",
         {{"MODE", "slow", nullptr}, {"SPEED", "1", nullptr}, {"ABSENT", "dflt", "dflt"}}, nullptr},
        {"registry", R"(<Value Name="REG" DataType="registry">HKLM\x</Value>)", {{"REG", "<unknown>", nullptr}},
         "WARNING: Registry value type used on non Windows system (Variable: [REG])"},
        {"no DataType", R"(<Value Name="A">x</Value>)", {{"A", "", "x"}},
         "WARNING: A variable in <DefValues> is missing \"Type\" attribute! (Value index: 0 with name: A)"},
        {"no Name", R"(<Value DataType="value">x</Value>)", {}, "WARNING: A variable in <DefValues> is missing \"Name\" attribute! (Value index: 0)"},
        {"neither", value("A", "a") + "<Value>x</Value>", {{"A", "a", "a"}},
         "WARNING: A variable in <DefValues> is missing \"Type\" and \"Name\" attribute! (Value index: 1)"},
        {"an unknown tag", R"(<Variable Name="A">x</Variable>)", {{"A", "<unknown>", nullptr}},
         "WARNING: Unrecognized tag type \"Variable\" in <DefValues> tag!"},
        {"triggers run after all values", R"(<Trigger Variable="OUT" Value="[IN]-done"/>)" + value("OUT", "o") + value("IN", "i"),
         {{"OUT", "i-done", nullptr}}, nullptr},
        {"VarReset", value("R", "/a") + value("P", "$R/p") + R"(<Trigger Variable="P" Value="x"/><Trigger Type="VarReset" Variable="P"/>)",
         {{"P", "/a/p", nullptr}}, nullptr},
        {"a false trigger condition", value("OUT", "o") + R"(<Trigger Variable="OUT" Value="x" Condition="0"/>)", {{"OUT", "o", nullptr}}, nullptr},
        {"no sequences here", value("OUT", "o") + R"(<Trigger Type="RunActions" Variable="OUT" Value="Seq"/>)",
         {{"OUT", "o", nullptr}}, "WARNING: Unrecognized trigger type in DefValues: RunActions"},
        {"a trigger without its value, even of an unknown type", value("OUT", "o") + R"(<Trigger Type="Bogus" Variable="OUT"/>)", {{"OUT", "o", nullptr}},
         "ERROR: Insufficient trigger attributes in DefValues!"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        engine.SetVar("K", "2");
        engine.running["editor"] = true;
        engine.installed["Viewer"] = true;
        engine.appLogs["Suite"]["ROOT"] = "/opt/suite";
        engine.InitCmdLineParser(&parser);
        EXPECT_EQ(readDefaults(engine, row.values), 0);
        for (const Expect& e : row.expect) {
            EXPECT_EQ(engine.var(e.name), e.value) << e.name;
            EXPECT_TRUE(!e.defaultValue || engine.defaultOf(e.name) == e.defaultValue) << e.name;
        }
        EXPECT_TRUE(!row.logLine || engine.logged(row.logLine)) << engine.log.text();
        EXPECT_TRUE(engine.sequences.empty());
    }
    unsetenv("QUILB_TEST_DEFAULTS_ENV");

    TestEngine engine;
    EXPECT_EQ(readDefaults(engine, ""), 0);
    PXML other;
    EXPECT_EQ(engine.GetDefaultValuesFromXML(other), -1);
    EXPECT_FALSE(engine.suspendRecalculation);
}

TEST(DefaultValues, UseOldAndRecalculation)
{
    const char* root = R"(<Value Name="R" DataType="value">/opt</Value>)";
    // previous: what an earlier installation left
    const struct { const char* name; std::string values; const char* previous; Expect expect; bool recalculated; } rows[] = {
        {"the old value stays, the default is new", R"(<Value Name="A" DataType="value" UseOld="1">new</Value>)", "old", {"A", "old", "new"}, false},
        {"nothing old: the new value", R"(<Value Name="A" DataType="value" UseOld="1">new</Value>)", nullptr, {"A", "new", "new"}, false},
        {"a false UseOld", R"(<Value Name="A" DataType="value" UseOld="0">new</Value>)", "old", {"A", "new", "new"}, false},
        {"an old path like the new one keeps following", root + std::string(R"(<Value Name="P" DataType="value" UseOld="1" Recalculate="1">$R/app</Value>)"),
         "/opt/app ", {"P", "/opt/app ", "/opt/app"}, true},
        {"an old path changed by hand stops following", root + std::string(R"(<Value Name="P" DataType="value" UseOld="1" Recalculate="1">$R/app</Value>)"),
         "/home/app", {"P", "/home/app", "/opt/app"}, false},
        {"Recalculate as a condition", root + std::string(R"(<Value Name="P" DataType="value" Recalculate="'[R]'=='/opt'">$R//app</Value>)"),
         nullptr, {"P", "/opt/app", nullptr}, true},
        {"Recalculate false", root + std::string(R"(<Value Name="P" DataType="value" Recalculate="0">$R/app</Value>)"), nullptr, {"P", "/opt/app", nullptr}, false},
        {"the flag alone doesn't make a value follow", root + std::string(R"(<Value Name="P" DataType="value" Flags="recalculate">$R/app</Value>)"),
         nullptr, {"P", "/opt/app", nullptr}, false},
        {"verbatim", root + std::string(R"(<Value Name="P" DataType="value" Flags="Verbatim" Recalculate="1">$R//app</Value>)"), nullptr, {"P", "/opt//app", nullptr}, true},
        {"a file check from an old installation", R"(<Value Name="F" DataType="checkfile" UseOld="1" Default="none">/nonexistent/q</Value>)", "/old",
         {"F", "none", "none"}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        if (row.previous)
            engine.SetVarExt(row.expect.name, row.previous, nullptr, VARFLAG_VERBATIM, nullptr);
        EXPECT_EQ(readDefaults(engine, row.values), 0);
        EXPECT_EQ(engine.var(row.expect.name), row.expect.value);
        EXPECT_TRUE(!row.expect.defaultValue || engine.defaultOf(row.expect.name) == row.expect.defaultValue);
        // A recalculated value follows a later change of what it refers to.
        engine.SetVar("R", "/usr");
        EXPECT_EQ(engine.var(row.expect.name).compare(0, 4, "/usr") == 0, row.recalculated);
        EXPECT_EQ(engine.logged("WARNING: File check variables should NOT be used from previous installations!"),
                  row.expect.name[0] == 'F');
    }
}
