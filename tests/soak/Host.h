// SPDX-License-Identifier: MIT
//
// A host that uses the library for every sample of a working day, and measures each call:
//
//   position      CInclineSensor_Position: heading, tilt and tip
//   Kalman step   CKFilter: the six readings
//   turn filter   the sample filters of both turns, 1000 samples each in turn
//   monitor       field::DisturbanceMonitor
//   live pole     field::Bridge: pose, epoch and tick, and the reports taken
//
// Once in 40 s both turns are filtered and solved, and every half second of a planted pole the live pole
// estimates the occupation with an epoch; samples with one or the other are measured apart.
#pragma once

#include "calibration/InclineSensor_Filter_XY.h"
#include "calibration/InclineSensor_Filter_XZ.h"
#include "calibration/InclineSensor_MagneticAdjust.h"
#include "calibration/KFilter.h"
#include "field/Bridge.h"
#include "field/DisturbanceMonitor.h"
#include "positioning/InclineSensor_Position.h"
#include "tests/soak/Measured.h"
#include "tests/soak/WorkingDay.h"

#include <memory>
#include <string>
#include <vector>

namespace soak {

/// The times of one kind of call.
struct Call
{
    const char* name;
    Histogram times;
    Histogram processor; ///< of the thread; only of whole samples
};

/// What came out, so that it is known that there was work.
struct Outcome
{
    long samples = 0;
    long tips = 0; ///< by Position, finite
    long reports = 0;
    long live = 0;         ///< epochs whose tip was sent
    long stored = 0;       ///< epochs whose verdict was Store
    long byOccupation = 0; ///< of these, by the tip of the occupation only
    long estimates = 0;
    long calibrations = 0;
    long refused = 0;   ///< poses and lines that were bad or refused
    long disturbed = 0; ///< samples, by the monitor
};

class Host
{
public:
    Host();

    /// Everything that a host does with sample i; samples come in order, from 0.
    void Take(const WorkingDay& day, long sample);

    const Outcome& Seen() const { return m_outcome; }
    std::vector<const Call*> Calls() const;
    /// Of each place in the round the shortest time of its samples with neither estimate nor
    /// calibration, where these are at least half: what the library takes where nothing else
    /// interrupts it.
    Histogram Quickest() const;

private:
    enum class Extra { Nothing, Estimate, Calibration };

    void Position(const PoseSensorData& pose, const xyhCoordinate& antenna);
    void Smooth(const PoseSensorData& pose);
    void Turn(long sample);
    void Calibrate();
    void Watch(const PoseSensorData& pose, double seconds);
    void Live(const std::string* epoch, const std::string& pose, field::Instant arrival);
    void Receive(const field::Report& report);

    CInclineSensor_Position m_pole;
    CKFilter m_kalman;
    CInclineSensor_Filter_XY m_horizontal;
    CInclineSensor_Filter_XZ m_vertical;
    std::vector<PoseSensorData> m_turns[2];
    int m_recorded = 0; // of the turn under way [%]
    field::DisturbanceMonitor m_monitor;
    field::Bridge m_bridge;
    Clock::time_point m_fed; // the epoch that is under way
    double m_occupied = 0.0; // of the last estimate [s]
    Extra m_extra = Extra::Nothing;
    Outcome m_outcome;
    struct Place
    {
        std::chrono::nanoseconds quickest = std::chrono::nanoseconds::max();
        long samples = 0;
    };
    std::vector<Place> m_places; // of the round

    Call m_position{"position", {}, {}};
    Call m_smoothing{"Kalman step", {}, {}};
    Call m_turn{"turn filter", {}, {}};
    Call m_watch{"monitor", {}, {}};
    Call m_live{"live pole, pose alone", {}, {}};
    Call m_sentences{"live pole, epoch to sentences", {}, {}};
    Call m_plain{"sample", {}, {}};
    Call m_estimate{"sample with an estimate", {}, {}};
    Call m_calibration{"sample with a calibration", {}, {}};
};

} // namespace soak
