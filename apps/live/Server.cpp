// SPDX-License-Identifier: MIT
#include "apps/live/Server.h"

#include "apps/live/Open.h"
#include "apps/tables/Errors.h"
#include <array>
#include <cerrno>
#include <fmt/format.h>
#include <sys/socket.h>
#include <utility>

namespace live {

Server::Server(Loop& loop, const Endpoint& endpoint, Setup setup)
    : m_loop(loop), m_setup(std::move(setup))
{
    Opened opened = ListenTcp(endpoint.name, endpoint.port);
    if (!opened.descriptor.IsOpen())
        throw tables::InputError(endpoint.text, "nobody can connect there: " + opened.problem);
    m_listener = std::move(opened.descriptor);
    m_watch = m_loop.Observe(m_listener.Get());
    m_watch->WhenReadable([this] { AcceptAll(); });
}

std::uint16_t Server::Port() const
{
    return PortOf(m_listener.Get());
}

void Server::AcceptAll()
{
    for (int i = 0; i < 16; ++i) {
        Accepted accepted = Accept(m_listener.Get());
        if (!accepted.descriptor.IsOpen()) return;
        if (!MayConnect(m_setup.allowed, accepted.peer)) {
            m_setup.onEvent(accepted.name + " was refused: it is not in --allow");
        } else if (m_clients.size() >= kMostClients) {
            m_setup.onEvent(fmt::format("{} was refused: {} clients are connected already",
                                        accepted.name, kMostClients));
        } else {
            Admit(std::move(accepted.descriptor), accepted.name);
        }
    }
}

void Server::Admit(Descriptor descriptor, const std::string& name)
{
    const Position client = m_clients.emplace(m_clients.end());
    client->descriptor = std::move(descriptor);
    client->name = name;
    if (m_setup.makeUpstream) client->upstream = m_setup.makeUpstream();
    client->watch = m_loop.Observe(client->descriptor.Get());
    client->watch->WhenReadable([this, client] { Read(client); });
    m_setup.onEvent(
        fmt::format("{} has connected ({} of {} clients)", name, m_clients.size(), kMostClients));
}

void Server::Read(Position client)
{
    std::array<char, 1024> block;
    const std::size_t allowed = client->allowance.Take(block.size(), m_loop.Now());
    if (allowed == 0) {
        constexpr std::chrono::milliseconds kPause{100};
        client->watch->WhenReadable(nullptr);
        client->pause = m_loop.After(kPause, [this, client] {
            client->watch->WhenReadable([this, client] { Read(client); });
        });
        return;
    }
    const ssize_t count = recv(client->descriptor.Get(), block.data(), allowed, 0);
    client->allowance.GiveBack(allowed - static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0) return Remove(client, "has gone");
    if (count < 0 && errno != EAGAIN && errno != EINTR) return Remove(client, "was lost");
    if (count > 0 && client->upstream)
        client->upstream({block.data(), static_cast<std::size_t>(count)});
}

void Server::Send(const std::shared_ptr<const std::string>& epoch)
{
    for (Position client = m_clients.begin(); client != m_clients.end();) {
        const Position now = client++;
        const std::uint64_t before = now->queue.Dropped();
        now->queue.Push(epoch);
        m_dropped += now->queue.Dropped() - before;
        if (!now->isWaiting && !Write(now)) Remove(now, "was lost");
    }
}

// False where the client is gone.
bool Server::Write(Position client)
{
    while (!client->queue.IsEmpty()) {
        const std::string_view rest = client->queue.Front();
        const ssize_t count =
            send(client->descriptor.Get(), rest.data(), rest.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EAGAIN && errno != EINTR) return false;
        if (count < 0) {
            client->isWaiting = true;
            client->watch->WhenWritable([this, client] {
                client->isWaiting = false;
                if (!Write(client)) Remove(client, "was lost");
            });
            return true;
        }
        client->queue.Sent(static_cast<std::size_t>(count));
    }
    return true;
}

void Server::Remove(Position client, const std::string& why)
{
    const std::string sentence = fmt::format("{} {}", client->name, why);
    client->watch.reset(); // before its descriptor
    m_clients.erase(client);
    m_setup.onEvent(sentence);
}

} // namespace live
