// SPDX-License-Identifier: MIT
//
// A rigid pole on a tip for tests: attitude as a function of time, and what sensors 1.8 m up the pole and
// an antenna at its top read of it. Rates and accelerations are differences of the attitude.
#pragma once

#include "field/Occupation.h"

#include <Eigen/Geometry>

#include <cmath>
#include <cstddef>
#include <functional>
#include <random>
#include <vector>

namespace field_tests {

inline constexpr double kRadian = 57.29577951308232;
inline constexpr double kStandardGravity = 9.80665;
inline constexpr xyhCoordinate kTip{238540.0, 650135.0, 112.5};

struct PoleErrors
{
    bool noise = true;
    double length = 2.0;  // true length [m]
    double delay = 0.0;   // antenna epochs are stamped this much too early [s]
    double heading = 2.0; // of the magnetometer [degrees]
    double stepAt = 1e9;  // of the tip [s]
    double step = 0.0;    // to the north [m]
    double bias = 0.0;    // of the gyro about x [degrees/s]
    double rateFactor = 1.0;
    double circling = 0.0;  // of the lean about the vertical [degrees/s]
    bool exchanged = false; // gyro x and y
    bool frozenAntenna = false;
    double accelerometer = 0.1; // bias about x [degrees]
    double pitch = 0.0;         // what is reported too much [degrees]
    double gapFrom = 1e9, gapTo = 1e9;
};

class SimulatedPole
{
public:
    // Lean [degrees] at a time [s], towards an azimuth; the sensor's forward axis is led with it.
    using Lean = std::function<double(double)>;

    SimulatedPole(Lean lean, double azimuth, PoleErrors errors, unsigned seed)
        : m_lean(std::move(lean)), m_azimuth(azimuth), m_errors(errors), m_random(seed)
    {}

    // Sensor to north, west, up.
    Eigen::Matrix3d Attitude(double t) const
    {
        using Eigen::AngleAxisd;
        using Eigen::Vector3d;
        const double azimuth = (m_azimuth + m_errors.circling * t) / kRadian;
        return (AngleAxisd(-azimuth, Vector3d::UnitZ())
                * AngleAxisd(m_lean(t) / kRadian, Vector3d::UnitY())
                * AngleAxisd(0.5, Vector3d::UnitZ()))
            .toRotationMatrix();
    }

    field::InertialSample Sample(double t)
    {
        constexpr double h = 1e-3;
        const Eigen::Matrix3d r = Attitude(t);
        const Eigen::AngleAxisd turn(
            Eigen::Matrix3d(Attitude(t - h).transpose() * Attitude(t + h)));
        Eigen::Vector3d rate = turn.angle() / (2.0 * h) * kRadian * turn.axis();
        const Eigen::Vector3d motion =
            1.8 * (Attitude(t - h) - 2.0 * r + Attitude(t + h)).col(2) / (h * h * kStandardGravity);
        Eigen::Vector3d force = r.transpose() * (motion + Eigen::Vector3d::UnitZ());
        const double off = m_errors.heading / kRadian;
        Eigen::Vector3d magnetic =
            r.transpose() * Eigen::Vector3d(20.0 * std::cos(off), 20.0 * std::sin(off), -45.0);
        if (m_errors.noise) {
            rate += Noise(0.1) + Eigen::Vector3d(0.02, -0.02, 0.01);
            force += Noise(0.002) + Eigen::Vector3d(0.0, m_errors.accelerometer / kRadian, 0.0);
        }
        rate.x() += m_errors.bias;
        rate *= m_errors.rateFactor;
        if (m_errors.exchanged) std::swap(rate.x(), rate.y());
        field::InertialSample sample;
        sample.seconds = t;
        sample.rate = {rate.x(), rate.y(), rate.z()};
        sample.acceleration = {force.x(), force.y(), force.z()};
        sample.magnetic = {magnetic.x(), magnetic.y(), magnetic.z()};
        sample.tilt.pitch = kRadian * std::asin(r(2, 0)) + m_errors.pitch;
        sample.tilt.roll = kRadian * std::asin(r(2, 1));
        return sample;
    }

    // Errors of the antenna repeat within a second, as those of a receiver do.
    field::AntennaEpoch Epoch(double t)
    {
        const double shown = m_errors.frozenAntenna ? 0.0 : t + m_errors.delay;
        const Eigen::Vector3d pole = m_errors.length * Attitude(shown).col(2);
        if (m_errors.noise && std::floor(t) != m_second) {
            m_second = std::floor(t);
            m_plan = Noise(0.003);
            m_plan.z() *= 2.0;
        }
        const double step = t > m_errors.stepAt ? m_errors.step : 0.0;
        return {
            t,
            {kTip.x + pole.x() + m_plan.x() + step, kTip.y - pole.y() + m_plan.y(),
              kTip.h + pole.z() + m_plan.z()},
            0.0,
            0.0
        };
    }

    // Samples at 100 Hz, epochs at 5 Hz.
    void Feed(field::Occupation& occupation, double seconds)
    {
        for (int i = 0; i <= static_cast<int>(100.0 * seconds); ++i) {
            const double t = 0.01 * i;
            if (t <= m_errors.gapFrom || t >= m_errors.gapTo) occupation.Add(Sample(t));
            if (i % 20 == 0) occupation.Add(Epoch(t));
        }
    }

private:
    Eigen::Vector3d Noise(double sigma)
    {
        std::normal_distribution<double> normal(0.0, sigma);
        const double x = normal(m_random);
        const double y = normal(m_random);
        return {x, y, normal(m_random)};
    }

    Lean m_lean;
    double m_azimuth;
    PoleErrors m_errors;
    std::mt19937 m_random;
    double m_second = -1.0;
    Eigen::Vector3d m_plan = Eigen::Vector3d::Zero();
};

// What is read of a pole within some seconds. The time of sample i is that of epoch i / every.
struct PoleLog
{
    std::size_t every; // samples for each epoch
    std::vector<field::InertialSample> samples;
    std::vector<field::AntennaEpoch> epochs;

    PoleLog(SimulatedPole pole, double seconds, double rate, std::size_t samplesPerEpoch)
        : every(samplesPerEpoch)
    {
        const auto count = static_cast<std::size_t>(std::lround(seconds * rate)) + 1;
        for (std::size_t i = 0; i < count; ++i) {
            const double t = static_cast<double>(i) / rate;
            samples.push_back(pole.Sample(t));
            if (i % every == 0) epochs.push_back(pole.Epoch(t));
        }
    }

    // Adds sample i, and the epoch of its time if there is one.
    void Give(field::Occupation& occupation, std::size_t i) const
    {
        occupation.Add(samples[i]);
        if (i % every == 0) occupation.Add(epochs[i / every]);
    }
};

// From 5 to `to` degrees within 2.5 s, then at rest.
inline SimulatedPole::Lean LeanIn(double to)
{
    return [to](double t) {
        const double part = std::fmin(1.0, std::fmax(0.0, (t - 0.5) / 2.5));
        return 5.0 + (to - 5.0) * 0.5 * (1.0 - std::cos(3.14159265358979 * part));
    };
}

// Held at `lean` for 8 s, led to the opposite lean within 8 s, held there.
inline SimulatedPole::Lean LedOver(double lean)
{
    return [lean](double t) {
        const double part = std::fmin(1.0, std::fmax(0.0, (t - 8.0) / 8.0));
        return -lean * std::cos(3.14159265358979 * part);
    };
}

inline SimulatedPole::Lean Rock(double amplitude)
{
    return [amplitude](double t) { return amplitude * std::sin(2.5 * t); };
}

inline SimulatedPole::Lean Hold(double lean)
{
    return [lean](double) { return lean; };
}

} // namespace field_tests
