#include "support/paths.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace quilbtest {

std::string binDir()
{
    return QUILB_BIN_DIR;
}
std::string sourceDir()
{
    return QUILB_SOURCE_DIR;
}
std::string dataDir()
{
    return QUILB_TEST_DATA_DIR;
}

TempDir::TempDir()
{
    const char* base = getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/quilbtest.XXXXXX";
    char buffer[4096];
    snprintf(buffer, sizeof buffer, "%s", pattern.c_str());
    if (mkdtemp(buffer))
        path_ = buffer;
}

TempDir::~TempDir()
{
    if (path_.empty())
        return;
    std::string command = "chmod -R u+rwx '" + path_ + "' 2>/dev/null; rm -rf '" + path_ + "'";
    if (system(command.c_str()) != 0)
        fprintf(stderr, "could not remove %s\n", path_.c_str());
}

bool writeFile(const std::string& path, const std::string& content)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
    return static_cast<bool>(out);
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

bool fileExists(const std::string& path)
{
    struct stat info;
    return lstat(path.c_str(), &info) == 0;
}

} // namespace quilbtest
