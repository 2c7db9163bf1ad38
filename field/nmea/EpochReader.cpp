// SPDX-License-Identifier: MIT
#include "field/nmea/EpochReader.h"

namespace tiltpole::field {

void EpochReader::Feed(std::string_view bytes, ::field::Instant arrival)
{
    while (const auto line = m_framer.Next(bytes)) {
        NoteBroken();
        if (line->front() == '!') continue; // encapsulated, never of a position
        const auto sentence = ReadSentence(*line);
        if (!sentence) {
            ++m_unreadable;
            m_assembler.NoteDamage();
            continue;
        }
        m_lastGood = arrival;
        m_assembler.Feed(*sentence, arrival);
    }
    NoteBroken();
}

// Lines that the framer dropped.
void EpochReader::NoteBroken()
{
    const std::uint64_t broken = m_framer.Count().cut + m_framer.Count().overlong;
    if (broken != m_broken) m_assembler.NoteDamage();
    m_broken = broken;
}

void EpochReader::Restart()
{
    m_framer.Restart();
    m_assembler.Restart();
}

LineCounters EpochReader::Lines() const
{
    const FramerCounters& framed = m_framer.Count();
    const std::uint64_t broken = framed.cut + framed.overlong;
    return {.lines = framed.lines + broken, .bad = m_unreadable + broken};
}

} // namespace tiltpole::field
