// SPDX-License-Identifier: MIT
//
// Whether gyros and accelerometers have the same axes: the limits of what is left, and turns that a
// pause hides.
#include "apps/cli/occupy/AxesCheck.h"

#include "simulation/Attitude.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using cli::AxesCheck;
using cli::AxesEvidence;
using simulation::Matrix;
using simulation::Point3;
using simulation::RotationAbout;

constexpr Point3 kX{1.0, 0.0, 0.0};
constexpr Point3 kY{0.0, 1.0, 0.0};

// Means of a second of which each reading leaves so much of the variance, and the one with x and y
// exchanged less.
AxesEvidence SlowEvidence(double count, double left, double exchanged)
{
    constexpr std::size_t kExchanged = 8; // the first one in the order y, x, z
    AxesEvidence evidence;
    evidence.slow.count = count;
    evidence.slow.left.fill(count * left);
    evidence.slow.left[kExchanged] = count * exchanged;
    return evidence;
}

AxesEvidence FastEvidence(double count, double left, double exchanged)
{
    AxesEvidence evidence;
    evidence.fast = SlowEvidence(count, left, exchanged).slow;
    return evidence;
}

TEST(AxesEvidence, NamesTheReadingThatLeavesFarLess)
{
    EXPECT_EQ(SlowEvidence(10.0, 0.1, 0.001).Problem(),
              "gyros and accelerometers do not have the same axes: they agree where the rates are "
              "read as y, x, z");
    EXPECT_EQ(AxesEvidence{}.Problem(), std::nullopt);
}

// A free hand leaves so much: of recorded points the best reading leaves half of it.
TEST(AxesEvidence, SaysNothingWhereTheBestReadingLeavesMoreThanAThird)
{
    EXPECT_FALSE(SlowEvidence(10.0, 0.1, 0.036).Problem());
    EXPECT_TRUE(SlowEvidence(10.0, 0.1, 0.034).Problem());
    EXPECT_FALSE(FastEvidence(50.0, 0.1, 0.036).Problem());
    EXPECT_TRUE(FastEvidence(50.0, 0.1, 0.034).Problem());
}

// 0.003 g²: gravity turned by 3 degrees. Less is noise, of which one of 48 readings leaves least.
TEST(AxesEvidence, SaysNothingOfTurnsOfTwoDegrees)
{
    EXPECT_FALSE(SlowEvidence(10.0, 0.0029, 0.0).Problem());
    EXPECT_TRUE(SlowEvidence(10.0, 0.0031, 0.0).Problem());
    EXPECT_FALSE(FastEvidence(50.0, 0.0029, 0.0).Problem());
    EXPECT_TRUE(FastEvidence(50.0, 0.0031, 0.0).Problem());
}

TEST(AxesEvidence, NeedsFourSecondsOrTwentyFiveTenths)
{
    EXPECT_FALSE(SlowEvidence(3.0, 0.1, 0.001).Problem());
    EXPECT_TRUE(SlowEvidence(4.0, 0.1, 0.001).Problem());
    EXPECT_FALSE(FastEvidence(24.0, 0.1, 0.001).Problem());
    EXPECT_TRUE(FastEvidence(25.0, 0.1, 0.001).Problem());
}

TEST(AxesEvidence, OfSeveralPointsAddsUp)
{
    AxesEvidence all = SlowEvidence(3.0, 0.1, 0.001);
    all.Add(SlowEvidence(3.0, 0.1, 0.001));
    EXPECT_TRUE(all.Problem());
}

// A sensor that is turned about one of its axes after the other, and not accelerated.
class TurnedSensor
{
public:
    explicit TurnedSensor(double rate, bool exchanged = false)
        : m_interval(1.0 / rate), m_exchanged(exchanged)
    {}

    // Evenly, by so many degrees in so many seconds.
    void Turn(const Point3& axis, double degrees, double seconds)
    {
        const int samples = static_cast<int>(seconds / m_interval + 0.5);
        for (int i = 0; i < samples; ++i)
            Step(degrees / (samples * m_interval) * axis);
        Step({});
    }
    void Hold(double seconds) { Turn(kX, 0.0, seconds); }
    // Nothing is read meanwhile.
    void Pause(double seconds, const Matrix& turned)
    {
        m_seconds += seconds - m_interval;
        m_attitude = turned;
    }
    Matrix Attitude() const { return m_attitude; }
    AxesEvidence Evidence() const { return m_check.Evidence(); }

private:
    void Step(const Point3& rate)
    {
        const Point3 turn = 0.5 * m_interval * (m_rate + rate);
        const double angle = Length(turn);
        if (angle > 0.0) m_attitude = m_attitude * RotationAbout(1.0 / angle * turn, angle);
        m_rate = rate;
        m_seconds += m_interval;
        const Point3 up = m_attitude.Transposed() * Point3{0.0, 0.0, 1.0};
        field::InertialSample sample;
        sample.seconds = m_seconds;
        sample.rate = {rate.x, rate.y, rate.z};
        if (m_exchanged) std::swap(sample.rate.x, sample.rate.y);
        sample.acceleration = {up.x, up.y, up.z};
        m_check.Add(sample);
    }

    AxesCheck m_check = Begun();
    double m_interval;
    bool m_exchanged;
    double m_seconds = 0.0;
    Point3 m_rate{};
    Matrix m_attitude{};

    static AxesCheck Begun()
    {
        AxesCheck check;
        check.Clear();
        return check;
    }
};

void Rock(TurnedSensor& sensor)
{
    for (int i = 0; i < 3; ++i) {
        sensor.Turn(kX, 25.0, 1.0);
        sensor.Turn(kX, -25.0, 1.0);
    }
}

TEST(AxesCheck, TellsExchangedAxesFromRightOnes)
{
    for (const bool exchanged : {false, true}) {
        TurnedSensor sensor(50.0, exchanged);
        Rock(sensor);
        EXPECT_EQ(sensor.Evidence().Problem().has_value(), exchanged);
    }
}

// What the sensors read before and after the pause is that of other axes: of a turn about x gravity is seen
// to have turned about y.
TEST(AxesCheck, KnowsNothingOfATurnThatAPauseHides)
{
    TurnedSensor sensor(50.0);
    sensor.Hold(4.0);
    sensor.Turn(kX, 30.0, 0.4);
    sensor.Pause(0.3, RotationAbout(kY, 30.0));
    sensor.Hold(5.0);
    EXPECT_EQ(sensor.Evidence().Problem(), std::nullopt);
}

TEST(AxesCheck, KeepsWhatItSawBeforeAPause)
{
    TurnedSensor sensor(50.0, true);
    Rock(sensor);
    sensor.Pause(0.3, sensor.Attitude());
    sensor.Hold(0.5);
    EXPECT_TRUE(sensor.Evidence().Problem());
}

TEST(AxesCheck, TakesSixSamplesASecondForNoPauses)
{
    TurnedSensor sensor(6.0, true);
    Rock(sensor);
    EXPECT_TRUE(sensor.Evidence().Problem());
}

} // namespace
