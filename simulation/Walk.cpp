// SPDX-License-Identifier: MIT
#include "simulation/Walk.h"

#include "simulation/PortableMath.h"
#include "survey/TurnAngle.h"
#include <algorithm>

namespace simulation {

namespace {

constexpr double kLift = 0.15;       // [m] the tip is carried above the ground
constexpr double kMostSeconds = 1e6; // of a walk
constexpr double kMostSamples = 1e7;

// How the pole stands on one point.
struct Stand
{
    Point3 tip; // from the first tip [m]
    PoseAngles angles;
};

// The pole turns the short way: the next heading lies within 180 degrees of the last.
double NearestHeading(double heading, double last)
{
    return last + tiltpole::survey::InTurn(heading - last + 180.0) - 180.0;
}

std::vector<Stand> StandsOf(const WalkPlan& plan, std::uint64_t seed)
{
    Generator random(seed, Stream::Placement);
    std::vector<Stand> stands;
    Point3 tip;
    double course = random.Uniform(0.0, 360.0);
    double heading = course;
    for (int i = 0; i < plan.points; ++i) {
        const double lean = random.Uniform(plan.leastLean, plan.mostLean);
        const double leanAzimuth = random.Uniform(0.0, 360.0);
        heading = NearestHeading(random.Uniform(0.0, 360.0), heading);
        stands.push_back({tip, AnglesOfLean(heading, lean, leanAzimuth)});
        course += random.Uniform(-60.0, 60.0);
        const auto [s, c] = SineCosineOf(course);
        tip = {tip.x + plan.spacing * c, tip.y + plan.spacing * s, plan.relief * random.Normal()};
    }
    return stands;
}

double Between(double from, double to, double share)
{
    return from + (to - from) * share;
}

class WalkMotion
{
public:
    struct Instant
    {
        Motion motion;
        PoseAngles angles;
        Point3 tip; // from the first tip [m]
        int point;
    };

    WalkMotion(const WalkPlan& plan, std::vector<Stand> stands, std::uint64_t seed)
        : m_plan(plan), m_stands(std::move(stands)), m_random(seed, Stream::Motion),
          m_heading(m_random), m_pitch(m_random), m_roll(m_random)
    {}

    Instant At(double seconds) const
    {
        const double leg = m_plan.dwell + m_plan.travel;
        const double last = m_plan.points - 1;
        const double done = std::clamp(std::floor(seconds / leg), 0.0, last);
        const double onLeg = seconds - done * leg;
        const auto i = static_cast<std::size_t>(done);
        const bool standing = onLeg < m_plan.dwell || done == last;
        Stand stand = m_stands[i];
        if (!standing)
            stand = Carried(stand, m_stands[i + 1], (onLeg - m_plan.dwell) / m_plan.travel);
        stand.angles.heading += m_plan.tremor * m_heading.At(seconds);
        stand.angles.pitch += m_plan.tremor * m_pitch.At(seconds);
        stand.angles.roll += m_plan.tremor * m_roll.At(seconds);

        const Matrix attitude = AttitudeOf(stand.angles);
        const Point3 ground{stand.tip.x, stand.tip.y, -stand.tip.z};
        return {
            {attitude, ground - m_plan.sensorHeight * attitude.Column(2)},
            stand.angles,
            stand.tip,
            standing ? static_cast<int>(i) + 1 : 0
        };
    }

private:
    static Stand Carried(const Stand& from, const Stand& to, double share)
    {
        const double s = Smoothly(share);
        return {
            {Between(from.tip.x,          to.tip.x,          s), Between(from.tip.y, to.tip.y,        s),
             Between(from.tip.z,       to.tip.z,       s) + kLift * 4.0 * s * (1.0 - s)},
            {Between(from.angles.heading, to.angles.heading, s),
             Between(from.angles.pitch,                                              to.angles.pitch, s),
             Between(from.angles.roll, to.angles.roll, s)                              }
        };
    }

    const WalkPlan& m_plan;
    std::vector<Stand> m_stands;
    Generator m_random;
    Tremor m_heading;
    Tremor m_pitch;
    Tremor m_roll;
};

double DurationOf(const WalkPlan& plan)
{
    return plan.points * plan.dwell + (plan.points - 1) * plan.travel;
}

// From antenna to tip of a pole 1 m long, by the angles that the sensor would report without noise.
Point3 StepOf(const PoseSensor& sensor, const WalkPlan& plan, const PoseAngles& angles)
{
    if (plan.geometry == PoleGeometry::Rigid) return RigidStep(angles);
    return SolvedStep(sensor.type, ReportedAngles(sensor.rollReport, angles));
}

} // namespace

std::string ProblemOf(const WalkPlan& plan)
{
    if (plan.points < 1) return "a walk has at least one point";
    if (!(plan.rate > 0.0)) return "the sample rate must be above 0 Hz";
    if (!(plan.dwell > 0.0)) return "the time on a point must be above 0 seconds";
    if (!(plan.travel > 0.0)) return "the time between two points must be above 0 seconds";
    if (std::string problem = ProblemOf(plan.losses); !problem.empty()) return problem;
    if (!(plan.poleLength > 0.0)) return "the pole must be longer than 0 m";
    if (!(plan.leastLean >= 0.0 && plan.leastLean <= plan.mostLean && plan.mostLean < 45.0))
        return "the lean must lie from 0 to below 45 degrees, the least one first";
    if (!(DurationOf(plan) <= kMostSeconds && DurationOf(plan) * plan.rate <= kMostSamples))
        return "a walk lasts at most 1000000 seconds and has at most 10000000 samples";
    return {};
}

Walk SimulateWalk(const PoseSensor& sensor, const EarthField& field, const WalkPlan& plan,
                  std::uint64_t seed)
{
    Walk walk;
    if (!ProblemOf(plan).empty()) return walk;

    const std::vector<Stand> stands = StandsOf(plan, seed);
    for (const Stand& stand : stands)
        walk.tips.push_back(plan.start + stand.tip);
    const double interval = 1.0 / plan.rate;
    const WalkMotion motion(plan, stands, seed);
    SensorReadings readings(sensor, field, plan.magnets, seed, kWalkIndex);
    LossDecision losses(plan.losses, seed, kWalkIndex);
    AntennaErrors errors(plan.noise, interval, seed);

    WalkMotion::Instant before = motion.At(-interval);
    WalkMotion::Instant now = motion.At(0.0);
    const auto count = static_cast<int>(DurationOf(plan) * plan.rate);
    for (int i = 0; i < count; ++i) {
        const double seconds = i / plan.rate;
        const WalkMotion::Instant after = motion.At((i + 1) / plan.rate);
        WalkTruth truth;
        const PoseSensorData sample =
            readings.Read(before.motion, now.motion, after.motion, interval,
                          plan.startOfDay + seconds, seconds, truth.pose);
        const Point3 step = StepOf(sensor, plan, now.angles);
        const double length = plan.poleLength;
        truth.point = now.point;
        truth.tip = plan.start + now.tip;
        truth.antenna = truth.tip - length * step;
        const Point3 antenna = truth.antenna + errors.Next();
        if (!losses.Loses(seconds)) {
            walk.samples.push_back(sample);
            walk.antenna.push_back(antenna);
            walk.truth.push_back(truth);
        }
        before = now;
        now = after;
    }
    return walk;
}

} // namespace simulation
