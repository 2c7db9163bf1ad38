// SPDX-License-Identifier: MIT
//
// field::JobRecordOf: the reports of one still tip as a point and its epochs, ready for a job.
#include "field/job/JobRecord.h"

#include "LivePole.h"
#include "field/job/JobTime.h"

#include <cstdio>
#include <span>
#include <string>
#include <vector>

int main()
{
    const auto now = field::JobTimeOf("2026-11-22T13:00:10.25Z");
    if (!now) return 1;
    std::printf("now %s\n", field::JobTimeText(*now).c_str());

    const field::JobSetup setup = field::JobSetupOf(live::PoleSetup(), "example 1.0", *now);
    std::printf("pole of %.3f m, delay %.3f s, north by %s\n", setup.poleLength, setup.delay,
                setup.north == "file" ? "the calibration" : "the model");

    const planted::Pole pole{.lean = 0.0, .pitch = 10.0};
    const std::vector<field::Report> reports =
        live::Reports(live::PoleSetup(), live::Records(pole, 6));
    const std::span<const field::Report> settled = std::span(reports).last(10);
    const field::JobRecord record = field::JobRecordOf(settled, *now);
    if (!record.error.empty()) return 1;

    std::printf("%d epochs, gate \"%s\", at %s\n", record.point.epochs, record.point.gate.c_str(),
                field::JobTimeText(record.point.utc).c_str());
    std::printf("tip %.7f N %.7f E, h %.3f m\n", record.point.tip.latitude,
                record.point.tip.longitude, record.point.tip.ellipsoidalHeight);
    const std::string& pose = record.epochs.front().pose;
    std::printf("first epoch: %s\n", pose.substr(0, pose.find('\r')).c_str());

    const field::JobRecord none = field::JobRecordOf({}, *now);
    std::printf("no reports: %s\n", none.error.c_str());
}
