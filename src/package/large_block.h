#pragma once
// A hint for the large blocks of a cabinet, which are written whole right after their
// allocation: asks the kernel for huge pages on the 2 MiB-aligned inside of the block,
// so that filling it costs a few hundred page faults instead of tens of thousands.
// Blocks below 8 MiB are left alone. Never fails; a refused hint changes nothing.
#include <cstdint>

void adviseHugePages(unsigned char* block, uint64_t size);
