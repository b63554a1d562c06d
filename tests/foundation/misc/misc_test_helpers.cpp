#include "misc_test_helpers.h"

#include <cstdlib>
#include <sys/stat.h>

namespace misctest {

EnvGuard::EnvGuard(const char* name, const char* value) : name_(name)
{
    const char* old = getenv(name);
    hadValue_ = old != nullptr;
    if (old)
        old_ = old;
    if (value)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

EnvGuard::~EnvGuard()
{
    if (hadValue_)
        setenv(name_.c_str(), old_.c_str(), 1);
    else
        unsetenv(name_.c_str());
}

bool isDirectory(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool makeDirectory(const std::string& path)
{
    return mkdir(path.c_str(), 0755) == 0;
}

} // namespace misctest
