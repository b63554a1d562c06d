#include "misc_test_helpers.h"

#include <cstdlib>

namespace misctest {

EnvGuard::EnvGuard(const char* name, const char* value) : name_(name)
{
    const char* old = getenv(name);
    hadValue_ = old != nullptr;
    old_ = old ? old : "";
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

} // namespace misctest
