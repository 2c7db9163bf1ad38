// SPDX-License-Identifier: MIT
//
// A pole at work at 50 samples a second, without end: it is led in, rocked, held, and carried on to the
// next of four points, 20 s each, while the antenna's epochs come five times a second, 0.12 s late.
// The sensor has gyros; its errors repeat after a round of four points.
#pragma once

#include "tests/field/SimulatedPole.h"
#include "tests/field/bridge/LivePole.h"

#include <array>
#include <chrono>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace soak {

class WorkingDay
{
public:
    static constexpr int kRate = 50;                      // [Hz]
    static constexpr int kPerEpoch = 10;                  // samples
    static constexpr int kLate = 6;                       // of an epoch [samples]
    static constexpr int kPoint = 20 * kRate;             // samples at a point
    static constexpr int kRound = 4 * kPoint;             // samples
    static constexpr double kFromPoint = 15.0;            // when the pole is carried on [s]
    static constexpr double kToPoint = 19.0;              // and arrives [s]
    static constexpr double kSide = 3.0;                  // of the square of points [m]
    static constexpr long kDay = 24L * 60L * 60L * kRate; // samples

    WorkingDay()
    {
        field_tests::PoleErrors errors;
        errors.heading = 1.0;
        field_tests::SimulatedPole pole(Lean, 40.0, errors, 1);
        std::mt19937 random(5);
        std::normal_distribution<double> counts(0.0, 0.3);
        std::normal_distribution<double> meters(0.0, 0.003);
        for (int i = 0; i < kRound; ++i) {
            const double t = Seconds(i);
            const field::InertialSample s = pole.Sample(t);
            const Eigen::Vector3d up = 2.0 * pole.Attitude(t).col(2);
            const xyhCoordinate tip = TipAt(t);
            live_pole::TrackRow row;
            row.pitch = s.tilt.pitch;
            row.roll = s.tilt.roll;
            const std::array<double, 3> a{10.0 * s.magnetic.x + counts(random),
                                          10.0 * s.magnetic.y + counts(random),
                                          10.0 * s.magnetic.z + counts(random)};
            row.readings = {a[0],
                            a[1],
                            a[2],
                            -a[0],
                            -a[1],
                            a[2],
                            s.rate.x,
                            s.rate.y,
                            s.rate.z,
                            s.acceleration.x,
                            s.acceleration.y,
                            s.acceleration.z};
            row.antenna = {tip.x + up.x() + meters(random), tip.y - up.y() + meters(random),
                           tip.h + up.z() + 2.0 * meters(random)};
            m_rows.push_back(row);
        }
    }

    static double Seconds(long sample) { return static_cast<double>(sample) / kRate; }
    /// When sample i arrives.
    static field::Instant ArrivalOf(long sample)
    {
        return live_pole::InstantOf(live_pole::kFirst + Seconds(sample) + live_pole::kLink);
    }

    const live_pole::TrackRow& Row(long sample) const
    {
        return m_rows[static_cast<std::size_t>(sample % kRound)];
    }

    /// The pose of sample i as the sensor sends it.
    std::string PoseText(long sample) const
    {
        const live_pole::TrackRow& row = Row(sample);
        live_pole::PoseFields pose;
        pose.milliseconds = std::to_string(1000L / kRate * sample + 5000L);
        pose.pitch = row.pitch;
        pose.roll = row.roll;
        pose.readings = row.readings;
        return live_pole::PoseText(pose);
    }

    /// The epoch that arrives with sample i, if one does. The date changes at midnight.
    std::optional<std::string> EpochText(long sample) const
    {
        const long of = sample - kLate;
        if (of < kPerEpoch || of % kPerEpoch != 0) return std::nullopt;
        constexpr long kWholeDay = 24L * 60L * 60L;
        const long tenths = std::lround(10.0 * live_pole::kStart) + of / (kRate / 10);
        live_pole::EpochFields epoch;
        epoch.utc = static_cast<double>(tenths % (10 * kWholeDay)) / 10.0;
        const std::chrono::year_month_day date{
            std::chrono::sys_days{std::chrono::year{2026} / 11 / 22}
            + std::chrono::days(tenths / (10 * kWholeDay))};
        epoch.date = live_pole::Printed("%02u%02u%02d", static_cast<unsigned>(date.day()),
                                        static_cast<unsigned>(date.month()),
                                        static_cast<int>(date.year()) % 100);
        const xyhCoordinate& at = Row(of).antenna;
        epoch.speed = SpeedAt(Seconds(of % kRound));
        epoch.antenna = field::Offset(live_pole::kTip, at.x, at.y, at.h);
        return live_pole::EpochText(epoch);
    }

private:
    // Smooth from 0 to 1 between two times.
    static double Part(double t, double from, double to)
    {
        const double part = std::fmin(1.0, std::fmax(0.0, (t - from) / (to - from)));
        return 0.5 - 0.5 * std::cos(live_pole::kPi * part);
    }

    static double Lean(double t)
    {
        constexpr double kPeriod = kPoint / static_cast<double>(kRate);
        constexpr double kRocked = 4.0 * live_pole::kPi / 1.5; // two swings [s]
        const double at = t - kPeriod * std::floor(t / kPeriod);
        const double rocking =
            at > 4.0 && at < 4.0 + kRocked ? 8.0 - 8.0 * std::cos(1.5 * (at - 4.0)) : 0.0;
        return 5.0 + 7.0 * (Part(at, 0.5, 3.0) - Part(at, kFromPoint, 17.5)) + rocking;
    }

    static xyhCoordinate TipAt(double t)
    {
        constexpr double kPeriod = kPoint / static_cast<double>(kRate);
        static constexpr std::array<std::array<double, 2>, 4> kCorners = {
            {{0.0, 0.0}, {kSide, 0.0}, {kSide, kSide}, {0.0, kSide}}
        };
        const auto point = static_cast<std::size_t>(t / kPeriod) % 4;
        const double part = Part(t - kPeriod * std::floor(t / kPeriod), kFromPoint, kToPoint);
        const auto& from = kCorners[point];
        const auto& to = kCorners[(point + 1) % 4];
        return {from[0] + part * (to[0] - from[0]), from[1] + part * (to[1] - from[1]), 0.0};
    }

    // Of the antenna over ground, without the noise of its positions [m/s].
    static double SpeedAt(double t)
    {
        constexpr double kStep = 0.01;
        const xyhCoordinate a = TipAt(t);
        const xyhCoordinate b = TipAt(t + kStep);
        const double swing = 2.0 / field_tests::kRadian * (Lean(t + kStep) - Lean(t));
        return std::hypot(b.x - a.x, b.y - a.y, swing) / kStep;
    }

    std::vector<live_pole::TrackRow> m_rows;
};

} // namespace soak
