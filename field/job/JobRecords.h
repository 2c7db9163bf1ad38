// SPDX-License-Identifier: MIT
/// @file
/// The rows of a job as plain values. docs/job.md describes the tables and columns they become.
///
/// What is not known is NaN, none or an empty text, and becomes NULL in the file. Names of members
/// that are measured carry no unit here; it stands in the comment and, in the file, in the column's
/// name.
#pragma once

#include "field/Epoch.h"

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace field {

/// UTC.
using JobTime = std::chrono::sys_time<std::chrono::milliseconds>;

inline constexpr double kNotKnown = std::numeric_limits<double>::quiet_NaN();

/// Table `setup`: pole, sensor and settings that points were measured with.
struct JobSetup
{
    std::int64_t id = 0; ///< given by the store
    JobTime made{};
    double poleLength = kNotKnown;   ///< tip to antenna reference point [m]
    double phaseCenter = kNotKnown;  ///< reference point to phase center [m]
    int sensorType = 1;              ///< axis convention, 1 or 2
    std::string calibration;         ///< the file's bytes; empty: there was none
    double headingSigma = kNotKnown; ///< [degrees]
    double tiltSigma = kNotKnown;    ///< of pitch and roll each [degrees]
    double lengthSigma = kNotKnown;  ///< of the pole [m]
    double delay = kNotKnown;        ///< receiver later than pose [s]
    double delaySigma = kNotKnown;   ///< [s]
    double axisOffset = kNotKnown;   ///< bias angle of magnetometer A [degrees]
    std::string north;               ///< "model" or "file"
    std::string model;               ///< of the declination, such as "WMM2025"; empty: none
    std::string program;             ///< that wrote it, with its version
};

/// Table `point`: a stored tip.
struct JobPoint
{
    std::int64_t id = 0; ///< given by the store
    Geodetic tip;        ///< all three finite
    std::string name;    ///< unique in the job, 1 to 64 bytes, no control characters
    std::string code;
    std::string note;
    JobTime utc{};                     ///< middle of its epochs
    std::int64_t setup = 0;            ///< JobSetup::id
    double receivedHeight = kNotKnown; ///< above the receiver's geoid: h - geoid [m]
    double geoid = kNotKnown;          ///< separation that the receiver sent [m]
    /// Of the tip; nh and eh are not kept.
    Covariance3 sigma{kNotKnown, kNotKnown, kNotKnown, kNotKnown, kNotKnown, kNotKnown};
    int epochs = 0;                   ///< that it was computed from
    int leftOut = 0;                  ///< epochs that were not
    double tilt = kNotKnown;          ///< lean [degrees]
    double azimuthTrue = kNotKnown;   ///< from tip to antenna [degrees]
    double declination = kNotKnown;   ///< [degrees]
    Fix quality = Fix::Invalid;       ///< the lowest of its epochs
    std::string station;              ///< of the reference station
    double correctionAge = kNotKnown; ///< the largest of its epochs [s]
    Geodetic antenna{kNotKnown, kNotKnown, kNotKnown};
    std::string gate;                      ///< "store", or the reasons that it was stored against
    bool byOccupation = false;             ///< from an occupation; else the mean of its epochs
    bool forced = false;                   ///< stored although the gate did not allow it
    std::optional<std::int64_t> replaces;  ///< JobPoint::id of the row that this one supersedes
    std::optional<std::string> voidReason; ///< why it does not count any more
};

/// Table `epoch`: what one epoch of a point was computed from.
struct JobEpoch
{
    int n = 0;                  ///< from 1, in order of time; given by the store
    bool used = true;           ///< false: left out of the average
    std::string why;            ///< why it was left out
    double seconds = kNotKnown; ///< Epoch::moment [s]
    std::string receiver;       ///< Epoch::lines
    /// `$PTPS` lines, each with CR LF, their ms on the clock of `seconds`: the pose of its moment;
    /// of an occupation all poses since the epoch before.
    std::string pose;
    bool disturbed = false; ///< of an occupation: whether the field of these poses was not believed
};

/// Table `lean_pair`: two points on one mark with the pole leaning to opposite sides.
struct JobLeanPair
{
    std::int64_t id = 0;                ///< given by the store
    std::int64_t first = 0, second = 0; ///< JobPoint::id
    double apart = kNotKnown;           ///< in plan [m]
    double headingError = kNotKnown;    ///< that would explain it [degrees]
    JobTime made{};
};

/// Table `stake`: a design point, and what was staked for it.
struct JobStake
{
    std::int64_t id = 0; ///< given by the store
    std::string name;    ///< of the design point
    Geodetic design;
    std::optional<std::int64_t> point;                          ///< JobPoint::id
    double north = kNotKnown, east = kNotKnown, up = kNotKnown; ///< point minus design [m]
    JobTime made{};
};

/// Table `event`: what happened on the way, such as another base or a gap.
struct JobEvent
{
    std::int64_t id = 0; ///< given by the store
    JobTime utc{};
    std::string kind; ///< one word, such as "base", "gap", "setup"
    std::string text; ///< one sentence
};

} // namespace field
