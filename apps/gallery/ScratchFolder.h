// SPDX-License-Identifier: MIT
//
// A temporary folder for the views that the plots save.
#pragma once

#include <array>
#include <csignal>
#include <string>

namespace gallery {

/// Is removed with the object, and by a signal that ends the program. One at a time.
class ScratchFolder
{
public:
    /// @throws tables::InputError where it cannot be made
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& Path() const { return m_path; }

private:
    static void RemoveAndPassOn(int signal) noexcept;
    void Remove() const noexcept;

    std::string m_path;
    std::array<std::string, 2> m_views;
    struct Handler
    {
        int signal;
        struct sigaction before;
    };
    std::array<Handler, 3> m_handlers;
};

} // namespace gallery
