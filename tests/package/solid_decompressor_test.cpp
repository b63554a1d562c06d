#include "package/solid_decompressor.h"

#include "foundation/streams/pmemory_console.h"
#include "package/integrity_trailer.h"
#include "package/test_container_builder.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

// The allocation failure case asks for far more memory than exists; under the address
// sanitizer that must come back as a failed allocation instead of a report.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}

namespace {

using quilbtest::ChunkEntry;
using quilbtest::solidContainer;
using quilbtest::solidHeaderSize;
using quilbtest::zlibCompress;

struct Outcome
{
    int code;
    std::string out, log;
};

Outcome decompress(const std::string& container)
{
    ZlibSolidDecompressor decompressor;
    PMemoryConsole console;
    console.flags = 0;
    decompressor.setDebugConsole(&console);
    unsigned char* out = nullptr;
    long outSize = -1;
    Outcome result;
    result.code = decompressor.decompressData(reinterpret_cast<const unsigned char*>(container.data()),
        static_cast<long>(container.size()), out, outSize);
    if (result.code == 0) {
        result.out.assign(reinterpret_cast<char*>(out), static_cast<size_t>(outSize));
        delete[] out;
    }
    result.log = console.text();
    return result;
}

const std::string partA = quilbtest::mixedBytes(3000, 1);
const std::string partB = quilbtest::mixedBytes(5000, 2);
const std::string packedA = zlibCompress(partA);
const std::string packedB = zlibCompress(partB);

// Two chunks, A then B in the output, written to the container as the table says.
std::string twoChunks(ChunkEntry a, ChunkEntry b, const std::string& body = packedA + packedB)
{
    return solidContainer({ a, b }, body);
}

const int64_t H2 = solidHeaderSize(2);
const int64_t SA = static_cast<int64_t>(packedA.size());
const int64_t SB = static_cast<int64_t>(packedB.size());

TEST(SolidDecompressor, FailureCodes)
{
    // `line`: the expected last log line, empty for none.
    struct Row
    {
        const char* name;
        std::function<std::string()> make;
        int code;
        std::string line;
    } rows[] = {
        { "19 bytes", [] { return solidContainer({}, "", kSolidVersion, kSolidFormatDate, 1).substr(0, 19); },
            -11, "" },
        { "table cut short",
            [] {
                return solidContainer({ { 0, 1, 52, 1 } }, "").substr(0, 40);
            },
            -11, "" },
        { "wrong format date",
            [] {
                return solidContainer({ { 0, 3000, 52, SA } }, packedA, kSolidVersion, 0x20121112);
            },
            -21, "" },
        { "chunk count 0", [] { return solidContainer({}, packedA); }, -21, "" },
        { "chunk count 257",
            [] { return solidContainer({}, std::string(9000, 'x'), kSolidVersion, kSolidFormatDate, 257); },
            -21, "" },
        { "compressed offset inside the header",
            [] {
                return twoChunks({ 0, 3000, H2, SA }, { 3000, 5000, 5, 1 });
            },
            -22,
            "ERROR: Decompressor: Compressed offset is less than total header size (corrupted header - 1)" },
        { "negative uncompressed offset",
            [] {
                return twoChunks({ -1, 3000, H2, SA }, { 3000, 5000, H2 + SA, SB });
            },
            -23, "ERROR: Decompressor: Uncompressed offset is negative (corrupted header - 0)" },
        { "same compressed offset",
            [] {
                return twoChunks({ 0, 3000, H2, SA }, { 3000, 5000, H2, SB });
            },
            -24, "ERROR: Decompressor: Overlapping offset/size ranges (corrupted header - 0 1)" },
        { "overlapping uncompressed ranges",
            [] {
                return twoChunks({ 0, 3000, H2, SA }, { 2999, 5000, H2 + SA, SB });
            },
            -24, "ERROR: Decompressor: Overlapping offset/size ranges (corrupted header - 0 1)" },
        { "gap in the uncompressed stream",
            [] {
                return twoChunks({ 0, 3000, H2, SA }, { 3001, 5000, H2 + SA, SB });
            },
            -25,
            "ERROR: Decompressor: Accounted size (8000) differs from uncompressed size (8001) as reporterd "
            "(corrupted header)" },
        { "ranges balanced by wrap-around",
            [] {
                const int64_t big = INT64_MAX, h4 = solidHeaderSize(4);
                return solidContainer({ { 0, 20, h4, 1 }, { big - 4, 10, h4 + 1, 1 },
                                          { big - 5, 10, h4 + 2, 1 }, { 20, -20, h4 + 3, 1 } },
                    "abcd");
            },
            -25,
            "ERROR: Decompressor: Accounted size (20) differs from uncompressed size (20) as reporterd "
            "(corrupted header)" },
        { "output too large to allocate",
            [] {
                return twoChunks({ 0, int64_t(1) << 50, H2, SA }, { int64_t(1) << 50, 5000, H2 + SA, SB });
            },
            -26,
            "ERROR: Decompressor: Failed to allocate memory for the uncompressed cabinet (std::bad_alloc)" },
        { "compressed offset beyond the input",
            [] {
                return twoChunks({ 0, 3000, H2, SA }, { 3000, 5000, H2 + SA + 1000000, SB });
            },
            -27,
            "ERROR: Decompressor (chunk 1): Seeking compressed offset failed (Error: -12) : (off: 1000000)" },
        { "last chunk runs past the input",
            [] {
                return twoChunks({ 0, 3000, H2, SA }, { 3000, 5000, H2 + SA, SB + 10 });
            },
            -28,
            "ERROR: Decompressor (chunk 1): Reading compressed data failed (Error: -11) : (off: "
                + std::to_string(H2 + SA) + ", size: " + std::to_string(SB + 10)
                + ", read: " + std::to_string(SB) + ")" },
        { "chunk inflates to fewer bytes",
            [] {
                return twoChunks({ 0, 3001, H2, SA }, { 3001, 4999, H2 + SA, SB });
            },
            -29,
            "ERROR: Decompressor (chunk 0): Uncompressing data failed (size: " + std::to_string(SA)
                + " B; msg: unknown error)" },
        { "chunk inflates to more bytes",
            [] {
                return twoChunks({ 0, 2999, H2, SA }, { 2999, 5001, H2 + SA, SB });
            },
            -29,
            "ERROR: Decompressor (chunk 0): Uncompressing data failed (size: " + std::to_string(SA)
                + " B; msg: output buffer is not big enough)" },
        { "corrupted chunk data",
            [] {
                return twoChunks({ 0, 3000, H2, SA }, { 3000, 5000, H2 + SA, SB },
                    packedA + char(packedB[0] ^ 0x55) + packedB.substr(1));
            },
            -29,
            "ERROR: Decompressor (chunk 1): Uncompressing data failed (size: " + std::to_string(SB)
                + " B; msg: corrupted compressed data)" },
    };
    for (const Row& row : rows) {
        Outcome outcome = decompress(row.make());
        EXPECT_EQ(outcome.code, row.code) << row.name;
        EXPECT_EQ(quilbtest::lastLogLine(outcome.log), row.line) << row.name << "\nlog:\n" << outcome.log;
        // Nothing large may be allocated before the table has passed every test.
        EXPECT_TRUE(row.code <= -26 || outcome.log.find("Allocating") == std::string::npos) << row.name;
    }
}

TEST(SolidDecompressor, AcceptedLayouts)
{
    const std::string expected = partA + partB;
    struct Row
    {
        const char* name;
        std::string container, out;
    } rows[] = {
        { "in order", twoChunks({ 0, 3000, H2, SA }, { 3000, 5000, H2 + SA, SB }), expected },
        { "table out of order, backward seek", twoChunks({ 3000, 5000, H2 + SA, SB }, { 0, 3000, H2, SA }),
            expected },
        { "gaps between compressed chunks",
            twoChunks({ 0, 3000, H2 + 7, SA }, { 3000, 5000, H2 + 7 + SA + 11, SB },
                std::string(7, 'g') + packedA + std::string(11, 'g') + packedB),
            expected },
        { "trailing bytes behind the last chunk",
            twoChunks({ 0, 3000, H2, SA }, { 3000, 5000, H2 + SA, SB },
                packedA + packedB + "v2sum: 0123456789abcdef"),
            expected },
        { "one chunk of everything", quilbtest::solidOf(expected, 1), expected },
        { "256 chunks", quilbtest::solidOf(expected, 256), expected },
        { "empty chunks make an empty stream", quilbtest::solidOf("", 3), "" },
    };
    for (const Row& row : rows) {
        Outcome outcome = decompress(row.container);
        ASSERT_EQ(outcome.code, 0) << row.name << "\n" << outcome.log;
        EXPECT_TRUE(outcome.out == row.out) << row.name;
    }
    EXPECT_EQ(decompress(rows[0].container).log,
        "Decompressor: Allocating memory for uncompressed cabinet (8000 B)\r\n"
        "Decompressor: Starting decompression ... (2 chunks)\r\n");
}

TEST(SolidDecompressor, FactoryChecksEveryHeaderField)
{
    const std::string valid = quilbtest::solidOf("data", 1).substr(0, kSolidHeaderSize);
    // `bytes` are written over the valid header at `at`.
    struct Row
    {
        const char* name;
        size_t at;
        std::string bytes;
        bool accepted;
    } rows[] = {
        { "valid", 0, "S", true },
        { "magic", 6, "X", false },
        { "magic's NUL", 7, "x", false },
        { "version 101", 8, "e", false },
        { "format date", 12, "\x12", false },
        { "count 0", 16, std::string(1, '\0'), false },
        { "count 256", 16, std::string("\0\1", 2), true },
        { "count 257", 16, "\1\1", false },
        { "negative count", 19, "\x80", false },
    };
    for (const Row& row : rows) {
        std::string header = valid;
        header.replace(row.at, row.bytes.size(), row.bytes);
        allSolidDecompressors[0] = nullptr;
        std::unique_ptr<SolidDecompressor> made(
            getSolidDecompressor(reinterpret_cast<const unsigned char*>(header.data())));
        EXPECT_EQ(made != nullptr, row.accepted) << row.name;
        ASSERT_NE(allSolidDecompressors[0], nullptr);
        EXPECT_STREQ(allSolidDecompressors[0], "SupportsSolid64bitSizeZlib");
    }
}

} // namespace
