#include "package/large_block.h"

#include <sys/mman.h>

void adviseHugePages(unsigned char* block, uint64_t size)
{
#ifdef MADV_HUGEPAGE
    const uintptr_t huge = uintptr_t(2) << 20;
    if (!block || size < 4 * huge)
        return;
    uintptr_t begin = (reinterpret_cast<uintptr_t>(block) + huge - 1) & ~(huge - 1);
    uintptr_t end = (reinterpret_cast<uintptr_t>(block) + size) & ~(huge - 1);
    if (end > begin)
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
    (void)block;
    (void)size;
#endif
}
