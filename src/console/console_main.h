#pragma once
// The start of the console front end: its command line, the choice of the package, the
// debug log, and the main flow that hands over to the engine.
#include "foundation/strings/path_size.h"

class PFileConsole;

// What the command line said. Texts are cut at 519 characters.
struct ConsoleOptions
{
    char bin[TeskUtils::kPathSize] = ""; // -bin=
    char uninstallApp[TeskUtils::kPathSize] = ""; // -uninstallApp=, -uninstallapp=
    char log[TeskUtils::kPathSize] = ""; // -log=
    char configFile[TeskUtils::kPathSize] = ""; // -configFile=, -fromFile=
    bool uninstall = false; // started as an uninstaller, or with -uninstallApp= / -log=
    bool autoRun = false; // -auto
    int gui = 0; // -gui, -gui=n
    int quiet = 0; // -quiet, -quiet=n
    bool quietGiven = false; // -quiet=n stood on the command line
    int ignoreErrors = 0; // -ignoreErrors=n
    int debug = 0; // -debug, -debug=n
    int backup = 0; // -backup, -backup=n
    bool verbose = false; // --verbose
    bool child = false; // -child: this is the elevated copy
    bool testRun = false; // -testRun
    bool dpi = false; // -dpi
    bool noDpi = false; // -nodpi
};

// Reads the command line into `options`. Gives 0 when the run can go on (also for
// -testRun, which the caller ends at once), 1 after a message when it can't: an uninstall
// without -log= or -uninstallApp=, or an install that finds no package.
int ParseCmdLine(int argc, char** argv, ConsoleOptions& options);

// Looks for "*.ibin" in the working directory: one is taken, several are offered to choose
// from. Gives 0 with the file in `path`, or 1 when there is none or the user chose to exit.
int SearchAndAskForBinFile(char* path, int size);

// Opens the debug log in the temporary folder when the level (the greater of `level` and
// QUILB_INSTALLER_DEBUG) is above 0. Gives that level, held between 0 and 4.
int InitializeDebugConsole(PFileConsole& console, int level);

// The whole program: gives the exit status.
int RunConsoleFrontEnd(int argc, char** argv);
