// Throughput of the package layer on a generated payload of mixed files, against md5sum,
// gzip -dc and plain single-threaded zlib as baselines.
//
//   package_bench [--size MB] [--dir DIR] [--keep]
//
// The payload goes into a fresh directory under DIR (default $TMPDIR or /tmp) and is
// removed at the end unless --keep is given. quilb_pack is taken from beside this program.
#include "installer/installer.h"
#include "package/integrity_trailer.h"
#include "package/solid_decompressor.h"

#include <zlib.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

double seconds(const std::function<void()>& work, int repeats = 3)
{
    double best = 1e30;
    for (int i = 0; i < repeats; ++i) {
        auto start = std::chrono::steady_clock::now();
        work();
        double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (took < best)
            best = took;
    }
    return best;
}

void run(const std::string& command)
{
    if (std::system(command.c_str()) != 0) {
        std::fprintf(stderr, "package_bench: failed: %s\n", command.c_str());
        std::exit(1);
    }
}

std::string ownDirectory()
{
    char buffer[PATH_MAX];
    ssize_t length = readlink("/proc/self/exe", buffer, sizeof(buffer) - 1);
    buffer[length > 0 ? length : 0] = '\0';
    std::string path = buffer;
    return path.substr(0, path.rfind('/'));
}

long fileSize(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0 ? static_cast<long>(info.st_size) : 0;
}

bool writeFile(const std::string& path, const std::string& data)
{
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return false;
    bool ok = std::fwrite(data.data(), 1, data.size(), file) == data.size();
    return std::fclose(file) == 0 && ok;
}

// Four kinds of content: source-like text, random bytes, long runs, and binary tables.
std::string makeContent(size_t size, int kind, unsigned seed)
{
    std::string out(size, '\0');
    uint64_t x = seed * 0x9E3779B97F4A7C15ull + 1;
    static const char* words[] = { "install ", "package ", "return ", "if (", "} else {\n", "int ",
        "const char* ", "for (int i = 0; ", "// comment\n", "std::string ", "0x", "1234", ";\n    " };
    size_t i = 0;
    while (i < size) {
        x ^= x << 13;
        x ^= x >> 7;
        x ^= x << 17;
        switch (kind) {
        case 0: {
            const char* word = words[x % 13];
            for (size_t k = 0; word[k] && i < size; ++k)
                out[i++] = word[k];
            break;
        }
        case 1:
            for (int k = 0; k < 8 && i < size; ++k)
                out[i++] = static_cast<char>(x >> (8 * k));
            break;
        case 2: {
            size_t run = 1 + x % 300;
            for (size_t k = 0; k < run && i < size; ++k)
                out[i++] = static_cast<char>((x >> 40) & 0x3);
            break;
        }
        default:
            for (int k = 0; k < 4 && i < size; ++k, ++i)
                out[i] = static_cast<char>(k == 0 ? (x >> 8) & 0x1F : (k == 3 ? 0 : i & 0xFF));
            break;
        }
    }
    return out;
}

long peakKilobytes(const std::function<void()>& work)
{
    pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    struct rusage usage;
    wait4(child, &status, 0, &usage);
    return usage.ru_maxrss;
}

} // namespace

int main(int argc, char** argv)
{
    long megabytes = 220;
    std::string base = std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp";
    bool keep = false;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "--size" && i + 1 < argc)
            megabytes = std::atol(argv[++i]);
        else if (arg == "--dir" && i + 1 < argc)
            base = argv[++i];
        else if (arg == "--keep")
            keep = true;
        else {
            std::fprintf(stderr, "usage: package_bench [--size MB] [--dir DIR] [--keep]\n");
            return 1;
        }
    }
    std::string dir = base + "/quilb-bench.XXXXXX";
    if (!mkdtemp(&dir[0])) {
        std::perror("mkdtemp");
        return 1;
    }
    const std::string pack = ownDirectory() + "/quilb_pack";

    // Payload: files of 4 kinds and varied sizes, together at least the requested size.
    std::printf("payload: %ld MB of mixed files in %s\n", megabytes, dir.c_str());
    run("mkdir -p " + dir + "/payload");
    std::string templateText = "<QuilbGroupInstallation><Installation><FileSet Name=\"All\">\n";
    size_t total = 0, target = static_cast<size_t>(megabytes) << 20;
    for (int n = 0; total < target; ++n) {
        size_t size = n % 5 == 0 ? (24u << 20)
            : n % 5 == 1         ? (3u << 20) + n * 7919
            : n % 5 == 2         ? 40000u + n
                                 : (9u << 20) + n;
        if (size > target - total)
            size = target - total;
        std::string name = "payload/file" + std::to_string(n) + ".dat";
        if (!writeFile(dir + "/" + name, makeContent(size, n % 4, static_cast<unsigned>(n))))
            return 1;
        templateText += "<FN Dest=\"[INSTALLDIR]\">" + name + "</FN>\n";
        total += size;
    }
    templateText += "</FileSet></Installation></QuilbGroupInstallation>\n";
    writeFile(dir + "/install.xml", templateText);
    std::string launcher = makeContent(60000, 3, 99);
    launcher.replace(30000, 20, std::string("_BINARYIMAGEOFFSET_", 20));
    writeFile(dir + "/launcher", launcher);
    const double mb = static_cast<double>(total) / (1 << 20);

    const std::string package = dir + "/product.pkg", installer = dir + "/setup.bin";
    double packTime = seconds([&] { run(pack + " package -t " + dir + "/install.xml -o " + package); }, 1);
    double installerTime = seconds(
        [&] {
            run(pack + " installer -p " + package + " --launcher " + dir + "/launcher --frontend-dir " + dir
                + " -o " + installer + " 2>/dev/null");
        },
        1);
    const double packageMb = fileSize(package) / double(1 << 20),
                 installerMb = fileSize(installer) / double(1 << 20);
    std::printf("content %.1f MB, package %.1f MB (%.1f%%), installer %.1f MB\n\n", mb, packageMb,
        100 * packageMb / mb, installerMb);

    // Verification against md5sum, both on a warm page cache.
    int verified = 0;
    run("cat " + installer + " > /dev/null");
    double verifyTime = seconds([&] { verified = verifyFileMD5Checksum(installer.c_str()); });
    double md5sumTime = seconds([&] { run("md5sum " + installer + " > /dev/null"); });

    // Init on the product package: read + inflate.
    int initCode = 0;
    long streamSize = 0;
    double initTime = seconds([&] {
        Installer engine;
        initCode = engine.Init(package.c_str(), 0, 0);
        streamSize = engine.cabinetDataSize;
    });
    const double streamMb = streamSize / double(1 << 20);

    // Baselines for the inflate: zlib's uncompress on the same chunks in one thread, in
    // memory, and gzip -dc on a gzip file of the same record stream.
    std::string packed;
    {
        FILE* file = std::fopen(package.c_str(), "rb");
        packed.resize(static_cast<size_t>(fileSize(package)));
        if (!file || std::fread(&packed[0], 1, packed.size(), file) != packed.size())
            return 1;
        std::fclose(file);
    }
    const unsigned char* container = reinterpret_cast<const unsigned char*>(packed.data()) + 72;
    int32_t chunks = 0;
    std::memcpy(&chunks, container + 16, 4);
    std::vector<unsigned char> stream(static_cast<size_t>(streamSize));
    long largestChunk = 0;
    double zlibTime = seconds([&] {
        for (int i = 0; i < chunks; ++i) {
            int64_t entry[4];
            std::memcpy(entry, container + 20 + 32 * i, 32);
            uLongf length = static_cast<uLongf>(entry[1]);
            uncompress(stream.data() + entry[0], &length, container + entry[2], static_cast<uLong>(entry[3]));
            if (entry[3] > largestChunk)
                largestChunk = static_cast<long>(entry[3]);
        }
    });
    // The same into a fresh block each time, as a loader must; and the solid decompressor
    // alone on the container in memory, which does that plus its table checks.
    double zlibFreshTime = seconds([&] {
        std::unique_ptr<unsigned char[]> fresh(new unsigned char[static_cast<size_t>(streamSize)]);
        for (int i = 0; i < chunks; ++i) {
            int64_t entry[4];
            std::memcpy(entry, container + 20 + 32 * i, 32);
            uLongf length = static_cast<uLongf>(entry[1]);
            uncompress(fresh.get() + entry[0], &length, container + entry[2], static_cast<uLong>(entry[3]));
        }
    });
    double solidTime = seconds([&] {
        ZlibSolidDecompressor solid;
        unsigned char* out = nullptr;
        long outSize = 0;
        if (solid.decompressData(container, static_cast<long>(packed.size() - 72), out, outSize) == 0)
            delete[] out;
    });
    writeFile(dir + "/stream", std::string(reinterpret_cast<char*>(stream.data()), stream.size()));
    std::vector<unsigned char>().swap(stream);
    std::string().swap(packed);
    run("gzip -9 -c " + dir + "/stream > " + dir + "/stream.gz && rm " + dir + "/stream");
    run("cat " + dir + "/stream.gz > /dev/null");
    double gzipTime = seconds([&] { run("gzip -dc " + dir + "/stream.gz > /dev/null"); });

    // Every alias of the package, one copy each.
    Installer engine;
    engine.Init(package.c_str(), 0, 0);
    long copied = 0, files = 0;
    double decompressTime = seconds([&] {
        copied = 0;
        files = engine.cabinetFiles.size();
        for (int i = 0; i < engine.cabinetFiles.size(); ++i) {
            int size = 0;
            TeskUtils::PtrArray<unsigned char> out;
            if (engine.Decompress(engine.cabinetFiles[i].alias, size, out, nullptr) == 0)
                copied += size;
        }
    });
    engine.freeCompressData();

    // Peak memory of a process that only loads the package, less one that does nothing.
    long idleKb = peakKilobytes([] {});
    long initKb = peakKilobytes([&] {
        Installer loader;
        loader.Init(package.c_str(), 0, 0);
    });

    std::printf("%-34s %9s %10s %s\n", "operation", "time (s)", "MB/s", "");
    std::printf("%-34s %9.3f %10.1f  result %d; %.2fx md5sum\n", "verifyFileMD5Checksum (installer)",
        verifyTime, installerMb / verifyTime, verified, md5sumTime / verifyTime);
    std::printf("%-34s %9.3f %10.1f\n", "md5sum (installer)", md5sumTime, installerMb / md5sumTime);
    std::printf("%-34s %9.3f %10.1f  result %d; %.2fx zlib (reused block), %.2fx gzip -dc\n",
        "Init (read + inflate)", initTime, streamMb / initTime, initCode, zlibTime / initTime,
        gzipTime / initTime);
    std::printf("%-34s %9.3f %10.1f  %.2fx zlib into a fresh block\n", "decompressData (container in memory)",
        solidTime, streamMb / solidTime, zlibFreshTime / solidTime);
    std::printf(
        "%-34s %9.3f %10.1f\n", "zlib uncompress, 1 thread, fresh", zlibFreshTime, streamMb / zlibFreshTime);
    std::printf("%-34s %9.3f %10.1f\n", "zlib uncompress, 1 thread, reused", zlibTime, streamMb / zlibTime);
    std::printf("%-34s %9.3f %10.1f\n", "gzip -dc (same stream)", gzipTime, streamMb / gzipTime);
    std::printf("%-34s %9.3f %10.1f  %ld files, %.1f MB\n", "Decompress of every alias", decompressTime,
        copied / double(1 << 20) / decompressTime, files, copied / double(1 << 20));
    std::printf("%-34s %9.3f %10.1f  (content MB/s)\n", "quilb_pack package", packTime, mb / packTime);
    std::printf("%-34s %9.3f %10.1f\n", "quilb_pack installer", installerTime, installerMb / installerTime);
    double expectedMb = packageMb + streamMb + largestChunk / double(1 << 20);
    std::printf(
        "\npeak memory of Init: %.1f MB above an idle process (%.1f MB total); compressed + uncompressed + "
        "largest chunk = %.1f MB\n",
        (initKb - idleKb) / 1024.0, initKb / 1024.0, expectedMb);

    if (!keep)
        run("rm -rf " + dir);
    return 0;
}
