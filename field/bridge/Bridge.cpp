// SPDX-License-Identifier: MIT
#include "field/Bridge.h"

#include "field/bridge/Engine.h"

#include <utility>

namespace field {

struct Bridge::Engine : tiltpole::field::Engine
{
    using tiltpole::field::Engine::Engine;
};

Bridge::Bridge(const Setup& setup) : m_engine(std::make_unique<Engine>(setup)) {}
Bridge::~Bridge() = default;
Bridge::Bridge(Bridge&&) noexcept = default;
Bridge& Bridge::operator=(Bridge&&) noexcept = default;

void Bridge::FeedReceiver(std::string_view bytes, Instant arrival)
{
    m_engine->FeedReceiver(bytes, arrival);
}

void Bridge::FeedPose(std::string_view bytes, Instant arrival)
{
    m_engine->FeedPose(bytes, arrival);
}

void Bridge::FeedPose(const PoseSample& sample)
{
    m_engine->FeedPose(sample);
}
void Bridge::Tick(Instant now)
{
    m_engine->Tick(now);
}
std::vector<Report> Bridge::Take()
{
    return m_engine->Take();
}
void Bridge::OnSentences(std::function<void(const std::string&)> callback)
{
    m_engine->OnSentences(std::move(callback));
}
void Bridge::Acknowledge(Reason::Code code)
{
    m_engine->Acknowledge(code);
}
void Bridge::RestartReceiver()
{
    m_engine->RestartReceiver();
}
void Bridge::RestartPose()
{
    m_engine->RestartPose();
}
void Bridge::SetClients(int clients)
{
    m_engine->SetClients(clients);
}
const Counters& Bridge::Count() const
{
    return m_engine->Count();
}

} // namespace field
