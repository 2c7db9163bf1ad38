// SPDX-License-Identifier: MIT
//
// How often the regions of stored tips hold the true tip: antenna positions about a tip of 2 m,
// with errors of several kinds, estimated one set after the other.
#pragma once

#include "quality/TipEstimate.h"

#include <array>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace simulation {

/// Where the antennas of a set lie: directions evenly spread over a part of the sphere.
struct AntennaCone
{
    std::size_t count = 15;
    double tilt = 40.0;   // largest [degrees]; the least is 5
    double width = 360.0; // of the azimuths [degrees]
};

/// Errors of antenna positions: N, E, h [m], one triple for each position.
using AntennaErrorList = std::vector<std::array<double, 3>>;

/// Independent errors of 8 and 15 mm beside 3 and 10.5 mm that all positions of a set share: what
/// quality::AntennaErrors states by default.
AntennaErrorList ErrorsAsStated(std::size_t count, std::mt19937& random);

/// Errors 4 s apart of which 2.5 and 10 mm are a first-order autoregression of 30 s, 1.5 and 3.5 mm
/// are white.
AntennaErrorList SlowErrors(std::size_t count, std::mt19937& random);

/// The errors of a fixed antenna recorded once a second: lines "E N h time", taken about their
/// mean.
class RecordedErrors
{
public:
    explicit RecordedErrors(const std::string& path);

    /// Epochs `seconds` apart, from a random one on.
    AntennaErrorList Draw(std::size_t count, std::size_t seconds, std::mt19937& random) const;
    std::size_t Count() const { return m_errors.size(); }

private:
    AntennaErrorList m_errors;
};

/// Antennas of a pole of 2 m whose tip is the origin.
std::vector<xyhCoord> AntennasOf(const AntennaCone& cone, const AntennaErrorList& errors,
                                 std::mt19937& random);

struct TipCoverage
{
    int sets = 0;
    int stored = 0;
    int plan = 0;       // stored, and the ellipse holds the true tip
    int height = 0;     // stored, and the interval holds its height
    double worst = 0.0; // distance of a stored tip from the true one, the largest [m]
    double major = 0.0; // mean semi-major axis of the stored tips [m]

    /// Counts an estimate of a tip at the origin.
    void Count(const quality::TipEstimate& estimate);
};

} // namespace simulation
