// SPDX-License-Identifier: MIT
#include "apps/cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

TEST(Explain, SaysAsTheParserDoesWhatNeedsNoOtherWords)
{
    CLI::App program("", "pole");
    testing::internal::CaptureStderr();
    const int code = cli::Explain(program, CLI::ArgumentMismatch::FlagOverride("--fast"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "pole: --fast was given a disallowed flag override (see pole --help)\n");
    EXPECT_EQ(code, 2);
}

// A file that the work opens would get the number of a standard stream, and what is meant for the
// stream would end up in it.
TEST(RunMain, DoesNothingWhereAClosedStreamCannotBeReserved)
{
    const auto runWithoutFiles = [] {
        close(STDIN_FILENO);
        const rlimit none{0, 0};
        setrlimit(RLIMIT_NOFILE, &none);
        std::_Exit(cli::RunMain("pole: ", 0, nullptr, [](int, char**) { return 77; }));
    };
    EXPECT_EXIT(runWithoutFiles(), testing::ExitedWithCode(2), "^$");
    const auto run = [] {
        close(STDIN_FILENO);
        std::_Exit(cli::RunMain("pole: ", 0, nullptr, [](int, char**) { return 77; }));
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(77), "^$");
}

} // namespace
