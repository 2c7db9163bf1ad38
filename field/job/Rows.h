// SPDX-License-Identifier: MIT
//
// Records to rows and back. Failures are SqliteFailure.
#pragma once

#include "field/job/JobRecords.h"
#include "field/job/Sqlite.h"

#include <cstdint>
#include <vector>

namespace tiltpole::field {

using ::field::Geodetic;
using ::field::JobEpoch;
using ::field::JobEvent;
using ::field::JobLeanPair;
using ::field::JobPoint;
using ::field::JobSetup;
using ::field::JobStake;

void Insert(const Sqlite& sqlite, const JobSetup& setup);
void Insert(const Sqlite& sqlite, const JobPoint& point);
void Insert(const Sqlite& sqlite, const JobEpoch& epoch, std::int64_t point, int n);
void Insert(const Sqlite& sqlite, const JobLeanPair& pair);
void Insert(const Sqlite& sqlite, const JobStake& stake);
void Insert(const Sqlite& sqlite, const JobEvent& event);

/// Notes in gpkg_contents that a table has changed.
void Touch(const Sqlite& sqlite, const char* table);

/// Touches the table of points and widens its extent to hold this one.
void WidenExtent(const Sqlite& sqlite, const Geodetic& point);

enum class Which { All, Last };

std::vector<JobSetup> ReadSetups(const Sqlite& sqlite, Which which);
std::vector<JobPoint> ReadPoints(const Sqlite& sqlite);
std::vector<JobEpoch> ReadEpochs(const Sqlite& sqlite, std::int64_t point);
std::vector<JobLeanPair> ReadLeanPairs(const Sqlite& sqlite);
std::vector<JobStake> ReadStakes(const Sqlite& sqlite);
std::vector<JobEvent> ReadEvents(const Sqlite& sqlite);

/// Whether a setup that was read has the values of another, `id` and `made` apart.
bool SameValues(const JobSetup& stored, const JobSetup& setup);

} // namespace tiltpole::field
