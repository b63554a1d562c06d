#pragma once
// PBufStream: a PStream on a memory block of fixed size. Writes never grow the block.
// Results are 0 or -1.
#include "foundation/streams/pstream.h"

class PBufStream : public PStream
{
public:
    PBufStream();
    ~PBufStream() override;

    // Raises the open count; the position goes to 0.
    int Open() override;
    // Lowers the open count (never below 0).
    int Close() override;
    // Stores the smaller of `size` and what remains behind the position; gives 0 also
    // when nothing fitted, `written` says what went.
    int Write(const void* data, int size, int& written) override;
    // Reads the smaller of `size` and what remains; `read` is 0 at the end. Always 0.
    int Read(void* data, int size, int& read) override;
    // -1 for a position below 0 or above the size.
    int Seek(long position) override;
    // Seek of the position plus `offset`.
    int SeekOff(long offset) override;
    // -1 for an offset below 0 or above the size; otherwise the position becomes
    // size - offset - 1 (so SeekEnd(0) stands on the last byte, not behind it).
    int SeekEnd(long offset) override;
    long Size() override;
    long GetPos() override;
    int Opened() override;

    // Frees an owned block, then works on `data` of `size` bytes, which the caller
    // keeps owning (`ownsData` false). The position goes to 0.
    virtual void SetBuf(void* data, int size);

    int openCount;
    long position;
    unsigned char* data;
    long size;
    bool ownsData;
};
