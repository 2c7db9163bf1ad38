// SPDX-License-Identifier: MIT
//
// One thread that waits for descriptors, times, signals and names of computers, on Boost.Asio. This
// header shows nothing of it; descriptors are opened by apps/live/Open.h.
//
//     live::Loop loop;
//     const auto watch = loop.Observe(descriptor.Get());
//     watch->WhenReadable([&] { Read(descriptor); });      // again and again
//     const auto timer = loop.Every(20ms, [&] { bridge.Tick(loop.Now()); });
//     loop.OnSignals([&](int) { loop.Stop(); });
//     loop.Run();
//
// Watches and timers end with their object, which a callback may destroy, too. Callbacks run inside
// Run() only. An exception of a callback ends Run().
#pragma once

#include "field/Epoch.h"
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace live {

using field::Instant;

class Timer
{
public:
    virtual ~Timer() = default;
};

class Watch
{
public:
    virtual ~Watch() = default;
    /// Calls back whenever there is something to read, or the other side has closed; nullptr ends
    /// that.
    virtual void WhenReadable(std::function<void()> callback) = 0;
    /// Calls back once, when something can be written.
    virtual void WhenWritable(std::function<void()> callback) = 0;
};

/// The addresses of a computer in digits, or why there are none.
struct Resolved
{
    std::vector<std::string> addresses;
    std::string problem;
};

class Loop
{
public:
    Loop();
    ~Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    /// Steady time since this object was made.
    Instant Now() const;

    /// Until Stop().
    void Run();
    void Stop();

    [[nodiscard]] std::unique_ptr<Timer> After(Instant wait, std::function<void()> callback);
    /// Beats that were missed are made up for by one call.
    [[nodiscard]] std::unique_ptr<Timer> Every(Instant period, std::function<void()> callback);

    /// @param descriptor  stays the caller's; closed after the watch has ended
    /// @return nullptr for what cannot be waited for, such as a file on a disk
    [[nodiscard]] std::unique_ptr<Watch> Observe(int descriptor);

    /// Ends with the returned object.
    [[nodiscard]] std::unique_ptr<Timer> Resolve(const std::string& host,
                                                 std::function<void(const Resolved&)> callback);

    /// SIGINT and SIGTERM.
    void OnSignals(std::function<void(int)> callback);

private:
    struct Asio;
    std::unique_ptr<Asio> m_asio;
};

} // namespace live
