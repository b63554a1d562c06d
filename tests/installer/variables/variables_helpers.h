#pragma once
// An engine with a captured log and counted shell probes, for the tests of the variable
// store and its expansion.
#include <cstring>
#include <string>

#include "foundation/streams/pmemory_console.h"
#include "installer/installer.h"

class ProbeInstaller : public Installer {
public:
    ProbeInstaller()
    {
        log.flags = 0;  // bare lines, so that tests can look for them whole
        debugConsole = &log;
    }

    int runShellStatus(const char* command) override
    {
        lastCommand = command ? command : "";
        ++shellRuns;
        return shellStatus;
    }

    // Adds a record directly, bypassing the case-insensitive lookup of SetVarExt.
    void appendRecord(const char* name, const char* value)
    {
        VariableRecord& record = variables.append();
        strcpy(record.name, name);
        strcpy(record.value, value);
    }

    std::string value(const char* name)
    {
        char buffer[1024];
        return GetVar(name, buffer, sizeof(buffer)) == -1 ? std::string("<unknown>") : std::string(buffer);
    }

    bool logged(const std::string& line) const { return log.text().find(line) != std::string::npos; }

    PMemoryConsole log;
    std::string lastCommand;
    int shellRuns = 0;
    int shellStatus = 0;
};
