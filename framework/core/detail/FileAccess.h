// SPDX-License-Identifier: MIT
//
// Who may do what with a file, carried over to the file that replaces it.
#pragma once

#include <string>
#include <sys/stat.h>

namespace framework {

/// Gives the new, empty file `file` owner, group, permissions, access control list and extended
/// attributes of the file `path`, whose status is `old`. Attributes of the system's own name spaces
/// "security" and "trusted" are left to the system.
/// @return false where the system does not let the new file have all of them
bool TakeOver(int file, const std::string& path, const struct stat& old);

} // namespace framework
