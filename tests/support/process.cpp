#include "support/process.h"

#include "support/paths.h"

#include <cstdio>
#include <sys/wait.h>

namespace quilbtest {

CommandResult runCommand(const std::string& commandLine)
{
    CommandResult result;
    std::string full = "( " + commandLine + " ) 2>&1";
    FILE* pipe = popen(full.c_str(), "r");
    if (!pipe)
        return result;
    char buffer[4096];
    size_t count;
    while ((count = fread(buffer, 1, sizeof buffer, pipe)) > 0)
        result.output.append(buffer, count);
    int status = pclose(pipe);
    if (WIFEXITED(status)) {
        result.exitCode = WEXITSTATUS(status);
    } else if (WIFSIGNALED(status)) {
        result.signal = WTERMSIG(status);
    }
    return result;
}

std::string shellQuote(const std::string& word)
{
    std::string quoted = "'";
    for (char c : word) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return quoted + "'";
}

bool sandboxAvailable(std::string* why)
{
    static int known = -1;
    static std::string reason;
    if (known < 0) {
        CommandResult probe
            = runCommand("bash " + shellQuote(sourceDir() + "/scripts/sandbox.sh") + " --check");
        known = probe.exitCode == 0 ? 1 : 0;
        reason = probe.output;
    }
    if (why)
        *why = reason;
    return known == 1;
}

CommandResult runInSandbox(const std::string& commandLine, const std::vector<std::string>& binds)
{
    std::string line = "bash " + shellQuote(sourceDir() + "/scripts/sandbox.sh");
    for (const std::string& dir : binds)
        line += " -b " + shellQuote(dir);
    line += " -- /bin/sh -c " + shellQuote(commandLine);
    return runCommand(line);
}

} // namespace quilbtest
