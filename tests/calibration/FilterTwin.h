// SPDX-License-Identifier: MIT
//
// One of the sample filters and its literal counterpart, fed with the same samples.
#pragma once

#include "calibration/InclineSensor_Filter_XY.h"
#include "calibration/InclineSensor_Filter_XZ.h"
#include "tests/reference/LiteralFilter.h"
#include "tests/reference/Turns.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <vector>

template <class Filter>
inline constexpr turns::TurnAxis kTurnAxis = turns::TurnAxis::Horizontal;
template <>
inline constexpr turns::TurnAxis kTurnAxis<CInclineSensor_Filter_XZ> = turns::TurnAxis::Vertical;

// Access to the protected operations of a filter.
template <class Filter>
struct Reach : Filter
{
    using Filter::Calculate_Azimuth;
    using Filter::Calculate_Azimuth_One;
    using Filter::Calculate_CenterPar;
    using Filter::Filter_ByAzimuth;
    using Filter::Filter_ByDistance;
    using Filter::Filter_ByTime;
};

// Equal numbers, or both NaN.
inline bool Same(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

template <class Filter>
class Twin
{
public:
    void Add(const PoseSensorData& sample)
    {
        m_Mirror.push_back(std::make_unique<PoseSensorData>(sample));
        m_Given.push_back(new PoseSensorData(sample));
        m_Index[m_Given.back()] = m_Index[m_Mirror.back().get()] = m_Given.size() - 1;
        fast.Add(m_Given.back());
        literal.Add(m_Mirror.back().get());
    }

    void Clear()
    {
        fast.Clear();
        literal.Clear();
        m_Given.clear();
        m_Mirror.clear();
        m_Index.clear();
    }

    std::size_t Count() const { return m_Given.size(); }

    // The same entries of both records; a negative index is a null entry.
    void Pick(const std::vector<int>& indices, turns::Samples& given, literal::List& mirror) const
    {
        for (const int i : indices) {
            const auto at = static_cast<std::size_t>(i);
            given.Add(i < 0 ? nullptr : m_Given[at]);
            mirror.push_back(i < 0 ? nullptr : m_Mirror[at].get());
        }
    }

    ::testing::AssertionResult HasSameState()
    {
        const PoseSensorCenterParameter a = fast.GetCenterPar();
        const PoseSensorCenterParameter b = literal.center;
        if (a.nValid != b.nValid || !Same(a.dX, b.dX) || !Same(a.dY, b.dY) || !Same(a.dZ, b.dZ)
            || !Same(a.dRadius, b.dRadius))
            return ::testing::AssertionFailure()
                   << "center " << a.dX << ' ' << a.dY << ' ' << a.dZ << ' ' << a.dRadius
                   << " instead of " << b.dX << ' ' << b.dY << ' ' << b.dZ << ' ' << b.dRadius;
        for (std::size_t i = 0; i < m_Given.size(); ++i)
            if (!Same(m_Given[i]->dAzimuth, m_Mirror[i]->dAzimuth)
                || m_Given[i]->GetTurnFlag() != m_Mirror[i]->GetTurnFlag())
                return ::testing::AssertionFailure()
                       << "sample " << i << " of " << m_Given.size() << ": azimuth "
                       << m_Given[i]->dAzimuth << " flag " << m_Given[i]->GetTurnFlag()
                       << " instead of " << m_Mirror[i]->dAzimuth << ' '
                       << m_Mirror[i]->GetTurnFlag();
        return ::testing::AssertionSuccess();
    }

    ::testing::AssertionResult HasSameCoverage()
    {
        if (fast.GetRecordRate() == literal.GetRecordRate()
            && fast.IsRecordOK() == (literal.IsRecordOK() ? 1 : 0))
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure()
               << fast.GetRecordRate() << " % instead of " << literal.GetRecordRate() << " %";
    }

    // Takes ownership of the array.
    ::testing::AssertionResult IsSame(turns::Samples* result, const literal::List& expected)
    {
        const std::unique_ptr<turns::Samples> owner(result);
        if (!result && expected.empty()) return ::testing::AssertionSuccess();
        if (!result || static_cast<std::size_t>(result->GetSize()) != expected.size())
            return ::testing::AssertionFailure()
                   << (result ? result->GetSize() : 0) << " samples instead of " << expected.size();
        for (std::size_t i = 0; i < expected.size(); ++i) {
            const PoseSensorData* sample = result->GetAt(static_cast<INT_PTR>(i));
            const bool bothNull = !sample && !expected[i];
            if (!bothNull && (!sample || !expected[i] || m_Index[sample] != m_Index[expected[i]]))
                return ::testing::AssertionFailure() << "another sample at " << i;
        }
        return ::testing::AssertionSuccess();
    }

    Reach<Filter> fast;
    ::literal::Filter literal{{kTurnAxis<Filter>}};

private:
    std::vector<PoseSensorData*> m_Given;
    std::vector<std::unique_ptr<PoseSensorData>> m_Mirror;
    std::map<const PoseSensorData*, std::size_t> m_Index;
};
