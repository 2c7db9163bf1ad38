// SPDX-License-Identifier: MIT
#include "field/nmea/EpochAssembler.h"

#include "field/nmea/EpochSigma.h"
#include "field/time/EpochClock.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

namespace tiltpole::field {

namespace {

constexpr double kDay = 86400.0;          // [s]
constexpr std::size_t kLongestSet = 1500; // GSA of one second, about 20 of them [bytes]
constexpr std::size_t kWholeSecond = 6;   // characters of hhmmss
constexpr double kSameTime = 1e-6;        // [s]
constexpr double kSameStep = 1e-3;        // [s]
constexpr double kSameHeight = 1e-9;      // [m]

// Whether a time of day is later than another one by less than half a day.
bool IsLater(double seconds, double before)
{
    const double step = std::fmod(seconds - before + kDay, kDay);
    return step > kSameTime && step < kDay / 2;
}

// Within one unit of the last digit of the coarser text.
bool Agrees(const TextPosition& a, const TextPosition& b)
{
    const auto same = [](double p, double q, int decimals) {
        constexpr double kUnit = 1.01; // and what is lost in degrees
        const double apart = std::fabs(p - q);
        return std::min(apart, 360.0 - apart) * 60.0 <= kUnit * std::pow(10.0, -decimals);
    };
    return same(a.latitude, b.latitude, std::min(a.latitudeDecimals, b.latitudeDecimals))
           && same(a.longitude, b.longitude, std::min(a.longitudeDecimals, b.longitudeDecimals));
}

bool Agrees(const Gga& a, const Gga& b)
{
    if (a.position.has_value() != b.position.has_value()) return false;
    return !a.position
           || (Agrees(*a.position, *b.position) && std::fabs(a.height - b.height) < kSameHeight);
}

::field::Fix FixOf(int quality)
{
    constexpr std::array kFixes = {
        ::field::Fix::Invalid,      // 0
        ::field::Fix::Single,       // 1
        ::field::Fix::Differential, // 2
        ::field::Fix::Single,       // 3 precise service
        ::field::Fix::Fixed,        // 4
        ::field::Fix::Float,        // 5
        ::field::Fix::Estimated,    // 6
        ::field::Fix::Estimated,    // 7 by hand
        ::field::Fix::Estimated,    // 8 simulated
        ::field::Fix::Differential, // 9 by satellite, of some makes
    };
    return kFixes.at(static_cast<std::size_t>(quality));
}

int Decimals(std::string_view text)
{
    if (text.empty()) return -1;
    const std::size_t point = text.find('.');
    return point == std::string_view::npos ? 0 : static_cast<int>(text.size() - point - 1);
}

} // namespace

EpochAssembler::Kind EpochAssembler::KindOf(const Sentence& sentence)
{
    constexpr std::array<std::string_view, 5> kTypes = {"GGA", "RMC", "GST", "ZDA", "GSA"};
    if (sentence.Talker().size() != 2) return Kind::Other;
    const auto* const found = std::find(kTypes.begin(), kTypes.end(), sentence.Type());
    return static_cast<Kind>(found - kTypes.begin());
}

EpochAssembler::Shape EpochAssembler::ShapeOf(Kind kind, const Sentence& sentence)
{
    Shape shape{static_cast<int>(sentence.Fields()), Decimals(sentence.Field(1)), -1, -1, -1, -1};
    constexpr std::array<std::array<std::size_t, 4>, kKinds> kFields = {
        {
         {2, 4, 9, 11}, // GGA: latitude, longitude, height, separation
            {3, 5, 0, 0}, // RMC: latitude, longitude
            {6, 7, 8, 0}, // GST: the three sigmas
            {0, 0, 0, 0},
         }
    };
    const auto& fields = kFields.at(static_cast<std::size_t>(kind));
    for (std::size_t i = 0; i < fields.size(); ++i)
        shape.at(i + 2) = Decimals(sentence.Field(fields.at(i)));
    return shape;
}

bool EpochAssembler::HasUsualShape(Kind kind, const Shape& shape)
{
    UsualShape& known = m_shapes.at(static_cast<std::size_t>(kind));
    if (!known.usual) known.usual = shape;
    Shape& usual = *known.usual;
    const auto same = [](int a, int b) { return a == b || a < 0 || b < 0; };
    if (std::equal(shape.begin(), shape.end(), usual.begin(), same)) {
        std::transform(shape.begin(), shape.end(), usual.begin(), usual.begin(),
                       [](int now, int before) { return std::max(now, before); });
        known.others = 0;
        return true;
    }
    known.others = shape == known.other ? known.others + 1 : 1;
    known.other = shape;
    if (known.others < kShapes) return false;
    known = {.usual = shape};
    return true;
}

void EpochAssembler::Feed(const Sentence& sentence, ::field::Instant arrival)
{
    Tick(arrival);
    const Kind kind = KindOf(sentence);
    switch (kind) {
    case Kind::Gga:
        Add(kind, &Open::gga, ReadGga(sentence), sentence, arrival);
        break;
    case Kind::Rmc:
        Add(kind, &Open::rmc, ReadRmc(sentence), sentence, arrival);
        break;
    case Kind::Gst:
        Add(kind, &Open::gst, ReadGst(sentence), sentence, arrival);
        break;
    case Kind::Zda:
        Add(kind, &Open::zda, ReadZda(sentence), sentence, arrival);
        break;
    case Kind::Gsa:
        AddGsa(sentence);
        return;
    case Kind::Other:
        ++m_counters.other;
        return;
    }
}

template <class Record>
void EpochAssembler::Add(Kind kind, std::optional<Record> Open::*place,
                         std::optional<Record> record, const Sentence& sentence,
                         ::field::Instant arrival)
{
    m_gsaRunning = false;
    if (!record) {
        ++m_counters.form;
        m_damaged = true;
        return;
    }
    if (!HasUsualShape(kind, ShapeOf(kind, sentence))) {
        ++m_counters.shape;
        m_damaged = true;
        return;
    }
    const double seconds = *SecondsOfDay(record->utc);
    if (!m_open.seconds || std::fabs(seconds - *m_open.seconds) > kSameTime) {
        if (!Begins(kind, seconds)) {
            ++m_counters.otherTime;
            return;
        }
        Close();
        NoteLast();
        m_open = {};
        m_open.seconds = seconds;
    }
    if (m_open.*place) {
        if constexpr (std::is_same_v<Record, Gga>)
            if (!Agrees(*m_open.gga, *record)) m_open.disagree = true;
        ++m_counters.repeated;
        return;
    }
    if (m_open.closed) {
        m_open.last = kind;
        ++m_counters.otherTime;
        return;
    }
    ++m_counters.used;
    m_open.*place = std::move(record);
    m_open.last = kind;
    m_open.lines.append(sentence.Line()).append("\r\n");
    m_open.arrival = arrival;
    if (kind == Kind::Gga) m_open.ggaArrival = arrival;
    if (m_open.gga && EndsAsUsual()) Close();
}

// GGA rules: another time of it begins another epoch, even an earlier one. What goes with it begins
// one only if later, so that a belated sentence cannot close the epoch after its own.
bool EpochAssembler::Begins(Kind kind, double seconds) const
{
    return kind == Kind::Gga || !m_open.seconds || IsLater(seconds, *m_open.seconds);
}

bool EpochAssembler::EndsAsUsual() const
{
    return m_noted >= kRunning && std::all_of(m_lasts.begin(), m_lasts.end(), [this](Kind last) {
               return last == m_open.last;
           });
}

void EpochAssembler::NoteLast()
{
    if (!m_open.gga) return;
    m_lasts.at(m_noted++ % kRunning) = m_open.last;
}

void EpochAssembler::AddGsa(const Sentence& sentence)
{
    if (!IsGsa(sentence)) {
        ++m_counters.form;
        return;
    }
    if (!m_gsaRunning) m_gsa.clear();
    m_gsaRunning = true;
    if (m_gsa.size() + sentence.Line().size() > kLongestSet) return;
    m_gsa.append(sentence.Line()).append("\r\n");
    ++m_counters.used;
}

std::string EpochAssembler::PassedGsa()
{
    const std::string second = m_open.gga->utc.substr(0, kWholeSecond);
    if (second == m_gsaSecond || m_gsa.empty()) return {};
    m_gsaSecond = second;
    return std::exchange(m_gsa, {});
}

void EpochAssembler::Tick(::field::Instant now)
{
    if (m_open.gga && !m_open.closed && now - m_open.ggaArrival >= kWait) Close();
}

// A line was lost close by, and RMC, which always came, is not there to confirm what GGA says.
bool EpochAssembler::HasItsWitness()
{
    const bool damaged = std::exchange(m_damaged, false);
    const bool always = m_witnessed >= kShapes;
    if (m_open.rmc)
        m_witnessed = std::min(m_witnessed + 1, kShapes);
    else if (!damaged)
        m_witnessed = 0;
    return m_open.rmc || !damaged || !always;
}

// GGA with a damaged time stands alone. Where epochs had other sentences, too, one of GGA alone
// must follow the last by the usual step.
bool EpochAssembler::HasPlausibleTime()
{
    const bool alone = !m_open.rmc && !m_open.gst && !m_open.zda;
    const double step = *m_open.seconds - m_lastTime.value_or(*m_open.seconds);
    const bool usual = !m_step || std::fabs(std::remainder(step - *m_step, kDay)) < kSameStep;
    const bool plausible = !alone || usual || m_alone >= kShapes;
    if (m_lastTime && m_lastPlausible && plausible) m_step = step;
    m_alone = alone ? std::min(m_alone + 1, kShapes) : 0;
    m_lastTime = m_open.seconds;
    m_lastPlausible = plausible;
    return plausible;
}

void EpochAssembler::Close()
{
    if (!m_open.seconds || m_open.closed) return;
    m_open.closed = true;
    if (!m_open.gga) {
        ++m_counters.otherTime;
        return;
    }
    const bool witnessed = HasItsWitness();
    if (!HasPlausibleTime() || !witnessed) {
        ++m_counters.disagree;
        return;
    }
    const bool both = m_open.rmc && m_open.rmc->position && m_open.gga->position;
    if (m_open.disagree || (both && !Agrees(*m_open.gga->position, *m_open.rmc->position))) {
        ++m_counters.disagree;
        return;
    }
    if (m_epochs.size() >= kMostEpochs) m_epochs.erase(m_epochs.begin());
    m_epochs.push_back(Assembled());
    ++m_counters.epochs;
}

::field::Epoch EpochAssembler::Assembled()
{
    const Gga& gga = *m_open.gga;
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    ::field::Epoch epoch;
    epoch.utc = gga.utc;
    epoch.fix = FixOf(gga.quality);
    const bool fixed = epoch.fix != ::field::Fix::Invalid;
    epoch.antenna = {kNone, kNone, kNone};
    epoch.geoidSeparation = fixed ? gga.separation : kNone;
    if (fixed) {
        epoch.antenna = {gga.position->latitude, gga.position->longitude,
                         gga.height + gga.separation};
        epoch.minuteDecimals = gga.position->latitudeDecimals;
    }
    epoch.sigma = SigmaOf(gga, m_open.gst);
    epoch.sigmaAssumed = !fixed || !m_open.gst || !m_open.gst->Stated();
    epoch.satellites = gga.satellites;
    epoch.hdop = gga.hdop.value_or(0.0);
    epoch.correctionAge = gga.correctionAge;
    epoch.station = gga.station;
    if (m_open.zda) epoch.date = m_open.zda->date;
    if (m_open.rmc) {
        epoch.speed = m_open.rmc->speed;
        epoch.course = m_open.rmc->course;
        if (m_open.rmc->date) epoch.date = m_open.rmc->date;
    }
    epoch.text = {gga.satelliteText, gga.hdopText, gga.separationText, gga.ageText, gga.station};
    epoch.lines = m_open.lines;
    epoch.gsa = PassedGsa();
    epoch.arrival = m_open.arrival;
    epoch.moment = m_open.arrival;
    return epoch;
}

std::vector<::field::Epoch> EpochAssembler::Take()
{
    return std::exchange(m_epochs, {});
}

void EpochAssembler::Restart()
{
    m_open = {};
    m_shapes = {};
    m_noted = 0;
    m_damaged = false;
    m_witnessed = 0;
    m_alone = kShapes;
    m_lastTime.reset();
    m_step.reset();
    m_gsa.clear();
    m_gsaRunning = false;
    m_gsaSecond.clear();
}

} // namespace tiltpole::field
