// SPDX-License-Identifier: MIT
#include "field/north/GridNorth.h"
#include "tests/memory/Rows.h"

#include <csignal>
#include <iostream>
#include <map>
#include <optional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace sweep {

namespace {

constexpr const char* kSystem = "EPSG:32633";

struct Grid
{
    std::optional<field::GridNorth> grid = field::GridNorth::Of(kSystem);
    double convergence = -1.0;
};

std::string DescribeGrid(const Grid& g)
{
    return Text(g.convergence);
}

// What became of a call in a process of its own, with an allocation that failed.
enum class Ended { Right, NoSystem, Threw, Wrong, Aborted, Enough };

Ended CallWithAFailure(long k, reference::Failing which, double usual)
{
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit noCore{0, 0};
        ::setrlimit(RLIMIT_CORE, &noCore);
        ::close(2); // where PROJ tells why it ends
        reference::AllocationRound round(k, which);
        Ended ended = Ended::Threw;
        try {
            const auto grid = round.Run([] { return field::GridNorth::Of(kSystem); });
            ended = Ended::NoSystem;
            if (grid) ended = grid->Convergence(47.5, 17.0) == usual ? Ended::Right : Ended::Wrong;
        } catch (const std::bad_alloc&) {
        }
        if (ended == Ended::Right && !round.HasFailed()) ended = Ended::Enough;
        ::_exit(static_cast<int>(ended));
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status)) return static_cast<Ended>(WEXITSTATUS(status));
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT ? Ended::Aborted : Ended::Wrong;
}

// PROJ ends the program by an assertion of its own where some allocations fail, and does not give back
// all that it had: the process is another one. Never is there another direction of the north.
void CheckMaking()
{
    const double usual = field::GridNorth::Of(kSystem)->Convergence(47.5, 17.0);
    constexpr long kEachOne = 8;
    constexpr long kStep = 1499;
    std::map<Ended, int> count;
    for (const auto which : {reference::Failing::One, reference::Failing::AllFrom}) {
        Ended ended = Ended::Right;
        for (long k = 1; ended != Ended::Enough; k += k < kEachOne ? 1 : kStep) {
            ended = CallWithAFailure(k, which, usual);
            EXPECT_NE(ended, Ended::Wrong) << "allocation " << k;
            if (k <= 2) {
                EXPECT_EQ(ended, Ended::Threw) << "of our own, and the context";
            }
            ++count[ended];
        }
    }
    std::cout << count[Ended::Right] << " right, " << count[Ended::NoSystem] << " none, "
              << count[Ended::Threw] << " threw, " << count[Ended::Aborted] << " ended by PROJ\n";
    EXPECT_GT(count[Ended::NoSystem], 0);
}

} // namespace

std::vector<Row> GridRows()
{
    std::vector<Row> rows;
    rows.push_back({"field::GridNorth::Of field::GridNorth::GridNorth field::GridNorth::operator=",
                    CheckMaking});
    rows.push_back(Operation<Grid>(
        "field::GridNorth::Convergence", Shortage::Never,
        [](Grid& g) { g.convergence = g.grid->Convergence(47.6, 18.0); }, DescribeGrid));
    return rows;
}

} // namespace sweep
