#pragma once
// PXML: the program's XML document. All nodes live in one flat table in document order,
// each knowing its parent's number, so a parent always stands before its children and a
// node's number never changes (nodes are never removed).
//
// The reader is tolerant and one-pass: it never reports a syntax error, whatever was read
// up to a problem stands as the document. It reads only what the templates use:
//  - text is kept only for the most recently created node, at a closing tag, and only if
//    that node has no text yet; so an element with children has null data;
//  - "<a></a>" gives empty data with dataLength 0, "<a/>" empty data with dataLength 1;
//  - a raw '>' ends a tag even inside quotes (templates write "&gt;");
//  - a comment "<!--" ends at "--" + '>', where a longer run of dashes only closes when
//    its length is 2 more than a multiple of 3 ("--->" does not close);
//  - processing instructions are skipped, other "<!" forms read as tags named "!...";
//  - only &amp; &lt; &apos; &quot; &gt; are decoded, no numeric references;
//  - reading stops at the close of the first top-level element;
//  - a closing tag closes the open element whatever its name.
//
// Tag names compare exactly (strcmp), attribute names ignoring case (strcasecmp).
#include <cstdio>

#include "foundation/strings/table.h"
#include "foundation/xml/plist.h"
#include "foundation/xml/pstr_pair_list.h"

class PStream;

// One element of the document.
struct NODEI
{
    PStrPairList* attrs; // owned; every node has one
    char* data; // malloc, owned; null until text is set
    char* name; // malloc, owned
    int index; // this node's own number
    int parent; // number of the parent, -1 at top level
    int dataLength; // decoded length of data as read; 1 for "<a/>"

    // Frees name, data and attribute list.
    void _destruct();
};

class PXML
{
public:
    // One of the five entities the reader decodes and the writer produces.
    struct Symbol
    {
        char character;
        const char* text;
        int length;
    };
    // &amp; &lt; &apos; &quot; &gt;, in the order they are tried.
    static const Symbol symmap[5];

    PXML();
    virtual ~PXML();

    PXML(const PXML&) = delete;
    PXML& operator=(const PXML&) = delete;

    // Hook for documents that enumerate branches; gives 0 here.
    virtual int OnEnumBranch(int node, int depth, int flags, PList<int>* out) const;

    // --- Reading. Parsing into a document that holds nodes appends to them.

    // Reads the file at `path`. Gives 0, or the errno of the failed open, or what
    // ParseStream gives.
    int ParseFile(const char* path);
    // Reads the whole stream, opening it first if it is not open, and closes it.
    // Gives 0 (also for a malformed document), 1 when the stream can't be opened, the
    // stream's code when the read fails, -3 for a short read, ENOMEM when there is no
    // memory for the text.
    int ParseStream(PStream& stream);
    // Parses a NUL-terminated document in `buffer` (which is not changed). Always 0; no
    // memory for a node ends the parse like a malformed document, what was read stands.
    int ParseTag(char* buffer);
    // Reads the tag name and the attributes from the `length` bytes of `text`: the name
    // goes to node.name (malloc), the attributes are appended to `list`. Gives 0, or -1
    // when an attribute is cut off by the end; the pairs read before it stay.
    int ParseTagname(char* text, int length, NODEI& node, PStrPairList* list);

    // --- Lookups. Node numbers out of range give null / -1.

    // First node numbered above `after` named `name`, anywhere; -1 for none. Passing the
    // last hit as `after` goes on to the next.
    int FindTag(const char* name, int after) const;
    // The same among the children of `parent` (-1: top level).
    int FindChild(int parent, const char* name, int after) const;
    // Walks a '/'-separated path, starting among the siblings of `start` and considering
    // only nodes numbered above `start`. A component that misses does not stop the walk:
    // the next one is tried under the same parent, so "A/X/B" finds B under A where no X
    // exists. The result is the node of the last component, -1 when that one misses (or
    // the path ends in '/'). Each hit is added to `trail`, when given. To visit repeated
    // elements, pass the previous hit as `start` with the same path.
    int FindFullTag(const char* path, int start, PList<int>* trail) const;
    // Strict form: from `node` (-1: top level) each component must be a child of the one
    // before (the first one by that name). Any miss gives -1.
    int FindFullSubTag(int node, const char* path) const;
    // Value of the attribute (name ignoring case, the last of duplicates), or null.
    const char* ParVal(int node, const char* attribute) const;
    const char* ParVal(int node, const char* attribute);
    // Appends to `out` the children of `node` in order (-1: the top-level nodes). Gives 0.
    int GetChildren(int node, PList<int>* out) const;

    // Plain accessors; null / -1 / 0 for a number out of range.
    int GetCount() const { return nodes.count; }
    bool IsValid(int node) const { return node >= 0 && node < nodes.count; }
    const NODEI* GetNode(int node) const { return IsValid(node) ? &nodes[node] : nullptr; }
    const char* GetName(int node) const { return IsValid(node) ? nodes[node].name : nullptr; }
    const char* GetData(int node) const { return IsValid(node) ? nodes[node].data : nullptr; }
    int GetDataLength(int node) const { return IsValid(node) ? nodes[node].dataLength : 0; }
    int GetParent(int node) const { return IsValid(node) ? nodes[node].parent : -1; }
    const PStrPairList* GetAttrs(int node) const { return IsValid(node) ? nodes[node].attrs : nullptr; }

    // --- Edits.

    // Sets an attribute: replaces the value of an existing one (found ignoring case, from
    // the last), or appends the pair with this spelling of the name. A null value is
    // stored as null. Gives 0, or -1 for a node out of range or a null name.
    int SetParVal(int node, const char* attribute, const char* value);
    // Walks `path` below `parent` (-1: top level) like FindFullSubTag, making each
    // missing component (inner ones with empty data). The last component gets a copy of
    // `data` (null allowed); an existing one keeps its dataLength, a new one gets the
    // length of `data`. With `forceNew` the last component is always a new node, which
    // is how repeated elements are added. Gives the final node, or -1 for a parent out
    // of range.
    int SetTagData(int parent, const char* path, const char* data, bool forceNew);

    // --- Writing. Attribute values and data are escaped with the five entities; an
    // element without children and data is written as a pair "<a></a>", never as "<a/>".
    // The writer uses static buffers: one writer at a time.

    // Writes `node` and everything below it, indented by `depth` spaces, to `file` or,
    // when that is null, to `stream`. Gives 0, or 1 when a write fails.
    int WriteNode(int node, FILE* file, PStream* stream, int depth);
    // Writes every top-level node to a file (no XML declaration). Gives 0, -1 when the
    // file can't be opened, 1 when a write fails.
    int WriteFile(const char* path);

    // Drops every node.
    void Clear();

    TeskUtils::Table<NODEI, -1> nodes;

private:
    int appendNode(const char* name, int nameLength, int parent);
};
