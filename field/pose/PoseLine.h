// SPDX-License-Identifier: MIT
//
// Poses as NMEA lines:
//
//   $PTPS,1,<ms>,<pitch>,<roll>,<heading>,<A x,y,z>,<B x,y,z>,<gyro x,y,z>,<acc x,y,z>*hh
//
//   ms        of the sensor's clock, or empty
//   heading   from magnetic north, by sensors that form one, else empty [degrees]
//   the rest  as PoseSensorData: degrees and counts
#pragma once

#include "field/nmea/Framer.h"
#include "field/nmea/Sentence.h"
#include "field/pose/PoseReader.h"

#include <optional>

namespace tiltpole::field {

using ::field::Instant;
using ::field::PoseSample;

/// @return none unless `sentence` is PTPS of version 1 with 17 fields, all but ms and heading numbers
std::optional<PoseSample> ReadPoseLine(const Sentence& sentence);

/// A number, and nothing else, in the text; none otherwise. "nan" and "inf" are numbers here:
/// Plausibility names them.
std::optional<double> WholeNumber(std::string_view text);

class PoseLines : public ::field::PoseReader
{
public:
    void Feed(std::string_view bytes, Instant arrival) override;
    void Restart() override { m_framer.Restart(); }
    bool HasOneMagnetometer() const override { return false; }

private:
    void Read(std::string_view bytes, Instant arrival);

    Framer m_framer;
};

} // namespace tiltpole::field
