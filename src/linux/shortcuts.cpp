// Shortcuts on Linux: symbolic links, launcher scripts that change into the program's
// directory and start it, and web launchers that open an address in a browser. Each is
// described for the action log as "SYMLINK" or "SHORTCUT", a TAB and its path, which is all
// that undoShortcut needs to remove it again.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/misc/shell_utils.h"
#include "foundation/strings/tokenize.h"
#include "linux/linux_installer.h"

namespace {

const char kSymlinkRecord[] = "SYMLINK";
const char kScriptRecord[] = "SHORTCUT";

void writeRecord(char* record, int recordSize, const char* kind, const char* path)
{
    if (record && recordSize > 0)
        snprintf(record, static_cast<size_t>(recordSize), "%s%c%s\n", kind, '\t', path);
}

// The target line of a launcher script: the target, quoted where it holds a space, started
// relative to the script's "cd" unless it is absolute, and its arguments behind it.
void writeTargetLine(FILE* script, const char* target, const char* arguments)
{
    size_t length = strlen(target);
    bool quotedAlready = length >= 2 && target[0] == '"' && target[length - 1] == '"';
    TeskUtils::CharString text
        = quotedAlready ? TeskUtils::CharString(target) : TeskUtils::escapeCharacter(target, '"', '\\');
    bool openQuote = !quotedAlready && strchr(target, ' ') != nullptr;
    if (openQuote)
        fputc('"', script);
    // A target that came quoted begins with '"', so it too gets "./" in front of its quote.
    if (target[0] != '/')
        fputs("./", script);
    fputs(text.c_str(), script);
    if (openQuote)
        fputc('"', script);
    fprintf(script, " %s\n", arguments ? arguments : "");
}

} // namespace

bool LinuxInstaller::createShortcut(ShortcutType type, const char* path, const char* target,
    const char* description, const char* arguments, const char* startPath, const char* iconPath, char* record,
    int recordSize, unsigned elevate, InstallerUI* progressUI)
{
    (void)description;
    (void)iconPath;
    (void)elevate;
    (void)progressUI;
    if (!path)
        return false;
    if (record && recordSize > 0)
        record[0] = '\0';
    if (!target)
        target = "";

    switch (type) {
    case SHORTCUT_LINK:
    case SHORTCUT_SYMLINK:
        // A link that is there already counts as made, wherever it points.
        if (symlink(target, path) != 0 && errno != EEXIST)
            return false;
        writeRecord(record, recordSize, kSymlinkRecord, path);
        return true;

    case SHORTCUT_FILE:
    case SHORTCUT_UNINSTALL: {
        FILE* script = fopen(path, "wt");
        if (!script)
            return false;
        fputs("#!/bin/bash\n", script);
        fputs("\n# This is a shortcut, created by the Quilb Installer.\n\n", script);
        fprintf(script, "cd \"%s\"\n", startPath ? startPath : "");
        writeTargetLine(script, target, arguments);
        fclose(script);
        chmod(path, 0775);
        writeRecord(record, recordSize, kScriptRecord, path);
        return true;
    }

    case SHORTCUT_URL: {
        char browser[100];
        if (!get_useable_www_browser(browser, sizeof browser))
            return false;
        FILE* script = fopen(path, "wt");
        if (!script)
            return false;
        fputs("#!/bin/bash\n", script);
        fputs("\n# This is a www shortcut, created by the Quilb Installer.\n\n", script);
        fprintf(script, "%s \"%s\"\n", browser, target);
        fclose(script);
        chmod(path, 0775);
        writeRecord(record, recordSize, kScriptRecord, path);
        return true;
    }
    }
    return false;
}

bool LinuxInstaller::undoShortcut(const char* record, InstallerUI* progressUI)
{
    (void)progressUI;
    if (!record)
        return false;
    if (strncmp(record, kSymlinkRecord, strlen(kSymlinkRecord)) != 0
        && strncmp(record, kScriptRecord, strlen(kScriptRecord)) != 0)
        return false;
    const char* tab = strchr(record, '\t');
    if (!tab || !tab[1])
        return false;
    // The record as createShortcut wrote it ends in a line break, which is no part of the path.
    TeskUtils::CharString path(tab + 1, static_cast<int>(strcspn(tab + 1, "\r\n")));
    if (path.isEmpty())
        return false;
    unlink(path.c_str());
    return true;
}
