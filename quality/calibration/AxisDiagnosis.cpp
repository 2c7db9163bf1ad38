// SPDX-License-Identifier: MIT
#include "quality/calibration/AxisDiagnosis.h"

#include "quality/calibration/JointModel.h"
#include "quality/calibration/TurnSense.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace tiltpole::quality {
namespace {

using Samples = std::vector<PoseSensorData>;

constexpr std::size_t kThinned = 150;      // samples of a turn: enough to tell axes apart
constexpr double kMostExtraRange = 0.6;    // of the widest axis: how narrow y and z have to be
constexpr double kMostMisfit = 0.3;        // of the field, both conditions together
constexpr double kMostSkew = 0.35;         // off the diagonal of a plausible correction
constexpr double kSameDip = 0.2;           // sines
constexpr double kSameHeadings = 15.0;     // RMS, B against A, its mean left out [degrees]
constexpr double kSameDirection = 30.0;    // its mean [degrees]
constexpr double kWithTheRate = 0.3;       // correlation
constexpr double kOwnNamesAsGood = 1.4;    // misfit over that of the best names
constexpr double kOtherNamesAsGood = 1.15; // and of renamed axes among each other
constexpr double kNoise = 5e-4;            // of the field

Samples Thinned(const Samples& samples)
{
    const std::size_t step = samples.size() / kThinned + 1;
    Samples thinned;
    for (std::size_t i = 0; i < samples.size(); i += step)
        thinned.push_back(samples[i]);
    return thinned;
}

Eigen::Array3d RangesOf(const Turn& turn)
{
    if (turn.empty()) return Eigen::Array3d::Zero();
    Eigen::Array3d low = turn.front().reading.array();
    Eigen::Array3d high = low;
    for (const Observation& o : turn) {
        low = low.min(o.reading.array());
        high = high.max(o.reading.array());
    }
    return high - low;
}

// The range of z in the horizontal turn and of y in the vertical one, as shares of the widest axes.
double ExtraRange(const std::array<int, 3>& source, const Eigen::Array3d& horizontal,
                  const Eigen::Array3d& vertical)
{
    return horizontal[source[2]] / horizontal.maxCoeff()
           + vertical[source[1]] / vertical.maxCoeff();
}

// All names under which z is narrow in the horizontal turn and y in the vertical one.
std::vector<AxisNames> NamesWorthTrying(const Turn& horizontal, const Turn& vertical)
{
    const Eigen::Array3d h = RangesOf(horizontal);
    const Eigen::Array3d v = RangesOf(vertical);
    std::vector<std::array<int, 3>> sources;
    std::array<int, 3> source = {0, 1, 2};
    double least = 2.0;
    do {
        sources.push_back(source);
        least = std::min(least, ExtraRange(source, h, v));
    } while (std::next_permutation(source.begin(), source.end()));
    std::vector<AxisNames> names;
    for (const std::array<int, 3>& s : sources) {
        if (ExtraRange(s, h, v) > least + kMostExtraRange) continue;
        for (int signs = 0; signs < 8; ++signs) {
            names.push_back({
                s, {signs & 1 ? -1 : 1, signs & 2 ? -1 : 1, signs & 4 ? -1 : 1}
            });
        }
    }
    return names;
}

Turn Renamed(Turn turn, const AxisNames& names)
{
    const Eigen::Matrix3d matrix = names.Matrix();
    for (Observation& o : turn)
        o.reading = matrix * o.reading;
    return turn;
}

bool IsPlausible(const Eigen::Matrix3d& matrix)
{
    const double scale = matrix.trace() / 3.0;
    const Eigen::Matrix3d off = matrix / scale - Eigen::Matrix3d::Identity();
    return scale > 0.0 && off.cwiseAbs().maxCoeff() < kMostSkew;
}

// One way to name the axes under which the turns of a magnetometer can be fitted.
struct Way
{
    AxisNames names;
    double misfit;
    double elevation;
    std::vector<double> headings; // over the horizontal turn [degrees]
};

// Both turns, thinned, and whether their angular rates can be believed.
struct Evidence
{
    Samples horizontal;
    Samples vertical;
    int sensorType;
    bool hasRate;
};

bool TurnsWithTheRate(const Evidence& e, const Turn& turn, const SphereFit& fit, Magnetometer which)
{
    if (!e.hasRate) return true;
    std::vector<Eigen::Vector3d> fields;
    fields.reserve(turn.size());
    for (const Observation& o : turn)
        fields.push_back(fit.correction(o.reading));
    return SenseOf(e.horizontal, fields, which) > kWithTheRate;
}

std::vector<double> HeadingsOf(const Evidence& e, const Turn& turn, const SphereFit& fit,
                               Magnetometer which)
{
    std::vector<double> headings;
    for (std::size_t i = 0; i < turn.size(); ++i) {
        const PoseSensorData& s = e.horizontal[i];
        const LevelFrame frame = FrameOf(s.dPitch, s.dRoll, e.sensorType, which);
        headings.push_back(frame.Heading(fit.correction(turn[i].reading)));
    }
    return headings;
}

std::vector<Way> WaysOf(const Evidence& e, Magnetometer which)
{
    const Turn horizontal = TurnOf(e.horizontal, e.sensorType, which);
    const Turn vertical = TurnOf(e.vertical, e.sensorType, which);
    std::vector<Way> ways;
    for (const AxisNames& names : NamesWorthTrying(horizontal, vertical)) {
        const Turn h = Renamed(horizontal, names);
        const auto fit = FitSphere(h, Renamed(vertical, names));
        if (!fit || !IsPlausible(fit->correction.matrix)) continue;
        const double misfit = fit->sphereSpread + fit->elevationSpread;
        if (!(misfit < kMostMisfit) || !TurnsWithTheRate(e, h, *fit, which)) continue;
        ways.push_back({names, misfit, fit->elevationHorizontal, HeadingsOf(e, h, *fit, which)});
    }
    return ways;
}

// The same pole in the same field.
bool Agree(const Way& a, const Way& b)
{
    if (!(std::fabs(a.elevation - b.elevation) < kSameDip)) return false;
    double sine = 0.0;
    double cosine = 0.0;
    const auto off = [&](std::size_t i) { return b.headings[i] - a.headings[i] - 180.0; };
    for (std::size_t i = 0; i < a.headings.size(); ++i) {
        sine += std::sin(off(i) / kDegreesPerRadian);
        cosine += std::cos(off(i) / kDegreesPerRadian);
    }
    const double mean = std::atan2(sine, cosine) * kDegreesPerRadian;
    double squares = 0.0;
    for (std::size_t i = 0; i < a.headings.size(); ++i)
        squares += std::pow(Wrapped(off(i) - mean), 2);
    const double count = static_cast<double>(a.headings.size());
    return std::fabs(mean) < kSameDirection && std::sqrt(squares / count) < kSameHeadings;
}

struct WayOfBoth
{
    const Way* a;
    const Way* b;

    double Misfit() const { return a->misfit + b->misfit; }

    // 0: own names, 1: one magnetometer renamed, 2: both alike, 3: each otherwise.
    int Changes() const
    {
        const bool own[] = {a->names.AreOwn(), b->names.AreOwn()};
        if (own[0] || own[1]) return own[0] && own[1] ? 0 : 1;
        return a->names.source == b->names.source && a->names.sign == b->names.sign ? 2 : 3;
    }
};

std::vector<WayOfBoth> Simplest(const std::vector<WayOfBoth>& agreeing)
{
    double least = HUGE_VAL;
    for (const WayOfBoth& w : agreeing)
        least = std::min(least, w.Misfit());
    std::vector<WayOfBoth> simplest;
    for (const WayOfBoth& w : agreeing) {
        const double factor = w.Changes() == 0 ? kOwnNamesAsGood : kOtherNamesAsGood;
        if (w.Misfit() > factor * least + kNoise) continue;
        if (!simplest.empty() && w.Changes() > simplest.front().Changes()) continue;
        if (!simplest.empty() && w.Changes() < simplest.front().Changes()) simplest.clear();
        simplest.push_back(w);
    }
    return simplest;
}

std::string FaultOf(const WayOfBoth& way)
{
    const std::string a = way.a->names.Fault();
    const std::string b = way.b->names.Fault();
    if (way.Changes() == 2) return "magnetometers A and B: " + a;
    if (b.empty()) return "magnetometer A: " + a;
    if (a.empty()) return "magnetometer B: " + b;
    return "magnetometer A: " + a + "; magnetometer B: " + b;
}

} // namespace

Eigen::Matrix3d AxisNames::Matrix() const
{
    Eigen::Matrix3d matrix = Eigen::Matrix3d::Zero();
    for (std::size_t i = 0; i < 3; ++i)
        matrix(static_cast<Eigen::Index>(i), source[i]) = sign[i];
    return matrix;
}

bool AxisNames::AreOwn() const
{
    return Fault().empty();
}

std::string AxisNames::Fault() const
{
    const std::string letters = "xyz";
    const auto letter = [&](int axis) { return letters.substr(static_cast<std::size_t>(axis), 1); };
    std::vector<std::string> moved;
    std::vector<std::string> reversed;
    for (std::size_t i = 0; i < 3; ++i) {
        if (source[i] != static_cast<int>(i)) moved.push_back(letter(static_cast<int>(i)));
        if (sign[i] < 0) reversed.push_back(letter(source[i]));
    }
    const auto listed = [](const std::vector<std::string>& names) {
        std::string text;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (i > 0) text += i + 1 == names.size() ? " and " : ", ";
            text += names[i];
        }
        return text;
    };
    std::string text;
    if (moved.size() == 2) text = listed(moved) + " look exchanged";
    if (moved.size() == 3) {
        text = "x, y and z look exchanged in turn (" + letter(source[0]) + ", " + letter(source[1])
               + ", " + letter(source[2]) + " read as x, y, z)";
    }
    if (reversed.empty()) return text;
    if (!text.empty()) text += ", ";
    return text + listed(reversed) + (reversed.size() == 1 ? " looks reversed" : " look reversed");
}

std::vector<std::string> AxisFaultsOf(const ::quality::CalibrationTurns& turns, int sensorType)
{
    const Evidence e = {Thinned(turns.horizontal), Thinned(turns.vertical), sensorType,
                        RateIsUsable(turns.vertical, sensorType)};
    const std::vector<Way> a = WaysOf(e, Magnetometer::A);
    const std::vector<Way> b = WaysOf(e, Magnetometer::B);
    std::vector<WayOfBoth> agreeing;
    for (const Way& ofA : a) {
        for (const Way& ofB : b) {
            if (Agree(ofA, ofB)) agreeing.push_back({&ofA, &ofB});
        }
    }
    std::vector<std::string> faults;
    for (const WayOfBoth& way : Simplest(agreeing)) {
        if (way.Changes() == 0) return {};
        faults.push_back(FaultOf(way));
    }
    return faults;
}

bool LogsLookExchanged(const ::quality::CalibrationTurns& turns)
{
    const auto looks = [&](Magnetometer which) {
        const Eigen::Array3d h = RangesOf(TurnOf(turns.horizontal, 1, which));
        const Eigen::Array3d v = RangesOf(TurnOf(turns.vertical, 1, which));
        constexpr std::array<int, 3> kOwn = {0, 1, 2};
        constexpr std::array<int, 3> kExchanged = {0, 2, 1};
        return ExtraRange(kExchanged, h, v) + kMostExtraRange < ExtraRange(kOwn, h, v);
    };
    return looks(Magnetometer::A) && looks(Magnetometer::B);
}

} // namespace tiltpole::quality
