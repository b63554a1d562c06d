#pragma once
// Writing packages (cabinets) and self-extracting installers.
//
// A package is the cabinet header, then a solid container of the record stream: one
// record per file (616-byte header and the content as it is), then the end record. The
// stream is cut into equal chunks, each compressed by zlib on its own. An installer is
// the launcher image with its offset word patched, the cabinet behind it, and the v2
// trailer: "v2sum: " and the MD5 of the file from byte 5000 up to the marker.
#include <cstdint>
#include <string>
#include <vector>

namespace quilbpack {

// One file to pack: its content comes from `sourcePath`, or, with `inMemory` set, from
// `content`.
struct PackItem
{
    std::string alias;
    std::string name; // file name without directories, as the record stores it
    std::string sourcePath;
    bool inMemory = false;
    std::string content;
};

struct PackOptions
{
    int chunks = 8; // 1 to 256
    int level = 9; // zlib level, 0 to 9
};

// Everything a failure needs to say; empty on success.
struct PackError
{
    std::string message;
    explicit operator bool() const { return !message.empty(); }
};

// Packs are limited so that every reader can hold their sizes in 32-bit signed integers.
constexpr int64_t kMaxPackSize = (int64_t(1) << 31) - 1;

// Builds a complete package of `items` in their order into `out`.
PackError buildPackage(const std::vector<PackItem>& items, const PackOptions& options, std::string& out);

// Checks that a launcher image can carry a package: it holds the offset word exactly once
// (`at` receives its place) and stays below 2 GiB.
PackError checkLauncherImage(const std::string& launcherImage, size_t& at);

// Builds an installer from the launcher image and a package; `installer` receives the
// whole file, trailer included.
PackError buildInstaller(
    const std::string& launcherImage, const std::string& package, std::string& installer);

// Reads a whole file; false with the reason in `error`.
bool readWholeFile(const std::string& path, std::string& out, std::string& error);

// Writes `data` to a new file beside `path`, then renames it over `path`, so that `path`
// is either left as it was or replaced whole. `mode` is applied before the rename.
PackError writeFileAtomically(const std::string& path, const std::string& data, unsigned mode);

} // namespace quilbpack
