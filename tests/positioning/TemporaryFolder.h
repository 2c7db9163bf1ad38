// A folder of its own for one test, gone with it.
#pragma once

#include "framework/core/String.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "tiltpole-XXXXXX").string();
        m_path = ::mkdtemp(name.data());
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    CString Path(const std::string& name) const { return CString((m_path / name).c_str()); }

    void Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(m_path / name, std::ios::binary) << bytes;
    }
    std::string Read(const std::string& name) const
    {
        std::ifstream file(m_path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void MakeFolder(const std::string& name) const
    {
        std::filesystem::create_directory(m_path / name);
    }
    /// Files and folders in it.
    std::ptrdiff_t Count() const
    {
        return std::distance(std::filesystem::directory_iterator(m_path), {});
    }

private:
    std::filesystem::path m_path;
};
