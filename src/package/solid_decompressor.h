#pragma once
// The solid container: a cabinet's whole record stream as a set of independently
// compressed chunks.
//
// Container layout (little-endian):
//   0  8 bytes  magic "SolidHD" and NUL
//   8  u32      format version, 100
//  12  u32      format date, 0x20121111
//  16  i32      chunk count, 1 to 256
//  20  32 bytes a chunk: i64 uncompressed offset, i64 uncompressed size,
//               i64 compressed offset (from the start of the container),
//               i64 compressed size
// Each chunk's data is one complete zlib stream. Chunks may stand in any order and with
// gaps between their compressed data, but their uncompressed ranges must tile the
// output exactly, and no two ranges of either kind may overlap.
//
// The table is validated in full before anything large is allocated. Decompression runs
// chunk after chunk in the calling thread.
//
// Result codes of decompressData and stripedDecompressData:
//    0  success; `out` holds a block from new[] of `outSize` bytes, owned by the caller
//  -11  input too short for the header or the chunk table
//  -21  format date or chunk count out of range
//  -22  a compressed offset lies inside the header
//  -23  an uncompressed offset is negative
//  -24  two chunks overlap, in the compressed or the uncompressed ranges
//  -25  the chunks do not tile the uncompressed stream
//  -26  no memory for the output
//  -27  a chunk's compressed offset lies outside the input
//  -28  a chunk's compressed data runs past the input
//  -29  a chunk did not inflate to exactly its uncompressed size
// On any failure nothing stays allocated and `out` is not to be used.
#include <cstdint>

class PConsole;

constexpr char kSolidMagic[8] = { 'S', 'o', 'l', 'i', 'd', 'H', 'D', '\0' };
constexpr uint32_t kSolidVersion = 100;
constexpr uint32_t kSolidFormatDate = 0x20121111;
constexpr int kSolidHeaderSize = 20;
constexpr int kSolidChunkEntrySize = 32;
constexpr int kSolidMaxChunks = 256;

// Failure codes of the memory read cursor; they appear inside log lines only.
constexpr int kMemFileReadError = -11;
constexpr int kMemFileSeekError = -12;

// One entry of the chunk table, in its file order.
struct StripedThreadInfo
{
    int64_t uncompressedOffset;
    int64_t uncompressedSize;
    int64_t compressedOffset;
    int64_t compressedSize;
};

// A read cursor over a block of memory that it does not own.
struct MemFile
{
    const unsigned char* data;
    long size;
    long position;

    MemFile(const unsigned char* d, long s)
        : data(d)
        , size(s)
        , position(0)
    {
    }
    // Copies up to `want` bytes from the position on and moves past them; `got` tells how
    // many came (fewer at the end of the block, none for a negative `want`). Gives 0.
    int read(void* to, long want, long& got);
    // Moves the position by `offset`; gives kMemFileSeekError, without moving, where the
    // new position would be negative or beyond the size.
    int seekOff(long offset);
};

class SolidDecompressor
{
public:
    virtual ~SolidDecompressor();
    // Decompresses the container of `size` bytes at `data` (see the codes above).
    virtual int decompressData(const unsigned char* data, long size, unsigned char*& out, long& outSize) = 0;
    // Sets where diagnostics go; ignored here.
    virtual void setDebugConsole(PConsole* console);
};

// The chunk logic, independent of the codec: a codec supplies uncompressFunc and
// getErrorString.
class StripedSolidDecompressor : public SolidDecompressor
{
public:
    void setDebugConsole(PConsole* console) override;
    // Inflates `srcLen` bytes at `src` into at most *destLen bytes at `dest` and stores
    // the length produced in *destLen. Gives the codec's result, 0 for success.
    virtual int uncompressFunc(void* dest, unsigned long* destLen, const void* src, long srcLen) = 0;
    // Text for a codec result, or null where there is none.
    virtual const char* getErrorString(int code) = 0;

    // Validates the table of `count` chunks and decompresses them from `in`, whose data
    // begins with a header of `headerSize` bytes that the cursor stands behind.
    int stripedDecompressData(MemFile& in, unsigned char*& out, long& outSize, StripedThreadInfo* chunks,
        int count, long headerSize);

    PConsole* console = nullptr;

private:
    int validateChunks(const StripedThreadInfo* chunks, int count, long headerSize, long& outSize);
};

// The zlib codec: each chunk is one zlib stream, inflated by zlib's uncompress.
class ZlibSolidDecompressor : public StripedSolidDecompressor
{
public:
    int decompressData(const unsigned char* data, long size, unsigned char*& out, long& outSize) override;
    int uncompressFunc(void* dest, unsigned long* destLen, const void* src, long srcLen) override;
    // "output buffer is not big enough" (-5), "insufficient memory" (-4),
    // "corrupted compressed data" (-3), "unknown error" for anything else.
    const char* getErrorString(int code) override;

    static const char* const ZlibErrorTable[4];
};

// Gives a new ZlibSolidDecompressor (console unset, owned by the caller) if the 20 bytes
// at `data` are a valid container header: the magic, version 100, the format date and a
// chunk count from 1 to 256. Otherwise null, and the data is no solid container.
// Stores "SupportsSolid64bitSizeZlib" in allSolidDecompressors[0].
SolidDecompressor* getSolidDecompressor(const unsigned char* data);
