// SPDX-License-Identifier: MIT
#include "apps/tables/ReadFile.h"

#include "apps/tables/Errors.h"
#include <array>
#include <cerrno>
#include <cstdio>
#include <fmt/format.h>
#include <memory>
#include <system_error>

namespace tables {

std::string TooLarge(std::uint64_t mostBytes)
{
    return fmt::format("is larger than {} MiB", mostBytes >> 20);
}

std::string ReadFile(const std::string& path, std::uint64_t mostBytes)
{
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "rb"),
                                                                  &std::fclose);
    if (!file) throw InputError(path, std::generic_category().message(errno));
    std::string content;
    std::array<char, 4096> block;
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), file.get())) {
        content.append(block.data(), count);
        if (content.size() > mostBytes) throw InputError(path, TooLarge(mostBytes));
    }
    if (std::ferror(file.get()) != 0) {
        throw InputError(path, std::generic_category().message(errno));
    }
    return content;
}

} // namespace tables
