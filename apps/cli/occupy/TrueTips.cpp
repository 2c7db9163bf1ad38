// SPDX-License-Identifier: MIT
#include "apps/cli/occupy/TrueTips.h"

#include "apps/cli/occupy/OccupationLog.h"
#include "apps/tables/Ranges.h"
#include "apps/tables/ReadFile.h"
#include "survey/Angle.h"
#include <cmath>
#include <fmt/format.h>
#include <map>

namespace cli {

namespace survey = tiltpole::survey;

namespace {

using Tips = std::map<std::string, xyhCoordinate, std::less<>>;

Tips ReadTips(const std::string& path)
{
    tables::CsvReader rows(path, tables::kMostInMemory);
    std::vector<std::string> missing;
    const auto name = FindColumn(rows, kPointName, {});
    if (!name) missing.emplace_back(kPointName.key);
    const auto point = tables::FindPointColumns(rows, {}, missing);
    if (!name || !point) throw rows.MissingColumns(missing);
    Tips tips;
    while (rows.Next()) {
        const xyhCoordinate tip{tables::NumberIn(rows, point->north, tables::kCoordinate),
                                tables::NumberIn(rows, point->east, tables::kCoordinate),
                                tables::NumberIn(rows, point->height, tables::kHeight)};
        if (!tips.emplace(rows.Field(*name), tip).second)
            throw rows.Error(fmt::format("the point {} is in the table twice", rows.Field(*name)));
    }
    return tips;
}

TipError ErrorOf(const field::OccupationEstimate& estimate, const xyhCoordinate& truth)
{
    TipError error{estimate.tip.x - truth.x, estimate.tip.y - truth.y, estimate.tip.h - truth.h,
                   false, false};
    const double azimuth = survey::Deg2Rad(estimate.ellipseAzimuth);
    const double along = error.north * std::cos(azimuth) + error.east * std::sin(azimuth);
    const double across = error.east * std::cos(azimuth) - error.north * std::sin(azimuth);
    error.inEllipse =
        std::hypot(along / estimate.ellipseMajor, across / estimate.ellipseMinor) <= 1.0;
    error.inInterval = std::fabs(error.height) <= estimate.heightHalfInterval;
    return error;
}

void AddError(ErrorSummary& summary, const xyhCoordinate& tip, const xyhCoordinate& truth)
{
    summary.plan.Add(std::hypot(tip.x - truth.x, tip.y - truth.y));
    summary.height.Add(std::fabs(tip.h - truth.h));
}

} // namespace

void CompareWithTip(OccupiedPoint& point, const xyhCoordinate& truth)
{
    point.truth = truth;
    if (point.estimate.hasTip) point.error = ErrorOf(point.estimate, truth);
}

void CompareWithTruth(OccupyResult& result)
{
    const Tips tips = ReadTips(result.setup.truth);
    bool any = result.points.empty();
    for (OccupiedPoint& point : result.points) {
        const auto truth = tips.find(point.name);
        if (truth == tips.end()) continue;
        any = true;
        CompareWithTip(point, truth->second);
    }
    if (!any)
        throw tables::InputError(result.setup.truth,
                                 fmt::format("has none of the points of {}", result.setup.log));
}

ErrorSummary SummaryOfSamples(const OccupyResult& result)
{
    ErrorSummary summary;
    for (const OccupiedPoint& point : result.points) {
        if (!point.truth) continue;
        for (const xyhCoordinate& tip : point.singleTips)
            AddError(summary, tip, *point.truth);
    }
    return summary;
}

ErrorSummary SummaryOfMeans(const OccupyResult& result)
{
    ErrorSummary summary;
    for (const OccupiedPoint& point : result.points) {
        const auto mean = point.MeanTip();
        if (point.truth && mean) AddError(summary, *mean, *point.truth);
    }
    return summary;
}

ErrorSummary SummaryOf(const OccupyResult& result, bool storedOnly)
{
    ErrorSummary summary;
    for (const OccupiedPoint& point : result.points) {
        const bool stored = point.estimate.advice == field::OccupationAdvice::Store;
        if (!point.error || (storedOnly && !stored)) continue;
        summary.plan.Add(std::hypot(point.error->north, point.error->east));
        summary.height.Add(std::fabs(point.error->height));
        summary.inEllipse += point.error->inEllipse ? 1 : 0;
        summary.inInterval += point.error->inInterval ? 1 : 0;
    }
    return summary;
}

} // namespace cli
