// SPDX-License-Identifier: MIT
//
// What reads and keeps samples, and the plain functions of a live pole.
#include "field/Delay.h"
#include "field/Digits.h"
#include "field/Geodesy.h"
#include "field/North.h"
#include "field/Recording.h"
#include "field/pose/PoseReader.h"
#include "field/pose/PoseRing.h"
#include "tests/field/bridge/LivePole.h"
#include "tests/field/pose/RockedPole.h"
#include "tests/memory/Rows.h"

#include <set>

namespace sweep {

namespace {

using namespace std::chrono_literals;

std::string Describe(const field::PoseSample& s)
{
    return Text(s.data.dPitch) + Text(s.data.dMag_x) + Text(s.data.dMag_z)
           + Text(s.deviceSeconds.value_or(-1.0)) + ';';
}

std::string Frame(char type, const std::string& values)
{
    std::string frame = std::string("\x55") + type + values;
    int sum = 0;
    for (const char c : frame)
        sum += static_cast<unsigned char>(c);
    return frame + static_cast<char>(sum & 0xFF);
}

// Three samples and half a sample in the bytes of a format.
std::string BytesOf(field::PoseFormat format)
{
    std::string bytes;
    for (int i = 0; i < 4; ++i) {
        live_pole::PoseFields pose;
        pose.milliseconds = std::to_string(1000 + 20 * i);
        pose.pitch = 1.5 + i;
        pose.readings = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
        std::string one;
        switch (format) {
        case field::PoseFormat::Ptps:
            one = live_pole::PoseText(pose);
            break;
        case field::PoseFormat::Csv:
            if (i == 0) bytes = "dPitch,dRoll,dMag_x,dMag_y,dMag_z,seconds\n";
            one = std::to_string(i) + "1.25,2.5,100,200,300,0." + std::to_string(i + 1) + "\n";
            break;
        case field::PoseFormat::SerialFrames:
            one = Frame('\x53', std::string("\x01\x02\x03\x04\x05\x06\x07\x08"))
                  + Frame('\x54', std::string("\x11\x02\x13\x04") + char('0' + i) + "\x06\x17\x08");
            break;
        }
        bytes += i < 3 ? one : one.substr(0, one.size() / 2);
    }
    return bytes;
}

// What a reader gives for all bytes, those after a failure as well: each sample is one of those that
// were sent, none of halves.
template <field::PoseFormat kFormat>
struct Reading
{
    std::string bytes = BytesOf(kFormat);
    std::unique_ptr<field::PoseReader> reader = field::MakePoseReader(kFormat);
    std::vector<field::PoseSample> taken;
};

template <field::PoseFormat kFormat>
std::string DescribeReading(const Reading<kFormat>& r)
{
    std::string text = r.reader ? std::to_string(r.reader->Count().samples) + ' ' : "none ";
    for (const field::PoseSample& sample : r.taken)
        text += Describe(sample);
    return text;
}

template <field::PoseFormat kFormat>
void AddReaderRows(std::vector<Row>& rows)
{
    using State = Reading<kFormat>;
    // The first samples at most, each whole; the host begins anew.
    const AfterFailure<State> isShort = {[](const State& r) {
                                             return r.reader->Count().samples < 3
                                                    && r.taken.size() <= r.reader->Count().samples;
                                         },
                                         [](State& r) { r = State{}; }};
    rows.push_back(Operation<State>(
        "field::PoseReader::Feed field::PoseReader::Take", Shortage::Throws,
        [](State& r) {
            r.reader->Feed(r.bytes, 5s);
            auto taken = r.reader->Take();
            r.taken.swap(taken);
        },
        DescribeReading<kFormat>, isShort));
    rows.push_back(Operation<State>(
        "field::MakePoseReader field::PoseReader::Restart field::PoseReader::Count",
        Shortage::Throws,
        [](State& r) {
            auto made = field::MakePoseReader(kFormat);
            made->Restart();
            r.taken.resize(r.taken.size() + 1);
            r.reader = std::move(made);
        },
        DescribeReading<kFormat>,
        {[](const State& r) { return r.taken.size() == 1; }, [](State& r) { r = State{}; }}));
}

struct Ring
{
    explicit Ring(field::Instant span = 5s) : ring(span)
    {
        const rocked_pole::Rocking rocking;
        for (int i = 0; i < 100; ++i)
            ring.Add(rocking.PoseAt(0.02 * i));
    }

    field::PoseRing ring;
    double n = 0.0;
};

// Longer than what is reserved: it grows.
struct LongRing : Ring
{
    LongRing() : Ring(60s)
    {
        const rocked_pole::Rocking rocking;
        while (ring.Size() < 2502)
            ring.Add(rocking.PoseAt(0.02 * static_cast<double>(ring.Size())));
    }
};

std::string DescribeRing(const Ring& r)
{
    const std::size_t size = r.ring.Size();
    return std::to_string(size) + ' ' + Text(r.n)
           + (size > 0 ? Describe(r.ring.Sample(size - 1)) : std::string());
}

void AddRingRows(std::vector<Row>& rows)
{
    rows.push_back(Operation<Ring>(
        "field::PoseRing::PoseRing", Shortage::Throws,
        [](Ring& r) {
            r.ring = field::PoseRing(1s);
            r.n += 1.0;
        },
        DescribeRing));
    rows.push_back(Operation<LongRing>(
        "field::PoseRing::Add", Shortage::Throws,
        [](LongRing& r) {
            field::PoseSample sample = r.ring.Sample(r.ring.Size() - 1);
            sample.moment += 20ms;
            r.ring.Add(sample);
        },
        DescribeRing));
    rows.push_back(Operation<Ring>(
        "field::PoseRing::Add field::PoseRing::At field::PoseRing::IsStill field::PoseRing::Sample "
        "field::PoseRing::Clear",
        Shortage::Never,
        [](Ring& r) {
            r.n = r.ring.At(1010ms).pose.data.dPitch + (r.ring.IsStill(1s) ? 1.0 : 2.0)
                  + r.ring.Sample(3).data.dRoll;
            const field::PoseSample last = r.ring.Sample(r.ring.Size() - 1);
            r.ring.Clear();
            r.ring.Add(last);
            r.ring.Add(last);
            while (r.ring.Size() < 4) {
                field::PoseSample next = r.ring.Sample(r.ring.Size() - 1);
                next.moment += 20ms;
                r.ring.Add(next);
            }
        },
        DescribeRing));
}

struct Recording
{
    Recording() { reader.Read("# tiltpole recording 1, started 2026-11-22T13:07:58.123456Z"); }

    field::RecordingReader reader;
    std::string text;
    double n = 0.0;
};

std::string DescribeRecording(const Recording& r)
{
    return r.text + '|' + r.reader.Error() + '|' + Text(r.n)
           + (r.reader.Last()
                  ? r.reader.Last()->bytes + Text(static_cast<double>(r.reader.Last()->at.count()))
                  : "none");
}

void AddRecordingRows(std::vector<Row>& rows)
{
    const auto add = [&](const char* covers, std::function<void(Recording&)> run) {
        rows.push_back(Operation<Recording>(
            covers, Shortage::Throws, std::move(run), DescribeRecording,
            {[](const Recording& r) { return !r.reader.Last() && r.text.empty(); }, {}}));
    };
    add("field::RecordingHeader", [](Recording& r) { r.text = field::RecordingHeader(1.8e9); });
    add("field::RecordingLines", [](Recording& r) {
        r.text = field::RecordingLines(1500ms, field::Channel::Pose, std::string(5000, '\x01'));
    });
    add("field::RecordingReader::Read", [](Recording& r) {
        r.n += r.reader.Read("+2.000000 P a record with more than a few bytes\\x0A") ? 1.0 : 0.0;
    });
    // Its number in the error is that of the line, however often it was tried.
    add("field::RecordingReader::Read", [](Recording& r) {
        if (r.reader.Read("+2.000000 X a channel that is none")) r.n = 1.0;
    });
}

struct Delays
{
    Delays()
    {
        const rocked_pole::Rocking rocking;
        for (int i = 0; i < 700; ++i)
            poses.Add(rocking.PoseAt(0.02 * i));
        setup.sensorType = 2;
        setup.calibration.complete = true;
        setup.north = field::NorthSource::File;
        for (int i = 0; i < 50; ++i) {
            const double t = 2.0 + 0.2 * i;
            const auto up = rocked_pole::kLength * rocking.UpAt(t);
            field::Epoch epoch;
            epoch.antenna = field::Offset({47.566, 19.0083, 150.0}, up.x, up.y, up.z);
            epoch.sigma = {6.4e-5, 0.0, 6.4e-5, 0.0, 0.0, 2.25e-4};
            epoch.fix = field::Fix::Fixed;
            epoch.moment = rocked_pole::MomentOf(t + 0.1);
            epochs.push_back(epoch);
        }
    }

    field::PoseRing poses{60s};
    std::vector<field::Epoch> epochs;
    field::Setup setup;
    field::DelayResult found;
};

void AddPlainRows(std::vector<Row>& rows)
{
    rows.push_back(Operation<Delays>(
        "field::FindDelay", Shortage::Throws,
        [](Delays& d) {
            d.found = field::FindDelay(d.epochs, d.poses, d.setup, 0.0, {0.05, 0.2});
        },
        [](const Delays& d) {
            return std::to_string(static_cast<int>(d.found.outcome)) + ' ' + Text(d.found.delay)
                   + Text(d.found.sigma) + Text(d.found.rmsWithout);
        },
        {}, {20, 97}));
    // The coefficients of the magnetic model stay from its first call on: MagneticModel below.
    rows.push_back(WithoutMemory(
        "field::TextOf field::MagneticFieldAt field::DecimalYear field::Offset field::Difference "
        "field::ExactTip field::LevelAxesOf field::MagneticHeading field::PoleDirection "
        "field::ShapeOf",
        [] {
            EXPECT_FALSE(field::TextOf(field::DelayOutcome::TooShort).empty());
            const std::chrono::sys_days day{std::chrono::year{2026} / 11 / 22};
            const field::Geodetic place{47.5, 19.0, 100.0};
            EXPECT_GT(field::MagneticFieldAt(place, field::DecimalYear(day)).strength, 4e4);
            const field::Geodetic there = field::Offset(place, 1.0, 2.0, 3.0);
            EXPECT_NEAR(field::Difference(place, there).y, 2.0, 1e-6);
            field::Tilt tilt;
            tilt.pitch = 10.0;
            EXPECT_GT(field::PoleDirection(tilt, 30.0).h, 0.9);
            EXPECT_LT(field::ExactTip({0.0, 0.0, 10.0}, 2.0, tilt, 30.0).h, 9.0);
            EXPECT_GT(field::LevelAxesOf(tilt).up.z, 0.9);
            EXPECT_NEAR(field::MagneticHeading(tilt, {20.0, 0.0, -40.0}), 0.0, 1e-9);
            EXPECT_GT(field::ShapeOf(tilt, {20.0, 0.0, -40.0}).dip, 0.0);
        }));
}

} // namespace

std::vector<Row> ReaderRows()
{
    std::vector<Row> rows;
    AddReaderRows<field::PoseFormat::Ptps>(rows);
    AddReaderRows<field::PoseFormat::Csv>(rows);
    AddReaderRows<field::PoseFormat::SerialFrames>(rows);
    AddRingRows(rows);
    AddRecordingRows(rows);
    AddPlainRows(rows);
    return rows;
}

namespace {

std::vector<std::string> Pieces(const std::string& bytes, std::size_t first, std::size_t length)
{
    std::vector<std::string> pieces = {bytes.substr(0, first)};
    for (std::size_t at = first; at < bytes.size(); at += length)
        pieces.push_back(bytes.substr(at, length));
    return pieces;
}

// Whether an allocation failed; the samples that a reader makes of `pieces` then are among `sent`.
bool MakesNoOtherSamples(field::PoseFormat format, const std::vector<std::string>& pieces,
                         std::size_t failing, const std::set<std::string>& sent)
{
    const auto reader = field::MakePoseReader(format);
    reference::AllocationRound round(1, reference::Failing::One);
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        try {
            if (i == failing)
                round.Run([&] { reader->Feed(pieces[i], 5s); });
            else
                reader->Feed(pieces[i], 5s);
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(i, failing);
        }
    }
    for (const field::PoseSample& sample : reader->Take())
        EXPECT_TRUE(sent.contains(Describe(sample))) << Describe(sample);
    return round.HasFailed();
}

// An allocation of one piece fails: of what follows no sample is made that the sensor did not send.
TEST(ShortPoseReader, GivesNoSampleOfHalves)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    using field::PoseFormat;
    constexpr std::size_t kLength = 27; // a row of Csv and a byte
    for (const auto format : {PoseFormat::Ptps, PoseFormat::Csv, PoseFormat::SerialFrames}) {
        const std::string bytes = BytesOf(format) + '\n';
        std::set<std::string> sent;
        const auto whole = field::MakePoseReader(format);
        whole->Feed(bytes, 5s);
        for (const field::PoseSample& sample : whole->Take())
            sent.insert(Describe(sample));
        ASSERT_GE(sent.size(), 3U);
        int failures = 0;
        for (std::size_t first = 1; first <= kLength; ++first) {
            const std::vector<std::string> pieces = Pieces(bytes, first, kLength);
            for (std::size_t failing = 0; failing < pieces.size(); ++failing)
                failures += MakesNoOtherSamples(format, pieces, failing, sent) ? 1 : 0;
        }
        EXPECT_GT(failures, 20) << static_cast<int>(format);
    }
}

// Each allocation of the first call fails once.
bool IsRightOnceThereIsMemory()
{
    const field::Geodetic place{47.5, 19.0, 100.0};
    const auto isNone = [](const field::Field& there) {
        return std::isnan(there.declination) && std::isnan(there.strength);
    };
    const auto isRight = [](const field::Field& there) {
        return std::fabs(there.strength - 48900.0) < 1000.0;
    };
    // The entry of what is to be destroyed at the end may be an allocation that is not needed.
    bool isOneOfThem = true;
    long nones = 0;
    for (long k = 1;; ++k) {
        reference::AllocationRound round(k, reference::Failing::One);
        const field::Field there = round.Run([&] { return field::MagneticFieldAt(place, 2026.5); });
        if (!round.HasFailed()) break;
        nones += isNone(there) ? 1 : 0;
        isOneOfThem = isOneOfThem && (isNone(there) || isRight(there));
    }
    return nones > 0 && isOneOfThem && isRight(field::MagneticFieldAt(place, 2026.5));
}

// In a process of its own, where what the first call keeps is not there yet.
TEST(MagneticModel, IsThereAsSoonAsThereIsMemoryForItsCoefficients)
{
    if (!reference::CanFailAllocations()) GTEST_SKIP() << "another tool's allocator is in place";
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(std::exit(IsRightOnceThereIsMemory() ? 0 : 1), testing::ExitedWithCode(0), "");
}

} // namespace

} // namespace sweep
