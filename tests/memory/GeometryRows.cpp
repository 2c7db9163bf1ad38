// SPDX-License-Identifier: MIT
#include "geometry/MagneticConvert.h"
#include "geometry/TiltPosition_Geometry.h"
#include "tests/memory/Rows.h"

#include <cmath>

namespace sweep {

namespace {

// An antenna on the sphere of 2 m about (10, 20, 100).
TiltPoint_Sensor Antenna(int k)
{
    const double azimuth = 1.4 * k;
    const double lean = 0.3 + 0.03 * k;
    TiltPoint_Sensor point;
    point.strLabel = L"a label that is too long to lie inside its string";
    point.dX = 10.0 + 2.0 * std::sin(lean) * std::cos(azimuth);
    point.dY = 20.0 + 2.0 * std::sin(lean) * std::sin(azimuth);
    point.dH = 100.0 + 2.0 * std::cos(lean);
    return point;
}

struct Observed
{
    Observed()
    {
        geometry.SetAntennaHeight(2.0);
        for (int k = 0; k < 12; ++k)
            geometry.AddPoint(Antenna(k));
        for (int k = 0; k < 6; ++k) {
            matrices[k] = CTiltMatrix(3);
            const TiltPoint_Sensor point = Antenna(2 * k);
            matrices[k].SetData(0, point.dX);
            matrices[k].SetData(1, point.dY);
            matrices[k].SetData(2, point.dH);
        }
        start = matrices[0];
    }

    mutable CTiltPosition_Geometry geometry; // IsConform changes nothing
    TiltPoint_Sensor next = Antenna(20);
    CTiltMatrix matrices[6], start, result;
    double radius = 2.01;
    xyhCoord tip;
    TiltPoint_State state;
    int n = 0;
};

std::string Describe(const Observed& o)
{
    std::string text = std::to_string(o.n) + ' ' + std::to_string(o.geometry.IsOK()) + ' '
                       + std::to_string(o.state.nStatus) + ' ' + Text(o.tip.x) + Text(o.tip.h)
                       + Text(o.state.dPointError) + Text(o.radius);
    for (const CTiltMatrix* m : {&o.start, &o.result})
        for (unsigned i = 0; i < m->GetRow(); ++i)
            text += Text(m->GetData(i));
    return text + std::to_string(o.geometry.IsConform(Antenna(20), 0.3));
}

Row Throwing(const char* covers, std::function<void(Observed&)> run)
{
    return Operation<Observed>(covers, Shortage::Throws, std::move(run),
                               [](const Observed& o) { return Describe(o); });
}

} // namespace

std::vector<Row> GeometryRows()
{
    std::vector<Row> rows;
    rows.push_back(Throwing("CTiltPosition_Geometry::AddPoint",
                            [](Observed& o) { o.n += o.geometry.AddPoint(o.next); }));
    rows.push_back(Throwing("CTiltPosition_Geometry::IsConform",
                            [](Observed& o) { o.n += 1 + o.geometry.IsConform(o.next, 0.3); }));
    rows.push_back(Throwing("CTiltPosition_Geometry::Calculate",
                            [](Observed& o) { o.n += o.geometry.Calculate(o.tip, o.state); }));
    rows.push_back(Throwing("CTiltPosition_Geometry::Adjustment", [](Observed& o) {
        TiltPoint_State state;
        o.result = o.geometry.Adjustment(o.matrices, 6, state);
        o.state = state;
    }));
    rows.push_back(Throwing("CTiltPosition_Geometry::ReProcess", [](Observed& o) {
        o.state = o.geometry.ReProcess(o.matrices, 6, o.start, o.radius);
    }));
    rows.push_back(Operation<Observed>(
        "CTiltPosition_Geometry::ProbableCoor CTiltPosition_Geometry::IsOK "
        "CTiltPosition_Geometry::Clear",
        Shortage::Never,
        [](Observed& o) {
            o.result =
                o.geometry.ProbableCoor(o.matrices[0], o.matrices[1], o.matrices[2], o.matrices[3]);
            o.n = o.geometry.IsOK() + 1;
            o.geometry.Clear();
        },
        [](const Observed& o) { return Describe(o); }));
    rows.push_back(WithoutMemory("CMagneticConvert::CalFourParameter "
                                 "CMagneticConvert::SetFourParameter CMagneticConvert::XYtoXY "
                                 "CMagneticConvert::XYtoXY1",
                                 [] {
                                     static CMagneticConvert convert;
                                     if (convert.m_Points.IsEmpty()) {
                                         convert.m_Points.Add({0.0, 0.0, 500.0, 800.0});
                                         convert.m_Points.Add({100.0, 0.0, 600.0, 800.0});
                                     }
                                     EXPECT_EQ(convert.CalFourParameter(), 1);
                                     double x = 1.0;
                                     double y = 2.0;
                                     convert.XYtoXY(x, y);
                                     convert.XYtoXY1(x, y);
                                     EXPECT_NEAR(x, 1.0, 1e-9);
                                     CMagneticConvert set;
                                     set.SetFourParameter(1.0, 2.0, 0.0, 1.0, 0.0, 0.0);
                                 }));
    return rows;
}

} // namespace sweep
