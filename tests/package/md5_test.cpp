#include "package/md5.h"

#include "package/test_container_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

std::string hex(const unsigned char (&digest)[16])
{
    std::string out;
    for (unsigned char byte : digest)
        out += { "0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15] };
    return out;
}

TEST(Md5, KnownDigests)
{
    struct Row
    {
        const char* input;
        const char* digest;
    } rows[] = {
        { "", "d41d8cd98f00b204e9800998ecf8427e" },
        { "a", "0cc175b9c0f1b6a831c399e269772661" },
        { "abc", "900150983cd24fb0d6963f7d28e17f72" },
        { "message digest", "f96b697d7cb7938d525a2f31aaf161d0" },
        { "12345678901234567890123456789012345678901234567890123456789012345678901234567890",
            "57edf4a22be3c955ac49da2e2107b67a" },
    };
    for (const Row& row : rows) {
        unsigned char digest[16];
        CalcMD5Buf(row.input, static_cast<int>(std::string(row.input).size()), digest);
        EXPECT_EQ(hex(digest), row.digest) << '"' << row.input << '"';
    }
}

// Lengths around the padding and block boundaries, fed in pieces of every awkward size,
// must give the digest of the whole block at once.
TEST(Md5, PiecewiseUpdatesMatchOneShot)
{
    for (size_t length : { 55u, 56u, 63u, 64u, 65u, 119u, 120u, 128u, 1000u, 70000u }) {
        std::string data = quilbtest::mixedBytes(length, static_cast<uint32_t>(length));
        unsigned char whole[16];
        CalcMD5Buf(data.data(), static_cast<int>(data.size()), whole);
        for (size_t piece : { 1u, 3u, 63u, 64u, 65u, 4096u }) {
            MD5Context context;
            MD5Init(&context);
            for (size_t at = 0; at < data.size(); at += piece)
                MD5Update(&context, data.data() + at, std::min(piece, data.size() - at));
            unsigned char digest[16];
            MD5Final(digest, &context);
            EXPECT_EQ(hex(digest), hex(whole)) << "length " << length << ", pieces of " << piece;
        }
    }
}

} // namespace
