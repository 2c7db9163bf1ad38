// SPDX-License-Identifier: MIT
#include "simulation/Occupation.h"

#include "simulation/PortableMath.h"

#include <algorithm>
#include <cmath>

namespace simulation {

namespace {

constexpr double kMostRows = 1e7;
constexpr double kFilterSettles = 3.0; // time constants before the tip is planted ...
constexpr double kMostSettling = 60.0; // ... at most [s]; the pole is held all the time

Point3 Drawn(double deviation, Generator& random)
{
    const double x = random.Normal();
    const double y = random.Normal();
    return deviation * Point3{x, y, random.Normal()};
}

// Level frame (x north, y east, z down) and plane frame (z up), either way.
Point3 Upturned(const Point3& p)
{
    return {p.x, p.y, -p.z};
}

PoseSensor WithErrors(PoseSensor sensor, const PoleErrors& errors)
{
    sensor.accelerationBias = sensor.accelerationBias + errors.accelerationBias;
    sensor.gyroBias = sensor.gyroBias + errors.gyroBias;
    sensor.gyroScale = sensor.gyroScale + errors.gyroScale;
    sensor.a.hardIron = sensor.a.hardIron + errors.hardIronA;
    sensor.b.hardIron = sensor.b.hardIron + errors.hardIronB;
    sensor.a.softIron = errors.softIronA * sensor.a.softIron;
    sensor.b.softIron = errors.softIronB * sensor.b.softIron;
    return sensor;
}

// From sensor to pole. With M = Ry(f) Rx(-r) the pole's upper end, (0, 0, -1), is
// (sin f, cos f sin r, -cos f cos r) in the sensor: f to the front, r to the right.
Matrix MountingOf(const OccupationPlan& plan, const PoleErrors& errors)
{
    return AttitudeOf(
        {0.0, plan.axisForward + errors.axisForward, -(plan.axisRight + errors.axisRight)});
}

std::vector<OccupiedPoint> PointsOf(const OccupationPlan& plan, std::uint64_t seed)
{
    Generator random(seed, Stream::Placement, kOccupationIndex);
    std::vector<OccupiedPoint> points;
    Point3 tip;
    double course = random.Uniform(0.0, 360.0);
    for (int i = 0; i < plan.points; ++i) {
        OccupiedPoint point;
        point.tip = plan.start + tip;
        point.tipAtEnd = point.tip;
        for (const Slip& slip : plan.motion.slips)
            point.tipAtEnd = point.tipAtEnd + slip.by;
        point.azimuth = random.Uniform(0.0, 360.0);
        point.heading = random.Uniform(0.0, 360.0);
        const std::uint64_t draw = plan.anew ? kOccupationIndex + static_cast<std::uint64_t>(i) : 0;
        point.errors = DrawErrors(plan.spread, seed, draw);
        points.push_back(point);
        course += random.Uniform(-60.0, 60.0);
        const auto [s, c] = SineCosineOf(course);
        tip = {tip.x + plan.spacing * c, tip.y + plan.spacing * s, plan.relief * random.Normal()};
    }
    return points;
}

// The antenna's errors at one point, as recorded from a random place on or as modeled.
class EpochErrors
{
public:
    EpochErrors(const OccupationPlan& plan, std::uint64_t seed, std::uint64_t index)
        : m_recorded(plan.recorded), m_modeled(plan.noise, 1.0 / plan.antennaRate, seed, index)
    {
        const auto count = static_cast<double>(m_recorded.errors.size());
        const double spare = (count - 1.0) * m_recorded.interval - plan.motion.duration;
        Generator random(seed, Stream::Epochs, index);
        m_start = random.Uniform(0.0, std::max(spare, 0.0));
    }

    Point3 Next(double seconds)
    {
        if (m_recorded.errors.empty()) return m_modeled.Next();
        const double place = (m_start + seconds) / m_recorded.interval;
        const auto last = m_recorded.errors.size() - 1;
        const auto i = std::min(static_cast<std::size_t>(place), last);
        const double share = std::min(place - std::floor(place), 1.0);
        const Point3& here = m_recorded.errors[i];
        return here + share * (m_recorded.errors[std::min(i + 1, last)] - here);
    }

private:
    const RecordedNoise& m_recorded;
    AntennaErrors m_modeled;
    double m_start = 0.0; // [s]
};

// One point of the log.
class Occupied
{
public:
    Occupied(const PoseSensor& sensor, const EarthField& field, const OccupationPlan& plan,
             std::uint64_t seed, int number, const OccupiedPoint& point)
        : m_plan(plan), m_point(point), m_number(number),
          m_index(kOccupationIndex + static_cast<std::uint64_t>(number)),
          m_pole(MotionOf(plan, point), seed, m_index), m_mounting(MountingOf(plan, point.errors)),
          m_readings(WithErrors(sensor, point.errors), field, plan.magnets, seed, m_index),
          m_rowLosses(plan.losses, seed, m_index),
          m_epochLosses(plan.epochLosses, seed, m_index + kEpochs), m_errors(plan, seed, m_index),
          m_settling(
              std::ceil(std::min(kFilterSettles * sensor.filterTime, kMostSettling) * plan.rate))
    {
        m_readings.SetDipoles(plan.dipoles);
    }

    void AppendTo(std::vector<OccupationRow>& rows)
    {
        const auto count = static_cast<int>(std::floor(m_plan.motion.duration * m_plan.rate));
        for (int i = -static_cast<int>(m_settling); i < 0; ++i)
            RowAt(i / m_plan.rate);
        double epochsDue = 0.0;
        for (int i = 0; i < count; ++i) {
            const double seconds = i / m_plan.rate;
            OccupationRow row = RowAt(seconds);
            if (seconds * m_plan.antennaRate + kRoundOff >= epochsDue) {
                row.antenna = EpochAt(seconds);
                epochsDue += 1.0;
            }
            if (!m_rowLosses.Loses(seconds)) rows.push_back(row);
        }
    }

private:
    static constexpr std::uint64_t kEpochs =
        1000000;                              // tells the losses of epochs from those of rows
    static constexpr double kRoundOff = 1e-6; // of an epoch

    static PlantedMotion MotionOf(const OccupationPlan& plan, const OccupiedPoint& point)
    {
        PlantedMotion motion = plan.motion;
        motion.azimuth = point.azimuth;
        motion.heading = point.heading;
        return motion;
    }

    Point3 AntennaOf(const PoleInstant& pole) const
    {
        const double length = m_plan.poleLength + m_plan.poleError;
        return m_point.tip + Upturned(pole.tip + length * pole.up);
    }

    OccupationRow RowAt(double seconds)
    {
        const PoleInstant pole = m_pole.At(seconds);
        const Instant now{
            {pole.attitude * m_mounting, pole.sensor},
            m_mounting.Transposed() * pole.rate,
            pole.acceleration
        };
        const double sinceFirst = (m_number - 1) * (m_plan.motion.duration + m_plan.travel);
        OccupationRow row;
        row.point = m_number;
        row.sample =
            m_readings.Read(now, 1.0 / m_plan.rate, m_plan.startOfDay + sinceFirst + seconds,
                            seconds, row.truth.pose);
        row.truth.tip = m_point.tip + Upturned(pole.tip);
        row.truth.antenna = AntennaOf(pole);
        return row;
    }

    // Nothing where the epoch is lost; the errors of the others stay the same.
    std::optional<Point3> EpochAt(double seconds)
    {
        Point3 antenna = AntennaOf(m_pole.At(seconds - m_plan.delay)) + m_errors.Next(seconds);
        for (const Jump& jump : m_plan.jumps)
            if (jump.from <= seconds && seconds < jump.to) antenna = antenna + jump.by;
        if (m_epochLosses.Loses(seconds)) return std::nullopt;
        return antenna;
    }

    const OccupationPlan& m_plan;
    const OccupiedPoint& m_point;
    int m_number;
    std::uint64_t m_index;
    PlantedPole m_pole;
    Matrix m_mounting;
    SensorReadings m_readings;
    LossDecision m_rowLosses;
    LossDecision m_epochLosses;
    EpochErrors m_errors;
    double m_settling; // samples before the start
};

} // namespace

PoleErrors DrawErrors(const ErrorSpread& spread, std::uint64_t seed, std::uint64_t index)
{
    Generator random(seed, Stream::Mounting, index);
    PoleErrors errors;
    const Point3 axis = Drawn(spread.axis, random);
    errors.axisForward = axis.x;
    errors.axisRight = axis.y;
    errors.accelerationBias = Drawn(spread.accelerationBias, random);
    errors.gyroBias = Drawn(spread.gyroBias, random);
    errors.gyroScale = Drawn(spread.gyroScale, random);
    errors.hardIronA = Drawn(spread.hardIron, random);
    errors.hardIronB = Drawn(spread.hardIron, random);
    for (Matrix* iron : {&errors.softIronA, &errors.softIronB})
        for (Point3& row : iron->rows)
            row = row + Drawn(spread.softIron, random);
    return errors;
}

PoseSensor CalibratedSensor()
{
    PoseSensor sensor;
    sensor.a.noise = 1.0;
    sensor.b.noise = 1.0;
    sensor.rollReport = RollReport::Inclination;
    sensor.filterTime = 2.0;
    sensor.gyroNoise = 0.1;
    sensor.accelerationNoise = 0.002;
    return sensor;
}

std::string ProblemOf(const OccupationPlan& plan)
{
    if (plan.points < 1) return "a log has at least one point";
    if (!(plan.rate > 0.0)) return "the sample rate must be above 0 Hz";
    if (!(plan.antennaRate > 0.0 && plan.antennaRate <= plan.rate))
        return "the antenna's rate must be above 0 Hz and not above that of the sensor";
    if (!(plan.poleLength > 0.0 && plan.poleLength + plan.poleError > 0.0))
        return "the pole must be longer than 0 m";
    if (std::string problem = ProblemOf(plan.motion); !problem.empty()) return problem;
    for (const Losses& losses : {plan.losses, plan.epochLosses})
        if (std::string problem = ProblemOf(losses); !problem.empty()) return problem;
    if (!plan.recorded.errors.empty() && !(plan.recorded.interval > 0.0))
        return "recorded antenna errors must lie more than 0 seconds apart";
    const auto isEmpty = [](const Jump& jump) { return !(jump.from < jump.to); };
    if (std::ranges::any_of(plan.jumps, isEmpty)) return "a jump must end after it begins";
    if (!(plan.points * plan.motion.duration * plan.rate <= kMostRows))
        return "a log has at most 10000000 rows";
    return {};
}

Occupations SimulateOccupations(const PoseSensor& sensor, const EarthField& field,
                                const OccupationPlan& plan, std::uint64_t seed)
{
    Occupations log;
    if (!ProblemOf(plan).empty()) return log;
    log.points = PointsOf(plan, seed);
    int number = 0;
    for (const OccupiedPoint& point : log.points)
        Occupied(sensor, field, plan, seed, ++number, point).AppendTo(log.rows);
    return log;
}

} // namespace simulation
