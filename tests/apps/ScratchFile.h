// SPDX-License-Identifier: MIT
//
// Files of a test, in a folder that is removed with it.
#pragma once

#include "tests/ScratchFolder.h"

#include <fstream>
#include <iterator>
#include <string>

namespace apps::test {

using ::ScratchFolder;

inline std::string ReadAll(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace apps::test
