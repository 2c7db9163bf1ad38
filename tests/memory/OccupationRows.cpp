// SPDX-License-Identifier: MIT
#include "field/DisturbanceMonitor.h"
#include "field/Occupation.h"
#include "field/SpotCalibration.h"
#include "tests/field/SimulatedPole.h"
#include "tests/memory/Rows.h"

namespace sweep {

namespace {

using field_tests::SimulatedPole;

struct Occupied
{
    Occupied()
    {
        static const field_tests::PoleLog log(SimulatedPole(field_tests::LeanIn(20.0), 40.0, {}, 3),
                                              4.0, 100.0, 20);
        for (std::size_t i = 0; i < log.samples.size(); ++i)
            log.Give(occupation, i);
    }

    field::Occupation occupation{field::OccupationSetup{}};
    field::OccupationEstimate estimate;
    int n = 0;
};

struct Words
{
    std::string text;
};

std::string DescribeWords(const Words& w)
{
    return w.text;
}

std::string DescribeOccupied(const Occupied& o)
{
    return std::to_string(static_cast<int>(o.estimate.reason)) + ' ' + Text(o.estimate.tip.x)
           + Text(o.estimate.ellipseMajor) + std::to_string(o.n);
}

void AddOccupationRows(std::vector<Row>& rows)
{
    rows.push_back(Operation<Occupied>(
        "field::Occupation::Occupation field::Occupation::operator=", Shortage::Throws,
        [](Occupied& o) {
            o.occupation = field::Occupation(field::OccupationSetup{});
            ++o.n;
        },
        DescribeOccupied));
    rows.push_back(Operation<Occupied>(
        "field::Occupation::Add field::Occupation::Estimate "
        "field::Occupation::EstimateWithoutGyros field::Occupation::Clear",
        Shortage::Never,
        [](Occupied& o) {
            if (++o.n > 1) return;
            field::InertialSample sample;
            sample.seconds = 5.0;
            sample.acceleration.z = 1.0;
            o.n += o.occupation.Add(sample) ? 1 : 0;
            o.n += o.occupation.Add(field::AntennaEpoch{4.9, field_tests::kTip}) ? 1 : 0;
            o.n += o.occupation.EstimateWithoutGyros().epochs;
            o.estimate = o.occupation.Estimate();
            o.occupation.Clear();
        },
        DescribeOccupied));
    rows.push_back(Operation<Words>(
        "field::OccupationText", Shortage::Throws,
        [](Words& w) {
            field::OccupationEstimate estimate;
            estimate.reason = field::OccupationReason::WrongLength;
            estimate.poleLength = 2.0;
            estimate.lengthError = 0.05;
            w.text = field::OccupationText(estimate);
        },
        DescribeWords));
}

// Rocked and turned about its axis for 12 s.
struct Calibrated
{
    Calibrated()
    {
        field_tests::PoleErrors errors;
        errors.circling = 25.0;
        static const field_tests::PoleLog log(
            SimulatedPole(field_tests::Rock(15.0), 40.0, errors, 3), 12.0, 20.0, 4);
        for (std::size_t i = 0; i < log.samples.size(); ++i) {
            const field::SensorVector& a = log.samples[i].magnetic;
            calibration.Add(log.samples[i], {-a.x, -a.y, a.z});
            if (i % log.every == 0) calibration.Add(log.epochs[i / log.every]);
        }
    }

    field::SpotCalibration calibration{field::SpotSetup{}};
    field::SpotResult result;
    int n = 0;
};

std::string DescribeCalibrated(const Calibrated& c)
{
    const field::SpotResult& r = c.result;
    return std::to_string(static_cast<int>(r.reason)) + ' ' + Text(r.axisX) + Text(r.tip.x)
           + Text(r.a.hardIron.value.x) + Text(r.b.biasSigma) + std::to_string(r.samples) + ' '
           + std::to_string(c.n);
}

// 256 readings and 64 epochs, the room that a vector has before it grows.
struct GrowingCalibration
{
    GrowingCalibration()
    {
        for (int i = 0; i < 256; ++i)
            AddReading();
        for (int i = 0; i < 64; ++i)
            AddEpoch();
    }
    void AddReading()
    {
        field::InertialSample sample;
        sample.seconds = time += 0.01;
        sample.acceleration.z = 1.0;
        calibration.Add(sample);
    }
    void AddEpoch() { calibration.Add(field::AntennaEpoch{time += 0.1, field_tests::kTip}); }

    double time = 0.0;
    field::SpotCalibration calibration{field::SpotSetup{}};
};

std::string DescribeGrowing(const GrowingCalibration& g)
{
    const field::SpotResult result = g.calibration.Estimate();
    return std::to_string(result.samples) + ' ' + std::to_string(result.epochs) + ' '
           + std::to_string(result.rejected);
}

void AddSpotRows(std::vector<Row>& rows)
{
    rows.push_back(Operation<Calibrated>(
        "field::SpotCalibration::SpotCalibration field::SpotCalibration::operator=",
        Shortage::Throws,
        [](Calibrated& c) {
            c.calibration = field::SpotCalibration(field::SpotSetup{});
            ++c.n;
        },
        DescribeCalibrated));
    rows.push_back(Operation<Calibrated>("field::SpotCalibration::Estimate", Shortage::Throws,
                                         [](Calibrated& c) { c.result = c.calibration.Estimate(); },
                                         DescribeCalibrated, {}, {20, 53}));
    rows.push_back(Operation<GrowingCalibration>(
        "field::SpotCalibration::Add", Shortage::Throws,
        [](GrowingCalibration& g) { g.AddReading(); }, DescribeGrowing));
    rows.push_back(Operation<GrowingCalibration>(
        "field::SpotCalibration::Add", Shortage::Throws,
        [](GrowingCalibration& g) { g.AddEpoch(); }, DescribeGrowing));
    rows.push_back(Operation<GrowingCalibration>(
        "field::SpotCalibration::Clear", Shortage::Never,
        [](GrowingCalibration& g) { g.calibration.Clear(); }, DescribeGrowing));
    rows.push_back(Operation<Words>(
        "field::SpotText", Shortage::Throws,
        [](Words& w) {
            field::SpotResult result;
            result.reason = field::SpotReason::TurnMore;
            w.text = field::SpotText(result);
        },
        DescribeWords));
    rows.push_back(WithoutMemory("field::WithCalibration", [] {
        field::SpotResult result;
        result.reason = field::SpotReason::Usable;
        result.axisX = 0.25;
        EXPECT_EQ(field::WithCalibration({}, result).axisX, 0.25);
    }));
}

struct Watched
{
    Watched()
    {
        for (int i = 0; i < 10; ++i)
            Add(534.0);
        for (int i = 0; i < 20; ++i)
            Add(800.0);
        for (int i = 0; i < 40; ++i)
            Add(534.0);
        while (time < 1.8)
            Add(900.0);
    }
    void Add(double strength)
    {
        field::MonitorSample now;
        now.seconds = time += 0.05;
        now.a = {strength * 0.4, 0.0, -strength * 0.9165};
        suspect = monitor.Add(now).suspect;
    }

    double time = 0.0;
    bool suspect = false;
    field::DisturbanceMonitor monitor{
        field::FieldShape{534.0, 66.4}
    };
    std::string text;
    std::vector<field::FieldShape> shapes = std::vector<field::FieldShape>(50, {500.0, 60.0});
};

std::string DescribeWatched(const Watched& w)
{
    std::string text = w.text + (w.suspect ? " suspect" : " none")
                       + (w.monitor.IsDisturbed() ? " disturbed " : " undisturbed ");
    for (const field::DisturbedSpan& span : w.monitor.Spans())
        text += field::TextOf(span) + Text(span.from) + Text(span.to);
    return text;
}

void AddMonitorRows(std::vector<Row>& rows)
{
    rows.push_back(Operation<Watched>(
        "field::DisturbanceMonitor::DisturbanceMonitor field::DisturbanceMonitor::Add",
        Shortage::Throws,
        [](Watched& w) {
            for (int i = 0; i < 6; ++i)
                w.Add(900.0);
        },
        DescribeWatched,
        // The span is entered with the next sample that belongs to it.
        {[](const Watched& w) { return w.monitor.Spans().size() == 1; },
         [](Watched& w) { w = Watched(); }}));
    rows.push_back(Operation<Watched>(
        "field::MedianShape field::TextOf", Shortage::Throws,
        [](Watched& w) {
            std::string text = field::TextOf(
                {0.0, 1.0, field::DisturbanceReason::Track, 25.0, 2.0}); // "heading 25 degrees ..."
            text += Text(field::MedianShape(w.shapes)->strength);
            w.text = std::move(text);
        },
        DescribeWatched));
}

} // namespace

std::vector<Row> OccupationRows()
{
    std::vector<Row> rows;
    AddOccupationRows(rows);
    AddSpotRows(rows);
    AddMonitorRows(rows);
    return rows;
}

} // namespace sweep
