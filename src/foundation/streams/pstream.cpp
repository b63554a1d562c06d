#include "foundation/streams/pstream.h"

#include <cstring>
#include <memory>

namespace {

const int kDefaultCopyBlock = 32768;
const int kMaxCopyBlock = 0x2000000;

} // namespace

int PStream::Flush()
{
    return 0;
}

int PStream::WriteStr(const char* text)
{
    int written = 0;
    return Write(text ? text : "", text ? static_cast<int>(strlen(text)) : 0, written);
}

int PStream::WritePascalStr(const void* data, unsigned short size, int& written)
{
    const unsigned char length[2]
        = { static_cast<unsigned char>(size & 0xff), static_cast<unsigned char>(size >> 8) };
    int result = Write(length, 2, written);
    if (result)
        return result;
    if (written != 2)
        return -1;
    if (size == 0)
        return 0;
    result = Write(data, size, written);
    written += 2;
    return result;
}

namespace {

// Reads the 2-byte little-endian length word of a Pascal string.
int readLengthWord(PStream& stream, int& length, int& read)
{
    unsigned char word[2] = { 0, 0 };
    int result = stream.Read(word, 2, read);
    if (result)
        return result;
    if (read != 2)
        return -1;
    length = word[0] | (word[1] << 8);
    return 0;
}

} // namespace

int PStream::ReadPascalStr(void* data, unsigned short& size, int& read)
{
    size = 0;
    int length = 0;
    int result = readLengthWord(*this, length, read);
    if (result || length == 0)
        return result;
    result = Read(data, length, read);
    read += 2;
    size = static_cast<unsigned short>(length);
    return result;
}

int PStream::ReadPascalStr1(void* data, unsigned short& size, int& read)
{
    const int capacity = size;
    int length = 0;
    int result = readLengthWord(*this, length, read);
    if (result || length == 0)
        return result;
    if (length > capacity - 1)
        return -1;
    read = 0;
    result = Read(data, length, read);
    // Terminate behind what actually arrived, held within the length whatever the stream
    // reported.
    int arrived = read < 0 ? 0 : (read > length ? length : read);
    static_cast<unsigned char*>(data)[arrived] = '\0';
    read += 2;
    size = static_cast<unsigned short>(length);
    return result;
}

int PStream::Truncate()
{
    return -1;
}

bool PStream::IsEOF()
{
    return GetPos() >= Size();
}

int PStream::StreamCopy(PStream& to, PStream& from, long size, long& read, long& written, int blockSize)
{
    read = 0;
    written = 0;
    if (size < 1)
        return 0;
    int block = kDefaultCopyBlock;
    if (blockSize >= 1)
        block = blockSize < kMaxCopyBlock ? blockSize : kMaxCopyBlock;
    std::unique_ptr<unsigned char[]> buffer(new unsigned char[block]);

    long remaining = size;
    for (;;) {
        const int wanted = remaining < block ? static_cast<int>(remaining) : block;
        int got = 0;
        int result = from.Read(buffer.get(), wanted, got);
        if (result)
            return result;
        read += got;
        int put = 0;
        result = to.Write(buffer.get(), got, put);
        if (result)
            return result;
        written += put;
        remaining -= put;
        if (remaining <= 0 || got < wanted)
            return 0;
    }
}
