// quilb_pack: makes the inner package of a product from its install template, and the
// self-extracting installer from a launcher, the front ends and that package.
#include "foundation/strings/tokenize.h"
#include "quilb_pack/package_writer.h"
#include "quilb_pack/template_reader.h"

#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace quilbpack;

const char* const usageText
    = "Usage:\n"
      "  quilb_pack package   -t TEMPLATE [-b BASEDIR] [--add ALIAS=FILE]... [options] -o OUTPUT\n"
      "  quilb_pack installer (-p PACKAGE | -t TEMPLATE [-b BASEDIR]) [--launcher FILE]\n"
      "                       [--frontend ALIAS=FILE]... [--frontend-dir DIR] [--dest DIR]\n"
      "                       [--file-list FILE] [--add ALIAS=FILE]... [options] -o OUTPUT\n"
      "\n"
      "package    packs the install template (as alias \"install.xml\") and every file named by an\n"
      "           FN element inside a FileSet. An FN's text is the file's path; a relative one\n"
      "           starts from BASEDIR (default: the template's directory). Its alias is the Alias\n"
      "           attribute, or the path with every '/', '\\' and ':' taken out. A missing file\n"
      "           is an error unless the FN has OkIfMissing.\n"
      "installer  writes the launcher with the package behind it: the launcher's file list\n"
      "           (alias \"install.xml\"), the front ends, the product package (alias \"binary\")\n"
      "           and the integrity trailer. The output is made executable.\n"
      "\n"
      "Options:\n"
      "  -o, --output FILE      file to write; it is replaced whole or not at all\n"
      "  -t, --template FILE    install template of the product\n"
      "  -b, --base DIR         directory relative FN paths start from\n"
      "  -p, --package FILE     a package made earlier by \"quilb_pack package\"\n"
      "  --add ALIAS=FILE       one more file, packed after the others (may be repeated)\n"
      "  --launcher FILE        launcher image (default: \"launcher\" beside quilb_pack)\n"
      "  --frontend ALIAS=FILE  a front-end program, e.g. installer_console=./my_console; when\n"
      "                         given, only these front ends are packed (may be repeated)\n"
      "  --frontend-dir DIR     where to look for the front ends installer_gtk2, installer_x11,\n"
      "                         installer_console, uninstaller_gtk2, uninstaller_x11 and\n"
      "                         uninstaller_console (default: beside quilb_pack); those not\n"
      "                         there are left out\n"
      "  --dest DIR             directory of every file in the generated file list\n"
      "                         (default: install_files)\n"
      "  --file-list FILE       use this launcher file list instead of generating one\n"
      "  --chunks N             number of compressed chunks, 1 to 256 (default: 8)\n"
      "  --level N              zlib compression level, 0 to 9 (default: 9)\n"
      "  -h, --help             show this text\n"
      "\n"
      "Exit status: 0 on success, 1 on any failure (nothing is written then).\n";

const char* const frontEndNames[] = { "installer_gtk2", "installer_x11", "installer_console",
    "uninstaller_gtk2", "uninstaller_x11", "uninstaller_console" };

struct Options
{
    std::string mode;
    std::string output;
    std::string templatePath;
    std::string baseDir;
    bool haveBase = false;
    std::string packagePath;
    std::string launcherPath;
    std::string frontEndDir;
    std::string dest = "install_files";
    std::string fileListPath;
    std::vector<std::pair<std::string, std::string>> extra; // --add
    std::vector<std::pair<std::string, std::string>> frontEnds; // --frontend
    PackOptions pack;
};

int fail(const std::string& message)
{
    std::fprintf(stderr, "quilb_pack: %s\n", message.c_str());
    return 1;
}

std::string directoryOf(const std::string& path)
{
    size_t slash = path.find_last_of('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string ownDirectory()
{
    char buffer[PATH_MAX];
    ssize_t length = readlink("/proc/self/exe", buffer, sizeof(buffer) - 1);
    if (length <= 0)
        return ".";
    buffer[length] = '\0';
    return directoryOf(buffer);
}

bool fileExists(const std::string& path)
{
    return access(path.c_str(), F_OK) == 0;
}

bool parseNumber(const std::string& text, int& value)
{
    char* end = nullptr;
    long number = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end || number < INT_MIN || number > INT_MAX)
        return false;
    value = static_cast<int>(number);
    return true;
}

bool splitPair(const std::string& text, std::pair<std::string, std::string>& pair)
{
    size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
        return false;
    pair = { text.substr(0, equals), text.substr(equals + 1) };
    return true;
}

// Reads the command line; gives -1 to go on, otherwise the exit status.
int parseArguments(int argc, char** argv, Options& options)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    for (const std::string& arg : args)
        if (arg == "-h" || arg == "--help") {
            std::fputs(usageText, stdout);
            return 0;
        }
    if (args.empty())
        return fail("no mode given; try 'quilb_pack --help'");
    options.mode = args[0];
    if (options.mode != "package" && options.mode != "installer")
        return fail("unknown mode '" + options.mode + "'; try 'quilb_pack --help'");

    for (size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i], value;
        bool inlineValue = false;
        size_t equals = name.find('=');
        if (name.compare(0, 2, "--") == 0 && equals != std::string::npos) {
            value = name.substr(equals + 1);
            name = name.substr(0, equals);
            inlineValue = true;
        }
        auto takeValue = [&](std::string& into) {
            if (inlineValue) {
                into = value;
                return true;
            }
            if (i + 1 >= args.size())
                return false;
            into = args[++i];
            return true;
        };
        std::string text;
        if (!takeValue(text))
            return fail("option '" + name + "' needs a value");
        std::pair<std::string, std::string> pair;
        if (name == "-o" || name == "--output") {
            options.output = text;
        } else if (name == "-t" || name == "--template") {
            options.templatePath = text;
        } else if (name == "-b" || name == "--base") {
            options.baseDir = text;
            options.haveBase = true;
        } else if (name == "-p" || name == "--package") {
            options.packagePath = text;
        } else if (name == "--launcher") {
            options.launcherPath = text;
        } else if (name == "--frontend-dir") {
            options.frontEndDir = text;
        } else if (name == "--dest") {
            options.dest = text;
        } else if (name == "--file-list") {
            options.fileListPath = text;
        } else if (name == "--add" || name == "--frontend") {
            if (!splitPair(text, pair))
                return fail("option '" + name + "' takes ALIAS=FILE, not '" + text + "'");
            (name == "--add" ? options.extra : options.frontEnds).push_back(pair);
        } else if (name == "--chunks" || name == "--level") {
            int number = 0;
            if (!parseNumber(text, number))
                return fail("option '" + name + "' takes a number, not '" + text + "'");
            (name == "--chunks" ? options.pack.chunks : options.pack.level) = number;
        } else {
            return fail("unknown option '" + name + "'; try 'quilb_pack --help'");
        }
    }
    if (options.output.empty())
        return fail("no output file given (-o)");
    return -1;
}

// The items of a product package: the template's files, the extra files, the template.
// The extra files go in only for "package"; an installer packs them in its outer package.
bool productItems(const Options& options, bool withExtra, std::vector<PackItem>& items, std::string& error)
{
    std::string xml;
    if (!readWholeFile(options.templatePath, xml, error)) {
        error = "can't read the template '" + options.templatePath + "': " + error;
        return false;
    }
    std::string base = options.haveBase ? options.baseDir : directoryOf(options.templatePath);
    for (const TemplateFile& file : findTemplateFiles(xml)) {
        if (file.text.empty()) {
            std::fprintf(stderr, "quilb_pack: warning: an FN element without a path is skipped\n");
            continue;
        }
        PackItem item;
        item.alias = file.hasAlias ? file.alias : derivedAlias(file.text);
        item.name = TeskUtils::fileNamePart(file.text.c_str());
        item.sourcePath = file.text[0] == '/' ? file.text : base + "/" + file.text;
        if (!fileExists(item.sourcePath)) {
            if (file.okIfMissing) {
                std::fprintf(stderr, "quilb_pack: note: '%s' is missing and left out (OkIfMissing)\n",
                    item.sourcePath.c_str());
                continue;
            }
            error
                = "missing file '" + item.sourcePath + "', named by the template's FN \"" + file.text + "\"";
            return false;
        }
        items.push_back(item);
    }
    if (withExtra)
        for (const auto& extra : options.extra)
            items.push_back(
                { extra.first, TeskUtils::fileNamePart(extra.second.c_str()), extra.second, false, "" });
    PackItem templateItem;
    // The engine finds the template by the record's file name "install.xml", whatever the
    // template file is called here.
    templateItem.alias = "install.xml";
    templateItem.name = "install.xml";
    templateItem.inMemory = true;
    templateItem.content = xml;
    for (const PackItem& item : items)
        if (item.alias == "install.xml")
            std::fprintf(stderr,
                "quilb_pack: warning: '%s' also has the alias install.xml; the template wins\n",
                item.sourcePath.c_str());
    items.push_back(templateItem);
    return true;
}

std::string xmlEscape(const std::string& text)
{
    std::string out;
    for (char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&apos;";
            break;
        default:
            out.push_back(c);
        }
    }
    return out;
}

int runPackage(const Options& options)
{
    if (options.templatePath.empty())
        return fail("no template given (-t)");
    std::vector<PackItem> items;
    std::string error;
    if (!productItems(options, true, items, error))
        return fail(error);
    std::string package;
    PackError packError = buildPackage(items, options.pack, package);
    if (packError)
        return fail(packError.message);
    PackError written = writeFileAtomically(options.output, package, 0666);
    return written ? fail(written.message) : 0;
}

int runInstaller(const Options& options)
{
    if (options.packagePath.empty() && options.templatePath.empty() && options.fileListPath.empty())
        return fail("no product given: name a package (-p) or a template (-t)");
    std::string error;
    // The launcher image first: a wrong one fails before anything is compressed.
    std::string launcherPath
        = options.launcherPath.empty() ? ownDirectory() + "/launcher" : options.launcherPath;
    std::string launcher;
    if (!readWholeFile(launcherPath, launcher, error))
        return fail("can't read the launcher image '" + launcherPath + "': " + error);
    size_t offsetWordAt = 0;
    PackError imageError = checkLauncherImage(launcher, offsetWordAt);
    if (imageError)
        return fail(imageError.message);

    // The product package: given, or made here from a template.
    std::string package;
    bool havePackage = false;
    if (!options.packagePath.empty()) {
        if (!readWholeFile(options.packagePath, package, error))
            return fail("can't read the package '" + options.packagePath + "': " + error);
        havePackage = true;
    } else if (!options.templatePath.empty()) {
        std::vector<PackItem> items;
        if (!productItems(options, false, items, error))
            return fail(error);
        PackError packError = buildPackage(items, options.pack, package);
        if (packError)
            return fail(packError.message);
        havePackage = true;
    }

    std::vector<std::pair<std::string, std::string>> frontEnds = options.frontEnds;
    if (frontEnds.empty()) {
        std::string dir = options.frontEndDir.empty() ? ownDirectory() : options.frontEndDir;
        for (const char* name : frontEndNames)
            if (fileExists(dir + "/" + name))
                frontEnds.emplace_back(name, dir + "/" + name);
        if (frontEnds.empty() && options.fileListPath.empty())
            std::fprintf(stderr, "quilb_pack: warning: no front-end programs found in '%s'\n", dir.c_str());
    }

    std::vector<PackItem> items;
    std::string fileList;
    if (!options.fileListPath.empty()) {
        if (!readWholeFile(options.fileListPath, fileList, error))
            return fail("can't read the file list '" + options.fileListPath + "': " + error);
    } else {
        fileList = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<QuilbGroupInstallation>\n  <Installation>\n"
                   "    <FileSet Name=\"LauncherFiles\">\n";
        std::string dest = xmlEscape(options.dest);
        fileList += "      <FN Alias=\"binary\" Dest=\"" + dest + "\">binary</FN>\n";
        for (const auto& frontEnd : frontEnds)
            fileList += "      <FN Alias=\"" + xmlEscape(frontEnd.first) + "\" Dest=\"" + dest
                + "\" Executable=\"1\">" + xmlEscape(frontEnd.first) + "</FN>\n";
        fileList += "    </FileSet>\n  </Installation>\n</QuilbGroupInstallation>\n";
    }
    PackItem listItem;
    listItem.alias = "install.xml";
    listItem.name = "install.xml";
    listItem.inMemory = true;
    listItem.content = fileList;
    items.push_back(listItem);
    for (const auto& frontEnd : frontEnds)
        items.push_back({ frontEnd.first, frontEnd.first, frontEnd.second, false, "" });
    if (havePackage) {
        PackItem binary;
        binary.alias = "binary";
        binary.name = "binary";
        binary.inMemory = true;
        binary.content.swap(package);
        items.push_back(std::move(binary));
    }
    for (const auto& extra : options.extra)
        items.push_back(
            { extra.first, TeskUtils::fileNamePart(extra.second.c_str()), extra.second, false, "" });

    std::string outer;
    PackError packError = buildPackage(items, options.pack, outer);
    if (packError)
        return fail(packError.message);
    items.clear();
    std::string installer;
    packError = buildInstaller(launcher, outer, installer);
    if (packError)
        return fail(packError.message);
    PackError written = writeFileAtomically(options.output, installer, 0777);
    return written ? fail(written.message) : 0;
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    int status = parseArguments(argc, argv, options);
    if (status >= 0)
        return status;
    return options.mode == "package" ? runPackage(options) : runInstaller(options);
}
