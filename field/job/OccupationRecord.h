// SPDX-License-Identifier: MIT
/// @file
/// From an occupation, the tip of a pole that moves, to rows of a job.
#pragma once

#include "field/Bridge.h"
#include "field/job/JobRecord.h"
#include "framework/core/Export.h"

namespace field {

/// The point that the occupation of a report makes: its tip and covariance, and one epoch for each
/// of its track with all poses since the epoch before. Lean and antenna are means of the used
/// epochs. Point and epochs as JobRecordOf leaves them.
/// @param now  of the host's clock: gives the date where the receiver sends none
/// @return `error` where the report has no occupation that may be stored
TILTPOLE_API JobRecord OccupationRecordOf(const Report& report, JobTime now);

} // namespace field
