// SPDX-License-Identifier: MIT
//
// The table `tiltpole measure` writes: one row for each sample, carried columns first.
#pragma once

#include "apps/cli/Measurement.h"
#include "apps/cli/Output.h"
#include "apps/cli/SampleLog.h"
#include <fmt/format.h>

namespace cli {

class TipTable
{
public:
    /// Writes the header. Both stay with the caller, for longer than the table.
    TipTable(Output& output, const SampleLog& log, std::optional<xyhCoordinate> truth);

    void Add(const Measurement& measurement);

private:
    Output& m_output;
    const SampleLog& m_log;
    std::optional<xyhCoordinate> m_truth;
    fmt::memory_buffer m_row;
};

} // namespace cli
