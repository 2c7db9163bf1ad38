// SPDX-License-Identifier: MIT
#include "simulation/LogText.h"

#include <fmt/format.h>
#include <iterator>
#include <utility>

namespace simulation {

namespace {

constexpr int kAngleDecimals = 8;
constexpr int kCountDecimals = 6;
constexpr int kMetreDecimals = 6;
constexpr int kSecondDecimals = 3;
constexpr int kSecondDecimalsOfPoint = 6;
constexpr std::size_t kBytesPerLine = 400;

constexpr const char* kSensorColumns =
    "Index,Time,dPitch,dRoll,dRot,dGyro_x,dGyro_y,dGyro_z,dAcc_x,dAcc_y,dAcc_z,"
    "dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2";
constexpr const char* kPoseTruthColumns =
    "seconds,heading_true,pitch_true,roll_true,disturbed_true";

// A growing text, field by field.
class Lines
{
public:
    explicit Lines(std::size_t count) { m_text.reserve((count + 1) * kBytesPerLine); }

    void Text(const char* text) { m_text += text; }

    template <class... Values>
    void Numbers(int decimals, Values... values)
    {
        (fmt::format_to(std::back_inserter(m_text), ",{:.{}f}", values, decimals), ...);
    }

    void Whole(long long value) { fmt::format_to(std::back_inserter(m_text), ",{}", value); }
    void Points(const Point3& p) { Numbers(kMetreDecimals, p.x, p.y, p.z); }

    void Sensor(std::size_t index, const PoseSensorData& s)
    {
        fmt::format_to(std::back_inserter(m_text), "{},{:02}:{:02}:{:02}", index, s.nHour,
                       s.nMinute, s.nSecond);
        Numbers(kAngleDecimals, s.dPitch, s.dRoll, s.dRot);
        InertialAndMagnetic(s);
    }

    void SensorAt(int point, double seconds, const PoseSensorData& s)
    {
        fmt::format_to(std::back_inserter(m_text), "{}", point);
        Numbers(kSecondDecimalsOfPoint, seconds);
        Numbers(kAngleDecimals, s.dPitch, s.dRoll);
        InertialAndMagnetic(s);
    }

    void InertialAndMagnetic(const PoseSensorData& s)
    {
        Numbers(kAngleDecimals, s.dGyro_x, s.dGyro_y, s.dGyro_z, s.dAcc_x, s.dAcc_y, s.dAcc_z);
        Numbers(kCountDecimals, s.dMag_x, s.dMag_y, s.dMag_z, s.dMag_x_2, s.dMag_y_2, s.dMag_z_2);
    }

    void Truth(const PoseTruth& truth)
    {
        Numbers(kSecondDecimals, truth.seconds);
        Numbers(kAngleDecimals, truth.angles.heading, truth.angles.pitch, truth.angles.roll);
        Whole(truth.disturbed ? 1 : 0);
    }

    std::string Take() { return std::move(m_text); }

private:
    std::string m_text;
};

} // namespace

std::string TextOf(const Recording& recording)
{
    Lines lines(recording.samples.size());
    lines.Text(kSensorColumns);
    lines.Text(",");
    lines.Text(kPoseTruthColumns);
    lines.Text("\n");
    for (std::size_t i = 0; i < recording.samples.size(); ++i) {
        lines.Sensor(i, recording.samples[i]);
        lines.Truth(recording.truth[i]);
        lines.Text("\n");
    }
    return lines.Take();
}

std::string TextOf(const Walk& walk)
{
    Lines lines(walk.samples.size());
    lines.Text(kSensorColumns);
    lines.Text(",x,y,h,");
    lines.Text(kPoseTruthColumns);
    lines.Text(",point_true,tip_x_true,tip_y_true,tip_h_true,"
               "antenna_x_true,antenna_y_true,antenna_h_true\n");
    for (std::size_t i = 0; i < walk.samples.size(); ++i) {
        const WalkTruth& truth = walk.truth[i];
        lines.Sensor(i, walk.samples[i]);
        lines.Points(walk.antenna[i]);
        lines.Truth(truth.pose);
        lines.Whole(truth.point);
        lines.Points(truth.tip);
        lines.Points(truth.antenna);
        lines.Text("\n");
    }
    return lines.Take();
}

std::string TextOf(const Occupations& log)
{
    Lines lines(log.rows.size());
    lines.Text("point,seconds,dPitch,dRoll,dGyro_x,dGyro_y,dGyro_z,dAcc_x,dAcc_y,dAcc_z,"
               "dMag_x,dMag_y,dMag_z,dMag_x_2,dMag_y_2,dMag_z_2,x,y,h,"
               "heading_true,pitch_true,roll_true,disturbed_true,tip_x_true,tip_y_true,"
               "tip_h_true\n");
    for (const OccupationRow& row : log.rows) {
        const PoseTruth& pose = row.truth.pose;
        lines.SensorAt(row.point, pose.seconds, row.sample);
        if (row.antenna)
            lines.Points(*row.antenna);
        else
            lines.Text(",,,");
        lines.Numbers(kAngleDecimals, pose.angles.heading, pose.angles.pitch, pose.angles.roll);
        lines.Whole(pose.disturbed ? 1 : 0);
        lines.Points(row.truth.tip);
        lines.Text("\n");
    }
    return lines.Take();
}

std::string TipsOf(const Occupations& log)
{
    Lines lines(log.points.size());
    lines.Text("point,N,E,h,N_end,E_end,h_end\n");
    for (std::size_t i = 0; i < log.points.size(); ++i) {
        lines.Text(fmt::format("{}", i + 1).c_str());
        lines.Points(log.points[i].tip);
        lines.Points(log.points[i].tipAtEnd);
        lines.Text("\n");
    }
    return lines.Take();
}

std::string TextOf(const std::vector<AntennaPosition>& positions)
{
    Lines lines(positions.size());
    lines.Text("name,x,y,h,incline,x_true,y_true,h_true,incline_true,azimuth_true,outlier_true\n");
    for (std::size_t i = 0; i < positions.size(); ++i) {
        const AntennaPosition& p = positions[i];
        lines.Text(fmt::format("P{:02}", i + 1).c_str());
        lines.Points(p.antenna);
        lines.Numbers(kAngleDecimals, p.incline);
        lines.Points(p.truth);
        lines.Numbers(kAngleDecimals, p.lean, p.azimuth);
        lines.Whole(p.outlier ? 1 : 0);
        lines.Text("\n");
    }
    return lines.Take();
}

} // namespace simulation
