#include "package/integrity_trailer.h"

#include "package/md5.h"
#include "package/test_container_builder.h"
#include "support/paths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

namespace {

std::string md5Of(const std::string& data)
{
    unsigned char digest[16];
    CalcMD5Buf(data.data(), static_cast<int>(data.size()), digest);
    return std::string(reinterpret_cast<char*>(digest), 16);
}

TEST(IntegrityTrailer, Cases)
{
    const std::string body = quilbtest::mixedBytes(30000, 7);
    // An installer-like file with a valid trailer of either form; `flip` changes one byte.
    auto withV2 = [](const std::string& b) {
        return b + "v2sum: " + md5Of(b.substr(std::min<size_t>(b.size(), 5000)));
    };
    auto withV1 = [](const std::string& b) { return b + "MD5SUM: " + md5Of(b); };
    auto flip
        = [](std::string data, size_t at) { return data[at] = static_cast<char>(data[at] ^ 0x01), data; };
    struct Row
    {
        const char* name;
        std::function<std::string()> make;
        int expected;
    } rows[] = {
        // make null: no file
        { "v2 trailer matches", [&] { return withV2(body); }, 1 },
        { "v1 trailer matches", [&] { return withV1(body); }, 1 },
        { "v1 over one byte", [&] { return withV1("x"); }, 1 },
        { "v1 over nothing has nothing to digest", [&] { return withV1(""); }, 0 },
        { "23 bytes are too short", [&] { return withV2("").substr(0, 23); }, 0 },
        { "v2 change in the first 5000 bytes goes unnoticed", [&] { return flip(withV2(body), 4999); }, 1 },
        { "v2 change at byte 5000 fails", [&] { return flip(withV2(body), 5000); }, 0 },
        { "v2 change in the digest fails",
            [&] {
                std::string f = withV2(body);
                return flip(f, f.size() - 1);
            },
            0 },
        { "v1 change at byte 0 fails", [&] { return flip(withV1(body), 0); }, 0 },
        { "v2 over 5000 bytes or less fails", [&] { return withV2(body.substr(0, 5000)); }, 0 },
        { "v2 over 5001 bytes matches", [&] { return withV2(body.substr(0, 5001)); }, 1 },
        { "decoy marker earlier in the data",
            [&] { return withV2(body.substr(0, 9000) + "v2sum: " + body.substr(9000)); }, 1 },
        { "decoy v1 marker earlier in the data",
            [&] { return withV2(body.substr(0, 25000) + "MD5SUM: " + body.substr(25000)); }, 1 },
        { "bytes behind the digest are ignored", [&] { return withV2(body) + std::string(100, 'z'); }, 1 },
        { "marker more than 20000 bytes before the end",
            [&] { return withV2(body) + std::string(20000, 'z'); }, 0 },
        { "marker without a digest behind it", [&] { return body + "v2sum: "; }, 0 },
        { "no marker at all", [&] { return body; }, 0 },
        { "last marker wins: v1 behind a v2 trailer", [&] { return withV1(withV2(body)); }, 1 },
        { "no file", nullptr, 0 },
    };
    quilbtest::TempDir dir;
    for (const Row& row : rows) {
        std::string path = dir.file(row.make ? "installer" : "absent");
        ASSERT_TRUE(!row.make || quilbtest::writeFile(path, row.make())) << row.name;
        checksummingSignatures[0] = nullptr;
        EXPECT_EQ(verifyFileMD5Checksum(path.c_str()), row.expected) << row.name;
        ASSERT_NE(checksummingSignatures[0], nullptr) << row.name;
        EXPECT_STREQ(checksummingSignatures[0], "SupportsSignedInstallers");
    }
}

} // namespace
