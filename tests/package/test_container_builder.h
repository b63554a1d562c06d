#pragma once
// Builders for hand-made cabinets and solid containers in tests: small, explicit, and
// able to write any table, valid or not.
#include "package/cabinet_format.h"
#include "package/md5.h"
#include "package/solid_decompressor.h"

#include <zlib.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace quilbtest {

// `bytes` little-endian bytes of `value`.
inline void putLE(std::string& out, uint64_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out.push_back(static_cast<char>(value >> (8 * i)));
}

inline std::string zlibCompress(const std::string& data, int level = 9)
{
    uLongf size = compressBound(data.size());
    std::string out(size, '\0');
    compress2(reinterpret_cast<Bytef*>(&out[0]), &size, reinterpret_cast<const Bytef*>(data.data()),
        data.size(), level);
    out.resize(size);
    return out;
}

// Deterministic bytes: text-like runs mixed with noise, so that they compress somewhat.
inline std::string mixedBytes(size_t size, uint32_t seed)
{
    std::string out(size, '\0');
    uint32_t x = seed * 2654435761u + 1;
    for (size_t i = 0; i < size; ++i) {
        x = x * 1664525u + 1013904223u;
        out[i] = (i / 512) % 2 ? static_cast<char>(x >> 24) : static_cast<char>('a' + (x >> 28));
    }
    return out;
}

using ChunkEntry = StripedThreadInfo;

// Container header and table exactly as given, then `body` (the bytes behind the table).
inline std::string solidContainer(const std::vector<ChunkEntry>& table, const std::string& body,
    uint32_t version = kSolidVersion, uint32_t date = kSolidFormatDate, int32_t count = -1)
{
    std::string out(kSolidMagic, sizeof(kSolidMagic));
    for (uint32_t word :
        { version, date, static_cast<uint32_t>(count < 0 ? static_cast<int32_t>(table.size()) : count) })
        putLE(out, word, 4);
    for (const ChunkEntry& c : table)
        for (int64_t field :
            { c.uncompressedOffset, c.uncompressedSize, c.compressedOffset, c.compressedSize })
            putLE(out, static_cast<uint64_t>(field), 8);
    return out + body;
}

inline int64_t solidHeaderSize(size_t chunks)
{
    return kSolidHeaderSize + kSolidChunkEntrySize * static_cast<int64_t>(chunks);
}

// A valid container of `stream` cut into `chunks` equal parts, in order, without gaps.
inline std::string solidOf(const std::string& stream, int chunks)
{
    std::vector<ChunkEntry> table;
    std::string body;
    int64_t place = solidHeaderSize(chunks);
    for (int i = 0; i < chunks; ++i) {
        size_t begin = stream.size() * i / chunks, end = stream.size() * (i + 1) / chunks;
        std::string packed = zlibCompress(stream.substr(begin, end - begin));
        table.push_back({ static_cast<int64_t>(begin), static_cast<int64_t>(end - begin), place,
            static_cast<int64_t>(packed.size()) });
        body += packed;
        place += packed.size();
    }
    return solidContainer(table, body);
}

// One 616-byte record header.
inline std::string recordHeader(uint32_t tag, uint64_t size, uint64_t storedSize, const std::string& name,
    const std::string& alias, const unsigned char* md5 = nullptr)
{
    std::string out;
    putLE(out, tag, 4);
    putLE(out, size, 8);
    putLE(out, storedSize, 8);
    putLE(out, 0, 4);
    out += md5 ? std::string(reinterpret_cast<const char*>(md5), 16) : std::string(16, '\0');
    out += name + std::string(kCabinetNameSize - name.size(), '\0');
    return out + alias + std::string(kCabinetAliasSize - alias.size(), '\0');
}

inline std::string endRecord()
{
    return recordHeader(kCabinetEndTag, 0, 0, "", "");
}

// The last line of a log, without its "\r\n"; empty for an empty log.
inline std::string lastLogLine(const std::string& log)
{
    if (log.size() < 2)
        return "";
    size_t start = log.rfind("\r\n", log.size() - 3);
    start = start == std::string::npos ? 0 : start + 2;
    return log.substr(start, log.size() - 2 - start);
}

struct PackedFile
{
    std::string alias, content;
};

// Record stream of a solid cabinet: each content stored as it is, then the end record.
inline std::string recordStream(const std::vector<PackedFile>& files)
{
    std::string out;
    for (const PackedFile& f : files) {
        unsigned char digest[16];
        CalcMD5Buf(f.content.data(), static_cast<int>(f.content.size()), digest);
        out += recordHeader(kCabinetFileTag, f.content.size(), f.content.size(), f.alias, f.alias, digest)
            + f.content;
    }
    return out + endRecord();
}

inline std::string cabinetHeader()
{
    std::string out;
    for (uint32_t magic : { kCabinetMagic1, kCabinetMagic2, kCabinetMagic3 })
        putLE(out, magic, 4);
    return out + std::string(kCabinetHeaderSize - 12, '\0');
}

// A whole solid cabinet of the files.
inline std::string solidCabinet(const std::vector<PackedFile>& files, int chunks = 8)
{
    return cabinetHeader() + solidOf(recordStream(files), chunks);
}

} // namespace quilbtest
