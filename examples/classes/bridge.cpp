// SPDX-License-Identifier: MIT
//
// field::Bridge: bytes of a receiver and of a pose sensor in, tips with a verdict out.
#include "field/Bridge.h"

#include "LivePole.h"

#include <chrono>
#include <cstdio>
#include <optional>

int main()
{
    field::Bridge bridge(live::PoleSetup());
    const planted::Pole pole{.lean = 0.0, .pitch = 10.0}; // stands still, leans by 10 degrees

    std::optional<field::State> last;
    for (const field::Record& record : live::Records(pole, 4)) {
        if (record.channel == field::Channel::Pose)
            bridge.FeedPose(record.bytes, record.at);
        else
            bridge.FeedReceiver(record.bytes, record.at);
        bridge.Tick(record.at);

        for (const field::Report& report : bridge.Take()) {
            const field::State state = report.verdict.state;
            if (state == last || !report.tip) continue;
            last = state;
            std::printf("%s UTC: %s\n", report.epoch.utc.c_str(),
                        state == field::State::Store  ? "store"
                        : state == field::State::Wait ? "wait"
                                                      : "block");
            if (!report.verdict.reasons.empty())
                std::printf("  %s\n", report.verdict.reasons.front().text.c_str());
            std::printf("  tip %.7f N %.7f E, h %.3f m, leans %.1f degrees\n",
                        report.tip->position.latitude, report.tip->position.longitude,
                        report.tip->position.ellipsoidalHeight, report.tip->tilt);
            std::printf("  %s\n", report.nmea.substr(0, report.nmea.find('\r')).c_str());
        }
    }
    std::printf("%d epochs, %d poses\n", static_cast<int>(bridge.Count().epochs),
                static_cast<int>(bridge.Count().poses));
}
