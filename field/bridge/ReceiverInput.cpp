// SPDX-License-Identifier: MIT
#include "field/bridge/ReceiverInput.h"

#include "field/North.h"
#include "field/gate/Gate.h"
#include "field/gate/Reasons.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace tiltpole::field {

using ::field::Epoch;
using ::field::Instant;
using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;

namespace {

constexpr Instant kSettles = 2s;  // after a step of the time
constexpr Instant kGarbled = 2s;  // of bytes without a good line
constexpr Instant kQuiet = 500ms; // without a byte the line is silent rather than garbled
constexpr double kSilentPeriods = 2.5;
constexpr double kShortestSilence = 0.3; // [s]
constexpr double kFirstSilence = 3.0;    // before the period is known [s]

std::int64_t WholeSecond(Instant instant)
{
    return std::chrono::floor<std::chrono::seconds>(instant).count();
}

} // namespace

ReceiverInput::ReceiverInput(const ::field::Setup& setup)
    : m_delay(setup.delay), m_started(setup.started), m_patience(Patience())
{}

void ReceiverInput::Feed(std::string_view bytes, Instant arrival)
{
    NoticeGarbled(arrival);
    m_reader.Feed(bytes, arrival);
    CountLines(arrival);
    FollowGoodLines(arrival);
}

void ReceiverInput::Tick(Instant now)
{
    if (!m_begun) m_begun = now;
    m_reader.Tick(now);
}

void ReceiverInput::Restart()
{
    m_reader.Restart();
    m_clock.Restart();
    m_least.Restart();
    m_stepped.reset();
    m_unreadable.reset();
    m_garbled = false;
}

void ReceiverInput::Forget()
{
    Restart();
    m_silent = false;
}

void ReceiverInput::CountLines(Instant arrival)
{
    const LineCounters now = m_reader.Lines();
    const std::int64_t second = WholeSecond(arrival);
    Bucket& bucket = m_buckets[static_cast<std::size_t>(second) % m_buckets.size()];
    if (bucket.second != second) bucket = {second, 0, 0};
    bucket.lines += now.lines - m_counted.lines;
    bucket.bad += now.bad - m_counted.bad;
    m_counted = now;
}

double ReceiverInput::BadLines(Instant now) const
{
    const auto span = static_cast<std::int64_t>(m_buckets.size());
    std::uint64_t lines = 0;
    std::uint64_t bad = 0;
    for (const Bucket& bucket : m_buckets) {
        if (bucket.second < 0 || bucket.second <= WholeSecond(now) - span) continue;
        lines += bucket.lines;
        bad += bucket.bad;
    }
    // One bad line is what connecting amid a line leaves.
    return bad < 2 ? 0.0 : static_cast<double>(bad) / static_cast<double>(lines);
}

// By the first byte of an instant: what comes with it makes no difference.
void ReceiverInput::NoticeGarbled(Instant arrival)
{
    if (m_lastByte && arrival - *m_lastByte > kQuiet) m_unreadable.reset();
    m_lastByte = arrival;
    if (!m_unreadable || m_garbled || arrival - *m_unreadable < kGarbled) return;
    m_garbled = true;
    m_newGarbled = true;
    m_silent = true;
}

// A good line ends what is unreadable, and the byte after it begins to be.
void ReceiverInput::FollowGoodLines(Instant arrival)
{
    if (m_reader.Lines().lines - m_reader.Lines().bad != m_good) {
        m_good = m_reader.Lines().lines - m_reader.Lines().bad;
        m_unreadable.reset();
        m_garbled = false;
    } else if (!m_unreadable) {
        m_unreadable = arrival;
    }
}

std::vector<TimedEpoch> ReceiverInput::Take()
{
    std::vector<TimedEpoch> all;
    for (Epoch& epoch : m_reader.Take()) {
        if (auto timed = Timed(std::move(epoch))) all.push_back(std::move(*timed));
    }
    return all;
}

std::optional<TimedEpoch> ReceiverInput::Timed(Epoch&& epoch)
{
    const EpochClock::Result time = m_clock.Advance(epoch.utc, epoch.date);
    using Step = EpochClock::Step;
    if (time.step == Step::Repeated || time.step == Step::NoTime) {
        ++m_repeated;
        return std::nullopt;
    }

    TimedEpoch timed;
    timed.restarted = time.step != Step::Next;
    if (timed.restarted) m_least.Restart();
    const bool anew = m_least.Add(time.seconds, epoch.arrival);
    if (anew || time.step == Step::Jump) m_stepped = epoch.arrival;

    const Instant host = m_least.HostTime(time.seconds).value_or(epoch.arrival);
    epoch.moment = host - std::chrono::round<std::chrono::microseconds>(Seconds(m_delay));
    timed.age = Seconds(epoch.arrival - host).count();
    timed.seconds = time.seconds;
    timed.period = m_clock.Period();
    const bool settles = m_stepped && epoch.arrival - *m_stepped < kSettles;
    timed.timeStep = settles || timed.age > LeastDelay::kLate;
    timed.epoch = std::move(epoch);
    SetDate(timed);

    ++m_epochs;
    timed.silence = SilenceUntil(timed.epoch.arrival);
    m_lastEpoch = timed.epoch.arrival;
    m_silent = false;
    m_patience = Patience();
    return timed;
}

void ReceiverInput::SetDate(TimedEpoch& timed) const
{
    timed.decimalYear = kNotKnown;
    std::optional<double> unix = m_clock.UnixSeconds();
    if (!unix && m_started) unix = *m_started + Seconds(timed.epoch.arrival).count();
    if (!unix || !(std::fabs(*unix) < 1e11)) return;
    const std::chrono::sys_seconds time{std::chrono::seconds(std::llround(std::floor(*unix)))};
    timed.today = std::chrono::floor<std::chrono::days>(time);
    timed.decimalYear = ::field::DecimalYear(*timed.today, Seconds(time - *timed.today).count());
}

Instant ReceiverInput::Patience() const
{
    const double period = m_clock.Period();
    const double limit =
        period > 0.0 ? std::max(kShortestSilence, kSilentPeriods * period) : kFirstSilence;
    return std::chrono::round<std::chrono::microseconds>(Seconds(limit));
}

std::optional<Reason> ReceiverInput::SilenceUntil(Instant instant)
{
    if (m_silent || !m_begun) return std::nullopt;
    if (instant - m_lastEpoch.value_or(*m_begun) < m_patience) return std::nullopt;
    m_silent = true;
    return NoReceiver(Seconds(m_patience).count());
}

std::optional<Reason> ReceiverInput::NewSilence(Instant now)
{
    if (m_newGarbled) {
        m_newGarbled = false;
        return BaudRate(Seconds(kGarbled).count());
    }
    return SilenceUntil(now - EpochAssembler::kWait);
}

void ReceiverInput::Count(::field::Counters& counters) const
{
    counters.receiverLines = m_reader.Lines().lines;
    counters.receiverBad = m_reader.Lines().bad;
    counters.receiverOther = m_reader.Epochs().other;
    counters.receiverRefused = m_reader.Epochs().Refused();
    counters.epochs = m_epochs;
    counters.repeated = m_repeated + m_reader.Epochs().repeated;
}

} // namespace tiltpole::field
