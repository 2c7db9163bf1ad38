// SPDX-License-Identifier: MIT
#include "apps/live/EpochQueue.h"

#include <utility>

namespace live {

void EpochQueue::Push(std::shared_ptr<const std::string> epoch)
{
    if (!epoch || epoch->empty()) return;
    if (m_epochs.size() == kMost) {
        m_epochs.erase(m_epochs.begin() + (m_sent > 0 ? 1 : 0));
        ++m_dropped;
    }
    m_epochs.push_back(std::move(epoch));
}

std::string_view EpochQueue::Front() const
{
    return m_epochs.empty() ? std::string_view()
                            : std::string_view(*m_epochs.front()).substr(m_sent);
}

void EpochQueue::Sent(std::size_t count)
{
    m_sent += count;
    if (m_epochs.empty() || m_sent < m_epochs.front()->size()) return;
    m_epochs.pop_front();
    m_sent = 0;
}

} // namespace live
