// SPDX-License-Identifier: MIT
#include "apps/live/Source.h"

#include "apps/live/AddressRange.h"
#include "apps/live/Open.h"
#include <array>
#include <cerrno>
#include <fmt/format.h>
#include <utility>

namespace live {

namespace {

using Kind = Endpoint::Kind;

constexpr std::size_t kBlock = 65536; // no datagram is longer: what does not fit of one is lost

// What came of reading: some bytes, nothing yet, or the end.
struct ReadResult
{
    std::size_t count = 0;
    bool isEnd = false;
    bool isFailure = false; // rather than no more bytes
    std::string problem;    // of the end
};

ReadResult ReadSome(int descriptor, char* block, std::size_t size)
{
    ssize_t count = 0;
    do {
        count = read(descriptor, block, size);
    } while (count < 0 && errno == EINTR);
    if (count > 0) return {static_cast<std::size_t>(count), false, false, {}};
    if (count == 0) return {0, true, false, "the connection was closed"};
    if (errno == EAGAIN || errno == EWOULDBLOCK) return {};
    return {0, true, true, LastProblem()};
}

} // namespace

Source::Source(Loop& loop, Endpoint endpoint, Events events, std::string greeting)
    : m_loop(loop), m_endpoint(std::move(endpoint)), m_events(std::move(events)),
      m_greeting(std::move(greeting))
{
    if (m_endpoint.kind == Kind::Serial) m_patience = kSilence;
}

void Source::Start()
{
    m_timer = m_loop.After(Instant::zero(), [this] { Open(); });
}

void Source::Open()
{
    m_timer.reset();
    Opened opened;
    switch (m_endpoint.kind) {
    case Kind::Tcp:
    case Kind::Gpsd:
        return Look();
    case Kind::Serial:
        opened = OpenSerial(m_endpoint.name, m_endpoint.baud);
        break;
    case Kind::Udp:
        opened = BindUdp(m_endpoint.name, m_endpoint.port);
        break;
    case Kind::Standard:
        opened.descriptor = Descriptor(dup(STDIN_FILENO));
        break;
    case Kind::File:
    case Kind::Pty:
        opened = OpenToRead(m_endpoint.name);
        break;
    }
    if (!opened.descriptor.IsOpen()) return Lost(opened.problem);
    m_descriptor = std::move(opened.descriptor);
    Connected();
}

void Source::Look()
{
    if (ParseAddress(m_endpoint.name)) return Connect(m_endpoint.name);
    m_lookup = m_loop.Resolve(m_endpoint.name, [this](const Resolved& found) {
        m_addresses.assign(found.addresses.begin(), found.addresses.end());
        if (m_addresses.empty()) return Lost(found.problem);
        const std::string first = m_addresses.front();
        m_addresses.pop_front();
        Connect(first);
    });
}

void Source::Connect(const std::string& address)
{
    const auto failed = [this](const std::string& why) {
        m_watch.reset();
        m_descriptor.Close();
        if (m_addresses.empty()) return Lost(why);
        const std::string next = m_addresses.front();
        m_addresses.pop_front();
        Connect(next);
    };
    Opened opened = BeginConnect(address, m_endpoint.port);
    if (!opened.descriptor.IsOpen()) return failed(opened.problem);
    m_descriptor = std::move(opened.descriptor);
    m_watch = m_loop.Observe(m_descriptor.Get());
    m_timer = m_loop.After(kConnecting, [failed] { failed("no answer"); });
    m_watch->WhenWritable([this, failed] {
        const std::string problem = ConnectProblem(m_descriptor.Get());
        if (!problem.empty()) return failed(problem);
        Connected();
    });
}

void Source::Connected()
{
    m_timer.reset();
    m_isConnected = true;
    m_unsent = m_greeting;
    m_since = m_loop.Now();
    ++m_connections;
    m_events.onConnected();
    if (!m_watch) m_watch = m_loop.Observe(m_descriptor.Get());
    if (!m_watch || m_endpoint.rate) {
        m_watch.reset();
        return ReadFile();
    }
    m_watch->WhenReadable([this] { Read(); });
    Flush();
    if (m_patience) WatchSilence();
}

void Source::Read()
{
    std::array<char, kBlock> block;
    for (int i = 0; i < 8; ++i) {
        const ReadResult result = ReadSome(m_descriptor.Get(), block.data(), block.size());
        const bool isEmptyDatagram =
            m_endpoint.kind == Kind::Udp && result.isEnd && !result.isFailure;
        if (isEmptyDatagram) continue;
        if (result.isEnd) return Lost(result.problem);
        if (result.count == 0) return;
        m_since = m_loop.Now();
        if (std::exchange(m_isQuiet, false)) m_events.onEvent("is back");
        m_backoff.Succeed();
        m_events.onBytes({block.data(), result.count});
    }
}

// A file cannot be waited for: it is read piece by piece, or so many lines a second.
void Source::ReadFile()
{
    if (m_read.size() - m_emitted < kBlock) {
        m_read.erase(0, std::exchange(m_emitted, 0));
        const std::size_t before = m_read.size();
        m_read.resize(before + kBlock);
        const ReadResult result = ReadSome(m_descriptor.Get(), &m_read[before], kBlock);
        m_read.resize(before + result.count);
        if (result.isEnd && m_read.empty()) return Lost(result.problem);
    }
    if (m_endpoint.rate) {
        const double elapsed = std::chrono::duration<double>(m_loop.Now() - m_since).count();
        const double due = elapsed * *m_endpoint.rate;
        for (; m_linesGiven < due && m_emitted < m_read.size(); m_linesGiven += 1.0) {
            const std::size_t end = m_read.find('\n', m_emitted);
            const std::size_t next = end == std::string::npos ? m_read.size() : end + 1;
            const std::size_t begin = std::exchange(m_emitted, next);
            m_events.onBytes(std::string_view(m_read).substr(begin, next - begin));
        }
    } else {
        m_emitted = m_read.size();
        m_events.onBytes(m_read);
    }
    const Instant pause = m_endpoint.rate ? Instant(std::chrono::milliseconds(2)) : Instant::zero();
    m_timer = m_loop.After(pause, [this] { ReadFile(); });
}

void Source::Lost(const std::string& why)
{
    const bool isFile = m_endpoint.kind == Kind::File || m_endpoint.kind == Kind::Standard;
    const bool wasOpen = std::exchange(m_isConnected, false);
    m_watch.reset();
    m_timer.reset();
    m_descriptor.Close();
    m_unsent.clear();
    if (isFile && wasOpen) {
        m_events.onEnd();
        return;
    }
    if (!std::exchange(m_isQuiet, true)) m_events.onEvent(why + "; it is tried again and again");
    TryAgain();
}

void Source::TryAgain()
{
    // A device that was unplugged is used as soon as it is back; looking for its name costs
    // nothing.
    const bool isAway =
        m_endpoint.kind == Kind::Serial && access(m_endpoint.name.c_str(), F_OK) != 0;
    if (isAway) m_backoff.Succeed();
    m_timer = m_loop.After(m_backoff.Next(), [this] { Open(); });
}

void Source::WatchSilence()
{
    const Instant left = m_since + *m_patience - m_loop.Now();
    if (left > Instant::zero()) {
        m_timer = m_loop.After(left, [this] { WatchSilence(); });
        return;
    }
    m_watch.reset();
    m_descriptor.Close();
    m_isConnected = false;
    if (!std::exchange(m_isQuiet, true))
        m_events.onEvent(fmt::format("silent for {} s; it is opened again and again",
                                     std::chrono::duration<double>(*m_patience).count()));
    Open();
}

bool Source::Write(std::string_view bytes)
{
    const bool takes = m_endpoint.kind == Kind::Serial || m_endpoint.kind == Kind::Tcp;
    if (!takes || !m_isConnected || m_unsent.size() + bytes.size() > kMostUnsent) return false;
    const bool isFirst = m_unsent.empty();
    m_unsent += bytes;
    if (isFirst) Flush();
    return true;
}

void Source::Flush()
{
    if (m_unsent.empty()) return;
    const ssize_t count = write(m_descriptor.Get(), m_unsent.data(), m_unsent.size());
    if (count > 0) m_unsent.erase(0, static_cast<std::size_t>(count));
    if (count < 0 && errno != EAGAIN && errno != EINTR) m_unsent.clear(); // reading tells why
    if (!m_unsent.empty()) m_watch->WhenWritable([this] { Flush(); });
}

} // namespace live
