// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>
#include <utility>

namespace live {

/// An open descriptor, closed at the end of its scope.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int value) : m_value(value) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : m_value(std::exchange(other.m_value, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        const int value = std::exchange(other.m_value, -1); // first: it may be this one
        Close();
        m_value = value;
        return *this;
    }

    int Get() const { return m_value; }
    bool IsOpen() const { return m_value >= 0; }
    void Close()
    {
        if (m_value >= 0) close(std::exchange(m_value, -1));
    }

private:
    int m_value = -1;
};

} // namespace live
