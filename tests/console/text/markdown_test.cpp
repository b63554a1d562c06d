#include "console/text/markdown.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string plain(const char* markdown, int width = 40)
{
    InstallerPlainTextTranslator translator(width, '-');
    return QuilbMarkDownParser::parse(markdown, translator).c_str();
}

std::string html(const char* markdown)
{
    BasicHTMLTranslator translator;
    return QuilbMarkDownParser::parse(markdown, translator).c_str();
}

struct Case
{
    const char* name;
    const char* markdown;
    const char* expected;
    int width = 40;
};

TEST(MarkdownPlainText, RendersBlocksForATerminal)
{
    const Case cases[] = {
        { "empty", "", "" },
        { "paragraph lines are joined and wrapped",
            "The quick brown fox jumps over\nthe lazy dog and runs far away into the woods.",
            "The quick brown fox jumps over the lazy\ndog and runs far away into the woods.\n" },
        { "paragraphs are separated by one blank line", "one\n\n\n\ntwo", "one\n\ntwo\n" },
        { "headings are underlined by level", "# Licence\n## Terms\n### Small",
            "Licence\n=======\n\nTerms\n-----\n\nSmall\n" },
        { "bullets keep a hanging indent", "- first item that is long enough to wrap around\n- second",
            "- first item that is long enough to wrap\n  around\n- second\n" },
        { "ordered lists count from their first number", "3. three\n4. four\n1. five",
            "3. three\n4. four\n5. five\n" },
        { "nested lists indent", "- outer\n  - inner\n- next", "- outer\n  - inner\n- next\n" },
        { "a lazy line continues the item", "- item\ncontinued", "- item continued\n" },
        { "emphasis and code lose their marks", "Use **bold**, *em*, _em_ and `x = 1`.",
            "Use bold, em, em and x = 1.\n" },
        { "underscores inside words stay", "snake_case_name and __init__", "snake_case_name and init\n" },
        { "links show their address", "See [the site](https://quilb.example) or <https://q.example>.",
            "See the site <https://quilb.example> or\nhttps://q.example.\n" },
        { "an escaped mark is literal", "\\*not em\\* and \\# no heading", "*not em* and # no heading\n" },
        { "two blanks break a line", "first  \nsecond", "first\nsecond\n" },
        { "code blocks are indented and never wrapped",
            "```\nint main() { return 0; } // a long line that is never wrapped\n```",
            "    int main() { return 0; } // a long line that is never wrapped\n" },
        { "indented code", "text\n\n    code line\n\nmore", "text\n\n    code line\n\nmore\n" },
        { "quotes carry their mark", "> quoted text", "> quoted text\n" },
        { "rules", "before\n\n---\n\nafter",
            "before\n\n----------------------------------------\n\nafter\n" },
        { "CR LF line ends", "# Title\r\n\r\ntext\r\n", "Title\n=====\n\ntext\n" },
        { "words wider than the line are cut", "abcdefghijklmnopqrstuvwxyz",
            "abcdefghij\nklmnopqrst\nuvwxyz\n", 10 },
        // Two-byte letters take one column each.
        { "UTF-8 that fits", "\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9 \xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9",
            "\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9 \xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\n", 10 },
        { "UTF-8 one column too wide",
            "\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9 \xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9",
            "\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\n\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\n", 10 },
    };
    for (const Case& c : cases)
        EXPECT_EQ(plain(c.markdown, c.width), c.expected) << c.name;
}

TEST(MarkdownHtml, WritesEscapedBasicHtml)
{
    const Case cases[] = {
        { "heading and paragraph", "# A & B\n\nx < y", "<h1>A &amp; B</h1>\n<p>x &lt; y</p>\n" },
        { "lists", "- a\n- b", "<ul>\n<li>a</li>\n<li>b</li>\n</ul>\n" },
        { "ordered list", "2. a", "<ol start=\"2\">\n<li>a</li>\n</ol>\n" },
        { "inline marks", "**b** *e* `c` [t](u\"x)",
            "<p><strong>b</strong> <em>e</em> <code>c</code> <a href=\"u&quot;x\">t</a></p>\n" },
        { "code block", "```\n<tag>\n```", "<pre><code>&lt;tag&gt;\n</code></pre>\n" },
        { "unclosed marks stay text", "**open and `tick", "<p>**open and `tick</p>\n" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(html(c.markdown), c.expected) << c.name;
}

} // namespace
