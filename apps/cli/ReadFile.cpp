// SPDX-License-Identifier: MIT
#include "apps/cli/ReadFile.h"

#include "apps/cli/Errors.h"
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace cli {

std::string ReadFile(const std::string& path)
{
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "rb"),
                                                                  &std::fclose);
    if (!file) throw InputError(path, std::generic_category().message(errno));
    std::string content;
    std::array<char, 4096> block;
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), file.get())) {
        content.append(block.data(), count);
    }
    if (std::ferror(file.get()) != 0) {
        throw InputError(path, std::generic_category().message(errno));
    }
    return content;
}

} // namespace cli
