// SPDX-License-Identifier: MIT
//
// Feeds a bridge so that a recording of what arrived gives the same reports as the pole itself:
// time passes in steps of 20 ms from Instant 0, and everything that arrives is preceded by the
// steps up to its arrival. What arrived after a pause of more than a minute is preceded by the
// first minute of it.
#pragma once

#include "field/Bridge.h"
#include "field/Recording.h"
#include <cstddef>
#include <string>

namespace live {

/// The key of channel K that tells how many clients there are, which a sentence says.
std::string ClientsKey(std::size_t clients);

class Feed
{
public:
    static constexpr field::Instant kStep = std::chrono::milliseconds(20);
    static constexpr field::Instant kLongestPause = std::chrono::minutes(1);

    /// How long the last epoch may wait for more sentences and for a pose.
    static constexpr field::Instant kLastEpoch = std::chrono::milliseconds(300);

    explicit Feed(field::Bridge& bridge) : m_bridge(bridge) {}

    /// Time passes until `now`.
    void Advance(field::Instant now);

    /// Something arrives.
    void Play(const field::Record& record);

private:
    field::Bridge& m_bridge;
    field::Instant m_next{}; // step
};

} // namespace live
