// SPDX-License-Identifier: MIT
//
// The inputs of a fuzzer's corpus, in the order of their names: bytes that no receiver, sensor or
// operator would send.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace portable {

inline std::string ContentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline std::vector<std::filesystem::path> CorpusOf(const std::string& fuzzer)
{
    std::vector<std::filesystem::path> paths;
    for (const auto& entry :
         std::filesystem::directory_iterator(TILTPOLE_SOURCE_DIR "/fuzz/corpus/" + fuzzer))
        paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    return paths;
}

} // namespace portable
