// SPDX-License-Identifier: MIT
//
// A file descriptor that is closed at the end of its scope, and the transfers that are repeated
// until they are complete.
#pragma once

#include <cerrno>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace framework {

class Descriptor
{
public:
    explicit Descriptor(int value = -1) : m_value(value) {}
    ~Descriptor() { Close(); }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_value, other.m_value);
        return *this;
    }

    int Get() const { return m_value; }
    bool IsOpen() const { return m_value >= 0; }
    /// False where the system reports an error of an earlier write only now.
    bool Close()
    {
        const int value = std::exchange(m_value, -1);
        return value < 0 || ::close(value) == 0;
    }

private:
    int m_value;
};

/// Writes all of `bytes`. On failure errno holds the reason.
inline bool WriteAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t n = ::write(file, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) continue;
        if (n == 0) errno = ENOSPC;
        if (n <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

} // namespace framework
