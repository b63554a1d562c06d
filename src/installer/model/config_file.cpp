// The configuration file: a DefValues document that repeats an installation unattended.
// A console install writes one at its end; -configFile= reads it back (through the same
// reader as the template's DefValues).
#include "installer/installer.h"

int Installer::CreateConfigFile(const char* path)
{
    if (!path)
        return -1;
    PXML document;
    int root = document.SetTagData(-1, "DefValues", nullptr, false);
    if (root < 0)
        return 1;
    for (const VariableRecord& record : variables) {
        if (isVarExcluded(record.name, EXCLUDE_FROM_CONFIG))
            continue;
        int node = document.SetTagData(root, "Value", record.value, true);
        if (node < 0)
            return 1;
        document.SetParVal(node, "Name", record.name);
        document.SetParVal(node, "DataType", "value");
    }
    return document.WriteFile(path);
}

int Installer::getConfigFileName(char* buffer, int size)
{
    if (buffer && size > 0)
        buffer[0] = '\0';
    return 0;
}

void Installer::setConfigFileName(const char* name)
{
    (void)name;
}
