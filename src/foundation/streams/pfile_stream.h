#pragma once
// PFileStream: a PStream on a file descriptor, without a buffer of its own: every Read
// and Write is one system call. Results are 0 or the value of errno.
#include "foundation/streams/pstream.h"

class PFileStream : public PStream
{
public:
    // Access bits for Open: bit 31 read, bit 30 write, both read-write, none read-only.
    static constexpr unsigned int AccessRead = 0x80000000u;
    static constexpr unsigned int AccessWrite = 0x40000000u;
    // Dispositions for Open: an existing file, or one made or emptied.
    static constexpr int OpenExisting = 0;
    static constexpr int CreateAlways = 3;

    PFileStream();
    ~PFileStream() override;

    // Opens the stored name with the stored access and disposition. Bit 1 of the
    // disposition creates (mode 0644), bits 0 or 1 truncate; `share` is not used.
    // A directory is refused with EISDIR (21) and left closed. A stream that is still
    // open has its old descriptor closed first. Success raises the open count.
    int Open() override;
    // Closes the descriptor: the open count goes down and `fd` becomes -1.
    int Close() override;
    int Write(const void* data, int size, int& written) override;
    int Read(void* data, int size, int& read) override;
    int Seek(long position) override;
    int SeekOff(long offset) override;
    // lseek relative to the end of the file.
    int SeekEnd(long offset) override;
    // Measures the open file and keeps the position; 0 when it can't be measured.
    long Size() override;
    // Cuts the file at the current position.
    int Truncate() override;
    // The current position, or -1 when it can't be told.
    long GetPos() override;
    int Opened() override;

    // Size of the file at `path`, through a descriptor of its own (this stream is not
    // touched); 0 for a file that can't be opened.
    virtual long Size(const char* path);
    // Opens for reading and writing, creating the file with mode 0644. With bit 0 of
    // `flags` an existing file is kept and the position goes to its end; without it the
    // file is emptied. A non-null path replaces the stored name. Success raises the
    // open count.
    virtual int Create(const char* path, int flags);
    // Stores the name (a copy) and the three open values for a later Open().
    virtual void SetName(const char* path, int access, int share, int disposition);
    // SetName, then Open().
    virtual int Open(const char* path, int access, int share, int disposition);

    using PStream::Size;

    int openCount;
    char* name;
    int access;
    int share;
    int disposition;
    int fd;
};
