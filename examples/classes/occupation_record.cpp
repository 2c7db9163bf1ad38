// SPDX-License-Identifier: MIT
//
// field::OccupationRecordOf: the tip of a live pole that only moves, by its occupation, as a point of a
// job with everything it was computed from.
#include "field/job/OccupationRecord.h"

#include "LivePole.h"
#include "field/OccupationTrack.h"

#include <cstdio>
#include <vector>

int main()
{
    const std::vector<field::Report> reports =
        live::Reports(live::PoleSetup(), live::Records({.lean = 12.0}, 12));
    const field::Report& first = reports.front();
    const field::Report& last = reports.back();
    std::printf("first report: %s\n", first.occupation ? "an occupation" : "no occupation yet");
    if (!last.occupation || !last.occupationTrack) return 1;
    std::printf("last report: %s\n", field::OccupationText(*last.occupation).c_str());
    std::printf("its track: %s\n",
                last.occupationTrack->pieces.size() >= 50 ? "50 epochs or more" : "too short");

    const field::JobRecord none = field::OccupationRecordOf(first, {});
    std::printf("first report: %s\n", none.error.c_str());
    const field::JobRecord record = field::OccupationRecordOf(last, {});
    if (!record.error.empty()) return 1;
    std::printf("point %s\n", record.point.byOccupation ? "by occupation" : "by a mean");
    const xyhCoordinate off = field::Difference(planted::kPlace, record.point.tip);
    std::printf("within 5 mm of the mark: %s\n",
                std::hypot(off.x, off.y, off.h) < 0.005 ? "yes" : "no");
}
