// SPDX-License-Identifier: MIT
#include "calibration/InclineSensor_MagneticAdjust.h"

#include "calibration/solver/ErrorDump.h"
#include "calibration/solver/MagneticFits.h"
#include "calibration/solver/MomentSolver.h"
#include "calibration/solver/ReadingScreen.h"
#include "framework/core/MessageBox.h"

#include <cmath>
#include <optional>

namespace calibration = tiltpole::calibration;

namespace {

// The readings of one magnetometer in a sample.
struct Magnetometer
{
    double PoseSensorData::*x;
    double PoseSensorData::*y;
    double PoseSensorData::*z;
};

constexpr Magnetometer kSensorA{&PoseSensorData::dMag_x, &PoseSensorData::dMag_y,
                                &PoseSensorData::dMag_z};
constexpr Magnetometer kSensorB{&PoseSensorData::dMag_x_2, &PoseSensorData::dMag_y_2,
                                &PoseSensorData::dMag_z_2};

// How the iterative solver ended.
enum class Ending {
    NoHorizontalEllipse,
    NoHorizontalLine,
    NoVerticalEllipse,
    NoVerticalLine,
    PassLimit,
    Level
};

void Warn(const wchar_t* text, UINT icon = MB_ICONEXCLAMATION)
{
    MessageBoxW(nullptr, text, L"Warning", icon);
}

void Tell(Ending ending)
{
    switch (ending) {
    case Ending::NoHorizontalEllipse:
        return Warn(L"椭圆拟合失败,绕Z轴旋转数据有误!", MB_ICONSTOP);
    case Ending::NoHorizontalLine:
        return Warn(L"直线拟合失败,绕Z轴旋转数据有误!", MB_ICONSTOP);
    case Ending::NoVerticalEllipse:
        return Warn(L"椭圆拟合失败,绕Y轴旋转数据有误!", MB_ICONSTOP);
    case Ending::NoVerticalLine:
        return Warn(L"直线拟合失败,绕Y轴旋转数据有误!", MB_ICONSTOP);
    case Ending::PassLimit:
        return Warn(L"循环次数超限，磁力计校准参数精度不可靠!", MB_ICONINFORMATION);
    case Ending::Level:
        return;
    }
}

template <class SampleSet>
CSZMatrix ReadingsOf(const SampleSet& samples, const Magnetometer& sensor)
{
    const int n = static_cast<int>(samples.GetSize());
    CSZMatrix readings(n, 3);
    for (int i = 0; i < n; ++i) {
        readings.SetData(i, 0, samples[i].*sensor.x);
        readings.SetData(i, 1, samples[i].*sensor.y);
        readings.SetData(i, 2, samples[i].*sensor.z);
    }
    return readings;
}

template <class SampleSet>
calibration::TurnReadings ColumnsOf(const SampleSet& samples, const Magnetometer& sensor)
{
    calibration::TurnReadings readings(static_cast<int>(samples.GetSize()));
    for (int i = 0; i < readings.count; ++i) {
        const PoseSensorData& sample = samples[i];
        readings.Set(i, sample.*sensor.x, sample.*sensor.y, sample.*sensor.z);
    }
    readings.Close();
    return readings;
}

template <class SampleSet>
int CopySample(const SampleSet& samples, int index, PoseSensorData& sample)
{
    if (index < 0 || index >= samples.GetSize()) return 0;
    sample = samples[index];
    return 1;
}

void Correct(CSZMatrix& readings, const Incline_MagneticCorrectParameter& P)
{
    for (int i = 0; i < readings.getRowSize(); ++i) {
        const double x = readings.GetData(i, 0);
        const double y = readings.GetData(i, 1);
        const double z = readings.GetData(i, 2);
        readings.SetData(i, 0, x - P.x0);
        readings.SetData(i, 1, P.a * x + P.b * y - P.y0);
        readings.SetData(i, 2, P.c * x + P.d * y + P.e * z - P.z0);
    }
}

CSZMatrix Column(const CSZMatrix& readings, int column)
{
    return readings.SliceCols(column, 1);
}

std::optional<double> SlopeOf(const CSZMatrix& readings, int v, int u)
{
    const auto line = calibration::FitLine(Column(readings, u), Column(readings, v));
    return line ? std::optional(line->slope) : std::nullopt;
}

std::optional<calibration::Conic> EllipseOf(const CSZMatrix& readings, int v, int u)
{
    CSZMatrix p;
    if (!calibration::FitEllipse(Column(readings, u), Column(readings, v), p)) return std::nullopt;
    return calibration::ConicOf(p);
}

Ending CorrectRoughly(const CSZMatrix& H, const CSZMatrix& V, Incline_MagneticCorrectParameter& P)
{
    const auto horizontal = EllipseOf(H, 1, 0);
    if (!horizontal) return Ending::NoHorizontalEllipse;
    const auto leanX = SlopeOf(H, 2, 0);
    const auto leanY = SlopeOf(H, 2, 1);
    if (!leanX || !leanY) return Ending::NoHorizontalLine;
    const auto vertical = EllipseOf(V, 2, 0);
    if (!vertical) return Ending::NoVerticalEllipse;
    const auto twist = SlopeOf(V, 1, 0);
    if (!twist) return Ending::NoVerticalLine;

    calibration::SetFirstCorrection(*horizontal, *vertical, *twist, *leanY, P);
    return Ending::Level;
}

Ending Level(const CSZMatrix& H, Incline_MagneticCorrectParameter& P)
{
    for (int pass = 1; pass < calibration::kPasses; ++pass) {
        CSZMatrix corrected = H;
        Correct(corrected, P);
        const auto leanX = SlopeOf(corrected, 2, 0);
        const auto leanY = SlopeOf(corrected, 2, 1);
        if (!leanX || !leanY) return Ending::NoHorizontalLine;
        P.c -= *leanX;
        P.d -= *leanY;
        if (std::fabs(*leanX) < calibration::kLevelSlope
            && std::fabs(*leanY) < calibration::kLevelSlope)
            return Ending::Level;
    }
    return Ending::PassLimit;
}

} // namespace

void CInclineSensor_MagneticAdjust::Horizontal_Add(const PoseSensorData* sample)
{
    if (sample != nullptr) m_Horizontal.Add(*sample);
}

void CInclineSensor_MagneticAdjust::Vertical_Add(const PoseSensorData* sample)
{
    if (sample != nullptr) m_Vertical.Add(*sample);
}

int CInclineSensor_MagneticAdjust::Horizontal_Get(int index, PoseSensorData& sample) const
{
    return CopySample(m_Horizontal, index, sample);
}

int CInclineSensor_MagneticAdjust::Vertical_Get(int index, PoseSensorData& sample) const
{
    return CopySample(m_Vertical, index, sample);
}

void CInclineSensor_MagneticAdjust::Horizontal_Clear()
{
    m_Horizontal.RemoveAll();
}

void CInclineSensor_MagneticAdjust::Vertical_Clear()
{
    m_Vertical.RemoveAll();
}

int CInclineSensor_MagneticAdjust::Adjust()
{
    const calibration::TurnReadings HA = ColumnsOf(m_Horizontal, kSensorA);
    const calibration::TurnReadings HB = ColumnsOf(m_Horizontal, kSensorB);
    bool allByMoments = true;
    const auto solve = [&](const calibration::TurnReadings& H, const Magnetometer& sensor,
                           Incline_MagneticCorrectParameter& P) {
        if (const auto solution = calibration::SolveByMoments(H, ColumnsOf(m_Vertical, sensor))) {
            P = *solution;
            return 1;
        }
        allByMoments = false;
        return MagCorrPara(ReadingsOf(m_Horizontal, sensor), ReadingsOf(m_Vertical, sensor), P);
    };

    if (!solve(HA, kSensorA, m_CorrectA)) {
        Warn(L"A calculation of the magnetometer calibration fails, please recalibrate!");
        calibration::AppendErrorDump(L"Debug_MagneticAdjust_ErrorData_A.csv", m_Horizontal);
        return 0;
    }
    if (!solve(HB, kSensorB, m_CorrectB)) {
        Warn(L"B calculation of the magnetometer calibration fails, please recalibrate!");
        calibration::AppendErrorDump(L"Debug_MagneticAdjust_ErrorData_B.csv", m_Horizontal);
        return 0;
    }
    if (allByMoments) {
        m_Translation = calibration::MeanOffset(HA, m_CorrectA, HB, m_CorrectB);
    } else if (!MagneticCoordinateOffset(ReadingsOf(m_Horizontal, kSensorA),
                                         ReadingsOf(m_Horizontal, kSensorB), m_Translation)) {
        Warn(L"Pan calculation magnetometer system fails, please recalibrate!");
        return 0;
    }
    return 1;
}

void CInclineSensor_MagneticAdjust::DataFilter(CSZMatrix& readings)
{
    calibration::SmoothRows(m_Filter, readings);
}

void CInclineSensor_MagneticAdjust::MatrixFilter(CSZMatrix& readings)
{
    DataFilter(readings);
    calibration::KeepStepsOfTurn(readings);
}

int CInclineSensor_MagneticAdjust::MagCorrPara(CSZMatrix H, CSZMatrix V,
                                               Incline_MagneticCorrectParameter& P)
{
    P = {};
    Ending ending = CorrectRoughly(H, V, P);
    if (ending == Ending::Level) ending = Level(H, P);
    Tell(ending);
    if (ending != Ending::Level && ending != Ending::PassLimit) return 0;

    MagneticModify(P, H);
    MagneticModify(P, V);
    // A conic that is no ellipse has a centre all the same; without any the offset stays 0.
    CSZMatrix horizontal, vertical;
    calibration::FitEllipse(Column(H, 0), Column(H, 1), horizontal);
    CircleCenter(horizontal, &P.x0, &P.y0);
    calibration::FitEllipse(Column(V, 0), Column(V, 2), vertical);
    CircleCenter(vertical, nullptr, &P.z0);
    return 1;
}

int CInclineSensor_MagneticAdjust::MagCorrPara(CSZMatrix p, CSZMatrix q, CSZMatrix l,
                                               Incline_MagneticCorrectParameter& P)
{
    if (calibration::SetClosedForm(calibration::ConicOf(p), calibration::ConicOf(q),
                                   l.GetData(0, 0), l.GetData(1, 0), P))
        return 1;
    Warn(L"Collected data is incorrect!");
    return 0;
}

int CInclineSensor_MagneticAdjust::MagneticCoordinateOffset(CSZMatrix HA, CSZMatrix HB,
                                                            Incline_MagneticTranslationParameter& T)
{
    if (HA.getRowSize() != HB.getRowSize()) {
        Warn(L"Two input matrix must be rotated to the same data collected around the Z axis!");
        return 0;
    }
    MagneticModify(m_CorrectA, HA);
    MagneticModify(m_CorrectB, HB);
    const int n = HA.getRowSize();
    double sumX = 0, sumY = 0, sumZ = 0;
    for (int i = 0; i < n; ++i) {
        sumX += -HB.GetData(i, 0) - HA.GetData(i, 0);
        sumY += -HB.GetData(i, 1) - HA.GetData(i, 1);
        sumZ += HB.GetData(i, 2) - HA.GetData(i, 2);
    }
    T.dX = sumX / n;
    T.dY = sumY / n;
    T.dZ = sumZ / n;
    return 1;
}

CSZMatrix CInclineSensor_MagneticAdjust::OverDeterminedEquationSolution(CSZMatrix& A, CSZMatrix& b)
{
    if (A.getRowSize() != b.getRowSize()) {
        Warn(L"Two input matrix must have the same line!");
        return CSZMatrix(A.getColSize(), 1);
    }
    const CSZMatrix transpose = A.matTran();
    return (transpose * A).matInv() * transpose * b;
}

void CInclineSensor_MagneticAdjust::MagneticModify(const Incline_MagneticCorrectParameter& P,
                                                   CSZMatrix& M)
{
    Correct(M, P);
}

int CInclineSensor_MagneticAdjust::EllipseFit(const CSZMatrix& u, const CSZMatrix& v, CSZMatrix& p)
{
    return calibration::FitEllipse(u, v, p);
}

int CInclineSensor_MagneticAdjust::LineFit(const CSZMatrix& u, const CSZMatrix& v, CSZMatrix& l)
{
    const auto line = calibration::FitLine(u, v);
    if (!line) return 0;
    l.Alloc(3, 1);
    l.SetData(0, line->slope);
    l.SetData(1, line->intercept);
    l.SetData(2, line->residual);
    return 1;
}

int CInclineSensor_MagneticAdjust::CircleCenter(CSZMatrix p, double* uc, double* vc)
{
    if (p.getRowSize() != 5 || p.getColSize() != 1) return 0;
    const calibration::Conic conic = calibration::ConicOf(p);
    if (std::fabs(conic.Discriminant()) < calibration::kVanishing) return 0;
    if (uc != nullptr) *uc = conic.CenterU();
    if (vc != nullptr) *vc = conic.CenterV();
    return 1;
}

int CInclineSensor_MagneticAdjust::lsq(const CSZMatrix& A, const CSZMatrix& b, const CSZMatrix* W,
                                       CSZMatrix& x, CSZMatrix* N)
{
    return calibration::SolveLeastSquares(A, b, W, x, N);
}
