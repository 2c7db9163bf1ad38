// SPDX-License-Identifier: MIT
//
// The picture of a run of `tiltpole measure`: the antenna track and the tips in plan and, where the
// true tip is known, the tips around it in millimeters, colored by tilt, with their error circles.
#pragma once

#include "apps/charts/ThinnedPoints.h"
#include "apps/cli/measure/MeasureSummary.h"
#include "apps/tables/Output.h"
#include <array>

namespace cli {

class MeasurePicture
{
public:
    explicit MeasurePicture(std::optional<xyhCoordinate> truth) : m_truth(truth) {}

    void Add(const Measurement& measurement);

    /// @throws InputError when the picture cannot be written
    void Save(tables::OutputFiles& files, const std::string& path, MeasureSummary& summary) const;

private:
    static constexpr std::size_t kTiltClasses = 3;

    charts::Chart Plan() const;
    charts::Chart TipsAroundTruth(MeasureSummary& summary) const;

    std::optional<xyhCoordinate> m_truth;
    std::optional<xyhCoordinate>
        m_origin;                    // the true tip, or the first tip truncated to whole meters
    charts::ThinnedPoints m_antenna; // {east, north} from the origin [m]
    charts::ThinnedPoints m_tips;
    std::array<charts::ThinnedPoints, kTiltClasses> m_tipsByTilt;
};

} // namespace cli
