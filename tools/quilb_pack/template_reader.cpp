#include "quilb_pack/template_reader.h"

#include <cstring>
#include <strings.h>

namespace quilbpack {

namespace {

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::string decodeEntities(const std::string& text)
{
    static const struct
    {
        const char* name;
        char value;
    } entities[]
        = { { "&amp;", '&' }, { "&lt;", '<' }, { "&apos;", '\'' }, { "&quot;", '"' }, { "&gt;", '>' } };
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        bool replaced = false;
        if (text[i] == '&') {
            for (const auto& entity : entities) {
                size_t length = std::strlen(entity.name);
                if (text.compare(i, length, entity.name) == 0) {
                    out.push_back(entity.value);
                    i += length - 1;
                    replaced = true;
                    break;
                }
            }
        }
        if (!replaced)
            out.push_back(text[i]);
    }
    return out;
}

std::string trim(const std::string& text)
{
    size_t begin = 0, end = text.size();
    while (begin < end && isSpace(text[begin]))
        ++begin;
    while (end > begin && isSpace(text[end - 1]))
        --end;
    return text.substr(begin, end - begin);
}

struct Tag
{
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    bool closing = false;
    bool selfClosing = false;
};

// The inside of "<...>", without the brackets.
Tag parseTag(const std::string& inner)
{
    Tag tag;
    size_t i = 0;
    if (!inner.empty() && inner[0] == '/') {
        tag.closing = true;
        return tag;
    }
    tag.selfClosing = !inner.empty() && inner.back() == '/';
    while (i < inner.size() && !isSpace(inner[i]) && inner[i] != '/')
        ++i;
    tag.name = inner.substr(0, i);
    for (;;) {
        while (i < inner.size() && (isSpace(inner[i]) || inner[i] == '/'))
            ++i;
        if (i >= inner.size())
            break;
        size_t nameStart = i;
        while (i < inner.size() && !isSpace(inner[i]) && inner[i] != '=')
            ++i;
        std::string name = inner.substr(nameStart, i - nameStart);
        while (i < inner.size() && isSpace(inner[i]))
            ++i;
        if (i >= inner.size() || inner[i] != '=')
            break;
        ++i;
        while (i < inner.size() && isSpace(inner[i]))
            ++i;
        if (i >= inner.size() || (inner[i] != '"' && inner[i] != '\''))
            break;
        char quote = inner[i++];
        size_t close = inner.find(quote, i);
        if (close == std::string::npos)
            break;
        tag.attributes.emplace_back(name, decodeEntities(inner.substr(i, close - i)));
        i = close + 1;
    }
    return tag;
}

const std::string* attribute(const Tag& tag, const char* name)
{
    // Of duplicates the last counts.
    for (auto it = tag.attributes.rbegin(); it != tag.attributes.rend(); ++it)
        if (strcasecmp(it->first.c_str(), name) == 0)
            return &it->second;
    return nullptr;
}

} // namespace

std::vector<TemplateFile> findTemplateFiles(const std::string& xml)
{
    std::vector<TemplateFile> files;
    std::vector<std::string> open; // names of the elements enclosing the position
    bool inFile = false; // an FN inside a FileSet is open: its text is wanted
    TemplateFile current;
    size_t textStart = 0;
    size_t i = 0;
    while (i < xml.size()) {
        size_t lt = xml.find('<', i);
        if (lt == std::string::npos)
            break;
        if (xml.compare(lt, 4, "<!--") == 0) {
            size_t end = xml.find("-->", lt + 4);
            if (end == std::string::npos)
                break;
            i = end + 3;
            continue;
        }
        size_t gt = xml.find('>', lt + 1);
        if (gt == std::string::npos)
            break;
        std::string inner = xml.substr(lt + 1, gt - lt - 1);
        i = gt + 1;
        if (!inner.empty() && (inner[0] == '?' || inner[0] == '!'))
            continue;
        Tag tag = parseTag(inner);
        if (tag.closing) {
            if (inFile && open.size() >= 2 && open.back() == "FN") {
                current.text = decodeEntities(trim(xml.substr(textStart, lt - textStart)));
                files.push_back(current);
                inFile = false;
            }
            if (!open.empty())
                open.pop_back();
            continue;
        }
        bool isFile = tag.name == "FN" && !open.empty() && open.back() == "FileSet";
        if (isFile) {
            current = TemplateFile();
            if (const std::string* alias = attribute(tag, "Alias")) {
                current.hasAlias = true;
                current.alias = *alias;
            }
            current.okIfMissing = attribute(tag, "OkIfMissing") != nullptr;
        }
        if (tag.selfClosing) {
            if (isFile)
                files.push_back(current); // no text: nothing to pack, the caller skips it
            continue;
        }
        open.push_back(tag.name);
        inFile = isFile;
        textStart = i;
    }
    return files;
}

std::string derivedAlias(const std::string& sourcePath)
{
    std::string alias;
    for (char c : sourcePath)
        if (c != '/' && c != '\\' && c != ':')
            alias.push_back(c);
    return alias;
}

} // namespace quilbpack
