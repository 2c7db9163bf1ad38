// SPDX-License-Identifier: MIT
//
// A scratch folder whose paths are CString, a limit on file sizes, and a count of descriptors.
#pragma once

#include "framework/core/String.h"
#include "tests/ScratchFolder.h"
#include "tests/framework/core/TextOf.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>

class TestFolder : public ScratchFolder
{
public:
    CString Path() const { return CString(Native().c_str()); }
    CString File(const CString& name) const { return Path() + L"/" + name; }
};

// While it lives, no file can grow beyond `bytes`: a full disk for this process.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : m_signal(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signal);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*m_signal)(int);
    rlimit m_before{};
};

inline int OpenDescriptors()
{
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}
