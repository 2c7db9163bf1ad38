// SPDX-License-Identifier: MIT
//
// One occupation while its rows come in.
#pragma once

#include "apps/cli/occupy/AxesCheck.h"
#include "apps/cli/occupy/FieldOfPoint.h"
#include "apps/cli/occupy/LogRow.h"
#include "apps/cli/occupy/OccupiedPoint.h"
#include "apps/cli/occupy/RowCheck.h"
#include "positioning/InclineSensor_Position.h"

namespace cli {

class PointInWork
{
public:
    /// @param setup  must outlive the object
    explicit PointInWork(const OccupySetup& setup);

    void Begin(std::string name);
    void Add(const LogRow& row);
    bool HasBegun() const { return m_point.has_value(); }
    const OccupiedPoint& Point() const { return *m_point; }

    /// Estimates the tip; the next point can begin.
    OccupiedPoint End();

    /// Forgets the point.
    void Drop() { m_point.reset(); }

private:
    void Take(const WaitingRow& row);
    void TakeWaiting();
    std::optional<field::SensorVector> ReadingOfB(const PoseSensorData& pose) const;
    void AddSingleTip(const LogRow& row);
    void Judge();
    std::optional<std::string> UnitProblem() const;
    std::optional<std::string> SensorProblem() const;

    const OccupySetup& m_setup;
    CInclineSensor_Position m_position; // of single samples
    field::Occupation m_occupation;
    AxesCheck m_axes;
    RowCheck m_rows;
    bool m_watches = false;            // whether the field of this point is
    std::vector<WaitingRow> m_waiting; // where it is
    std::optional<OccupiedPoint> m_point;
    double m_last = 0.0; // time of the samples [s]
};

} // namespace cli
