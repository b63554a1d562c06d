#pragma once
// Layout of a cabinet: the package of named files that an installer carries.
//
// Every integer is little-endian.
//
// Cabinet header, 72 bytes:
//   0  u32  first magic word   0x321F72AB
//   4  u32  second magic word  0x489EB1AD
//   8  u32  third magic word   0x6BDAF312
//  12  u64  total of the files' original sizes  (written, never read)
//  20  u64  total of the files' stored sizes    (written, never read)
//  28  u32  number of file records              (written, never read)
//  32  40 bytes reserved, zero
//
// Body: at offset 72 a solid container (see solid_decompressor.h) whose decompressed
// bytes are the record stream, or, where no valid container stands there, the record
// stream itself with every file's bytes a zlib stream of its own (plain form).
//
// Record stream: records of a 616-byte header and the stored bytes behind it, with no
// alignment, closed by an end record (tag kCabinetEndTag, all else zero):
//   0  u32  tag            kCabinetFileTag or kCabinetEndTag
//   4  u64  original size
//  12  u64  stored size    bytes following the header
//  20  u32  file flags     1 for PNG and JPEG content, else 0; read by nothing
//  24  16 bytes  MD5 of the original content
//  40  char[300] file name without directories, NUL-terminated, zero-filled
// 340  char[276] alias, the lookup name, NUL-terminated, zero-filled
#include <cstdint>

constexpr uint32_t kCabinetMagic1 = 0x321F72AB;
constexpr uint32_t kCabinetMagic2 = 0x489EB1AD;
constexpr uint32_t kCabinetMagic3 = 0x6BDAF312;
constexpr int kCabinetHeaderSize = 72;

constexpr uint32_t kCabinetFileTag = 0x63280020;
constexpr uint32_t kCabinetEndTag = 0x63280013;
constexpr int kCabinetRecordHeaderSize = 616;
constexpr int kCabinetNameSize = 300;
constexpr int kCabinetAliasSize = 276;
// Longest alias that the engine's file tables can hold.
constexpr int kCabinetMaxAliasLength = 258;

// A little-endian u32 of the file formats.
inline uint32_t readLittleU32(const unsigned char* p)
{
    return uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16) | (uint32_t(p[3]) << 24);
}

#pragma pack(push, 1)
// One file record in memory: where its header stands in the record stream, then the
// 616-byte header copied whole.
struct CabinetFile
{
    uint64_t offset;
    uint32_t tag;
    uint64_t size;
    uint64_t storedSize;
    uint32_t fileFlags;
    unsigned char md5[16];
    char name[kCabinetNameSize];
    char alias[kCabinetAliasSize];
};
#pragma pack(pop)

static_assert(sizeof(CabinetFile) == 8 + kCabinetRecordHeaderSize, "record header must stay 616 bytes");
