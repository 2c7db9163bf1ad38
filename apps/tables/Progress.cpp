// SPDX-License-Identifier: MIT
#include "apps/tables/Progress.h"

#include "apps/tables/Messages.h"
#include <cmath>
#include <fmt/format.h>
#include <unistd.h>

namespace tables {

namespace {

constexpr std::chrono::milliseconds kBeforeFirst{1000};
constexpr std::chrono::milliseconds kBetween{100};

std::string Duration(double seconds)
{
    const auto whole = std::llround(seconds);
    if (whole < 60) return fmt::format("{} s", whole);
    return fmt::format("{} min {:02} s", whole / 60, whole % 60);
}

} // namespace

std::string ProgressText(std::uint64_t done, std::uint64_t total, double seconds, Unit unit)
{
    const auto amount = static_cast<double>(done);
    const double rate = amount / seconds;
    std::string soFar;
    if (unit == Unit::Bytes)
        soFar = fmt::format("{:.1f} MB, {:.1f} MB/s", amount / 1e6, rate / 1e6);
    if (total == 0 || done == 0) return soFar;

    const auto whole = static_cast<double>(total);
    const double share = std::fmin(amount / whole, 1.0);
    if (!soFar.empty()) soFar += ", ";
    return fmt::format("{:3.0f} %  {}{} left", std::floor(100.0 * share), soFar,
                       Duration(std::fmax(whole - amount, 0.0) / rate));
}

Progress::Progress(std::uint64_t total, Unit unit)
    : m_total(total), m_unit(unit), m_onTerminal(isatty(STDERR_FILENO) == 1), m_start(Clock::now()),
      m_next(m_start + kBeforeFirst)
{}

Progress::~Progress()
{
    Wipe();
}

void Progress::Wipe()
{
    if (!m_shown) return;
    TellText("\r\x1b[K");
    m_shown = false;
}

void Progress::Draw(std::uint64_t done)
{
    const auto now = Clock::now();
    if (now < m_next) return;
    m_next = now + kBetween;
    const double seconds = std::chrono::duration<double>(now - m_start).count();
    Tell("\r{}\x1b[K", ProgressText(done, m_total, seconds, m_unit));
    m_shown = true;
}

} // namespace tables
