// SPDX-License-Identifier: MIT
//
// Where bytes come from and where they go, as the command line names it.
//
//   sources   serial:DEV:BAUD   tcp:HOST:PORT   udp:[ADDR:]PORT   gpsd:HOST:PORT
//             file:PATH[@RATE]   -
//   sinks     tcp:[ADDR:]PORT   udp:ADDR:PORT   pty:LINK   file:PATH   -
//
// ADDR is written in digits, one of IPv6 in brackets: [::1]. What listens without an address does
// so for this computer alone. A sink of TCP may have port 0: the system then chooses one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace live {

struct Endpoint
{
    enum class Kind {
        Serial,
        Tcp,
        Udp,
        Gpsd,
        File,
        Standard, // standard input or output
        Pty,
    };
    Kind kind = Kind::Standard;
    std::string name;           // device, host, address without brackets, path or link
    std::uint16_t port = 0;     // of Tcp, Udp, Gpsd
    unsigned baud = 0;          // of Serial
    std::optional<double> rate; // of File: lines a second; none: as fast as it can be read
    std::string text;           // as given
};

/// What a text means, or why it means nothing.
struct ParsedEndpoint
{
    std::optional<Endpoint> endpoint;
    std::string problem; // one sentence where there is no endpoint
};

ParsedEndpoint ParseSource(std::string_view text);
ParsedEndpoint ParseSink(std::string_view text);

/// The speeds that a serial port is opened with, in words: "4800, 9600, ... or 4000000".
std::string SerialSpeeds();

/// The address to listen on where none is given.
inline constexpr const char* kLoopback = "127.0.0.1";

/// Whether an address written in digits is one of this computer alone.
bool IsLoopback(const std::string& address);

} // namespace live
