// SPDX-License-Identifier: MIT
//
// The sample filters beside their literal port and a peer written by hand: Add over a whole turn,
// Filter, and the polls of the host.
#include "calibration/InclineSensor_Filter_XY.h"
#include "calibration/InclineSensor_Filter_XZ.h"
#include "tests/reference/LiteralFilter.h"
#include "tests/reference/Turns.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace {

using Turn = std::vector<PoseSensorData>;

using turns::TurnAxis;

enum Kind { Round, Skewed, OneRevolution, Recorded };

// Round: two revolutions, so that the center settles half way.
Turn MakeTurn(const benchmark::State& state, TurnAxis axis = TurnAxis::Horizontal)
{
    const auto samples = static_cast<int>(state.range(0));
    turns::Shape shape{.samples = samples, .revolutions = 2, .radius = 4000, .seed = 31};
    switch (state.range(1)) {
    case Skewed:
        shape.skew = 0.3;
        shape.scale = 0.6;
        break;
    case OneRevolution:
        shape.revolutions = 1.05;
        break;
    case Recorded: {
        Turn recorded = turns::Recorded();
        recorded.resize(std::min(recorded.size(), static_cast<std::size_t>(samples)));
        return recorded;
    }
    default:
        break;
    }
    return turns::Make(shape, axis);
}

// What a careful author writes without keeping anything: no azimuth before it is needed,
// standard sort.
struct ByHand
{
    std::vector<PoseSensorData*> record;
    double x = 0, y = 0;

    void Center()
    {
        double least[2] = {1e300, 1e300}, greatest[2] = {-1e300, -1e300};
        for (const PoseSensorData* s : record) {
            least[0] = std::min(least[0], s->dMag_x);
            greatest[0] = std::max(greatest[0], s->dMag_x);
            least[1] = std::min(least[1], s->dMag_y);
            greatest[1] = std::max(greatest[1], s->dMag_y);
        }
        x = (least[0] + greatest[0]) / 2;
        y = (least[1] + greatest[1]) / 2;
    }

    void One(PoseSensorData* s) const
    {
        const double azimuth = std::atan2(s->dMag_x - x, s->dMag_y - y) * 57.29577951308232;
        s->dAzimuth = azimuth <= 0 ? azimuth + 360 : azimuth;
    }

    void Add(PoseSensorData* s)
    {
        record.push_back(s);
        if (record.size() % 10 != 0) return One(s);
        Center();
        for (PoseSensorData* each : record)
            One(each);
    }

    std::vector<PoseSensorData*> Filter()
    {
        Center();
        double radius = 0;
        for (PoseSensorData* s : record) {
            One(s);
            radius += std::hypot(s->dMag_x - x, s->dMag_y - y);
        }
        radius /= static_cast<double>(record.size());
        std::vector<PoseSensorData*> kept;
        for (PoseSensorData* s : record) {
            const bool far =
                kept.empty()
                || std::hypot(s->dMag_x - kept.back()->dMag_x, s->dMag_y - kept.back()->dMag_y)
                       >= 30;
            if (far && std::fabs(std::hypot(s->dMag_x - x, s->dMag_y - y) - radius) < 200)
                kept.push_back(s);
        }
        std::sort(kept.begin(), kept.end(), [](const PoseSensorData* a, const PoseSensorData* b) {
            return a->dAzimuth < b->dAzimuth;
        });
        return kept;
    }
};

// Time per sample of a whole turn.
template <class Filter>
void AddWholeTurn(benchmark::State& state)
{
    const Turn turn = MakeTurn(state);
    constexpr bool owns = std::is_same_v<Filter, CInclineSensor_Filter_XY>;
    std::vector<std::unique_ptr<PoseSensorData>> samples;
    for (auto _ : state) {
        state.PauseTiming();
        samples.clear();
        for (const PoseSensorData& s : turn)
            samples.push_back(std::make_unique<PoseSensorData>(s));
        {
            Filter filter{};
            state.ResumeTiming();
            for (auto& s : samples)
                filter.Add(owns ? s.release() : s.get());
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(turn.size()));
}

struct LiteralXY : literal::Filter
{
    LiteralXY() : literal::Filter(literal::Rules{TurnAxis::Horizontal}) {}
};
struct LiteralXZ : literal::Filter
{
    LiteralXZ() : literal::Filter(literal::Rules{TurnAxis::Vertical}) {}
};

void Add_Ours(benchmark::State& state)
{
    AddWholeTurn<CInclineSensor_Filter_XY>(state);
}
void Add_LiteralPort(benchmark::State& state)
{
    AddWholeTurn<LiteralXY>(state);
}
void Add_ByHand(benchmark::State& state)
{
    AddWholeTurn<ByHand>(state);
}

// Every side walks samples that were allocated one by one, as a host hands them over, has computed
// their azimuths while they were added, and screens the same record again and again.
template <class Ours>
void FilterOurs(benchmark::State& state, TurnAxis axis)
{
    Ours filter;
    for (const PoseSensorData& s : MakeTurn(state, axis))
        filter.Add(new PoseSensorData(s));
    std::ptrdiff_t kept = 0;
    for (auto _ : state) {
        const std::unique_ptr<typename Ours::Samples> result(filter.Filter());
        kept = result ? result->GetSize() : 0;
        benchmark::DoNotOptimize(kept);
    }
    state.counters["kept"] = static_cast<double>(kept);
}

template <class Filter, class Run>
void FilterPeer(benchmark::State& state, TurnAxis axis, Run run)
{
    std::vector<std::unique_ptr<PoseSensorData>> samples;
    Filter filter{};
    for (const PoseSensorData& s : MakeTurn(state, axis)) {
        samples.push_back(std::make_unique<PoseSensorData>(s));
        filter.Add(samples.back().get());
    }
    std::size_t kept = 0;
    for (auto _ : state) {
        kept = run(filter).size();
        benchmark::DoNotOptimize(kept);
    }
    state.counters["kept"] = static_cast<double>(kept);
}

void FilterXY_Ours(benchmark::State& state)
{
    FilterOurs<CInclineSensor_Filter_XY>(state, TurnAxis::Horizontal);
}
void FilterXY_ByHand(benchmark::State& state)
{
    FilterPeer<ByHand>(state, TurnAxis::Horizontal, [](ByHand& filter) { return filter.Filter(); });
}
void FilterXY_LiteralPort(benchmark::State& state)
{
    FilterPeer<LiteralXY>(state, TurnAxis::Horizontal,
                          [](LiteralXY& filter) { return filter.Screen(); });
}
void FilterXZ_Ours(benchmark::State& state)
{
    FilterOurs<CInclineSensor_Filter_XZ>(state, TurnAxis::Vertical);
}
void FilterXZ_LiteralPort(benchmark::State& state)
{
    FilterPeer<LiteralXZ>(state, TurnAxis::Vertical,
                          [](LiteralXZ& filter) { return filter.Screen(); });
}

void GetRecordRate_Ours(benchmark::State& state)
{
    CInclineSensor_Filter_XY filter;
    for (const PoseSensorData& s : MakeTurn(state))
        filter.Add(new PoseSensorData(s));
    for (auto _ : state)
        benchmark::DoNotOptimize(filter.GetRecordRate());
}

void GetRecordRate_LiteralPort(benchmark::State& state)
{
    Turn turn = MakeTurn(state);
    LiteralXY filter;
    for (PoseSensorData& s : turn)
        filter.Add(&s);
    for (auto _ : state)
        benchmark::DoNotOptimize(filter.GetRecordRate());
}

void Sizes(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"samples", "kind"});
    for (const int samples : {300, 1000, 3000})
        b->Args({samples, Round});
    b->Args({1000, Skewed});
    b->Args({1000, OneRevolution});
    b->Args({2000, Recorded});
}

void Rates(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"samples", "kind"});
    for (const int samples : {300, 1000, 3000, 30000})
        b->Args({samples, Round});
}

BENCHMARK(Add_Ours)->Apply(Sizes);
BENCHMARK(Add_ByHand)->Apply(Sizes);
BENCHMARK(Add_LiteralPort)->Apply(Sizes);
BENCHMARK(FilterXY_Ours)->Apply(Sizes);
BENCHMARK(FilterXY_ByHand)->Apply(Sizes);
BENCHMARK(FilterXY_LiteralPort)->Apply(Sizes);
BENCHMARK(FilterXZ_Ours)->Apply(Sizes);
BENCHMARK(FilterXZ_LiteralPort)->Apply(Sizes);
BENCHMARK(GetRecordRate_Ours)->Apply(Rates);
BENCHMARK(GetRecordRate_LiteralPort)->Apply(Rates);

} // namespace
