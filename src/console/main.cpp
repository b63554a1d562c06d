// installer_console, also started as uninstaller_console.
#include "console/console_main.h"

int main(int argc, char** argv)
{
    return RunConsoleFrontEnd(argc, argv);
}
