#include "foundation/streams/pbuf_stream.h"

#include <cstring>

PBufStream::PBufStream()
    : openCount(0)
    , position(0)
    , data(nullptr)
    , size(0)
    , ownsData(true)
{
}

PBufStream::~PBufStream()
{
    if (ownsData)
        delete[] data;
}

int PBufStream::Open()
{
    ++openCount;
    position = 0;
    return 0;
}

int PBufStream::Close()
{
    if (openCount > 0)
        --openCount;
    return 0;
}

namespace {

// Bytes between the position and the end. A position outside the block (SeekEnd can
// leave it at -1 on an empty block) counts as nothing left.
long bytesLeft(long position, long size)
{
    if (position < 0 || position >= size)
        return 0;
    return size - position;
}

} // namespace

int PBufStream::Write(const void* from, int count, int& written)
{
    written = 0;
    long left = bytesLeft(position, size);
    long take = count < left ? count : left;
    if (take <= 0 || !from)
        return 0;
    memcpy(data + position, from, static_cast<size_t>(take));
    position += take;
    written = static_cast<int>(take);
    return 0;
}

int PBufStream::Read(void* to, int count, int& read)
{
    read = 0;
    long left = bytesLeft(position, size);
    long take = count < left ? count : left;
    if (take <= 0 || !to)
        return 0;
    memcpy(to, data + position, static_cast<size_t>(take));
    position += take;
    read = static_cast<int>(take);
    return 0;
}

int PBufStream::Seek(long to)
{
    if (to < 0 || to > size)
        return -1;
    position = to;
    return 0;
}

int PBufStream::SeekOff(long offset)
{
    return Seek(position + offset);
}

int PBufStream::SeekEnd(long offset)
{
    if (offset < 0 || offset > size)
        return -1;
    position = size - offset - 1;
    return 0;
}

long PBufStream::Size()
{
    return size;
}

long PBufStream::GetPos()
{
    return position;
}

int PBufStream::Opened()
{
    return openCount;
}

void PBufStream::SetBuf(void* block, int blockSize)
{
    if (ownsData)
        delete[] data;
    data = static_cast<unsigned char*>(block);
    size = block && blockSize > 0 ? blockSize : 0;
    ownsData = false;
    position = 0;
}
