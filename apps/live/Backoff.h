// SPDX-License-Identifier: MIT
//
// How long to wait before the next attempt, and how much a client may send.
#pragma once

#include "field/Epoch.h"
#include <algorithm>
#include <chrono>
#include <cstddef>

namespace live {

/// 0.5, 1, 2, then 5 s each, for ever.
class Backoff
{
public:
    field::Instant Next()
    {
        constexpr std::chrono::milliseconds kWaits[] = {
            std::chrono::milliseconds(500), std::chrono::milliseconds(1000),
            std::chrono::milliseconds(2000), std::chrono::milliseconds(5000)};
        const std::size_t now = m_attempt;
        m_attempt = std::min(m_attempt + 1, std::size(kWaits) - 1);
        return kWaits[now];
    }
    void Succeed() { m_attempt = 0; }

private:
    std::size_t m_attempt = 0;
};

/// How many bytes may pass: so many a second, and one second's bytes at once.
class ByteAllowance
{
public:
    explicit ByteAllowance(double bytesPerSecond) : m_rate(bytesPerSecond), m_left(bytesPerSecond)
    {}

    /// Of `count` bytes at the instant `now` the number that may pass.
    std::size_t Take(std::size_t count, field::Instant now)
    {
        const double elapsed = std::chrono::duration<double>(now - m_last).count();
        m_last = now;
        m_left = std::min(m_rate, m_left + m_rate * std::max(elapsed, 0.0));
        const std::size_t taken = std::min(count, static_cast<std::size_t>(m_left));
        m_left -= static_cast<double>(taken);
        return taken;
    }

    /// Of what was taken, `count` bytes were not used.
    void GiveBack(std::size_t count) { m_left += static_cast<double>(count); }

private:
    double m_rate; // [bytes/s]
    double m_left;
    field::Instant m_last{};
};

} // namespace live
