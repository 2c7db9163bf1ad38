// SPDX-License-Identifier: MIT
//
// What a job gives back: blobs and pose lines of any content, points recomputed from damaged lines, and a
// job file with bytes changed or its end lost, which is refused or read, never a crash.
#include "field/job/JobRecord.h"
#include "field/job/JobStore.h"
#include "field/job/PointBlob.h"
#include "field/job/PtpsLine.h"
#include "field/job/Recompute.h"
#include "field/pose/PoseReader.h"
#include "fuzz/field/MemoryFiles.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

void Demand(bool condition)
{
    if (!condition) std::abort();
}

bool Same(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

void CheckBlob(std::string_view blob)
{
    const auto point = tiltpole::field::PointOf(blob);
    if (!point) return;
    const auto again = tiltpole::field::PointOf(tiltpole::field::PointBlob(*point));
    Demand(again && Same(again->latitude, point->latitude));
    Demand(Same(again->longitude, point->longitude));
    Demand(Same(again->ellipsoidalHeight, point->ellipsoidalHeight));
}

// Six values that a sensor can have, read back to their seventh decimal.
void CheckPoseLine(std::string_view bytes)
{
    field::PoseSample pose;
    std::array<double*, 6> values = {&pose.data.dPitch, &pose.data.dRoll,    &pose.data.dMag_x,
                                     &pose.data.dMag_y, &pose.data.dMag_z_2, &pose.data.dGyro_y};
    for (double* value : values) {
        std::int32_t bits = 0;
        const std::size_t size = std::min(sizeof bits, bytes.size());
        std::memcpy(&bits, bytes.data(), size);
        bytes.remove_prefix(size);
        *value = bits / 33554432.0; // to 64
    }
    const auto reader = field::MakePoseReader(field::PoseFormat::Ptps);
    reader->Feed(tiltpole::field::PtpsLine(pose, 12.345), {});
    const auto read = reader->Take();
    Demand(read.size() == 1 && read[0].deviceSeconds && !read[0].heading);
    Demand(std::fabs(*read[0].deviceSeconds - 12.345) < 1e-9);
    const PoseSensorData& d = read[0].data;
    const std::array<double, 6> got = {d.dPitch, d.dRoll,    d.dMag_x,
                                       d.dMag_y, d.dMag_z_2, d.dGyro_y};
    for (std::size_t i = 0; i < got.size(); ++i)
        Demand(std::fabs(got[i] - *values[i]) < 0.51e-7);
}

field::JobEpoch SomeEpoch()
{
    field::JobEpoch epoch;
    epoch.seconds = 12.345;
    epoch.receiver = "$GNGGA,130758.00,4733.9633191,N,01900.5012567,E,4,12,0.72,193.444,M,39.429,M,"
                     "1.0,0207*65\r\n";
    field::PoseSample pose;
    pose.data.dPitch = 5.0;
    pose.data.dMag_x = 200.0;
    pose.data.dMag_z = -450.0;
    epoch.pose = tiltpole::field::PtpsLine(pose, 12.345);
    return epoch;
}

field::JobPoint SomePoint(std::int64_t setup)
{
    field::JobPoint point;
    point.tip = {47.56605670, 19.00835993, 230.8054};
    point.name = "P1";
    point.setup = setup;
    point.epochs = 2;
    return point;
}

// Changes of (place, value), three bytes each.
void Change(std::string& text, std::string_view changes)
{
    for (; changes.size() >= 3 && !text.empty(); changes.remove_prefix(3)) {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(changes[i]); };
        text[(byte(0) * 256U + byte(1)) % text.size()] = static_cast<char>(byte(2));
    }
}

void CheckRecomputed(std::string_view changes)
{
    std::vector<field::JobEpoch> epochs(3, SomeEpoch());
    const std::size_t half = changes.size() / 2;
    Change(epochs[1].receiver, changes.substr(0, half));
    Change(epochs[1].pose, changes.substr(half));
    epochs[2].pose = epochs[1].pose + epochs[0].pose;
    const field::JobRecord record = field::Recomputed(SomePoint(1), epochs, field::Setup(), 0.0);
    Demand(!record.error.empty() || record.epochs.size() <= epochs.size());
}

constexpr const char* kJob = "fuzzed.gpkg"; // the memory file, of any name

// A whole job of one point, as bytes; made once.
const std::string& JobBytes()
{
    static const std::string bytes = [] {
        fuzz::MemoryFiles::Use();
        {
            auto job = field::JobStore::Open(kJob, field::JobAccess::Write);
            Demand(job.value.has_value());
            field::JobSetup setup;
            setup.calibration = "[file]";
            const auto id = job->AddSetup(setup);
            const std::vector<field::JobEpoch> epochs(2, SomeEpoch());
            Demand(id && job->AddPoint(SomePoint(*id), epochs));
        }
        return fuzz::MemoryFiles::Content();
    }();
    return bytes;
}

void CheckFile(std::string_view changes)
{
    std::string bytes = JobBytes();
    if (!changes.empty() && static_cast<unsigned char>(changes[0]) < 16)
        bytes.resize(bytes.size() * static_cast<unsigned char>(changes[0]) / 16);
    Change(bytes, changes.substr(std::min<std::size_t>(1, changes.size())));
    fuzz::MemoryFiles::Content() = std::move(bytes);

    const auto job = field::JobStore::Open(kJob, field::JobAccess::Read);
    Demand(job.value.has_value() == job.error.empty());
    if (!job) return;
    const auto told = [](const auto& result) { Demand(bool(result) == result.error.empty()); };
    told(job->Setups());
    told(job->LeanPairs());
    told(job->Stakes());
    told(job->Events());
    const auto points = job->Points();
    told(points);
    if (!points) return;
    for (const field::JobPoint& point : *points) {
        const auto epochs = job->Epochs(point.id);
        told(epochs);
        if (epochs) field::Recomputed(point, *epochs, field::Setup(), 0.0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    switch (data[0] % 4) {
    case 0:
        CheckBlob(bytes);
        break;
    case 1:
        CheckPoseLine(bytes);
        break;
    case 2:
        CheckRecomputed(bytes);
        break;
    default:
        CheckFile(bytes);
    }
    return 0;
}
