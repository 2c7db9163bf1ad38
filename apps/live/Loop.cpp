// SPDX-License-Identifier: MIT
#include <utility> // before Boost.Asio 1.74, which lacks it in C++20

#include "apps/live/Loop.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <sys/epoll.h>
#include <unistd.h>

namespace live {

namespace asio = boost::asio;
using boost::system::error_code;

namespace {

class SteadyTimer : public Timer
{
public:
    SteadyTimer(asio::io_context& context, Instant period, std::function<void()> callback,
                bool repeats)
        : m_state(std::make_shared<State>(context))
    {
        m_state->period = period;
        m_state->callback = std::move(callback);
        m_state->repeats = repeats;
        m_state->due = std::chrono::steady_clock::now() + period;
        Wait(m_state);
    }
    ~SteadyTimer() override
    {
        m_state->isAlive = false;
        m_state->timer.cancel();
    }
    SteadyTimer(const SteadyTimer&) = delete;
    SteadyTimer& operator=(const SteadyTimer&) = delete;

private:
    struct State
    {
        explicit State(asio::io_context& context) : timer(context) {}
        asio::steady_timer timer;
        std::chrono::steady_clock::time_point due;
        Instant period{};
        std::function<void()> callback;
        bool repeats = false;
        bool isAlive = true;
    };

    static void Wait(const std::shared_ptr<State>& state)
    {
        state->timer.expires_at(state->due);
        state->timer.async_wait([state](const error_code& error) {
            if (error || !state->isAlive) return;
            state->callback();
            if (!state->isAlive || !state->repeats) return;
            state->due = std::max(state->due + state->period, std::chrono::steady_clock::now());
            Wait(state);
        });
    }

    std::shared_ptr<State> m_state;
};

// Boost.Asio takes a file on a disk, but never calls back.
bool CanBeWaitedFor(int descriptor)
{
    const int set = epoll_create1(EPOLL_CLOEXEC);
    epoll_event nothing = {};
    const bool can = epoll_ctl(set, EPOLL_CTL_ADD, descriptor, &nothing) == 0;
    close(set);
    return can;
}

class DescriptorWatch : public Watch
{
public:
    explicit DescriptorWatch(asio::io_context& context) : m_state(std::make_shared<State>(context))
    {}
    ~DescriptorWatch() override
    {
        m_state->isAlive = false;
        if (m_state->descriptor.is_open()) m_state->descriptor.release();
    }
    DescriptorWatch(const DescriptorWatch&) = delete;
    DescriptorWatch& operator=(const DescriptorWatch&) = delete;

    bool Assign(int descriptor)
    {
        if (!CanBeWaitedFor(descriptor)) return false;
        error_code error;
        m_state->descriptor.assign(descriptor, error);
        return !error;
    }

    void WhenReadable(std::function<void()> callback) override
    {
        m_state->readable = std::move(callback);
        if (m_state->readable) Read(m_state);
    }

    void WhenWritable(std::function<void()> callback) override
    {
        const auto state = m_state;
        state->descriptor.async_wait(asio::posix::stream_descriptor::wait_write,
                                     [state, callback = std::move(callback)](const error_code& e) {
                                         if (!e && state->isAlive) callback();
                                     });
    }

private:
    struct State
    {
        explicit State(asio::io_context& context) : descriptor(context) {}
        asio::posix::stream_descriptor descriptor;
        std::function<void()> readable;
        bool isWaiting = false;
        bool isAlive = true;
    };

    static void Read(const std::shared_ptr<State>& state)
    {
        if (std::exchange(state->isWaiting, true)) return;
        state->descriptor.async_wait(asio::posix::stream_descriptor::wait_read,
                                     [state](const error_code& error) {
                                         state->isWaiting = false;
                                         if (error || !state->isAlive || !state->readable) return;
                                         const auto callback = state->readable;
                                         callback();
                                         if (state->isAlive && state->readable) Read(state);
                                     });
    }

    std::shared_ptr<State> m_state;
};

class NameQuery : public Timer
{
public:
    NameQuery(asio::io_context& context, const std::string& host,
              std::function<void(const Resolved&)> callback)
        : m_isAlive(std::make_shared<bool>(true)), m_resolver(context)
    {
        m_resolver.async_resolve(
            host, "",
            [isAlive = m_isAlive, callback = std::move(callback)](
                const error_code& error, const asio::ip::tcp::resolver::results_type& results) {
                if (!*isAlive) return;
                Resolved resolved;
                if (error) resolved.problem = error.message();
                for (const auto& entry : results)
                    resolved.addresses.push_back(entry.endpoint().address().to_string());
                callback(resolved);
            });
    }
    ~NameQuery() override { *m_isAlive = false; }
    NameQuery(const NameQuery&) = delete;
    NameQuery& operator=(const NameQuery&) = delete;

private:
    std::shared_ptr<bool> m_isAlive;
    asio::ip::tcp::resolver m_resolver;
};

} // namespace

struct Loop::Asio
{
    asio::io_context context{1};
    asio::signal_set signals{context};
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

Loop::Loop() : m_asio(std::make_unique<Asio>()) {}
Loop::~Loop() = default;

Instant Loop::Now() const
{
    return std::chrono::steady_clock::now() - m_asio->start;
}

void Loop::Run()
{
    const auto stay = asio::make_work_guard(m_asio->context);
    m_asio->context.restart();
    m_asio->context.run();
}

void Loop::Stop()
{
    m_asio->context.stop();
}

std::unique_ptr<Timer> Loop::After(Instant wait, std::function<void()> callback)
{
    return std::make_unique<SteadyTimer>(m_asio->context, wait, std::move(callback), false);
}

std::unique_ptr<Timer> Loop::Every(Instant period, std::function<void()> callback)
{
    return std::make_unique<SteadyTimer>(m_asio->context, period, std::move(callback), true);
}

std::unique_ptr<Watch> Loop::Observe(int descriptor)
{
    auto watch = std::make_unique<DescriptorWatch>(m_asio->context);
    if (!watch->Assign(descriptor)) return nullptr;
    return watch;
}

std::unique_ptr<Timer> Loop::Resolve(const std::string& host,
                                     std::function<void(const Resolved&)> callback)
{
    return std::make_unique<NameQuery>(m_asio->context, host, std::move(callback));
}

void Loop::OnSignals(std::function<void(int)> callback)
{
    m_asio->signals.add(SIGINT);
    m_asio->signals.add(SIGTERM);
    m_asio->signals.async_wait(
        [callback = std::move(callback)](const error_code& error, int signal) {
            if (!error) callback(signal);
        });
}

} // namespace live
