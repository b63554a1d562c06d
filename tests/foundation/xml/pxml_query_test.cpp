// Lookups and edits on a parsed document.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/xml/pxml.h"
#include "xml_dump.h"

namespace {

// Node numbers: Root 0, Group 1, Item 2, Item 3, Group 4, Item 5, Other 6, Item 7, fn 8,
// FN 9, Var 10.
const char kDocument[] = "<Root>"
                         "<Group Name=\"one\"><Item Id=\"1\"/><Item Id=\"2\"/></Group>"
                         "<Group Name=\"two\"><Item Id=\"3\"/></Group>"
                         "<Other><Item Id=\"4\"/></Other>"
                         "<fn/><FN/>"
                         "<Var Name=\"a\" name=\"b\" NAME=\"c\" Other=\"d\"/>"
                         "</Root>";

class XmlQuery : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string text = kDocument;
        xml.ParseTag(&text[0]);
        ASSERT_EQ(xml.GetCount(), 11);
    }
    PXML xml;
};

TEST_F(XmlQuery, FindByName)
{
    struct Row
    {
        const char* name;
        int parent;
        const char* tag;
        int after, expected;
    }; // parent -2: FindTag
    const Row rows[] = {
        { "FirstAnywhere", -2, "Item", -1, 2 },
        { "NextAfterHit", -2, "Item", 2, 3 },
        { "NoneAfterLast", -2, "Item", 7, -1 },
        { "TagNamesAreCaseSensitive", -2, "FN", -1, 9 },
        { "ChildOfSecondGroup", 4, "Item", -1, 5 },
        { "NoGrandchildren", 0, "Item", -1, -1 },
        { "NextChild", 0, "Group", 1, 4 },
    };
    for (const Row& row : rows) {
        int got = row.parent == -2 ? xml.FindTag(row.tag, row.after)
                                   : xml.FindChild(row.parent, row.tag, row.after);
        EXPECT_EQ(got, row.expected) << row.name;
    }
}

TEST_F(XmlQuery, FindFullTag)
{
    struct Row
    {
        const char* name;
        const char* path;
        int start;
        int expected;
        std::vector<int> trail;
    };
    const Row rows[] = {
        { "FullPath", "Root/Group/Item", -1, 2, { 0, 1, 2 } },
        { "LeadingSlashSkipped", "/Root/Group/Item", -1, 2, { 0, 1, 2 } },
        { "MissingMiddleComponentSkipped", "Root/X/Group", -1, 1, { 0, 1 } },
        { "MissingLastComponent", "Root/Group/X", -1, -1, { 0, 1 } },
        { "TrailingSlash", "Root/Group/", -1, -1, { 0, 1 } },
        { "NextSiblingFromHit", "Root/Group/Item", 2, 3, { 3 } },
        { "NoSiblingAfterLastHit", "Root/Group/Item", 3, -1, {} },
        { "NameMustMatchExactly", "Root/Grou", -1, -1, { 0 } },
        { "StartBeyondTable", "Root", 11, -1, {} },
    };
    for (const Row& row : rows) {
        PList<int> trail;
        EXPECT_EQ(xml.FindFullTag(row.path, row.start, &trail), row.expected) << row.name;
        std::vector<int> got(trail.data, trail.data + trail.Count());
        EXPECT_EQ(got, row.trail) << row.name;
    }
    EXPECT_EQ(xml.FindFullTag("Root/Group/Item", -1, nullptr), 2);
}

TEST_F(XmlQuery, GetChildren)
{
    PList<int> children, top;
    EXPECT_EQ(xml.GetChildren(0, &children), 0);
    xml.GetChildren(-1, &top);
    EXPECT_EQ(std::vector<int>(children.data, children.data + children.Count()),
        (std::vector<int> { 1, 4, 6, 8, 9, 10 }));
    EXPECT_EQ(std::vector<int>(top.data, top.data + top.Count()), (std::vector<int> { 0 }));
}

TEST_F(XmlQuery, FindFullSubTagIsStrict)
{
    struct Row
    {
        const char* name;
        int node;
        const char* path;
        int expected;
    };
    const Row rows[] = {
        { "FromTopLevel", -1, "Root/Group/Item", 2 },
        { "FromNode", 0, "Group/Item", 2 },
        { "LeadingSlash", -1, "/Root", 0 },
        { "FirstChildByNameOnly", 0, "Other/Item", 7 },
        { "MissingMiddleComponent", -1, "Root/X/Item", -1 },
        { "GrandchildIsNoChild", 0, "Item", -1 },
        { "NodeOutOfRange", 42, "Item", -1 },
    };
    for (const Row& row : rows)
        EXPECT_EQ(xml.FindFullSubTag(row.node, row.path), row.expected) << row.name;
}

TEST_F(XmlQuery, ParVal)
{
    const PXML& constXml = xml;
    struct Row
    {
        const char* name;
        int node;
        const char* attribute;
        const char* expected;
    };
    const Row rows[] = {
        { "LastDuplicateWinsIgnoringCase", 10, "name", "c" },
        { "AnySpelling", 10, "oTHER", "d" },
        { "Missing", 10, "Value", nullptr },
        { "NodeMinusOne", -1, "Name", nullptr },
        { "NodeBeyondTable", 11, "Name", nullptr },
    };
    for (const Row& row : rows) {
        EXPECT_STREQ(xml.ParVal(row.node, row.attribute), row.expected) << row.name;
        EXPECT_STREQ(constXml.ParVal(row.node, row.attribute), row.expected) << row.name;
    }
}

TEST(XmlEdit, SetParVal)
{
    struct Row
    {
        const char* name;
        int node;
        const char* attribute;
        const char* value;
        int result;
        const char* expected;
    };
    const Row rows[] = {
        { "ReplacesLastDuplicateIgnoringCase", 0, "k", "3", 0, "a@-1 k=[1] K=[3] data=[]/1" },
        { "AppendsWithGivenSpelling", 0, "NewOne", "v", 0, "a@-1 k=[1] K=[2] NewOne=[v] data=[]/1" },
        { "NullValueStoredAsNull", 0, "K", nullptr, 0, "a@-1 k=[1] K=null data=[]/1" },
        { "NodeOutOfRange", 1, "k", "3", -1, "a@-1 k=[1] K=[2] data=[]/1" },
        { "NodeMinusOne", -1, "k", "3", -1, "a@-1 k=[1] K=[2] data=[]/1" },
    };
    for (const Row& row : rows) {
        std::string text = "<a k=\"1\" K=\"2\"/>";
        PXML xml;
        xml.ParseTag(&text[0]);
        EXPECT_EQ(xml.SetParVal(row.node, row.attribute, row.value), row.result) << row.name;
        EXPECT_EQ(dumpNodes(xml), row.expected) << row.name;
    }
}

TEST(XmlEdit, SetTagData)
{
    struct Step
    {
        int parent;
        const char* path;
        const char* data;
        bool forceNew;
        int result;
    };
    struct Row
    {
        const char* name;
        const char* document;
        std::vector<Step> steps;
        const char* expected;
    };
    const Row rows[] = {
        { "MakesPathInEmptyDocument", "", { { -1, "A/B", "v", false, 1 } },
            "A@-1 data=[]/0 | B@0 data=[v]/1" },
        { "ReplacesDataKeepingLength", "<A><B>old text</B></A>", { { 0, "B", "new", false, 1 } },
            "A@-1 data=null | B@0 data=[new]/8" },
        { "LeadingSlashSkipped", "<A><B/></A>", { { -1, "/A/B", "x", false, 1 } },
            "A@-1 data=null | B@0 data=[x]/1" },
        { "NullDataClears", "<A><B>t</B></A>", { { 0, "B", nullptr, false, 1 } },
            "A@-1 data=null | B@0 data=null" },
        { "ForceNewAddsSibling", "<A><B>1</B></A>", { { -1, "A/B", "2", true, 2 } },
            "A@-1 data=null | B@0 data=[1]/1 | B@0 data=[2]/1" },
        { "ForceNewOnlyAtLastComponent", "", { { -1, "A/B", "1", true, 1 }, { -1, "A/B", "2", true, 2 } },
            "A@-1 data=[]/0 | B@0 data=[1]/1 | B@0 data=[2]/1" },
        { "NewNodeWithNullData", "<A/>", { { 0, "C", nullptr, false, 1 } },
            "A@-1 data=[]/1 | C@0 data=null" },
        { "ParentOutOfRange", "<A/>", { { 3, "C", "x", false, -1 } }, "A@-1 data=[]/1" },
    };
    for (const Row& row : rows) {
        std::string text = row.document;
        PXML xml;
        xml.ParseTag(&text[0]);
        for (const Step& step : row.steps)
            EXPECT_EQ(xml.SetTagData(step.parent, step.path, step.data, step.forceNew), step.result)
                << row.name;
        EXPECT_EQ(dumpNodes(xml), row.expected) << row.name;
        for (int i = 0; i < xml.GetCount(); ++i) // every node, also a made one, takes attributes
            EXPECT_EQ(xml.SetParVal(i, "K", "v"), 0) << row.name;
    }
}

} // namespace
