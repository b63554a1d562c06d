#pragma once
// An engine with a template loaded from tests/data/installer or from a text, and its log.
// Shared by the template and dialog tests.
#include <memory>
#include <string>
#include <vector>

#include "foundation/streams/pmemory_console.h"
#include "installer/installer.h"
#include "support/paths.h"

namespace quilbtest {

struct LoadedTemplate
{
    PMemoryConsole log;
    std::unique_ptr<Installer> installer { new Installer() };

    LoadedTemplate()
    {
        log.flags = 0;
        installer->InitDebugMode(&log, 0);
    }

    // Reads tests/data/installer/<name>; false when the file can't be read.
    bool loadFile(const std::string& name)
    {
        return installer->templateXml.ParseFile((dataDir() + "/installer/" + name).c_str()) == 0;
    }

    // Reads a template given as text.
    void loadText(const std::string& text)
    {
        std::vector<char> buffer(text.begin(), text.end());
        buffer.push_back('\0');
        installer->templateXml.ParseTag(buffer.data());
    }

    // Number of times `text` occurs in the log.
    int logCount(const std::string& text) const
    {
        int count = 0;
        for (size_t at = log.text().find(text); at != std::string::npos; at = log.text().find(text, at + 1))
            ++count;
        return count;
    }
};

} // namespace quilbtest
