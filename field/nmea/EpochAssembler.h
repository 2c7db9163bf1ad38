// SPDX-License-Identifier: MIT
//
// Sentences of one UTC become an epoch.
//
//   closes     with the sentence that ended the last five epochs, or 60 ms after GGA, or when another UTC
//              begins
//   GGA        needed
//   RMC        speed, course, date; its position must be that of GGA
//   GST        sigma, where it has the same UTC; without it sigma is assumed: HDOP times 0.012 m (quality
//              4), 0.4 (5), 0.8 (2), 3 (1) or 10 (6), 1.8 times that in height
//   ZDA        date
//   GSA        kept aside, a set once a second, to be passed on
//
// A text of fewer than six decimals of a minute, or two of a meter, adds its resolution q/sqrt(12)
// to sigma.
//
// A right checksum does not make a right sentence: a line that lost or changed two characters keeps
// it in one of 256 cases. So a sentence must also have the fields and decimals that its kind had
// before (others are taken once they came ten times running), and GGA and RMC of an epoch must
// agree. Where GGA usually has company, another step of time must be told by a second sentence;
// where RMC always came, an epoch that lacks it beside a bad line is refused. A step of the antenna
// that this cannot see is left to whoever knows the pole.
#pragma once

#include "field/Epoch.h"
#include "field/nmea/ReceiverSentences.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tiltpole::field {

/// What became of sentences with a right checksum.
struct EpochCounters
{
    std::uint64_t used = 0;  // GGA, RMC, GST, ZDA and GSA that were taken
    std::uint64_t other = 0; // of kinds that nothing is taken from
    std::uint64_t form = 0;  // a field is missing, out of range or no number
    std::uint64_t shape = 0; // other fields or decimals than before
    std::uint64_t disagree =
        0; // epochs: GGA and RMC, or two GGA, name different places, or no witness
    std::uint64_t otherTime = 0; // of a time that is closed already, or of none that GGA has
    std::uint64_t repeated = 0;  // GGA, RMC, GST or ZDA that its epoch, the last one, has already
    std::uint64_t epochs = 0;

    /// Sentences and epochs that were refused in spite of their checksum.
    std::uint64_t Refused() const { return form + shape + disagree; }
};

class EpochAssembler
{
public:
    static constexpr std::chrono::milliseconds kWait{60};
    static constexpr std::size_t kMostEpochs = 4096; // that nobody took; then the oldest go

    /// Instants never run back.
    void Feed(const Sentence& sentence, ::field::Instant arrival);

    /// A line came that cannot be read.
    void NoteDamage() { m_damaged = true; }

    /// Closes the epoch whose GGA is 60 ms old.
    void Tick(::field::Instant now);

    /// Epochs since the last call, in order. Antenna and separation are NaN exactly where the fix
    /// is invalid.
    std::vector<::field::Epoch> Take();

    /// Forgets the epoch in progress and the shapes; keeps counters and finished epochs.
    void Restart();

    const EpochCounters& Count() const { return m_counters; }

private:
    enum class Kind : std::uint8_t { Gga, Rmc, Gst, Zda, Gsa, Other };
    static constexpr std::size_t kKinds = 4;   // that have a time
    static constexpr std::size_t kRunning = 5; // epochs that agree on their last sentence
    static constexpr int kShapes = 10;         // sentences that make a new shape usual

    // Fields of a sentence and characters of some; -1: empty, which tells nothing.
    using Shape = std::array<int, 6>;
    struct UsualShape
    {
        std::optional<Shape> usual;
        Shape other{};
        int others = 0; // running
    };
    struct Open
    {
        std::optional<double> seconds; // of the day; none: no epoch is open
        std::optional<Gga> gga;
        std::optional<Rmc> rmc;
        std::optional<Gst> gst;
        std::optional<Zda> zda;
        bool disagree = false;
        bool closed = false; // emitted or refused; late sentences still tell what it ended with
        Kind last = Kind::Other;
        std::string lines;
        ::field::Instant arrival{};
        ::field::Instant ggaArrival{};
    };

    static Kind KindOf(const Sentence& sentence);
    static Shape ShapeOf(Kind kind, const Sentence& sentence);
    bool HasUsualShape(Kind kind, const Shape& shape);
    template <class Record>
    void Add(Kind kind, std::optional<Record> Open::*place, std::optional<Record> record,
             const Sentence& sentence, ::field::Instant arrival);
    void AddGsa(const Sentence& sentence);
    bool Begins(Kind kind, double seconds) const;
    bool EndsAsUsual() const;
    void Close();
    bool HasPlausibleTime();
    bool HasItsWitness();
    void NoteLast();
    ::field::Epoch Assembled();
    std::string PassedGsa();

    Open m_open;
    std::array<UsualShape, kKinds> m_shapes;
    std::array<Kind, kRunning> m_lasts{}; // what the last epochs ended with, in turn
    std::size_t m_noted = 0;
    bool m_damaged = false;           // since the last epoch closed
    int m_witnessed = 0;              // epochs with RMC, running, lost lines apart
    int m_alone = kShapes;            // epochs of GGA alone, running; kShapes: or more
    std::optional<double> m_lastTime; // of the last GGA, refused or not [s of the day]
    std::optional<double> m_step;     // between two epochs of plausible time [s]
    bool m_lastPlausible = true;
    std::string m_gsa;         // the newest set
    bool m_gsaRunning = false; // it may still grow
    std::string m_gsaSecond;   // hhmmss that had the last set
    std::vector<::field::Epoch> m_epochs;
    EpochCounters m_counters;
};

} // namespace tiltpole::field
