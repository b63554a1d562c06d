#include "installer/transaction/backup_file.h"

#include "foundation/streams/pconsole.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/portable.h"
#include "installer/wizard/installer_ui.h"

#include <cassert>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>

const char BackupFile::kHeader[] = "Quilb Software installer backup file.\n";

static_assert(sizeof BackupFile::kHeader == BackupFile::kHeaderSize, "the header is 38 characters and a NUL");

namespace {

const int kBlockSize = 32768;
const int kHeaderTextLength = BackupFile::kHeaderSize - 1;
// fgets reads the first line of a file into this many bytes to look for the header.
const int kFirstLineSize = 512;
// Every 32nd record asks the front end to repaint its list.
const int kRefreshInterval = 32;
// The fixed part of a record behind its name: the i64 size and the u32 checksum.
const int kSizeFieldBytes = 8;
const int kChecksumFieldBytes = 4;

const char* const kWhere = "addFile";
const char kEndMark[1] = { '\0' };

static_assert(kBlockSize % 4 == 0, "only the last block of a checksum can have remaining bytes");

void putLittleEndian(unsigned char* out, uint64_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out[i] = static_cast<unsigned char>(value >> (8 * i));
}

uint64_t getLittleEndian(const unsigned char* in, int bytes)
{
    uint64_t value = 0;
    for (int i = bytes - 1; i >= 0; --i)
        value = (value << 8) | in[i];
    return value;
}

// XOR of the whole little-endian 32-bit words of `data` and of each remaining byte (0 to 3
// of them) as a value 0..255. Assembled byte by byte, so the host's byte order plays no part.
uint32_t xorWords(const unsigned char* data, long size)
{
    uint32_t value = 0;
    long at = 0;
    for (; at + 4 <= size; at += 4)
        value ^= static_cast<uint32_t>(getLittleEndian(data + at, 4));
    for (; at < size; ++at)
        value ^= data[at];
    return value;
}

// Fills `block` with up to `size` bytes, reading again after a short count, so that only
// the end of the data or a failure leaves a block short. `failed` tells the failure.
int readFully(PStream& from, unsigned char* block, int size, bool& failed)
{
    failed = false;
    int total = 0;
    while (total < size) {
        int got = 0;
        if (from.Read(block + total, size - total, got) != 0 || got < 0) {
            failed = true;
            break;
        }
        if (got == 0)
            break;
        total += got;
    }
    return total;
}

// Reads exactly `size` bytes into `out`; false when the stream fails or ends first.
bool readExact(PStream& from, unsigned char* out, int size)
{
    bool failed = false;
    return readFully(from, out, size, failed) == size && !failed;
}

// Writes `size` bytes in one Write; gives the stream's code, or -1 for a short count.
int writeExact(PStream& to, const void* data, int size)
{
    int written = 0;
    int result = to.Write(data, size, written);
    if (result == 0 && written != size)
        result = -1;
    return result;
}

// The checksum of the next `length` bytes of `from`, read through one block of 32768 bytes.
// A read that fails or comes to the end early stops the sum with what was reached.
uint32_t streamChecksum(PStream& from, long length)
{
    uint32_t value = static_cast<uint32_t>(static_cast<uint64_t>(length));
    std::unique_ptr<unsigned char[]> block(new unsigned char[kBlockSize]);
    long remaining = length;
    while (remaining > 0) {
        const int wanted = remaining < kBlockSize ? static_cast<int>(remaining) : kBlockSize;
        bool failed = false;
        const int got = readFully(from, block.get(), wanted, failed);
        value ^= xorWords(block.get(), got);
        if (failed || got < wanted)
            break;
        remaining -= got;
    }
    return value;
}

// True when the file at `path` can be opened and its first line begins with the 38
// characters of the header: such a file is a container itself.
bool isBackupContainer(const char* path)
{
    FILE* file = teskutils_fopen(path, "rb");
    if (!file)
        return false;
    char line[kFirstLineSize];
    const bool read = fgets(line, sizeof line, file) != nullptr;
    fclose(file);
    return read && strncmp(line, BackupFile::kHeader, kHeaderTextLength) == 0;
}

// "Restore " or "Left " and the path, for the front end's list.
void recordText(char* out, size_t size, const char* verb, const char* path)
{
    TeskUtils::copyBounded(out, verb, size);
    TeskUtils::appendBounded(out, path, size);
}

int progressPercent(long position, long total)
{
    if (total <= 0)
        return 100;
    return static_cast<int>(std::ceil(static_cast<double>(position) / static_cast<double>(total) * 100.0));
}

} // namespace

BackupFile::BackupFile() = default;

BackupFile::~BackupFile()
{
    Close();
}

int BackupFile::OpenWrite(const char* path)
{
    Close();
    mode = ModeWrite;
    int result = Open(path, static_cast<int>(AccessWrite), 0, CreateAlways);
    if (result == 0)
        result = writeExact(*this, kHeader, kHeaderSize);
    // A container whose header could not be written takes no records either.
    if (result != 0)
        hasError = true;
    return result;
}

int BackupFile::OpenRead(const char* path)
{
    Close();
    int result = Open(path, static_cast<int>(AccessRead), 1, OpenExisting);
    if (result != 0)
        return result;
    mode = ModeRead;
    // The header is passed over as it stands; unpackAll seeks behind it anyway.
    unsigned char header[kHeaderSize];
    int read = 0;
    Read(header, kHeaderSize, read);
    return 0;
}

int BackupFile::Close()
{
    int result = 0;
    if (fd != -1) {
        if (mode == ModeWrite) {
            int written = 0;
            WritePascalStr(kEndMark, sizeof kEndMark, written);
        }
        result = PFileStream::Close();
    }
    mode = ModeClosed;
    hasError = false;
    return result;
}

unsigned BackupFile::checksum(const unsigned char* data, long size)
{
    if (!data || size <= 0)
        return 0;
    // The blocks of 32768 bytes hold whole words, so the sum over blocks is the sum over
    // all of the data at once.
    return static_cast<uint32_t>(static_cast<uint64_t>(size)) ^ xorWords(data, size);
}

unsigned BackupFile::fileChecksum(const char* path)
{
    PFileStream file;
    if (file.Open(path, static_cast<int>(AccessRead), 1, OpenExisting) != 0)
        return 0;
    return streamChecksum(file, file.Size());
}

TeskUtils::ErrorCode BackupFile::addFile(
    const char* path, int pathSize, unsigned checksumValue, bool checksumGiven)
{
    using TeskUtils::ErrorCode;
    if (mode != ModeWrite)
        return ErrorCode(kWhere, -1, "Not in write mode");
    if (hasError)
        return ErrorCode(kWhere, -1, "There is a previous error");
    if (path && isBackupContainer(path))
        return ErrorCode();

    const long start = GetPos();
    // A failed record is abandoned: the stream goes back to where it began, so that the
    // end mark written at close lands over it, and the container takes no more records.
    auto abandon = [&](ErrorCode error) {
        hasError = true;
        Seek(start);
        return error;
    };

    // The name is the path cut to the bound of its buffer (never more than a path buffer
    // holds), with its terminating NUL; an empty name is the NUL alone.
    const int bound = pathSize < TeskUtils::kPathSize ? pathSize : TeskUtils::kPathSize;
    char fileName[TeskUtils::kPathSize] = "";
    int nameLength = 1;
    if (path && bound >= 1)
        nameLength = static_cast<int>(TeskUtils::copyBounded(fileName, path, static_cast<size_t>(bound))) + 1;
    assert(nameLength >= 1 && nameLength <= TeskUtils::kPathSize && fileName[nameLength - 1] == '\0');
    int written = 0;
    if (WritePascalStr(fileName, static_cast<unsigned short>(nameLength), written) != 0
        || written != nameLength + 2)
        return abandon(ErrorCode(kWhere, -1, "Error writing file name"));

    const long size = Size(path);
    unsigned char sizeField[kSizeFieldBytes];
    putLittleEndian(sizeField, static_cast<uint64_t>(static_cast<int64_t>(size)), kSizeFieldBytes);
    if (writeExact(*this, sizeField, kSizeFieldBytes) != 0)
        return abandon(ErrorCode(kWhere, -1, "Error writing file size"));

    if (!checksumGiven)
        checksumValue = fileChecksum(path);
    unsigned char checksumField[kChecksumFieldBytes];
    putLittleEndian(checksumField, static_cast<uint32_t>(checksumValue), kChecksumFieldBytes);
    if (writeExact(*this, checksumField, kChecksumFieldBytes) != 0)
        return abandon(ErrorCode(kWhere, -1, "Error writing check sum"));

    if (size == 0)
        return ErrorCode();

    PFileStream source;
    if (source.Open(path, static_cast<int>(AccessRead), 1, OpenExisting) != 0)
        return abandon(ErrorCode(kWhere, -1, "Error opening file"));
    long read = 0;
    long copied = 0;
    const int error = StreamCopy(*this, source, size, read, copied, kBlockSize);
    source.Close();
    if (error != 0)
        return abandon(ErrorCode(kWhere, -1, "Error copying stream (%i)", error));
    if (read != size || copied != size)
        return abandon(ErrorCode(kWhere, -1, "Copy stream mismatch: wanted %i bytes, read %i, written %i",
            static_cast<int>(size), static_cast<int>(read), static_cast<int>(copied)));
    return ErrorCode();
}

int BackupFile::unpackAll(PConsole& log, InstallerUI* ui)
{
    if (mode != ModeRead)
        return -1;
    if (ui)
        ui->SetOverallProgress(0);
    if (Seek(kHeaderSize) != 0)
        return -1;
    const long total = Size();

    for (long number = 0;; ++number) {
        const bool refresh = number % kRefreshInterval == kRefreshInterval - 1;

        // The name. A zero length leaves the reader's buffer and size untouched, and a
        // short read leaves fewer bytes than the length: both are damage, like a name
        // too long for a path buffer.
        char fileName[TeskUtils::kPathSize];
        fileName[0] = '\0';
        unsigned short nameLength = TeskUtils::kPathSize;
        int nameRead = 0;
        if (ReadPascalStr1(fileName, nameLength, nameRead) != 0 || nameRead != nameLength + 2)
            return -1;
        if (nameLength == 1) {
            if (ui)
                ui->EndDecompress(nullptr, true);
            return 0;
        }

        unsigned char fields[kSizeFieldBytes + kChecksumFieldBytes];
        if (!readExact(*this, fields, sizeof fields))
            return -1;
        const int64_t size = static_cast<int64_t>(getLittleEndian(fields, kSizeFieldBytes));
        const uint32_t saved
            = static_cast<uint32_t>(getLittleEndian(fields + kSizeFieldBytes, kChecksumFieldBytes));
        // Content that runs past the end of the container is damage, found before any file
        // on the disk is touched.
        const long contentStart = GetPos();
        if (contentStart < 0 || size < 0 || size > total - contentStart)
            return -1;
        const long contentEnd = contentStart + static_cast<long>(size);

        // What stands on the disk now. A file that opens exists even when its checksum is 0.
        bool exists = false;
        uint32_t current = 0;
        {
            PFileStream present;
            if (present.Open(fileName, static_cast<int>(AccessRead), 1, OpenExisting) == 0) {
                exists = true;
                current = streamChecksum(present, present.Size());
            }
        }

        char text[TeskUtils::kPathSize + 16];
        if (size == 0) {
            if (ui)
                ui->StartDecompress();
            if (exists)
                continue;
            PFileStream blank;
            blank.Open(fileName, static_cast<int>(AccessWrite), 0, CreateAlways);
            if (ui) {
                recordText(text, sizeof text, "Restore ", fileName);
                ui->EndDecompress(text, refresh);
            }
            log.Dump("Zero saved size for %s; creating blank file", fileName);
            continue;
        }

        if (ui)
            ui->StartDecompress();
        if (exists && current != saved) {
            // Changed since the installation: the user's file stays.
            log.Dump("Saved check sum different than existing one for %s; skipping", fileName);
            recordText(text, sizeof text, "Left ", fileName);
        } else {
            // Missing, or still what the installation wrote: the old content goes back. A
            // failure to open or to copy is not reported.
            PFileStream target;
            if (target.Open(fileName, static_cast<int>(AccessWrite), 0, CreateAlways) == 0) {
                long read = 0;
                long written = 0;
                StreamCopy(target, *this, static_cast<long>(size), read, written, kBlockSize);
                target.Close();
            }
            log.Dump("Restored %s", fileName);
            recordText(text, sizeof text, "Restore ", fileName);
        }
        // The next record begins behind the stored content, however far the copy came.
        if (Seek(contentEnd) != 0)
            return -1;

        if (ui) {
            ui->EndDecompress(text, refresh);
            ui->SetOverallProgress(progressPercent(contentEnd, total));
        }
    }
}
