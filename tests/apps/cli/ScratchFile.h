// Files of a test, in a folder of their own that goes with them.
#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace cli::test {

class ScratchFolder
{
public:
    ScratchFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "tiltpole-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch folder");
        m_folder = pattern;
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string Path(const std::string& name) const { return (m_folder / name).string(); }

    /// Writes the file and answers its path.
    std::string Write(const std::string& name, const std::string& content) const
    {
        std::ofstream(Path(name), std::ios::binary) << content;
        return Path(name);
    }

    std::size_t CountFiles() const
    {
        const std::filesystem::directory_iterator files(m_folder);
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

private:
    std::filesystem::path m_folder;
};

inline std::string ReadAll(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace cli::test
