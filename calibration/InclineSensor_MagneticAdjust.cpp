// SPDX-License-Identifier: MIT
#include "calibration/InclineSensor_MagneticAdjust.h"

#include "calibration/ShortMemory.h"
#include "calibration/filter/ReadingScreen.h"
#include "calibration/solver/ErrorDump.h"
#include "calibration/solver/MagneticFits.h"
#include "calibration/solver/MomentSolver.h"
#include "framework/core/MessageBox.h"
#include "survey/Correction.h"
#include "survey/Reading.h"

#include <cmath>
#include <optional>

namespace calibration = tiltpole::calibration;
namespace survey = tiltpole::survey;

using survey::Magnetometer;

namespace {

using SampleSet = CArray<PoseSensorData, const PoseSensorData&>;

// How the iterative solver ended.
enum class Ending {
    NoHorizontalEllipse,
    NoHorizontalLine,
    NoVerticalEllipse,
    NoVerticalLine,
    PassLimit,
    Level
};

// A box that cannot be shown for lack of memory is left out.
void Warn(const wchar_t* text, UINT icon = MB_ICONEXCLAMATION)
{
    calibration::OrFailure([&] { return MessageBoxW(nullptr, text, L"Warning", icon); });
}

void Show(Ending ending)
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

template <Magnetometer which>
calibration::TurnReadings ReadingsOf(const SampleSet& samples)
{
    calibration::TurnReadings readings(static_cast<int>(samples.GetSize()));
    for (int i = 0; i < readings.count; ++i) {
        const survey::Reading m = survey::ReadingOf(samples[i], which);
        readings.Set(i, m.x, m.y, m.z);
    }
    readings.Close();
    return readings;
}

// One row x, y, z per sample.
CSZMatrix MatrixOf(const calibration::TurnReadings& readings)
{
    CSZMatrix matrix(readings.count, 3);
    calibration::CheckAllocated(matrix, readings.count);
    for (int i = 0; i < readings.count; ++i) {
        const auto at = static_cast<std::size_t>(i);
        matrix.SetData(i, 0, readings.x[at]);
        matrix.SetData(i, 1, readings.y[at]);
        matrix.SetData(i, 2, readings.z[at]);
    }
    return matrix;
}

// One magnetometer: what is known of it without a message box.
struct Sensor
{
    calibration::TurnReadings horizontal;
    std::optional<Incline_MagneticCorrectParameter> byMoments;
    CSZMatrix vertical; // readings for the fits, where there is no correction by moments

    template <Magnetometer which>
    static Sensor Read(const SampleSet& aboutZ, const SampleSet& aboutY)
    {
        Sensor sensor{ReadingsOf<which>(aboutZ), std::nullopt, {}};
        const calibration::TurnReadings vertical = ReadingsOf<which>(aboutY);
        sensor.byMoments = calibration::SolveByMoments(sensor.horizontal, vertical);
        if (!sensor.byMoments) sensor.vertical = MatrixOf(vertical);
        return sensor;
    }
};

int CopySample(const SampleSet& samples, int index, PoseSensorData& sample)
{
    if (index < 0 || index >= samples.GetSize()) return 0;
    sample = samples[index];
    return 1;
}

void AddSample(SampleSet& samples, const PoseSensorData* sample)
{
    if (sample != nullptr) calibration::OrFailure([&] { return samples.Add(*sample); });
}

void Correct(CSZMatrix& readings, const Incline_MagneticCorrectParameter& P)
{
    for (int i = 0; i < readings.getRowSize(); ++i) {
        const survey::Reading raw{readings.GetData(i, 0), readings.GetData(i, 1),
                                  readings.GetData(i, 2)};
        const survey::Reading corrected = survey::Corrected(P, raw);
        readings.SetData(i, 0, corrected.x);
        readings.SetData(i, 1, corrected.y);
        readings.SetData(i, 2, corrected.z);
    }
}

CSZMatrix Column(const CSZMatrix& readings, int column)
{
    CSZMatrix slice = readings.SliceCols(column, 1);
    if (column < readings.getColSize()) calibration::CheckAllocated(slice, readings.getRowSize());
    return slice;
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
        calibration::CheckAllocated(corrected, H.getRowSize());
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
    AddSample(m_Horizontal, sample);
}

void CInclineSensor_MagneticAdjust::Vertical_Add(const PoseSensorData* sample)
{
    AddSample(m_Vertical, sample);
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
    // All samples are read before the first message box: a host may change them from inside one.
    std::optional<Sensor> A, B;
    calibration::OrFailure([&] {
        A = Sensor::Read<Magnetometer::A>(m_Horizontal, m_Vertical);
        B = Sensor::Read<Magnetometer::B>(m_Horizontal, m_Vertical);
    });
    const auto solve = [this](const std::optional<Sensor>& sensor,
                              Incline_MagneticCorrectParameter& P) {
        if (!sensor) return 0;
        if (!sensor->byMoments)
            return calibration::OrFailure(
                [&] { return MagCorrPara(MatrixOf(sensor->horizontal), sensor->vertical, P); });
        P = *sensor->byMoments;
        return 1;
    };

    if (!solve(A, m_CorrectA)) {
        Warn(L"A calculation of the magnetometer calibration fails, please recalibrate!");
        calibration::AppendErrorDump(L"Debug_MagneticAdjust_ErrorData_A.csv", m_Horizontal);
        return 0;
    }
    if (!solve(B, m_CorrectB)) {
        Warn(L"B calculation of the magnetometer calibration fails, please recalibrate!");
        calibration::AppendErrorDump(L"Debug_MagneticAdjust_ErrorData_B.csv", m_Horizontal);
        return 0;
    }
    if (A->byMoments && B->byMoments) {
        m_Translation =
            calibration::MeanOffset(A->horizontal, m_CorrectA, B->horizontal, m_CorrectB);
        return 1;
    }
    const int found = calibration::OrFailure([&] {
        return MagneticCoordinateOffset(MatrixOf(A->horizontal), MatrixOf(B->horizontal),
                                        m_Translation);
    });
    if (!found) Warn(L"Pan calculation magnetometer system fails, please recalibrate!");
    return found;
}

void CInclineSensor_MagneticAdjust::DataFilter(CSZMatrix& readings)
{
    calibration::SmoothRows(m_Filter, readings);
}

void CInclineSensor_MagneticAdjust::MatrixFilter(CSZMatrix& readings)
{
    DataFilter(readings);
    calibration::OrFailure([&] { calibration::KeepStepsOfTurn(readings); });
}

int CInclineSensor_MagneticAdjust::MagCorrPara(CSZMatrix H, CSZMatrix V,
                                               Incline_MagneticCorrectParameter& P)
{
    return calibration::OrFailure([&] {
        P = {};
        Ending ending = CorrectRoughly(H, V, P);
        if (ending == Ending::Level) ending = Level(H, P);
        Show(ending);
        if (ending != Ending::Level && ending != Ending::PassLimit) return 0;

        MagneticModify(P, H);
        MagneticModify(P, V);
        // A conic that is no ellipse has a center all the same; without one the offset stays 0.
        CSZMatrix horizontal, vertical;
        calibration::FitEllipse(Column(H, 0), Column(H, 1), horizontal);
        CircleCenter(horizontal, &P.x0, &P.y0);
        calibration::FitEllipse(Column(V, 0), Column(V, 2), vertical);
        CircleCenter(vertical, nullptr, &P.z0);
        return 1;
    });
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
    return calibration::OrFailure([&] { return calibration::FitEllipse(u, v, p); });
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
    return calibration::OrFailure([&] { return calibration::SolveLeastSquares(A, b, W, x, N); });
}
