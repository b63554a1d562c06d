#pragma once
// Talking to the console's input through real standard streams.
#include "support/paths.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace quilbtest {

// Feeds `input` to standard input and captures standard output while `ask` runs.
template <typename Ask> std::string converse(const std::string& input, Ask ask)
{
    TempDir dir;
    std::string path = dir.file("answers");
    writeFile(path, input);
    EXPECT_NE(freopen(path.c_str(), "r", stdin), nullptr);
    testing::internal::CaptureStdout();
    ask();
    fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

} // namespace quilbtest
