#pragma once
// BackupFile: the single-file container of the files that an installation overwrote,
// written during the run and played back when the installation is undone. Files are
// stored whole and uncompressed, copied through 32768-byte buffers.
//
// Format (integers little-endian):
//
//   offset 0   39 bytes   header: "Quilb Software installer backup file.\n" and a NUL
//   offset 39  records, one behind the other:
//                2 bytes  name length n (u16), counting the terminating NUL
//                n bytes  the absolute path with its NUL
//                8 bytes  size of the stored file (i64)
//                4 bytes  checksum (u32) of the content that the installation wrote
//                         over the file, not of the stored content
//                size     the stored content as it stood on the disk
//   end        3 bytes    end mark: a name of length 1 holding one NUL (01 00 00)
//
// Checksum of a byte sequence of length L: start with the low 32 bits of L; in blocks of
// 32768 bytes XOR in each whole little-endian 32-bit word, then each of the 0 to 3
// remaining bytes of a (last) block as a value 0..255. The empty sequence gives 0.
#include "foundation/streams/pfile_stream.h"
#include "foundation/strings/error_code.h"

class InstallerUI;
class PConsole;

class BackupFile : public PFileStream
{
public:
    enum Mode { ModeClosed = 0, ModeRead = 1, ModeWrite = 2 };
    // The 38 characters of the header; the header on disk is these and a NUL.
    static const char kHeader[];
    static constexpr int kHeaderSize = 39;

    BackupFile();
    // Closes as Close does, so that a container being written gets its end mark even when
    // an exception passes.
    ~BackupFile() override;

    // Makes or empties `path` and writes the header. A failed open still leaves the mode
    // at write, with the error flag set, so that every addFile fails with its own text.
    // Gives 0 or the errno of the open or the write.
    int OpenWrite(const char* path);
    // Opens `path` and passes over the 39 header bytes without looking at them. A failed
    // open leaves the container closed. Gives 0 or the errno.
    int OpenRead(const char* path);
    // In write mode the end mark is written first; then the stream is closed, mode and
    // error flag go to 0. Gives 0 or the errno of closing.
    int Close() override;

    // Stores the file at `path` (its buffer bounded by `pathSize`) with `checksum`, or
    // with the checksum of the file on the disk when `checksumGiven` is false. A file that
    // itself begins with the header is skipped with success. Errors, all with where
    // "addFile" and code -1: "Not in write mode", "There is a previous error", "Error
    // writing file name", "Error writing file size", "Error writing check sum", "Error
    // opening file", "Error copying stream (%i)", "Copy stream mismatch: wanted %i
    // bytes, read %i, written %i". After an error the container refuses further files
    // and the stream stands where the failed record began.
    TeskUtils::ErrorCode addFile(const char* path, int pathSize, unsigned checksum, bool checksumGiven);

    // Restores every record (read mode): a file changed since the installation is left,
    // a missing or unchanged one is written back, a record of size 0 makes an empty file
    // where none is. Lines go to `log`, progress and "Restore "/"Left " texts to `ui`
    // when not null. 0 at the end mark, -1 when not in read mode or on any damage of the
    // record structure (records restored so far stay). A record whose stored content runs
    // past the end of the container is damage found before its file is touched; after a
    // restore that failed, the next record is still read from behind the stored content.
    int unpackAll(PConsole& log, InstallerUI* ui);

    // The checksum of `size` bytes at `data`, by the rule above.
    static unsigned checksum(const unsigned char* data, long size);
    // The checksum of the file at `path`; 0 when it can't be opened; a failing read ends
    // the computation with what was reached.
    static unsigned fileChecksum(const char* path);

    int mode = ModeClosed;
    bool hasError = false;
};
