#include "foundation/streams/pbuf_stream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

TEST(PascalString, WritesLittleEndianLengthThenBytes)
{
    const struct
    {
        const char* name;
        std::string text;
        std::string expected;
    } rows[] = {
        { "empty gives two zero bytes", "", std::string("\0\0", 2) },
        { "short text", "abc", std::string("\3\0abc", 5) },
        { "length above 255", std::string(0x102, 'x'), "\x02\x01" + std::string(0x102, 'x') },
    };
    for (const auto& row : rows) {
        std::string block(300, '?');
        PBufStream stream;
        stream.SetBuf(&block[0], int(block.size()));
        int written = -1;
        EXPECT_EQ(stream.WritePascalStr(row.text.data(), (unsigned short)row.text.size(), written), 0)
            << row.name;
        EXPECT_EQ(written, int(row.expected.size())) << row.name;
        EXPECT_EQ(block.substr(0, row.expected.size()), row.expected) << row.name;
    }
}

TEST(PascalString, BoundedReadAtTheCapacityEdge)
{
    const struct
    {
        const char* name;
        std::string record;
        int result;
        unsigned short size;
        int position;
        std::string buffer;
    } rows[] = {
        { "length 7 fits capacity 8", std::string("\7\0abcdefgZ", 10), 0, 7, 9, std::string("abcdefg\0", 8) },
        { "length 8 refused, stream behind the length word", std::string("\x08\0abcdefgh", 10), -1, 8, 2,
            "--------" },
        { "empty keeps size and buffer", std::string("\0\0", 2), 0, 8, 2, "--------" },
        { "cut length word", "\5", -1, 8, 1, "--------" },
    };
    for (auto row : rows) {
        PBufStream stream;
        stream.SetBuf(&row.record[0], int(row.record.size()));
        char buffer[8];
        memset(buffer, '-', sizeof buffer);
        unsigned short size = 8;
        int read = 0;
        EXPECT_EQ(stream.ReadPascalStr1(buffer, size, read), row.result) << row.name;
        EXPECT_EQ(size, row.size) << row.name;
        EXPECT_EQ(stream.GetPos(), row.position) << row.name;
        EXPECT_EQ(std::string(buffer, 8), row.buffer) << row.name;
    }
}

TEST(PascalString, UnboundedReadTakesAnyLengthAndCountsTheLengthWord)
{
    std::string record = "\x2c\x01" + std::string(300, 'q') + "tail", buffer(65535, '-');
    PBufStream stream;
    stream.SetBuf(&record[0], int(record.size()));
    unsigned short size = 1;
    int read = 0;
    ASSERT_EQ(stream.ReadPascalStr(&buffer[0], size, read), 0);
    EXPECT_EQ(size, 300);
    EXPECT_EQ(read, 302);
    EXPECT_EQ(buffer.substr(0, 301), std::string(300, 'q') + '-');
}
