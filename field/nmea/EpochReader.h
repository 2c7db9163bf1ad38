// SPDX-License-Identifier: MIT
//
// Bytes of a receiver become epochs.
//
//     reader.Feed(bytes, now);
//     for (const field::Epoch& epoch : reader.Take()) ...
//     reader.Tick(now); // every 20 ms
#pragma once

#include "field/nmea/EpochAssembler.h"
#include "field/nmea/Framer.h"

namespace tiltpole::field {

/// Of lines; what became of the good ones is counted by the assembler.
struct LineCounters
{
    std::uint64_t lines = 0; // all, bad ones included
    std::uint64_t bad = 0;   // cut, overlong, of no form, or with a wrong checksum
};

class EpochReader
{
public:
    /// Bytes cut anywhere; instants never run back.
    void Feed(std::string_view bytes, ::field::Instant arrival);
    void Tick(::field::Instant now) { m_assembler.Tick(now); }
    std::vector<::field::Epoch> Take() { return m_assembler.Take(); }
    /// Forgets what is half read; keeps the counters.
    void Restart();

    LineCounters Lines() const;
    const EpochCounters& Epochs() const { return m_assembler.Count(); }
    /// Of the last good line.
    std::optional<::field::Instant> LastGood() const { return m_lastGood; }

private:
    void NoteBroken();

    Framer m_framer;
    EpochAssembler m_assembler;
    std::uint64_t m_unreadable = 0;
    std::uint64_t m_broken = 0; // that the assembler knows of
    std::optional<::field::Instant> m_lastGood;
};

} // namespace tiltpole::field
