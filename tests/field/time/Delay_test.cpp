// SPDX-License-Identifier: MIT
#include "field/Delay.h"

#include "field/Geodesy.h"
#include "field/pose/PoseReader.h"
#include "tests/field/pose/RockedPole.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <fstream>
#include <string>
#include <vector>

using field::DelayOutcome;
using field::DelayResult;
using field::Epoch;
using field::FindDelay;
using field::Fix;
using field::Geodetic;
using field::PoseRing;
using field::PoseSample;
using field::Setup;
using rocked_pole::MomentOf;
using rocked_pole::Point3;
using rocked_pole::Rocking;

namespace {

constexpr Geodetic kMark{47.566, 19.0083, 150.0}; // where the tip stands
constexpr std::chrono::seconds kSpan(180);

Epoch EpochAt(double moment, const Point3& fromTip)
{
    Epoch epoch;
    epoch.antenna = Offset(kMark, fromTip.x, fromTip.y, fromTip.z);
    epoch.sigma = {6.4e-5, 0.0, 6.4e-5, 0.0, 0.0, 2.25e-4};
    epoch.fix = Fix::Fixed;
    epoch.moment = MomentOf(moment);
    return epoch;
}

Setup TypeTwo()
{
    Setup setup;
    setup.sensorType = 2;
    setup.calibration.complete = true;
    setup.north = field::NorthSource::File;
    return setup;
}

// A rocked pole without errors but those of the antenna.
struct Simulated
{
    Rocking rocking;
    double delay = 0.120; // [s]
    double seconds = 20.0;
    double rate = 5.0;  // of the epochs [Hz]
    double noise = 0.0; // of the antenna's plan, twice that of its height [m]
    double turn = 0.0;  // of the antenna about the tip against the sensor's heading [degrees]
    double slip = 0.0;  // of the tip to the north by the middle [m]
    unsigned seed = 1;

    PoseRing Poses() const
    {
        PoseRing ring(kSpan);
        for (double t = -1.0; t < seconds + 1.0; t += 0.01)
            ring.Add(rocking.PoseAt(t));
        return ring;
    }

    std::vector<Epoch> Epochs() const
    {
        std::mt19937_64 random(seed);
        std::normal_distribution<double> normal(0.0, 1.0);
        const double c = std::cos(rocked_pole::Deg2Rad(turn));
        const double s = std::sin(rocked_pole::Deg2Rad(turn));
        std::vector<Epoch> epochs;
        for (double t = 0.0037; t < seconds; t += 1.0 / rate) {
            const Point3 up = rocked_pole::kLength * rocking.UpAt(t);
            const double moved = t > seconds / 2.0 ? slip : 0.0;
            const Point3 antenna{c * up.x - s * up.y + noise * normal(random) + moved,
                                 s * up.x + c * up.y + noise * normal(random),
                                 up.z + 2.0 * noise * normal(random)};
            epochs.push_back(EpochAt(t + delay, antenna));
        }
        return epochs;
    }

    DelayResult Find() const { return FindDelay(Epochs(), Poses(), TypeTwo()); }
};

// examples/pole-replay.csv: a pole of 2 m moved by hand about a fixed tip, at 48 Hz.
struct Replay
{
    PoseRing poses{kSpan};
    std::vector<double> seconds;
    std::vector<Point3> antenna; // from the tip

    Replay()
    {
        std::ifstream file(TILTPOLE_SOURCE_DIR "/examples/pole-replay.csv", std::ios::binary);
        const auto reader = field::MakePoseReader(field::PoseFormat::Csv);
        std::string line;
        while (std::getline(file, line)) {
            reader->Feed(line + "\n", {});
            for (PoseSample& sample : reader->Take()) {
                sample.moment = MomentOf(*sample.deviceSeconds);
                poses.Add(sample);
                seconds.push_back(*sample.deviceSeconds);
                antenna.push_back(AntennaOf(line));
            }
        }
    }

    // Columns x, y, h, the 18th to 20th, less the true tip.
    static Point3 AntennaOf(const std::string& line)
    {
        std::size_t at = 0;
        for (int i = 0; i < 17; ++i)
            at = line.find(',', at) + 1;
        double values[3] = {};
        for (double& value : values) {
            std::from_chars(line.data() + at, line.data() + line.size(), value);
            at = line.find(',', at) + 1;
        }
        return {values[0] - 238540.0, values[1] - 650135.0, values[2] - 112.5};
    }

    // Epochs between `from` and `to` [s since the first], the antenna in straight lines between rows.
    std::vector<Epoch> Epochs(double rate, double delay, double from = 0.0, double to = 999.0) const
    {
        std::vector<Epoch> epochs;
        std::size_t row = 1;
        for (double t = seconds.front() + from + 0.007;
             t < std::min(seconds.front() + to, seconds.back()); t += 1.0 / rate) {
            while (seconds[row] < t)
                ++row;
            const double part = (t - seconds[row - 1]) / (seconds[row] - seconds[row - 1]);
            epochs.push_back(
                EpochAt(t + delay, antenna[row - 1] + part * (antenna[row] - antenna[row - 1])));
        }
        return epochs;
    }
};

Setup TypeOne()
{
    Setup setup = TypeTwo();
    setup.sensorType = 1;
    return setup;
}

} // namespace

TEST(Delay, IsExactWithoutErrors)
{
    Simulated pole;
    pole.turn = -2.5;
    for (const double delay : {-0.15, 0.0, 0.037, 0.120, 0.5}) {
        pole.delay = delay;
        const DelayResult found = pole.Find();
        EXPECT_EQ(found.outcome, DelayOutcome::Found) << delay;
        EXPECT_NEAR(found.delay, delay, 1e-4);
        EXPECT_NEAR(found.length, rocked_pole::kLength, 3e-4);
        EXPECT_NEAR(found.headingOffset, -2.5, 0.01);
        EXPECT_LT(found.rms, 1e-3);
        EXPECT_LT(found.sigma, 2.1e-3);
    }
}

TEST(Delay, LeavesTheDeclinationOutOfTheHeadingOffset)
{
    Simulated pole;
    pole.turn = 5.8;
    field::Setup setup = TypeTwo();
    setup.north = field::NorthSource::Model;
    EXPECT_NEAR(FindDelay(pole.Epochs(), pole.Poses(), setup, 5.5).headingOffset, 0.3, 0.01);
}

TEST(Delay, IsFoundOnARecordedPole)
{
    const Replay replay;
    for (const double rate : {10.0, 5.0, 1.0}) {
        const DelayResult found = FindDelay(replay.Epochs(rate, 0.120), replay.poses, TypeOne());
        EXPECT_EQ(found.outcome, DelayOutcome::Found) << rate;
        EXPECT_NEAR(found.delay, 0.120, 0.010) << rate;
        EXPECT_NEAR(found.length, 2.0, 0.010) << rate;
        EXPECT_NEAR(found.headingOffset, 0.0, 1.5) << rate;
        EXPECT_GT(found.rmsWithout, 4.0 * found.rms) << rate;
    }
}

// The antenna's noise leads to the stated sigma; it is large here, beside the part of the model.
TEST(Delay, HasAnHonestSigma)
{
    Simulated pole;
    pole.noise = 0.03;
    pole.rate = 2.0;
    const PoseRing poses = pole.Poses();
    constexpr int kRuns = 60;
    double sum = 0.0;
    for (unsigned seed = 1; seed <= kRuns; ++seed) {
        pole.seed = seed;
        const DelayResult found = FindDelay(pole.Epochs(), poses, TypeTwo());
        const double z = (found.delay - pole.delay) / found.sigma;
        sum += z * z;
    }
    // 60 runs: 9 % of scatter.
    EXPECT_GT(std::sqrt(sum / kRuns), 0.7);
    EXPECT_LT(std::sqrt(sum / kRuns), 1.3);
}

TEST(Delay, ExposesAWrongLength)
{
    field::Setup setup = TypeTwo();
    setup.poleLength = 1.8;
    EXPECT_NEAR(FindDelay(Simulated{}.Epochs(), Simulated{}.Poses(), setup).length, 2.0, 3e-4);
}

TEST(Delay, TakesAHeadingThatTheSensorForms)
{
    const Simulated pole;
    PoseRing poses(kSpan);
    for (double t = -1.0; t < pole.seconds + 1.0; t += 0.01) {
        PoseSample sample = pole.rocking.PoseAt(t);
        sample.heading = pole.rocking.HeadingAt(t);
        sample.data.dMag_x = sample.data.dMag_y = sample.data.dMag_z = 0.0;
        poses.Add(sample);
    }
    const DelayResult found = FindDelay(pole.Epochs(), poses, TypeTwo());
    EXPECT_EQ(found.outcome, DelayOutcome::Found);
    EXPECT_NEAR(found.delay, pole.delay, 1e-4);
    EXPECT_NEAR(found.headingOffset, 0.0, 0.01);
}

TEST(Delay, UsesFixedEpochsWithPosesAlone)
{
    const Simulated pole;
    std::vector<Epoch> epochs = pole.Epochs();
    for (std::size_t i = 0; i < epochs.size(); i += 4) {
        epochs[i].fix = Fix::Float;
        epochs[i].antenna.latitude += 1e-4;
    }
    epochs[1].antenna.latitude = std::nan("");
    epochs[2].moment += std::chrono::hours(1);
    const DelayResult found = FindDelay(epochs, pole.Poses(), TypeTwo());
    EXPECT_EQ(found.outcome, DelayOutcome::Found);
    EXPECT_EQ(found.epochs, 73);
    EXPECT_NEAR(found.delay, pole.delay, 1e-4);
}

// A quarter is what plan and height with twice the sigma have.
TEST(Delay, TakesHeightsForTwiceAsUncertainWhereNothingIsStated)
{
    const Simulated pole{.rocking = {}, .noise = 0.01};
    std::vector<Epoch> epochs = pole.Epochs();
    const PoseRing poses = pole.Poses();
    for (Epoch& epoch : epochs)
        epoch.sigma.hh = 4.0 * epoch.sigma.nn;
    const DelayResult stated = FindDelay(epochs, poses, TypeTwo());
    for (Epoch& epoch : epochs)
        epoch.sigma.hh = 0.0;
    const DelayResult found = FindDelay(epochs, poses, TypeTwo());
    EXPECT_EQ(found.outcome, DelayOutcome::Found);
    EXPECT_DOUBLE_EQ(found.delay, stated.delay);
    EXPECT_DOUBLE_EQ(found.sigma, stated.sigma);
}

TEST(Delay, LeavesOutPosesThatAreNone)
{
    const Simulated pole;
    PoseRing poses(kSpan);
    for (double t = -1.0; t < pole.seconds + 1.0; t += 0.01) {
        PoseSample sample = pole.rocking.PoseAt(t);
        if (t > 9.0 && t < 11.0) sample.data.dPitch = 95.0; // no pole stands like that
        poses.Add(sample);
    }
    const DelayResult found = FindDelay(pole.Epochs(), poses, TypeTwo());
    EXPECT_EQ(found.outcome, DelayOutcome::Found);
    EXPECT_NEAR(found.epochs, 90, 1) << "of 100";
    EXPECT_NEAR(found.delay, pole.delay, 1e-4);
}

// At no delay no epoch of those has a pose.
TEST(Delay, HasNoResidualsWithoutADelayWhereNoPoseIsThatOld)
{
    const Simulated pole{.rocking = {}, .delay = 9.5, .seconds = 8.0};
    const DelayResult found = FindDelay(pole.Epochs(), pole.Poses(), TypeTwo(), 0.0, {9.2, 9.8});
    EXPECT_EQ(found.outcome, DelayOutcome::Found);
    EXPECT_NEAR(found.delay, 9.5, 1e-4);
    EXPECT_EQ(found.rmsWithout, 0.0);
}

// The motion repeats itself after 8 s, and the antenna is noisy but for the last 5 of 12 s: these
// alone have a pose 8 s earlier, which they fit better than all epochs do at the true delay.
TEST(Delay, IsNotWhereLessThanHalfOfTheEpochsHaveAPose)
{
    const Simulated pole;
    const auto repeated = [](double t) { return std::fmod(t + 8.0, 8.0); };
    PoseRing poses(kSpan);
    for (double t = -1.0; t < 13.0; t += 0.01) {
        PoseSample sample = pole.rocking.PoseAt(repeated(t));
        sample.moment = MomentOf(t);
        poses.Add(sample);
    }
    std::vector<Epoch> epochs;
    for (int i = 0; i < 60; ++i) {
        const double t = 0.2 * i;
        Point3 antenna = rocked_pole::kLength * pole.rocking.UpAt(repeated(t));
        if (t < 7.0) antenna.x += i % 2 == 0 ? 0.02 : -0.02;
        epochs.push_back(EpochAt(t + pole.delay, antenna));
    }
    const DelayResult found = FindDelay(epochs, poses, TypeTwo(), 0.0, {-0.4, 9.4});
    EXPECT_EQ(found.outcome, DelayOutcome::Found);
    EXPECT_NEAR(found.delay, pole.delay, 0.01);
}

TEST(Delay, NeedsPosesOnBothSidesOfIt)
{
    const Simulated pole;
    PoseRing bursts(kSpan); // 20 ms to both sides of each epoch's moment
    for (double t = 0.0037; t < pole.seconds; t += 1.0 / pole.rate)
        for (const double apart : {-0.02, -0.01, 0.0, 0.01, 0.02})
            bursts.Add(pole.rocking.PoseAt(t + apart));
    const DelayResult found = FindDelay(pole.Epochs(), bursts, TypeTwo());
    EXPECT_EQ(found.outcome, DelayOutcome::TooFewEpochs);
    EXPECT_EQ(found.epochs, 0);
    EXPECT_EQ(found.delay, 0.0);
}

TEST(Delay, SaysWhyItIsNotFound)
{
    struct Case
    {
        DelayOutcome expected;
        Simulated pole;
    };
    const Case cases[] = {
        {DelayOutcome::TooFewEpochs,    {.rocking = {}, .seconds = 2.0}                },
        {DelayOutcome::TooFewEpochs,    {.rocking = {}, .seconds = 0.0}                },
        {DelayOutcome::TooShort,        {.rocking = {}, .seconds = 4.0}                },
        {DelayOutcome::TooLittleMotion, {.rocking = {.amplitude = 0.0}, .noise = 0.005}},
        {DelayOutcome::TooLittleMotion, {.rocking = {.rate = 0.01}}                    },
        {DelayOutcome::NotOneTip,       {.rocking = {}, .slip = 0.6}                   },
        {DelayOutcome::AtTheEnd,        {.rocking = {}, .delay = 0.9}                  },
        {DelayOutcome::AtTheEnd,        {.rocking = {}, .delay = 0.62}                 },
        {DelayOutcome::AtTheEnd,        {.rocking = {}, .delay = -0.22}                },
    };
    for (const Case& c : cases) {
        const DelayResult found = c.pole.Find();
        EXPECT_EQ(found.outcome, c.expected)
            << TextOf(c.expected) << "; found: " << TextOf(found.outcome);
    }
}

// Noise counts as motion, but that of few epochs leaves the delay uncertain by more than 50 ms.
TEST(Delay, IsNotFoundWhereItsSigmaIsLarge)
{
    Simulated pole;
    pole.rocking.amplitude = 1.0;
    pole.seconds = 6.0;
    pole.rate = 3.0;
    pole.noise = 0.03;
    const DelayResult found = pole.Find();
    EXPECT_GT(found.sigma, 0.050);
    EXPECT_LT(found.rms, 0.100);
    EXPECT_EQ(found.outcome, DelayOutcome::TooLittleMotion);
}

TEST(Delay, HasWordsForEachOutcome)
{
    EXPECT_EQ(TextOf(DelayOutcome::Found), "found");
    EXPECT_EQ(TextOf(DelayOutcome::TooFewEpochs), "too few fixed epochs with poses around them");
    EXPECT_EQ(TextOf(DelayOutcome::TooShort), "too short: rock the pole for 20 s");
    EXPECT_EQ(TextOf(DelayOutcome::TooLittleMotion),
              "too little motion: rock the pole faster and wider");
    EXPECT_EQ(TextOf(DelayOutcome::NotOneTip),
              "the antenna does not follow the pose about one tip: keep the tip on its mark");
    EXPECT_EQ(TextOf(DelayOutcome::AtTheEnd), "the delay lies beyond the range that was searched");
    EXPECT_EQ(TextOf(static_cast<DelayOutcome>(99)), "");
}

TEST(Delay, SearchesNoRangeThatIsNone)
{
    const Simulated pole;
    const field::DelayRange ranges[] = {
        {0.2,          0.2  },
        {0.2,          0.1  },
        {std::nan(""), 0.5  },
        {-1e300,       1e300},
        {0.0,          1e300}
    };
    for (const field::DelayRange& range : ranges) {
        const DelayResult found = FindDelay(pole.Epochs(), pole.Poses(), TypeTwo(), 0.0, range);
        EXPECT_EQ(found.outcome, DelayOutcome::TooFewEpochs) << range.earliest;
    }
}
