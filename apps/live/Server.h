// SPDX-License-Identifier: MIT
//
// Clients on a TCP port: each gets whole epochs, and none waits for another. What clients send is
// read, no faster than 4 KiB/s, and given to whoever asked for it; else it is dropped.
#pragma once

#include "apps/live/AddressRange.h"
#include "apps/live/Backoff.h"
#include "apps/live/Descriptor.h"
#include "apps/live/Endpoint.h"
#include "apps/live/EpochQueue.h"
#include "apps/live/Loop.h"
#include <cstdint>
#include <list>

namespace live {

using Upstream = std::function<void(std::string_view)>;

class Server
{
public:
    struct Setup
    {
        std::vector<AddressRange> allowed; ///< empty: everybody who reaches the address
        /// Makes what takes the bytes of one client; none: they are dropped.
        std::function<Upstream()> makeUpstream;
        /// A sentence: "127.0.0.1 has connected".
        std::function<void(const std::string&)> onEvent;
    };

    static constexpr std::size_t kMostClients = 8;
    static constexpr double kUpstream = 4096.0; // bytes/s of each client

    /// @throws InputError when it cannot listen
    Server(Loop& loop, const Endpoint& endpoint, Setup setup);

    void Send(const std::shared_ptr<const std::string>& epoch);

    std::uint16_t Port() const;
    std::size_t Clients() const { return m_clients.size(); }
    /// Epochs that slow clients have missed.
    std::uint64_t Dropped() const { return m_dropped; }

private:
    struct Client
    {
        Descriptor descriptor;
        std::string name;
        std::unique_ptr<Watch> watch;
        std::unique_ptr<Timer> pause; // of reading
        EpochQueue queue;
        ByteAllowance allowance{kUpstream};
        Upstream upstream;
        bool isWaiting = false; // until it can be written
    };
    using Position = std::list<Client>::iterator;

    void AcceptAll();
    void Admit(Descriptor descriptor, const std::string& name);
    void Read(Position client);
    bool Write(Position client);
    void Remove(Position client, const std::string& why);

    Loop& m_loop;
    Setup m_setup;
    Descriptor m_listener;
    std::unique_ptr<Watch> m_watch;
    std::list<Client> m_clients;
    std::uint64_t m_dropped = 0;
};

} // namespace live
