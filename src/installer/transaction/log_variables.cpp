#include "installer/installer.h"

// Filled in with the action log reader: the variable block of the open action log.
int Installer::ReadVars()
{
    return 0;
}

// Filled in with the action log reader.
bool Installer::getLogFileVar(const char* logPath, const char* name, char* out, int outSize)
{
    (void)logPath;
    (void)name;
    (void)out;
    (void)outSize;
    return false;
}

int Installer::WriteVars(PConsole& log)
{
    (void)log;
    return 0;
}

int Installer::initValuesFromLogFile(FILE* stream)
{
    (void)stream;
    return 0;
}

void Installer::UpdateVars() {}
