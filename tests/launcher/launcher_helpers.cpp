#include "launcher/launcher_helpers.h"

#include "package/md5.h"
#include "support/paths.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <zlib.h>

namespace quilbtest {

std::string frontEndScriptText(
    const std::string& recordDir, const std::string& name, const FrontEndScript& behaviour)
{
    // Without a record directory the script records nothing, so that it never writes
    // outside the test's own directories.
    const bool record = !recordDir.empty();
    std::ostringstream script;
    script << "#!/bin/sh\n"
           << "rec=" << shellQuote(recordDir) << "\n"
           << "if [ \"$1\" = -testRun ]; then\n";
    if (record)
        script << "  echo " << shellQuote(name) << " >> \"$rec/tested\"\n";
    script << "  exit " << behaviour.testRunExit << "\n"
           << "fi\n";
    if (record)
        script << "out=\"$rec/" << name << ".run\"\n"
               << ": > \"$out\"\n"
               << "for a in \"$0\" \"$@\"; do printf 'arg: %s\\n' \"$a\" >> \"$out\"; done\n"
               << "printf 'dir: %s\\n' \"$QUILB_INSTALLER_DIR\" >> \"$out\"\n"
               << "for a in \"$@\"; do case \"$a\" in -bin=*) printf 'bin: %s\\n' \"$(cat \"${a#-bin=}\")\" "
                  ">> \"$out\";; esac; "
                  "done\n";
    if (behaviour.runSignal)
        script << "kill -" << behaviour.runSignal << " $$\n";
    script << "exit " << behaviour.runExit << "\n";
    return script.str();
}

FrontEndRecord readFrontEndRecord(const std::string& recordDir, const std::string& name)
{
    FrontEndRecord record;
    std::string path = recordDir + "/" + name + ".run";
    if (!fileExists(path))
        return record;
    record.ran = true;
    std::istringstream lines(readFile(path));
    std::string line;
    while (std::getline(lines, line)) {
        if (line.rfind("arg: ", 0) == 0)
            record.args.push_back(line.substr(5));
        else if (line.rfind("dir: ", 0) == 0)
            record.installerDir = line.substr(5);
        else if (line.rfind("bin: ", 0) == 0)
            record.binContent = line.substr(5);
    }
    return record;
}

std::vector<std::string> testedFrontEnds(const std::string& recordDir)
{
    std::vector<std::string> names;
    std::istringstream lines(readFile(recordDir + "/tested"));
    std::string line;
    while (std::getline(lines, line))
        names.push_back(line);
    return names;
}

std::string fnElement(const std::string& alias, const std::string& dest, const std::string& source,
    const std::string& extraAttributes)
{
    std::string element = "<FN";
    if (!alias.empty())
        element += " Alias=\"" + alias + "\"";
    element += " Dest=\"" + dest + "\"";
    if (!extraAttributes.empty())
        element += " " + extraAttributes;
    return element + ">" + source + "</FN>\n";
}

std::string fileListXml(const std::string& elements)
{
    return "<?xml version=\"1.0\"?>\n<QuilbGroupInstallation>\n<Installation>\n"
           "<FileSet Name=\"launcher\">\n"
        + elements + "</FileSet>\n</Installation>\n</QuilbGroupInstallation>\n";
}

InstallerContent standardContent(const std::string& recordDir, const FrontEndScript& gtk2,
    const FrontEndScript& x11, const FrontEndScript& console, const std::string& binaryText)
{
    InstallerContent content;
    std::string elements = fnElement("binary", "install_files", "build/binary");
    const std::pair<const char*, const FrontEndScript*> frontEnds[]
        = { { "installer_gtk2", &gtk2 }, { "installer_x11", &x11 }, { "installer_console", &console } };
    for (const auto& [alias, behaviour] : frontEnds) {
        elements += fnElement(alias, "install_files", std::string("bin/") + alias, "Executable=\"1\"");
        content.files.push_back({ alias, frontEndScriptText(recordDir, alias, *behaviour) });
    }
    content.files.push_back({ "binary", binaryText });
    content.fileList = fileListXml(elements);
    return content;
}

CommandResult runProgram(
    const std::string& program, const std::vector<std::string>& args, const std::string& workDir)
{
    std::string line = "cd " + shellQuote(workDir) + " && ulimit -c 0 && " + shellQuote(program);
    for (const std::string& arg : args)
        line += " " + shellQuote(arg);
    return runCommand(line);
}

PackedInstaller::PackedInstaller(const InstallerContent& content)
{
    char real[PATH_MAX];
    dir = realpath(work.path().c_str(), real) ? real : work.path();
    installer = dir + "/installer";
    built = buildInstaller(content, installer, &packLog);
}

bool PackedInstaller::onlyInstallerLeft() const
{
    return listTree(dir) == std::vector<std::string> { "installer" };
}

std::vector<std::string> listTree(const std::string& dir)
{
    std::vector<std::string> paths;
    std::error_code error;
    for (auto it = std::filesystem::recursive_directory_iterator(dir, error);
         it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
        if (error)
            break;
        paths.push_back(std::filesystem::relative(it->path(), dir).string());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string supportAddress()
{
    std::istringstream cache(readFile(binDir() + "/../CMakeCache.txt"));
    const std::string key = "QUILB_SUPPORT_ADDRESS:STRING=";
    std::string line;
    while (std::getline(cache, line)) {
        if (line.rfind(key, 0) == 0)
            return line.substr(key.size());
    }
    return "";
}

void rewriteTrailer(std::string& installer)
{
    const size_t trailerSize = 23;
    if (installer.size() < 5000 + trailerSize)
        return;
    size_t marker = installer.size() - trailerSize;
    unsigned char digest[16];
    CalcMD5Buf(installer.data() + 5000, static_cast<int>(marker - 5000), digest);
    installer.replace(
        marker, trailerSize, std::string("v2sum: ") + std::string(reinterpret_cast<char*>(digest), 16));
}

bool buildInstaller(const InstallerContent& content, const std::string& path, std::string* log)
{
    // Every file goes in by --add, and the front-end directory is an empty one, so that no
    // program built beside quilb_pack slips into the package.
    TempDir staging;
    std::string line = shellQuote(binDir() + "/quilb_pack") + " installer --launcher "
        + shellQuote(binDir() + "/launcher") + " --frontend-dir " + shellQuote(staging.path())
        + " --file-list " + shellQuote(staging.file("list.xml")) + " -o " + shellQuote(path);
    writeFile(staging.file("list.xml"), content.fileList);
    for (size_t i = 0; i < content.files.size(); ++i) {
        std::string file = staging.file("file" + std::to_string(i));
        writeFile(file, content.files[i].content);
        line += " --add " + shellQuote(content.files[i].alias + "=" + file);
    }
    CommandResult result = runCommand(line);
    if (log)
        *log = result.output;
    return result.exitCode == 0;
}

bool editRecordStream(std::string& installer, long imageSize, const std::function<void(std::string&)>& edit)
{
    // Solid header (20 bytes) and chunk table behind the 72-byte cabinet header.
    const size_t container = static_cast<size_t>(imageSize) + 72;
    if (installer.size() < container + 20)
        return false;
    int32_t chunks = 0;
    memcpy(&chunks, installer.data() + container + 16, 4);
    std::string stream;
    for (int32_t i = 0; i < chunks; ++i) {
        int64_t entry[4]; // uncompressed offset, uncompressed size, compressed offset, compressed size
        memcpy(entry, installer.data() + container + 20 + 32 * i, sizeof entry);
        if (stream.size() < static_cast<size_t>(entry[0] + entry[1]))
            stream.resize(static_cast<size_t>(entry[0] + entry[1]));
        uLongf size = static_cast<uLongf>(entry[1]);
        if (uncompress(reinterpret_cast<Bytef*>(&stream[static_cast<size_t>(entry[0])]), &size,
                reinterpret_cast<const Bytef*>(installer.data() + container + entry[2]),
                static_cast<uLong>(entry[3]))
            != Z_OK)
            return false;
    }
    edit(stream);

    // One chunk now, directly behind its table entry.
    std::string packed(compressBound(stream.size()), '\0');
    uLongf packedSize = packed.size();
    if (compress2(reinterpret_cast<Bytef*>(&packed[0]), &packedSize,
            reinterpret_cast<const Bytef*>(stream.data()), stream.size(), 9)
        != Z_OK)
        return false;
    packed.resize(packedSize);
    std::string header = installer.substr(container, 16);
    const int32_t one = 1;
    const int64_t entry[4]
        = { 0, static_cast<int64_t>(stream.size()), 20 + 32, static_cast<int64_t>(packedSize) };
    header.append(reinterpret_cast<const char*>(&one), 4);
    header.append(reinterpret_cast<const char*>(entry), sizeof entry);
    installer = installer.substr(0, container) + header + packed + std::string(23, '\0');
    rewriteTrailer(installer);
    return true;
}

} // namespace quilbtest
