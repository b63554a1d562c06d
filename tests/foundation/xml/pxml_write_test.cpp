// The writer: layout, escaping, and reading written documents back.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/streams/pbuf_stream.h"
#include "foundation/xml/pxml.h"
#include "support/paths.h"
#include "xml_dump.h"

namespace {

// Writes every top-level node of `xml` to a file and gives the file's text.
std::string writeToText(PXML& xml, int* result = nullptr)
{
    quilbtest::TempDir dir;
    int code = xml.WriteFile(dir.file("out.xml").c_str());
    if (result)
        *result = code;
    return quilbtest::readFile(dir.file("out.xml"));
}

TEST(XmlWrite, Layout)
{
    struct Row
    {
        const char* name;
        const char* input;
        const char* expected;
    };
    const Row rows[] = {
        { "EmptyElementWrittenAsPair", "<a/>", "<a></a>\n" },
        { "ChildIndentedOneSpace", "<a><b/></a>", "<a>\n <b></b>\n</a>\n" },
        { "DeeperLevels", "<a><b><c>t</c></b><d x=\"1\"/></a>",
            "<a>\n <b>\n  <c>t</c>\n </b>\n <d x=\"1\"></d>\n</a>\n" },
        { "AttributesInOrderWithDuplicates", "<a k=\"1\" K=\"2\">t</a>", "<a k=\"1\" K=\"2\">t</a>\n" },
        { "EscapedData", "<a>&amp;&lt;&apos;&quot;&gt;</a>", "<a>&amp;&lt;&apos;&quot;&gt;</a>\n" },
        { "EscapedAttribute", "<a v='&<\"&gt;'/>", "<a v=\"&amp;&lt;&quot;&gt;\"></a>\n" },
        { "EmptyDocumentWritesNothing", "", "" },
    };
    for (const Row& row : rows) {
        std::string text = row.input;
        PXML xml;
        xml.ParseTag(&text[0]);
        int result = -9;
        EXPECT_EQ(writeToText(xml, &result), row.expected) << row.name;
        EXPECT_EQ(result, 0) << row.name;
    }
}

TEST(XmlWrite, EditedDocument)
{
    // Data of a node with children is not written; every top-level node is.
    PXML xml;
    xml.SetTagData(-1, "A", "lost", false);
    xml.SetTagData(0, "B", "kept", false);
    xml.SetTagData(-1, "C", "2", true);
    EXPECT_EQ(writeToText(xml), "<A>\n <B>kept</B>\n</A>\n<C>2</C>\n");
}

TEST(XmlWrite, ReadBackGivesSameTree)
{
    // Only the self-closing element's dataLength changes (1 -> 0): there is no
    // self-closing output.
    std::string text = "<?xml version=\"1.0\"?>\n"
                       "<Root Version=\"2\">\n"
                       "  <Var Name=\"PATH\" Value=\"a&lt;b &amp; &quot;c&quot;\">$HOME/bin</Var>\n"
                       "  <Group><Item Id='x y'/><Item Id=\"&apos;\">t &gt; u</Item></Group>\n"
                       "  <Empty></Empty>\n"
                       "</Root>\n";
    PXML xml;
    xml.ParseTag(&text[0]);
    std::string written = writeToText(xml);
    PXML again;
    again.ParseTag(&written[0]);
    std::string before = dumpNodes(xml);
    before.replace(before.find("data=[]/1"), 9, "data=[]/0");
    EXPECT_EQ(dumpNodes(again), before);
}

TEST(XmlWrite, LongValuesEscapedWhole)
{
    // Beyond 1023 characters escaping leaves the static buffer.
    for (size_t length : { 1023u, 1024u, 5000u }) {
        std::string value(length, '&'), escaped;
        for (size_t i = 0; i < length; ++i)
            escaped += "&amp;";
        PXML xml;
        xml.SetParVal(xml.SetTagData(-1, "A", value.c_str(), false), "V", value.c_str());
        EXPECT_EQ(writeToText(xml), "<A V=\"" + escaped + "\">" + escaped + "</A>\n") << length;
    }
}

TEST(XmlWrite, WriteNodeToStream)
{
    // The line is beyond the 4096-byte formatting buffer; one byte short is a failure.
    std::string value(3000, '<'), escaped;
    for (size_t i = 0; i < value.size(); ++i)
        escaped += "&lt;";
    PXML xml;
    xml.SetTagData(-1, "a/b", value.c_str(), false);
    xml.SetParVal(1, "x", "&");
    const std::string expected = "<a>\n <b x=\"&amp;\">" + escaped + "</b>\n</a>\n";
    std::vector<char> block(expected.size());
    for (int shortBy : { 0, 1 }) {
        PBufStream stream;
        stream.SetBuf(block.data(), (int)block.size() - shortBy);
        stream.Open();
        EXPECT_EQ(xml.WriteNode(0, nullptr, &stream, 0), shortBy) << shortBy;
    }
    EXPECT_EQ(std::string(block.data(), block.size()), expected);
    EXPECT_EQ(xml.WriteNode(5, nullptr, nullptr, 0), 1) << "node out of range";
}

TEST(XmlWrite, WriteFileFailures)
{
    // Output to /dev/full fails when stdio flushes: inside WriteNode for a large document,
    // at the close for a small one.
    quilbtest::TempDir dir;
    const std::string missing = dir.file("missing/out.xml");
    struct Row
    {
        const char* path;
        size_t size;
        int expected;
    };
    const Row rows[] = { { missing.c_str(), 1, -1 }, { "/dev/full", 100000, 1 }, { "/dev/full", 1, 1 } };
    for (const Row& row : rows) {
        if (row.expected == 1 && !quilbtest::fileExists("/dev/full"))
            continue;
        PXML xml;
        xml.SetTagData(-1, "A", std::string(row.size, 'x').c_str(), false);
        EXPECT_EQ(xml.WriteFile(row.path), row.expected) << row.path << " " << row.size;
    }
}

} // namespace
