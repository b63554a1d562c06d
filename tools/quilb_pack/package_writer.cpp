#include "quilb_pack/package_writer.h"

#include "package/cabinet_format.h"
#include "package/integrity_trailer.h"
#include "package/md5.h"
#include "package/solid_decompressor.h"

#include <zlib.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace quilbpack {

namespace {

void putU32(std::string& out, uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<char>(value >> (8 * i)));
}

void putU64(std::string& out, uint64_t value)
{
    for (int i = 0; i < 8; ++i)
        out.push_back(static_cast<char>(value >> (8 * i)));
}

void putField(std::string& out, const std::string& text, size_t width)
{
    std::string field(width, '\0');
    std::memcpy(&field[0], text.data(), std::min(text.size(), width - 1));
    out += field;
}

// PNG and JPEG files carry the flag 1 in their record: known by the name's extension or
// by the content's signature.
uint32_t fileFlags(const std::string& name, const std::string& content, size_t begin)
{
    size_t dot = name.rfind('.');
    if (dot != std::string::npos) {
        std::string extension = name.substr(dot + 1);
        for (char& c : extension)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        if (extension == "png" || extension == "jpg" || extension == "jpeg")
            return 1;
    }
    static const unsigned char png[] = { 0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n' };
    static const unsigned char jpeg[] = { 0xFF, 0xD8, 0xFF };
    size_t size = content.size() - begin;
    if (size >= sizeof(png) && std::memcmp(content.data() + begin, png, sizeof(png)) == 0)
        return 1;
    if (size >= sizeof(jpeg) && std::memcmp(content.data() + begin, jpeg, sizeof(jpeg)) == 0)
        return 1;
    return 0;
}

std::string recordHeader(uint32_t tag, uint64_t size, uint32_t flags, const unsigned char* md5,
    const std::string& name, const std::string& alias)
{
    std::string header;
    header.reserve(kCabinetRecordHeaderSize);
    putU32(header, tag);
    putU64(header, size);
    putU64(header, size);
    putU32(header, flags);
    header.append(reinterpret_cast<const char*>(md5), 16);
    putField(header, name, kCabinetNameSize);
    putField(header, alias, kCabinetAliasSize);
    return header;
}

std::string tooLarge(const char* what, int64_t size)
{
    return std::string(what) + " would be " + std::to_string(size)
        + " bytes; it must stay below 2 GiB (2147483648 bytes)";
}

// Appends the record of one item to the stream, reading its file straight into place.
PackError appendRecord(std::string& stream, const PackItem& item, uint64_t& contentTotal)
{
    if (item.alias.size() > static_cast<size_t>(kCabinetMaxAliasLength))
        return { "alias '" + item.alias + "' is " + std::to_string(item.alias.size())
            + " characters long; at most " + std::to_string(kCabinetMaxAliasLength) + " are allowed" };
    size_t headerAt = stream.size();
    stream.append(kCabinetRecordHeaderSize, '\0');
    size_t contentAt = stream.size();
    if (item.inMemory) {
        stream += item.content;
    } else {
        std::string content, error;
        if (!readWholeFile(item.sourcePath, content, error))
            return { "can't read '" + item.sourcePath + "' (alias '" + item.alias + "'): " + error };
        if (stream.size() + content.size() > static_cast<uint64_t>(kMaxPackSize))
            return { tooLarge(
                "the package's content", static_cast<int64_t>(stream.size() + content.size())) };
        stream += content;
    }
    uint64_t size = stream.size() - contentAt;
    if (stream.size() > static_cast<uint64_t>(kMaxPackSize))
        return { tooLarge("the package's content", static_cast<int64_t>(stream.size())) };
    unsigned char digest[16];
    MD5Context context;
    MD5Init(&context);
    MD5Update(&context, stream.data() + contentAt, static_cast<unsigned long>(size));
    MD5Final(digest, &context);
    std::string header = recordHeader(
        kCabinetFileTag, size, fileFlags(item.name, stream, contentAt), digest, item.name, item.alias);
    stream.replace(headerAt, header.size(), header);
    contentTotal += size;
    return {};
}

// Compresses chunk i of n of the stream; chunks are independent and go to worker threads.
void compressChunks(const std::string& stream, int chunks, int level, std::vector<std::string>& packed,
    std::vector<int>& results)
{
    std::atomic<int> next(0);
    auto work = [&] {
        for (int i = next++; i < chunks; i = next++) {
            uint64_t n = stream.size();
            size_t begin = static_cast<size_t>(n * i / chunks),
                   end = static_cast<size_t>(n * (i + 1) / chunks);
            uLongf size = compressBound(end - begin);
            packed[i].resize(size);
            results[i] = compress2(reinterpret_cast<Bytef*>(&packed[i][0]), &size,
                reinterpret_cast<const Bytef*>(stream.data() + begin), end - begin, level);
            packed[i].resize(size);
        }
    };
    unsigned workers = std::thread::hardware_concurrency();
    if (workers < 1)
        workers = 1;
    if (workers > static_cast<unsigned>(chunks))
        workers = static_cast<unsigned>(chunks);
    std::vector<std::thread> threads;
    for (unsigned w = 1; w < workers; ++w)
        threads.emplace_back(work);
    work();
    for (std::thread& t : threads)
        t.join();
}

} // namespace

PackError buildPackage(const std::vector<PackItem>& items, const PackOptions& options, std::string& out)
{
    if (options.chunks < 1 || options.chunks > kSolidMaxChunks)
        return { "the number of chunks must be from 1 to " + std::to_string(kSolidMaxChunks) };
    if (options.level < 0 || options.level > 9)
        return { "the compression level must be from 0 to 9" };

    std::string stream;
    uint64_t contentTotal = 0;
    for (const PackItem& item : items) {
        PackError error = appendRecord(stream, item, contentTotal);
        if (error)
            return error;
    }
    static const unsigned char noDigest[16] = {};
    stream += recordHeader(kCabinetEndTag, 0, 0, noDigest, "", "");
    // The end record is all zero behind its tag.
    if (stream.size() > static_cast<uint64_t>(kMaxPackSize))
        return { tooLarge("the package's content", static_cast<int64_t>(stream.size())) };

    const int chunks = options.chunks;
    std::vector<std::string> packed(chunks);
    std::vector<int> results(chunks, Z_OK);
    compressChunks(stream, chunks, options.level, packed, results);
    for (int i = 0; i < chunks; ++i)
        if (results[i] != Z_OK)
            return { "zlib failed on chunk " + std::to_string(i) + " (" + std::to_string(results[i]) + ")" };

    out.clear();
    putU32(out, kCabinetMagic1);
    putU32(out, kCabinetMagic2);
    putU32(out, kCabinetMagic3);
    putU64(out, contentTotal);
    putU64(out, contentTotal);
    putU32(out, static_cast<uint32_t>(items.size()));
    out.append(kCabinetHeaderSize - out.size(), '\0');

    out.append(kSolidMagic, sizeof(kSolidMagic));
    putU32(out, kSolidVersion);
    putU32(out, kSolidFormatDate);
    putU32(out, static_cast<uint32_t>(chunks));
    uint64_t place = kSolidHeaderSize + static_cast<uint64_t>(kSolidChunkEntrySize) * chunks;
    uint64_t n = stream.size();
    for (int i = 0; i < chunks; ++i) {
        uint64_t begin = n * i / chunks, end = n * (i + 1) / chunks;
        putU64(out, begin);
        putU64(out, end - begin);
        putU64(out, place);
        putU64(out, packed[i].size());
        place += packed[i].size();
    }
    std::string().swap(stream);
    for (std::string& chunk : packed) {
        out += chunk;
        std::string().swap(chunk);
    }
    if (out.size() > static_cast<uint64_t>(kMaxPackSize))
        return { tooLarge("the package", static_cast<int64_t>(out.size())) };
    return {};
}

namespace {

// The text in the launcher's data whose first four bytes are replaced by the length of the
// launcher image (the file offset of the cabinet). It lives here and in the launcher only,
// so that the image holds exactly one copy.
const char kImageOffsetMarker[] = "_BINARYIMAGEOFFSET_";
const size_t kImageOffsetMarkerSize = 20; // with its NUL

} // namespace

PackError checkLauncherImage(const std::string& launcherImage, size_t& at)
{
    const std::string marker(kImageOffsetMarker, kImageOffsetMarkerSize);
    at = launcherImage.find(marker);
    if (at == std::string::npos)
        return { "the launcher image holds no offset word (\"" + std::string(kImageOffsetMarker)
            + "\"); is it a launcher, and not one that already carries a package?" };
    // With two copies there is no telling which one the launcher reads.
    if (launcherImage.find(marker, at + 1) != std::string::npos)
        return { "the launcher image holds the offset word (\"" + std::string(kImageOffsetMarker)
            + "\") more than once; it can't be patched safely" };
    if (launcherImage.size() >= static_cast<uint64_t>(kMaxPackSize))
        return { tooLarge("the launcher image", static_cast<int64_t>(launcherImage.size())) };
    return {};
}

PackError buildInstaller(const std::string& launcherImage, const std::string& package, std::string& installer)
{
    size_t at = 0;
    PackError imageError = checkLauncherImage(launcherImage, at);
    if (imageError)
        return imageError;
    uint64_t total = launcherImage.size() + package.size() + kTrailerMarkerV2Length + 16;
    if (total > static_cast<uint64_t>(kMaxPackSize))
        return { tooLarge("the installer", static_cast<int64_t>(total)) };
    if (launcherImage.size() + package.size() <= static_cast<uint64_t>(kTrailerV2Skip))
        return { "the installer would be too short for its checksum: image and package must exceed "
            + std::to_string(kTrailerV2Skip) + " bytes" };

    installer.clear();
    installer.reserve(total);
    installer = launcherImage;
    uint32_t offset = static_cast<uint32_t>(launcherImage.size());
    for (int i = 0; i < 4; ++i)
        installer[at + i] = static_cast<char>(offset >> (8 * i));
    installer += package;

    unsigned char digest[16];
    MD5Context context;
    MD5Init(&context);
    MD5Update(&context, installer.data() + kTrailerV2Skip, installer.size() - kTrailerV2Skip);
    MD5Final(digest, &context);
    installer.append(kTrailerMarkerV2, kTrailerMarkerV2Length);
    installer.append(reinterpret_cast<const char*>(digest), 16);
    return {};
}

bool readWholeFile(const std::string& path, std::string& out, std::string& error)
{
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = std::strerror(errno);
        return false;
    }
    struct stat info;
    if (fstat(fd, &info) != 0) {
        error = std::strerror(errno);
        ::close(fd);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        error = S_ISDIR(info.st_mode) ? "it is a directory" : "it is not a regular file";
        ::close(fd);
        return false;
    }
    if (info.st_size >= kMaxPackSize) {
        error = tooLarge("the file", info.st_size);
        ::close(fd);
        return false;
    }
    out.resize(static_cast<size_t>(info.st_size));
    size_t done = 0;
    while (done < out.size()) {
        ssize_t got = ::read(fd, &out[done], out.size() - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            error = got < 0 ? std::strerror(errno) : "the file shrank while it was read";
            ::close(fd);
            return false;
        }
        done += static_cast<size_t>(got);
    }
    ::close(fd);
    return true;
}

PackError writeFileAtomically(const std::string& path, const std::string& data, unsigned mode)
{
    std::string temp = path + ".XXXXXX";
    int fd = mkstemp(&temp[0]);
    if (fd < 0)
        return { "can't create a file beside '" + path + "': " + std::strerror(errno) };
    auto fail = [&](const std::string& what) {
        std::string message = what + " '" + temp + "': " + std::strerror(errno);
        if (fd >= 0)
            ::close(fd);
        ::unlink(temp.c_str());
        return PackError { message };
    };
    size_t done = 0;
    while (done < data.size()) {
        ssize_t wrote = ::write(fd, data.data() + done, data.size() - done);
        if (wrote < 0 && errno == EINTR)
            continue;
        if (wrote <= 0)
            return fail("can't write");
        done += static_cast<size_t>(wrote);
    }
    mode_t mask = umask(0);
    umask(mask);
    if (fchmod(fd, static_cast<mode_t>(mode) & ~mask) != 0)
        return fail("can't set the mode of");
    if (fsync(fd) != 0)
        return fail("can't flush");
    int closed = ::close(fd);
    fd = -1;
    if (closed != 0)
        return fail("can't close");
    if (::rename(temp.c_str(), path.c_str()) != 0)
        return fail("can't rename into place");
    return {};
}

} // namespace quilbpack
