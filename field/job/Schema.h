// SPDX-License-Identifier: MIT
//
// The tables of a job, and how a file is known to be one.
#pragma once

#include "field/job/Sqlite.h"

#include <string>

namespace tiltpole::field {

/// Makes the tables of GeoPackage 1.3 and of a job in an empty file, in one transaction.
void MakeJob(Sqlite& sqlite);

/// Why the file is not a job: one clause; empty where it is one. Other tables and columns beside
/// those of a job do no harm.
std::string NotAJob(const Sqlite& sqlite);

} // namespace tiltpole::field
