// SPDX-License-Identifier: MIT
//
// What a receiver and a pose sensor send of a pole, as records for field::Play. The poles are
// examples/pole-replay.csv, a recorded motion about a known tip, laid about a geodetic place, and one
// that stands still.
//
//     const Track track = ReplayTrack();
//     const auto records = RecordsOf(track, {.delay = 0.12});
//
// The sentences are written here, independently of the library's writer.
#pragma once

#include "field/Bridge.h"
#include "field/ExactAttitude.h"
#include "field/Geodesy.h"
#include "field/Recording.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace live_pole {

using field::Instant;
using field::Record;

inline constexpr field::Geodetic kTip{47.57, 19.0, 150.0};
inline constexpr double kSeparation = 39.429; // of the geoid [m]
inline constexpr double kStart = 47278.0;     // 13:07:58 UTC [s]
inline constexpr double kFirst = 1.0;         // instant of the track's first pose [s]
inline constexpr double kLink = 0.003;        // of the pose sensor's line [s]
inline constexpr double kPi = 3.14159265358979323846;

inline Instant InstantOf(double seconds)
{
    return std::chrono::microseconds(std::llround(seconds * 1e6));
}

/// What the sensor reads, and where the antenna is relative to the tip.
struct TrackRow
{
    double seconds = 0.0; ///< from 0
    double pitch = 0.0;
    double roll = 0.0;
    std::array<double, 12> readings{}; ///< A, B, gyro, acceleration: x, y, z each
    xyhCoordinate antenna;             ///< north, east, up of the tip [m]
};
using Track = std::vector<TrackRow>;

/// The columns of examples/pole-replay.csv; its tip is N 238540, E 650135, h 112.5.
inline Track ReplayTrack()
{
    std::ifstream file(TILTPOLE_SOURCE_DIR "/examples/pole-replay.csv");
    std::string line;
    std::getline(file, line);
    Track track;
    while (std::getline(file, line)) {
        std::array<double, 22> values{};
        std::istringstream cells(line);
        std::string cell;
        for (double& value : values) {
            std::getline(cells, cell, ',');
            std::from_chars(cell.data(), cell.data() + cell.size(), value);
        }
        TrackRow row;
        row.seconds = values[20];
        row.pitch = values[2];
        row.roll = values[3];
        for (std::size_t i = 0; i < 6; ++i) {
            row.readings[i] = values[11 + i];
            row.readings[6 + i] = values[5 + i];
        }
        row.antenna = {values[17] - 238540.0, values[18] - 650135.0, values[19] - 112.5};
        track.push_back(row);
    }
    const double first = track.front().seconds;
    for (TrackRow& row : track)
        row.seconds -= first;
    return track;
}

/// Magnetometer of a field of 500 counts and a dip of 64 degrees, heading from magnetic north.
inline field::SensorVector FieldOn(const field::Tilt& tilt, double heading)
{
    const field::LevelAxes axes = field::LevelAxesOf(tilt);
    const double h = heading * kPi / 180.0;
    const double flat = 500.0 * std::cos(64.0 * kPi / 180.0);
    const double down = 500.0 * std::sin(64.0 * kPi / 180.0);
    const auto along = [&](double f, double l, double u) {
        return flat * (std::cos(h) * f + std::sin(h) * l) - down * u;
    };
    return {along(axes.forward.x, axes.left.x, axes.up.x),
            along(axes.forward.y, axes.left.y, axes.up.y),
            along(axes.forward.z, axes.left.z, axes.up.z)};
}

/// A pole of 2 m that stands still but for the sensor's noise; headings from true north.
inline Track StandingTrack(double seconds, double pitch = 6.0, double roll = -4.0,
                           double heading = 40.0, double rate = 50.0)
{
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0.0, 0.3); // [counts]
    field::Tilt tilt;
    tilt.pitch = pitch;
    tilt.roll = roll;
    const field::SensorVector m = FieldOn(tilt, heading);
    const field::SensorVector force = field::LevelAxesOf(tilt).up;
    const xyhCoordinate up = field::PoleDirection(tilt, heading);
    Track track;
    for (int i = 0; i < static_cast<int>(seconds * rate); ++i) {
        TrackRow row;
        row.seconds = i / rate;
        row.pitch = pitch;
        row.roll = roll;
        const std::array<double, 3> a{m.x + noise(random), m.y + noise(random),
                                      m.z + noise(random)};
        row.readings = {a[0], a[1], a[2], -a[0], -a[1], a[2], 0, 0, 0, force.x, force.y, force.z};
        row.antenna = {2.0 * up.x, 2.0 * up.y, 2.0 * up.h};
        track.push_back(row);
    }
    return track;
}

/// What an epoch says; tests change it before it is written.
struct EpochFields
{
    double seconds = 0.0; ///< of the track
    double utc = 0.0;     ///< of the day [s]
    std::string time;     ///< instead of `utc`
    field::Geodetic antenna;
    int quality = 4;
    int satellites = 12;
    std::string age = "1.0";
    std::string station = "0207";
    std::array<double, 3> sigma{0.008, 0.008, 0.015};
    double speed = 0.0; ///< [m/s]
    bool send = true;
    bool gst = true;
    bool rmc = true;
    std::string date = "221126";
    int decimals = 7; ///< of minutes
};

/// What a pose says, likewise.
struct PoseFields
{
    double seconds = 0.0;
    std::string milliseconds;
    double pitch = 0.0;
    double roll = 0.0;
    std::string heading;
    std::array<double, 12> readings{};
    bool send = true;
};

struct Options
{
    double epochRate = 10.0;
    double delay = 0.12; ///< of the epochs [s]
    std::function<void(EpochFields&)> epoch = [](EpochFields&) {};
    std::function<void(PoseFields&)> pose = [](PoseFields&) {};
};

template <class... Values>
std::string Printed(const char* format, Values... values)
{
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

inline std::string WithChecksum(const std::string& body)
{
    unsigned sum = 0;
    for (const char c : body)
        sum ^= static_cast<unsigned char>(c);
    return '$' + body + Printed("*%02X\r\n", sum);
}

inline std::string AngleText(double degrees, int wholeDigits, int decimals, char positive,
                             char negative)
{
    // In units of the last digit: rounding never leaves 60 minutes.
    const double unit = std::pow(10.0, decimals);
    const auto units = std::llround(std::fabs(degrees) * 60.0 * unit);
    const auto degree = std::llround(60.0 * unit);
    return Printed("%0*d%0*.*f,%c", wholeDigits, static_cast<int>(units / degree), decimals + 3,
                   decimals, static_cast<double>(units % degree) / unit,
                   degrees < 0.0 ? negative : positive);
}

inline std::string TimeText(double utc)
{
    const auto hundredths = std::llround(utc * 100.0);
    const auto s = hundredths / 100;
    return Printed("%02d%02d%02d.%02d", static_cast<int>(s / 3600), static_cast<int>(s / 60 % 60),
                   static_cast<int>(s % 60), static_cast<int>(hundredths % 100));
}

inline std::string EpochText(const EpochFields& e)
{
    const std::string time = e.time.empty() ? TimeText(e.utc) : e.time;
    const std::string place = AngleText(e.antenna.latitude, 2, e.decimals, 'N', 'S') + ','
                              + AngleText(e.antenna.longitude, 3, e.decimals, 'E', 'W');
    const std::string height =
        Printed("%.4f,M,%.3f,M", e.antenna.ellipsoidalHeight - kSeparation, kSeparation);
    const bool none = e.quality == 0;
    std::string text =
        WithChecksum("GNGGA," + time + ',' + (none ? ",,," : place) + ','
                     + std::to_string(e.quality) + ',' + Printed("%02d", e.satellites) + ",0.72,"
                     + (none ? ",M,,M" : height) + ',' + e.age + ',' + e.station);
    if (e.rmc)
        text += WithChecksum("GNRMC," + time + (none ? ",V," : ",A,") + (none ? ",,," : place)
                             + Printed(",%.3f,,", e.speed / 0.514444) + e.date + ",,,"
                             + (none ? "N,V" : "R,V"));
    if (e.gst)
        text += WithChecksum("GNGST," + time
                             + Printed(",,,,,%.4f,%.4f,%.4f", e.sigma[0], e.sigma[1], e.sigma[2]));
    return text;
}

inline std::string PoseText(const PoseFields& p)
{
    std::string body =
        "PTPS,1," + p.milliseconds + Printed(",%.4f,%.4f,", p.pitch, p.roll) + p.heading;
    for (const double value : p.readings)
        body += Printed(",%.5f", value);
    return WithChecksum(body);
}

/// The antenna between the rows around a time, and its speed; none where the track pauses.
inline std::optional<xyhCoordinate> AntennaAt(const Track& track, double seconds, double& speed)
{
    std::size_t later = 1;
    while (later + 1 < track.size() && track[later].seconds < seconds)
        ++later;
    const TrackRow& a = track[later - 1];
    const TrackRow& b = track[later];
    if (b.seconds - a.seconds > 0.05) return std::nullopt;
    const double part = (seconds - a.seconds) / (b.seconds - a.seconds);
    const xyhCoordinate d{b.antenna.x - a.antenna.x, b.antenna.y - a.antenna.y,
                          b.antenna.h - a.antenna.h};
    speed = std::hypot(d.x, d.y, d.h) / (b.seconds - a.seconds);
    return xyhCoordinate{a.antenna.x + part * d.x, a.antenna.y + part * d.y,
                         a.antenna.h + part * d.h};
}

/// What arrives of a track, in order.
inline std::vector<Record> RecordsOf(const Track& track, const Options& options = {})
{
    std::vector<Record> records;
    for (const TrackRow& row : track) {
        PoseFields pose;
        pose.seconds = row.seconds;
        pose.milliseconds = std::to_string(std::llround(1000.0 * row.seconds) + 5000);
        pose.pitch = row.pitch;
        pose.roll = row.roll;
        pose.readings = row.readings;
        options.pose(pose);
        if (!pose.send) continue;
        records.push_back(
            {InstantOf(kFirst + row.seconds + kLink), field::Channel::Pose, PoseText(pose)});
    }
    const double last = track.back().seconds;
    for (int i = 1; i / options.epochRate < last; ++i) {
        EpochFields epoch;
        epoch.seconds = i / options.epochRate;
        epoch.utc = kStart + epoch.seconds;
        const auto at = AntennaAt(track, epoch.seconds, epoch.speed);
        if (!at) continue;
        epoch.antenna = field::Offset(kTip, at->x, at->y, at->h);
        options.epoch(epoch);
        if (!epoch.send) continue;
        records.push_back({InstantOf(kFirst + epoch.seconds + options.delay),
                           field::Channel::Receiver, EpochText(epoch)});
    }
    std::ranges::stable_sort(records, {}, &Record::at);
    return records;
}

/// The setup of the tracks: pole of 2 m, all keys of the calibration, readings that need no correction.
inline field::Setup TrackSetup()
{
    field::Setup setup;
    setup.poleLength = 2.0;
    setup.delay = 0.12 - kLink;
    setup.delaySigma = 0.007;
    setup.headingSigma = 1.0;
    setup.north = field::NorthSource::File;
    setup.calibration.bytes = "[file]";
    setup.calibration.complete = true;
    return setup;
}

/// That of pole-replay.csv, whose room has magnetic north 0.75 degrees beside its zero.
inline field::Setup ReplaySetup()
{
    field::Setup setup = TrackSetup();
    setup.calibration.sensor.SetMagneticBiasAngle_A(0.75);
    setup.calibration.sensor.SetMagneticBiasAngle_B(0.75);
    return setup;
}

} // namespace live_pole
