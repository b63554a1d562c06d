#pragma once
// SmallStrAllocator<BLOCK>: packs many small strings into blocks of BLOCK bytes, so that
// a node with many short attributes makes few allocations. Strings are never freed one
// by one; all blocks go with the allocator.
//
// The block in use is always the last one of `blocks`. A request larger than BLOCK gets
// a block of its own, slotted in before the current one so that the current one stays
// last. A request that does not fit in the rest of the current block starts a new
// current block.
#include <cstdlib>
#include <cstring>

#include "foundation/strings/table.h"

template <int BLOCK> class SmallStrAllocator
{
public:
    SmallStrAllocator()
        : used(0)
    {
    }
    ~SmallStrAllocator() { release(); }

    SmallStrAllocator(const SmallStrAllocator&) = delete;
    SmallStrAllocator& operator=(const SmallStrAllocator&) = delete;

    // Gives `size` bytes that live as long as the allocator (or until Reset).
    char* SmallAlloc(unsigned int size)
    {
        if (blocks.count == 0)
            addBlock(BLOCK);
        if (size > (unsigned int)BLOCK) {
            // Keep the current block last: the large one goes in before it.
            char* own = newBlock(size);
            blocks.insertAt(blocks.count - 1, own);
            return own;
        }
        if (size >= (unsigned int)(BLOCK - used)) {
            char* fresh = addBlock(BLOCK);
            used = (int)size;
            return fresh;
        }
        char* at = blocks[blocks.count - 1] + used;
        used += (int)size;
        return at;
    }

    // A copy of `length` bytes of `text`, terminated.
    char* CopyString(const char* text, int length)
    {
        char* copy = SmallAlloc((unsigned int)length + 1);
        if (length > 0)
            memcpy(copy, text, (size_t)length);
        copy[length] = '\0';
        return copy;
    }

    // A copy of a terminated text; null stays null.
    char* CopyString(const char* text) { return text ? CopyString(text, (int)strlen(text)) : nullptr; }

    // Frees every block; strings handed out before are gone.
    void Reset() { release(); }

    int used;
    TeskUtils::Table<char*, 8> blocks;

private:
    static char* newBlock(unsigned int size) { return (char*)malloc(size); }

    char* addBlock(unsigned int size)
    {
        char* block = newBlock(size);
        blocks.append(block);
        used = 0;
        return block;
    }

    void release()
    {
        for (int i = 0; i < blocks.count; ++i)
            free(blocks[i]);
        blocks.freeData();
        used = 0;
    }
};
