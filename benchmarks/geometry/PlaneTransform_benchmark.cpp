// SPDX-License-Identifier: MIT
//
// Fit and application of the plane transform over a million points, from memory, and over a
// thousand, from the cache, beside Eigen's umeyama (PlaneTransform_peers.cpp), Boost.Geometry's affine
// transform and PROJ's helmert. Times are per call over all points; the counter gives the time of one
// point.
#include "benchmarks/geometry/PlanePlaces.h"
#include "geometry/MagneticConvert.h"

#if defined(TILTPOLE_BENCHMARK_BOOST)
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#endif
#if defined(TILTPOLE_BENCHMARK_PROJ)
#include <proj.h>
#endif

namespace {

using namespace plane;

void FitOurs(benchmark::State& state)
{
    CMagneticConvert forward;
    forward.SetFourParameter(-129.5, -208.2, kRotation, kScale, 0, 0);
    CMagneticConvert convert;
    convert.m_Points.SetSize(state.range(0));
    INT_PTR k = 0;
    for (const Place& p : Places(state)) {
        Place to = p;
        forward.XYtoXY(to.x, to.y);
        convert.m_Points[k++] = {p.x, p.y, to.x, to.y, 0, 0, 0, 0};
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(convert.CalFourParameter());
    CountPoints(state);
}

template <auto Conversion>
void ConvertOurs(benchmark::State& state)
{
    CMagneticConvert convert;
    convert.SetFourParameter(-129.5, -208.2, kRotation, kScale, 0, 0);
    std::vector<Place> places = Places(state);
    for (auto _ : state) {
        for (Place& p : places)
            (convert.*Conversion)(p.x, p.y);
        benchmark::ClobberMemory();
    }
    CountPoints(state);
}

#if defined(TILTPOLE_BENCHMARK_BOOST)
void ForwardBoost(benchmark::State& state)
{
    using Point = boost::geometry::model::d2::point_xy<double>;
    const double c = kScale * std::cos(kRotation);
    const double s = kScale * std::sin(kRotation);
    const boost::geometry::strategy::transform::matrix_transformer<double, 2, 2> affine(
        c, -s, -129.5, s, c, -208.2, 0.0, 0.0, 1.0);
    std::vector<Point> places;
    for (const Place& p : Places(state))
        places.emplace_back(p.x, p.y);
    for (auto _ : state) {
        for (Point& p : places)
            boost::geometry::transform(Point(p), p, affine);
        benchmark::ClobberMemory();
    }
    CountPoints(state);
}
BENCHMARK(ForwardBoost)->Apply(Sizes);
#endif

#if defined(TILTPOLE_BENCHMARK_PROJ)
void ForwardProj(benchmark::State& state)
{
    PJ* const helmert = proj_create(
        PJ_DEFAULT_CTX, "+proj=helmert +x=-129.5 +y=-208.2 +s=1.0000015504 +theta=-1.56504");
    std::vector<PJ_COORD> places;
    for (const Place& p : Places(state))
        places.push_back(proj_coord(p.x, p.y, 0, 0));
    for (auto _ : state) {
        proj_trans_array(helmert, PJ_FWD, places.size(), places.data());
        benchmark::ClobberMemory();
    }
    proj_destroy(helmert);
    CountPoints(state);
}
BENCHMARK(ForwardProj)->Apply(Sizes);
#endif

BENCHMARK(FitOurs)->Apply(Sizes);
BENCHMARK(ConvertOurs<&CMagneticConvert::XYtoXY>)->Name("ForwardOurs")->Apply(Sizes);
BENCHMARK(ConvertOurs<&CMagneticConvert::XYtoXY1>)->Name("BackwardOurs")->Apply(Sizes);

} // namespace
