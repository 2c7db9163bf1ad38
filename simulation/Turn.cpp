// SPDX-License-Identifier: MIT
#include "simulation/Turn.h"

#include "simulation/PortableMath.h"
#include "survey/Angle.h"
#include "survey/SensorAxes.h"
#include <algorithm>

namespace survey = tiltpole::survey;

namespace simulation {

namespace {

constexpr int kMostSamples = 10'000'000;
constexpr double kMostSeconds = 1e6;
constexpr double kMostDegrees = 1e6;

// Where the turn stands at a time: straight between knots.
struct Knot
{
    double seconds;
    double degrees;
};

double PathOf(const TurnPlan& plan)
{
    double path = std::fabs(plan.extent);
    for (const TurningBack& back : plan.turningsBack)
        path += 2.0 * back.by;
    return path;
}

double StandingOf(const TurnPlan& plan)
{
    double standing = 0.0;
    for (const Stop& stop : plan.stops)
        standing += stop.seconds;
    return standing;
}

double DurationOf(const TurnPlan& plan)
{
    return (plan.samples - 1) / plan.rate;
}

// A stop or a turning back; a stop has no way, a turning back no time of its own.
struct Event
{
    double at;
    double seconds;
    double back;
};

std::vector<Event> EventsOf(const TurnPlan& plan)
{
    std::vector<Event> events;
    for (const Stop& stop : plan.stops)
        events.push_back({stop.at, stop.seconds, 0.0});
    for (const TurningBack& back : plan.turningsBack)
        events.push_back({back.at, 0.0, back.by});
    std::ranges::stable_sort(events, {}, &Event::at);
    return events;
}

std::vector<Knot> KnotsOf(const TurnPlan& plan)
{
    const double speed = PathOf(plan) / (DurationOf(plan) - StandingOf(plan));
    std::vector<Knot> knots{
        {0.0, 0.0}
    };
    const auto go = [&knots, speed](double degrees) {
        const Knot& last = knots.back();
        knots.push_back({last.seconds + std::fabs(degrees - last.degrees) / speed, degrees});
    };
    for (const Event& event : EventsOf(plan)) {
        go(event.at);
        if (event.seconds > 0.0) knots.push_back({knots.back().seconds + event.seconds, event.at});
        if (event.back > 0.0) {
            go(event.at - event.back);
            go(event.at);
        }
    }
    go(std::fabs(plan.extent));
    return knots;
}

// The axes of a turn in the body frame.
struct TurnFrame
{
    Point3 axis;   // of the spin, right-handed
    Point3 first;  // across the axis
    Point3 second; // across both
};

TurnFrame FrameOf(TurnAxis axis, int sensorType)
{
    constexpr Point3 kForward{1.0, 0.0, 0.0};
    constexpr Point3 kRight{0.0, 1.0, 0.0};
    constexpr Point3 kDown{0.0, 0.0, 1.0};
    if (axis == TurnAxis::Horizontal) return {kDown, kForward, kRight};
    return survey::AxesOf(sensorType) == survey::SensorAxes::ForwardLeftUp
               ? TurnFrame{kRight, kForward, kDown}
               : TurnFrame{kForward, kRight, kDown};
}

class TurnMotion
{
public:
    TurnMotion(const TurnPlan& plan, int sensorType, std::uint64_t seed)
        : m_plan(plan), m_sense(plan.extent < 0.0 ? -1.0 : 1.0),
          m_frame(FrameOf(plan.axis, sensorType)), m_knots(KnotsOf(plan)),
          m_random(seed, Stream::Motion, static_cast<std::uint64_t>(plan.axis)), m_first(m_random),
          m_second(m_random), m_pace(m_random.Uniform(0.0, 360.0)),
          m_base(RotationAbout({0.0, 0.0, 1.0}, plan.startHeading) * Lean()), m_slip(Slip())
    {}

    Motion At(double seconds)
    {
        const double turned = m_sense * DegreesAt(Paced(seconds)) + m_plan.startSpin;
        Matrix attitude = m_base * RotationAbout(m_frame.axis, turned) * m_slip;
        if (m_plan.wobble > 0.0) {
            attitude = attitude * RotationAbout(m_frame.first, m_plan.wobble * m_first.At(seconds))
                       * RotationAbout(m_frame.second, m_plan.wobble * m_second.At(seconds));
        }
        return {attitude, {}};
    }

private:
    // The upper end goes towards the level direction; the axis of a vertical turn tips about the
    // horizontal across it.
    Matrix Lean() const
    {
        if (m_plan.axis == TurnAxis::Vertical)
            return RotationAbout(m_frame.first, m_plan.levelError);
        const auto [s, c] = SineCosineOf(m_plan.levelDirection);
        return RotationAbout({s, -c, 0.0}, m_plan.levelError);
    }

    Matrix Slip() const
    {
        const auto [s, c] = SineCosineOf(m_plan.axisDirection);
        return RotationAbout(c * m_frame.first + s * m_frame.second, m_plan.axisError);
    }

    // Three slow and three fast spells over the whole turn.
    double Paced(double seconds) const
    {
        const double duration = m_knots.back().seconds;
        if (m_plan.unevenness == 0.0) return seconds;
        constexpr double kSpells = 3.0;
        const double wave = SineCosineOf(360.0 * kSpells * seconds / duration + m_pace).sine
                            - SineCosineOf(m_pace).sine;
        return seconds + m_plan.unevenness * duration * wave / (kTurn * kSpells);
    }

    double DegreesAt(double seconds)
    {
        while (m_knot + 2 < m_knots.size() && m_knots[m_knot + 1].seconds <= seconds)
            ++m_knot;
        const Knot& from = m_knots[m_knot];
        const Knot& to = m_knots[m_knot + 1];
        const double span = to.seconds - from.seconds;
        if (span <= 0.0) return to.degrees;
        return from.degrees + (to.degrees - from.degrees) * ((seconds - from.seconds) / span);
    }

    static constexpr double kTurn = 2.0 * survey::kPi;

    const TurnPlan& m_plan;
    double m_sense;
    TurnFrame m_frame;
    std::vector<Knot> m_knots;
    std::size_t m_knot = 0;
    Generator m_random;
    Tremor m_first;
    Tremor m_second;
    double m_pace; // phase of the uneven speed [degrees]
    Matrix m_base;
    Matrix m_slip;
};

} // namespace

std::string ProblemOf(const TurnPlan& plan)
{
    if (plan.samples < 2 || plan.samples > kMostSamples)
        return "a turn has from 2 to 10000000 samples";
    if (!(plan.rate > 0.0)) return "the sample rate must be above 0 Hz";
    if (!(DurationOf(plan) <= kMostSeconds)) return "a turn lasts at most 1000000 seconds";
    if (!(std::fabs(plan.extent) > 0.0 && std::fabs(plan.extent) <= kMostDegrees))
        return "a turn goes over more than 0 and at most 1000000 degrees";
    if (std::string problem = ProblemOf(plan.losses); !problem.empty()) return problem;
    if (!(plan.unevenness >= 0.0 && plan.unevenness < 1.0))
        return "the unevenness of the speed must be at least 0 and below 1";
    const double extent = std::fabs(plan.extent);
    const auto outside = [extent](const auto& event) {
        return event.at < 0.0 || event.at > extent;
    };
    if (std::ranges::any_of(plan.stops, outside)) return "a stop lies outside the turn";
    if (std::ranges::any_of(plan.turningsBack, outside))
        return "a turning back lies outside the turn";
    if (std::ranges::any_of(plan.stops, [](const Stop& s) { return s.seconds < 0.0; }))
        return "a stop cannot last less than 0 seconds";
    if (std::ranges::any_of(plan.turningsBack, [](const TurningBack& b) { return b.by < 0.0; }))
        return "a turning back cannot be less than 0 degrees";
    if (StandingOf(plan) >= DurationOf(plan)) return "the stops last longer than the whole turn";
    return {};
}

Recording SimulateTurn(const PoseSensor& sensor, const EarthField& field, const TurnPlan& plan,
                       std::uint64_t seed)
{
    Recording recording;
    if (!ProblemOf(plan).empty()) return recording;

    const auto index = static_cast<std::uint64_t>(plan.axis);
    TurnMotion motion(plan, sensor.type, seed);
    SensorReadings readings(sensor, field, plan.magnets, seed, index);
    LossDecision losses(plan.losses, seed, index);
    recording.samples.reserve(static_cast<std::size_t>(plan.samples));
    recording.truth.reserve(static_cast<std::size_t>(plan.samples));

    Motion before = motion.At(-1.0 / plan.rate);
    Motion now = motion.At(0.0);
    for (int i = 0; i < plan.samples; ++i) {
        const double seconds = i / plan.rate;
        const Motion after = motion.At((i + 1) / plan.rate);
        PoseTruth truth;
        const PoseSensorData sample = readings.Read(before, now, after, 1.0 / plan.rate,
                                                    plan.startOfDay + seconds, seconds, truth);
        if (!losses.Loses(seconds)) {
            recording.samples.push_back(sample);
            recording.truth.push_back(truth);
        }
        before = now;
        now = after;
    }
    return recording;
}

} // namespace simulation
