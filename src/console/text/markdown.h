#pragma once
// The product's Markdown dialect: licences and read-me texts packed with a product are
// written in it and shown by the front ends, as wrapped plain text on a terminal and as
// HTML in a graphical window.
//
// Blocks: "#" to "######" headings; paragraphs separated by blank lines, their lines
// joined; list items starting with "-", "*" or "+" and a blank, or with a number, "." and a
// blank, nested by indentation; code blocks fenced by "```" or indented by four blanks;
// quotes starting with ">"; rules of three or more "-", "*" or "_" alone on a line.
// Inline: **strong**, __strong__, *emphasis*, _emphasis_, `code`, [text](url), <url>, a
// backslash before a punctuation character takes it literally, and a line ending in two
// blanks or a backslash breaks the line.
#include "foundation/strings/char_string.h"

// One node of a parsed text. Block nodes own their children; inline nodes hold text.
struct QuilbMarkDownNode
{
    enum Type {
        Document,
        Heading, // level 1 to 6; children: inline nodes
        Paragraph, // children: inline nodes
        List, // ordered when `level` is 1; `number` is the first item's number
        ListItem, // children: blocks (paragraphs, nested lists)
        CodeBlock, // `text`: the lines, each ending in "\n"
        Quote, // children: blocks
        Rule,
        Text, // `text`
        Strong, // children: inline nodes
        Emphasis, // children: inline nodes
        Code, // `text`
        Link, // `text`: the address; children: the link text
        LineBreak,
    };

    explicit QuilbMarkDownNode(Type nodeType)
        : type(nodeType)
    {
    }
    ~QuilbMarkDownNode();
    QuilbMarkDownNode(const QuilbMarkDownNode&) = delete;
    QuilbMarkDownNode& operator=(const QuilbMarkDownNode&) = delete;

    // Appends a child and takes ownership of it; gives the child.
    QuilbMarkDownNode* add(QuilbMarkDownNode* child);

    Type type;
    int level = 0;
    int number = 0;
    TeskUtils::CharString text;
    // Children in order, as a chain through `next`.
    QuilbMarkDownNode* firstChild = nullptr;
    QuilbMarkDownNode* lastChild = nullptr;
    QuilbMarkDownNode* next = nullptr;
};

// Turns a parsed tree into some output form.
class QuilbMarkDownTranslator
{
public:
    virtual ~QuilbMarkDownTranslator() = default;
    virtual TeskUtils::CharString translate(const QuilbMarkDownNode& document) = 0;
};

class QuilbMarkDownParser
{
public:
    // Parses `text` (null counts as empty) into a tree owned by the caller.
    static QuilbMarkDownNode* parse(const char* text);
    // Parses `text` and hands the tree to `translator`; gives its output.
    static TeskUtils::CharString parse(const char* text, QuilbMarkDownTranslator& translator);
};

// Wrapped plain text for a terminal: headings underlined ("=" for level 1, "-" for 2),
// paragraphs wrapped at `width` columns and separated by a blank line, list items behind
// `bullet` (numbers for ordered lists) with a hanging indent, code blocks indented by four
// blanks and never wrapped, quotes behind "> ".
class InstallerPlainTextTranslator : public QuilbMarkDownTranslator
{
public:
    InstallerPlainTextTranslator(int width, char bullet)
        : width_(width < 10 ? 10 : width)
        , bullet_(bullet)
    {
    }
    TeskUtils::CharString translate(const QuilbMarkDownNode& document) override;

private:
    int width_;
    char bullet_;
};

// A fragment of basic HTML (no <html> or <body>), with every text escaped.
class BasicHTMLTranslator : public QuilbMarkDownTranslator
{
public:
    TeskUtils::CharString translate(const QuilbMarkDownNode& document) override;
};
