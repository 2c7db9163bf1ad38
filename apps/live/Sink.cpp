// SPDX-License-Identifier: MIT
#include "apps/live/Sink.h"

#include "apps/live/Open.h"
#include "apps/tables/Errors.h"
#include <array>
#include <cerrno>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <utility>

namespace live {

namespace {

using Epoch = std::shared_ptr<const std::string>;

Descriptor OrRefuse(Opened opened, const Endpoint& endpoint)
{
    if (!opened.descriptor.IsOpen()) throw tables::InputError(endpoint.text, opened.problem);
    return std::move(opened.descriptor);
}

class TcpSink : public Sink
{
public:
    TcpSink(Loop& loop, const Endpoint& endpoint, Server::Setup setup)
        : m_server(loop, endpoint, std::move(setup)), m_address(endpoint.name)
    {}
    void Send(const Epoch& epoch) override { m_server.Send(epoch); }
    std::string Banner() const override
    {
        const std::string port = fmt::format("tcp {}:{}", m_address, m_server.Port());
        if (!IsLoopback(m_address)) return port + " (OTHERS CAN CONNECT)";
        return fmt::format("{} (this computer only; tcp:0.0.0.0:{} lets others in)", port,
                           m_server.Port());
    }
    std::size_t Clients() const override { return m_server.Clients(); }
    std::uint64_t Dropped() const override { return m_server.Dropped(); }

private:
    Server m_server;
    std::string m_address;
};

class UdpSink : public Sink
{
public:
    explicit UdpSink(const Endpoint& endpoint)
        : m_socket(OrRefuse(ConnectUdp(endpoint.name, endpoint.port), endpoint)),
          m_banner(fmt::format("udp {}:{}", endpoint.name, endpoint.port))
    {}
    void Send(const Epoch& epoch) override
    {
        // Nobody may be there yet, and then the system refuses every other datagram.
        const auto sent = [&] { return write(m_socket.Get(), epoch->data(), epoch->size()) >= 0; };
        if (!sent() && !(errno == ECONNREFUSED && sent())) ++m_dropped;
    }
    std::string Banner() const override { return m_banner; }
    std::uint64_t Dropped() const override { return m_dropped; }

private:
    Descriptor m_socket;
    std::string m_banner;
    std::uint64_t m_dropped = 0;
};

class PtySink : public Sink
{
public:
    PtySink(Loop& loop, const Endpoint& endpoint, const Server::Setup& setup)
        : m_loop(loop), m_link(endpoint.name), m_pty(OrRefuse(OpenPty(endpoint.name), endpoint)),
          m_upstream(setup.makeUpstream ? setup.makeUpstream() : Upstream())
    {}
    ~PtySink() override
    {
        m_watch.reset();
        RemovePtyLink(m_link);
    }
    PtySink(const PtySink&) = delete;
    PtySink& operator=(const PtySink&) = delete;

    void Send(const Epoch& epoch) override
    {
        if (!HasReader(m_pty.Get())) {
            m_watch.reset();
            m_isWaiting = false;
            m_queue = {};
            return;
        }
        if (!m_watch) {
            m_watch = m_loop.Observe(m_pty.Get());
            m_watch->WhenReadable([this] { Read(); });
        }
        m_queue.Push(epoch);
        if (!m_isWaiting) Write();
    }
    std::string Banner() const override { return "pty " + m_link; }
    std::size_t Clients() const override { return HasReader(m_pty.Get()) ? 1 : 0; }
    std::uint64_t Dropped() const override { return m_queue.Dropped(); }

private:
    void Read()
    {
        std::array<char, 1024> block;
        const std::size_t allowed = m_allowance.Take(block.size(), m_loop.Now());
        const ssize_t count = read(m_pty.Get(), block.data(), block.size());
        if (count <= 0 && errno != EAGAIN && errno != EINTR) {
            m_watch.reset(); // nobody has it open
            m_isWaiting = false;
            return;
        }
        const std::size_t taken =
            std::min(allowed, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (m_upstream && taken > 0) m_upstream({block.data(), taken});
    }
    void Write()
    {
        while (!m_queue.IsEmpty()) {
            const std::string_view rest = m_queue.Front();
            const ssize_t count = write(m_pty.Get(), rest.data(), rest.size());
            if (count < 0) {
                m_isWaiting = true;
                m_watch->WhenWritable([this] {
                    m_isWaiting = false;
                    Write();
                });
                return;
            }
            m_queue.Sent(static_cast<std::size_t>(count));
        }
    }

    Loop& m_loop;
    std::string m_link;
    Descriptor m_pty;
    Upstream m_upstream;
    std::unique_ptr<Watch> m_watch;
    EpochQueue m_queue;
    ByteAllowance m_allowance{Server::kUpstream};
    bool m_isWaiting = false;
};

// A pipe is asked before each write and gets no more than it takes at once: standard output is not
// made non-blocking, since other programs may share it.
class FileSink : public Sink
{
public:
    FileSink(Descriptor file, std::string name, const Server::Setup& setup)
        : m_file(std::move(file)), m_name(std::move(name)), m_onEvent(setup.onEvent)
    {}
    void Send(const Epoch& epoch) override
    {
        if (!m_file.IsOpen()) return;
        m_queue.Push(epoch);
        constexpr std::size_t kPipeTakes = 4096; // bytes, whenever it says it can be written
        while (!m_queue.IsEmpty()) {
            pollfd asked{m_file.Get(), POLLOUT, 0};
            if (poll(&asked, 1, 0) == 0) return;
            const std::string_view rest = m_queue.Front().substr(0, kPipeTakes);
            const ssize_t count = write(m_file.Get(), rest.data(), rest.size());
            if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
            if (count < 0) return Close();
            m_queue.Sent(static_cast<std::size_t>(count));
        }
    }
    std::string Banner() const override { return m_name; }
    std::uint64_t Dropped() const override { return m_queue.Dropped(); }

private:
    void Close()
    {
        const bool isOutput = m_name == "standard output";
        if (errno == EPIPE && isOutput) throw tables::OutputClosed();
        m_onEvent(fmt::format("{} ends: {}", m_name, LastProblem()));
        m_file.Close();
    }

    Descriptor m_file;
    std::string m_name;
    std::function<void(const std::string&)> m_onEvent;
    EpochQueue m_queue;
};

} // namespace

std::unique_ptr<Sink> MakeSink(Loop& loop, const Endpoint& endpoint, Server::Setup setup)
{
    switch (endpoint.kind) {
    case Endpoint::Kind::Tcp:
        return std::make_unique<TcpSink>(loop, endpoint, std::move(setup));
    case Endpoint::Kind::Udp:
        return std::make_unique<UdpSink>(endpoint);
    case Endpoint::Kind::Pty:
        return std::make_unique<PtySink>(loop, endpoint, setup);
    case Endpoint::Kind::File:
        return std::make_unique<FileSink>(OrRefuse(OpenToWrite(endpoint.name), endpoint),
                                          "file " + endpoint.name, setup);
    default:
        return std::make_unique<FileSink>(Descriptor(dup(STDOUT_FILENO)), "standard output", setup);
    }
}

} // namespace live
