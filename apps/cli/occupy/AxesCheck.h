// SPDX-License-Identifier: MIT
//
// Whether gyros and accelerometers have the same axes. Turned along with the gyros, gravity stays
// where it is, and only the sensor's own motion is left of the variance of the specific force;
// means of a second leave little of that. With axes that are exchanged or reversed in one of them,
// the turns of gravity are added:
//
//   V(P) = mean |R_P a|² - |mean R_P a|²  of the means of a second,   dR_P = R_P [P rate dt]
//
// P is one of the 48 ways to exchange and reverse axes. A pole that is rocked to and fro within a
// second shows nothing in such means; there the means of a tenth of a second are taken, and of
// these what the acceleration of a point on a planted pole explains, s R_P z'' for any height s
// above 0. Which of the two sensors is wrong cannot be said, and axes about which gravity does not
// turn cannot be checked.
#pragma once

#include "field/Occupation.h"
#include <array>
#include <optional>
#include <string>

namespace cli {

inline constexpr std::size_t kAxesReadings = 48;

/// What is left with each P; the first one changes nothing. Of one occupation, or of several that
/// have the same sensors.
struct AxesEvidence
{
    /// V(P) times their number, of means of one length.
    struct Means
    {
        std::array<double, kAxesReadings> left{}; // [g²]
        double count = 0.0;

        void Add(const Means& other);
    };
    Means slow; // of a second
    Means fast; // of a tenth of a second, less what a planted pole explains

    void Add(const AxesEvidence& other);

    /// One sentence where another reading of the axes leaves far less; nullopt where all is well or
    /// nothing can be said.
    std::optional<std::string> Problem() const;
};

class AxesCheck
{
public:
    void Clear();

    /// The next sample; one that is not later than the last is left out.
    void Add(const field::InertialSample& sample);

    AxesEvidence Evidence() const;

private:
    using Vector = std::array<double, 3>;

    /// The last means of a tenth of a second, and sums over those that have neighbors: of the force
    /// f and of the acceleration a of a point 1 m up the pole [g].
    struct Swayed
    {
        Vector force{};                 // sum of the current tenth
        Vector up{};                    // likewise, of the direction up the pole
        std::array<Vector, 2> forces{}; // means, the last one first
        std::array<Vector, 2> ups{};
        Vector sumF{};
        Vector sumA{};
        double ff = 0.0;
        double fa = 0.0;
        double aa = 0.0;

        double Left(double count) const;
    };

    /// What one reading of the axes makes of the samples.
    struct Turned
    {
        std::array<Vector, 3> attitude; // rows: world axes in the sensor
        Vector second{};                // sum of the specific force, in the world [g]
        Vector sum{};                   // of the means of a second [g]
        double squares = 0.0;           // of these [g²]
        Swayed swayed{};
    };

    void EndSecond();
    void EndTenth(double seconds);

    AxesEvidence m_before; // of what was before a pause of the gyros, which hides a turn
    std::array<Turned, kAxesReadings> m_turned;
    double m_means = 0.0;        // how many seconds
    double m_samples = 0.0;      // in the current second
    double m_begin = 0.0;        // of the current second [s]
    double m_tenths = 0.0;       // how many tenths of a second
    double m_tenthSamples = 0.0; // in the current one
    double m_tenthBegin = 0.0;   // of the current one [s]
    std::optional<double> m_seconds;
    Vector m_rate{}; // of the last sample [degrees/s]
};

} // namespace cli
