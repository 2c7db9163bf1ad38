// SPDX-License-Identifier: MIT
#include "framework/core/detail/SignalCleanup.h"

#include "framework/core/AtomicFile.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace framework {

namespace {

enum class Use { Free, Filling, Entered };

struct Slot
{
    std::atomic<Use> use{Use::Free};
    pid_t process = 0; // a process that was forked does not remove the files of its parent
    int folder = -1;
    std::array<char, 128> name{};
};

static_assert(std::atomic<Use>::is_always_lock_free, "a signal handler must not wait");

constinit std::array<Slot, 32> slots;

// The names are random. If another thread releases a slot meanwhile, and its descriptor is used for
// another folder, the name is not found there.
void RemoveEntered() noexcept
{
    for (Slot& slot : slots)
        if (slot.use.load(std::memory_order_acquire) == Use::Entered && slot.process == ::getpid())
            ::unlinkat(slot.folder, slot.name.data(), 0);
}

// The signal is blocked until this returns; then it ends the process as it would have.
void CleanUpAndEnd(int signal) noexcept
{
    const int reason = errno;
    RemoveEntered();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    errno = reason;
}

} // namespace

int EnterForCleanup(int folder, std::string_view name)
{
    if (name.size() >= slots[0].name.size()) return -1;
    for (std::size_t i = 0; i < slots.size(); ++i) {
        Slot& slot = slots[i];
        Use expected = Use::Free;
        if (!slot.use.compare_exchange_strong(expected, Use::Filling)) continue;
        slot.process = ::getpid();
        slot.folder = folder;
        name.copy(slot.name.data(), name.size());
        slot.name[name.size()] = '\0';
        slot.use.store(Use::Entered, std::memory_order_release);
        return static_cast<int>(i);
    }
    return -1;
}

void ReleaseFromCleanup(int slot)
{
    if (slot >= 0) slots[static_cast<std::size_t>(slot)].use.store(Use::Free);
}

void RemoveTemporaryFilesOnSignals()
{
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        struct sigaction action = {};
        if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
        action.sa_handler = CleanUpAndEnd;
        ::sigaction(signal, &action, nullptr);
    }
}

} // namespace framework
