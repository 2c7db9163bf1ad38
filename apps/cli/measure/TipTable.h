// SPDX-License-Identifier: MIT
//
// The table that `tiltpole measure` writes: one row for each sample, carried columns first.
#pragma once

#include "apps/cli/measure/Measurement.h"
#include "apps/tables/Output.h"
#include "apps/tables/SampleLog.h"
#include <fmt/format.h>

namespace cli {

class TipTable
{
public:
    /// Writes the header. `output` and `log` must outlive the table.
    /// @param watched  measurements have a verdict on the field
    TipTable(tables::Output& output, const tables::SampleLog& log,
             std::optional<xyhCoordinate> truth, bool watched);

    void Add(const Measurement& measurement);

private:
    tables::Output& m_output;
    const tables::SampleLog& m_log;
    std::optional<xyhCoordinate> m_truth;
    fmt::memory_buffer m_row;
};

} // namespace cli
