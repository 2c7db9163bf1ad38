// SPDX-License-Identifier: MIT
//
// The settings of `tiltpole occupy`, and what it finds for each point.
#pragma once

#include "apps/cli/SpotSidecar.h"
#include "apps/cli/occupy/AxesCheck.h"
#include "apps/cli/occupy/FieldOfPoint.h"
#include "field/DisturbanceMonitor.h"
#include "field/Occupation.h"
#include "positioning/InclineSensor_Position.h"
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct OccupySetup
{
    std::string log;
    std::string config;      // empty: identity
    std::string truth;       // empty: none
    std::string calibration; // sidecar of a calibration on the spot; empty: none
    SpotSidecar spot;        // its content
    field::OccupationSetup occupation;
    CInclineSensor_Position
        position; // of single samples: its calibration is that of the occupation
    std::optional<field::FieldShape> field; // undisturbed [counts, degrees]; none: not watched
    bool fieldByB = true; // whether magnetometer B is calibrated, so that it is a witness
    double delay = 0.0;   // of the antenna behind the sensors, as given [s]
    bool gyroFree = false;
};

/// Estimated minus true tip.
struct TipError
{
    double north, east, height; // [m]
    bool inEllipse;             // the true tip lies in the 95 % ellipse
    bool inInterval;            // its height in the 95 % interval
};

/// An antenna epoch of the log.
struct AntennaFix
{
    double seconds;         // as the estimate takes it, with the delay that was given taken off
    xyhCoordinate position; // [m]
};

struct OccupiedPoint
{
    std::string name;
    field::OccupationEstimate estimate;
    std::optional<std::string> contradiction; // of rows or sensors, for which the point is refused
    bool doubtsSensors = false;               // whether they do not fit the track or each other
    std::uint64_t samples = 0;                // rows of the log
    std::uint64_t lateSamples = 0;
    std::uint64_t epochs = 0; // rows with an antenna position
    std::uint64_t lateEpochs = 0;
    std::uint64_t repeatedEpochs = 0;  // rows that hold the epoch before, beside `epochs`
    std::uint64_t outsideEpochs = 0;   // before the first sample or after the last
    std::uint64_t disturbedEpochs = 0; // without gyros: left out beside a disturbed field
    double from = 0.0;                 // time of the first sample [s]
    FieldOfPoint field;                // where it is watched; times as in the log
    std::vector<AntennaFix> track;
    std::vector<xyhCoordinate> singleTips; // of each epoch alone, as `measure` has them [m]
    std::optional<xyhCoordinate> truth;    // where it is known [m]
    std::optional<TipError> error;         // where the true tip is known and one was found

    AxesEvidence axes; // without gyros: none

    /// Refuses the point for what its rows or the sensors show.
    void Contradict(const std::string& why)
    {
        contradiction = why;
        estimate.advice = field::OccupationAdvice::Refuse;
        estimate.hasTip = false;
        estimate.delaySigma = 0.0;
        estimate.sensorHeight = 0.0;
    }

    /// Whether times or numbers of its rows leave nothing to estimate from.
    bool LacksRows() const
    {
        using Reason = field::OccupationReason;
        const Reason reason = estimate.reason;
        return reason == Reason::TimeRanBack || reason == Reason::Gap || reason == Reason::TooLong
               || reason == Reason::TooShort || reason == Reason::NoInertialSamples
               || reason == Reason::NoAntennaEpochs;
    }

    bool IsRefused() const { return estimate.advice == field::OccupationAdvice::Refuse; }

    /// Whether there is a tip that nothing forbids to use.
    bool IsUsable() const { return estimate.hasTip && !IsRefused(); }

    /// Why the advice is what it is, in one sentence.
    std::string Reason() const { return contradiction.value_or(OccupationText(estimate)); }

    /// Of the tips of single samples; none where there are none.
    std::optional<xyhCoordinate> MeanTip() const;

    /// Epochs that are neither late nor in the estimate: outside of the samples' time, or thinned
    /// in a long occupation.
    std::uint64_t UnusedEpochs() const
    {
        return epochs - lateEpochs - static_cast<std::uint64_t>(estimate.epochs);
    }
};

struct OccupyResult
{
    OccupySetup setup;
    std::string columns; // those whose names are not the keys: "N from x"
    std::vector<OccupiedPoint> points;
    std::optional<std::string> trouble{};     // why there are no points, where it is known
    int shortStops = 0;                       // of a log without names: too short for a point ...
    double longestStop = 0.0;                 // ... the longest of them [s]
    bool toldApart = false;                   // by motion: the log has no column `point`
    std::uint64_t otherRows = 0;              // that belong to no point
    std::uint64_t otherEpochs = 0;            // antenna positions on them
    std::optional<field::FieldShape> field{}; // the middle one, with a calibration on the spot
};

/// The delay of the antenna behind the sensors [s], with what was given; none where none shows.
std::optional<double> DelayOf(const OccupiedPoint& point, const OccupySetup& setup);

} // namespace cli
