// Loading a cabinet into memory and giving out its files by index or alias.
#include "installer/installer.h"

#include "foundation/misc/installer_file_utils.h"
#include "foundation/streams/pconsole.h"
#include "foundation/streams/pfile_stream.h"
#include "foundation/strings/bounded_copy.h"
#include "package/large_block.h"
#include "package/solid_decompressor.h"

#include <zlib.h>

#include <climits>
#include <cstring>
#include <memory>
#include <new>

namespace {

// The allocation of the compressed cabinet: a negative size (an offset beyond the end of
// the file) fails like an impossible size, as std::bad_alloc.
unsigned char* allocateCabinet(int size)
{
    if (size < 0)
        throw std::bad_array_new_length();
    unsigned char* block = new (std::nothrow) unsigned char[static_cast<size_t>(size)];
    if (!block)
        throw std::bad_alloc();
    return block;
}

// The three magic words in order: 0 when all match, else the code of the first that
// doesn't. A cabinet too short to hold a word has that word wrong.
int checkMagicWords(const unsigned char* data, long size)
{
    const uint32_t words[3] = { kCabinetMagic1, kCabinetMagic2, kCabinetMagic3 };
    for (int i = 0; i < 3; ++i) {
        if (size < 4 * (i + 1) || readLittleU32(data + 4 * i) != words[i])
            return -5 - i;
    }
    return 0;
}

} // namespace

Installer::CabinetReleaser::~CabinetReleaser()
{
    delete[] owner->cabinetData;
    owner->cabinetData = nullptr;
    if (owner->logStream)
        fclose(owner->logStream);
    owner->logStream = nullptr;
}

int Installer::Init(const char* path, int offset, unsigned int flags)
{
    if (flags & 1) {
        initFlags = flags;
        if (logStream)
            fclose(logStream);
        logStream = InstallerFileUtils::fopen(path, "rb");
        if (!logStream) {
            if (debugConsole)
                debugConsole->Dump("ERROR: Failed to open the installation log file (%s)", path ? path : "");
            return -1;
        }
        return 0;
    }

    TeskUtils::copyBounded(installerPath, path ? path : "", sizeof(installerPath));
    initFlags = flags;
    if (logStream)
        fclose(logStream);
    logStream = nullptr;

    PFileStream stream;
    if (!path || stream.Open(path, PFileStream::AccessRead, 0, PFileStream::OpenExisting) != 0) {
        if (debugConsole)
            debugConsole->Dump("ERROR: Failed to open %s for decompressing!", path ? path : "");
        return -2;
    }
    int size = static_cast<int>(stream.Size() - offset);

    delete[] cabinetData;
    cabinetData = nullptr;
    cabinetDataSize = 0;
    if (debugConsole)
        debugConsole->Dump("Allocating memory for the compressed cabinet (%d B)", size);
    std::unique_ptr<unsigned char[]> compressed;
    try {
        compressed.reset(allocateCabinet(size));
    } catch (const std::bad_alloc& e) {
        if (debugConsole)
            debugConsole->Dump("ERROR: Failed to allocate memory for the compressed cabinet (%s)", e.what());
        return -10;
    }
    adviseHugePages(compressed.get(), static_cast<uint64_t>(size));

    if (debugConsole)
        debugConsole->Dump("Seeking file offset %d", offset);
    if (stream.Seek(offset) != 0)
        return -3;

    if (debugConsole)
        debugConsole->Dump("Reading compressed cabinet into memory");
    int got = 0;
    if (stream.Read(compressed.get(), size, got) != 0 || got != size)
        return -4;
    stream.Close();

    if (debugConsole)
        debugConsole->Dump("Checking compressed cabinet version compatibility");
    int magic = checkMagicWords(compressed.get(), size);
    if (magic != 0)
        return magic;

    if (debugConsole)
        debugConsole->Dump("Starting decompression of data ...");
    long firstRecord = kCabinetHeaderSize;
    long blockSize = size;
    // The factory looks at 20 bytes; a shorter body can only be plain records.
    std::unique_ptr<SolidDecompressor> solid;
    if (size >= kCabinetHeaderSize + kSolidHeaderSize)
        solid.reset(getSolidDecompressor(compressed.get() + kCabinetHeaderSize));
    if (solid) {
        if (debugConsole)
            solid->setDebugConsole(debugConsole);
        cabinetIsSolid = 1;
        unsigned char* records = nullptr;
        long recordsSize = 0;
        int result = solid->decompressData(
            compressed.get() + kCabinetHeaderSize, size - kCabinetHeaderSize, records, recordsSize);
        if (result != 0) {
            if (debugConsole)
                debugConsole->Dump(
                    "ERROR: The solid decompressor failed decompressing the data (%d)!", result);
            return result;
        }
        compressed.reset(records);
        blockSize = recordsSize;
        firstRecord = 0;
    }
    cabinetData = compressed.release();
    cabinetDataSize = blockSize;

    if (debugConsole)
        debugConsole->Dump("Finished decompression. Initializing file headers ...");
    // The stream has been proved whole by the digest and the chunk table; the bounds are
    // checked all the same, and a header that would run past the block counts as a
    // record of unknown kind.
    uint64_t place = static_cast<uint64_t>(firstRecord);
    for (;;) {
        uint32_t tag = 0;
        bool fits = place <= static_cast<uint64_t>(blockSize)
            && static_cast<uint64_t>(blockSize) - place >= static_cast<uint64_t>(kCabinetRecordHeaderSize);
        if (fits)
            tag = readLittleU32(cabinetData + place);
        if (fits && tag == kCabinetEndTag)
            break;
        if (!fits || tag != kCabinetFileTag) {
            delete[] cabinetData;
            cabinetData = nullptr;
            cabinetDataSize = 0;
            return -8;
        }
        CabinetFile& file = cabinetFiles.append();
        file.offset = place;
        std::memcpy(&file.tag, cabinetData + place, kCabinetRecordHeaderSize);
        // The texts are looked up with strcmp: a damaged record that fills a field to
        // its end must not make a lookup run on into the next record.
        file.name[sizeof(file.name) - 1] = '\0';
        file.alias[sizeof(file.alias) - 1] = '\0';
        uint64_t next = place + kCabinetRecordHeaderSize + file.storedSize;
        if (next < place) {
            // A stored size that wraps around the address space can't be a record.
            next = UINT64_MAX;
        }
        place = next;
    }

    if (debugConsole)
        debugConsole->Dump("Finished file headers initialization.");
    return 0;
}

int Installer::Decompress(
    int index, int& size, TeskUtils::PtrArray<unsigned char>& out, unsigned char (*md5)[16]) const
{
    size = 0;
    if (!cabinetData || index < 0 || index >= cabinetFiles.size()) {
        if (debugConsole)
            debugConsole->Dump("WARNING: Attempted to Decompress from non-existing memory (%s)",
                cabinetData ? "Invalid file index" : "No decompressed cabinet");
        return -1;
    }
    const CabinetFile& file = cabinetFiles[index];
    const unsigned char* stored = cabinetData + file.offset + kCabinetRecordHeaderSize;
    // Array sizes follow the low 32 bits of the recorded size.
    long long length = static_cast<uint32_t>(file.size);

    TeskUtils::PtrArray<unsigned char> content;
    if (cabinetIsSolid) {
        if (length + 1 > INT_MAX)
            return -1;
        unsigned char* bytes = content.allocArray(static_cast<int>(length + 1));
        uint64_t copied = file.storedSize < static_cast<uint64_t>(length) ? file.storedSize : length;
        std::memcpy(bytes, stored, static_cast<size_t>(copied));
        std::memset(bytes + copied, 0, static_cast<size_t>(length + 1 - copied));
    } else {
        if (length + 1025 > INT_MAX)
            return -1;
        unsigned char* bytes = content.allocArray(static_cast<int>(length + 1025));
        // A plain cabinet inflates into no room at all: only an empty file comes out.
        uLongf produced = 0;
        if (uncompress(bytes, &produced, stored, static_cast<uLong>(file.storedSize)) != Z_OK)
            return -1;
        length = static_cast<long long>(produced);
        bytes[length] = 0;
    }

    size = static_cast<int>(length);
    out = content;
    if (md5)
        std::memcpy(*md5, file.md5, sizeof(file.md5));
    return 0;
}

int Installer::Decompress(
    const char* alias, int& size, TeskUtils::PtrArray<unsigned char>& out, unsigned char (*md5)[16]) const
{
    if (!alias)
        return -1;
    for (int i = cabinetFiles.size() - 1; i >= 0; --i) {
        if (std::strcmp(cabinetFiles[i].alias, alias) == 0)
            return Decompress(i, size, out, md5);
    }
    return -1;
}

TeskUtils::PtrArray<unsigned char> Installer::GetAliasData(const char* alias, int& size) const
{
    TeskUtils::PtrArray<unsigned char> content;
    if (!alias)
        return content;
    for (int i = cabinetFiles.size() - 1; i >= 0; --i) {
        if (std::strcmp(cabinetFiles[i].alias, alias) == 0) {
            Decompress(i, size, content, nullptr);
            break;
        }
    }
    return content;
}

void Installer::freeCompressData()
{
    delete[] cabinetData;
    cabinetData = nullptr;
    cabinetDataSize = 0;
    cabinetFiles.freeData();
    installTypes.freeData();
    fileSets.freeData();
    fileNames.freeData();
}
