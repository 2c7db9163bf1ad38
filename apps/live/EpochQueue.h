// SPDX-License-Identifier: MIT
//
// What waits for one client: at most two whole epochs. A client that reads too slowly misses
// epochs, never parts of one, and what it gets is never older than two periods and what the system
// holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

namespace live {

class EpochQueue
{
public:
    static constexpr std::size_t kMost = 2;

    /// Adds an epoch. Where two wait already the older one is dropped, but never one of which a
    /// part has been sent.
    void Push(std::shared_ptr<const std::string> epoch);

    /// What is to be sent next; empty where nothing waits.
    std::string_view Front() const;

    /// `count` bytes of Front() have been sent.
    void Sent(std::size_t count);

    bool IsEmpty() const { return m_epochs.empty(); }
    std::uint64_t Dropped() const { return m_dropped; }

private:
    std::deque<std::shared_ptr<const std::string>> m_epochs;
    std::size_t m_sent = 0; // of the first
    std::uint64_t m_dropped = 0;
};

} // namespace live
