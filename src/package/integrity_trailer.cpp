#include "package/integrity_trailer.h"

#include "foundation/strings/portable.h"
#include "package/md5.h"

#include <cstdio>
#include <cstring>

const char* checksummingSignatures[12];
const char* allSolidDecompressors[12];

// Kept in the image beside the markers above; nothing refers to it.
extern const char oldChecksummingMarker[];
__attribute__((used)) const char oldChecksummingMarker[] = "OLD_CHECKSUMMING";

namespace {

const long kDigestBlock = 4096;

// Closes the file when the check leaves, whatever way it leaves.
struct FileCloser
{
    FILE* file;
    ~FileCloser()
    {
        if (file)
            fclose(file);
    }
};

} // namespace

int verifyFileMD5Checksum(const char* path)
{
    checksummingSignatures[0] = "SupportsSignedInstallers";
    if (!path)
        return 0;
    FileCloser closer { teskutils_fopen(path, "rb") };
    FILE* file = closer.file;
    if (!file)
        return 0;

    if (fseek(file, 0, SEEK_END) != 0)
        return 0;
    long size = ftell(file);
    if (size < 24)
        return 0;

    // The tail in which the marker is searched, backward from the end.
    long n = size < kTrailerSearchWindow ? size : kTrailerSearchWindow;
    unsigned char tail[kTrailerSearchWindow];
    if (fseek(file, size - n, SEEK_SET) != 0 || fread(tail, 1, n, file) != static_cast<size_t>(n))
        return 0;

    long markerAt = -1;
    int markerLength = 0;
    const char* marker = nullptr;
    for (long i = n - 1; i >= 0; --i) {
        if (n - i >= kTrailerMarkerV1Length
            && std::memcmp(tail + i, kTrailerMarkerV1, kTrailerMarkerV1Length) == 0) {
            marker = kTrailerMarkerV1;
            markerLength = kTrailerMarkerV1Length;
        } else if (n - i >= kTrailerMarkerV2Length
            && std::memcmp(tail + i, kTrailerMarkerV2, kTrailerMarkerV2Length) == 0) {
            marker = kTrailerMarkerV2;
            markerLength = kTrailerMarkerV2Length;
        }
        if (marker) {
            markerAt = i + size - n;
            break;
        }
    }
    if (!marker)
        return 0;

    long start = marker == kTrailerMarkerV1 ? 0 : kTrailerV2Skip;
    long length = markerAt - start;
    if (length <= 0)
        return 0;
    if (fseek(file, start, SEEK_SET) != 0)
        return 0;

    MD5Context context;
    MD5Init(&context);
    unsigned char block[kDigestBlock];
    while (length > 0) {
        long want = length < kDigestBlock ? length : kDigestBlock;
        if (fread(block, 1, want, file) != static_cast<size_t>(want))
            return 0;
        MD5Update(&context, block, static_cast<unsigned long>(want));
        length -= want;
    }
    unsigned char digest[16];
    MD5Final(digest, &context);

    unsigned char found[16];
    if (fread(block, 1, markerLength, file) != static_cast<size_t>(markerLength)
        || std::memcmp(block, marker, markerLength) != 0)
        return 0;
    if (fread(found, 1, 16, file) != 16)
        return 0;
    return std::memcmp(found, digest, 16) == 0 ? 1 : 0;
}
