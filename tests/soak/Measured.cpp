// SPDX-License-Identifier: MIT
#include "tests/soak/Measured.h"

#include "tests/reference/FailingAllocations.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <dirent.h>
#include <memory>
#include <unistd.h>

namespace soak {

std::chrono::nanoseconds ProcessorTime()
{
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

// Times below 2^kFine have a bin each, every octave above has 2^kFine bins.
std::size_t Histogram::BinOf(std::uint64_t time)
{
    const unsigned width = static_cast<unsigned>(std::bit_width(time));
    if (width <= kFine) return time;
    const unsigned octave = width - kFine;
    const std::uint64_t fine = (time >> (octave - 1)) & ((1U << kFine) - 1);
    return (static_cast<std::size_t>(octave) << kFine) + fine;
}

std::uint64_t Histogram::EndOf(std::size_t bin)
{
    const std::size_t octave = bin >> kFine;
    if (octave == 0) return bin;
    const std::uint64_t fine = (bin & ((1U << kFine) - 1)) | (1U << kFine);
    return ((fine + 1) << (octave - 1)) - 1;
}

void Histogram::Add(std::chrono::nanoseconds time)
{
    const auto ns = static_cast<std::uint64_t>(std::max<std::int64_t>(time.count(), 0));
    ++m_bins[BinOf(ns)];
    ++m_count;
    m_most = std::max(m_most, ns);
}

double Histogram::Percentile(double part) const
{
    auto left = static_cast<std::int64_t>(std::ceil(part * static_cast<double>(m_count)));
    if (left <= 0) return 0.0;
    for (std::size_t bin = 0; bin < m_bins.size(); ++bin) {
        left -= m_bins[bin];
        if (left <= 0) return static_cast<double>(std::min(EndOf(bin), m_most)) / 1000.0;
    }
    return Most();
}

namespace {

long ResidentKib()
{
    long pages = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%*d %ld", &pages) != 1) pages = 0;
        std::fclose(file);
    }
    return pages * (::sysconf(_SC_PAGESIZE) / 1024);
}

int Descriptors()
{
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc/self/fd"), ::closedir);
    if (!folder) return 0;
    int count = -1; // that of the folder itself
    while (const dirent* entry = ::readdir(folder.get()))
        count += entry->d_name[0] != '.';
    return count;
}

} // namespace

Held HeldNow()
{
    const long blocks = reference::CanFailAllocations() ? reference::HeldBlocks() : 0;
    return {blocks, ResidentKib(), Descriptors()};
}

} // namespace soak
