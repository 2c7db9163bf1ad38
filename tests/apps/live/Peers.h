// SPDX-License-Identifier: MIT
//
// The other ends of sockets and terminals, and a loop that runs until something has happened.
#pragma once

#include "apps/live/Descriptor.h"
#include "apps/live/Loop.h"
#include "apps/live/Open.h"
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <vector>

namespace apps::test {

using namespace std::chrono_literals;

/// Runs the loop until the condition holds.
/// @return whether it did, within the limit
inline bool RunUntil(live::Loop& loop, const std::function<bool()>& isDone,
                     live::Instant limit = 10s)
{
    bool done = isDone();
    if (done) return true;
    const auto look = loop.Every(1ms, [&] {
        done = isDone();
        if (done) loop.Stop();
    });
    const auto end = loop.After(limit, [&] { loop.Stop(); });
    loop.Run();
    return done;
}

/// For as long, whatever happens.
inline void RunFor(live::Loop& loop, live::Instant time)
{
    RunUntil(
        loop, [] { return false; }, time);
}

/// A client that has connected, or is about to.
class Peer
{
public:
    Peer() = default;
    explicit Peer(live::Descriptor descriptor) : m_descriptor(std::move(descriptor)) {}
    static Peer ConnectedTo(std::uint16_t port)
    {
        return Peer(std::move(live::BeginConnect("127.0.0.1", port).descriptor));
    }

    /// What has come so far.
    const std::string& Read()
    {
        char block[65536];
        ssize_t count = 0;
        while ((count = read(m_descriptor.Get(), block, sizeof block)) > 0)
            m_all.append(block, static_cast<std::size_t>(count));
        if (count == 0) m_isAtEnd = true;
        return m_all;
    }
    bool IsAtEnd()
    {
        Read();
        return m_isAtEnd;
    }
    /// @return how much of it the system took
    std::size_t Write(std::string_view bytes)
    {
        const ssize_t count = write(m_descriptor.Get(), bytes.data(), bytes.size());
        return count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    void Close() { m_descriptor.Close(); }
    int Get() const { return m_descriptor.Get(); }

private:
    live::Descriptor m_descriptor;
    std::string m_all;
    bool m_isAtEnd = false;
};

/// A pseudo terminal that plays a serial device: it can be unplugged and plugged in again.
class Device
{
public:
    explicit Device(std::string link) : m_link(std::move(link)) { Plug(); }
    ~Device() { Unplug(); }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    void Plug()
    {
        live::Opened pty = live::OpenPty(m_link);
        ASSERT_TRUE(pty.descriptor.IsOpen()) << pty.problem;
        m_peer = Peer(std::move(pty.descriptor));
    }
    void Unplug()
    {
        live::RemovePtyLink(m_link);
        m_peer.Close();
    }
    Peer& operator*() { return m_peer; }
    Peer* operator->() { return &m_peer; }

private:
    std::string m_link;
    Peer m_peer;
};

} // namespace apps::test
