// SPDX-License-Identifier: MIT
//
// The table of true tips, point,N,E,h, and the errors against it.
#pragma once

#include "apps/cli/occupy/OccupiedPoint.h"
#include "apps/tables/Statistics.h"

namespace cli {

/// Gives each point that has a tip, and is in the table OccupySetup::truth, its error.
/// @throws InputError when the table cannot be read, names a point twice or has none of the points
void CompareWithTruth(OccupyResult& result);

/// The same for one point whose tip is known.
void CompareWithTip(OccupiedPoint& point, const xyhCoordinate& truth);

/// Errors of points: in plan, and of the height, absolute [m].
struct ErrorSummary
{
    tables::Percentiles plan;
    tables::Percentiles height;
    std::uint64_t inEllipse = 0;
    std::uint64_t inInterval = 0;

    std::uint64_t Count() const { return plan.Count(); }
};

/// Of the tips of single samples, and of their mean at each point; their regions are not known.
ErrorSummary SummaryOfSamples(const OccupyResult& result);
ErrorSummary SummaryOfMeans(const OccupyResult& result);

/// @param storedOnly  of the points with the advice to store
ErrorSummary SummaryOf(const OccupyResult& result, bool storedOnly);

} // namespace cli
