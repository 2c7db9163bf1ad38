// SPDX-License-Identifier: MIT
#include "apps/study/VerdictStudy.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace study {

namespace {

using quality::Verdict;

bool All(const Trial&)
{
    return true;
}

double AsUsed(const Trial& t)
{
    return t.solver.error.asUsed;
}

double TrueTilt(const Trial& t)
{
    return t.solver.error.trueTilt;
}

double Difference(const Trial& t)
{
    return t.solver.report.headingError;
}

double UncertaintyOf(const Trial& t)
{
    return std::max(t.solver.report.a.heading->uncertainty, t.solver.report.b.heading->uncertainty);
}

double Enlarged(const Trial& t, double certainty)
{
    return std::max(t.solver.report.a.heading->With(certainty),
                    t.solver.report.b.heading->With(certainty));
}

// Not below or equal, so that no number is above.
Chosen Above(const Figure& figure, double limit)
{
    return [=](const Trial& t) { return !(figure(t) <= limit); };
}

Chosen Below(const Figure& figure, double limit)
{
    return [=](const Trial& t) { return figure(t) < limit; };
}

struct Named
{
    const char* name;
    Figure figure;
};

std::string CorrelationTable(const Trials& trials, const std::vector<Named>& figures,
                             const Figure& asUsed, const Figure& trueTilt)
{
    std::string text;
    for (const Named& f : figures) {
        text += fmt::format("  {:34}{:8.3f}{:10.3f}\n", f.name,
                            RankCorrelation(trials, Comparable, f.figure, asUsed),
                            RankCorrelation(trials, Comparable, f.figure, trueTilt));
    }
    return text;
}

std::string AcceptanceTable(const Trials& trials, Result Trial::*method, const Figure& error)
{
    std::string text;
    const auto line = [&](const char* name, const Chosen& chosen) {
        text += fmt::format("  {:16}{:8.1f}", name, ShareOf(trials, All, chosen));
        for (const double limit : {1.0, 1.2, 1.5, 2.0, 3.0, 4.5, 6.0})
            text += fmt::format("{:7.2f}", ShareOf(trials, chosen, Above(error, limit)));
        text += '\n';
    };
    const bool isJoint = method == &Trial::joint;
    const auto judged = [=](Verdict verdict, bool weak) {
        return [=](const Trial& t) {
            return (!isJoint || t.jointFitted) && (t.*method).report.verdict == verdict
                   && (t.*method).report.weak == weak;
        };
    };
    line("good", judged(Verdict::Good, false));
    line("usable", judged(Verdict::Usable, false));
    line("poor", judged(Verdict::Poor, false));
    if (!isJoint) {
        line("unchecked", judged(Verdict::Unchecked, true));
        line("poor, weaker", judged(Verdict::Poor, true));
        line("refused", judged(Verdict::Refused, false));
    }
    return text;
}

} // namespace

std::string Correlations(const Trials& trials)
{
    const auto both = [](auto turn) {
        return [turn](const Trial& t) {
            return std::max(turn(t.solver.report.horizontal), turn(t.solver.report.vertical));
        };
    };
    const Figure axis = both([](const quality::TurnFigures& f) { return f.axisError; });
    const Figure circle = both([](const quality::TurnFigures& f) { return f.circleA; });
    const Figure wobble = both([](const quality::TurnFigures& f) { return f.wobble; });
    const Figure spread = [](const Trial& t) {
        return std::max(t.solver.report.a.spreadAfter, t.solver.report.b.spreadAfter);
    };
    const Figure disturbed = [](const Trial& t) {
        return std::max(t.solver.report.a.disturbed, t.solver.report.b.disturbed);
    };
    const Figure samples = [](const Trial& t) {
        return -std::min(t.solver.report.horizontal.recorded, t.solver.report.vertical.recorded);
    };
    const std::vector<Named> ofSolver = {
        {"difference from the joint fit",   Difference                      },
        {"spread of the corrected field",   spread                          },
        {"agreement of A and B, deviation",
         [](const Trial& t) { return t.solver.report.agreement->deviation; }},
        {"agreement of A and B, largest",
         [](const Trial& t) { return t.solver.report.agreement->largest; }  },
        {"off the circle",                  circle                          },
        {"axis error",                      axis                            },
    };
    const std::vector<Named> ofJoint = {
        {"uncertainty of the joint fit",  UncertaintyOf},
        {"difference from the joint fit", Difference   },
        {"few samples",                   samples      },
        {"wobble",                        wobble       },
        {"axis error",                    axis         },
        {"disturbed readings",            disturbed    },
        {"spread of the corrected field", spread       },
    };
    return "Rank correlation with the true error of the solver: as used, true tilt\n"
           + CorrelationTable(trials, ofSolver, AsUsed, TrueTilt)
           + "Rank correlation with the true error of the joint fit: as used, true tilt\n"
           + CorrelationTable(
               trials, ofJoint, [](const Trial& t) { return t.jointFull.asUsed; },
               [](const Trial& t) { return t.jointFull.trueTilt; });
}

std::string Acceptance(const Trials& trials)
{
    const char* head = "True error of what was called so, percent above; {}, {}\n"
                       "                     share      1    1.2    1.5      2      3    4.5      "
                       "6 degrees\n";
    const auto table = [&](const char* name, Result Trial::*method) {
        return fmt::format(fmt::runtime(head), name, "as used")
               + AcceptanceTable(trials, method,
                                 [=](const Trial& t) { return (t.*method).error.asUsed; })
               + fmt::format(fmt::runtime(head), name, "true tilt")
               + AcceptanceTable(trials, method,
                                 [=](const Trial& t) { return (t.*method).error.trueTilt; });
    };
    return table("solver", &Trial::solver) + table("joint fit", &Trial::joint);
}

std::string Certainties(const Trials& trials)
{
    std::string text =
        "By the certainty c: percent of the truly below 1 that are called good, of the called good "
        "that\nare above 1, of the truly below 3 that are accepted, of the truly above 3 that are "
        "accepted,\nof the called usable that are above 3\n"
        "   c       as used                             true tilt\n";
    const auto part = [&](const Figure& enlarged, const Figure& error) {
        const auto among = [&](const Chosen& chosen) {
            return [&, chosen](const Trial& t) { return Comparable(t) && chosen(t); };
        };
        const auto usable = [&](const Trial& t) {
            return Comparable(t) && 1.0 <= enlarged(t) && enlarged(t) < 3.0;
        };
        return fmt::format("{:7.1f}{:7.2f}{:7.1f}{:7.2f}{:7.2f}",
                           ShareOf(trials, among(Below(error, 1.0)), Below(enlarged, 1.0)),
                           ShareOf(trials, among(Below(enlarged, 1.0)), Above(error, 1.0)),
                           ShareOf(trials, among(Below(error, 3.0)), Below(enlarged, 3.0)),
                           ShareOf(trials, among(Above(error, 3.0)), Below(enlarged, 3.0)),
                           ShareOf(trials, usable, Above(error, 3.0)));
    };
    for (const double certainty : {0.0, 0.5, 1.0, 1.5, 2.0, 2.5, 3.0}) {
        const Figure enlarged = [=](const Trial& t) { return Enlarged(t, certainty); };
        text += fmt::format("  {:3.1f} {} {}\n", certainty, part(enlarged, AsUsed),
                            part(enlarged, TrueTilt));
    }
    const Figure times = [](const Trial& t) { return t.jointFull.asUsed / UncertaintyOf(t); };
    text += "True error of the joint fit, as used, in its uncertainties:";
    for (const double share : {0.5, 0.9, 0.95, 0.99}) {
        text += fmt::format(" {:.0f} % below {:.2f}", 100.0 * share,
                            QuantileOf(trials, Comparable, times, share));
    }
    text += "\nUncertainty of the joint fit, degrees:";
    for (const double share : {0.1, 0.5, 0.9, 0.99}) {
        text += fmt::format(" {:.0f} % below {:.2f}", 100.0 * share,
                            QuantileOf(trials, Comparable, UncertaintyOf, share));
    }
    return text + "\n";
}

std::string ClosenessHead()
{
    return "                            as used                           true tilt\n"
           "                         joint  error less figure  >1 of   joint  error less figure  "
           ">1 of\n"
           "condition                  fit   10 %   50 %   90 %  good    fit   10 %   50 %   90 %  "
           "good  uncertainty, 90 % of joint fits within\n";
}

std::string Closeness(std::string_view name, const Trials& trials)
{
    const Chosen good = [](const Trial& t) { return t.solver.report.verdict == Verdict::Good; };
    const auto part = [&](const Figure& joint, const Figure& error) {
        const Figure less = [&](const Trial& t) { return error(t) - Difference(t); };
        return fmt::format(
            "{:7.2f}{:7.2f}{:7.2f}{:7.2f}{:6.1f}", QuantileOf(trials, Comparable, joint, 0.5),
            QuantileOf(trials, Comparable, less, 0.1), QuantileOf(trials, Comparable, less, 0.5),
            QuantileOf(trials, Comparable, less, 0.9), ShareOf(trials, good, Above(error, 1.0)));
    };
    const Figure times = [](const Trial& t) { return t.jointFull.asUsed / UncertaintyOf(t); };
    return fmt::format("{:23}{}{}{:8.2f}{:8.2f}\n", name,
                       part([](const Trial& t) { return t.jointFull.asUsed; }, AsUsed),
                       part([](const Trial& t) { return t.jointFull.trueTilt; }, TrueTilt),
                       QuantileOf(trials, Comparable, UncertaintyOf, 0.5),
                       QuantileOf(trials, Comparable, times, 0.9));
}

} // namespace study
