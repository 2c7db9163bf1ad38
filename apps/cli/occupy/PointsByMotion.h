// SPDX-License-Identifier: MIT
//
// Tells the points of a log without names apart, row by row.
//
//   a point    begins where the tip comes to rest and ends where it leaves: TipWatch. A step back
//              in time, and a pause of gyros or antenna that could hide a walk, end it, too
//   margins    after a walk the first second is left out, before one the last second
//   too short  what is left must take two seconds, or it was a stop on the way
//
// Two places never become one point. A point may become two, as when the antenna jumps.
#pragma once

#include "apps/cli/occupy/PointInWork.h"
#include "apps/cli/occupy/TipWatch.h"
#include <deque>

namespace cli {

class PointsByMotion
{
public:
    /// The points go to `result`, named 1, 2, 3 ... Both must outlive the object.
    PointsByMotion(const OccupySetup& setup, OccupyResult& result);

    void Add(const LogRow& row);

    /// The log has ended.
    void Finish();

private:
    bool BreaksOff(const LogRow& row) const;
    bool AntennaPauses(double now) const;
    void ReleaseUntil(double seconds);
    void Release(const LogRow& row);
    void End();
    void LeaveOut(const LogRow& row);

    OccupyResult& m_result;
    TipWatch m_watch;
    PointInWork m_point;
    std::deque<LogRow> m_waiting; // the tip may have left in the meantime
    std::optional<double> m_last; // time of the last row [s]
    std::optional<double> m_sure; // time of the last epoch at which the tip stood [s]
    std::optional<double> m_from; // rows before this time are left out [s]
    double m_first = 0.0;         // time of the point's first row [s]
    double m_end = 0.0;           // and of its last row [s]
};

} // namespace cli
