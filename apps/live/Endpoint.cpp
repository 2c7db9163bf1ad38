// SPDX-License-Identifier: MIT
#include "apps/live/Endpoint.h"

#include "apps/live/AddressRange.h"
#include "apps/tables/Numbers.h"
#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <utility>

namespace live {

namespace {

using Kind = Endpoint::Kind;

constexpr const char* kSources = "a source is serial:DEV:BAUD, tcp:HOST:PORT, udp:[ADDR:]PORT, "
                                 "gpsd:HOST:PORT, file:PATH[@RATE] or -";
constexpr const char* kSinks = "a sink is tcp:[ADDR:]PORT, udp:ADDR:PORT, pty:LINK, file:PATH or -";

constexpr unsigned kSpeeds[] = {1200,    2400,    4800,    9600,    19200,   38400,   57600,
                                115200,  230400,  460800,  500000,  576000,  921600,  1000000,
                                1152000, 1500000, 2000000, 2500000, 3000000, 3500000, 4000000};

template <class Number>
std::optional<Number> DigitsOf(std::string_view text)
{
    Number value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) return std::nullopt;
    return value;
}

ParsedEndpoint Problem(std::string_view text, const std::string& reason)
{
    return {std::nullopt, fmt::format("'{}' {}", text, reason)};
}

bool IsPrintable(std::string_view text)
{
    return std::none_of(text.begin(), text.end(), [](char c) {
        const auto code = static_cast<unsigned char>(c);
        return code < 0x20 || code == 0x7f;
    });
}

// What stands before and after the last colon that is not within brackets.
std::pair<std::string_view, std::string_view> AtLastColon(std::string_view text)
{
    const std::size_t bracket = text.rfind(']');
    const std::size_t colon = text.rfind(':');
    if (colon == text.npos || (bracket != text.npos && colon < bracket)) return {{}, text};
    return {text.substr(0, colon), text.substr(colon + 1)};
}

// A name or address; brackets around an address of IPv6 are taken off.
std::optional<std::string> HostOf(std::string_view text)
{
    const bool bracketed = text.size() > 2 && text.front() == '[' && text.back() == ']';
    if (bracketed) {
        const std::string inner(text.substr(1, text.size() - 2));
        const auto address = ParseAddress(inner);
        return address && address->isV6 ? std::optional(inner) : std::nullopt;
    }
    constexpr std::size_t kLongest = 253; // of a name in the domain name system
    const bool isName = !text.empty() && text.size() <= kLongest
                        && std::all_of(text.begin(), text.end(), [](char c) {
                               return ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z')
                                      || ('0' <= c && c <= '9') || c == '.' || c == '-' || c == '_';
                           });
    return isName ? std::optional(std::string(text)) : std::nullopt;
}

// "" where the port is right.
std::string ReadPort(std::string_view text, unsigned lowest, Endpoint& endpoint)
{
    const auto port = DigitsOf<unsigned>(text);
    if (!port || *port < lowest || *port > 65535)
        return fmt::format("has the port '{}', not one from {} to 65535", text, lowest);
    endpoint.port = static_cast<std::uint16_t>(*port);
    return {};
}

// HOST:PORT
std::string ReadHostAndPort(std::string_view rest, Endpoint& endpoint)
{
    const auto [host, port] = AtLastColon(rest);
    if (host.data() == nullptr) return "lacks HOST or PORT; both are needed";
    const auto name = HostOf(host);
    if (!name)
        return fmt::format("has the host '{}', which is no name and no address (an address of IPv6 "
                           "stands in brackets)",
                           host);
    endpoint.name = *name;
    return ReadPort(port, 1, endpoint);
}

// ADDR:PORT
std::string ReadAddressAndPort(std::string_view rest, unsigned lowest, Endpoint& endpoint)
{
    const auto [host, port] = AtLastColon(rest);
    if (host.data() == nullptr) return "lacks ADDR or PORT; both are needed";
    const auto name = HostOf(host);
    if (!name || !ParseAddress(*name))
        return fmt::format(
            "has the address '{}', which is none in digits (0.0.0.0 is every address "
            "of this computer)",
            host);
    endpoint.name = *name;
    return ReadPort(port, lowest, endpoint);
}

// [ADDR:]PORT
std::string ReadOwnPort(std::string_view rest, unsigned lowest, Endpoint& endpoint)
{
    endpoint.name = kLoopback;
    const bool hasAddress = rest.find(':') != rest.npos;
    return hasAddress ? ReadAddressAndPort(rest, lowest, endpoint)
                      : ReadPort(rest, lowest, endpoint);
}

// DEV:BAUD
std::string ReadDeviceAndSpeed(std::string_view rest, Endpoint& endpoint)
{
    const std::size_t colon = rest.rfind(':');
    if (colon == rest.npos || colon == 0) return "lacks DEV or BAUD; both are needed";
    endpoint.name = rest.substr(0, colon);
    const std::string_view speed = rest.substr(colon + 1);
    const auto baud = DigitsOf<unsigned>(speed);
    if (!baud || std::find(std::begin(kSpeeds), std::end(kSpeeds), *baud) == std::end(kSpeeds))
        return fmt::format("has the speed '{}', not {}", speed, SerialSpeeds());
    endpoint.baud = *baud;
    return {};
}

// PATH[@RATE]; what follows the last @ belongs to the path where it is no number.
std::string ReadPathAndRate(std::string_view rest, Endpoint& endpoint)
{
    endpoint.name = rest;
    const std::size_t at = rest.rfind('@');
    const auto rate = at == rest.npos ? std::nullopt : tables::ParseNumber(rest.substr(at + 1));
    if (rate) {
        constexpr double kLowest = 0.01, kHighest = 1e6;
        if (!(*rate >= kLowest && *rate <= kHighest))
            return fmt::format("has a rate that is not between {} and {:.0f} lines a second",
                               kLowest, kHighest);
        endpoint.name = rest.substr(0, at);
        endpoint.rate = rate;
    }
    return endpoint.name.empty() ? "names no file" : "";
}

std::string ReadPath(std::string_view rest, const char* what, Endpoint& endpoint)
{
    endpoint.name = rest;
    return rest.empty() ? fmt::format("names no {}", what) : std::string();
}

struct Scheme
{
    std::string_view name;
    std::string_view rest;
};

Scheme SchemeOf(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == text.npos) return {text, {}};
    return {text.substr(0, colon), text.substr(colon + 1)};
}

// By reference: `reason` may come of reading into `endpoint`, in the same call.
ParsedEndpoint Finish(std::string_view text, Kind kind, const Endpoint& endpoint,
                      const std::string& reason)
{
    if (!reason.empty()) return Problem(text, reason);
    Endpoint finished = endpoint;
    finished.kind = kind;
    finished.text = text;
    return {std::move(finished), {}};
}

constexpr const char* kUnprintable = "has characters that cannot be printed";

} // namespace

std::string SerialSpeeds()
{
    const std::size_t last = std::size(kSpeeds) - 1;
    return fmt::format("{} or {}", fmt::join(kSpeeds, kSpeeds + last, ", "), kSpeeds[last]);
}

bool IsLoopback(const std::string& address)
{
    const auto parsed = ParseAddress(address);
    return parsed && IsLoopback(*parsed);
}

ParsedEndpoint ParseSource(std::string_view text)
{
    if (text == "-") return Finish(text, Kind::Standard, {}, "");
    if (!IsPrintable(text)) return Problem(text, kUnprintable);
    const auto [scheme, rest] = SchemeOf(text);
    Endpoint endpoint;
    if (scheme == "serial")
        return Finish(text, Kind::Serial, endpoint, ReadDeviceAndSpeed(rest, endpoint));
    if (scheme == "tcp") return Finish(text, Kind::Tcp, endpoint, ReadHostAndPort(rest, endpoint));
    if (scheme == "gpsd")
        return Finish(text, Kind::Gpsd, endpoint, ReadHostAndPort(rest, endpoint));
    if (scheme == "udp") return Finish(text, Kind::Udp, endpoint, ReadOwnPort(rest, 1, endpoint));
    if (scheme == "file")
        return Finish(text, Kind::File, endpoint, ReadPathAndRate(rest, endpoint));
    return Problem(text, fmt::format("is not a source; {}", kSources));
}

ParsedEndpoint ParseSink(std::string_view text)
{
    if (text == "-") return Finish(text, Kind::Standard, {}, "");
    if (!IsPrintable(text)) return Problem(text, kUnprintable);
    const auto [scheme, rest] = SchemeOf(text);
    Endpoint endpoint;
    if (scheme == "tcp") return Finish(text, Kind::Tcp, endpoint, ReadOwnPort(rest, 0, endpoint));
    if (scheme == "udp")
        return Finish(text, Kind::Udp, endpoint, ReadAddressAndPort(rest, 1, endpoint));
    if (scheme == "pty") return Finish(text, Kind::Pty, endpoint, ReadPath(rest, "link", endpoint));
    if (scheme == "file")
        return Finish(text, Kind::File, endpoint, ReadPath(rest, "file", endpoint));
    return Problem(text, fmt::format("is not a sink; {}", kSinks));
}

} // namespace live
