#pragma once
// An engine with a captured log (bare lines) and counted shell probes that never run.
#include <cstring>
#include <string>

#include "foundation/streams/pmemory_console.h"
#include "installer/installer.h"

class ProbeInstaller : public Installer
{
public:
    ProbeInstaller()
    {
        log.flags = 0;
        InitDebugMode(&log, 0);
    }
    int runShellStatus(const char* command) override
    {
        return lastCommand = command, ++shellRuns, shellStatus;
    }

    // Adds a record directly, past the case-insensitive lookup of SetVarExt.
    void appendRecord(const char* name, const char* value)
    {
        VariableRecord& record = variables.append();
        strcpy(record.name, name);
        strcpy(record.value, value);
    }
    // The value of a variable, or its default; "<unknown>" where there is none.
    std::string value(const char* name, bool byDefault = false)
    {
        char buffer[1024];
        int found = byDefault ? GetVarDefaultValue(name, buffer, sizeof(buffer))
                              : GetVar(name, buffer, sizeof(buffer));
        return found == -1 ? "<unknown>" : buffer;
    }
    // Record `index` as "flags|value|expression|default".
    std::string record(int index) const
    {
        const VariableRecord& r = variables[index];
        return std::to_string(r.flags) + "|" + r.value + "|" + r.expression + "|" + r.defaultValue;
    }
    bool logged(const std::string& line) const { return log.text().find(line) != std::string::npos; }

    PMemoryConsole log;
    std::string lastCommand;
    int shellRuns = 0;
    int shellStatus = 0;
};
