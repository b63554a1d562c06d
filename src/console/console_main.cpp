// The console front end's start: command line, package choice, debug log and main flow.
#include "console/console_main.h"

#include "console/console_ui.h"
#include "console/input_provider.h"
#include "console/install_rights.h"
#include "foundation/misc/cl_parser.h"
#include "foundation/misc/installer_file_utils.h"
#include "foundation/streams/pconsole.h"
#include "foundation/strings/path_size.h"
#include "foundation/strings/tesk_utils.h"
#include "foundation/strings/tokenize.h"
#include "linux/linux_installer.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <glob.h>
#include <strings.h>

// QUILB_REVISION, the source revision, written at build time by src/console/revision.cmake.
#include "quilb_revision.h"

namespace {

// The value behind `option` when `argument` starts with it; null otherwise.
const char* valueOf(const char* argument, const char* option)
{
    size_t length = strlen(option);
    return strncmp(argument, option, length) == 0 ? argument + length : nullptr;
}

int numberOf(const char* text)
{
    return teskutils_atoi(text);
}

// "Apr 25 2017, 15:12:48" from the compiler's date and time.
void buildStamp(char* out, int size)
{
    char date[32];
    TeskUtils::copyBounded(date, __DATE__, sizeof date);
    // __DATE__ pads a day below 10 with a blank: "Apr  5 2017".
    TeskUtils::removeNeighbouringCharacters(date, ' ', nullptr, TeskUtils::RelativeCharPosition(0));
    snprintf(out, size, "%s, %s", date, __TIME__);
}

} // namespace

int ParseCmdLine(int argc, char** argv, ConsoleOptions& options)
{
    // The program's own name, behind the last '/' of the path it was started by.
    options.uninstall = argc > 0 && strncmp(TeskUtils::fileNamePart(argv[0], "/"), "uninstaller", 11) == 0;
    for (int i = 1; i < argc; ++i) {
        const char* argument = argv[i];
        const char* value;
        if ((value = valueOf(argument, "-bin=")))
            TeskUtils::copyBounded(options.bin, value, sizeof options.bin);
        if ((value = valueOf(argument, "-uninstallApp=")) || (value = valueOf(argument, "-uninstallapp="))) {
            TeskUtils::copyBounded(options.uninstallApp, value, sizeof options.uninstallApp);
            options.uninstall = true;
        }
        if ((value = valueOf(argument, "-log="))) {
            TeskUtils::copyBounded(options.log, value, sizeof options.log);
            options.uninstall = true;
        }
        if ((value = valueOf(argument, "-configFile=")) || (value = valueOf(argument, "-fromFile=")))
            TeskUtils::copyBounded(options.configFile, value, sizeof options.configFile);
        if (strcmp(argument, "-auto") == 0)
            options.autoRun = true;
        if (strcmp(argument, "-gui") == 0)
            options.gui = 1;
        if ((value = valueOf(argument, "-gui=")))
            options.gui = numberOf(value);
        if (strcmp(argument, "-quiet") == 0)
            options.quiet = 1;
        if ((value = valueOf(argument, "-quiet="))) {
            options.quiet = numberOf(value) != 0;
            options.quietGiven = true;
        }
        if (strcmp(argument, "-ignoreErrors") == 0)
            options.ignoreErrors = 0;
        if ((value = valueOf(argument, "-ignoreErrors=")))
            options.ignoreErrors = numberOf(value) != 0;
        if (strcmp(argument, "-debug") == 0)
            options.debug = 1;
        if ((value = valueOf(argument, "-debug=")))
            options.debug = numberOf(value);
        if (strcmp(argument, "-backup") == 0)
            options.backup = 1;
        if ((value = valueOf(argument, "-backup=")))
            options.backup = *value ? numberOf(value) : 1;
        if (strcmp(argument, "--verbose") == 0)
            options.verbose = true;
        if (strcmp(argument, "-child") == 0)
            options.child = true;
        if (strcmp(argument, "-testRun") == 0)
            options.testRun = true;
        if (strcmp(argument, "-dpi") == 0)
            options.dpi = true;
        if (strcmp(argument, "-nodpi") == 0)
            options.noDpi = true;
    }
    if (options.testRun)
        return 0;

    bool automated = options.uninstall ? options.autoRun : options.configFile[0] != '\0';
    if (automated) {
        if (!options.quietGiven)
            options.quiet = 1;
        if (options.gui) {
            puts("Warning: Cannot automatically (un)install in GUI mode (reverting to CLI mode)");
            options.gui = 0;
        }
    }
    if (options.uninstall) {
        if (!options.log[0]) {
            puts("Cannot uninstall. Use -log=... to specify the action log file!");
            return 1;
        }
        if (!options.uninstallApp[0]) {
            puts("Cannot uninstall. Use -uninstallApp=... to specify application!");
            return 1;
        }
        return 0;
    }
    if (!options.bin[0] && SearchAndAskForBinFile(options.bin, sizeof options.bin) != 0)
        return 1;
    return 0;
}

int SearchAndAskForBinFile(char* path, int size)
{
    glob_t found;
    if (glob("*.ibin", 0, nullptr, &found) != 0 || found.gl_pathc == 0) {
        globfree(&found);
        puts("Cannot install. Use -bin=... to specify .ibin file!");
        return 1;
    }
    int count = static_cast<int>(found.gl_pathc);
    if (count == 1) {
        TeskUtils::copyBounded(path, found.gl_pathv[0], size);
        globfree(&found);
        return 0;
    }
    printf("Several .ibin files are found - please choose one of them:\n");
    for (int i = 0; i < count; ++i)
        printf("\t%d) %s\n", i + 1, found.gl_pathv[i]);
    printf("\t%d) Exit\n\n>", count + 1);
    fflush(stdout);
    int choice = 0;
    for (;;) {
        int read = scanf("%d", &choice);
        if (read == EOF) {
            choice = count + 1;
            break;
        }
        // Drop the rest of the line, so that the next question doesn't take it as its answer.
        int c;
        while ((c = getchar()) != EOF && c != '\n') { }
        if (read == 1 && choice >= 1 && choice <= count + 1)
            break;
        printf("Please, enter a number in [%d - %d]: ", 1, count + 1);
        fflush(stdout);
    }
    int result = 1;
    if (choice <= count) {
        TeskUtils::copyBounded(path, found.gl_pathv[choice - 1], size);
        result = 0;
    }
    globfree(&found);
    return result;
}

int InitializeDebugConsole(PFileConsole& console, int level)
{
    const char* fromEnvironment = getenv("QUILB_INSTALLER_DEBUG");
    if (fromEnvironment) {
        int environmentLevel = strcasecmp(fromEnvironment, "true") == 0 ? 1 : teskutils_atoi(fromEnvironment);
        if (environmentLevel > level)
            level = environmentLevel;
    }
    if (level < 0)
        level = 0;
    if (level > 4)
        level = 4;
    if (level < 1)
        return level;

    char folder[TeskUtils::kPathSize];
    if (InstallerFileUtils::getTempFolder(folder, sizeof folder) != 0) {
        puts("ERROR: Failed to obtain temp directory for Installer debug log");
        return level;
    }
    char name[128] = "installer_debug";
    if (level >= 2) {
        time_t now = time(nullptr);
        struct tm local;
        localtime_r(&now, &local);
        char stamp[64];
        snprintf(stamp, sizeof stamp, "_%04d_%02d_%02d_%02d_%02d", local.tm_year + 1900, local.tm_mon + 1,
            local.tm_mday, local.tm_hour, local.tm_min);
        TeskUtils::appendBounded(name, stamp, sizeof name);
        if (level >= 3) {
            snprintf(stamp, sizeof stamp, "_%02d", local.tm_sec);
            TeskUtils::appendBounded(name, stamp, sizeof name);
        }
    }
    TeskUtils::appendBounded(name, ".log", sizeof name);
    char path[TeskUtils::kPathSize];
    TeskUtils::copyBounded(path, folder, sizeof path);
    TeskUtils::appendToFolder(path, name, sizeof path);
    if (console.Create(path, 0) == 0)
        printf("Installer debug log file:\n\t%s\n", path);
    else
        printf("ERROR: Failed to create installer debug log file:\n\t%s\n", path);
    fflush(stdout);
    return level;
}

int RunConsoleFrontEnd(int argc, char** argv)
{
    ConsoleOptions options;
    if (ParseCmdLine(argc, argv, options) != 0)
        return 1;
    if (options.testRun)
        return 0;

    PFileConsole log;
    int level = InitializeDebugConsole(log, options.debug);
    char stamp[64];
    buildStamp(stamp, sizeof stamp);
    log.Dump("Installer build: %s from %s", QUILB_REVISION, stamp);
    log.Dump("Parsing command line arguments");
    log.Dump("Installation was called with arguments:");
    for (int i = 0; i < argc; ++i)
        log.Dump("  [ARG %02d] %s", i, argv[i]);
    log.Dump("Installation started");

    CLParser parser(argc, argv);
    bool automated = options.uninstall ? options.autoRun : options.configFile[0] != '\0';
    LinuxInstaller installer(options.gui, automated, nullptr, nullptr);
    installer.InitDebugMode(&log, level);
    installer.InitCmdLineParser(&parser);
    const char* installerDir = getenv("QUILB_INSTALLER_DIR");
    if (installerDir)
        installer.SetInstallerPath(installerDir);
    if (options.configFile[0])
        installer.setConfigFileName(options.configFile);

    ensureInstallRights(options.child, argc, argv, &log);

    if (options.gui == 1)
        puts("Cannot initialize the graphic user interface. Please, use the console installer (-gui=0)");

    ConsoleUI ui(options.uninstall ? 1 : 0, options.ignoreErrors, options.quiet);
    ui.setExchange(&installer);
    bool inputAutomated = false;
    if (!options.uninstall) {
        const char* input = options.autoRun ? "autoInstall" : options.configFile;
        log.Dump("Initializing install input: input=\"%s\"", input);
        ui.init_input(input, inputAutomated);
        // A configuration file given as an address was fetched to a local file, which is
        // the one the engine has to read.
        const Automated* fromFile = dynamic_cast<const Automated*>(ui.getInput());
        if (fromFile && fromFile->file()[0] && strcmp(fromFile->file(), options.configFile) != 0)
            installer.setConfigFileName(fromFile->file());
    } else {
        const char* hint = options.autoRun ? "autoUninstall" : "uninstall";
        log.Dump("Initializing uninstall input: hint=\"%s\"", hint);
        ui.init_input(hint, inputAutomated);
    }
    log.Dump("Setting ignoreErrors to %d", options.ignoreErrors);

    int result;
    if (options.uninstall) {
        log.Dump("Initializing uninstallation with log: \"%s\"", options.log);
        result = installer.Init(options.log, 0, 1);
    } else {
        log.Dump("Initializing with external bin file: \"%s\"", options.bin);
        result = installer.Init(options.bin, 0, 0);
    }
    if (result == 0) {
        log.Dump("Running installation");
        result = installer.RunInstallerUI(&ui, &log);
    }
    if (result != 0) {
        char text[256];
        snprintf(text, sizeof text, "There was an error during the (un)installation: %i", result);
        puts(text);
        log.Dump("%s", text);
        ui.setErrorMessage(text, "Error");
        ui.showErrorMessage();
    }
    installer.Done();
    fflush(stdout);
    return result;
}
