// SPDX-License-Identifier: MIT
//
// Opens what endpoints name. Every descriptor is non-blocking and closed in child processes; where
// one cannot be opened the reason is a clause, such as "Connection refused".
#pragma once

#include "apps/live/AddressRange.h"
#include "apps/live/Descriptor.h"
#include <cstdint>
#include <string>

namespace live {

struct Opened
{
    Descriptor descriptor;
    std::string problem; ///< where it is not open
};

/// A serial port: raw, 8N1, for this process alone.
Opened OpenSerial(const std::string& device, unsigned baud);

/// A file or pipe to read.
Opened OpenToRead(const std::string& path);

/// A file to write, emptied, or a pipe or device.
Opened OpenToWrite(const std::string& path);

/// Begins to connect; when it can be written, ConnectProblem() tells how it went.
/// @param address  in digits
Opened BeginConnect(const std::string& address, std::uint16_t port);
/// Empty where the connection stands.
std::string ConnectProblem(int descriptor);

/// Listens; port 0 is chosen by the system, see PortOf().
Opened ListenTcp(const std::string& address, std::uint16_t port);
std::uint16_t PortOf(int descriptor);

/// A connection that waits, or a closed descriptor.
struct Accepted
{
    Descriptor descriptor;
    Address peer;
    std::string name; ///< address in digits
};
Accepted Accept(int listener);

/// Receives datagrams.
Opened BindUdp(const std::string& address, std::uint16_t port);
/// Sends datagrams, to a broadcast address, too.
Opened ConnectUdp(const std::string& address, std::uint16_t port);

/// A Unix socket of this user alone (mode 0600), in the place of a socket that nobody listens on.
Opened ListenLocal(const std::string& path);
Accepted AcceptLocal(int listener);

/// A pseudo terminal, raw, whose other end is found under `link`.
Opened OpenPty(const std::string& link);
/// Whether somebody has the other end open.
bool HasReader(int pty);
/// Removes the link if it still leads to a pseudo terminal.
void RemovePtyLink(const std::string& link);

/// The reason of the last system call as a clause.
std::string LastProblem();

} // namespace live
