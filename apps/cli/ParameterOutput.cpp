// SPDX-License-Identifier: MIT
#include "apps/cli/ParameterOutput.h"

#include "apps/tables/Errors.h"
#include "apps/tables/ReadFile.h"
#include "quality/ParameterFile.h"
#include <cerrno>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace cli {

namespace {

// A file that is only in memory.
class MemoryFile
{
public:
    MemoryFile() : m_file(memfd_create("parameters", MFD_CLOEXEC))
    {
        if (m_file < 0) throw std::system_error(errno, std::generic_category(), "a file in memory");
    }
    ~MemoryFile() { close(m_file); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(m_file); }

private:
    int m_file;
};

CString NameOf(const MemoryFile& file)
{
    return CString(file.Path().c_str());
}

/// @param path  for the message
/// @throws InputError where `position` cannot be saved
std::string SavedText(CInclineSensor_Position position, const MemoryFile& file,
                      const std::string& path)
{
    if (position.ConfigSave(NameOf(file)) != 1)
        throw tables::InputError(path, "was not written: a value is not finite or too long, or "
                                       "there is no room to make the file in memory");
    return tables::ReadFile(file.Path());
}

} // namespace

std::string ParameterText(const std::string& path, const CInclineSensor_Position& position)
{
    const MemoryFile file;
    std::string content = SavedText(position, file, path);
    CInclineSensor_Position readBack;
    readBack.ConfigRead(NameOf(file));
    const MemoryFile again;
    if (SavedText(readBack, again, path) != content)
        throw tables::InputError(
            path, "was left unchanged, because reading the new content back gave other values");
    if (const auto problems = quality::CheckParameterText(content); !problems.empty()) {
        throw tables::InputError(path,
                                 "was left unchanged, because the calibration is implausible: "
                                     + ToText(problems.front()));
    }
    return content;
}

} // namespace cli
