// SPDX-License-Identifier: MIT
#include "apps/live/Feed.h"

#include <charconv>
#include <string_view>

namespace live {

namespace {

constexpr std::string_view kClients = "clients ";

}

std::string ClientsKey(std::size_t clients)
{
    return std::string(kClients) + std::to_string(clients);
}

void Feed::Advance(field::Instant now)
{
    const field::Instant last = m_next + kLongestPause;
    for (; m_next <= now && m_next <= last; m_next += kStep)
        m_bridge.Tick(m_next);
    if (m_next <= now) m_next += (now - m_next) / kStep * kStep + kStep;
}

void Feed::Play(const field::Record& record)
{
    Advance(record.at);
    field::Play(m_bridge, record);
    const std::string_view key = record.bytes;
    if (record.channel != field::Channel::Keys || !key.starts_with(kClients)) return;
    int clients = 0;
    const auto [stop, error] =
        std::from_chars(key.data() + kClients.size(), key.data() + key.size(), clients);
    if (error == std::errc() && clients >= 0) m_bridge.SetClients(clients);
}

} // namespace live
