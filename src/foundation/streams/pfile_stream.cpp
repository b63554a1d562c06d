#include "foundation/streams/pfile_stream.h"

#include "foundation/strings/bounded_copy.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const mode_t kNewFileMode = 0644;

// open(2) flags for the stored access and disposition values.
int openFlags(int access, int disposition)
{
    const unsigned int bits = static_cast<unsigned int>(access);
    const bool reading = bits & PFileStream::AccessRead;
    const bool writing = bits & PFileStream::AccessWrite;
    int flags = O_RDONLY;
    if (reading && writing)
        flags = O_RDWR;
    else if (writing)
        flags = O_WRONLY;
    if (disposition & 2)
        flags |= O_CREAT;
    if (disposition & 3)
        flags |= O_TRUNC;
    return flags | O_CLOEXEC;
}

int openRetrying(const char* path, int flags)
{
    int fd;
    do
        fd = ::open(path, flags, kNewFileMode);
    while (fd < 0 && errno == EINTR);
    return fd;
}

// One read or write of `size` bytes, repeated only when a signal interrupted it. `done`
// takes the count that went; the result is 0 or the errno of the failure.
template <class Call> int transfer(Call call, int size, int& done)
{
    done = 0;
    if (size < 0)
        return EINVAL;
    ssize_t count;
    do
        count = call();
    while (count < 0 && errno == EINTR);
    if (count < 0)
        return errno;
    done = static_cast<int>(count);
    return 0;
}

} // namespace

PFileStream::PFileStream()
    : openCount(0)
    , name(nullptr)
    , access(0)
    , share(0)
    , disposition(0)
    , fd(-1)
{
}

PFileStream::~PFileStream()
{
    if (fd != -1)
        ::close(fd);
    delete[] name;
}

int PFileStream::Open()
{
    if (!name)
        return EINVAL;
    if (fd != -1) {
        ::close(fd);
        fd = -1;
    }
    int opened = openRetrying(name, openFlags(access, disposition));
    if (opened < 0)
        return errno;
    struct stat info;
    if (fstat(opened, &info) != 0) {
        int error = errno;
        ::close(opened);
        return error;
    }
    if (S_ISDIR(info.st_mode)) {
        ::close(opened);
        return EISDIR;
    }
    fd = opened;
    ++openCount;
    return 0;
}

int PFileStream::Close()
{
    if (::close(fd) != 0)
        return errno;
    if (openCount > 0)
        --openCount;
    fd = -1;
    return 0;
}

int PFileStream::Write(const void* data, int size, int& written)
{
    return transfer([&] { return ::write(fd, data, static_cast<size_t>(size)); }, size, written);
}

int PFileStream::Read(void* data, int size, int& read)
{
    return transfer([&] { return ::read(fd, data, static_cast<size_t>(size)); }, size, read);
}

int PFileStream::Seek(long position)
{
    return lseek(fd, position, SEEK_SET) < 0 ? errno : 0;
}

int PFileStream::SeekOff(long offset)
{
    return lseek(fd, offset, SEEK_CUR) < 0 ? errno : 0;
}

int PFileStream::SeekEnd(long offset)
{
    return lseek(fd, offset, SEEK_END) < 0 ? errno : 0;
}

long PFileStream::Size()
{
    off_t position = lseek(fd, 0, SEEK_CUR);
    if (position < 0)
        return 0;
    off_t end = lseek(fd, 0, SEEK_END);
    lseek(fd, position, SEEK_SET);
    return end < 0 ? 0 : static_cast<long>(end);
}

int PFileStream::Truncate()
{
    off_t position = lseek(fd, 0, SEEK_CUR);
    if (position < 0)
        return errno;
    return ftruncate(fd, position) != 0 ? errno : 0;
}

long PFileStream::GetPos()
{
    off_t position = lseek(fd, 0, SEEK_CUR);
    return position < 0 ? -1 : static_cast<long>(position);
}

int PFileStream::Opened()
{
    return openCount;
}

long PFileStream::Size(const char* path)
{
    if (!path)
        return 0;
    int measured = openRetrying(path, O_RDONLY | O_CLOEXEC);
    if (measured < 0)
        return 0;
    off_t end = lseek(measured, 0, SEEK_END);
    ::close(measured);
    return end < 0 ? 0 : static_cast<long>(end);
}

int PFileStream::Create(const char* path, int flags)
{
    if (path)
        SetName(path, access, share, disposition);
    if (!name)
        return EINVAL;
    if (fd != -1) {
        ::close(fd);
        fd = -1;
    }
    const bool append = flags & 1;
    int opened = openRetrying(name, O_RDWR | O_CREAT | O_CLOEXEC | (append ? 0 : O_TRUNC));
    if (opened < 0)
        return errno;
    if (append && lseek(opened, 0, SEEK_END) < 0) {
        int error = errno;
        ::close(opened);
        return error;
    }
    fd = opened;
    ++openCount;
    return 0;
}

void PFileStream::SetName(const char* path, int newAccess, int newShare, int newDisposition)
{
    access = newAccess;
    share = newShare;
    disposition = newDisposition;
    if (path == name)
        return;
    delete[] name;
    name = nullptr;
    if (!path)
        return;
    const size_t length = strlen(path);
    name = new char[length + 1];
    TeskUtils::copyBounded(name, path, length + 1);
}

int PFileStream::Open(const char* path, int newAccess, int newShare, int newDisposition)
{
    SetName(path, newAccess, newShare, newDisposition);
    return Open();
}
