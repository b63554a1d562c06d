// Answers of a run that asks nothing.
#include "console/input_provider.h"

#include "foundation/strings/bounded_copy.h"
#include "foundation/xml/pxml.h"

#include <cstdio>
#include <sys/stat.h>

Automated::Automated(const char* file, bool isUninstall)
    : uninstall(isUninstall)
{
    TeskUtils::copyBounded(path, file, sizeof path);
}

bool Automated::init()
{
    if (path[0] == '\0')
        return true;
    struct stat info;
    if (stat(path, &info) != 0) {
        printf("The file \"%s\" does not exist! Please specify existing file!\n", path);
        return false;
    }
    PXML document;
    if (document.ParseFile(path) != 0 || document.FindTag("DefValues", -1) < 0) {
        printf("The file \"%s\" is not a propper XML installation config file. The installation can not "
               "continue!\n",
            path);
        return false;
    }
    return true;
}

bool Automated::get_line(
    const char* text, char* buffer, int size, const char* current, const char* def, bool echo) const
{
    (void)text;
    (void)def;
    (void)echo;
    if (!buffer || size < 1)
        return false;
    TeskUtils::copyBounded(buffer, current, static_cast<size_t>(size));
    return true;
}

int Automated::question(
    const char* text, int def, const char* first, const char* second, bool caseSensitive, bool prefix) const
{
    (void)text;
    (void)first;
    (void)second;
    (void)caseSensitive;
    (void)prefix;
    return def;
}

int Automated::multiplechoice(
    const char* text, int def, const char* const* choices, int count, const bool* enabled) const
{
    (void)text;
    (void)choices;
    (void)count;
    (void)enabled;
    return def;
}

void Automated::showmessage(const char* text) const
{
    printf("%s\n", text ? text : "");
}

void Automated::finish(bool error) const
{
    if (error)
        printf("The automatic %sinstaller has encountered an ERROR!\n", uninstall ? "un" : "");
    else
        printf("Automatic %sinstallation was successful!\n", uninstall ? "un" : "");
}
