// SPDX-License-Identifier: MIT
#include "apps/live/Session.h"

#include "apps/live/Control.h"
#include "apps/live/GpsdJson.h"
#include "apps/live/ReportText.h"
#include "apps/tables/Messages.h"
#include "field/nmea/RtcmFilter.h"
#include <fmt/format.h>
#include <utility>

namespace live {

namespace {

using field::Channel;
using field::Report;
using std::chrono::microseconds;

double SecondsSince1970()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(std::chrono::floor<microseconds>(now)).count();
}

// The engine's Instant 0 is that of the loop, and its UTC is known.
field::Setup StartedAt(field::Setup pole, field::Instant now)
{
    pole.started = SecondsSince1970() - std::chrono::duration<double>(now).count();
    return pole;
}

void TellLine(std::string_view label, const std::string& text)
{
    tables::Tell("{:<10} {}\n", label, text);
}

// The recorder tells of its end from within its constructor, too.
void TellEvent(const std::string& text)
{
    TellLine("event", text);
}

// What gpsd says as sentences, of lines of up to GpsdJson::kLongestLine bytes.
std::function<void(std::string_view)> SentencesOf(std::function<void(std::string_view)> onBytes)
{
    const auto lines = std::make_shared<LineCutter>(GpsdJson::kLongestLine);
    const auto reader = std::make_shared<GpsdJson>();
    return [lines, reader, onBytes = std::move(onBytes)](std::string_view bytes) {
        lines->Feed(bytes, [&](std::string_view line) {
            const std::string sentences = reader->Feed(line);
            if (!sentences.empty()) onBytes(sentences);
        });
    };
}

const char* LabelOf(Channel channel)
{
    return channel == Channel::Receiver ? "receiver" : "pose";
}

} // namespace

Session::Session(Loop& loop, const SessionSetup& setup, Listeners listeners)
    : m_loop(loop), m_setup(setup), m_listeners(std::move(listeners)),
      m_pole(StartedAt(setup.pole, loop.Now())), m_bridge(m_pole), m_feed(m_bridge),
      m_banner(m_pole, setup.config, setup.poseFormat)
{
    for (const Endpoint& endpoint : m_setup.sinks)
        m_sinks.push_back(MakeSink(m_loop, endpoint, ServerSetup()));
    for (const Endpoint& endpoint : m_setup.status) {
        Server::Setup server = ServerSetup();
        server.makeUpstream = nullptr;
        m_status.push_back(MakeSink(m_loop, endpoint, std::move(server)));
    }
    if (!m_setup.record.empty()) m_recorder = Recorder(m_setup.record, *m_pole.started, TellEvent);
    m_bridge.OnSentences([this](const std::string& sentences) { Send(sentences); });
    m_receiver = MakeSource(m_setup.receiver, Channel::Receiver);
    m_pose = MakeSource(m_setup.pose, Channel::Pose);
}

Server::Setup Session::ServerSetup()
{
    Server::Setup server;
    server.allowed = m_setup.allowed;
    server.onEvent = [](const std::string& text) { TellLine("client", text); };
    if (!m_setup.corrections) return server;
    server.makeUpstream = [this]() -> Upstream {
        const auto filter = std::make_shared<tiltpole::field::RtcmFilter>();
        return [this, filter](std::string_view bytes) { Correct(filter->Feed(bytes)); };
    };
    return server;
}

std::unique_ptr<Source> Session::MakeSource(const Endpoint& endpoint, Channel channel)
{
    Source::Events events;
    events.onBytes = [this, channel](std::string_view bytes) { Arrive(channel, bytes); };
    const bool isGpsd = endpoint.kind == Endpoint::Kind::Gpsd;
    if (isGpsd) events.onBytes = SentencesOf(events.onBytes);
    events.onConnected = [this, channel] { Connected(channel); };
    events.onEvent = [&endpoint, channel](const std::string& text) {
        TellLine(LabelOf(channel), fmt::format("{}: {}", endpoint.text, text));
    };
    // The pose may have ended long before the last epoch; the receiver's end is that of the run.
    events.onEnd = [this, channel] {
        if (channel == Channel::Receiver) EndSoon();
    };
    auto source = std::make_unique<Source>(m_loop, endpoint, std::move(events),
                                           isGpsd ? std::string(GpsdJson::kRequest) : "");
    const bool isLine =
        endpoint.kind == Endpoint::Kind::Serial || endpoint.kind == Endpoint::Kind::Tcp;
    if (isLine && channel == Channel::Pose) source->SetPatience(Source::kPoseSilence);
    if (endpoint.kind == Endpoint::Kind::Serial && channel == Channel::Receiver)
        source->SetPatience(m_setup.reopen > Instant::zero() ? std::optional(m_setup.reopen)
                                                             : std::nullopt);
    return source;
}

void Session::Start()
{
    tables::TellText(m_banner.Opening(Serving()));
    m_ticks = m_loop.Every(Feed::kStep, [this] {
        m_feed.Advance(m_loop.Now());
        Deliver();
        CountClients();
    });
    m_pose->Start();
    m_receiver->Start();
}

std::vector<std::string> Session::Serving() const
{
    std::vector<std::string> places;
    for (const auto& sink : m_sinks)
        places.push_back(sink->Banner());
    for (const auto& status : m_status)
        places.push_back("status " + status->Banner());
    return places;
}

void Session::Arrive(Channel channel, std::string_view bytes)
{
    const field::Record record{std::chrono::floor<microseconds>(m_loop.Now()), channel,
                               std::string(bytes)};
    m_recorder.Add(record);
    if (m_listeners.onRecord) m_listeners.onRecord(record);
    m_feed.Play(record);
    Deliver();
}

void Session::Connected(Channel channel)
{
    const Source& source = channel == Channel::Receiver ? *m_receiver : *m_pose;
    if (source.Connections() < 2) return;
    Arrive(Channel::Keys,
           channel == Channel::Receiver ? field::kRestartReceiver : field::kRestartPose);
}

void Session::Key(std::string_view request)
{
    Arrive(Channel::Keys, request);
}

void Session::Acknowledge()
{
    Arrive(Channel::Keys, field::kAcknowledgeBase);
    Arrive(Channel::Keys, field::kAcknowledgeDatum);
}

void Session::Correct(std::string_view frames)
{
    if (frames.empty() || !m_receiver->Write(frames)) return;
    m_corrections += frames.size();
    m_recorder.Add({std::chrono::floor<microseconds>(m_loop.Now()), Channel::Corrections,
                    std::string(frames)});
}

// The last epoch waits for more sentences and for a pose.
void Session::EndSoon()
{
    m_end = m_loop.After(Feed::kLastEpoch, [this] { m_loop.Stop(); });
}

void Session::CountClients()
{
    std::size_t clients = 0;
    for (const auto& sink : m_sinks)
        clients += sink->Clients();
    if (std::exchange(m_clients, clients) != clients) Arrive(Channel::Keys, ClientsKey(clients));
}

void Session::Send(const std::string& sentences)
{
    const auto epoch = std::make_shared<const std::string>(sentences);
    for (const auto& sink : m_sinks)
        sink->Send(epoch);
}

void Session::Deliver()
{
    for (const Report& report : m_bridge.Take())
        Deliver(report);
    if (const auto text = m_banner.Take()) tables::TellText(*text);
}

void Session::Deliver(const Report& report)
{
    m_banner.Add(report, m_bridge.Count());
    TellState(report);
    if (!report.nmea.empty() && !m_status.empty()) {
        const auto json = std::make_shared<const std::string>(ReportJson(report));
        for (const auto& status : m_status)
            status->Send(json);
    }
    if (m_listeners.onReport) m_listeners.onReport(report);
}

void Session::TellState(const Report& report)
{
    const auto& reasons = report.verdict.reasons;
    const bool isTold = report.verdict.state != field::State::Store && !reasons.empty();
    const std::pair now{report.verdict.state, isTold ? static_cast<int>(reasons.front().code) : -1};
    if (m_told == now) return;
    m_told = now;
    tables::TellText(StateLine(report) + '\n');
}

std::string Session::Counters() const
{
    std::uint64_t dropped = 0;
    for (const auto& sink : m_sinks)
        dropped += sink->Dropped();
    std::string text = CountersText(m_bridge.Count());
    text += fmt::format("clients    {} epochs dropped for slow ones, {} bytes of corrections\n",
                        dropped, m_corrections);
    const auto connections = m_receiver->Connections() + m_pose->Connections();
    text += fmt::format("sources    opened {} times\n", connections);
    if (!m_setup.record.empty())
        text += fmt::format("recording  {} bytes in {}\n", m_recorder.Bytes(), m_setup.record);
    return text;
}

} // namespace live
