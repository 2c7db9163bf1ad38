// SPDX-License-Identifier: MIT
//
// A straight, rigid pole that turns about its planted tip, as a surveyor moves it on one point.
//
//   attitude of the pole = Rz(azimuth) Ry(-along) Rx(across) Rz(heading - azimuth)
//   up the pole          = (sin along cos across, sin across, cos along cos across)
//                          towards the azimuth of the lean, to the right of it, up
//   sensor               = tip + sensor height * up the pole
//
// Rates and accelerations follow from the derivatives of the angles, not from differences.
// Level frame: x north, y east, z down; angles in degrees, lengths in meters.
//
//     const PlantedPole pole({.motion = OccupationMotion::LeanIn, .leanTo = 20.0}, seed, 0);
//     const PoleInstant now = pole.At(1.5);
#pragma once

#include "simulation/Moving.h"
#include "simulation/Timeline.h"

#include <cstdint>
#include <string>

namespace simulation {

/// What is done with the pole while the tip stands on the point.
enum class OccupationMotion : std::uint8_t {
    LeanIn,        // from one lean to another, then held
    OppositeLeans, // held at one lean, brought over to the opposite one, held
    Rock,          // to and fro about one lean, in the plane of the lean
    Hold,          // held, no motion but the hand's tremor
    Free,          // rocked in both directions and turned about its axis, for a calibration
};

/// The name of a motion on the command line and in the truth, such as "lean-in".
const char* NameOf(OccupationMotion motion);

/// A tip that does not stay where it was planted.
struct Slip
{
    double at = 0.0;       // start of the slip [s] since the start of the point
    double duration = 0.2; // [s]
    Point3 by{};           // north, east, up [m]
};

struct PlantedMotion
{
    OccupationMotion motion = OccupationMotion::LeanIn;
    double duration = 5.0;  // on the point [s]
    double leanFrom = 5.0;  // lean at the start; the mean one of Rock and Free [degrees]
    double leanTo = 20.0;   // lean at the end of LeanIn, of either side of OppositeLeans [degrees]
    double moveTime = 2.0;  // of LeanIn and of the way over of OppositeLeans [s]
    double amplitude = 5.0; // of Rock and Free [degrees]
    double frequency = 0.8; // of Rock and Free [Hz]
    double turn = 0.0;      // about the pole's own axis, evenly over the duration [degrees]
    double tremor = 0.05;   // of the hand, standard deviation of each angle [degrees]
    double azimuth = 0.0;   // of the lean: where the upper end goes [degrees]
    double heading = 0.0;   // of the pole's forward axis at the start [degrees]
    double sensorHeight = 1.8; // of the sensor above the tip, along the pole [m]
    std::vector<Slip> slips{};
};

/// A motion with its usual values: lean in from 5 to 20 degrees, 15 degrees to either side, rock by
/// 5 degrees about 10, hold at 20; free turning for 20 s: rocked by 15 degrees about 10 and turned
/// once. The others take 5 s.
PlantedMotion UsualMotion(OccupationMotion motion);

/// One sentence on what makes a motion impossible; empty for one that can be carried out.
std::string ProblemOf(const PlantedMotion& motion);

/// The pole at one instant.
struct PoleInstant
{
    Matrix attitude;     // of the pole: body to level
    Point3 rate;         // angular, in body axes [degrees/s]
    Point3 up;           // unit vector from tip to antenna, level frame
    Point3 tip;          // from where it was planted, level frame [m]
    Point3 sensor;       // from where the tip was planted, level frame [m]
    Point3 acceleration; // of the sensor, level frame [m/s^2]
};

class PlantedPole
{
public:
    /// @param index  tells the points of one seed apart
    PlantedPole(const PlantedMotion& motion, std::uint64_t seed, std::uint64_t index);

    /// The pole at any time since the start of the point [s]. Before 0 it is held as at 0.
    PoleInstant At(double seconds) const;

private:
    Moving AlongAt(double seconds) const;
    Moving AcrossAt(double seconds) const;
    Moving SpinAt(double seconds) const;
    Moving RockedAt(double seconds, double frequency, double phase) const;

    PlantedMotion m_motion;
    Generator m_random;
    Tremor m_alongTremor;
    Tremor m_acrossTremor;
    Tremor m_spinTremor;
    double m_acrossFrequency; // of Free [Hz]
    double m_acrossPhase;     // of Free [degrees]
};

} // namespace simulation
