#include "foundation/streams/pbuf_stream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// A stream that only counts: reads hand out up to `available` bytes and remember the size
// asked for; writes accept up to `writeLimit` bytes each. A non-zero `failOnCall` makes
// that call (1-based) fail with `failCode`. The rest of the interface is a memory stream's.
class RecordingStream : public PBufStream
{
public:
    long available = 0;
    int writeLimit = 1 << 30;
    int failOnCall = 0;
    int failCode = 0;
    int calls = 0;
    std::vector<int> requests;

    int Write(const void*, int count, int& written) override
    {
        written = 0;
        if (++calls == failOnCall)
            return failCode;
        written = count < writeLimit ? count : writeLimit;
        return 0;
    }
    int Read(void*, int count, int& read) override
    {
        read = 0;
        requests.push_back(count);
        if (++calls == failOnCall)
            return failCode;
        read = count < available ? count : int(available);
        available -= read;
        return 0;
    }
};

} // namespace

TEST(StreamCopy, BlockSizesStopsAndFailures)
{
    const long lots = 1L << 40;
    const struct
    {
        const char* name;
        long size;
        long available;
        int block;
        int writeLimit;
        bool failSource;
        int failOnCall;
        int result;
        std::vector<int> reads;
        long read;
        long written;
    } rows[] = {
        { "block 0 uses 32768", 70000, lots, 0, 1 << 30, false, 0, 0, { 32768, 32768, 4464 }, 70000, 70000 },
        { "negative block uses 32768", 40000, lots, -5, 1 << 30, false, 0, 0, { 32768, 7232 }, 40000, 40000 },
        { "block capped at 32 MiB", 0x2000001, lots, 0x3000000, 1 << 30, false, 0, 0, { 0x2000000, 1 },
            0x2000001, 0x2000001 },
        { "short source ends quietly", 100, 60, 16, 1 << 30, false, 0, 0, { 16, 16, 16, 16 }, 60, 60 },
        { "nothing to copy", 0, lots, 16, 1 << 30, false, 0, 0, {}, 0, 0 },
        { "short writes count against the size", 32, lots, 16, 10, false, 0, 0, { 16, 16, 12, 2 }, 46, 32 },
        { "read failure gives its code", 100, lots, 16, 1 << 30, true, 2, 5, { 16, 16 }, 16, 16 },
        { "write failure gives its code", 100, lots, 16, 1 << 30, false, 1, 28, { 16 }, 16, 0 },
    };
    for (const auto& row : rows) {
        RecordingStream from, to;
        from.available = row.available;
        to.writeLimit = row.writeLimit;
        RecordingStream& failing = row.failSource ? from : to;
        failing.failOnCall = row.failOnCall;
        failing.failCode = row.result;
        long read = -1, written = -1;
        EXPECT_EQ(PStream::StreamCopy(to, from, row.size, read, written, row.block), row.result) << row.name;
        EXPECT_EQ(from.requests, row.reads) << row.name;
        EXPECT_EQ(read, row.read) << row.name;
        EXPECT_EQ(written, row.written) << row.name;
    }
}

TEST(StreamCopy, CopiesTheBytesBetweenMemoryStreams)
{
    std::string source = "0123456789abcdefghij", target(20, '.');
    PBufStream from, to;
    from.SetBuf(&source[0], 20);
    to.SetBuf(&target[0], 20);
    from.Seek(3);
    long read = 0, written = 0;
    EXPECT_EQ(PStream::StreamCopy(to, from, 12, read, written, 5), 0);
    EXPECT_EQ(target, "3456789abcde........");
    EXPECT_EQ(read, 12);
    EXPECT_EQ(written, 12);
}
