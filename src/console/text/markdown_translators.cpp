// Plain-text and HTML output of a parsed Markdown tree.
#include "console/text/markdown.h"

#include "console/text/text_wrap.h"
#include "foundation/strings/string_builder.h"

#include <cstdio>
#include <cstring>

namespace {

typedef QuilbMarkDownNode Node;

// ---- plain text -------------------------------------------------------------------------

// Inline children as plain text; a hard line break becomes "\n".
void flattenInline(const Node* node, TeskUtils::StringBuilder& out)
{
    for (const Node* child = node->firstChild; child; child = child->next) {
        switch (child->type) {
        case Node::Text:
        case Node::Code:
            out << child->text;
            break;
        case Node::LineBreak:
            out << '\n';
            break;
        case Node::Link: {
            TeskUtils::StringBuilder label(64, 1.618f);
            label.clear();
            flattenInline(child, label);
            out << label.c_str();
            const char* address = child->text.c_str();
            if (address && *address && strcmp(address, label.c_str()) != 0) {
                out << " <";
                out << address;
                out << '>';
            }
            break;
        }
        default:
            flattenInline(child, out);
            break;
        }
    }
}

class PlainWriter
{
public:
    PlainWriter(int width, char bullet)
        : width_(width)
        , bullet_(bullet)
        , out_(1024, 1.618f)
    {
        out_.clear();
    }

    TeskUtils::CharString run(const Node& document)
    {
        writeBlocks(&document, "", "", true);
        return out_.getCharString();
    }

private:
    // Wraps a text with hard breaks: each piece between "\n" is wrapped on its own.
    void wrapInline(const Node* node, const char* first, const char* rest)
    {
        TeskUtils::StringBuilder flat(256, 1.618f);
        flat.clear();
        flattenInline(node, flat);
        const char* text = flat.c_str() ? flat.c_str() : "";
        const char* prefix = first;
        for (;;) {
            const char* end = strchr(text, '\n');
            TeskUtils::StringBuilder piece(256, 1.618f);
            piece.clear();
            piece.append(text, end ? static_cast<int>(end - text) : static_cast<int>(strlen(text)));
            long before = out_.getLength();
            ConsoleText::appendWrapped(out_, piece.c_str() ? piece.c_str() : "", width_, prefix, rest);
            if (out_.getLength() == before && end) {
                out_ << prefix;
                out_ << '\n';
            }
            if (!end)
                break;
            text = end + 1;
            prefix = rest;
        }
    }

    void writeBlocks(const Node* parent, const char* first, const char* rest, bool loose)
    {
        bool firstBlock = true;
        for (const Node* block = parent->firstChild; block; block = block->next) {
            if (!firstBlock && loose)
                out_ << '\n';
            writeBlock(block, firstBlock ? first : rest, rest);
            firstBlock = false;
        }
    }

    void writeBlock(const Node* block, const char* first, const char* rest)
    {
        switch (block->type) {
        case Node::Heading: {
            long start = out_.getLength();
            wrapInline(block, first, rest);
            if (block->level <= 2) {
                // Underline as wide as the heading's longest line, prefix included.
                int longest = 0;
                int current = 0;
                const char* written = out_.c_str();
                for (long i = start; i < out_.getLength(); ++i) {
                    if (written[i] == '\n') {
                        longest = current > longest ? current : longest;
                        current = 0;
                    } else if ((static_cast<unsigned char>(written[i]) & 0xC0) != 0x80) {
                        ++current;
                    }
                }
                int prefixLength = static_cast<int>(strlen(rest));
                out_ << rest;
                for (int i = prefixLength; i < longest; ++i)
                    out_ << (block->level == 1 ? '=' : '-');
                out_ << '\n';
            }
            break;
        }
        case Node::Paragraph:
            wrapInline(block, first, rest);
            break;
        case Node::CodeBlock: {
            const char* text = block->text.c_str() ? block->text.c_str() : "";
            const char* prefix = first;
            while (*text) {
                const char* end = strchr(text, '\n');
                int length = end ? static_cast<int>(end - text) : static_cast<int>(strlen(text));
                out_ << prefix;
                out_ << "    ";
                out_.append(text, length);
                out_ << '\n';
                prefix = rest;
                text += length + (end ? 1 : 0);
            }
            break;
        }
        case Node::Quote: {
            TeskUtils::StringBuilder quoteFirst(64, 1.618f), quoteRest(64, 1.618f);
            quoteFirst.clear();
            quoteRest.clear();
            quoteFirst << first;
            quoteFirst << "> ";
            quoteRest << rest;
            quoteRest << "> ";
            writeBlocks(block, quoteFirst.c_str(), quoteRest.c_str(), true);
            break;
        }
        case Node::List: {
            int number = block->number;
            const char* prefix = first;
            for (const Node* item = block->firstChild; item; item = item->next) {
                char marker[32];
                if (block->level == 1)
                    snprintf(marker, sizeof marker, "%d. ", number++);
                else
                    snprintf(marker, sizeof marker, "%c ", bullet_);
                TeskUtils::StringBuilder itemFirst(64, 1.618f), itemRest(64, 1.618f);
                itemFirst.clear();
                itemRest.clear();
                itemFirst << prefix;
                itemFirst << marker;
                itemRest << rest;
                for (size_t i = 0; i < strlen(marker); ++i)
                    itemRest << ' ';
                if (!item->firstChild) {
                    out_ << itemFirst.c_str();
                    out_ << '\n';
                } else {
                    writeBlocks(item, itemFirst.c_str(), itemRest.c_str(), false);
                }
                prefix = rest;
            }
            break;
        }
        case Node::Rule: {
            out_ << first;
            int length = width_ - static_cast<int>(strlen(first));
            if (length > 40)
                length = 40;
            for (int i = 0; i < length; ++i)
                out_ << '-';
            out_ << '\n';
            break;
        }
        default:
            break;
        }
    }

    int width_;
    char bullet_;
    TeskUtils::StringBuilder out_;
};

// ---- HTML -------------------------------------------------------------------------------

void appendEscaped(TeskUtils::StringBuilder& out, const char* text)
{
    for (const char* p = text ? text : ""; *p; ++p) {
        switch (*p) {
        case '&':
            out << "&amp;";
            break;
        case '<':
            out << "&lt;";
            break;
        case '>':
            out << "&gt;";
            break;
        case '"':
            out << "&quot;";
            break;
        default:
            out << *p;
            break;
        }
    }
}

void writeHtml(const Node* node, TeskUtils::StringBuilder& out)
{
    for (const Node* child = node->firstChild; child; child = child->next) {
        switch (child->type) {
        case Node::Heading: {
            char tag[8];
            snprintf(tag, sizeof tag, "h%d", child->level);
            out << "<" << tag << ">";
            writeHtml(child, out);
            out << "</" << tag << ">\n";
            break;
        }
        case Node::Paragraph:
            out << "<p>";
            writeHtml(child, out);
            out << "</p>\n";
            break;
        case Node::List:
            if (child->level == 1) {
                char open[32];
                snprintf(open, sizeof open, "<ol start=\"%d\">\n", child->number);
                out << open;
            } else {
                out << "<ul>\n";
            }
            writeHtml(child, out);
            out << (child->level == 1 ? "</ol>\n" : "</ul>\n");
            break;
        case Node::ListItem:
            out << "<li>";
            // A single paragraph in an item is written without its <p>.
            if (child->firstChild && child->firstChild == child->lastChild
                && child->firstChild->type == Node::Paragraph)
                writeHtml(child->firstChild, out);
            else
                writeHtml(child, out);
            out << "</li>\n";
            break;
        case Node::CodeBlock:
            out << "<pre><code>";
            appendEscaped(out, child->text.c_str());
            out << "</code></pre>\n";
            break;
        case Node::Quote:
            out << "<blockquote>\n";
            writeHtml(child, out);
            out << "</blockquote>\n";
            break;
        case Node::Rule:
            out << "<hr>\n";
            break;
        case Node::Text:
            appendEscaped(out, child->text.c_str());
            break;
        case Node::Strong:
            out << "<strong>";
            writeHtml(child, out);
            out << "</strong>";
            break;
        case Node::Emphasis:
            out << "<em>";
            writeHtml(child, out);
            out << "</em>";
            break;
        case Node::Code:
            out << "<code>";
            appendEscaped(out, child->text.c_str());
            out << "</code>";
            break;
        case Node::Link:
            out << "<a href=\"";
            appendEscaped(out, child->text.c_str());
            out << "\">";
            writeHtml(child, out);
            out << "</a>";
            break;
        case Node::LineBreak:
            out << "<br>\n";
            break;
        case Node::Document:
            break;
        }
    }
}

} // namespace

TeskUtils::CharString InstallerPlainTextTranslator::translate(const QuilbMarkDownNode& document)
{
    PlainWriter writer(width_, bullet_);
    return writer.run(document);
}

TeskUtils::CharString BasicHTMLTranslator::translate(const QuilbMarkDownNode& document)
{
    TeskUtils::StringBuilder out(1024, 1.618f);
    out.clear();
    writeHtml(&document, out);
    return out.getCharString();
}
