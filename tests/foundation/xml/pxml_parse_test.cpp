// The reader: one table of documents and the node tree each must give, oddities included.
#include <cerrno>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/streams/pbuf_stream.h"
#include "foundation/xml/pxml.h"
#include "support/paths.h"
#include "xml_dump.h"

namespace {

struct ParseCase
{
    const char* name;
    const char* input;
    const char* expected; // dumpNodes form
};

const ParseCase kParseCases[] = {
    { "EmptyDocument", "", "" },
    { "SimpleText", "<a>hi</a>", "a@-1 data=[hi]/2" },
    { "EmptyPairHasLengthZero", "<a></a>", "a@-1 data=[]/0" },
    { "SelfClosingHasLengthOne", "<a/>", "a@-1 data=[]/1" },
    { "TextTrimmedAtBothEnds", "<a>\n\t  two words \r\n</a>", "a@-1 data=[two words]/9" },
    { "TextOnlyInLastCreatedNode", "<a>text<b>x</b>more</a>", "a@-1 data=null | b@0 data=[x]/1" },
    { "ParentOfEmptyChildGetsNoText", "<a><b/>more</a>", "a@-1 data=null | b@0 data=[]/1" },
    { "NestedStructure", "<r><g><i>1</i><i>2</i></g><h/></r>",
        "r@-1 data=null | g@0 data=null | i@1 data=[1]/1 | i@1 data=[2]/1 | h@0 data=[]/1" },
    { "XmlDeclarationSkipped", "<?xml version=\"1.0\"?>\n<r>x</r>", "r@-1 data=[x]/1" },
    { "InstructionRestReadsAsText", "<a><?pi x?>t</a>", "a@-1 data=[?>t]/3" },
    { "RawGreaterThanEndsTag", "<a x=\"1>2\"/></a>", "a@-1 data=[2\"/>]/4" },
    { "CommentAndTextBeforeItDropped", "<a>x<!-- c -->t</a>", "a@-1 data=[t]/1" },
    { "CommentThreeDashesDoNotClose", "<a><!-- x ---><b/> --></a>", "a@-1 data=[]/0" },
    { "CommentFiveDashesClose", "<a><!-- x -----><b/></a>", "a@-1 data=null | b@0 data=[]/1" },
    { "UnclosedCommentEndsParse", "<a><!-- x </a>", "a@-1 data=null" },
    { "AllFiveEntitiesInData", "<a>&amp;&lt;&apos;&quot;&gt;</a>", "a@-1 data=[&<'\">]/5" },
    { "UnknownEntityKept", "<a>&lt;&unknown;</a>", "a@-1 data=[<&unknown;]/10" },
    { "NoNumericReferences", "<a>&#65;</a>", "a@-1 data=[&#65;]/5" },
    { "DecodedOnlyOnce", "<a>&amp;lt;</a>", "a@-1 data=[&lt;]/4" },
    { "EntitiesInAttributes", "<a v=\"&quot;x&gt;&amp;\"/>", "a@-1 v=[\"x>&] data=[]/1" },
    { "SpacesAroundEquals", "<a v = \"1\" w= '2'/>", "a@-1 v=[1] w=[2] data=[]/1" },
    { "BareValueSwallowsToNextQuote", "<a x=b y=\"2\"/>", "a@-1 x=[2] data=[]/1" },
    { "AttributeWithoutValueDropped", "<a x/>", "a@-1 data=[]/1" },
    { "UnterminatedValueKeepsEarlierPairs", "<a y='0' x=\"1/>", "a@-1 y=[0] data=[]/1" },
    { "NameEndsAtSlash", "<a/b='2'>t</a>", "a@-1 b=[2] data=[t]/1" },
    { "WhiteSpaceInValueKept", "<a\nv=' \"a\tb '/>", "a@-1 v=[ \"a\tb ] data=[]/1" },
    { "DuplicatesKeptInOrder", "<a k=\"1\" K=\"2\" k=\"3\"/>", "a@-1 k=[1] K=[2] k=[3] data=[]/1" },
    { "UnmatchedCloseStillCloses", "<a><b></c><d/></a>", "a@-1 data=null | b@0 data=[]/0 | d@0 data=[]/1" },
    { "OnlyFirstTopLevelElement", "<a>1</a><b>2</b>", "a@-1 data=[1]/1" },
    { "DoctypeReadAsOpeningTag", "<!DOCTYPE x><r/>", "!DOCTYPE@-1 data=null | r@0 data=[]/1" },
    { "CdataIsNoSpecialForm", "<a><![CDATA[x]]></a>", "a@-1 data=null | ![CDATA[x]]@0 data=[]/0" },
    { "UnfinishedDocumentKept", "<a><b>x", "a@-1 data=null | b@0 data=null" },
    { "TagWithoutGreaterThanEndsParse", "<a><b", "a@-1 data=null" },
    { "ClosingTagEndingInSlash", "<a>x</a/>", "a@-1 data=[]/1" },
};

class ParseTable : public ::testing::TestWithParam<ParseCase>
{
};

TEST_P(ParseTable, GivesNodeTree)
{
    EXPECT_EQ(parseAndDump(GetParam().input), GetParam().expected) << "input: " << GetParam().input;
}

INSTANTIATE_TEST_SUITE_P(Xml, ParseTable, ::testing::ValuesIn(kParseCases),
    [](const ::testing::TestParamInfo<ParseCase>& row) { return std::string(row.param.name); });

TEST(XmlParse, SecondParseAppendsAtTopLevel)
{
    std::string first = "<a/>", second = "<b><c/></b>";
    PXML xml;
    xml.ParseTag(&first[0]);
    xml.ParseTag(&second[0]);
    EXPECT_EQ(dumpNodes(xml), "a@-1 data=[]/1 | b@-1 data=null | c@1 data=[]/1");
}

// A memory stream whose open, read or size can be made to misbehave.
class FaultyStream : public PBufStream
{
public:
    int openResult = 0, readResult = 0;
    long extraSize = 0;
    int Open() override { return openResult != 0 ? openResult : PBufStream::Open(); }
    int Read(void* out, int count, int& got) override
    {
        got = 0;
        return readResult != 0 ? readResult : PBufStream::Read(out, count, got);
    }
    long Size() override { return PBufStream::Size() + extraSize; }
};

TEST(XmlParse, StreamResults)
{
    struct Row
    {
        const char* name;
        int openResult, readResult;
        long extraSize;
        int expected;
    };
    const Row rows[] = {
        { "Success", 0, 0, 0, 0 },
        { "OpenFails", 5, 0, 0, 1 },
        { "ReadFails", 0, 7, 0, 7 },
        { "ShortRead", 0, 0, 3, -3 },
    };
    for (const Row& row : rows) {
        std::string text = "<a>x</a>";
        FaultyStream stream;
        stream.SetBuf(&text[0], (int)text.size());
        stream.openResult = row.openResult;
        stream.readResult = row.readResult;
        stream.extraSize = row.extraSize;
        PXML xml;
        EXPECT_EQ(xml.ParseStream(stream), row.expected) << row.name;
        EXPECT_EQ(stream.Opened(), 0) << row.name << ": stream left open";
        EXPECT_EQ(xml.GetCount(), row.expected == 0 ? 1 : 0) << row.name;
    }
}

TEST(XmlParse, ParseFile)
{
    quilbtest::TempDir dir;
    ASSERT_TRUE(
        quilbtest::writeFile(dir.file("t.xml"), "<?xml version=\"1.0\"?>\n<R A=\"1\"><C>v</C></R>\n"));
    PXML xml;
    EXPECT_EQ(xml.ParseFile(dir.file("t.xml").c_str()), 0);
    EXPECT_EQ(dumpNodes(xml), "R@-1 A=[1] data=null | C@0 data=[v]/1");
    EXPECT_EQ(xml.ParseFile(dir.file("none.xml").c_str()), ENOENT);
    EXPECT_EQ(xml.GetCount(), 2);
}

} // namespace
