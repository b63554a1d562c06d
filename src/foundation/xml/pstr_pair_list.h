#pragma once
// PStrPairList: the attributes of one XML node, in document order, duplicates included.
// Names and values are packed into the list's own SmallStrAllocator and live as long as
// the list. Lookups by name ignore case and search from the last pair to the first, so
// that of duplicates the last one wins.
#include "foundation/strings/table.h"
#include "foundation/xml/small_str_allocator.h"

struct StrPair
{
    char* name;
    char* value;
    SmallStrAllocator<256>* allocator;
};

class PStrPairList
{
public:
    PStrPairList() = default;
    ~PStrPairList() = default;

    PStrPairList(const PStrPairList&) = delete;
    PStrPairList& operator=(const PStrPairList&) = delete;

    // Appends a pair, copying `length` bytes of each text (a null value stays null).
    // Gives the place of the new pair.
    int Add(const char* name, int nameLength, const char* value, int valueLength);
    // Appends a pair of terminated texts; a null value stays null.
    int Add(const char* name, const char* value);

    // Place of the last pair whose name equals `name` ignoring case, or -1.
    int Find(const char* name) const;
    // Value of the last pair named `name` (ignoring case), or null.
    const char* GetValue(const char* name) const;
    // Replaces the value of pair `i` by a copy of `value` (null allowed). The old bytes
    // stay in their block until the list goes.
    void SetValue(int i, const char* value);

    int Count() const { return pairs.count; }
    const StrPair& operator[](int i) const { return pairs[i]; }

    // Makes this list a deep copy of `other`, in new blocks of its own.
    void copy(const PStrPairList& other);

    TeskUtils::Table<StrPair, 20> pairs;
    SmallStrAllocator<256> allocator;
};
