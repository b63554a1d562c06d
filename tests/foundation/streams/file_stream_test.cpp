#include "foundation/streams/pfile_stream.h"

#include "support/paths.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>

namespace {

const int kRead = int(PFileStream::AccessRead);
const int kWrite = int(PFileStream::AccessWrite);

mode_t currentUmask()
{
    mode_t mask = umask(0);
    umask(mask);
    return mask;
}

} // namespace

TEST(FileStream, OpenMapsAccessAndDisposition)
{
    // `exists`: 0 nothing at the path, 1 a file holding "old", 2 a directory.
    const struct
    {
        const char* name;
        int access;
        int disposition;
        int exists;
        int result;
        int mode;
        std::string after;
    } rows[] = {
        { "read, existing", kRead, 0, 1, 0, O_RDONLY, "old" },
        { "no access bits read", 0, 0, 1, 0, O_RDONLY, "old" },
        { "write, existing", kWrite, 0, 1, 0, O_WRONLY, "old" },
        { "read-write, existing", kRead | kWrite, 0, 1, 0, O_RDWR, "old" },
        { "make or empty", kWrite, 3, 1, 0, O_WRONLY, "" },
        { "make a new file", kWrite, 3, 0, 0, O_WRONLY, "" },
        { "disposition 2 creates and empties", kWrite, 2, 1, 0, O_WRONLY, "" },
        { "disposition 1 empties", kWrite, 1, 1, 0, O_WRONLY, "" },
        { "disposition 1 does not create", kWrite, 1, 0, ENOENT, -1, "" },
        { "missing file", kRead, 0, 0, ENOENT, -1, "" },
        { "a directory is refused", kRead, 0, 2, 21, -1, "" },
    };
    for (const auto& row : rows) {
        quilbtest::TempDir dir;
        const std::string path = dir.file("f");
        if (row.exists == 1)
            quilbtest::writeFile(path, "old");
        if (row.exists == 2) {
            ASSERT_EQ(mkdir(path.c_str(), 0755), 0);
        }
        PFileStream stream;
        EXPECT_EQ(stream.Open(path.c_str(), row.access, 0, row.disposition), row.result) << row.name;
        EXPECT_STREQ(stream.name, path.c_str()) << row.name;
        EXPECT_EQ(stream.Opened(), row.result ? 0 : 1) << row.name;
        if (row.result) {
            EXPECT_EQ(stream.fd, -1) << row.name;
            continue;
        }
        EXPECT_EQ(fcntl(stream.fd, F_GETFL) & O_ACCMODE, row.mode) << row.name;
        EXPECT_EQ(quilbtest::readFile(path), row.after) << row.name;
        struct stat info;
        ASSERT_EQ(stat(path.c_str(), &info), 0);
        if (!row.exists) {
            EXPECT_EQ(info.st_mode & 0777, 0644 & ~currentUmask()) << row.name;
        }
    }
}

TEST(FileStream, CreateEmptiesOrAppends)
{
    quilbtest::TempDir dir;
    const std::string path = dir.file("log");
    quilbtest::writeFile(path, "abc");
    PFileStream stream;
    ASSERT_EQ(stream.Create(path.c_str(), 1), 0);
    EXPECT_EQ(stream.GetPos(), 3);
    EXPECT_EQ(stream.WriteStr("de"), 0);
    EXPECT_EQ(stream.Close(), 0);
    EXPECT_EQ(quilbtest::readFile(path), "abcde");

    ASSERT_EQ(stream.Create(nullptr, 0), 0);
    EXPECT_EQ(quilbtest::readFile(path), "");
    EXPECT_EQ(stream.Opened(), 1);
    EXPECT_EQ(stream.Close(), 0);
    EXPECT_EQ(stream.Close(), EBADF);
    EXPECT_EQ(stream.Opened(), 0);
}

TEST(FileStream, SizeKeepsThePositionAndTruncateCutsThere)
{
    quilbtest::TempDir dir;
    const std::string path = dir.file("data");
    quilbtest::writeFile(path, "0123456789");
    PFileStream stream;
    ASSERT_EQ(stream.Open(path.c_str(), kRead | kWrite, 0, 0), 0);
    ASSERT_EQ(stream.SeekEnd(-4), 0);
    EXPECT_EQ(stream.Size(), 10);
    EXPECT_EQ(stream.Size(dir.file("missing").c_str()), 0);
    EXPECT_EQ(stream.GetPos(), 6);
    EXPECT_EQ(stream.Truncate(), 0);
    EXPECT_EQ(stream.Size(path.c_str()), 6);
    EXPECT_TRUE(stream.IsEOF());
}
