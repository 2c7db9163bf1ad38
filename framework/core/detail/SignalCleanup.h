// SPDX-License-Identifier: MIT
//
// The temporary files that a signal removes before it ends the process.
//
// A signal handler may neither lock nor allocate, so the list is an array of slots that are taken
// and given back by atomic operations: the only state of the library that is not an object's own.
#pragma once

#include <string_view>

namespace framework {

/// Enters the file `name` of the open folder `folder`. Both must be there until the slot is
/// released.
/// @return the slot, or -1 where the list is full or the name too long: the file is then left to
///         the next replacement in the folder
int EnterForCleanup(int folder, std::string_view name);

/// Takes the file off the list. -1 is ignored.
void ReleaseFromCleanup(int slot);

} // namespace framework
