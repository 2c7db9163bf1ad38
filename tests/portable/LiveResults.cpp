// SPDX-License-Identifier: MIT
#include "field/Bridge.h"
#include "field/Delay.h"
#include "field/Recording.h"
#include "field/job/JobRecord.h"
#include "field/job/JobTime.h"
#include "field/nmea/EpochReader.h"
#include "field/nmea/RtcmFilter.h"
#include "field/pose/PoseReader.h"
#include "simulation/Occupation.h"
#include "tests/field/SimulatedOccupations.h"
#include "tests/field/bridge/LiveTrack.h"
#include "tests/field/pose/RockedPole.h"
#include "tests/portable/Corpus.h"
#include "tests/portable/LibraryResults.h"
#include "tests/portable/Print.h"

#include <cmath>
#include <string>
#include <vector>

namespace portable {

namespace {

using field::Report;
using live_pole::Track;

constexpr double kTurn = 360.0; // [degrees]

void Print(const std::string& name, const field::Geodetic& place)
{
    Number(name + ".latitude", place.latitude, 90.0);
    Number(name + ".longitude", place.longitude, 180.0);
    Number(name + ".height", place.ellipsoidalHeight, 1000.0);
}

void Print(const std::string& name, const field::Covariance3& sigma)
{
    for (const double value : {sigma.nn, sigma.ne, sigma.ee, sigma.nh, sigma.eh, sigma.hh})
        Number(name, value, 1e-4);
}

void Print(const std::string& name, const Report& report)
{
    Decision(name + ".state", static_cast<int>(report.verdict.state));
    for (const field::Reason& reason : report.verdict.reasons) {
        Decision(name + ".reason", static_cast<int>(reason.code));
        Bytes(name + ".reason", reason.text);
    }
    Bytes(name + ".nmea", report.nmea);
    Decision(name + ".by_occupation", report.byOccupation);
    if (report.occupation) {
        Decision(name + ".advice", static_cast<int>(report.occupation->advice));
        Bytes(name + ".advice", field::OccupationText(*report.occupation));
    }
    if (!report.tip) return;
    Print(name + ".tip", report.tip->position);
    Print(name + ".sigma", report.tip->sigma);
    for (const double angle : {report.tip->tilt, report.tip->azimuthTrue, report.tip->headingTrue,
                               report.tip->declination})
        Number(name + ".angle", angle, kTurn);
    Number(name + ".speed", report.tip->antennaSpeed, 1.0);
}

void PrintReports(const std::string& name, const field::Setup& setup, const Track& track,
                  const live_pole::Options& options = {})
{
    field::Bridge bridge(setup);
    std::vector<Report> reports;
    for (const field::Record& record : live_pole::RecordsOf(track, options)) {
        field::Play(bridge, record);
        for (Report& report : bridge.Take())
            reports.push_back(std::move(report));
    }
    for (std::size_t i = 0; i < reports.size(); ++i)
        Print(Name(name, static_cast<int>(i)), reports[i]);
    const field::Counters& count = bridge.Count();
    for (const std::uint64_t value :
         {count.receiverLines, count.receiverBad, count.epochs, count.poses, count.posesRefused,
          count.stored, count.waited, count.blocked})
        Decision(name + ".count", static_cast<long long>(value));

    const auto record = field::JobRecordOf(reports, *field::JobTimeOf("2026-11-22T13:10:00Z"));
    Bytes(name + ".job.error", record.error);
    Bytes(name + ".job.gate", record.point.gate);
    Bytes(name + ".job.utc", field::JobTimeText(record.point.utc));
    Decision(name + ".job.left_out", record.point.leftOut);
    Print(name + ".job.tip", record.point.tip);
    Print(name + ".job.sigma", record.point.sigma);
    for (const field::JobEpoch& epoch : record.epochs)
        Bytes(name + ".job.epoch", epoch.receiver + epoch.pose + epoch.why);
}

// A pole that is led in and held, with gyros.
Track OccupiedTrack()
{
    simulation::OccupationPlan plan;
    plan.points = 1;
    plan.motion = simulation::UsualMotion(simulation::OccupationMotion::LeanIn);
    plan.motion.duration = 6.0;
    Track track;
    const auto log = simulation::SimulateOccupations(field_tests::UsualSensor(), {}, plan, 5);
    for (const simulation::OccupationRow& row : log.rows) {
        const PoseSensorData& s = row.sample;
        const simulation::Point3 pole = row.truth.antenna - row.truth.tip;
        track.push_back({
            row.truth.pose.seconds,
            s.dPitch,
            s.dRoll,
            {s.dMag_x,    s.dMag_y,   s.dMag_z,  s.dMag_x_2, s.dMag_y_2, s.dMag_z_2, s.dGyro_x, s.dGyro_y,
                    s.dGyro_z, s.dAcc_x, s.dAcc_y, s.dAcc_z},
            {pole.x, pole.y, pole.z}
        });
    }
    return track;
}

void PrintBridges()
{
    Track replayed = live_pole::ReplayTrack();
    replayed.resize(800);
    PrintReports("replay", live_pole::ReplaySetup(), replayed);
    PrintReports("standing", live_pole::TrackSetup(), live_pole::StandingTrack(4.0));
    PrintReports("occupied", live_pole::TrackSetup(), OccupiedTrack());

    field::Setup setup = live_pole::TrackSetup();
    setup.north = field::NorthSource::Model;
    setup.profile = field::Profile::QField;
    setup.calibration.field = field::FieldShape{500.0, 64.0};
    live_pole::Options options;
    options.epoch = [](live_pole::EpochFields& epoch) {
        if (epoch.seconds > 1.0) epoch.quality = 5;
        if (epoch.seconds > 2.0) epoch.station = "0033";
        if (epoch.seconds > 3.0) epoch.gst = false;
    };
    PrintReports("faults", setup, live_pole::StandingTrack(4.0), options);
}

void PrintDelays()
{
    const rocked_pole::Rocking rocking;
    field::PoseRing poses(std::chrono::seconds(60));
    for (int i = 0; i < 1200; ++i)
        poses.Add(rocking.PoseAt(0.02 * i));
    std::vector<field::Epoch> epochs;
    for (int i = 5; i < 110; ++i) {
        const double t = 0.2 * i;
        const auto up = rocked_pole::kLength * rocking.UpAt(t);
        field::Epoch epoch;
        epoch.antenna = field::Offset(live_pole::kTip, up.x, up.y, up.z);
        epoch.sigma = {6.4e-5, 0.0, 6.4e-5, 0.0, 0.0, 2.25e-4};
        epoch.fix = field::Fix::Fixed;
        epoch.moment = rocked_pole::MomentOf(t + 0.12);
        epochs.push_back(epoch);
    }
    field::Setup setup = live_pole::TrackSetup();
    setup.sensorType = 2;
    const field::DelayResult found = field::FindDelay(epochs, poses, setup);
    Decision("delay.outcome", static_cast<int>(found.outcome));
    Decision("delay.epochs", found.epochs);
    for (const double value :
         {found.delay, found.headingOffset, found.length, found.rms, found.rmsWithout})
        Number("delay", value, 2.0);
}

void PrintReceivers()
{
    for (const auto& path : CorpusOf("receiver_fuzzer")) {
        const std::string name = "receiver." + path.filename().string();
        tiltpole::field::EpochReader reader;
        reader.Feed(ContentOf(path), std::chrono::milliseconds(10));
        reader.Tick(std::chrono::seconds(1));
        const auto lines = reader.Lines();
        Decision(name + ".lines", static_cast<long long>(lines.lines));
        Decision(name + ".bad", static_cast<long long>(lines.bad));
        for (const field::Epoch& epoch : reader.Take()) {
            Bytes(name, epoch.utc + epoch.station + epoch.lines + epoch.gsa);
            Decision(name + ".fix", static_cast<int>(epoch.fix));
            Print(name, epoch.antenna);
            Print(name, epoch.sigma);
        }
    }
    for (const auto& path : CorpusOf("rtcm_fuzzer")) {
        tiltpole::field::RtcmFilter filter;
        Bytes("rtcm." + path.filename().string(), filter.Feed(ContentOf(path)));
    }
}

void PrintPoses()
{
    for (const auto& path : CorpusOf("pose_reader_fuzzer"))
        for (const auto format :
             {field::PoseFormat::Ptps, field::PoseFormat::Csv, field::PoseFormat::SerialFrames}) {
            const std::string name =
                Name("pose." + path.filename().string(), static_cast<int>(format));
            const auto reader = field::MakePoseReader(format);
            reader->Feed(ContentOf(path), std::chrono::milliseconds(10));
            const field::PoseReaderCounters& count = reader->Count();
            for (const std::uint64_t value : {count.lines, count.bad, count.other, count.samples})
                Decision(name, static_cast<long long>(value));
            for (const field::PoseSample& sample : reader->Take())
                for (const double value :
                     {sample.data.dPitch, sample.data.dRoll, sample.data.dMag_x,
                      sample.data.dMag_z_2, sample.data.dGyro_y, sample.data.dAcc_z,
                      sample.deviceSeconds.value_or(-1.0), sample.heading.value_or(-1.0)})
                    Number(name, value);
        }
}

void PrintRecordings()
{
    Bytes("recording.header", field::RecordingHeader(1795353278.123456));
    std::string bytes;
    for (int c = 0; c < 256; ++c)
        bytes += static_cast<char>(c);
    Bytes("recording.lines",
          field::RecordingLines(std::chrono::microseconds(1234567), field::Channel::Pose, bytes));
    for (const auto& path : CorpusOf("recording_fuzzer")) {
        const std::string name = "recording." + path.filename().string();
        std::istringstream lines(ContentOf(path));
        std::string line;
        field::RecordingReader reader;
        while (std::getline(lines, line)) {
            const bool read = reader.Read(line);
            Decision(name, read);
            if (!read) Bytes(name, reader.Error());
            if (!reader.Last()) continue;
            Decision(name + ".at", static_cast<long long>(reader.Last()->at.count()));
            Bytes(name, reader.Last()->bytes);
        }
    }
}

} // namespace

void PrintLive()
{
    PrintBridges();
    PrintDelays();
    PrintReceivers();
    PrintPoses();
    PrintRecordings();
}

} // namespace portable
