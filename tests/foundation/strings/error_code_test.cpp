// Error chains, exceptions and the portable wrappers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

#include "foundation/strings/error_code.h"
#include "foundation/strings/exceptions.h"
#include "foundation/strings/portable.h"

using TeskUtils::ErrorCode;

namespace {

TEST(ErrorCode, NoErrorReadsAsSuccess)
{
    ErrorCode none;
    EXPECT_FALSE(none.isError());
    EXPECT_EQ(none.getError(), 0);
    EXPECT_EQ(none.getErrorString(), "No error");
    char buffer[4];
    EXPECT_STREQ(none.getErrorString(buffer, sizeof buffer), "No ");
}

TEST(ErrorCode, ChainShowsNewestFirst)
{
    ErrorCode error("openFile", 2, "cannot open %s", "a.txt");
    error.addError("copyFiles", 7, "copy failed");
    error.addError(nullptr, 9, "install stopped");
    EXPECT_EQ(error.depth(), 3);
    EXPECT_EQ(
        error.getErrorString(), "install stopped | [copyFiles] copy failed | [openFile] cannot open a.txt");

    const struct
    {
        int depth;
        int code;
    } codes[] = { { 0, 9 }, { 1, 7 }, { 2, 2 }, { 3, 0 }, { -1, 0 } };
    for (const auto& row : codes)
        EXPECT_EQ(error.getError(row.depth), row.code) << "depth " << row.depth;
    EXPECT_STREQ(error.getWhere(1), "copyFiles");
    EXPECT_EQ(error.getMessage(5), nullptr);

    char small[20];
    EXPECT_STREQ(error.getErrorString(small, sizeof small), "install stopped | [");
}

TEST(ErrorCode, CopiesShareTheChainAndStayIndependent)
{
    ErrorCode cause("low", 1, "disk full");
    ErrorCode wrapped = cause;
    wrapped.addError("high", 5, "could not write");
    EXPECT_EQ(cause.getErrorString(), "[low] disk full") << "the cause is not changed by wrapping";
    EXPECT_EQ(wrapped.getErrorString(), "[high] could not write | [low] disk full");
    EXPECT_EQ(cause.get()->refCount, 2) << "the wrapper holds one reference to its cause";

    cause.clear();
    EXPECT_EQ(wrapped.getError(1), 1) << "the cause lives on in the chain";

    ErrorCode fresh;
    fresh.addError("only", 3, "%d%%", 50);
    EXPECT_EQ(fresh.getErrorString(), "[only] 50%");
}

TEST(ErrorCode, MessagesAreCutAt510Characters)
{
    std::string longText(600, 'm');
    ErrorCode error("", 1, "%s", longText.c_str());
    EXPECT_EQ(strlen(error.getMessage()), 510u);
    EXPECT_EQ(error.getErrorString().length(), 510) << "an empty where shows no brackets";
}

TEST(Exceptions, FormatAndCutToTheirBuffers)
{
    std::string longText(5000, 'e');
    try {
        throw TeskUtils::ExceptionMsg("%s", longText.c_str());
    } catch (const TeskUtils::ExceptionMsg& e) {
        EXPECT_EQ(strlen(e.what()), 1023u);
    }
    try {
        throw InstallerError("step %d: %s", 4, longText.c_str());
    } catch (const GenericError& e) {
        EXPECT_EQ(strlen(e.what()), 4095u);
        EXPECT_EQ(strncmp(e.what(), "step 4: eee", 11), 0);
        EXPECT_NE(dynamic_cast<const InstallerError*>(&e), nullptr);
    }
    EXPECT_STREQ(GenericError("plain").what(), "plain");
}

TEST(Portable, Wrappers)
{
    const char* name = "QUILB_STRINGS_TEST_VARIABLE";
    EXPECT_EQ(teskutils_putenv("", "x"), -1);
    EXPECT_EQ(teskutils_putenv(nullptr, "x"), -1);
    EXPECT_EQ(teskutils_putenv(name, "first"), 0);
    EXPECT_EQ(teskutils_putenv(name, "second"), 0);
    EXPECT_STREQ(getenv(name), "second");
    EXPECT_EQ(teskutils_putenv(name, nullptr), 0);
    EXPECT_EQ(getenv(name), nullptr);

    char digits[16];
    EXPECT_STREQ(teskutils_itoa_n(-305, digits, sizeof digits), "-305");
    EXPECT_STREQ(teskutils_itoa_n(-1, digits, sizeof digits, 16), "ffffffff");
    EXPECT_STREQ(teskutils_itoa_n(123456, digits, 4), "123") << "cut to the buffer";

    char out[6];
    EXPECT_EQ(teskutils_sprintf_n(out, sizeof out, "%s-%d", "abc", 42), 6);
    EXPECT_STREQ(out, "abc-4");

    EXPECT_EQ(TeskUtils::getTickCount(), 0ul) << "the first call";
    usleep(30000);
    unsigned long later = TeskUtils::getTickCount();
    EXPECT_GE(later, 25ul);
    EXPECT_LT(later, 10000ul);
}

} // namespace
