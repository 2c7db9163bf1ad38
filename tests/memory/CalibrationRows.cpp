// SPDX-License-Identifier: MIT
#include "calibration/KFilter.h"
#include "tests/calibration/AdjustTools.h"
#include "tests/calibration/FilterTwin.h"
#include "tests/memory/Rows.h"

#include <memory>

namespace sweep {

namespace {

using turns::TurnAxis;

// Message boxes are answered without allocating.
class Silent
{
public:
    Silent()
        : m_before(framework::SetMessageBoxHandler(
            [](const wchar_t*, const wchar_t*, unsigned) { return IDOK; }))
    {}
    ~Silent() { framework::SetMessageBoxHandler(m_before); }
    Silent(const Silent&) = delete;
    Silent& operator=(const Silent&) = delete;

private:
    framework::MessageBoxHandler m_before;
};

// A filter with most of a turn, samples that it does not have yet, and an array of its own.
template <class Filter>
struct Turn
{
    explicit Turn(bool isShuffled = false)
    {
        const std::vector<PoseSensorData> turn = turns::Make({.samples = 110}, kTurnAxis<Filter>);
        for (const PoseSensorData& sample : turn) {
            if (filter.GetRecordRate() < 95) filter.Add(new PoseSensorData(sample));
            owned.push_back(std::make_unique<PoseSensorData>(sample));
            array.Add(owned.back().get());
        }
        filter.Calculate_Azimuth(&array);
        filter.Sort_ByAzimuth(&array);
        if (isShuffled) std::swap(array[3], array[70]);
        for (auto& sample : next)
            sample = std::make_unique<PoseSensorData>(turn.back());
    }

    std::vector<std::unique_ptr<PoseSensorData>> owned;
    Reach<Filter> filter;
    std::unique_ptr<PoseSensorData> next[3];
    int added = 0;
    turns::Samples array;
    std::unique_ptr<turns::Samples> result;
    std::unique_ptr<Filter> made;
    int n = -1;
};

template <class Filter>
struct ShuffledTurn : Turn<Filter>
{
    ShuffledTurn() : Turn<Filter>(true) {}
};

// The tenth sample makes the center valid.
template <class Filter>
struct TenSamples
{
    TenSamples()
    {
        for (int round = 0; round < 3; ++round)
            for (const PoseSensorData& sample : turns::Make({.samples = 10}, kTurnAxis<Filter>))
                given.push_back(std::make_unique<PoseSensorData>(sample));
    }
    void Add()
    {
        for (int i = 0; i < 10; ++i)
            filter->Add(given[next++].release());
    }

    std::vector<std::unique_ptr<PoseSensorData>> given;
    std::size_t next = 0;
    std::unique_ptr<Filter> filter = std::make_unique<Filter>();
};

std::string Describe(const PoseSensorData& s)
{
    return Text(s.dMag_x) + Text(s.dMag_y) + Text(s.dMag_z) + Text(s.dAzimuth)
           + std::to_string(s.GetTurnFlag()) + ';';
}

template <class Filter>
std::string DescribeTurn(const Turn<Filter>& t)
{
    const PoseSensorCenterParameter center = t.filter.GetCenterPar();
    std::string text = std::to_string(t.n) + ' ' + std::to_string(center.nValid) + ' '
                       + std::to_string(t.filter.GetRecordRate()) + (t.made ? " made" : " none");
    if (t.result == nullptr) text += " no array";
    const turns::Samples* const arrays[] = {&t.array, t.result.get()};
    for (const turns::Samples* samples : arrays)
        for (INT_PTR i = 0; samples != nullptr && i < samples->GetSize(); ++i)
            text += Describe(*samples->GetAt(i));
    return text;
}

template <class Filter>
void AddFilterRows(std::vector<Row>& rows, const std::string& name)
{
    using State = Turn<Filter>;
    const auto add = [&](const char* operation, Shortage shortage,
                         std::function<void(State&)> run) {
        rows.push_back(Operation<State>(name + "::" + operation, shortage, std::move(run),
                                        DescribeTurn<Filter>));
    };
    rows.push_back(Operation<State>(
        name + "::" + name, Shortage::Throws, [](State& t) { t.made = std::make_unique<Filter>(); },
        DescribeTurn<Filter>));
    add("Filter", Shortage::Reports, [](State& t) { t.result.reset(t.filter.Filter()); });
    add("Filter_ByTime", Shortage::Reports,
        [](State& t) { t.result.reset(t.filter.Filter_ByTime(&t.array)); });
    add("Filter_ByDistance", Shortage::Reports,
        [](State& t) { t.result.reset(t.filter.Filter_ByDistance(&t.array)); });
    add("Filter_ByAzimuth", Shortage::Reports,
        [](State& t) { t.result.reset(t.filter.Filter_ByAzimuth(&t.array)); });
    add("Select", Shortage::Reports,
        [](State& t) { t.result.reset(t.filter.Select(&t.array, 30)); });
    add("Select", Shortage::Reports,
        [](State& t) { t.result.reset(t.filter.Select(&t.array, 300)); });
    rows.push_back(Operation<ShuffledTurn<Filter>>(
        name + "::Sort_ByAzimuth", Shortage::Reports,
        [](State& t) { t.filter.Sort_ByAzimuth(&t.array); }, DescribeTurn<Filter>));
    rows.push_back(Operation<TenSamples<Filter>>(
        name + "::Add", Shortage::Reports, [](TenSamples<Filter>& t) { t.Add(); },
        [](const TenSamples<Filter>& t) {
            return std::to_string(t.filter->GetCenterPar().nValid) + ' '
                   + std::to_string(t.filter->GetRecordRate());
        },
        {[](const TenSamples<Filter>& t) { return t.filter->GetCenterPar().nValid == 0; },
         [](TenSamples<Filter>& t) { t.filter = std::make_unique<Filter>(); }}));
    rows.push_back(Operation<State>(
        name + "::IsComplete " + name + "::Calculate_CenterPar " + name + "::Calculate_Azimuth "
            + name + "::Calculate_Azimuth_One " + name + "::Clear " + name + "::GetCenterPar "
            + name + "::GetRecordRate " + name + "::IsRecordOK",
        Shortage::Never,
        [](State& t) {
            t.n = t.filter.Calculate_CenterPar(&t.array) + t.filter.Calculate_Azimuth(&t.array)
                  + t.filter.Calculate_Azimuth_One(t.array[5]) + t.filter.IsComplete(&t.array)
                  + t.filter.IsRecordOK();
            t.filter.Clear();
        },
        DescribeTurn<Filter>));
}

struct Samples
{
    Samples()
    {
        Load(adjust, turns::Make({.samples = 60}, TurnAxis::Horizontal),
             turns::Make({.samples = 60}, TurnAxis::Vertical));
    }

    Silent silent;
    ReachAdjust adjust;
    PoseSensorData sample = turns::At(1.0, 2.0, 3.0);
    int n = 0;
};

std::string Describe(const Incline_MagneticCorrectParameter& p)
{
    std::string text;
    for (const double value : {p.x0, p.y0, p.z0, p.a, p.b, p.c, p.d, p.e})
        text += Text(value);
    return text;
}

std::string DescribeSamples(const Samples& s)
{
    PoseSensorData last;
    const int has = s.adjust.Horizontal_Get(60, last) + 2 * s.adjust.Vertical_Get(60, last)
                    + 4 * s.adjust.Horizontal_Get(61, last) + 8 * s.adjust.Vertical_Get(61, last);
    return std::to_string(s.n) + ' ' + std::to_string(has) + ' '
           + Describe(s.adjust.GetCorrectPar_A()) + Describe(s.adjust.GetCorrectPar_B())
           + Text(s.adjust.GetCoorTrans().dX);
}

struct Fits
{
    static CSZMatrix Readings(TurnAxis axis)
    {
        return MatrixOf(turns::Make({.samples = 60}, axis));
    }
    static CSZMatrix Six()
    {
        CSZMatrix readings(60, 6);
        for (int r = 0; r < 60; ++r)
            for (int c = 0; c < 6; ++c)
                readings.SetData(r, c, 1000 * std::sin(r * 0.1 + c));
        return readings;
    }

    Silent silent;
    ReachAdjust adjust;
    CSZMatrix horizontal = Readings(TurnAxis::Horizontal);
    CSZMatrix vertical = Readings(TurnAxis::Vertical);
    CSZMatrix six = Six();
    CSZMatrix u = horizontal.SliceCols(0, 1), v = horizontal.SliceCols(1, 1);
    CSZMatrix conic, line;
    Incline_MagneticCorrectParameter correction;
    Incline_MagneticTranslationParameter translation;
    double center[2] = {};
    int n = 0;
};

std::string DescribeFits(const Fits& f)
{
    std::string text = std::to_string(f.n) + ' ' + Describe(f.correction) + Text(f.translation.dX)
                       + Text(f.center[0]) + Text(f.center[1]);
    for (const CSZMatrix* m : {&f.conic, &f.line, &f.six, &f.horizontal}) {
        text += std::to_string(m->getRowSize()) + 'x' + std::to_string(m->getColSize()) + ' ';
        for (int r = 0; r < m->getRowSize(); ++r)
            for (int c = 0; c < m->getColSize(); ++c)
                text += Text(m->GetData(r, c));
    }
    return text;
}

// 0, with values as far as they were computed.
AfterFailure<Fits> AnswersZero()
{
    return {[](const Fits& f) { return f.n == 0 || std::isnan(f.translation.dX); },
            [](Fits& f) {
                const Fits fresh;
                f.correction = fresh.correction;
                f.translation = fresh.translation;
                f.conic = fresh.conic;
                f.line = fresh.line;
                f.horizontal = fresh.horizontal;
            }};
}

void AddFitRows(std::vector<Row>& rows)
{
    const auto add = [&](const char* operation, std::function<void(Fits&)> run,
                         AfterFailure<Fits> after = AnswersZero()) {
        rows.push_back(Operation<Fits>("CInclineSensor_MagneticAdjust::" + std::string(operation),
                                       Shortage::Reports, std::move(run), DescribeFits,
                                       std::move(after)));
    };
    add("MagCorrPara",
        [](Fits& f) { f.n = f.adjust.MagCorrPara(f.horizontal, f.vertical, f.correction); });
    add("MagneticCoordinateOffset", [](Fits& f) {
        f.n = f.adjust.MagneticCoordinateOffset(f.horizontal, f.horizontal, f.translation);
    });
    add("lsq", [](Fits& f) { f.n = f.adjust.lsq(f.horizontal, f.u, nullptr, f.conic, &f.line); });
    add("OverDeterminedEquationSolution", [](Fits& f) {
        f.conic = f.adjust.OverDeterminedEquationSolution(f.horizontal, f.u);
        f.n = f.conic.getRowSize() == 3 && f.conic.GetData(0, 0) != 0.0 ? 1 : 0;
    });
    const AfterFailure<Fits> keepsRows = {[](const Fits& f) { return f.six.getRowSize() == 60; },
                                          [](Fits& f) { f.six = Fits::Six(); }};
    add(
        "MatrixFilter", [](Fits& f) { f.adjust.MatrixFilter(f.six); }, keepsRows);
    rows.push_back(Operation<Fits>(
        "CInclineSensor_MagneticAdjust::DataFilter CInclineSensor_MagneticAdjust::EllipseFit "
        "CInclineSensor_MagneticAdjust::LineFit CInclineSensor_MagneticAdjust::CircleCenter "
        "CInclineSensor_MagneticAdjust::MagneticModify CInclineSensor_MagneticAdjust::MagCorrPara",
        Shortage::Never,
        [](Fits& f) {
            const CSZMatrix circle(5, 1, 5, 0.5, 0.0, -2.0, -4.0, 1.0);
            f.adjust.DataFilter(f.six);
            f.n = f.adjust.EllipseFit(f.u, f.v, f.conic) + f.adjust.LineFit(f.u, f.v, f.line)
                  + f.adjust.CircleCenter(circle, &f.center[0], &f.center[1])
                  + f.adjust.MagCorrPara(circle, circle, CSZMatrix(3, 1), f.correction);
            f.correction.b = 2.0;
            f.adjust.MagneticModify(f.correction, f.horizontal);
        },
        DescribeFits));
}

void AddAdjustRows(std::vector<Row>& rows)
{
    const auto add = [&](const char* operation, Shortage shortage,
                         std::function<void(Samples&)> run, AfterFailure<Samples> after = {}) {
        rows.push_back(
            Operation<Samples>("CInclineSensor_MagneticAdjust::" + std::string(operation), shortage,
                               std::move(run), DescribeSamples, std::move(after)));
    };
    add("Adjust", Shortage::Reports, [](Samples& s) { s.n = s.adjust.Adjust(); },
        {[](const Samples& s) { return s.n == 0; }, {}});
    // A store that is full has to grow.
    const auto fill = [](Samples& s, auto addOne) {
        for (int i = 0; i < 70; ++i)
            addOne(s);
    };
    add("Horizontal_Add", Shortage::Reports,
        [fill](Samples& s) {
            s.adjust.Horizontal_Clear();
            fill(s, [](Samples& of) { of.adjust.Horizontal_Add(&of.sample); });
        },
        {[](const Samples& s) {
             PoseSensorData sample;
             return s.adjust.Horizontal_Get(69, sample) == 0;
         },
         {}});
    add("Vertical_Add", Shortage::Reports,
        [fill](Samples& s) {
            s.adjust.Vertical_Clear();
            fill(s, [](Samples& of) { of.adjust.Vertical_Add(&of.sample); });
        },
        {[](const Samples& s) {
             PoseSensorData sample;
             return s.adjust.Vertical_Get(69, sample) == 0;
         },
         {}});
    rows.push_back(WithoutMemory(
        "CInclineSensor_MagneticAdjust::Horizontal_Get CInclineSensor_MagneticAdjust::Vertical_Get "
        "CInclineSensor_MagneticAdjust::Horizontal_Clear "
        "CInclineSensor_MagneticAdjust::Vertical_Clear",
        [] {
            static Samples samples;
            PoseSensorData sample;
            samples.adjust.Horizontal_Get(0, sample);
            samples.adjust.Vertical_Get(0, sample);
            samples.adjust.Horizontal_Clear();
            samples.adjust.Vertical_Clear();
            EXPECT_EQ(samples.adjust.Horizontal_Get(0, sample), 0);
        }));
}

// Order 8 needs the heap. The steps of a host, from the orders on.
struct Kalman
{
    CSZMatrix I{8, 8, MatIdentity}, O{8, 8}, x0{8, 1}, u{8, 1}, z{8, 1, MatOnes};
    CSZMatrix mixed = I;
    CSZMatrix column{8, 1, MatOnes};
    CKFilter filter;
    CSZMatrix estimate{8, 1};
    Silent silent;
    bool asColumn = false;

    Kalman() { mixed.SetData(1, 2, 0.5); }

    void Run(const CSZMatrix& transition)
    {
        estimate.Zeros();
        filter.SetMatrixOrder(8, 8);
        if (filter.SetSystemMatrix(transition, O, I, I, O) == 0) return;
        if (filter.SetNoise(I, I) == 0 || filter.SetInitialData(x0, I) == 0) return;
        if (asColumn && filter.SetInitialVariance(column) == 0) return;
        CKFilter copy(filter);
        const CSZMatrix taken = copy.Filter(z, u);
        for (int i = 0; i < 8; ++i)
            estimate.SetData(i, 0, taken.getRowSize() == 8 ? taken.GetData(i, 0) : 0.0);
    }
};

std::string DescribeKalman(const Kalman& k)
{
    std::string text;
    for (int i = 0; i < 8; ++i)
        text += Text(k.estimate.GetData(i, 0));
    return text;
}

// Refused: the state that it had, or the measurement.
bool IsRefused(const Kalman& k)
{
    return k.estimate.GetData(0, 0) == 0.0 || k.estimate.GetData(0, 0) == 1.0;
}

struct KalmanColumn : Kalman
{
    KalmanColumn() { asColumn = true; }
};

template <class State>
Row KalmanRow(const char* covers, std::function<void(State&)> run)
{
    return Operation<State>(covers, Shortage::Reports, std::move(run),
                            [](const State& k) { return DescribeKalman(k); },
                            {[](const State& k) { return IsRefused(k); }, {}});
}

} // namespace

std::vector<Row> CalibrationRows()
{
    std::vector<Row> rows;
    AddFilterRows<CInclineSensor_Filter_XY>(rows, "CInclineSensor_Filter_XY");
    AddFilterRows<CInclineSensor_Filter_XZ>(rows, "CInclineSensor_Filter_XZ");
    AddAdjustRows(rows);
    AddFitRows(rows);
    rows.push_back(
        KalmanRow<Kalman>("CKFilter::SetMatrixOrder CKFilter::SetSystemMatrix CKFilter::SetNoise "
                          "CKFilter::SetInitialData CKFilter::Filter",
                          [](Kalman& k) { k.Run(k.mixed); }));
    rows.push_back(KalmanRow<Kalman>("CKFilter::Filter", [](Kalman& k) { k.Run(k.I); }));
    rows.push_back(KalmanRow<KalmanColumn>("CKFilter::SetInitialVariance",
                                           [](KalmanColumn& k) { k.Run(k.I); }));
    return rows;
}

} // namespace sweep
