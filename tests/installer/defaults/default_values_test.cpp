// The DefValues reader: every data type, the two passes, UseOld against an earlier
// installation, flags and recalculation, malformed elements and the section's triggers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "foundation/misc/cl_parser.h"
#include "installer/navigation/scripted_front_end.h"
#include "support/paths.h"

using quilbtest::TestEngine;

namespace {

// Reads `values` as the children of a DefValues section into the engine.
int readDefaults(TestEngine& engine, const std::string& values)
{
    std::string text = "<DefValues>" + values + "</DefValues>";
    PXML doc;
    doc.ParseTag(&text[0]);
    return engine.GetDefaultValuesFromXML(doc);
}

struct Expect {
    const char* name;
    const char* value;
    const char* defaultValue;  // null: not checked
};

} // namespace

TEST(DefaultValues, EachDataTypeSetsItsVariable)
{
    quilbtest::TempDir dir;
    const std::string here = dir.file("here.txt");
    ASSERT_TRUE(quilbtest::writeFile(here, "x"));
    setenv("QUILB_TEST_DEFAULTS_ENV", "from-env", 1);
    unsetenv("QUILB_TEST_DEFAULTS_UNSET");
    const char* argv[] = {"installer", "-mode=fast", "-quick", "-MODE=slow"};
    CLParser parser(4, argv);

    struct Row {
        const char* name;
        std::string values;
        std::function<void(TestEngine&)> setup;
        std::vector<Expect> expect;
        const char* logLine;
    };
    const Row rows[] = {
        {"value", R"(<Value Name="A" DataType="value">abc</Value>)", nullptr, {{"A", "abc", "abc"}}, nullptr},
        {"the keyword is compared over its length, any case", R"(<Value Name="A" DataType="VALUEs">abc</Value>)",
         nullptr, {{"A", "abc", "abc"}}, nullptr},
        {"value expands $ references", R"(<Value Name="R" DataType="value">/opt</Value>
            <Value Name="P" DataType="value">$R/app</Value>)",
         nullptr, {{"P", "/opt/app", "/opt/app"}}, nullptr},
        {"a reference to a later variable sees its empty first-pass value",
         R"(<Value Name="P" DataType="value">$R/app</Value><Value Name="R" DataType="value">/opt</Value>)", nullptr,
         {{"P", "/app", "/app"}, {"R", "/opt", "/opt"}}, nullptr},
        {"a condition sees a later variable as empty",
         R"(<Value Name="A" DataType="value" Condition="'[B]'==''">early</Value><Value Name="B" DataType="value">x</Value>)",
         nullptr, {{"A", "early", nullptr}}, nullptr},
        {"of two complementary elements the true one sets the value",
         R"(<Value Name="M" DataType="value" Condition="[K]==1">one</Value>
            <Value Name="M" DataType="value" Condition="[K]!=1">other</Value>)",
         [](TestEngine& e) { e.SetVar("K", "2"); }, {{"M", "other", "other"}}, nullptr},
        {"expandvar", R"(<Value Name="R" DataType="value">/opt</Value>
            <Value Name="E" DataType="expandvar">[R]/x</Value>)",
         nullptr, {{"E", "/opt/x", nullptr}}, nullptr},
        {"expandvar falls back to its expanded default",
         R"(<Value Name="R" DataType="value">/opt</Value><Value Name="E" DataType="expandvar" Default="[R]/d">[NOPE]/x</Value>)",
         nullptr, {{"E", "/opt/d", "[R]/d"}}, nullptr},
        {"expandvar keeps an unknown reference", R"(<Value Name="E" DataType="expandvar">[NOPE]/x</Value>)", nullptr,
         {{"E", "[NOPE]/x", nullptr}}, nullptr},
        {"expandvar of nothing and no default warns", R"(<Value Name="E" DataType="expandvar"></Value>)", nullptr,
         {{"E", "", nullptr}}, "WARNING: Could not expand variable (and no default provided): E with expression: "},
        {"checkfile of an existing file",
         "<Value Name=\"F\" DataType=\"checkfile\">" + here + "</Value>", nullptr, {{"F", here.c_str(), "0"}},
         nullptr},
        {"checkfile of a missing file takes the default",
         "<Value Name=\"F\" DataType=\"checkfile\" Default=\"not_found\">" + dir.file("gone.txt") + "</Value>",
         nullptr, {{"F", "not_found", "not_found"}}, nullptr},
        {"checkproc", R"(<Value Name="RUN" DataType="checkproc">editor</Value><Value Name="IDLE" DataType="checkproc">other</Value>)",
         [](TestEngine& e) { e.running["editor"] = true; }, {{"RUN", "1", "0"}, {"IDLE", "0", "0"}}, nullptr},
        {"install_app", R"(<Value Name="HAS" DataType="install_app">Viewer</Value>
            <Value Name="HASNT" DataType="install_app" Default="no">Other</Value>)",
         [](TestEngine& e) { e.installed["Viewer"] = true; }, {{"HAS", "1", nullptr}, {"HASNT", "no", "no"}}, nullptr},
        {"installvar reads another application's log", R"(<Value Name="IV" DataType="installvar" AppName="Suite" Default="d">STDROOT</Value>
            <Value Name="IV2" DataType="installvar" AppName="Nothing" Default="d">STDROOT</Value>
            <Value Name="IV3" DataType="installvar" AppName="Nothing">STDROOT</Value>)",
         [](TestEngine& e) { e.appLogs["Suite"]["STDROOT"] = "/opt/suite"; },
         {{"IV", "/opt/suite", "/opt/suite"}, {"IV2", "d", "d"}, {"IV3", "", "STDROOT"}}, nullptr},
        {"envvar", R"(<Value Name="EV" DataType="envvar">QUILB_TEST_DEFAULTS_ENV</Value>
            <Value Name="EV2" DataType="envvar" Default="fallback">QUILB_TEST_DEFAULTS_UNSET</Value>
            <Value Name="EV3" DataType="envvar">QUILB_TEST_DEFAULTS_UNSET</Value>)",
         nullptr, {{"EV", "from-env", nullptr}, {"EV2", "fallback", "fallback"}, {"EV3", "", nullptr}}, nullptr},
        {"cmdlinearg takes the last occurrence, named by ArgName",
         R"(<Value Name="MODE" DataType="cmdlinearg">normal</Value>
            <Value Name="SPEED" DataType="cmdlinearg" ArgName="quick">0</Value>
            <Value Name="ABSENT" DataType="cmdlinearg">dflt</Value>)",
         [&parser](TestEngine& e) { e.InitCmdLineParser(&parser); },
         {{"MODE", "slow", nullptr}, {"SPEED", "1", nullptr}, {"ABSENT", "dflt", "dflt"}}, nullptr},
        {"cmdlinearg without a command line keeps the first pass",
         R"(<Value Name="MODE" DataType="cmdlinearg">normal</Value>)", nullptr, {{"MODE", "", "normal"}}, nullptr},
        {"registry is not for this system", R"(<Value Name="REG" DataType="registry">HKLM\x</Value>)", nullptr,
         {{"REG", "<unknown>", nullptr}},
         "WARNING: Registry value type used on non Windows system (Variable: [REG])"},
        {"a missing DataType", R"(<Value Name="A">x</Value>)", nullptr, {{"A", "", "x"}},
         "WARNING: A variable in <DefValues> is missing \"Type\" attribute! (Value index: 0 with name: A)"},
        {"a missing Name", R"(<Value DataType="value">x</Value>)", nullptr, {},
         "WARNING: A variable in <DefValues> is missing \"Name\" attribute! (Value index: 0)"},
        {"both missing", R"(<Value Name="A" DataType="value">a</Value><Value>x</Value>)", nullptr, {{"A", "a", "a"}},
         "WARNING: A variable in <DefValues> is missing \"Type\" and \"Name\" attribute! (Value index: 1)"},
        {"an unknown tag", R"(<Variable Name="A">x</Variable>)", nullptr, {{"A", "<unknown>", nullptr}},
         "WARNING: Unrecognized tag type \"Variable\" in <DefValues> tag!"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        if (row.setup)
            row.setup(engine);
        EXPECT_EQ(readDefaults(engine, row.values), 0);
        for (const Expect& e : row.expect) {
            EXPECT_EQ(engine.var(e.name), e.value) << e.name;
            if (e.defaultValue) {
                EXPECT_EQ(engine.defaultOf(e.name), e.defaultValue) << e.name;
            }
        }
        if (row.logLine) {
            EXPECT_TRUE(engine.logged(row.logLine)) << engine.log.text();
        }
    }
    unsetenv("QUILB_TEST_DEFAULTS_ENV");
}

TEST(DefaultValues, UseOldKeepsTheValueOfAnEarlierInstallation)
{
    struct Row {
        const char* name;
        const char* values;
        const char* previous;  // the value an earlier installation left, or null
        Expect expect;
        bool recalculated;
    };
    const Row rows[] = {
        {"the old value stays, the default is refreshed", R"(<Value Name="A" DataType="value" UseOld="1">new</Value>)",
         "old", {"A", "old", "new"}, false},
        {"without an earlier value the new one is taken", R"(<Value Name="A" DataType="value" UseOld="1">new</Value>)",
         nullptr, {"A", "new", "new"}, false},
        {"a false UseOld takes the new one", R"(<Value Name="A" DataType="value" UseOld="0">new</Value>)", "old",
         {"A", "new", "new"}, false},
        {"an unchanged path keeps following its expression",
         R"(<Value Name="R" DataType="value">/opt</Value><Value Name="P" DataType="value" UseOld="1" Recalculate="1">$R/app</Value>)",
         "/opt/app ", {"P", "/opt/app ", "/opt/app"}, true},
        {"a path changed by hand stops following it",
         R"(<Value Name="R" DataType="value">/opt</Value><Value Name="P" DataType="value" UseOld="1" Recalculate="1">$R/app</Value>)",
         "/home/me/app", {"P", "/home/me/app", "/opt/app"}, false},
        {"a file check from an earlier installation warns",
         R"(<Value Name="F" DataType="checkfile" UseOld="1" Default="none">/nonexistent/quilb/file</Value>)", "/old",
         {"F", "none", "none"}, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        if (row.previous)
            engine.SetVarExt(row.expect.name, row.previous, nullptr, VARFLAG_VERBATIM, nullptr);
        EXPECT_EQ(readDefaults(engine, row.values), 0);
        EXPECT_EQ(engine.var(row.expect.name), row.expect.value);
        EXPECT_EQ(engine.defaultOf(row.expect.name), row.expect.defaultValue);
        int index = engine.GetVar(row.expect.name, nullptr, 0);
        ASSERT_GE(index, 0);
        EXPECT_EQ((engine.variables[index].flags & VARFLAG_RECALCULATE) != 0, row.recalculated);
    }
    TestEngine engine;
    engine.SetVar("F", "/old");
    readDefaults(engine, rows[5].values);
    EXPECT_TRUE(engine.logged("WARNING: File check variables should NOT be used from previous installations!"));
}

TEST(DefaultValues, FlagsAndRecalculation)
{
    struct Row {
        const char* name;
        const char* attributes;
        unsigned flags;
    };
    const Row rows[] = {
        {"Recalculate true", R"(Recalculate="1")", VARFLAG_RECALCULATE},
        {"Recalculate false", R"(Recalculate="0")", 0},
        {"Recalculate as a condition", R"(Recalculate="'[R]'=='/opt'")", VARFLAG_RECALCULATE},
        {"the recalculate flag alone doesn't make a value follow", R"(Flags="recalculate")", 0},
        {"verbatim", R"(Flags="Verbatim" Recalculate="1")", VARFLAG_RECALCULATE | VARFLAG_VERBATIM},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        std::string values = std::string(R"(<Value Name="R" DataType="value">/opt</Value><Value Name="P" DataType="value" )") +
                             row.attributes + ">$R//app</Value>";
        ASSERT_EQ(readDefaults(engine, values), 0);
        EXPECT_EQ(engine.variables[engine.GetVar("P", nullptr, 0)].flags, row.flags);
        EXPECT_EQ(engine.var("P"), (row.flags & VARFLAG_VERBATIM) ? "/opt//app" : "/opt/app");
        // A recalculated value follows a later change of what it refers to.
        engine.SetVar("R", "/usr");
        EXPECT_EQ(engine.var("P").compare(0, 4, "/usr") == 0, (row.flags & VARFLAG_RECALCULATE) != 0);
    }
}

TEST(DefaultValues, TriggersRunOnceAfterAllValues)
{
    struct Row {
        const char* name;
        const char* values;
        Expect expect;
        const char* logLine;
    };
    const Row rows[] = {
        {"VarChange sees the final values",
         R"(<Trigger Variable="OUT" Value="[IN]-done"/><Value Name="OUT" DataType="value">o</Value><Value Name="IN" DataType="value">i</Value>)",
         {"OUT", "i-done", nullptr}, nullptr},
        {"a false condition",
         R"(<Value Name="OUT" DataType="value">o</Value><Trigger Type="VarChange" Variable="OUT" Value="x" Condition="0"/>)",
         {"OUT", "o", nullptr}, nullptr},
        {"VarReset recomputes",
         R"(<Value Name="R" DataType="value">/a</Value><Value Name="P" DataType="value">$R/p</Value>
            <Trigger Variable="P" Value="changed"/><Trigger Type="VarReset" Variable="P"/>)",
         {"P", "/a/p", nullptr}, nullptr},
        {"RunActions isn't available here",
         R"(<Value Name="OUT" DataType="value">o</Value><Trigger Type="RunActions" Variable="OUT" Value="Seq"/>)",
         {"OUT", "o", nullptr}, "WARNING: Unrecognized trigger type in DefValues: RunActions"},
        {"a VarChange without a value", R"(<Value Name="OUT" DataType="value">o</Value><Trigger Variable="OUT"/>)",
         {"OUT", "o", nullptr}, "ERROR: Insufficient trigger attributes in DefValues!"},
        {"a trigger without a variable", R"(<Value Name="OUT" DataType="value">o</Value><Trigger Type="VarReset"/>)",
         {"OUT", "o", nullptr}, "ERROR: Insufficient trigger attributes in DefValues!"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        EXPECT_EQ(readDefaults(engine, row.values), 0);
        EXPECT_EQ(engine.var(row.expect.name), row.expect.value);
        EXPECT_TRUE(engine.sequences.empty());
        if (row.logLine) {
            EXPECT_TRUE(engine.logged(row.logLine)) << engine.log.text();
        }
    }
}

TEST(DefaultValues, DocumentWithoutDefValues)
{
    TestEngine engine;
    std::string text = "<Other><Value Name=\"A\" DataType=\"value\">a</Value></Other>";
    PXML doc;
    doc.ParseTag(&text[0]);
    EXPECT_EQ(engine.GetDefaultValuesFromXML(doc), -1);
    EXPECT_FALSE(engine.suspendRecalculation);
    EXPECT_EQ(engine.var("A"), "<unknown>");
}
