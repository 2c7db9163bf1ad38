// SPDX-License-Identifier: MIT
//
// The picture of a run of `tiltpole measure`: the antenna track and the tips in plan and, where the
// true tip is known, the tips around it in millimetres, shaded by tilt, with their error circles.
#pragma once

#include "apps/cli/MeasureSummary.h"
#include "apps/cli/Plot.h"
#include <array>

namespace cli {

class MeasurePicture
{
public:
    explicit MeasurePicture(std::optional<xyhCoordinate> truth) : m_truth(truth) {}

    void Add(const Measurement& measurement);

    /// @throws InputError when the picture cannot be written
    void Save(const std::string& path, MeasureSummary& summary) const;

private:
    static constexpr std::size_t kTiltClasses = 3;

    Chart Plan() const;
    Chart TipsAroundTruth(MeasureSummary& summary) const;

    std::optional<xyhCoordinate> m_truth;
    std::optional<xyhCoordinate> m_origin; // the truth, or the first tip cut to whole metres
    ThinnedPoints m_antenna;               // {east, north} from the origin [m]
    ThinnedPoints m_tips;
    std::array<ThinnedPoints, kTiltClasses> m_tipsByTilt;
};

} // namespace cli
