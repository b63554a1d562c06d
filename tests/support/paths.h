#pragma once
// Paths and small helpers shared by the test programs.
#include <string>

namespace quilbtest {

// Directory of the built programs (launcher, quilb_pack, front ends).
std::string binDir();
// Root of the source tree.
std::string sourceDir();
// Directory of the purpose-made test data under tests/data.
std::string dataDir();

// A fresh directory under $TMPDIR (or /tmp), removed with everything in it when the object dies.
class TempDir
{
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// Whole-file helpers for test setup and checks.
bool writeFile(const std::string& path, const std::string& content);
std::string readFile(const std::string& path);
bool fileExists(const std::string& path);

} // namespace quilbtest
