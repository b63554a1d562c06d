#include "foundation/misc/shell_utils.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "foundation/misc/process_list.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/path_size.h"

namespace {

// Size of the command text handed to gksudo, gksu and su.
const int kCommandSize = 4096;
// Size of one argument in the command text, quotes included.
const int kArgumentSize = 512;

// What pkexec must be told explicitly, since it starts its program with a cleared environment:
// the display and its authority for a graphical front end, where the installer lives, and the
// identity of the user who started it.
const char* const kPkexecKeptVariables[] = { "DISPLAY", "XAUTHORITY", "QUILB_INSTALLER_DIR",
    "QUILB_INSTALLER_DEBUG", "QUILB_INSTALL_ORIGINAL_UID", "QUILB_INSTALL_ORIGINAL_GID",
    "QUILB_INSTALL_ORIGINAL_EGID", "QUILB_INSTALL_ORIGINAL_USER_NAME", "QUILB_INSTALL_ORIGINAL_HOME" };

// "'program' arg1 arg2 ...", each argument through WrapArgumentValue with single quotes.
void buildCommandText(const char* program, int argc, const char* const* argv, char* command)
{
    TeskUtils::copyBounded(command, "'", kCommandSize);
    TeskUtils::appendBounded(command, program, kCommandSize);
    TeskUtils::appendBounded(command, "'", kCommandSize);
    for (int i = 1; i < argc; ++i) {
        char wrapped[kArgumentSize];
        ShellUtils::WrapArgumentValue(argv[i], wrapped, sizeof wrapped, '\'');
        TeskUtils::appendBounded(command, " ", kCommandSize);
        TeskUtils::appendBounded(command, wrapped, kCommandSize);
    }
}

// The call "pkexec env NAME=value ... program arg1 ...". The texts of the assignments go into
// `storage`, which must outlive the call.
std::vector<const char*> pkexecCall(
    const char* program, int argc, const char* const* argv, std::vector<std::string>& storage)
{
    storage.clear();
    for (const char* name : kPkexecKeptVariables) {
        const char* value = getenv(name);
        if (value)
            storage.push_back(std::string(name) + "=" + value);
    }
    // X clients look for their authority in ~/.Xauthority when XAUTHORITY is unset, and
    // under pkexec that home is root's.
    const char* home = getenv("HOME");
    if (!getenv("XAUTHORITY") && home) {
        std::string authority = std::string(home) + "/.Xauthority";
        if (access(authority.c_str(), R_OK) == 0)
            storage.push_back("XAUTHORITY=" + authority);
    }
    std::vector<const char*> call = { "pkexec", "env" };
    for (const std::string& assignment : storage)
        call.push_back(assignment.c_str());
    call.push_back(program);
    for (int i = 1; i < argc; ++i)
        call.push_back(argv[i]);
    call.push_back(nullptr);
    return call;
}

} // namespace

namespace ShellUtils {

int CommandExists(const char* command)
{
    if (!command)
        return 0;
    char line[4096];
    snprintf(line, sizeof line, "command -v %s >/dev/null 2>&1", command);
    return system(line) == 0 ? 1 : 0;
}

void WrapArgumentValue(const char* argument, char* out, int size, char quote)
{
    if (!argument || !out || size < 1)
        return;
    const char* equals = nullptr;
    for (int i = 0; i < size - 2 && argument[i]; ++i) {
        if (argument[i] == '=') {
            equals = argument + i;
            break;
        }
    }
    if (!equals) {
        TeskUtils::copyBounded(out, argument, static_cast<size_t>(size));
        return;
    }
    const char quoteText[2] = { quote, '\0' };
    // The name with its '=' (equals - argument + 1 characters, which fit by the search above).
    TeskUtils::copyBounded(out, argument, static_cast<size_t>(equals - argument + 2));
    TeskUtils::appendBounded(out, quoteText, static_cast<size_t>(size));
    TeskUtils::appendBounded(out, equals + 1, static_cast<size_t>(size));
    TeskUtils::appendBounded(out, quoteText, static_cast<size_t>(size));
}

bool execSuperuserCmd(int argc, const char* const* argv, bool gui)
{
    char program[TeskUtils::kPathSize];
    if (!getProcessFileName(program, sizeof program, 0))
        return false;
    char command[kCommandSize];
    buildCommandText(program, argc, argv, command);

    std::vector<const char*> call;
    std::vector<std::string> storage;
    if (gui) {
        if (CommandExists("gksudo"))
            call = { "gksudo", "-k", command, nullptr };
        else if (CommandExists("gksu"))
            call = { "gksu", "-S", "-k", command, nullptr };
        else if (!isatty(0) && CommandExists("pkexec"))
            call = pkexecCall(program, argc, argv, storage);
        else if (!isatty(0))
            return false;
    }
    if (call.empty()) {
        if (CommandExists("sudo")) {
            // The arguments one by one rather than the command text: sudo -E keeps the
            // environment, and with it the user's identity.
            call = { "sudo", "-E" };
            for (int i = 0; i < argc; ++i)
                call.push_back(argv[i]);
            call.push_back(nullptr);
        } else {
            call = { "su", "-m", "-c", command, nullptr };
        }
    }
    return execvp(call[0], const_cast<char* const*>(call.data())) != -1;
}

} // namespace ShellUtils

int get_PATH(char*& buffer, const char**& dirs, int& count)
{
    buffer = nullptr;
    dirs = nullptr;
    count = 0;
    const char* path = getenv("PATH");
    if (!path)
        return 0;

    size_t length = strlen(path);
    buffer = new char[length + 1];
    memcpy(buffer, path, length + 1);

    int parts = 1;
    for (const char* c = buffer; *c; ++c)
        if (*c == ':')
            ++parts;
    dirs = new const char*[parts];
    dirs[count++] = buffer;
    for (char* c = buffer; *c; ++c) {
        if (*c != ':')
            continue;
        *c = '\0';
        dirs[count++] = c + 1;
    }
    return 1;
}

int get_useable_www_browser(char* buffer, int size)
{
    static const char* const browsers[]
        = { "firefox", "mozilla", "netscape", "galeon", "konqueror", "opera", "epiphany", "lynx", "links" };
    if (!buffer || size < 1)
        return 0;
    char* pathCopy = nullptr;
    const char** dirs = nullptr;
    int count = 0;
    if (!get_PATH(pathCopy, dirs, count))
        return 0;

    int found = 0;
    for (const char* browser : browsers) {
        for (int i = 0; i < count && !found; ++i) {
            char candidate[TeskUtils::kPathSize];
            TeskUtils::copyBounded(candidate, dirs[i], sizeof candidate);
            size_t length = strlen(candidate);
            if (length > 0 && candidate[length - 1] != '/')
                TeskUtils::appendBounded(candidate, "/", sizeof candidate);
            TeskUtils::appendBounded(candidate, browser, sizeof candidate);
            struct stat info;
            if (stat(candidate, &info) == 0)
                found = 1;
        }
        if (found) {
            TeskUtils::copyBounded(buffer, browser, static_cast<size_t>(size));
            break;
        }
    }
    delete[] dirs;
    delete[] pathCopy;
    return found;
}

int tryOpenDocumentWx(const char*, bool)
{
    return 0;
}
