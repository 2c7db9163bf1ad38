#include "apps/study/CalibrationStudy.h"

#include "apps/study/Conditions.h"
#include "quality/CalibrationReport.h"
#include "quality/SolverRun.h"
#include "quality/detail/EightValues.h"
#include "quality/detail/JointModel.h"
#include <Eigen/LU>
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <functional>
#include <numeric>

namespace study {

namespace {

using quality::CalibrationReport;
using quality::CalibrationRun;
using quality::Verdict;
using quality::detail::FullCorrection;
using quality::detail::FullOf;
using quality::detail::Magnetometer;

// One simulated calibration and what the truth says about it. Errors are the larger of A and B.
struct Outcome
{
    CalibrationReport report;
    double solver = 0.0;       // true heading error of the solver's result [degrees]
    double solverTurn = 0.0;   // with its constant part taken away
    double joint = 0.0;        // of the joint fit's eight values
    double jointFull = 0.0;    // of its full correction
    double jointUnasked = 0.0; // of the full correction on turns that the joint fit refuses
    bool jointFitted = false;
    bool finite = false;
    bool answered = false;
};

FullCorrection TruthOf(const simulation::Magnetometer& m, double strength)
{
    FullCorrection gain;
    for (int i = 0; i < 3; ++i) {
        const simulation::Vector& row = m.softIron.rows[static_cast<std::size_t>(i)];
        gain.matrix.row(i) << row.x, row.y, row.z;
    }
    FullCorrection truth;
    truth.matrix = gain.matrix.inverse() / strength;
    truth.offset = truth.matrix * Eigen::Vector3d(m.hardIron.x, m.hardIron.y, m.hardIron.z);
    return truth;
}

class Truth
{
public:
    explicit Truth(const Setting& s)
        : m_a(TruthOf(s.sensor.a, s.field.strength)), m_b(TruthOf(s.sensor.b, s.field.strength)),
          m_gridA(quality::detail::HeadingGrid(s.sensor.type, Magnetometer::A)),
          m_gridB(quality::detail::HeadingGrid(s.sensor.type, Magnetometer::B)),
          m_elevation(-std::sin(s.field.dip / quality::detail::kDegreesPerRadian))
    {}

    /// The larger of both errors, and the same without the constant parts.
    std::pair<double, double> ErrorOf(const FullCorrection& a, double biasA,
                                      const FullCorrection& b, double biasB) const
    {
        const auto ofA = quality::detail::Compare(a, biasA, m_a, m_elevation, m_gridA);
        const auto ofB = quality::detail::Compare(b, biasB, m_b, m_elevation, m_gridB);
        const auto turning = [](const quality::detail::HeadingDifference& d) {
            return std::sqrt(std::max(d.rms * d.rms - d.mean * d.mean, 0.0));
        };
        return {std::max(ofA.rms, ofB.rms), std::max(turning(ofA), turning(ofB))};
    }

    std::pair<double, double> ErrorOf(const quality::Calibration& c) const
    {
        return ErrorOf(FullOf(c.correctionA), c.biasAngleA, FullOf(c.correctionB), c.biasAngleB);
    }

private:
    FullCorrection m_a;
    FullCorrection m_b;
    std::vector<quality::detail::Pose> m_gridA;
    std::vector<quality::detail::Pose> m_gridB;
    double m_elevation;
};

// What the joint fit would have made of turns that it refuses; no number where it finds nothing.
double UnaskedError(const CalibrationRun& run, const Truth& truth)
{
    const auto fit = [&](Magnetometer which) {
        return quality::detail::FitSphere(TurnOf(run.recorded.horizontal, run.sensorType, which),
                                          TurnOf(run.recorded.vertical, run.sensorType, which));
    };
    const auto a = fit(Magnetometer::A);
    const auto b = fit(Magnetometer::B);
    if (!a || !b) return std::nan("");
    return truth.ErrorOf(a->correction, 0.0, b->correction, 0.0).first;
}

Outcome Simulate(const Setting& s, std::uint64_t seed)
{
    quality::CalibrationTurns recorded;
    recorded.horizontal = SimulateTurn(s.sensor, s.field, s.horizontal, seed).samples;
    recorded.vertical = SimulateTurn(s.sensor, s.field, s.vertical, seed).samples;
    const CalibrationRun run = quality::RunSolver(std::move(recorded), s.sensor.type);

    Outcome outcome;
    outcome.report = quality::AssessCalibration(run);
    outcome.answered = run.solverAnswer != 0;
    const Truth truth(s);
    std::tie(outcome.solver, outcome.solverTurn) = truth.ErrorOf(run.calibration);
    outcome.finite = std::isfinite(outcome.solver);

    const quality::detail::JointModel model = quality::detail::FitBoth(run.recorded, s.sensor.type);
    const quality::JointFit fit =
        quality::detail::InEightValues(model, run.recorded, s.sensor.type);
    outcome.jointFitted = fit.outcome == quality::JointFitOutcome::Fitted;
    if (!outcome.jointFitted) outcome.jointUnasked = UnaskedError(run, truth);
    if (outcome.jointFitted) {
        outcome.joint = truth.ErrorOf(fit.calibration).first;
        outcome.jointFull = truth.ErrorOf(model.a.correction, 0.0, model.b.correction, 0.0).first;
    }
    return outcome;
}

using Outcomes = std::vector<Outcome>;
using Figure = std::function<double(const Outcome&)>;
using Chosen = std::function<bool(const Outcome&)>;

std::vector<double> Ranks(const std::vector<double>& values)
{
    std::vector<std::size_t> order(values.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(),
              [&](std::size_t i, std::size_t j) { return values[i] < values[j]; });
    std::vector<double> ranks(values.size());
    for (std::size_t place = 0; place < order.size(); ++place)
        ranks[order[place]] = static_cast<double>(place);
    return ranks;
}

double RankCorrelation(const Outcomes& outcomes, const Chosen& chosen, const Figure& figure,
                       const Figure& truth)
{
    std::vector<double> x;
    std::vector<double> y;
    for (const Outcome& o : outcomes) {
        if (!chosen(o)) continue;
        x.push_back(figure(o));
        y.push_back(truth(o));
    }
    const std::vector<double> rx = Ranks(x);
    const std::vector<double> ry = Ranks(y);
    const double middle = (static_cast<double>(x.size()) - 1.0) / 2.0;
    double xy = 0.0;
    double xx = 0.0;
    for (std::size_t i = 0; i < rx.size(); ++i) {
        xy += (rx[i] - middle) * (ry[i] - middle);
        xx += (rx[i] - middle) * (rx[i] - middle);
    }
    return xx > 0.0 ? xy / xx : 0.0;
}

double RmsOf(const Outcomes& outcomes, const Chosen& chosen, const Figure& figure)
{
    double squares = 0.0;
    int n = 0;
    for (const Outcome& o : outcomes) {
        if (!chosen(o)) continue;
        squares += figure(o) * figure(o);
        ++n;
    }
    return n > 0 ? std::sqrt(squares / n) : 0.0;
}

double MedianOf(const Outcomes& outcomes, const Chosen& chosen, const Figure& figure)
{
    std::vector<double> values;
    for (const Outcome& o : outcomes)
        if (chosen(o)) values.push_back(figure(o));
    if (values.empty()) return 0.0;
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

double ShareOf(const Outcomes& outcomes, const Chosen& among, const Chosen& chosen)
{
    int n = 0;
    int hits = 0;
    for (const Outcome& o : outcomes) {
        if (!among(o)) continue;
        ++n;
        if (chosen(o)) ++hits;
    }
    return n > 0 ? 100.0 * hits / n : 0.0;
}

bool Comparable(const Outcome& o)
{
    return o.finite && o.answered && o.jointFitted && o.report.agreement;
}

double SolverError(const Outcome& o)
{
    return o.solver;
}

Chosen Is(Verdict verdict)
{
    return [verdict](const Outcome& o) { return o.report.verdict == verdict; };
}

std::string ConditionLine(std::string_view name, const Outcomes& outcomes)
{
    const Chosen all = [](const Outcome&) { return true; };
    return fmt::format(
        "{:24}{:6.1f}{:8.2f}{:7.2f}{:8.2f}{:7.2f}{:8.2f}{:8.0f}{:6.0f}{:6.0f}{:6.0f}{:6.0f}\n",
        name, ShareOf(outcomes, all, Comparable), RmsOf(outcomes, Comparable, SolverError),
        MedianOf(outcomes, Comparable, SolverError),
        RmsOf(outcomes, Comparable, [](const Outcome& o) { return o.joint; }),
        MedianOf(outcomes, Comparable, [](const Outcome& o) { return o.joint; }),
        RmsOf(outcomes, Comparable, [](const Outcome& o) { return o.jointFull; }),
        ShareOf(outcomes, all, Is(Verdict::Good)), ShareOf(outcomes, all, Is(Verdict::Usable)),
        ShareOf(outcomes, all, Is(Verdict::Poor)), ShareOf(outcomes, all, Is(Verdict::Refused)),
        ShareOf(outcomes, all, [](const Outcome& o) { return o.report.weak; }));
}

std::string Correlations(const Outcomes& outcomes)
{
    struct Named
    {
        const char* name;
        Figure figure;
    };
    const Named figures[] = {
        {"difference from the joint fit",   [](const Outcome& o) { return o.report.headingError; }},
        {"spread of the corrected field",
         [](const Outcome& o) { return std::max(o.report.a.spreadAfter, o.report.b.spreadAfter); }},
        {"agreement of A and B, deviation",
         [](const Outcome& o) { return o.report.agreement->deviation; }                           },
        {"agreement of A and B, largest",
         [](const Outcome& o) { return o.report.agreement->largest; }                             },
        {"off the circle",
         [](const Outcome& o) {
             return std::max(o.report.horizontal.circleA, o.report.vertical.circleA);
         }                                                                                        },
        {"axis error",
         [](const Outcome& o) {
             return std::max(o.report.horizontal.axisError, o.report.vertical.axisError);
         }                                                                                        },
    };
    std::string text = "Rank correlation with the true heading error of the solver\n";
    for (const Named& f : figures) {
        text += fmt::format("  {:34}{:6.3f}\n", f.name,
                            RankCorrelation(outcomes, Comparable, f.figure, SolverError));
    }
    return text;
}

std::string Acceptance(const Outcomes& outcomes)
{
    const auto above = [](double limit) {
        return [limit](const Outcome& o) { return !(o.solver <= limit); };
    };
    const auto judged = [](Verdict verdict, bool weak) {
        return
            [=](const Outcome& o) { return o.report.verdict == verdict && o.report.weak == weak; };
    };
    const Chosen all = [](const Outcome&) { return true; };
    std::string text = "True error of what was called so, percent above\n"
                       "                     share     1   1.5     2     3   4.5     6 degrees\n";
    const auto line = [&](const char* name, const Chosen& chosen) {
        text += fmt::format("  {:16}{:8.1f}", name, ShareOf(outcomes, all, chosen));
        for (const double limit : {1.0, 1.5, 2.0, 3.0, 4.5, 6.0})
            text += fmt::format("{:6.1f}", ShareOf(outcomes, chosen, above(limit)));
        text += '\n';
    };
    line("good", judged(Verdict::Good, false));
    line("usable", judged(Verdict::Usable, false));
    line("poor", judged(Verdict::Poor, false));
    line("usable, weaker", judged(Verdict::Usable, true));
    line("poor, weaker", judged(Verdict::Poor, true));
    line("refused", Is(Verdict::Refused));
    return text;
}

// Why the joint fit refuses turns of less than 270 degrees.
std::string Refusals(const Outcomes& outcomes)
{
    const auto refused = [](const Outcome& o) {
        const quality::JointFitOutcome why = o.report.jointFit;
        return (why == quality::JointFitOutcome::HorizontalIncomplete
                || why == quality::JointFitOutcome::VerticalIncomplete)
               && std::isfinite(o.jointUnasked) && o.finite;
    };
    const Figure unasked = [](const Outcome& o) { return o.jointUnasked; };
    const auto above = [](double limit) {
        return [limit](const Outcome& o) { return o.jointUnasked > limit; };
    };
    return fmt::format(
        "Turns of less than 270 degrees, error of the joint fit, were it made\n"
        "  RMS {:.1f}, median {:.1f} degrees; above 10 degrees {:.1f} %, above 30 {:.1f} %; "
        "solver RMS {:.1f}\n",
        RmsOf(outcomes, refused, unasked), MedianOf(outcomes, refused, unasked),
        ShareOf(outcomes, refused, above(10.0)), ShareOf(outcomes, refused, above(30.0)),
        RmsOf(outcomes, refused, SolverError));
}

} // namespace

std::string CalibrationStudy(int runs, std::uint64_t seed)
{
    std::string text = "                       joint     solver       joint eight    full\n"
                       "condition                  %     RMS median     RMS median    RMS    good "
                       "usab. poor  ref.  weak\n";
    Outcomes all;
    std::uint64_t next = seed * 1000003;
    for (const Condition& condition : Conditions()) {
        Outcomes outcomes;
        for (int i = 0; i < runs; ++i) {
            simulation::Generator random(++next, simulation::Stream::Placement);
            Setting setting = Ordinary(random);
            condition.apply(setting, random);
            outcomes.push_back(Simulate(setting, next));
        }
        text += ConditionLine(condition.name, outcomes);
        all.insert(all.end(), outcomes.begin(), outcomes.end());
    }
    text += ConditionLine("all", all);
    return fmt::format("{}\n{}\n{}\n{}", text, Correlations(all), Acceptance(all), Refusals(all));
}

} // namespace study
