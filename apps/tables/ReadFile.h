// SPDX-License-Identifier: MIT
//
// Files that are read into memory as a whole.
#pragma once

#include <cstdint>
#include <string>

namespace tables {

/// The most that a program keeps of one file: parameters, or a table whose rows are all needed at
/// once. A device or pipe without an end is rejected there.
inline constexpr std::uint64_t kMostInMemory = std::uint64_t{64} << 20; // bytes

/// The end of the message about a larger file: "is larger than 64 MiB".
std::string TooLarge(std::uint64_t mostBytes);

/// The content of the file.
/// @throws InputError when it cannot be read, or is larger than `mostBytes`
std::string ReadFile(const std::string& path, std::uint64_t mostBytes = kMostInMemory);

} // namespace tables
