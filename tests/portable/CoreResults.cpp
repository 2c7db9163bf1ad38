// SPDX-License-Identifier: MIT
//
// Prints what the core computes of simulated and recorded input.
#include "calibration/InclineSensor_Filter_XY.h"
#include "calibration/InclineSensor_Filter_XZ.h"
#include "calibration/InclineSensor_MagneticAdjust.h"
#include "calibration/KFilter.h"
#include "framework/core/ParseNumber.h"
#include "framework/core/TextConversion.h"
#include "geometry/MagneticConvert.h"
#include "geometry/TiltPosition_Geometry.h"
#include "matrix/SZMatrix.h"
#include "matrix/TiltMatrix.h"
#include "positioning/InclineSensor_Position.h"
#include "simulation/Points.h"
#include "simulation/Turn.h"
#include "simulation/Walk.h"
#include "tests/portable/PointSets.h"
#include "tests/portable/Print.h"
#include "tests/reference/Turns.h"
#include "tests/simulation/TestSensors.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

using portable::Bytes;
using portable::Decision;
using portable::Name;
using portable::Number;
using portable::PlanOfSet;
using simulation::Generator;
using simulation::Stream;
using simulation::TurnAxis;

void Text(const std::string& name, const CString& text)
{
    Bytes(name, framework::ToUtf8(std::wstring_view(text.GetString(),
                                                    static_cast<std::size_t>(text.GetLength()))));
}

// The parameters that undo the simulated sensor, and a translation and bias angles.
void Calibrate(CInclineSensor_Position& pole, const simulation::PoseSensor& sensor)
{
    pole.SetSensorType(sensor.type);
    pole.SetMagneticCorrectPar_A(*simulation::CorrectionOf(sensor.a));
    pole.SetMagneticCorrectPar_B(*simulation::CorrectionOf(sensor.b));
    pole.SetMagneticTranslationPar({1.5, -2.25, 0.75});
    pole.SetMagneticBiasAngle_A(3.5);
    pole.SetMagneticBiasAngle_B(-176.25);
}

void PrintTip(const std::string& name, const xyhCoordinate& tip, const simulation::Point3& antenna)
{
    const double length = 2.0;
    Number(name + ".x", tip.x - antenna.x, length);
    Number(name + ".y", tip.y - antenna.y, length);
    Number(name + ".h", tip.h - antenna.z, length);
}

// Every sample of a walk, by the one pass and by the operations called one by one.
void PrintPositions(int type)
{
    const simulation::PoseSensor sensor = simulation::test::DistortedSensor(type);
    simulation::WalkPlan plan;
    plan.points = 4;
    plan.rate = 5.0;
    plan.start = {500.0, 300.0, 100.0}; // small: the step to the tip keeps its digits
    plan.magnets.push_back({.from = 12.0, .to = 15.0, .strength = 80.0, .azimuth = 40.0});
    const simulation::Walk walk =
        simulation::SimulateWalk(sensor, {}, plan, static_cast<std::uint64_t>(type));
    CInclineSensor_Position pole;
    CInclineSensor_Position steps;
    Calibrate(pole, sensor);
    Calibrate(steps, sensor);
    for (std::size_t i = 0; i < walk.samples.size(); ++i) {
        const std::string name = Name(Name("walk", type), static_cast<int>(i));
        const simulation::Point3& antenna = walk.antenna[i];
        const xyhCoordinate start{antenna.x, antenna.y, antenna.z};

        PoseSensorData sample = walk.samples[i];
        xyhCoordinate tip = start;
        Decision(name + ".result", pole.Position(sample, 2.0, tip));
        PrintTip(name, tip, antenna);
        Number(name + ".yaw", sample.dYaw, 360.0);
        Number(name + ".yaw_2", sample.dYaw_2, 360.0);
        Number(name + ".yaw_y", sample.dYaw_Y, 360.0);
        Decision(name + ".stationary", pole.IsStationary());
        Decision(name + ".interference", pole.IsMagneticInterference());

        PoseSensorData corrected = walk.samples[i];
        steps.CalculateYaw_A(corrected);
        steps.CalculateYaw_B(corrected);
        Number(name + ".step_yaw", corrected.dYaw, 360.0);
        Number(name + ".corrected", corrected.dMag_y_2, 500.0);
        xyhCoordinate other;
        Decision(name + ".b", steps.Position_Geometry_B(start, corrected, 2.0, other));
        PrintTip(name + ".b", other, antenna);
        Decision(name + ".math", steps.Position_Math(start, corrected, 2.0, other));
        PrintTip(name + ".math", other, antenna);
    }
}

void PrintParameters(const std::string& name, const Incline_MagneticCorrectParameter& par)
{
    for (const double offset : {par.x0, par.y0, par.z0})
        Number(name + ".offset", offset, 500.0);
    for (const double share : {par.a, par.b, par.c, par.d, par.e})
        Number(name + ".share", share, 1.0);
}

// What a filter keeps of a turn.
template <class Filter>
void PrintFilter(const std::string& name, const std::vector<PoseSensorData>& turn)
{
    Filter filter;
    int completeAt = -1;
    for (std::size_t i = 0; i < turn.size(); ++i) {
        filter.Add(new PoseSensorData(turn[i]));
        if (i % 10 == 0) Decision(name + ".rate", filter.GetRecordRate());
        if (completeAt < 0 && filter.IsRecordOK()) completeAt = static_cast<int>(i);
    }
    Decision(name + ".complete", completeAt);
    const std::unique_ptr<typename Filter::Samples> kept(filter.Filter());
    const PoseSensorCenterParameter center = filter.GetCenterPar();
    Decision(name + ".valid", center.nValid);
    for (const double value : {center.dX, center.dY, center.dZ, center.dRadius})
        Number(name + ".center", value, 500.0);
    Decision(name + ".kept", kept ? kept->GetSize() : -1);
    for (INT_PTR i = 0; kept && i < kept->GetSize(); ++i) {
        const PoseSensorData& sample = *kept->GetAt(i);
        Number(name + ".azimuth", sample.dAzimuth, 360.0);
        Decision(name + ".flag", sample.GetTurnFlag());
    }
}

void PrintAdjustment(const std::string& name, const std::vector<PoseSensorData>& horizontal,
                     const std::vector<PoseSensorData>& vertical)
{
    CInclineSensor_MagneticAdjust adjust;
    for (const PoseSensorData& sample : horizontal)
        adjust.Horizontal_Add(&sample);
    for (const PoseSensorData& sample : vertical)
        adjust.Vertical_Add(&sample);
    const int result = adjust.Adjust();
    Decision(name + ".adjust", result);
    if (result != 1) return;
    PrintParameters(name + ".a", adjust.GetCorrectPar_A());
    PrintParameters(name + ".b", adjust.GetCorrectPar_B());
    const Incline_MagneticTranslationParameter translation = adjust.GetCoorTrans();
    for (const double value : {translation.dX, translation.dY, translation.dZ})
        Number(name + ".translation", value, 500.0);
}

void PrintCalibrations()
{
    for (int seed = 0; seed < 12; ++seed) {
        simulation::PoseSensor sensor = simulation::test::DistortedSensor(1 + seed % 2);
        sensor.a.noise = sensor.b.noise = seed % 3;
        sensor.magneticStep = seed % 4 == 3 ? 1.0 : 0.0;
        std::vector<PoseSensorData> turns[2];
        for (const TurnAxis axis : {TurnAxis::Horizontal, TurnAxis::Vertical}) {
            const simulation::TurnPlan plan{.axis = axis,
                                            .samples = 400,
                                            .extent = seed % 5 == 4 ? -380.0 : 380.0,
                                            .startHeading = 20.0 + 7.0 * seed,
                                            .axisError = 0.2 * seed,
                                            .wobble = 0.1 * seed};
            turns[axis == TurnAxis::Vertical] =
                simulation::SimulateTurn(sensor, {}, plan, static_cast<std::uint64_t>(seed))
                    .samples;
        }
        const std::string name = Name("turns", seed);
        PrintFilter<CInclineSensor_Filter_XY>(name + ".xy", turns[0]);
        PrintFilter<CInclineSensor_Filter_XZ>(name + ".xz", turns[1]);
        PrintAdjustment(name, turns[0], turns[1]);
    }
    // A recorded motion in whole counts, in which many azimuths are equal.
    const std::vector<PoseSensorData> recorded = turns::Recorded();
    PrintFilter<CInclineSensor_Filter_XY>("recorded.xy", recorded);
    PrintFilter<CInclineSensor_Filter_XZ>("recorded.xz", recorded);
    PrintAdjustment("recorded", recorded, recorded);
}

void PrintTips()
{
    for (int set = 0; set < 24; ++set) {
        const simulation::PointsPlan plan = PlanOfSet(set, 3 + 2 * set, 0.001 * (set % 5));
        CTiltPosition_Geometry geometry;
        geometry.SetAntennaHeight(set % 8 == 7 ? 1.9 : 2.0);
        const std::string name = Name("tip", set);
        for (const simulation::AntennaPosition& position :
             simulation::SimulatePoints(plan, static_cast<std::uint64_t>(set))) {
            TiltPoint_Sensor point;
            point.dX = position.antenna.x;
            point.dY = position.antenna.y;
            point.dH = position.antenna.z;
            point.dIncline = position.incline;
            Decision(name + ".conform", geometry.IsConform(point, 0.05));
            Decision(name + ".add", geometry.AddPoint(point));
        }
        Decision(name + ".ok", geometry.IsOK());
        xyhCoord tip;
        TiltPoint_State state;
        Decision(name + ".result", geometry.Calculate(tip, state));
        Decision(name + ".status", state.nStatus);
        Number(name + ".x", tip.x, 2.0);
        Number(name + ".y", tip.y, 2.0);
        Number(name + ".h", tip.h, 2.0);
        Number(name + ".radius", state.dRadius, 2.0);
        Number(name + ".excess", state.dRadiusExcess, 2.0);
        Number(name + ".error", state.dPointError, 2.0);
        Number(name + ".figure", state.dGeometryFigure);
        Number(name + ".cofactor", state.dHeightCofactor);
    }
}

void PrintMatrix(const std::string& name, const CSZMatrix& matrix, double size)
{
    Decision(name + ".healthy", matrix.isMatrixHealthy());
    Decision(name + ".rows", matrix.getRowSize());
    Decision(name + ".columns", matrix.getColSize());
    for (int r = 0; r < matrix.getRowSize(); ++r)
        for (int c = 0; c < matrix.getColSize(); ++c)
            Number(name, matrix.GetData(r, c), size);
}

void PrintMatrix(const std::string& name, const CTiltMatrix& matrix, double size)
{
    Decision(name + ".valid", matrix.IsValid());
    Decision(name + ".rows", static_cast<int>(matrix.GetRow()));
    for (unsigned r = 0; r < matrix.GetRow(); ++r)
        for (unsigned c = 0; c < matrix.GetCol(); ++c)
            Number(name, matrix.GetData(r, c), size);
}

void PrintMatrices(int n)
{
    Generator random(static_cast<std::uint64_t>(n), Stream::Placement);
    CSZMatrix square(n, n);
    CSZMatrix tall(3 * n, n);
    CTiltMatrix tilt(static_cast<unsigned>(n), static_cast<unsigned>(n));
    for (int r = 0; r < 3 * n; ++r)
        for (int c = 0; c < n; ++c) {
            tall.SetData(r, c, random.Uniform(-1.0, 1.0));
            if (r >= n) continue;
            const double value = random.Uniform(-1.0, 1.0) + (r == c ? 3.0 : 0.0);
            square.SetData(r, c, value);
            tilt.SetData(static_cast<unsigned>(r), static_cast<unsigned>(c), value);
        }
    const CSZMatrix normal = tall.matTran() * tall;
    const double size = normal.norm();
    const std::string name = Name("matrix", n);
    PrintMatrix(name + ".normal", normal, size);
    PrintMatrix(name + ".inverse", square.matInv(), square.matInv().norm());
    PrintMatrix(name + ".solution", normal.matInv() * tall.matTran(), 1.0);
    CSZMatrix first;
    CSZMatrix second;
    Decision(name + ".cholesky", normal.cholesky(first));
    PrintMatrix(name + ".cholesky", first, size);
    Decision(name + ".not_definite", square.cholesky(first));
    Decision(name + ".ldl", normal.ldl(first, second));
    PrintMatrix(name + ".ldl.l", first, 1.0);
    PrintMatrix(name + ".ldl.d", second, size);
    Decision(name + ".udu", normal.udu(first, second));
    PrintMatrix(name + ".udu.u", first, 1.0);
    Decision(name + ".jacobi", normal.Jacobi(first, second, 1e-12));
    PrintMatrix(name + ".jacobi.v", first, 1.0);
    PrintMatrix(name + ".jacobi.d", second, size);
    Decision(name + ".qr", square.QR_Schmidt(first, second, 1e-12));
    PrintMatrix(name + ".qr.q", first, 1.0);
    PrintMatrix(name + ".qr.r", second, 3.0);
    Number(name + ".condition", square.condition());
    Number(name + ".infinite_norm", square.infiniteNorm());
    Text(name + ".text", square.toString(12, 6, 'f'));

    PrintMatrix(name + ".tilt_inverse", tilt.MatInv(), 1.0);
    PrintMatrix(name + ".reverse", tilt.Reverse(), 1.0);
    int status = 0;
    PrintMatrix(name + ".tilt_cholesky", (~tilt * tilt).matChole(&status), size);
    Decision(name + ".tilt_status", status);
    Decision(name + ".singular", tilt.IsMaxtrixSingular());
    Text(name + ".tilt_text", tilt.Output());
    if (n < 2) return;
    for (int c = 0; c < n; ++c) { // two equal rows: exactly singular
        square.SetData(1, c, square.GetData(0, c));
        tilt.SetData(1, static_cast<unsigned>(c), tilt.GetData(0, static_cast<unsigned>(c)));
    }
    Decision(name + ".singular_inverse", square.matInv().isMatrixHealthy());
    Decision(name + ".singular_tilt", tilt.IsMaxtrixSingular());
}

// A state of distance and speed, and one of three independent values.
void PrintKalman()
{
    Generator random(5, Stream::Placement);
    CKFilter track;
    track.SetMatrixOrder(2, 1);
    track.SetSystemMatrix(CSZMatrix(2, 2, 4, 1.0, 0.1, 0.0, 1.0), CSZMatrix(2, 2, MatZeros),
                          CSZMatrix(2, 1, 2, 0.005, 0.1), CSZMatrix(1, 2, 2, 1.0, 0.0),
                          CSZMatrix(1, 2, MatZeros));
    track.SetNoise(CSZMatrix(1, 1, 1, 0.01), CSZMatrix(1, 1, 1, 0.0001));
    track.SetInitialData(CSZMatrix(2, 1, MatZeros), CSZMatrix(2, 2, 4, 100.0, 0.0, 0.0, 100.0));
    CKFilter readings;
    readings.SetMatrixOrder(3, 3);
    readings.SetSystemMatrix(CSZMatrix(3, 3, MatIdentity), CSZMatrix(3, 3, MatZeros),
                             CSZMatrix(3, 3, MatIdentity), CSZMatrix(3, 3, MatIdentity),
                             CSZMatrix(3, 3, MatZeros));
    readings.SetNoise(CSZMatrix(3, 3, MatIdentity), CSZMatrix(3, 3, MatIdentity));
    readings.SetInitialData(CSZMatrix(3, 1, MatZeros), CSZMatrix(3, 3, MatIdentity));
    for (int i = 0; i < 100; ++i) {
        const double distance = 0.05 * i + 0.1 * random.Normal();
        PrintMatrix("kalman.track",
                    track.Filter(CSZMatrix(1, 1, 1, distance), CSZMatrix(2, 1, MatZeros)), 1.0);
        const double first = 300.0 + random.Normal(); // arguments have no order
        const double third = random.Normal();
        const CSZMatrix reading(3, 1, 3, first, 4.0 * i, third);
        PrintMatrix("kalman.readings", readings.Filter(reading, CSZMatrix(3, 1, MatZeros)), 300.0);
    }
}

void PrintTransforms()
{
    for (int set = 0; set < 20; ++set) {
        Generator random(static_cast<std::uint64_t>(set), Stream::Placement);
        CMagneticConvert convert;
        for (int i = 0; i < 1 + set; ++i) {
            const double x = random.Uniform(-1000.0, 1000.0);
            const double y = random.Uniform(-1000.0, 1000.0);
            convert.m_Points.Add({x, y, 400.0 - 0.8 * y + 0.01 * random.Normal(),
                                  250.0 + 0.8 * x + 0.01 * random.Normal()});
        }
        const std::string name = Name("transform", set);
        Decision(name + ".result", convert.CalFourParameter());
        const Magnetic_FourParameter found = convert.GetFourParameter();
        Number(name + ".scale", found.dScale);
        Number(name + ".rotate", found.dRotate);
        Number(name + ".dx", found.dDx, 1000.0);
        Number(name + ".dy", found.dDy, 1000.0);
        double x = 12.5;
        double y = -700.25;
        convert.XYtoXY(x, y);
        Number(name + ".x", x, 1000.0);
        Number(name + ".y", y, 1000.0);
        convert.XYtoXY1(x, y);
        Number(name + ".back_x", x, 1000.0);
        Number(name + ".back_y", y, 1000.0);
    }
}

std::string ContentOf(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The file as it is saved, saved over one with a line of its own, and read again.
void PrintParameterFile()
{
    const char* const path = "portable_results.cfg";
    std::remove(path);
    for (const int type : {1, 2}) {
        CInclineSensor_Position pole;
        Calibrate(pole, simulation::test::DistortedSensor(type));
        const std::string name = Name("file", type);
        Decision(name + ".save", pole.ConfigSave(CString(L"portable_results.cfg")));
        Bytes(name, ContentOf(path));
        std::ofstream(path, std::ios::binary | std::ios::app) << "[Owner]H\xC3\xB6"
                                                                 "fler\r\n";

        CInclineSensor_Position again;
        Decision(name + ".read", again.ConfigRead(CString(L"portable_results.cfg")));
        PrintParameters(name + ".read", again.GetMagneticCorrectPar_B());
        Number(name + ".read_angle", again.GetMagneticBiasAngle_B());
    }
    std::remove(path);
}

void PrintTexts()
{
    Generator random(9, Stream::Placement);
    for (int i = 0; i < 400; ++i) {
        const double value = random.Normal() * std::ldexp(1.0, i % 120 - 60);
        CString text;
        text.Format(L"%.17g %e %12.4f %a", value, value, value, value);
        const std::string name = Name("text", i);
        Text(name, text);
        const std::string narrow = framework::ToUtf8(
            std::wstring_view(text.GetString(), static_cast<std::size_t>(text.GetLength())));
        Decision(name + ".same", framework::ParseDouble(std::string_view(narrow)).value == value);
    }
    Text("sample", PoseSensorData::TextHeader());
    for (const PoseSensorData& sample :
         simulation::SimulateTurn(simulation::test::DistortedSensor(1), {}, {.samples = 40}, 3)
             .samples)
        Text("sample", sample.ToText());
    Bytes("utf8",
          framework::ToUtf8(framework::FromUtf8("H\xC3\xB6he \xF0\x9D\x84\x9E \xFF \x80.")));
    Text("char", CString("\xE2\x82\xAC 5"));
}

} // namespace

int main()
{
    for (const int type : {0, 1, 2})
        PrintPositions(type);
    PrintCalibrations();
    PrintTips();
    for (int n = 1; n <= 12; ++n)
        PrintMatrices(n);
    PrintKalman();
    PrintTransforms();
    PrintParameterFile();
    PrintTexts();
}
