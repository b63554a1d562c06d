// Temporary files of the engine: an empty file in $TMPDIR that the caller owns, and nothing at
// all where none can be made.
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "linux/linux_installer.h"
#include "support/paths.h"

namespace {

TEST(TempFile, EmptyFileInTheTemporaryFolderOrNothing)
{
    quilbtest::TempDir dir;
    const std::string oldTmp = getenv("TMPDIR") ? getenv("TMPDIR") : "";
    const bool hadTmp = getenv("TMPDIR") != nullptr;
    LinuxInstaller installer(0, false, nullptr, nullptr);

    setenv("TMPDIR", (dir.path() + "//").c_str(), 1);
    char first[520] = {};
    char second[520] = {};
    int firstResult = installer.GetTempFile(first, sizeof first);
    int secondResult = installer.GetTempFile(second, sizeof second);
    char cut[8] = {};
    int cutResult = installer.GetTempFile(cut, sizeof cut);
    setenv("TMPDIR", dir.file("missing").c_str(), 1);
    char untouched[520] = "old";
    int missingResult = installer.GetTempFile(untouched, sizeof untouched);
    hadTmp ? setenv("TMPDIR", oldTmp.c_str(), 1) : unsetenv("TMPDIR");

    EXPECT_EQ(firstResult, 0);
    EXPECT_EQ(secondResult, 0);
    const std::string prefix = dir.path() + "/tesktemp_";
    EXPECT_EQ(std::string(first).substr(0, prefix.size()), prefix);
    EXPECT_EQ(strlen(first), prefix.size() + 6);
    EXPECT_STRNE(first, second);
    struct stat info;
    ASSERT_EQ(stat(first, &info), 0);
    EXPECT_TRUE(S_ISREG(info.st_mode));
    EXPECT_EQ(info.st_size, 0);
    // A short buffer gets what fits; the file is made all the same.
    EXPECT_EQ(cutResult, 0);
    EXPECT_EQ(std::string(cut), prefix.substr(0, 7));

    EXPECT_EQ(missingResult, -1);
    EXPECT_STREQ(untouched, "old");
}

} // namespace
