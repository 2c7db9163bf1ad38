// SPDX-License-Identifier: MIT
/// @class field::DisturbanceMonitor
/// Watches whether the magnetometer can be believed: the length and the dip of the measured field
/// against those of the calibration, the two magnetometers against each other, and, once the pole
/// has moved, the magnetic heading against the heading by the antenna's track.
///
/// Two magnetometers on one pole turn alike near a large or distant source and then agree in a
/// wrong heading; the length and the dip of the field do not need a second sensor, only pitch and
/// roll:
///
///     strength = |m|,   dip = asin(-m.u / |m|)              m: calibrated reading, u: up, sensor axes
///     own      = hypot((strength / S - 1) / limit, (dip - D) / limit)       S, D: of the calibration
///     pair     = |a - b| / (limit S)                     b: magnetometer B, turned to the axes of A
///     track    = |magnetic - track heading| / (3 hypot(deviation of the magnetic one, of the track))
///
/// A sample is suspect where the largest of the three scores exceeds 1. A disturbance begins when
/// samples are suspect for some time and ends when the score has stayed low for longer, so that a
/// field that varies about a limit is one disturbance.
///
///     field::DisturbanceMonitor monitor({.strength = 534.0, .dip = 66.0});
///     field::MonitorSample now;
///     now.seconds = 36020.0;
///     now.tilt = {.pitch = sample.dPitch, .roll = sample.dRoll};
///     now.a = {sample.dMag_x, sample.dMag_y, sample.dMag_z};
///     if (monitor.Add(now).disturbed) weighMagnetometer = false;
///     for (const field::DisturbedSpan& span : monitor.Spans())
///         report(span.from, span.to, field::TextOf(span));  // "28 % too strong"
///
///     angles    degrees; dip positive below the horizon
///     readings  calibrated: the parameters of the magnetometer applied, any unit
///     time      seconds; where it runs back, as from one point to the next, a disturbance ends
///
/// On simulated poles beside a magnet (40 places, tilt up to 25 degrees, sensor errors as a
/// calibration leaves them) the limits mark 4 of 5 samples whose heading is off by more than 5
/// degrees; of samples that are not disturbed, 0 simulated and up to 5 % of those recorded by hand.
#pragma once

#include "field/ExactAttitude.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace field {

/// Length and dip of a field.
struct FieldShape
{
    double strength = 0.0; ///< [unit of the readings]
    double dip = 0.0;      ///< [degrees]
};

/// The shape of the field that a magnetometer reads at an inclination.
/// @param reading  of magnetometer A, or of B turned to the axes of A
/// @return dip 0 where the reading is 0, NaN where the inclination is NaN
TILTPOLE_API FieldShape ShapeOf(const Tilt& tilt, const SensorVector& reading);

/// The middle shape of many: medians of the strengths and of the dips. A reference from a log
/// itself, where more than half of its samples are undisturbed. Shapes that are not finite are
/// passed over. The upper one of two middle values.
/// @return nothing where none is left
TILTPOLE_API std::optional<FieldShape> MedianShape(const std::vector<FieldShape>& shapes);

/// Where a sample becomes suspect, and for how long before it counts.
struct MonitorLimits
{
    double strength = 0.06;       ///< relative difference of the length, above 0
    double dip = 3.5;             ///< difference of the dip [degrees], above 0
    double pair = 0.14;           ///< difference of the magnetometers, relative to the strength
    double magneticHeading = 4.0; ///< standard deviation of an undisturbed heading [degrees]
    double begin = 0.2;           ///< a disturbance begins after so long above the limit [s]
    double release = 0.7;         ///< score below which it may end, at most 1
    double end = 1.0;             ///< it ends after so long below that [s]
    double gap = 5.0;             ///< a longer time without samples ends it, too [s]
};

/// What speaks against a sample.
enum class DisturbanceReason : std::uint8_t {
    Nothing,
    Strength, ///< the field is too strong or too weak
    Dip,      ///< the field is too steep or too flat
    Pair,     ///< the magnetometers differ
    Track,    ///< the magnetic heading is not that of the antenna's track
};

/// One sample, as far as it is known.
struct MonitorSample
{
    double seconds = 0.0;
    Tilt tilt{};
    std::optional<SensorVector> up{}; ///< the vertical, where it is known better than by `tilt`
    SensorVector a{};                 ///< calibrated reading of magnetometer A
    std::optional<SensorVector> b{};  ///< of magnetometer B, along the axes of A
    std::optional<double> magneticHeading{}; ///< [degrees]; without it `track` is not used
    std::optional<double> track{};           ///< heading by the antenna's track [degrees]
    double trackDeviation = 0.0;             ///< its standard deviation [degrees]
};

/// What the monitor says of a sample.
struct MonitorVerdict
{
    bool suspect = false;                                  ///< this sample alone
    bool disturbed = false;                                ///< with its neighbors in time
    DisturbanceReason reason = DisturbanceReason::Nothing; ///< the largest score, where suspect
    double score = 0.0; ///< the largest; above 1: suspect; NaN: nothing can be said
    FieldShape shape{};
};

/// A stretch of time in which the field was disturbed.
struct DisturbedSpan
{
    double from = 0.0;                                     ///< first suspect sample [s]
    double to = 0.0;                                       ///< last sample above the release [s]
    DisturbanceReason reason = DisturbanceReason::Nothing; ///< that of the largest score
    double amount = 0.0; ///< at that sample, signed: measured minus expected; Strength and Pair
                         ///< relative, Dip and Track [degrees]
    double score = 0.0;  ///< the largest
};

/// What a span is in words: "28 % too strong", "12 % too weak", "7 degrees too steep", "4 degrees
/// too flat", "magnetometers differ by 40 %", "heading 25 degrees off the track".
TILTPOLE_API std::string TextOf(const DisturbedSpan& span);

class TILTPOLE_API DisturbanceMonitor
{
public:
    /// @param expected  the field of the calibration, in the unit of the readings; strength above 0
    explicit DisturbanceMonitor(const FieldShape& expected, const MonitorLimits& limits = {});

    /// Takes the next sample. Nothing is allocated but for a new span.
    MonitorVerdict Add(const MonitorSample& sample);

    /// All disturbances so far; the last one may go on.
    const std::vector<DisturbedSpan>& Spans() const { return m_spans; }

    /// Whether a disturbance goes on.
    bool IsDisturbed() const { return m_disturbed; }

private:
    struct Witness
    {
        DisturbanceReason reason = DisturbanceReason::Nothing;
        double score = 0.0;
        double amount = 0.0;
    };

    Witness LoudestOf(const MonitorSample& sample, const FieldShape& shape) const;
    Witness OwnField(const FieldShape& shape) const;
    void Follow(double seconds, const Witness& loudest);
    void Widen(double seconds, const Witness& loudest);

    FieldShape m_expected;
    MonitorLimits m_limits;
    std::vector<DisturbedSpan> m_spans;
    DisturbedSpan m_rising; // suspect samples that are not yet a disturbance
    bool m_isRising = false;
    bool m_disturbed = false;
    bool m_started = false;
    double m_last = 0.0; // time of the last sample [s]
};

} // namespace field
