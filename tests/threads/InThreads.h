// SPDX-License-Identifier: MIT
//
// Work that several threads begin at the same time.
#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace threads {

inline constexpr int kThreads = 4;

/// Runs `work(number of the thread)` in all threads at once.
template <class Work>
void InThreads(Work work)
{
    std::atomic<int> waiting{kThreads};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            work(i);
        });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace threads
