// SPDX-License-Identifier: MIT
//
// A folder of a test's own, gone with the test.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

class ScratchFolder
{
public:
    ScratchFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "tiltpole-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch folder");
        m_path = name;
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& Native() const { return m_path; }
    std::string Path(const std::string& name) const { return (m_path / name).string(); }

    /// Writes the file and answers its path.
    std::string Write(const std::string& name, const std::string& content) const
    {
        std::ofstream(m_path / name, std::ios::binary) << content;
        return Path(name);
    }

    /// Empty where there is no such file.
    std::string Read(const std::string& name) const
    {
        std::ifstream file(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Of the files and folders in it, sorted.
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path m_path;
};
