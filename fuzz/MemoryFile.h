// SPDX-License-Identifier: MIT
//
// A file without a name in any folder, for readers that take a path; it ends with the process.
#pragma once

#include "fuzz/Input.h"

#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace fuzz {

class MemoryFile
{
public:
    MemoryFile()
        : m_file(::memfd_create("fuzz", MFD_CLOEXEC)),
          m_path("/proc/self/fd/" + std::to_string(m_file))
    {
        Require(m_file >= 0);
    }
    ~MemoryFile() { ::close(m_file); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    const std::string& Path() const { return m_path; }

    void Set(std::string_view content) const
    {
        Require(::ftruncate(m_file, 0) == 0);
        const auto size = static_cast<ssize_t>(content.size());
        Require(::pwrite(m_file, content.data(), content.size(), 0) == size);
    }

private:
    int m_file;
    std::string m_path;
};

} // namespace fuzz
