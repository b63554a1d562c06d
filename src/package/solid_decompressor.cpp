#include "package/solid_decompressor.h"

#include "foundation/streams/pconsole.h"
#include "package/cabinet_format.h"
#include "package/integrity_trailer.h"
#include "package/large_block.h"

#include <zlib.h>

#include <cstring>
#include <memory>
#include <new>

// Kept in the image's constants for outside inspection; nothing prints it.
extern const char stripedWorkerFailureText[];
__attribute__((used)) const char stripedWorkerFailureText[] = "Worker %d failed with zlib error %lld\n";

const char* const ZlibSolidDecompressor::ZlibErrorTable[4] = {
    "output buffer is not big enough",
    "insufficient memory",
    "corrupted compressed data",
    "unknown error",
};

namespace {

// Table values come from the file and may be anything: sums are taken modulo 2^64, as
// the hardware does, without the undefined behaviour of a signed overflow.
inline int64_t wrapAdd(int64_t a, int64_t b)
{
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}

inline int64_t wrapSub(int64_t a, int64_t b)
{
    return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

inline bool inRange(int64_t x, int64_t start, int64_t size)
{
    return x >= start && x < wrapAdd(start, size);
}

// [a, a+s) and [b, b+t) overlap when an end point of either lies inside the other.
bool rangesOverlap(int64_t a, int64_t s, int64_t b, int64_t t)
{
    return inRange(a, b, t) || inRange(wrapSub(wrapAdd(a, s), 1), b, t) || inRange(b, a, s)
        || inRange(wrapSub(wrapAdd(b, t), 1), a, s);
}

int64_t readI64(const unsigned char* p)
{
    uint64_t value = 0;
    for (int i = 7; i >= 0; --i)
        value = (value << 8) | p[i];
    return static_cast<int64_t>(value);
}

// new[] that reports failure as std::bad_alloc also where the allocator is set to give
// null instead of throwing.
unsigned char* allocateBlock(uint64_t size)
{
    if (size > static_cast<uint64_t>(PTRDIFF_MAX))
        throw std::bad_alloc();
    unsigned char* block = new (std::nothrow) unsigned char[static_cast<size_t>(size)];
    if (!block)
        throw std::bad_alloc();
    return block;
}

} // namespace

int MemFile::read(void* to, long want, long& got)
{
    got = 0;
    if (want <= 0)
        return 0;
    long remaining = size - position;
    got = want < remaining ? want : remaining;
    if (got > 0) {
        std::memcpy(to, data + position, static_cast<size_t>(got));
        position += got;
    } else {
        got = 0;
    }
    return 0;
}

int MemFile::seekOff(long offset)
{
    int64_t target = wrapAdd(position, offset);
    if (target < 0 || target > size)
        return kMemFileSeekError;
    position = static_cast<long>(target);
    return 0;
}

SolidDecompressor::~SolidDecompressor() = default;

void SolidDecompressor::setDebugConsole(PConsole*) { }

void StripedSolidDecompressor::setDebugConsole(PConsole* newConsole)
{
    console = newConsole;
}

int StripedSolidDecompressor::validateChunks(
    const StripedThreadInfo* chunks, int count, long headerSize, long& outSize)
{
    for (int i = 0; i < count; ++i) {
        const StripedThreadInfo& a = chunks[i];
        if (a.compressedOffset < headerSize) {
            if (console)
                console->Dump("ERROR: Decompressor: Compressed offset is less than total header size "
                              "(corrupted header - %d)",
                    i);
            return -22;
        }
        if (a.uncompressedOffset < 0) {
            if (console)
                console->Dump(
                    "ERROR: Decompressor: Uncompressed offset is negative (corrupted header - %d)", i);
            return -23;
        }
        for (int j = i + 1; j < count; ++j) {
            const StripedThreadInfo& b = chunks[j];
            if (rangesOverlap(a.compressedOffset, a.compressedSize, b.compressedOffset, b.compressedSize)
                || rangesOverlap(
                    a.uncompressedOffset, a.uncompressedSize, b.uncompressedOffset, b.uncompressedSize)) {
                if (console)
                    console->Dump(
                        "ERROR: Decompressor: Overlapping offset/size ranges (corrupted header - %d %d)", i,
                        j);
                return -24;
            }
        }
    }

    int64_t total = 0;
    int64_t sum = 0;
    for (int i = 0; i < count; ++i) {
        int64_t end = wrapAdd(chunks[i].uncompressedOffset, chunks[i].uncompressedSize);
        if (end > total)
            total = end;
        sum = wrapAdd(sum, chunks[i].uncompressedSize);
    }
    outSize = static_cast<long>(total);

    // Besides the plain sums, every chunk must lie inside the output without any
    // wrap-around, or a crafted table could balance its sums and still point outside.
    bool tiled = sum == total;
    for (int i = 0; tiled && i < count; ++i) {
        const StripedThreadInfo& c = chunks[i];
        tiled = c.uncompressedSize >= 0 && c.uncompressedOffset <= total - c.uncompressedSize;
    }
    if (!tiled) {
        if (console)
            console->Dump("ERROR: Decompressor: Accounted size (%d) differs from uncompressed size (%d) as "
                          "reporterd (corrupted header)",
                static_cast<int>(sum), static_cast<int>(total));
        return -25;
    }
    return 0;
}

int StripedSolidDecompressor::stripedDecompressData(
    MemFile& in, unsigned char*& out, long& outSize, StripedThreadInfo* chunks, int count, long headerSize)
{
    outSize = 0;
    if (count > 0) {
        int result = validateChunks(chunks, count, headerSize, outSize);
        if (result != 0)
            return result;
    }

    if (console)
        console->Dump(
            "Decompressor: Allocating memory for uncompressed cabinet (%d B)", static_cast<int>(outSize));
    std::unique_ptr<unsigned char[]> output;
    try {
        output.reset(allocateBlock(static_cast<uint64_t>(outSize)));
    } catch (const std::bad_alloc& e) {
        if (console)
            console->Dump(
                "ERROR: Decompressor: Failed to allocate memory for the uncompressed cabinet (%s)", e.what());
        return -26;
    }

    adviseHugePages(output.get(), static_cast<uint64_t>(outSize));

    // One scratch block for every chunk. No chunk that can be read is larger than the
    // input, so a bigger size in the table needs no bigger block.
    int64_t largest = 0;
    for (int i = 0; i < count; ++i)
        if (chunks[i].compressedSize > largest)
            largest = chunks[i].compressedSize;
    if (largest > in.size)
        largest = in.size;
    std::unique_ptr<unsigned char[]> scratch(new unsigned char[static_cast<size_t>(largest) + 1]);

    if (console)
        console->Dump("Decompressor: Starting decompression ... (%d chunks)", count);

    int64_t previousEnd = headerSize;
    for (int i = 0; i < count; ++i) {
        const StripedThreadInfo& chunk = chunks[i];
        int64_t move = wrapSub(chunk.compressedOffset, previousEnd);
        if (in.seekOff(static_cast<long>(move)) != 0) {
            if (console)
                console->Dump("ERROR: Decompressor (chunk %d): Seeking compressed offset failed (Error: %d) "
                              ": (off: %lld)",
                    i, kMemFileSeekError, static_cast<long long>(move));
            return -27;
        }
        long got = 0;
        in.read(scratch.get(), static_cast<long>(chunk.compressedSize), got);
        if (chunk.compressedSize < 0 || got < chunk.compressedSize) {
            if (console)
                console->Dump("ERROR: Decompressor (chunk %d): Reading compressed data failed (Error: %d) : "
                              "(off: %lld, size: %lld, read: %lld)",
                    i, kMemFileReadError, static_cast<long long>(chunk.compressedOffset),
                    static_cast<long long>(chunk.compressedSize), static_cast<long long>(got));
            return -28;
        }
        previousEnd = wrapAdd(chunk.compressedOffset, chunk.compressedSize);

        unsigned long length = static_cast<unsigned long>(chunk.uncompressedSize);
        int code = uncompressFunc(output.get() + chunk.uncompressedOffset, &length, scratch.get(),
            static_cast<long>(chunk.compressedSize));
        if (code != 0 || length != static_cast<unsigned long>(chunk.uncompressedSize)) {
            if (console) {
                const char* text = getErrorString(code);
                if (text)
                    console->Dump(
                        "ERROR: Decompressor (chunk %d): Uncompressing data failed (size: %d B; msg: %s)", i,
                        static_cast<int>(chunk.compressedSize), text);
                else
                    console->Dump(
                        "ERROR: Decompressor (chunk %d): Uncompressing data failed (size: %d B; err: %d)", i,
                        static_cast<int>(chunk.compressedSize), code);
            }
            return -29;
        }
    }

    out = output.release();
    return 0;
}

int ZlibSolidDecompressor::decompressData(
    const unsigned char* data, long size, unsigned char*& out, long& outSize)
{
    MemFile in(data, size);
    if (!data || size < kSolidHeaderSize)
        return -11;
    unsigned char header[kSolidHeaderSize];
    long got = 0;
    in.read(header, kSolidHeaderSize, got);

    uint32_t date = readLittleU32(header + 12);
    int32_t count = static_cast<int32_t>(readLittleU32(header + 16));
    if (date != kSolidFormatDate || count < 1 || count > kSolidMaxChunks)
        return -21;

    unsigned char table[kSolidMaxChunks * kSolidChunkEntrySize];
    long tableSize = static_cast<long>(count) * kSolidChunkEntrySize;
    in.read(table, tableSize, got);
    if (got < tableSize)
        return -11;

    StripedThreadInfo chunks[kSolidMaxChunks];
    for (int i = 0; i < count; ++i) {
        const unsigned char* entry = table + i * kSolidChunkEntrySize;
        chunks[i].uncompressedOffset = readI64(entry);
        chunks[i].uncompressedSize = readI64(entry + 8);
        chunks[i].compressedOffset = readI64(entry + 16);
        chunks[i].compressedSize = readI64(entry + 24);
    }
    return stripedDecompressData(in, out, outSize, chunks, count, kSolidHeaderSize + tableSize);
}

int ZlibSolidDecompressor::uncompressFunc(void* dest, unsigned long* destLen, const void* src, long srcLen)
{
    uLongf length = *destLen;
    int result = uncompress(
        static_cast<Bytef*>(dest), &length, static_cast<const Bytef*>(src), static_cast<uLong>(srcLen));
    *destLen = length;
    return result;
}

const char* ZlibSolidDecompressor::getErrorString(int code)
{
    switch (code) {
    case Z_BUF_ERROR:
        return ZlibErrorTable[0];
    case Z_MEM_ERROR:
        return ZlibErrorTable[1];
    case Z_DATA_ERROR:
        return ZlibErrorTable[2];
    default:
        return ZlibErrorTable[3];
    }
}

SolidDecompressor* getSolidDecompressor(const unsigned char* data)
{
    allSolidDecompressors[0] = "SupportsSolid64bitSizeZlib";
    if (!data || std::memcmp(data, kSolidMagic, sizeof(kSolidMagic)) != 0)
        return nullptr;
    if (readLittleU32(data + 8) != kSolidVersion || readLittleU32(data + 12) != kSolidFormatDate)
        return nullptr;
    int32_t count = static_cast<int32_t>(readLittleU32(data + 16));
    if (count < 1 || count > kSolidMaxChunks)
        return nullptr;
    return new ZlibSolidDecompressor;
}
