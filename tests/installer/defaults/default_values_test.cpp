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

// A <Value> element; `more` holds further attributes, each led by a blank.
std::string typed(const char* name, const char* type, const std::string& text, const char* more = "")
{
    return std::string("<Value Name=\"") + name + "\" DataType=\"" + type + "\"" + more + ">" + text
        + "</Value>";
}

std::string value(const char* name, const char* text, const char* more = "")
{
    return typed(name, "value", text, more);
}

// defaultValue null: not checked
struct Expect
{
    const char* name;
    std::string value;
    const char* defaultValue;
};

} // namespace

TEST(DefaultValues, EachKindOfElement)
{
    quilbtest::TempDir dir;
    const std::string here = dir.file("here");
    ASSERT_TRUE(quilbtest::writeFile(here, "x"));
    setenv("QUILB_TEST_DEFAULTS_ENV", "from-env", 1);
    const char* argv[] = { "installer", "-mode=fast", "-quick", "-MODE=slow" };
    CLParser parser(4, argv);
    const struct
    {
        const char* name;
        std::string values;
        std::vector<Expect> expect;
        const char* logLine;
    } rows[] = {
        { "value; the type keyword is a prefix, any case", typed("A", "VALUEs", "abc"),
            { { "A", "abc", "abc" } }, nullptr },
        { "value expands $ references", value("R", "/opt") + value("P", "$R/app"),
            { { "P", "/opt/app", "/opt/app" } }, nullptr },
        { "a later variable is still empty", value("P", "$R/app") + value("R", "/opt"),
            { { "P", "/app", nullptr } }, nullptr },
        { "so is it in a condition", value("A", "early", " Condition=\"'[B]'==''\"") + value("B", "x"),
            { { "A", "early", nullptr } }, nullptr },
        { "of two conditional elements the true one wins",
            value("M", "one", " Condition=\"[K]==1\"") + value("M", "two", " Condition=\"[K]!=1\""),
            { { "M", "two", "two" } }, nullptr },
        { "expandvar", value("R", "/opt") + typed("E", "expandvar", "[R]/x"), { { "E", "/opt/x", nullptr } },
            nullptr },
        { "expandvar falls back to its default, expanded",
            value("R", "/opt") + typed("E", "expandvar", "[NOPE]/x", " Default=\"[R]/d\""),
            { { "E", "/opt/d", "[R]/d" } }, nullptr },
        { "expandvar of nothing", typed("E", "expandvar", ""), { { "E", "", nullptr } },
            "WARNING: Could not expand variable (and no default provided): E with expression: " },
        { "checkfile finds", typed("F", "checkfile", here), { { "F", here, "0" } }, nullptr },
        { "no elements at all", "", {}, nullptr },
        { "checkfile misses", typed("F", "checkfile", "/nonexistent/q", " Default=\"not_found\""),
            { { "F", "not_found", "not_found" } }, nullptr },
        { "checkproc", typed("RUN", "checkproc", "editor") + typed("NOT", "checkproc", "x"),
            { { "RUN", "1", "0" }, { "NOT", "0", "0" } }, nullptr },
        { "install_app",
            typed("HAS", "install_app", "Viewer") + typed("NOT", "install_app", "x", " Default=\"no\""),
            { { "HAS", "1", nullptr }, { "NOT", "no", "no" } }, nullptr },
        { "installvar, blanks between the elements",
            typed("IV", "installvar", "ROOT", " AppName=\"Suite\" Default=\"d\"") + "\n  "
                + typed("IV2", "installvar", "ROOT", " AppName=\"None\" Default=\"d\"") + "\n  "
                + typed("IV3", "installvar", "ROOT", " AppName=\"None\""),
            { { "IV", "/opt/suite", "/opt/suite" }, { "IV2", "d", "d" }, { "IV3", "", "ROOT" } }, nullptr },
        { "envvar",
            typed("EV", "envvar", "QUILB_TEST_DEFAULTS_ENV")
                + typed("EV2", "envvar", "QUILB_TEST_DEFAULTS_UNSET", " Default=\"fallback\""),
            { { "EV", "from-env", nullptr }, { "EV2", "fallback", "fallback" } }, nullptr },
        { "cmdlinearg takes the last occurrence, by ArgName or its own name",
            typed("MODE", "cmdlinearg", "normal") + typed("SPEED", "cmdlinearg", "0", " ArgName=\"quick\"")
                + typed("ABSENT", "cmdlinearg", "dflt"),
            { { "MODE", "slow", nullptr }, { "SPEED", "1", nullptr }, { "ABSENT", "dflt", "dflt" } },
            nullptr },
        { "registry", R"(<Value Name="REG" DataType="registry">HKLM\x</Value>)",
            { { "REG", "<unknown>", nullptr } },
            "WARNING: Registry value type used on non Windows system (Variable: [REG])" },
        { "no DataType", R"(<Value Name="A">x</Value>)", { { "A", "", "x" } },
            "WARNING: A variable in <DefValues> is missing \"Type\" attribute! (Value index: 0 with name: "
            "A)" },
        { "no Name", R"(<Value DataType="value">x</Value>)", {},
            "WARNING: A variable in <DefValues> is missing \"Name\" attribute! (Value index: 0)" },
        { "neither", value("A", "a") + "<Value>x</Value>", { { "A", "a", "a" } },
            "WARNING: A variable in <DefValues> is missing \"Type\" and \"Name\" attribute! (Value index: "
            "1)" },
        { "an unknown tag", R"(<Variable Name="A">x</Variable>)", { { "A", "<unknown>", nullptr } },
            "WARNING: Unrecognized tag type \"Variable\" in <DefValues> tag!" },
        { "triggers run after all values",
            R"(<Trigger Variable="OUT" Value="[IN]-done"/>)" + value("OUT", "o") + value("IN", "i"),
            { { "OUT", "i-done", nullptr } }, nullptr },
        { "VarReset",
            value("R", "/a") + value("P", "$R/p")
                + R"(<Trigger Variable="P" Value="x"/><Trigger Type="VarReset" Variable="P"/>)",
            { { "P", "/a/p", nullptr } }, nullptr },
        { "a false trigger condition",
            value("OUT", "o") + R"(<Trigger Variable="OUT" Value="x" Condition="0"/>)",
            { { "OUT", "o", nullptr } }, nullptr },
        { "no sequences here",
            value("OUT", "o") + R"(<Trigger Type="RunActions" Variable="OUT" Value="Seq"/>)",
            { { "OUT", "o", nullptr } }, "WARNING: Unrecognized trigger type in DefValues: RunActions" },
        { "a trigger without its value, even of an unknown type",
            value("OUT", "o") + R"(<Trigger Type="Bogus" Variable="OUT"/>)", { { "OUT", "o", nullptr } },
            "ERROR: Insufficient trigger attributes in DefValues!" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        engine.SetVar("K", "2");
        engine.running["editor"] = true;
        engine.installed["Viewer"] = true;
        engine.appLogs["Suite"]["ROOT"] = "/opt/suite";
        engine.InitCmdLineParser(&parser);
        EXPECT_EQ(readDefaults(engine, row.values), 0);
        for (const Expect& e : row.expect) {
            EXPECT_EQ(engine.value(e.name), e.value) << e.name;
            EXPECT_TRUE(!e.defaultValue || engine.value(e.name, true) == e.defaultValue) << e.name;
        }
        EXPECT_TRUE(!row.logLine || engine.logged(row.logLine)) << engine.log.text();
        EXPECT_TRUE(engine.sequences.empty());
    }
    unsetenv("QUILB_TEST_DEFAULTS_ENV");

    TestEngine engine;
    PXML other;
    EXPECT_EQ(engine.GetDefaultValuesFromXML(other), -1);
    EXPECT_FALSE(engine.suspendRecalculation);
}

TEST(DefaultValues, UseOldAndRecalculation)
{
    const std::string root = value("R", "/opt");
    // previous: what an earlier installation left
    const struct
    {
        const char* name;
        std::string values;
        const char* previous;
        Expect expect;
        bool recalculated;
    } rows[] = {
        { "the old value stays, the default is new", value("A", "new", " UseOld=\"1\""), "old",
            { "A", "old", "new" }, false },
        { "nothing old: the new value", value("A", "new", " UseOld=\"1\""), nullptr, { "A", "new", "new" },
            false },
        { "a false UseOld", value("A", "new", " UseOld=\"0\""), "old", { "A", "new", "new" }, false },
        { "an old path like the new one keeps following",
            root + value("P", "$R/app", " UseOld=\"1\" Recalculate=\"1\""), "/opt/app ",
            { "P", "/opt/app ", "/opt/app" }, true },
        { "an old path changed by hand stops following",
            root + value("P", "$R/app", " UseOld=\"1\" Recalculate=\"1\""), "/home/app",
            { "P", "/home/app", "/opt/app" }, false },
        { "Recalculate as a condition", root + value("P", "$R//app", " Recalculate=\"'[R]'=='/opt'\""),
            nullptr, { "P", "/opt/app", nullptr }, true },
        { "Recalculate false", root + value("P", "$R/app", " Recalculate=\"0\""), nullptr,
            { "P", "/opt/app", nullptr }, false },
        { "the flag alone doesn't make a value follow", root + value("P", "$R/app", " Flags=\"recalculate\""),
            nullptr, { "P", "/opt/app", nullptr }, false },
        { "verbatim", root + value("P", "$R//app", " Flags=\"Verbatim\" Recalculate=\"1\""), nullptr,
            { "P", "/opt//app", nullptr }, true },
        { "a file check from an old installation",
            typed("F", "checkfile", "/nonexistent/q", " UseOld=\"1\" Default=\"none\""), "/old",
            { "F", "none", "none" }, false },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestEngine engine;
        if (row.previous)
            engine.SetVarExt(row.expect.name, row.previous, nullptr, VARFLAG_VERBATIM, nullptr);
        EXPECT_EQ(readDefaults(engine, row.values), 0);
        EXPECT_EQ(engine.value(row.expect.name), row.expect.value);
        EXPECT_TRUE(
            !row.expect.defaultValue || engine.value(row.expect.name, true) == row.expect.defaultValue);
        // A recalculated value follows a later change of what it refers to.
        engine.SetVar("R", "/usr");
        EXPECT_EQ(engine.value(row.expect.name).compare(0, 4, "/usr") == 0, row.recalculated);
        EXPECT_EQ(
            engine.logged("WARNING: File check variables should NOT be used from previous installations!"),
            row.expect.name[0] == 'F');
    }
}
