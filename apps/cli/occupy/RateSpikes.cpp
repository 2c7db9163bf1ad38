// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/RateSpikes.h"

#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>

namespace cli {

namespace {

constexpr double kMostRate = 4000.0;   // [degrees/s]
constexpr double kSpike = 200.0;       // from both neighbors [degrees/s]
constexpr double kNeighborsAre = 0.25; // of it they may differ from each other
constexpr double kNextTo = 0.11;       // neighbors are nearer [s]
constexpr double kMostShare = 0.05;    // of the rows

std::array<double, 3> Components(const field::InertialSample& sample)
{
    return {sample.rate.x, sample.rate.y, sample.rate.z};
}

// The component that is furthest from 0.
double Largest(const field::InertialSample& sample)
{
    const auto rates = Components(sample);
    return *std::max_element(rates.begin(), rates.end(),
                             [](double a, double b) { return std::fabs(a) < std::fabs(b); });
}

bool IsBeyond(const field::InertialSample& sample)
{
    return std::fabs(Largest(sample)) > kMostRate;
}

bool IsSpike(const field::InertialSample& before, const field::InertialSample& sample,
             const field::InertialSample& after)
{
    if (!(sample.seconds - before.seconds < kNextTo && after.seconds - sample.seconds < kNextTo))
        return false;
    const auto a = Components(before);
    const auto b = Components(sample);
    const auto c = Components(after);
    for (std::size_t i = 0; i < 3; ++i) {
        const double off = std::min(std::fabs(b[i] - a[i]), std::fabs(b[i] - c[i]));
        if (off > kSpike && std::fabs(a[i] - c[i]) < kNeighborsAre * off) return true;
    }
    return false;
}

} // namespace

RateSpikes::RateSpikes(std::string file, Source source)
    : m_file(std::move(file)), m_source(std::move(source))
{}

bool RateSpikes::IsLeftOut(const ReadRow& row) const
{
    if (!row.row) return false;
    const field::InertialSample& sample = row.row->sample;
    if (IsBeyond(sample)) return true;
    const bool hasNext = !m_ahead.empty() && m_ahead.front().row;
    return m_before && hasNext && IsSpike(*m_before, sample, m_ahead.front().row->sample);
}

std::optional<ReadRow> RateSpikes::Next()
{
    for (;;) {
        while (m_ahead.size() < 2) {
            auto read = m_source();
            if (!read) break;
            m_ahead.push_back(std::move(*read));
        }
        if (m_ahead.empty()) return std::nullopt;
        ReadRow row = std::move(m_ahead.front());
        m_ahead.pop_front();
        m_rows += row.row ? 1 : 0;
        if (!IsLeftOut(row)) {
            m_before.reset();
            if (row.row) m_before = row.row->sample;
            return row;
        }
        if (m_leftOut++ == 0) {
            m_firstLine = row.line;
            m_firstRate = Largest(row.row->sample);
        }
    }
}

void RateSpikes::Conclude() const
{
    if (m_leftOut == 0) return;
    const std::string found =
        fmt::format("{} of {} rows {} rates that no pole has, {} in line {} ({:g} degrees/s)",
                    m_leftOut, m_rows, m_leftOut == 1 ? "has" : "have",
                    m_leftOut == 1 ? "it is" : "the first", m_firstLine, m_firstRate);
    if (static_cast<double>(m_leftOut) > kMostShare * static_cast<double>(m_rows))
        throw tables::InputError(m_file, found + ": are the rates in degrees per second?");
    tables::Tell("{}: {}; left out\n", m_file, found);
}

} // namespace cli
