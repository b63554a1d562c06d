// Feeds arbitrary bytes to the solid decompressor as a container, through the factory
// and directly.
#include "package/solid_decompressor.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace {

// The output size that a table could make the decompressor allocate: inputs asking for
// more than a fuzzing run can give are skipped, since their refusal is an allocation
// failure, not a finding.
bool asksTooMuch(const uint8_t* data, size_t size)
{
    if (size < 20)
        return false;
    int32_t count;
    std::memcpy(&count, data + 16, 4);
    if (count < 1 || count > 256)
        return false;
    // The output is as large as the furthest end of an uncompressed range.
    int64_t total = 0;
    for (int32_t i = 0; i < count && 20 + 32 * static_cast<size_t>(i + 1) <= size; ++i) {
        uint64_t offset, length;
        std::memcpy(&offset, data + 20 + 32 * i, 8);
        std::memcpy(&length, data + 20 + 32 * i + 8, 8);
        int64_t end = static_cast<int64_t>(offset + length);
        if (end > total)
            total = end;
    }
    return total > (int64_t(1) << 26);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (asksTooMuch(data, size))
        return 0;
    if (size >= 20) {
        std::unique_ptr<SolidDecompressor> made(getSolidDecompressor(data));
        if (made) {
            unsigned char* out = nullptr;
            long outSize = 0;
            if (made->decompressData(data, static_cast<long>(size), out, outSize) == 0)
                delete[] out;
        }
    }
    ZlibSolidDecompressor direct;
    unsigned char* out = nullptr;
    long outSize = 0;
    if (direct.decompressData(data, static_cast<long>(size), out, outSize) == 0)
        delete[] out;
    return 0;
}
