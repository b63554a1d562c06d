#include "foundation/streams/pbuf_stream.h"

#include <gtest/gtest.h>

#include <string>

TEST(BufStream, WritesNeverGrowTheBlock)
{
    std::string block(10, '.');
    {
        PBufStream stream;
        stream.SetBuf(&block[0], 10);
        int written = -1;
        ASSERT_EQ(stream.Seek(7), 0);
        EXPECT_EQ(stream.Write("ABCDE", 5, written), 0);
        EXPECT_EQ(written, 3);
        EXPECT_EQ(stream.Write("Z", 1, written), 0);
        EXPECT_EQ(written, 0);
    } // the adopted block is not the stream's to free: the sanitizer would report it
    EXPECT_EQ(block, ".......ABC");
}

TEST(BufStream, SeeksAndReadsStayInsideTheBlock)
{
    const struct
    {
        const char* name;
        int (PBufStream::*seek)(long);
        long argument;
        int result;
        long position;
        std::string reads;
    } rows[] = {
        { "Seek to the end", &PBufStream::Seek, 10, 0, 10, "" },
        { "Seek below 0", &PBufStream::Seek, -1, -1, 4, "4567" },
        { "Seek beyond the end", &PBufStream::Seek, 11, -1, 4, "4567" },
        { "SeekOff back", &PBufStream::SeekOff, -3, 0, 1, "1234" },
        { "SeekOff before the start", &PBufStream::SeekOff, -5, -1, 4, "4567" },
        { "SeekEnd(0) stands on the last byte", &PBufStream::SeekEnd, 0, 0, 9, "9" },
        { "SeekEnd(3)", &PBufStream::SeekEnd, 3, 0, 6, "6789" },
        { "SeekEnd of the whole size leaves -1, which reads nothing", &PBufStream::SeekEnd, 10, 0, -1, "" },
        { "SeekEnd beyond the size", &PBufStream::SeekEnd, 11, -1, 4, "4567" },
        { "SeekEnd negative", &PBufStream::SeekEnd, -1, -1, 4, "4567" },
    };
    for (const auto& row : rows) {
        std::string block = "0123456789";
        PBufStream stream;
        stream.SetBuf(&block[0], 10);
        stream.Seek(4);
        EXPECT_EQ((stream.*row.seek)(row.argument), row.result) << row.name;
        EXPECT_EQ(stream.GetPos(), row.position) << row.name;
        char out[4] = { 0, 0, 0, 0 };
        int read = -1;
        EXPECT_EQ(stream.Read(out, 4, read), 0) << row.name;
        EXPECT_EQ(std::string(out, read), row.reads) << row.name;
    }
}
