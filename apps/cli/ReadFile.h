// SPDX-License-Identifier: MIT
//
// A small file, read whole.
#pragma once

#include <string>

namespace cli {

/// The content of the file.
/// @throws InputError when it cannot be read
std::string ReadFile(const std::string& path);

} // namespace cli
