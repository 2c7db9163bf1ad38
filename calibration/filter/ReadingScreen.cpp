// SPDX-License-Identifier: MIT
#include "calibration/filter/ReadingScreen.h"

#include "calibration/ShortMemory.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace tiltpole::calibration {
namespace {

constexpr int kReadings = 6;
constexpr double kReadingVariance = 16.0; // counts², of measurement and process alike
constexpr double kInitialVariance = 25.0; // counts²
constexpr double kLeastStep = 3.0;        // counts

void Prepare(CKFilter& filter, const CSZMatrix& start)
{
    const CSZMatrix identity(kReadings, kReadings, MatIdentity);
    const CSZMatrix zero(kReadings, kReadings);
    filter.SetMatrixOrder(kReadings, kReadings);
    filter.SetSystemMatrix(identity, zero, identity, identity, zero);
    filter.SetNoise(identity * kReadingVariance, identity * kReadingVariance);
    filter.SetInitialData(start, identity * kInitialVariance);
}

// The rows with the greatest and the least value of column 0; the first of equals.
std::pair<int, int> ExtremeRows(const CSZMatrix& readings)
{
    int greatest = 0;
    int least = 0;
    for (int i = 1; i < readings.getRowSize(); ++i) {
        const double value = readings.GetData(i, 0);
        if (value > readings.GetData(greatest, 0))
            greatest = i;
        else if (value < readings.GetData(least, 0))
            least = i;
    }
    return {greatest, least};
}

bool Advances(double value, double last, bool rising)
{
    if (rising ? value < last : value > last) return false;
    return !(std::fabs(value - last) < kLeastStep);
}

} // namespace

void SmoothRows(CKFilter& filter, CSZMatrix& readings)
{
    if (readings.getColSize() != kReadings) return;

    Prepare(filter, readings.SliceRows(0, 1).matTran());
    const CSZMatrix noControl(kReadings, 1);
    for (int i = 1; i < readings.getRowSize(); ++i) {
        const CSZMatrix estimate = filter.Filter(readings.SliceRows(i, 1).matTran(), noControl);
        readings.SetData(i, 0, estimate.matTran());
    }
}

void KeepStepsOfTurn(CSZMatrix& readings)
{
    if (readings.getRowSize() < 1) return;

    const auto [greatest, least] = ExtremeRows(readings);
    const int firstEnd = std::min(greatest, least);
    const int secondEnd = std::max(greatest, least);
    const bool startsRising = greatest < least;
    std::vector<int> taken{0};
    for (int i = 1; i < readings.getRowSize(); ++i) {
        const bool outward = i > firstEnd && i <= secondEnd;
        const double last = readings.GetData(taken.back(), 0);
        if (Advances(readings.GetData(i, 0), last, startsRising != outward)) taken.push_back(i);
    }

    CSZMatrix kept(static_cast<int>(taken.size()), readings.getColSize());
    CheckAllocated(kept, static_cast<int>(taken.size()));
    for (int i = 0; i < kept.getRowSize(); ++i)
        for (int c = 0; c < kept.getColSize(); ++c)
            kept.SetData(i, c, readings.GetData(taken[static_cast<std::size_t>(i)], c));
    readings = std::move(kept);
}

} // namespace tiltpole::calibration
