// SPDX-License-Identifier: MIT
//
// `tiltpole measure --field`: the magnetic field of every sample against that of the calibration,
// with the spans of time in which it was disturbed. Its memory use grows with their number only.
#pragma once

#include "apps/tables/SampleLog.h"
#include "apps/tables/Statistics.h"
#include "field/DisturbanceMonitor.h"
#include "positioning/MagneticParameters.h"
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace cli {

struct FieldWatchSetup
{
    field::FieldShape expected; // [counts, degrees]
    field::PitchRoll meaning = field::PitchRoll::Slopes;
    int sensorType = 1;
    Incline_MagneticCorrectParameter a;
    Incline_MagneticCorrectParameter b;
};

class FieldWatch
{
public:
    /// @param log  whose current row each call of Add looks at, for the time
    FieldWatch(const FieldWatchSetup& setup, const tables::SampleLog& log);

    /// The current sample of the log.
    field::MonitorVerdict Add(const PoseSensorData& sample);

    /// Lines of the summary. Requires at least one sample.
    std::string Text();

    /// The same as JSON.
    nlohmann::ordered_json Json();

private:
    double Seconds(const PoseSensorData& sample);
    std::string TimeText(double seconds) const;

    FieldWatchSetup m_setup;
    const tables::SampleLog& m_log;
    std::optional<std::size_t> m_secondsColumn;
    bool m_hasTime;
    double m_dayOffset = 0.0; // from `seconds` to the time of day [s]
    field::DisturbanceMonitor m_monitor;
    tables::Percentiles m_strength;
    tables::Percentiles m_dip;
    std::uint64_t m_samples = 0;
    std::uint64_t m_disturbed = 0;
};

} // namespace cli
