// SPDX-License-Identifier: MIT
/// @file
/// From what the bridge reports to rows of a job.
#pragma once

#include "field/Bridge.h"
#include "field/job/JobRecords.h"
#include "framework/core/Export.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace field {

/// A point with its epochs, ready for JobStore::AddPoint once it has a name and a setup.
struct JobRecord
{
    JobPoint point;
    std::vector<JobEpoch> epochs;
    std::string error; ///< one sentence where no point can be formed; empty otherwise
};

/// @param program  that writes the job, with its version
TILTPOLE_API JobSetup JobSetupOf(const Setup& setup, std::string_view program, JobTime now);

/// The point that the reports of one still tip make: AveragedTip of those that have a tip, and one
/// epoch for each report. Point and epochs have no ids, name, code and note; `forced` is set where
/// the verdict on an epoch of the mean was not State::Store.
/// @param now  of the host's clock: gives the date where the receiver sends none
TILTPOLE_API JobRecord JobRecordOf(std::span<const Report> reports, JobTime now);

} // namespace field
