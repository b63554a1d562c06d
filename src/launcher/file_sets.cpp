// The launcher's file list (alias "install.xml" of the outer package) and the writing of
// the files it names below the unpack directory.

#include "launcher/launcher.h"

#include "foundation/streams/pbuf_stream.h"
#include "foundation/streams/pfile_stream.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/tokenize.h"
#include "foundation/xml/pxml.h"
#include "linux/linux_installer.h"

#include <cstdio>
#include <cstring>
#include <sys/stat.h>

namespace Launcher {

namespace {

// A flag attribute counts when present and not starting with the character '0'; so an
// empty value is on.
bool flagAttribute(const char* value)
{
    return value && value[0] != '0';
}

void addRename(PXML& document, int node)
{
    const char* newName = document.GetData(node);
    const char* alias = document.ParVal(node, "Alias");
    if (!newName || !alias)
        return;
    RenameEntry entry;
    TeskUtils::copyBounded(entry.alias, alias, sizeof entry.alias);
    TeskUtils::copyBounded(entry.newName, newName, sizeof entry.newName);
    renames.append(entry);
}

void addFile(LinuxInstaller& installer, PXML& document, int node)
{
    const char* source = document.GetData(node);
    if (!source)
        return;
    const char* dest = document.ParVal(node, "Dest");
    if (!dest)
        return;

    FileInfo file;
    memset(&file, 0, sizeof file);
    TeskUtils::appendBounded(file.destination, unpackDirectory, sizeof file.destination);
    TeskUtils::appendBounded(file.destination, "/", sizeof file.destination);
    TeskUtils::appendBounded(file.destination, dest, sizeof file.destination);

    const char* alias = document.ParVal(node, "Alias");
    file.okIfMissing = flagAttribute(document.ParVal(node, "OkIfMissing"));
    file.executable = flagAttribute(document.ParVal(node, "Executable"));
    file.unpack = true;
    TeskUtils::copyBounded(file.alias, alias, sizeof file.alias);
    // The name part of the source path; a trailing slash stays with it.
    TeskUtils::copyBounded(file.fileName, TeskUtils::fileNamePart(source, "/\\", true), sizeof file.fileName);

    // The last rename of this alias read so far names the file; a failed expansion keeps
    // the name part.
    if (alias) {
        for (int i = renames.count - 1; i >= 0; --i) {
            if (strcmp(renames[i].alias, alias) != 0)
                continue;
            char expanded[TeskUtils::kPathSize] = "";
            if (installer.ExpandString(renames[i].newName, expanded, sizeof expanded, false) != 0)
                TeskUtils::copyBounded(file.fileName, expanded, sizeof file.fileName);
            break;
        }
    }
    xmlFiles.append(file);
}

// True when `alias` is among the aliases given by -unpack=.
bool isSelected(const char* alias)
{
    for (int i = 0; i < selectedFiles.count; ++i) {
        if (strncmp(alias, selectedFiles[i].alias, 520) == 0)
            return true;
    }
    return false;
}

} // namespace

int ParseLauncherXml(LinuxInstaller& installer)
{
    int size = 0;
    TeskUtils::PtrArray<unsigned char> content;
    int result = installer.Decompress("install.xml", size, content, nullptr);
    if (result != 0) {
        sayLine("Error decompressing installation file!");
        return result;
    }

    PBufStream stream;
    stream.SetBuf(content.data, size);
    PXML document;
    result = document.ParseStream(stream);
    if (result != 0) {
        sayLine("Error parsing installation file!");
        return result;
    }

    int fileSet = document.FindTag("FileSet", -1);
    if (fileSet < 0) {
        // Deliberately no failure: with no files, no front end can be found later on,
        // and that is what the user is told.
        sayLine("Error in installation file!");
        return 0;
    }

    PList<int> children;
    document.GetChildren(fileSet, &children);
    for (int i = 0; i < children.count; ++i) {
        int node = children[i];
        const char* name = document.GetName(node);
        if (strcmp(name, "Rename") == 0)
            addRename(document, node);
        else if (strcmp(name, "FN") == 0)
            addFile(installer, document, node);
    }
    return 0;
}

int UnpackFiles(LinuxInstaller& installer)
{
    if (customFiles) {
        for (int i = 0; i < xmlFiles.count; ++i)
            xmlFiles[i].unpack = isSelected(xmlFiles[i].alias);
    }

    // Each file's directory result replaces the running one, so the last file decides a
    // directory failure; earlier ones are forgotten on purpose.
    int result = 0;
    for (int i = 0; i < xmlFiles.count; ++i) {
        FileInfo& file = xmlFiles[i];
        if (!file.unpack)
            continue;

        char directory[TeskUtils::kPathSize];
        TeskUtils::copyBounded(directory, file.destination, sizeof directory);
        TeskUtils::appendBounded(directory, "/", sizeof directory);
        TeskUtils::removeDoubleSlashes(directory);
        int created = 0;
        result = InstallerFileUtils::RecursiveCreateDirFromFileName(directory, created);
        if (result != 0)
            printf("Error in creating dir: %s\n", directory);
        fflush(stdout);
        if (created >= 1) {
            createdDirs.append(InstallerFileUtils::DirInfo(directory, created));
            if (!quiet) {
                printf("Created temporary dir: %s\n", directory);
                fflush(stdout);
            }
        }

        char path[TeskUtils::kPathSize];
        TeskUtils::copyBounded(path, directory, sizeof path);
        TeskUtils::appendBounded(path, "/", sizeof path);
        TeskUtils::appendBounded(path, file.fileName, sizeof path);
        TeskUtils::removeDoubleSlashes(path);

        int size = 0;
        TeskUtils::PtrArray<unsigned char> content;
        if (installer.Decompress(file.alias, size, content, nullptr) != 0) {
            file.unpack = false;
            if (!file.okIfMissing)
                result = 1;
            continue;
        }

        PFileStream stream;
        if (stream.Create(path, 0) != 0) {
            file.unpack = false;
            result = 1;
            continue;
        }
        int written = 0;
        if (stream.Write(content.data, size, written) != 0 || written != size) {
            result = 1;
        } else if (!quiet) {
            printf("Created %s file as: %s\n", file.alias, path);
            fflush(stdout);
        }
        stream.Close();

        if (result == 0 && file.executable)
            chmod(path, 0775);
    }
    return result;
}

} // namespace Launcher
