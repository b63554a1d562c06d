#include "foundation/xml/pstr_pair_list.h"

#include <cstring>
#include <strings.h>

int PStrPairList::Add(const char* name, int nameLength, const char* value, int valueLength)
{
    StrPair pair;
    pair.name = allocator.CopyString(name ? name : "", name ? nameLength : 0);
    pair.value = value ? allocator.CopyString(value, valueLength) : nullptr;
    pair.allocator = &allocator;
    return pairs.append(pair);
}

int PStrPairList::Add(const char* name, const char* value)
{
    return Add(name, name ? (int)strlen(name) : 0, value, value ? (int)strlen(value) : 0);
}

int PStrPairList::Find(const char* name) const
{
    if (!name)
        return -1;
    for (int i = pairs.count - 1; i >= 0; --i)
        if (strcasecmp(pairs[i].name, name) == 0)
            return i;
    return -1;
}

const char* PStrPairList::GetValue(const char* name) const
{
    int i = Find(name);
    return i >= 0 ? pairs[i].value : nullptr;
}

void PStrPairList::SetValue(int i, const char* value)
{
    if (i < 0 || i >= pairs.count)
        return;
    pairs[i].value = allocator.CopyString(value);
}

void PStrPairList::copy(const PStrPairList& other)
{
    if (this == &other)
        return;
    allocator.Reset();
    pairs.setCount(other.pairs.count);
    for (int i = 0; i < other.pairs.count; ++i) {
        StrPair& pair = pairs[i];
        pair.name = allocator.CopyString(other.pairs[i].name);
        pair.value = allocator.CopyString(other.pairs[i].value);
        pair.allocator = &allocator;
    }
}
