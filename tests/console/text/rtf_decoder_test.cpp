#include "console/text/rtf_decoder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string decode(const char* rtf, int margin = 0, int width = 40)
{
    return RTFDecoder::rtf_decode(rtf, margin, width).c_str();
}

TEST(RtfDecoder, DecodesTextAndLeavesTablesOut)
{
    struct Case
    {
        const char* name;
        const char* rtf;
        const char* expected;
    } const cases[] = {
        { "null and empty", "", "" },
        { "paragraphs",
            "{\\rtf1\\ansi{\\fonttbl{\\f0 Arial;}}{\\colortbl;\\red0\\green0\\blue0;}\\f0 First.\\par "
            "Second.\\par}",
            "First.\nSecond.\n" },
        { "empty paragraphs stay as blank lines", "{\\rtf1 A\\par\\par B\\par}", "A\n\nB\n" },
        { "ignorable destinations", "{\\rtf1{\\*\\generator Writer;}{\\info{\\title T}}Body\\par}",
            "Body\n" },
        { "escaped symbols", "{\\rtf1 a\\{b\\}c\\\\d\\~e\\_f\\par}", "a{b}c\\d e-f\n" },
        { "code page 1252 bytes", "{\\rtf1 caf\\'e9 \\'93q\\'94\\par}",
            "caf\xc3\xa9 \xe2\x80\x9cq\xe2\x80\x9d\n" },
        { "unicode with its fallback skipped", "{\\rtf1\\uc1 a\\u8212?b\\par}",
            "a\xe2\x80\x94"
            "b\n" },
        { "negative unicode values", "{\\rtf1 \\u-4064?\\par}", "\xef\x80\xa0\n" },
        { "line breaks and tabs", "{\\rtf1 a\\line b\\tab c\\par}", "a\nb c\n" },
        { "source line ends are no text", "{\\rtf1 one\r\ntwo\\par}", "onetwo\n" },
        { "text without a head", "plain text", "plain text\n" },
        { "unbalanced groups", "}}{{{\\rtf1 x", "x\n" },
    };
    for (const auto& c : cases)
        EXPECT_EQ(decode(c.rtf), c.expected) << c.name;
}

TEST(RtfDecoder, WrapsBehindTheMargin)
{
    EXPECT_EQ(decode("{\\rtf1 one two three four five\\par}", 2, 12), "  one two\n  three four\n  five\n");
}

TEST(RtfDecoder, SurvivesDeepNesting)
{
    std::string deep(1000, '{');
    deep += "x";
    deep += std::string(1000, '}');
    EXPECT_EQ(decode(deep.c_str()), "x\n");
}

} // namespace
