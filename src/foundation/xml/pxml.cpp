// The document, its reader, lookups and edits. The writer is in pxml_writer.cpp.
#include "foundation/xml/pxml.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include "foundation/streams/pfile_stream.h"
#include "foundation/streams/pstream.h"

const PXML::Symbol PXML::symmap[5] = {
    { '&', "&amp;", 5 },
    { '<', "&lt;", 4 },
    { '\'', "&apos;", 6 },
    { '"', "&quot;", 6 },
    { '>', "&gt;", 4 },
};

namespace {

// The white space the reader cuts and separates on.
bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// A malloc copy of the `length` bytes at `text` with a NUL behind them; null when out of
// memory.
char* copyText(const char* text, int length)
{
    char* copy = static_cast<char*>(malloc(static_cast<size_t>(length) + 1));
    if (!copy)
        return nullptr;
    if (length > 0)
        memcpy(copy, text, static_cast<size_t>(length));
    copy[length] = '\0';
    return copy;
}

char* copyText(const char* text)
{
    return text ? copyText(text, static_cast<int>(strlen(text))) : nullptr;
}

// Decodes the five entities of PXML::symmap in place; anything else after '&' stays as
// it is. Gives the new length.
int decodeEntities(char* text)
{
    char* out = text;
    const char* in = text;
    while (*in) {
        if (*in == '&') {
            const PXML::Symbol* match = nullptr;
            for (const PXML::Symbol& symbol : PXML::symmap) {
                if (strncmp(in, symbol.text, static_cast<size_t>(symbol.length)) == 0) {
                    match = &symbol;
                    break;
                }
            }
            if (match) {
                *out++ = match->character;
                in += match->length;
                continue;
            }
        }
        *out++ = *in++;
    }
    *out = '\0';
    return static_cast<int>(out - text);
}

// The `length` bytes at `text` without the white space at both ends.
void trimSpaces(const char*& text, int& length)
{
    while (length > 0 && isSpace(*text)) {
        ++text;
        --length;
    }
    while (length > 0 && isSpace(text[length - 1]))
        --length;
}

// Length of the path component at `path`: up to the next '/' or the end.
int componentLength(const char* path)
{
    const char* slash = strchr(path, '/');
    return slash ? static_cast<int>(slash - path) : static_cast<int>(strlen(path));
}

bool nameIs(const char* name, const char* component, int length)
{
    return name && strncmp(name, component, static_cast<size_t>(length)) == 0 && name[length] == '\0';
}

// ---- The reader's steps

// Where the reader stands.
struct ReadState
{
    const char* position; // start of the text in front of the next tag
    int current; // the open element, -1 at top level
    int last; // the element created last, -1 before the first
};

// A tag as it stands in the document.
struct Tag
{
    const char* text; // the text between the reading position and the tag's '<'
    int textLength;
    const char* inner; // what stands between '<' and '>'
    int innerLength;
    bool selfClosing; // the last character before '>' is '/'
};

// Where reading goes on behind the processing instruction whose "<?" stands at `open`: it
// is skipped up to its '?' (or the character in front of a '>'), so that whatever follows
// reads as text. Null when the document ends first.
const char* skipProcessingInstruction(const char* open)
{
    const char* p = open + 2;
    while (*p && *p != '?' && p[1] != '>')
        ++p;
    return *p ? p : nullptr;
}

bool isCommentStart(const char* open)
{
    return open[1] == '!' && open[2] == '-' && open[3] == '-';
}

// Where reading goes on behind the comment whose "<!--" stands at `open`: "--" then '>'
// closes it. A dash after "--" starts the count anew, so a run of dashes closes only when
// its length is 2, 5, 8 ... Null when the document ends first.
const char* skipComment(const char* open)
{
    int dashes = 0;
    for (const char* p = open + 4; *p; ++p) {
        if (dashes == 2) {
            if (*p == '>')
                return p + 1;
            dashes = 0;
        } else if (*p == '-') {
            ++dashes;
        } else {
            dashes = 0;
        }
    }
    return nullptr;
}

// At a closing tag the text in front of it goes to the node created last, if that one has
// none yet; a closing tag ending in "/>" gives it empty data instead. False when out of
// memory.
bool setLastData(TeskUtils::Table<NODEI, -1>& nodes, int last, const Tag& tag)
{
    if (last < 0)
        return true;
    NODEI& node = nodes[last];
    if (tag.selfClosing) {
        char* empty = copyText("", 0);
        if (!empty)
            return false;
        free(node.data);
        node.data = empty;
        node.dataLength = 1;
    } else if (!node.data) {
        const char* text = tag.text;
        int length = tag.textLength;
        trimSpaces(text, length);
        node.data = copyText(text, length);
        if (!node.data)
            return false;
        node.dataLength = decodeEntities(node.data);
    }
    return true;
}

// Appends the element of an opening tag as a child of `parent`: its name and attributes
// from the tag's inner text, and for "/>" empty data. Gives its number, or -1 when out of
// memory (nothing is appended then).
int appendElement(PXML& document, const Tag& tag, int parent)
{
    NODEI node;
    node.attrs = new (std::nothrow) PStrPairList;
    node.data = nullptr;
    node.name = nullptr;
    node.index = document.nodes.count;
    node.parent = parent;
    node.dataLength = 0;
    if (!node.attrs)
        return -1;
    const char* inner = tag.inner;
    int length = tag.innerLength;
    trimSpaces(inner, length);
    document.ParseTagname(const_cast<char*>(inner), length, node, node.attrs);
    if (tag.selfClosing) {
        node.data = copyText("", 0);
        node.dataLength = 1;
    }
    if (!node.name || (tag.selfClosing && !node.data)) {
        node._destruct();
        return -1;
    }
    return document.nodes.append(node);
}

// Reads the tag whose '<' stands at `open` and moves the reader behind it. A closing tag,
// whatever its name, closes the open element; an opening tag adds one, and the text in front
// of it is dropped. False when the parse ends here: no '>', the close of a top-level element,
// or no memory.
bool readTag(PXML& document, const char* open, ReadState& state)
{
    // Quotes do not protect a '>'.
    const char* close = strchr(open + 1, '>');
    if (!close)
        return false;
    Tag tag;
    tag.text = state.position;
    tag.textLength = static_cast<int>(open - state.position);
    tag.inner = open + 1;
    tag.innerLength = static_cast<int>(close - tag.inner);
    tag.selfClosing = tag.innerLength > 0 && close[-1] == '/';
    state.position = close + 1;

    if (*tag.inner == '/') {
        if (!setLastData(document.nodes, state.last, tag) || state.current < 0)
            return false;
        state.current = document.nodes[state.current].parent;
        return state.current >= 0;
    }
    state.last = appendElement(document, tag, state.current);
    if (state.last < 0)
        return false;
    state.current = tag.selfClosing ? document.nodes[state.last].parent : state.last;
    return state.current >= 0;
}

} // namespace

void NODEI::_destruct()
{
    free(name);
    free(data);
    delete attrs;
    name = nullptr;
    data = nullptr;
    attrs = nullptr;
}

PXML::PXML() = default;

PXML::~PXML()
{
    Clear();
}

void PXML::Clear()
{
    for (int i = 0; i < nodes.count; ++i)
        nodes[i]._destruct();
    nodes.freeData();
}

int PXML::OnEnumBranch(int, int, int, PList<int>*) const
{
    return 0;
}

int PXML::appendNode(const char* name, int nameLength, int parent)
{
    NODEI node;
    node.attrs = new PStrPairList;
    node.data = nullptr;
    node.name = copyText(name, nameLength);
    node.index = nodes.count;
    node.parent = parent;
    node.dataLength = 0;
    return nodes.append(node);
}

// ---------------------------------------------------------------------------------------
// Reading

int PXML::ParseFile(const char* path)
{
    if (!path)
        return EINVAL;
    PFileStream file;
    int result = file.Open(path, static_cast<int>(PFileStream::AccessRead), 0, PFileStream::OpenExisting);
    if (result != 0)
        return result;
    return ParseStream(file);
}

int PXML::ParseStream(PStream& stream)
{
    if (!stream.Opened() && stream.Open() != 0)
        return 1;
    long size = stream.Size();
    if (size < 0)
        size = 0;
    char* buffer = static_cast<char*>(malloc(static_cast<size_t>(size) + 2));
    if (!buffer) {
        stream.Close();
        return ENOMEM;
    }
    int got = 0;
    int result = stream.Read(buffer, static_cast<int>(size), got);
    if (result != 0 || got != size) {
        free(buffer);
        stream.Close();
        return result != 0 ? result : -3;
    }
    buffer[size] = '\0';
    ParseTag(buffer);
    free(buffer);
    stream.Close();
    return 0;
}

int PXML::ParseTag(char* buffer)
{
    if (!buffer)
        return 0;
    ReadState state { buffer, -1, -1 };
    while (const char* open = strchr(state.position, '<')) {
        if (open[1] == '?')
            state.position = skipProcessingInstruction(open);
        else if (isCommentStart(open))
            state.position = skipComment(open);
        else if (!readTag(*this, open, state))
            return 0;
        if (!state.position)
            return 0;
    }
    return 0;
}

int PXML::ParseTagname(char* text, int length, NODEI& node, PStrPairList* list)
{
    if (!text)
        length = 0;
    int i = 0;
    if (length > 0 && !isSpace(text[0]) && text[0] != '/') {
        while (i < length && !isSpace(text[i]) && text[i] != '/')
            ++i;
    }
    free(node.name);
    node.name = copyText(text, i);

    while (i < length) {
        if (isSpace(text[i]) || text[i] == '/') {
            ++i;
            continue;
        }
        int nameStart = i;
        while (i < length && !isSpace(text[i]) && text[i] != '=')
            ++i;
        if (i >= length)
            return -1;
        int nameLength = i - nameStart;
        // Anything up to the opening quote is skipped, so "a = 'b'" reads like "a='b'".
        while (i < length && text[i] != '"' && text[i] != '\'')
            ++i;
        if (i >= length)
            return -1;
        char quote = text[i++];
        int valueStart = i;
        while (i < length && text[i] != quote)
            ++i;
        if (i >= length)
            return -1;
        if (list) {
            int at = list->Add(text + nameStart, nameLength, text + valueStart, i - valueStart);
            decodeEntities(list->pairs[at].value);
        }
        ++i;
    }
    return 0;
}

// ---------------------------------------------------------------------------------------
// Lookups

int PXML::FindTag(const char* name, int after) const
{
    if (!name)
        return -1;
    for (int i = after < -1 ? 0 : after + 1; i < nodes.count; ++i)
        if (strcmp(nodes[i].name, name) == 0)
            return i;
    return -1;
}

int PXML::FindChild(int parent, const char* name, int after) const
{
    if (!name)
        return -1;
    for (int i = after < -1 ? 0 : after + 1; i < nodes.count; ++i)
        if (nodes[i].parent == parent && strcmp(nodes[i].name, name) == 0)
            return i;
    return -1;
}

// First node numbered above `after` whose parent is `parent` and whose name is exactly
// the `length` bytes of `component`. An empty component matches nothing.
static int findComponent(
    const TeskUtils::Table<NODEI, -1>& nodes, int parent, const char* component, int length, int after)
{
    if (length <= 0)
        return -1;
    for (int i = after < -1 ? 0 : after + 1; i < nodes.count; ++i)
        if (nodes[i].parent == parent && nameIs(nodes[i].name, component, length))
            return i;
    return -1;
}

int PXML::FindFullTag(const char* path, int start, PList<int>* trail) const
{
    if (!path || start >= nodes.count)
        return -1;
    if (*path == '/')
        ++path;
    int parent = start >= 0 ? nodes[start].parent : -1;
    int result = -1;
    for (const char* component = path;;) {
        int length = componentLength(component);
        // A miss leaves the parent as it is: the next component is tried beside it.
        result = findComponent(nodes, parent, component, length, start);
        if (result >= 0) {
            parent = result;
            if (trail)
                trail->Add(result);
        }
        if (component[length] != '/')
            return result;
        component += length + 1;
    }
}

int PXML::FindFullSubTag(int node, const char* path) const
{
    if (!path || node < -1 || node >= nodes.count)
        return -1;
    if (*path == '/')
        ++path;
    for (const char* component = path;;) {
        int length = componentLength(component);
        node = findComponent(nodes, node, component, length, node);
        if (node < 0 || component[length] != '/')
            return node;
        component += length + 1;
    }
}

const char* PXML::ParVal(int node, const char* attribute) const
{
    if (!IsValid(node) || !nodes[node].attrs)
        return nullptr;
    return nodes[node].attrs->GetValue(attribute);
}

const char* PXML::ParVal(int node, const char* attribute)
{
    return static_cast<const PXML*>(this)->ParVal(node, attribute);
}

int PXML::GetChildren(int node, PList<int>* out) const
{
    if (!out)
        return 0;
    for (int i = 0; i < nodes.count; ++i)
        if (nodes[i].parent == node)
            out->Add(i);
    return 0;
}

// ---------------------------------------------------------------------------------------
// Edits

int PXML::SetParVal(int node, const char* attribute, const char* value)
{
    if (!IsValid(node) || !attribute)
        return -1;
    NODEI& target = nodes[node];
    if (!target.attrs)
        target.attrs = new PStrPairList;
    int at = target.attrs->Find(attribute);
    if (at >= 0)
        target.attrs->SetValue(at, value);
    else
        target.attrs->Add(attribute, value);
    return 0;
}

int PXML::SetTagData(int parent, const char* path, const char* data, bool forceNew)
{
    if (!path || parent < -1 || parent >= nodes.count)
        return -1;
    if (*path == '/')
        ++path;
    int current = parent;
    for (const char* component = path;;) {
        int length = componentLength(component);
        bool lastComponent = component[length] != '/';
        int found = -1;
        if (!(lastComponent && forceNew)) {
            found = -1;
            for (int i = current + 1; i < nodes.count; ++i) {
                if (nodes[i].parent == current && nameIs(nodes[i].name, component, length)) {
                    found = i;
                    break;
                }
            }
        }
        if (found >= 0 && lastComponent) {
            // Copy before freeing: `data` may be the node's own text.
            NODEI& node = nodes[found];
            char* copy = copyText(data);
            free(node.data);
            node.data = copy;
            return found;
        }
        if (found < 0) {
            found = appendNode(component, length, current);
            NODEI& node = nodes[found];
            if (lastComponent) {
                node.data = copyText(data);
                node.dataLength = data ? static_cast<int>(strlen(data)) : 0;
                return found;
            }
            node.data = copyText("", 0);
            node.dataLength = 0;
        }
        current = found;
        component += length + 1;
    }
}
