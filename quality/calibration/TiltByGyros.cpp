// SPDX-License-Identifier: MIT
#include "quality/calibration/TiltByGyros.h"

#include "quality/statistics/Statistics.h"
#include "survey/SensorAxes.h"

#include <Eigen/Cholesky>
#include <Eigen/Geometry>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace tiltpole::quality {
namespace {

using ::quality::GyroTilt;

constexpr double kLeastTurning = 3.0; // RMS of the gyros; less are none [degrees/s]
constexpr std::size_t kFewest = 30;   // samples of a turn
constexpr std::size_t kBlocks = 24;   // of a turn, within which errors are alike
constexpr double kStepKnown = 0.6;    // standard deviation of a step that is known [degrees]
constexpr int kRounds = 4;
constexpr double kNudge = 0.01; // for slopes in pitch and roll [degrees]

// Standard deviations expected.
constexpr double kBias = 0.05;     // of a gyro [degrees/s]
constexpr double kMounting = 0.2;  // of how gyros sit against inclinometers [degrees]
constexpr double kInterval = 0.05; // of the time between samples, a share of what is found at first
constexpr double kOffset = 3.0;    // of pitch and roll [degrees]
constexpr double kChange = 1.5;    // of their step and drift [degrees]

// Places of the unknowns.
constexpr int kMean = 0;  // offset of pitch and roll, mean of both turns [degrees]
constexpr int kStep = 2;  // from the horizontal turn to the vertical one [degrees]
constexpr int kDrift = 4; // within a turn, alike in both [degrees]
constexpr int kRate = 6;  // bias of the gyros [radians/s]
constexpr int kAskew = 9; // rotation of the gyros against the inclinometers [radians]
constexpr int kTime = 12; // share by which the interval is longer, of each turn
constexpr int kUp = 14;   // the vertical at the start of each turn
constexpr int kAll = 20;

using Row = Eigen::Matrix<double, kAll, 1>;
using Square = Eigen::Matrix<double, kAll, kAll>;
using Samples = std::vector<PoseSensorData>;
// By bias, mounting and interval.
using GyroSlopes = Eigen::Matrix<double, 3, 7>;

Eigen::Vector3d RateOf(const PoseSensorData& s)
{
    return Eigen::Vector3d(s.dGyro_x, s.dGyro_y, s.dGyro_z) / kDegreesPerRadian;
}

Eigen::Matrix3d CrossOf(const Eigen::Vector3d& v)
{
    Eigen::Matrix3d m;
    m << 0.0, -v.z(), v.y(), v.z(), 0.0, -v.x(), -v.y(), v.x(), 0.0;
    return m;
}

Eigen::Matrix3d RotationBy(const Eigen::Vector3d& v)
{
    const double angle = v.norm();
    if (!(angle > 0.0)) return Eigen::Matrix3d::Identity();
    return Eigen::AngleAxisd(angle, v / angle).toRotationMatrix();
}

// Angle by the gyros about the axis of the turn since its start, as if samples were a second apart.
std::vector<double> TurnedByGyros(const Samples& samples, TurnAxis axis)
{
    std::vector<double> turned = {0.0};
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const Eigen::Vector3d rate = (RateOf(samples[i - 1]) + RateOf(samples[i])) / 2.0;
        turned.push_back(turned.back() + (axis == TurnAxis::Vertical ? rate.y() : rate.z()));
    }
    return turned;
}

// Time between samples: how far magnetometer A turns over a twelfth of the samples against the
// gyros, the median, which outliers do not move. [s]
std::optional<double> IntervalOf(const Samples& samples, TurnAxis axis, const FullCorrection& a)
{
    if (samples.size() < kFewest) return {};
    std::vector<double> azimuths;
    azimuths.reserve(samples.size());
    for (const PoseSensorData& s : samples) {
        const Eigen::Vector3d c = a(VectorOf(ReadingOf(s, Magnetometer::A)));
        azimuths.push_back(std::atan2(axis == TurnAxis::Vertical ? c.z() : c.y(), c.x())
                           * kDegreesPerRadian);
    }
    const std::vector<double> turned = TurnedByGyros(samples, axis);
    double squares = 0.0;
    for (const PoseSensorData& s : samples)
        squares += RateOf(s).squaredNorm();
    const double least = kLeastTurning / kDegreesPerRadian;
    if (!(squares > least * least * static_cast<double>(samples.size()))) return {};
    const std::size_t lag = samples.size() / 12;
    std::vector<double> ratios;
    for (std::size_t i = lag; i < samples.size(); ++i) {
        const double byGyros = turned[i] - turned[i - lag];
        if (std::fabs(byGyros) < least * static_cast<double>(lag)) continue; // stands still
        ratios.push_back(Wrapped(azimuths[i] - azimuths[i - lag]) / kDegreesPerRadian / byGyros);
    }
    if (ratios.empty()) return {};
    const double interval = std::fabs(Median(std::move(ratios)));
    if (!std::isfinite(interval) || !(interval > 0.0)) return {};
    return interval;
}

// One turn, its gyros integrated with what is known of their errors.
class GyroTurn
{
public:
    struct Equation
    {
        Eigen::Matrix<double, 3, kAll> slopes = Eigen::Matrix<double, 3, kAll>::Zero();
        Eigen::Vector3d residual;
    };

    GyroTurn(const Samples& samples, int turn, double interval, int sensorType)
        : m_samples(samples), m_turn(turn), m_interval(interval), m_sensorType(sensorType)
    {}

    template <class Take>
    void ForEach(const Row& x, const Take& take) const
    {
        const Eigen::Vector3d bias = x.segment<3>(kRate);
        const Eigen::Matrix3d askew = CrossOf(x.segment<3>(kAskew));
        const double step = m_interval * (1.0 + x[kTime + m_turn]);
        Eigen::Matrix3d attitude = Eigen::Matrix3d::Identity();
        GyroSlopes turned = GyroSlopes::Zero();
        for (std::size_t i = 0; i < m_samples.size(); ++i) {
            if (i > 0) {
                const Eigen::Vector3d rate =
                    (RateOf(m_samples[i - 1]) + RateOf(m_samples[i])) / 2.0;
                const Eigen::Vector3d actual = rate + askew * rate - bias;
                const Eigen::Matrix3d next = attitude * RotationBy(step * actual);
                const Eigen::Matrix3d middle = attitude * RotationBy(step / 2.0 * actual);
                turned.leftCols<3>() -= step * middle;
                turned.middleCols<3>(3) -= step * middle * CrossOf(rate);
                turned.col(6) += m_interval * middle * actual;
                attitude = next;
            }
            take(i, EquationAt(i, x, attitude, turned));
        }
    }

    std::size_t size() const { return m_samples.size(); }

private:
    Eigen::Vector3d UpAt(const PoseSensorData& s, double pitch, double roll) const
    {
        return FrameOf(s.dPitch - pitch, s.dRoll - roll, m_sensorType, Magnetometer::A).up;
    }

    Equation EquationAt(std::size_t i, const Row& x, const Eigen::Matrix3d& attitude,
                        const GyroSlopes& turned) const
    {
        const PoseSensorData& s = m_samples[i];
        const double time =
            static_cast<double>(i) / static_cast<double>(m_samples.size() - 1) - 0.5;
        const double half = m_turn == 0 ? -0.5 : 0.5;
        const Eigen::Vector2d off =
            x.segment<2>(kMean) + half * x.segment<2>(kStep) + time * x.segment<2>(kDrift);
        const Eigen::Vector3d up = attitude * UpAt(s, off[0], off[1]);
        Equation e;
        for (int k = 0; k < 2; ++k) {
            const double p = k == 0 ? kNudge : 0.0;
            const double r = k == 1 ? kNudge : 0.0;
            const Eigen::Vector3d slope =
                attitude * (UpAt(s, off[0] + p, off[1] + r) - UpAt(s, off[0] - p, off[1] - r))
                / (2.0 * kNudge);
            e.slopes.col(kMean + k) = slope;
            e.slopes.col(kStep + k) = half * slope;
            e.slopes.col(kDrift + k) = time * slope;
        }
        const GyroSlopes moved = -CrossOf(up) * turned;
        e.slopes.middleCols<6>(kRate) = moved.leftCols<6>();
        e.slopes.col(kTime + m_turn) = moved.col(6);
        e.slopes.middleCols<3>(kUp + 3 * m_turn) = -Eigen::Matrix3d::Identity();
        e.residual = up - x.segment<3>(kUp + 3 * m_turn);
        return e;
    }

    const Samples& m_samples;
    int m_turn;
    double m_interval;
    int m_sensorType;
};

// One over the variances expected.
Row PriorWeights()
{
    Row d;
    d.segment<2>(kMean).setConstant(kOffset);
    d.segment<4>(kStep).setConstant(kChange);
    d.segment<3>(kRate).setConstant(kBias / kDegreesPerRadian);
    d.segment<3>(kAskew).setConstant(kMounting / kDegreesPerRadian);
    d.segment<2>(kTime).setConstant(kInterval);
    d.segment<6>(kUp).setConstant(10.0); // anything
    return d.cwiseInverse().cwiseAbs2();
}

using BothTurns = std::array<GyroTurn, 2>;

struct Solution
{
    Row x = Row::Zero();
    Square inverse = Square::Zero(); // of the normal equations
    double variance = 1e-4;          // of what the equations leave
};

void Improve(const BothTurns& turns, Solution& solution)
{
    Square normal = PriorWeights().asDiagonal();
    Row right = -PriorWeights().cwiseProduct(solution.x);
    for (const GyroTurn& turn : turns) {
        turn.ForEach(solution.x, [&](std::size_t, const GyroTurn::Equation& e) {
            normal += e.slopes.transpose() * e.slopes / solution.variance;
            right -= e.slopes.transpose() * e.residual / solution.variance;
        });
    }
    solution.inverse = normal.ldlt().solve(Square::Identity());
    solution.x += solution.inverse * right;
}

double VarianceOf(const BothTurns& turns, const Row& x)
{
    double squares = 0.0;
    double count = 0.0;
    for (const GyroTurn& turn : turns) {
        turn.ForEach(x, [&](std::size_t, const GyroTurn::Equation& e) {
            squares += e.residual.squaredNorm();
            count += 2.0;
        });
    }
    return std::max(squares / count, 1e-8);
}

// By the scatter of blocks, as neighbors share their errors.
Square CovarianceOf(const BothTurns& turns, const Solution& solution)
{
    Square scatter = PriorWeights().asDiagonal();
    for (const GyroTurn& turn : turns) {
        std::array<Row, kBlocks> sums;
        sums.fill(Row::Zero());
        turn.ForEach(solution.x, [&](std::size_t i, const GyroTurn::Equation& e) {
            sums[i * kBlocks / turn.size()] +=
                e.slopes.transpose() * e.residual / solution.variance;
        });
        for (const Row& sum : sums)
            scatter += sum * sum.transpose();
    }
    return solution.inverse * scatter * solution.inverse;
}

} // namespace

std::optional<GyroTilt> TiltByGyros(const CalibrationTurns& turns, int sensorType,
                                    const JointModel& model)
{
    if (survey::AxesOf(sensorType) != survey::SensorAxes::ForwardLeftUp) return {};
    const FullCorrection& a = model.a.correction;
    const auto horizontal = IntervalOf(turns.horizontal, TurnAxis::Horizontal, a);
    const auto vertical = IntervalOf(turns.vertical, TurnAxis::Vertical, a);
    if (!horizontal || !vertical) return {};
    const BothTurns both = {
        GyroTurn(turns.horizontal, 0, *horizontal, sensorType),
        GyroTurn(turns.vertical, 1, *vertical, sensorType),
    };
    Solution solution;
    for (int round = 0; round < kRounds; ++round) {
        if (round > 0) solution.variance = VarianceOf(both, solution.x);
        Improve(both, solution);
    }
    const Square covariance = CovarianceOf(both, solution);
    if (!solution.x.allFinite() || !covariance.allFinite()) return {};
    const auto error = [&](int at) {
        return ::quality::TiltError{solution.x[at], solution.x[at + 1],
                                    std::sqrt(covariance(at, at)),
                                    std::sqrt(covariance(at + 1, at + 1))};
    };
    const GyroTilt tilt = {error(kMean), error(kStep), error(kDrift)};
    if (!(std::max(tilt.step.pitchDeviation, tilt.step.rollDeviation) < kStepKnown)) return {};
    return tilt;
}

} // namespace tiltpole::quality
