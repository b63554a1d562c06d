#pragma once
// The integrity trailer at the end of an installer file.
//
// v2 form (written today): "v2sum: " and the raw 16-byte MD5 of the file from byte
// 5000 up to the first byte of the marker. The first 5000 bytes are left out.
// v1 form (still read): "MD5SUM: " and the raw MD5 of the file from byte 0 up to the
// marker.
// Nothing follows the trailer; it is the last 23 (v2) or 24 (v1) bytes of the file.

constexpr char kTrailerMarkerV2[] = "v2sum: ";
constexpr int kTrailerMarkerV2Length = 7;
constexpr char kTrailerMarkerV1[] = "MD5SUM: ";
constexpr int kTrailerMarkerV1Length = 8;
// Bytes at the start of the file that a v2 digest does not cover.
constexpr long kTrailerV2Skip = 5000;
// How far from the end of the file the marker is searched for.
constexpr long kTrailerSearchWindow = 20000;

// Marker tables: each holds, in its first slot, a text that says which formats this
// image reads, so that the texts remain in the image for outside inspection.
// verifyFileMD5Checksum stores "SupportsSignedInstallers" in checksummingSignatures[0],
// getSolidDecompressor stores "SupportsSolid64bitSizeZlib" in allSolidDecompressors[0].
// Nothing in the program reads them.
extern const char* checksummingSignatures[12];
extern const char* allSolidDecompressors[12];

// Checks the trailer of the file at `path`: the marker nearest the end within the last
// 20000 bytes decides the form, and the digest behind it must match.
// Returns 1 if it matches, 0 for any failure (no file, shorter than 24 bytes, no
// marker, nothing to digest, read error, mismatch). The file is read once, in blocks
// of 4096 bytes; it is closed on every path.
int verifyFileMD5Checksum(const char* path);
