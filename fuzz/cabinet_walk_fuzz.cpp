// Fuzz target of the cabinet walk. The input is written as a package into a private
// temporary directory and loaded with Installer::Init: the magic words, the solid body
// when one stands behind the header, and the walk over the record stream that builds the
// record table. Then the same again with the input's body packed into a solid container,
// so that the solid walk runs over fuzzed records too. Every record is taken out by index,
// by alias and through GetAliasData. Checks: a loaded table whose records all lie inside
// the loaded block with their texts terminated, nothing loaded after the walk fails,
// results and sizes within their documented values, a NUL behind every content, a solid
// record's content made of its stored bytes, and the same content by alias as by the
// index of the alias's last record.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include <zlib.h>

#include "fuzz_engine.h"
#include "package/cabinet_format.h"
#include "package/solid_decompressor.h"

namespace {

// Solid outputs and contents larger than these are skipped: their allocation would fail a
// fuzzing run for its memory, which is no finding, or slow it down to a crawl (every
// content is allocated and filled in full).
constexpr uint64_t kLargest = uint64_t(1) << 24;
constexpr uint64_t kLargestContent = uint64_t(1) << 20;

void check(bool condition, const char* what)
{
    fuzzCheck(condition, "cabinet_walk_fuzz", what);
}

// The private directory of this process, removed with its file at exit.
struct ScratchDir
{
    std::string path;
    ScratchDir()
    {
        const char* base = getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/quilb-cabinet-fuzz.XXXXXX";
        std::vector<char> buffer(pattern.c_str(), pattern.c_str() + pattern.size() + 1);
        check(mkdtemp(buffer.data()) != nullptr, "no scratch directory");
        path = buffer.data();
    }
    ~ScratchDir()
    {
        unlink(file().c_str());
        rmdir(path.c_str());
    }
    std::string file() const { return path + "/package.cab"; }
};

bool writeAll(const std::string& path, const uint8_t* data, size_t size)
{
    FILE* file = fopen(path.c_str(), "wb");
    if (!file)
        return false;
    bool ok = size == 0 || fwrite(data, 1, size, file) == size;
    return fclose(file) == 0 && ok;
}

uint64_t readLittle64(const uint8_t* p)
{
    uint64_t value = 0;
    for (int i = 7; i >= 0; --i)
        value = (value << 8) | p[i];
    return value;
}

// Whether the chunk table behind the cabinet header asks for a record stream larger than
// kLargest: the stream is as long as the furthest end of an uncompressed range.
bool solidTooLarge(const uint8_t* data, size_t size)
{
    const size_t table = kCabinetHeaderSize + kSolidHeaderSize;
    if (size < table)
        return false;
    const uint32_t count = readLittleU32(data + kCabinetHeaderSize + 16);
    if (count < 1 || count > static_cast<uint32_t>(kSolidMaxChunks))
        return false;
    for (uint32_t i = 0; i < count && table + kSolidChunkEntrySize * (i + 1) <= size; ++i) {
        const uint8_t* entry = data + table + kSolidChunkEntrySize * i;
        const uint64_t offset = readLittle64(entry);
        const uint64_t length = readLittle64(entry + 8);
        if (offset > kLargest || length > kLargest || offset + length > kLargest)
            return true;
    }
    return false;
}

// The size a Decompress of `file` allocates from: the low 32 bits of its original size.
bool contentTooLarge(const CabinetFile& file)
{
    return static_cast<uint32_t>(file.size) > kLargestContent;
}

struct Taken
{
    int code;
    int size;
    std::string content;
};

// Checks what a Decompress gave and keeps it for comparison.
Taken taken(int code, int size, const TeskUtils::PtrArray<unsigned char>& out)
{
    check(code == 0 || code == -1, "Decompress result");
    if (code != 0) {
        check(size == 0, "size not 0 after a failure");
        return { code, size, "" };
    }
    check(size >= 0 && out.size() > size, "content array shorter than the size and its NUL");
    check(out[size] == 0, "no NUL behind the content");
    return { code, size, std::string(reinterpret_cast<const char*>(out.get()), static_cast<size_t>(size)) };
}

void checkTable(const Installer& engine)
{
    check(engine.cabinetData != nullptr && engine.cabinetDataSize >= 0, "nothing loaded after success");
    const uint64_t block = static_cast<uint64_t>(engine.cabinetDataSize);
    for (int i = 0; i < engine.cabinetFiles.size(); ++i) {
        const CabinetFile& file = engine.cabinetFiles[i];
        check(file.tag == kCabinetFileTag, "record of another kind in the table");
        check(file.offset <= block && block - file.offset >= static_cast<uint64_t>(kCabinetRecordHeaderSize),
            "record header outside the block");
        check(block - file.offset - kCabinetRecordHeaderSize >= file.storedSize,
            "stored bytes outside the block");
        check(strnlen(file.name, sizeof file.name) < sizeof file.name, "name not terminated");
        check(strnlen(file.alias, sizeof file.alias) < sizeof file.alias, "alias not terminated");
    }
}

void takeRecords(const Installer& engine, bool loaded)
{
    const int count = engine.cabinetFiles.size();
    for (int i = 0; i < count; ++i) {
        const CabinetFile& file = engine.cabinetFiles[i];
        if (contentTooLarge(file))
            continue;
        int size = -7;
        TeskUtils::PtrArray<unsigned char> out;
        unsigned char md5[16];
        int code = engine.Decompress(i, size, out, &md5);
        const Taken byIndex = taken(code, size, out);
        if (!loaded) {
            check(byIndex.code == -1, "content without a loaded cabinet");
            continue;
        }
        if (byIndex.code == 0) {
            check(std::memcmp(md5, file.md5, sizeof md5) == 0, "digest not the record's");
            const int64_t expected = engine.cabinetIsSolid ? static_cast<uint32_t>(file.size) : 0;
            check(byIndex.size == expected, "content size");
            if (engine.cabinetIsSolid) {
                // The stored bytes, cut to the size or filled up to it with zeros.
                const unsigned char* stored = engine.cabinetData + file.offset + kCabinetRecordHeaderSize;
                const size_t copied = file.storedSize < static_cast<uint64_t>(byIndex.size)
                    ? static_cast<size_t>(file.storedSize)
                    : static_cast<size_t>(byIndex.size);
                check(byIndex.content.compare(0, copied, reinterpret_cast<const char*>(stored), copied) == 0,
                    "content not the stored bytes");
                check(byIndex.content.find_first_not_of('\0', copied) == std::string::npos, "fill not zeros");
            }
        }

        // The alias names the last record that carries it.
        int last = count - 1;
        while (std::strcmp(engine.cabinetFiles[last].alias, file.alias) != 0)
            --last;
        if (last != i && contentTooLarge(engine.cabinetFiles[last]))
            continue;
        size = -7;
        code = engine.Decompress(file.alias, size, out, nullptr);
        const Taken byAlias = taken(code, size, out);
        if (last == i)
            check(byAlias.code == byIndex.code && byAlias.content == byIndex.content,
                "alias gives another content");
        size = -7;
        TeskUtils::PtrArray<unsigned char> data = engine.GetAliasData(file.alias, size);
        if (byAlias.code == 0) {
            check(size == byAlias.size && data.size() > size && data[size] == 0, "GetAliasData size");
            check(std::memcmp(data.get(), byAlias.content.data(), byAlias.content.size()) == 0,
                "GetAliasData content");
        } else {
            check(size == 0 && data.isNull(), "GetAliasData after a failure");
        }
    }

    int size = -7;
    TeskUtils::PtrArray<unsigned char> out;
    check(engine.Decompress(-1, size, out, nullptr) == -1 && size == 0, "negative index");
    check(engine.Decompress(count, size, out, nullptr) == -1 && size == 0, "index past the table");
    size = -7;
    // Longer than an alias field holds, so that no record carries it.
    const std::string unknown(kCabinetAliasSize + 8, 'u');
    check(engine.Decompress(unknown.c_str(), size, out, nullptr) == -1 && size == -7, "unknown alias");
}

// The package `data` would be with its body (all behind the cabinet header) packed into a
// solid container of one chunk, so that the walk over a solid record stream sees bytes the
// fuzzer chose, which it could not write through zlib's checksums itself. Empty when the
// input has no body.
std::string solidPackage(const uint8_t* data, size_t size)
{
    if (size <= static_cast<size_t>(kCabinetHeaderSize))
        return "";
    const uLong bodySize = static_cast<uLong>(size - kCabinetHeaderSize);
    std::vector<Bytef> packed(compressBound(bodySize));
    uLongf packedSize = packed.size();
    check(compress2(packed.data(), &packedSize, data + kCabinetHeaderSize, bodySize, 1) == Z_OK,
        "compress2 failed");

    std::string package(reinterpret_cast<const char*>(data), kCabinetHeaderSize);
    auto put = [&package](uint64_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            package += static_cast<char>((value >> (8 * i)) & 0xff);
    };
    package.append(kSolidMagic, sizeof kSolidMagic);
    put(kSolidVersion, 4);
    put(kSolidFormatDate, 4);
    put(1, 4);
    put(0, 8);
    put(bodySize, 8);
    put(kSolidHeaderSize + kSolidChunkEntrySize, 8);
    put(packedSize, 8);
    package.append(reinterpret_cast<const char*>(packed.data()), packedSize);
    return package;
}

// Loads `package` into a fresh engine and takes out every record; gives Init's result.
int walk(const std::string& path, const std::string& package)
{
    check(writeAll(path, reinterpret_cast<const uint8_t*>(package.data()), package.size()),
        "package can't be written");
    FuzzEngine engine;
    const int result = engine.Init(path.c_str(), 0, 0);
    check(result == 0 || result == -4 || (result <= -5 && result >= -8) || result == -11
            || (result <= -21 && result >= -29),
        "Init result");
    if (result == 0)
        checkTable(engine);
    else
        check(engine.cabinetData == nullptr, "cabinet kept after a failure");
    takeRecords(engine, result == 0);
    unlink(path.c_str());
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static ScratchDir scratch;
    if (size > (1u << 20) || solidTooLarge(data, size))
        return 0;
    const std::string path = scratch.file();
    walk(path, std::string(reinterpret_cast<const char*>(data), size));
    const std::string solid = solidPackage(data, size);
    if (!solid.empty()) {
        const int result = walk(path, solid);
        check(result != -11 && (result > -21 || result < -29), "own solid container refused");
    }
    return 0;
}
