// SPDX-License-Identifier: MIT
//
// The pose sensor's side of a bridge: bytes become samples with a moment on the host's clock, the
// implausible ones are dropped, and the last seconds are kept.
#pragma once

#include "field/Bridge.h"
#include "field/gate/Gate.h"
#include "field/pose/Plausibility.h"
#include "field/pose/PoseReader.h"
#include "field/pose/PoseRing.h"
#include "field/time/LeastDelay.h"
#include "field/tip/TipSolver.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace tiltpole::field {

/// How the antenna moves about the tip, by the poses alone.
struct PoleMotion
{
    double speed = kNotKnown; ///< of the antenna over the last 0.2 s [m/s]; NaN: too few poses
    double still =
        0.0; ///< how long it has been slower than the limit [s], as far as it was looked at
};

class PoseInput
{
public:
    explicit PoseInput(::field::PoseFormat format);

    /// Samples that these bytes complete.
    std::vector<::field::PoseSample> Read(std::string_view bytes, ::field::Instant arrival);
    /// @return the sample with its moment, where it is kept
    std::optional<::field::PoseSample> Add(::field::PoseSample sample, const TipSolver& solver);
    void Restart();

    const ::field::PoseRing& Ring() const { return m_ring; }
    /// What a lookup that found nothing means: gap [s] and silence before the moment [s] go into
    /// `sight`.
    void Explain(::field::Instant moment, Sight& sight) const;

    /// Standard deviation of the moments [s]: 1 ms with a clock of the sensor, else 10 ms.
    double ClockSigma() const { return m_hasClock ? 0.001 : 0.010; }

    /// @param limit  speed below which the antenna is still [m/s]
    /// @param span   how far back to look [s]
    PoleMotion Motion(const TipSolver& solver, double declination, ::field::Instant moment,
                      double limit, double span) const;

    /// Mean acceleration in the axes of the sensor [g]; zero without poses or accelerometers, and
    /// where it does not change at all: what is measured is never the same twenty times.
    /// @param span  before the moment [s]
    ::field::SensorVector MeanForce(::field::Instant moment, double span) const;

    bool HasOneMagnetometer() const { return m_reader->HasOneMagnetometer(); }
    void Count(::field::Counters& counters) const;

private:
    // What an epoch asks of every sample of the last second, together: the samples are scattered.
    struct Noted
    {
        ::field::Instant moment{};
        double speed = kNotKnown;    // over kBaseline [m/s]; NaN: no sample is as far back
        survey::Point3 step;         // from antenna to tip, from magnetic north [m]
        ::field::SensorVector force; // [g]
    };

    void Note(const ::field::PoseSample& sample, const TipSolver& solver);
    const Noted& NotedOf(std::size_t index) const;
    std::size_t CountUntil(::field::Instant moment) const;
    std::optional<std::size_t> BaseOf(std::size_t index, std::size_t from) const;
    double SpeedAt(std::size_t index, std::size_t base, const TipSolver& solver,
                   double declination) const;

    std::unique_ptr<::field::PoseReader> m_reader;
    Plausibility m_plausibility;
    LeastDelay m_least;
    ::field::PoseRing m_ring;
    std::vector<Noted> m_notes; // ring: of the samples of m_ring
    std::size_t m_newest = 0;
    PoseFault m_fault = PoseFault::None; // of the last sample
    bool m_hasClock = false;
    std::uint64_t m_samples = 0;
    std::uint64_t m_refused = 0;
};

} // namespace tiltpole::field
