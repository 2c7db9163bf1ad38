// SPDX-License-Identifier: MIT
//
// Where epochs go besides TCP: datagrams, a pseudo terminal, a file, standard output. Nothing here
// waits: what cannot be taken now is kept as for a client, two epochs at most, or dropped.
#pragma once

#include "apps/live/Endpoint.h"
#include "apps/live/Loop.h"
#include "apps/live/Server.h"
#include <memory>

namespace live {

class Sink
{
public:
    virtual ~Sink() = default;

    /// One whole epoch.
    virtual void Send(const std::shared_ptr<const std::string>& epoch) = 0;
    /// Where it serves, as the banner says it.
    virtual std::string Banner() const = 0;
    virtual std::size_t Clients() const { return 0; }
    /// Epochs that were not taken in time.
    virtual std::uint64_t Dropped() const = 0;
};

/// @throws InputError where it cannot be opened
std::unique_ptr<Sink> MakeSink(Loop& loop, const Endpoint& endpoint, Server::Setup setup);

} // namespace live
