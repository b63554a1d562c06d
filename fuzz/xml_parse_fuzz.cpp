// Fuzz target of the XML reader: parses the input from a memory stream, checks the shape
// of the node table, runs the lookups over what was read, writes the document through a
// FILE and through a stream (which must agree), and, for documents whose names survive
// a round trip, reads the output back and compares the trees. Finally a few edits.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <strings.h>
#include <vector>

#include "foundation/streams/pbuf_stream.h"
#include "foundation/xml/pxml.h"

namespace {

void check(bool condition, const char* what)
{
    if (!condition) {
        fprintf(stderr, "xml_parse_fuzz: %s\n", what);
        abort();
    }
}

// Names the writer puts out raw and the reader takes back unchanged.
bool plainName(const char* name)
{
    if (!name || !*name || *name == '!' || *name == '?')
        return false;
    for (const char* p = name; *p; ++p) {
        char c = *p;
        bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'
            || c == '-' || c == '.' || c == ':';
        if (!ok)
            return false;
    }
    return true;
}

bool roundTrips(const PXML& xml)
{
    for (int i = 0; i < xml.GetCount(); ++i) {
        if (!plainName(xml.GetName(i)))
            return false;
        const PStrPairList* attrs = xml.GetAttrs(i);
        for (int a = 0; a < attrs->Count(); ++a)
            if (!plainName((*attrs)[a].name))
                return false;
    }
    return true;
}

std::string pathOf(const PXML& xml, int node)
{
    std::string path = xml.GetName(node);
    for (int p = xml.GetParent(node); p >= 0; p = xml.GetParent(p))
        path = std::string(xml.GetName(p)) + "/" + path;
    return path;
}

bool namesPlainUpTo(const PXML& xml, int node)
{
    for (; node >= 0; node = xml.GetParent(node))
        if (!*xml.GetName(node))
            return false;
    return true;
}

void checkShape(const PXML& xml)
{
    for (int i = 0; i < xml.GetCount(); ++i) {
        const NODEI* node = xml.GetNode(i);
        check(node->index == i, "index differs from place");
        check(node->parent >= -1 && node->parent < i, "parent does not stand before child");
        check(node->name != nullptr && node->attrs != nullptr, "node without name or attribute list");
        check(strchr(node->name, '/') == nullptr, "slash in a tag name");
        if (node->data)
            check((int)strlen(node->data) == node->dataLength || (node->dataLength == 1 && !*node->data),
                "dataLength does not match data");
    }
}

void checkLookups(PXML& xml)
{
    for (int i = 0; i < xml.GetCount(); ++i) {
        const char* name = xml.GetName(i);
        int first = xml.FindTag(name, -1);
        check(first >= 0 && first <= i, "FindTag misses a node");
        int child = xml.FindChild(xml.GetParent(i), name, -1);
        check(
            child >= 0 && child <= i && xml.GetParent(child) == xml.GetParent(i), "FindChild misses a node");

        const PStrPairList* attrs = xml.GetAttrs(i);
        PStrPairList copy;
        copy.copy(*attrs);
        check(copy.Count() == attrs->Count(), "copied attribute list differs in count");
        for (int a = 0; a < attrs->Count(); ++a) {
            check(strcmp(copy[a].name, (*attrs)[a].name) == 0 && strcmp(copy[a].value, (*attrs)[a].value) == 0
                    && copy[a].value != (*attrs)[a].value,
                "copied attribute list is no deep copy");
            const char* value = xml.ParVal(i, (*attrs)[a].name);
            int lastSame = a;
            for (int b = a + 1; b < attrs->Count(); ++b)
                if (strcasecmp((*attrs)[b].name, (*attrs)[a].name) == 0)
                    lastSame = b;
            check(value == (*attrs)[lastSame].value, "ParVal does not give the last duplicate");
        }

        if (!namesPlainUpTo(xml, i))
            continue;
        std::string path = pathOf(xml, i);
        int strict = xml.FindFullSubTag(-1, path.c_str());
        check(strict < 0 || strcmp(xml.GetName(strict), name) == 0, "FindFullSubTag gives another name");
        check(xml.FindFullSubTag(xml.GetParent(i), name) == child, "FindFullSubTag and FindChild disagree");
        PList<int> trail;
        int loose = xml.FindFullTag(path.c_str(), -1, &trail);
        if (loose >= 0)
            check(trail.Count() > 0 && trail[trail.Count() - 1] == loose
                    && strcmp(xml.GetName(loose), name) == 0,
                "FindFullTag result does not end its trail");
        for (int t = 0; t < trail.Count(); ++t)
            check(xml.GetParent(trail[t]) == (t == 0 ? -1 : trail[t - 1]), "FindFullTag trail is no chain");
        // Passing the hit on gives a later sibling of the same name or nothing.
        int next = xml.FindFullTag(path.c_str(), i, nullptr);
        if (next >= 0)
            check(next > i, "FindFullTag with a start goes backwards");
    }
    PList<int> top;
    xml.GetChildren(-1, &top);
    check(top.Count() <= 1, "more than one top-level element read");
}

std::string writeToFile(PXML& xml)
{
    char* text = nullptr;
    size_t size = 0;
    FILE* file = open_memstream(&text, &size);
    check(file != nullptr, "open_memstream failed");
    for (int i = 0; i < xml.GetCount(); ++i)
        if (xml.GetParent(i) == -1)
            check(xml.WriteNode(i, file, nullptr, 0) == 0, "WriteNode to a file failed");
    fclose(file);
    std::string out(text, size);
    free(text);
    return out;
}

std::string writeToStream(PXML& xml, size_t capacity)
{
    std::vector<char> block(capacity + 1);
    PBufStream stream;
    stream.SetBuf(block.data(), (int)block.size());
    stream.Open();
    for (int i = 0; i < xml.GetCount(); ++i)
        if (xml.GetParent(i) == -1)
            check(xml.WriteNode(i, nullptr, &stream, 0) == 0, "WriteNode to a stream failed");
    std::string out(block.data(), (size_t)stream.GetPos());
    stream.Close();
    return out;
}

void compareTrees(const PXML& a, const PXML& b)
{
    check(a.GetCount() == b.GetCount(), "round trip changes the node count");
    for (int i = 0; i < a.GetCount(); ++i) {
        check(strcmp(a.GetName(i), b.GetName(i)) == 0, "round trip changes a name");
        check(a.GetParent(i) == b.GetParent(i), "round trip changes a parent");
        const char* da = a.GetData(i) ? a.GetData(i) : "";
        const char* db = b.GetData(i) ? b.GetData(i) : "";
        check(strcmp(da, db) == 0, "round trip changes data");
        const PStrPairList* la = a.GetAttrs(i);
        const PStrPairList* lb = b.GetAttrs(i);
        check(la->Count() == lb->Count(), "round trip changes the attribute count");
        for (int k = 0; k < la->Count(); ++k) {
            check(strcmp((*la)[k].name, (*lb)[k].name) == 0, "round trip changes an attribute name");
            check(strcmp((*la)[k].value, (*lb)[k].value) == 0, "round trip changes an attribute value");
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::vector<char> input(data, data + size);
    PBufStream stream;
    stream.SetBuf(input.data(), (int)input.size());
    PXML xml;
    check(xml.ParseStream(stream) == 0, "ParseStream of a memory block failed");
    check(stream.Opened() == 0, "ParseStream left the stream open");

    checkShape(xml);
    checkLookups(xml);

    std::string written = writeToFile(xml);
    check(writeToStream(xml, written.size()) == written, "stream and file output differ");
    if (!written.empty()) {
        std::vector<char> tooSmall(written.size() - 1);
        PBufStream shortStream;
        shortStream.SetBuf(tooSmall.data(), (int)tooSmall.size());
        shortStream.Open();
        int result = 0;
        for (int i = 0; i < xml.GetCount() && result == 0; ++i)
            if (xml.GetParent(i) == -1)
                result = xml.WriteNode(i, nullptr, &shortStream, 0);
        check(result == 1, "a full stream is not reported");
    }

    if (xml.GetCount() > 0 && roundTrips(xml)) {
        PXML again;
        std::string copy = written;
        again.ParseTag(&copy[0]);
        compareTrees(xml, again);
    }

    // Edits on whatever was read.
    int top = xml.GetCount() > 0 ? 0 : -1;
    if (top >= 0) {
        check(xml.SetParVal(top, "FuzzAttr", "a<b>&\"'") == 0, "SetParVal failed");
        check(strcmp(xml.ParVal(top, "fuzzattr"), "a<b>&\"'") == 0, "SetParVal not read back");
    }
    int made = xml.SetTagData(top, "Fuzz/Leaf", "x & y", false);
    check(made >= 0 && strcmp(xml.GetData(made), "x & y") == 0, "SetTagData not read back");
    check(xml.SetTagData(top, "Fuzz/Leaf", xml.GetData(made), false) == made, "SetTagData with its own text");
    check(strcmp(xml.GetData(made), "x & y") == 0, "SetTagData with its own text changes it");
    int repeated = xml.SetTagData(top, "Fuzz/Leaf", "z", true);
    check(repeated > made && xml.GetParent(repeated) == xml.GetParent(made), "forced SetTagData not beside");
    writeToFile(xml);
    return 0;
}
