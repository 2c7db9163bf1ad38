// SPDX-License-Identifier: MIT
/// @class field::PoseReader
/// Readers of pose sensors: bytes as they come go in, samples come out.
///
///     const auto reader = field::MakePoseReader(field::PoseFormat::SerialFrames);
///     reader->Feed(bytes, now);
///     for (const field::PoseSample& sample : reader->Take()) bridge.FeedPose(sample);
///
///     Ptps          $PTPS,1,ms,pitch,roll,heading,A x,y,z,B x,y,z,gyro x,y,z,acc x,y,z*hh
///                   degrees and counts; ms of the sensor's clock, or empty; heading from magnetic north
///                   where the sensor forms one, else empty
///     Csv           rows under the header of PoseSensorData::TextHeader, or under any header line with
///                   its names; a column "seconds" is the sensor's clock
///     SerialFrames  the frames of 11 bytes that common serial modules send, 0x55 first; see
///                   field/pose/SerialFrames.h
///
/// Memory is bounded: lines to 1 KiB, and 4096 samples that nobody took, after which the older half
/// goes.
#pragma once

#include "field/Bridge.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace field {

/// What a reader met.
struct PoseReaderCounters
{
    std::uint64_t lines = 0;   ///< lines or frames of the right form, samples or not
    std::uint64_t bad = 0;     ///< checksum, length or form
    std::uint64_t other = 0;   ///< good, but nothing that a pose is made of
    std::uint64_t samples = 0; ///< poses read
    std::uint64_t lost = 0;    ///< of them dropped since nobody took them
};

class TILTPOLE_API PoseReader
{
public:
    virtual ~PoseReader();
    PoseReader(const PoseReader&) = delete;
    PoseReader& operator=(const PoseReader&) = delete;

    /// Bytes cut anywhere. A sample's arrival is that of the piece that completed it. Where memory is
    /// short (std::bad_alloc) the samples so far stay, the rest of the bytes is lost, and what was
    /// half read is forgotten.
    virtual void Feed(std::string_view bytes, Instant arrival) = 0;

    /// Forgets what is half read, after a cable was pulled. Keeps counters and samples.
    virtual void Restart() = 0;

    /// Whether the sensor has one magnetometer, from which B is made: (−Ax, −Ay, Az).
    virtual bool HasOneMagnetometer() const = 0;

    /// The samples since the last call, in order.
    std::vector<PoseSample> Take();

    const PoseReaderCounters& Count() const { return m_counters; }

protected:
    PoseReader() = default;
    void Emit(const PoseSample& sample);
    PoseReaderCounters m_counters;

private:
    std::vector<PoseSample> m_samples;
};

TILTPOLE_API std::unique_ptr<PoseReader> MakePoseReader(PoseFormat format);

} // namespace field
