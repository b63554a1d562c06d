#include "xml_dump.h"

#include <vector>

#include "foundation/xml/pxml.h"

std::string dumpNodes(const PXML& xml)
{
    std::string out;
    for (int i = 0; i < xml.GetCount(); ++i) {
        const NODEI* node = xml.GetNode(i);
        if (i > 0)
            out += " | ";
        out += node->name;
        out += "@" + std::to_string(node->parent);
        for (int a = 0; a < node->attrs->Count(); ++a) {
            const StrPair& pair = (*node->attrs)[a];
            out += std::string(" ") + pair.name + "="
                + (pair.value ? "[" + std::string(pair.value) + "]" : "null");
        }
        if (node->data)
            out += " data=[" + std::string(node->data) + "]/" + std::to_string(node->dataLength);
        else
            out += " data=null";
    }
    return out;
}

std::string parseAndDump(const std::string& text)
{
    std::vector<char> buffer(text.begin(), text.end());
    buffer.push_back('\0');
    PXML xml;
    xml.ParseTag(buffer.data());
    return dumpNodes(xml);
}
