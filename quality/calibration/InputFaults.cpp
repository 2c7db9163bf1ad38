// SPDX-License-Identifier: MIT
#include "quality/calibration/InputFaults.h"

#include "quality/calibration/AxisDiagnosis.h"
#include "quality/calibration/EightValues.h"
#include "quality/calibration/Text.h"
#include "quality/calibration/TiltAxes.h"
#include "quality/calibration/TurnSense.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace tiltpole::quality {
namespace {

using ::quality::Finding;
using ::quality::JointFitOutcome;

constexpr double kOtherAxis = 45.0;    // degrees: nearer to another axis than to the sensor's own
constexpr double kBackwards = -0.3;    // correlation
constexpr double kWidestSpread = 1e-3; // degrees: pitch and roll that never change are none

bool TiltIsRecorded(const ::quality::CalibrationTurns& turns)
{
    for (const auto* turn : {&turns.horizontal, &turns.vertical}) {
        for (const PoseSensorData& s : *turn) {
            if (std::fabs(s.dPitch - turn->front().dPitch) > kWidestSpread) return true;
            if (std::fabs(s.dRoll - turn->front().dRoll) > kWidestSpread) return true;
        }
    }
    return false;
}

std::optional<InputFault> MountingFault(const TiltAxes& axes)
{
    std::string suspect;
    const auto add = [&suspect](const char* turn, const std::optional<double>& off) {
        if (!off || *off < kOtherAxis) return;
        if (!suspect.empty()) suspect += ", ";
        suspect += turn + (" turn: axis off by " + Fixed(*off, 0)) + " degrees";
    };
    add("horizontal", axes.horizontal);
    add("vertical", axes.vertical);
    if (suspect.empty()) return {};
    return InputFault{Finding::Mounting, {suspect + " (by pitch and roll)"}};
}

// Least and largest reading of a turn on each axis: A's three, then B's.
struct Extent
{
    using Axes = Eigen::Array<double, 6, 1>;

    Axes least = Axes::Constant(std::numeric_limits<double>::infinity());
    Axes most = -least;
};

Extent ExtentOf(const std::vector<PoseSensorData>& turn)
{
    Extent extent;
    for (const PoseSensorData& s : turn) {
        Extent::Axes readings;
        readings << VectorOf(ReadingOf(s, Magnetometer::A)).array(),
            VectorOf(ReadingOf(s, Magnetometer::B)).array();
        extent.least = extent.least.min(readings);
        extent.most = extent.most.max(readings);
    }
    return extent;
}

// A pole that stands reads the same on every axis, too.
bool IsTurned(const Extent& turn)
{
    constexpr double kLeastChange = 0.1; // of the largest reading
    const double largest = turn.most.abs().max(turn.least.abs()).maxCoeff();
    return (turn.most - turn.least).maxCoeff() > kLeastChange * largest;
}

// Names axes like "magnetometer B: axis x" that read the same in both turns.
std::optional<InputFault> StuckFault(const ::quality::CalibrationTurns& turns)
{
    const Extent horizontal = ExtentOf(turns.horizontal);
    const Extent vertical = ExtentOf(turns.vertical);
    if (!IsTurned(horizontal) || !IsTurned(vertical)) return {};
    InputFault fault{Finding::MagnetometerStuck, {}};
    for (const Eigen::Index first : {0, 3}) {
        std::string axes;
        for (Eigen::Index axis = 0; axis < 3; ++axis) {
            const Eigen::Index i = first + axis;
            if (std::max(horizontal.most[i], vertical.most[i])
                > std::min(horizontal.least[i], vertical.least[i]))
                continue;
            if (!axes.empty()) axes += ", ";
            axes += "xyz"[axis];
        }
        const char* const name = first == 0 ? "magnetometer A: axis " : "magnetometer B: axis ";
        if (!axes.empty()) fault.suspects.push_back(name + axes);
    }
    if (fault.suspects.empty()) return {};
    return fault;
}

bool IsTooShort(JointFitOutcome outcome)
{
    return outcome == JointFitOutcome::TooFewSamples || outcome == JointFitOutcome::NotFinite;
}

// A turn whose readings seem to leave a part out may have been read in other axes.
bool SeemsIncomplete(JointFitOutcome outcome)
{
    return outcome == JointFitOutcome::HorizontalIncomplete
           || outcome == JointFitOutcome::VerticalIncomplete;
}

bool IsBackwards(const ::quality::CalibrationRun& run, Magnetometer which)
{
    const bool isA = which == Magnetometer::A;
    const FullCorrection correction =
        FullOf(isA ? run.calibration.correctionA : run.calibration.correctionB);
    std::vector<Eigen::Vector3d> fields;
    fields.reserve(run.recorded.horizontal.size());
    for (const PoseSensorData& s : run.recorded.horizontal)
        fields.push_back(correction(VectorOf(ReadingOf(s, which))));
    return SenseOf(run.recorded.horizontal, fields, which) < kBackwards;
}

} // namespace

std::optional<InputFault> InputFaultOf(const ::quality::CalibrationTurns& turns, int sensorType,
                                       const Suspicion& suspicion)
{
    if (IsTooShort(suspicion.jointFit)) return {};
    if (auto fault = StuckFault(turns)) return fault;
    const TiltAxes axes = TiltAxesOf(turns, sensorType);
    if (axes.exchanged || (!TiltIsRecorded(turns) && LogsLookExchanged(turns))) {
        return InputFault{Finding::LogsExchanged, {"the logs look exchanged"}};
    }
    const bool fitted = suspicion.jointFit == JointFitOutcome::Fitted;
    if (!fitted) {
        if (auto fault = MountingFault(axes)) return fault;
    }
    const bool disagree = suspicion.disagreement > ::quality::kMostDisagreement;
    if (fitted && !disagree && !suspicion.turnsBackwards) return {};
    std::vector<std::string> faults = AxisFaultsOf(turns, sensorType);
    if (!faults.empty()) return InputFault{Finding::AxesMisnamed, std::move(faults)};
    if (suspicion.turnsBackwards) {
        return InputFault{Finding::AxesMisnamed, {"the headings turn against the angular rate"}};
    }
    if (disagree && !SeemsIncomplete(suspicion.jointFit)) {
        return InputFault{Finding::MagnetometersDisagree, {}};
    }
    return {};
}

bool TurnsBackwards(const ::quality::CalibrationRun& run)
{
    if (!RateIsUsable(run.recorded.vertical, run.sensorType)) return false;
    return IsBackwards(run, Magnetometer::A) || IsBackwards(run, Magnetometer::B);
}

} // namespace tiltpole::quality
