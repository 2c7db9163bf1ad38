// SPDX-License-Identifier: MIT
//
// Writes what arrives into a recording (field/Recording.h) while it arrives. Where the disk is full
// the recorder ends with an event; nothing else ends with it.
#pragma once

#include "apps/live/Descriptor.h"
#include "field/Recording.h"
#include <cstdint>
#include <functional>
#include <string>

namespace live {

class Recorder
{
public:
    /// Records nothing.
    Recorder() = default;

    /// @param started  UTC of Instant 0 [s since 1970]
    /// @param onEvent  is told why the recording has ended
    /// @throws InputError where the file exists already: a recording is not made twice
    Recorder(std::string path, double started, std::function<void(const std::string&)> onEvent);

    void Add(const field::Record& record);

    bool IsRecording() const { return m_file.IsOpen(); }
    std::uint64_t Bytes() const { return m_bytes; }

private:
    void Write(std::string_view text);

    std::string m_path;
    std::function<void(const std::string&)> m_onEvent;
    Descriptor m_file;
    std::uint64_t m_bytes = 0;
};

} // namespace live
