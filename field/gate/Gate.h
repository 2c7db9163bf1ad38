// SPDX-License-Identifier: MIT
//
// Whether the tip of an epoch may be stored. Every condition has a limit (field::GateLimits); one
// that does not hold is a reason, and the reasons stand in the order of their importance.
//
//     Gate gate(setup);
//     Sight sight(epoch);
//     sight.tip = &tip;                         // with sigma and antennaSpeed
//     const Judgement judged = gate.Judge(sight);
//     if (judged.hidden) Withhold();
//     else if (judged.verdict.state == State::Store) Offer(tip);
//
// It keeps what a single epoch does not tell: the base, the datum, the last positions.
#pragma once

#include "field/Bridge.h"
#include "field/gate/StepWatch.h"
#include "survey/Point.h"

#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tiltpole::field {

inline constexpr double kNotKnown = std::numeric_limits<double>::quiet_NaN();

/// The field as the magnetometers see it against what is expected.
struct FieldSight
{
    std::optional<::field::FieldShape> measured; ///< by the corrected reading of A
    std::optional<double> strength;              ///< expected [counts]
    std::optional<double> dip;                   ///< expected [degrees]
    std::optional<double> pair; ///< |A − B|, B in the axes of A, part of the strength of A
};

/// What of the field forbids to believe the heading.
std::vector<::field::Reason> FieldReasons(const FieldSight& sight,
                                          const ::field::GateLimits& limits);

/// Whether the pole stands so upright that its heading hardly matters: lean below 1 degree and the
/// foot within 35 mm of the plumb line.
/// @param length  tip to phase center [m]
bool IsLevel(double lean, double length);

enum class PoseSight {
    Found,
    Gap,   ///< neighbors too far apart
    None,  ///< silent
    Stuck, ///< the sensor repeats itself
};

/// What is known of one epoch when it is judged; a reference to what outlives the call.
struct Sight
{
    explicit Sight(const ::field::Epoch& of) : epoch(of) {}

    const ::field::Epoch& epoch;
    std::optional<std::chrono::sys_days> today; ///< UTC
    double seconds = 0.0;                       ///< of the epoch's time, without a wrap at midnight
    const ::field::Tip* tip = nullptr;          ///< with sigma and antennaSpeed; null: not formed
    std::vector<::field::Reason> doubts;        ///< of the solution and of the field, and notes

    PoseSight pose = PoseSight::None;
    double poseSilence = kNotKnown; ///< before the moment of the epoch [s]; NaN: no pose ever
    double poseGap = kNotKnown;     ///< [s]
    std::string_view poseFault;     ///< of the last sample, where it was dropped
    double timeSigma = 0.0;         ///< of the pose against the antenna [s]
    double still =
        0.0; ///< how long the antenna has been slower than the limit [s]; at most as long as
             ///< poses are known
    std::optional<survey::Point3> lean; ///< from tip to antenna [m]

    double age = 0.0;      ///< of the epoch at its arrival, see EpochAge [s]
    double period = 0.0;   ///< of the epochs [s]; 0: not known
    double badLines = 0.0; ///< part of the receiver's lines of the last 10 s
    bool timeStep = false; ///< within 2 s of a step of the receiver's time
};

struct Judgement
{
    ::field::Verdict verdict;
    bool hidden = false;  ///< the tip counts as unknown
    bool refuted = false; ///< this epoch shows that the one before was wrong
};

class Gate
{
public:
    explicit Gate(const ::field::Setup& setup);

    Judgement Judge(const Sight& sight);

    /// BaseChanged: the station of the last epoch is the right one. DatumStep: as it is now. Other
    /// codes have no effect.
    void Acknowledge(::field::Reason::Code code);

    /// Forgets the last positions, after a pause or a step of the receiver's time; keeps the base
    /// and what was not acknowledged.
    void Restart();

private:
    void AddReceiver(const Sight& sight, std::vector<::field::Reason>& reasons) const;
    void AddPose(const Sight& sight, std::vector<::field::Reason>& reasons) const;
    void AddTip(const Sight& sight, std::vector<::field::Reason>& reasons) const;
    void AddCalibration(const Sight& sight, std::vector<::field::Reason>& reasons) const;
    double TrackSpeed(const Sight& sight, bool isStep);
    void AddBase(const Sight& sight, std::vector<::field::Reason>& reasons);
    bool AddSteps(const Sight& sight, std::vector<::field::Reason>& reasons);

    ::field::GateLimits m_limits;
    int m_sensorType;
    bool m_oneMagnetometer;
    bool m_hasFile;
    bool m_complete;
    bool m_usable;
    std::optional<std::chrono::sys_days> m_made;

    std::string m_station;    // of the job's start, or acknowledged
    std::string m_current;    // of the last epoch that named one
    double m_datumStep = 0.0; // not acknowledged [m]; 0: none
    StepWatch m_steps;

    struct Place
    {
        double seconds;
        ::field::Geodetic antenna;
        double sigma; // north, east [m]
    };
    std::optional<Place> m_older; // from which the track is measured, see TrackSpeed
    std::optional<Place> m_newer; // the one that follows it
    double m_trackSpeed = 0.0;    // that the fixed epochs show beyond their noise [m/s]; 0: none
};

} // namespace tiltpole::field
