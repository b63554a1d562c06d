// Predefined variables: names that the engine answers itself, computed at each read. They
// go before any record of the same name, and SetVarExt refuses to set them.
//
//   HAVE_RPM, HAVE_DPKG     "1" when "rpm --version" / "dpkg --version" exits with 0
//   GUI_INSTALL             "1" for a graphical front end, else "0"
//   INSTALLER_DIR           directory of the running program, with its trailing slash
//   INSTALLER_FILE_NAME     file name of the running program
//   INSTALLER_BINARY_NAME   file name of the package given to Init
//   TEMP_DIR                the temporary folder
//   WX_PORT                 the toolkit of the front end
//   OPERATING_SYSTEM        "linux"
//   OS_HTTP_PROXY, OS_HTTPS_PROXY  the proxy of the session's environment, or empty
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "foundation/misc/installer_file_utils.h"
#include "foundation/misc/path_utils.h"
#include "foundation/misc/process_list.h"
#include "foundation/misc/proxy_config.h"
#include "foundation/streams/pconsole.h"
#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/error_code.h"
#include "foundation/strings/path_size.h"
#include "installer/installer.h"

namespace {

void put(char* buffer, int size, const char* value)
{
    if (buffer && size > 0)
        TeskUtils::copyBounded(buffer, value ? value : "", static_cast<size_t>(size));
}

} // namespace

void Installer::noteFrontEnd(InstallerUI& ui)
{
    guiInstall = ui.IsGUIInstaller();
}

int Installer::getPredefinedVar(const char* name, char* buffer, int size)
{
    if (!name)
        return -1;

    // The probes run on every read, also when the caller only looks.
    if (strcasecmp(name, "HAVE_RPM") == 0) {
        put(buffer, size, runShellStatus("rpm --version > /dev/nul 2>&1") == 0 ? "1" : "0");
        return -2;
    }
    if (strcasecmp(name, "HAVE_DPKG") == 0) {
        put(buffer, size, runShellStatus("dpkg --version > /dev/nul 2>&1") == 0 ? "1" : "0");
        return -2;
    }

    static const char* const kComputed[] = {
        "GUI_INSTALL",
        "INSTALLER_DIR",
        "INSTALLER_FILE_NAME",
        "INSTALLER_BINARY_NAME",
        "TEMP_DIR",
        "WX_PORT",
        "OPERATING_SYSTEM",
        "OS_HTTP_PROXY",
        "OS_HTTPS_PROXY",
    };
    int row = -1;
    for (int i = 0; i < static_cast<int>(sizeof(kComputed) / sizeof(kComputed[0])) && row < 0; ++i) {
        if (strcasecmp(name, kComputed[i]) == 0)
            row = i;
    }
    if (row < 0)
        return -1;
    if (!buffer || size < 1)
        return -2;

    switch (row) {
    case 0:
        put(buffer, size, guiInstall ? "1" : "0");
        break;
    case 1:
        buffer[0] = '\0';
        if (!getProcessPath(buffer, size))
            buffer[0] = '\0';
        break;
    case 2: {
        char path[TeskUtils::kPathSize];
        if (getProcessFileName(path, sizeof(path), 0))
            put(buffer, size, TeskUtils::uniGetFilenameFromPath(path).c_str());
        else
            buffer[0] = '\0';
        break;
    }
    case 3:
        put(buffer, size, TeskUtils::uniGetFilenameFromPath(installerPath).c_str());
        break;
    case 4:
        if (InstallerFileUtils::getTempFolder(buffer, size) != 0 || !buffer[0]) {
            buffer[0] = '\0';
            if (debugConsole)
                debugConsole->Dump("WARNING: Failed to obtain temp directory for variable usage!");
            return -1;
        }
        break;
    case 5:
        put(buffer, size, frontEndPort);
        break;
    case 6:
        put(buffer, size, "linux");
        break;
    default: {
        buffer[0] = '\0';
        TeskUtils::SystemProxyConfiguration config;
        TeskUtils::ErrorCode error = TeskUtils::getSystemProxyConfiguration(config, 1);
        if (error.isError()) {
            if (debugConsole)
                debugConsole->Dump("WARNING: Failed to obtain system proxy settings: ErrorCode(%d): %s",
                    error.getError(), error.getErrorString().c_str());
        } else if (config.found) {
            // Only the upper-case spelling of OS_HTTPS_PROXY reaches the HTTPS entry; the
            // name's eighth character decides.
            put(buffer, size, name[7] == 'S' ? config.httpsProxy.c_str() : config.httpProxy.c_str());
        }
        break;
    }
    }
    return -2;
}
