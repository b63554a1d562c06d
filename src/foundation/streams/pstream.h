#pragma once
// PStream: the program's byte stream interface.
//
// Results: 0 for success. File streams give the value of errno on failure, memory
// streams -1. Counts come back through the `written` / `read` arguments; a short count
// is not a failure, the caller compares it with what it asked for.
//
// Pascal strings are a 16-bit little-endian length followed by that many bytes, with
// no terminator.

class PStream
{
public:
    PStream() = default;
    virtual ~PStream() = default;

    virtual int Open() = 0;
    virtual int Close() = 0;
    // Nothing to flush in either implementation: gives 0.
    virtual int Flush();
    // Writes `size` bytes; `written` holds the count that went.
    virtual int Write(const void* data, int size, int& written) = 0;
    // Write of strlen(text) bytes; a null text writes nothing.
    virtual int WriteStr(const char* text);
    // Writes the 2-byte length, then the data. `written` is the total, length word
    // included (2 for an empty string). A failure of the length write gives its code,
    // a short length write -1; otherwise the result of the data write.
    virtual int WritePascalStr(const void* data, unsigned short size, int& written);
    // Reads up to `size` bytes; `read` holds the count that came (0 at the end).
    virtual int Read(void* data, int size, int& read) = 0;
    // Reads a Pascal string without any limit: `data` must hold 65535 bytes. `size`
    // becomes the length (0 first, so also on failure), `read` the bytes consumed
    // including the length word. No terminator is written. A failure of the length read
    // gives its code, a short length read -1.
    virtual int ReadPascalStr(void* data, unsigned short& size, int& read);
    // The bounded form. On entry `size` is the capacity of `data`. A length above
    // capacity-1 gives -1 with only the length word consumed. Otherwise the data is read,
    // a NUL is put behind it and `size` becomes the length. An empty string leaves
    // `size` and `data` as they were, so a caller clears the buffer first.
    virtual int ReadPascalStr1(void* data, unsigned short& size, int& read);
    // From the start.
    virtual int Seek(long position) = 0;
    // From the current position.
    virtual int SeekOff(long offset) = 0;
    // From the end.
    virtual int SeekEnd(long offset) = 0;
    virtual long Size() = 0;
    // Cuts the stream at the current position; a stream that can't gives -1.
    virtual int Truncate();
    virtual long GetPos() = 0;
    // True when the position is not below the size.
    virtual bool IsEOF();
    // The open count: how many Open calls are not yet matched by a Close.
    virtual int Opened() = 0;

    // Copies up to `size` bytes from `from` to `to` through one block of `blockSize`
    // bytes (32768 when below 1, at most 0x2000000). Stops when all is copied or a read
    // comes short. Gives 0 or the code of the stream that failed; `read` and `written`
    // say how far it got, and a caller that needs the whole size compares them.
    static int StreamCopy(PStream& to, PStream& from, long size, long& read, long& written, int blockSize);

    PStream(const PStream&) = delete;
    PStream& operator=(const PStream&) = delete;
};
