// SPDX-License-Identifier: MIT
#include "field/job/EpochSummary.h"

#include "field/time/EpochClock.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>

namespace tiltpole::field {

using ::field::Epoch;
using ::field::JobTime;
using ::field::kNotKnown;
using std::chrono::days;
using std::chrono::hours;
using std::chrono::milliseconds;

namespace {

// UTC of an epoch. Without a date, the day is the one that brings it nearest to `now`.
std::optional<JobTime> TimeOf(const Epoch& epoch, JobTime now)
{
    const auto ofDay = SecondsOfDay(epoch.utc);
    if (!ofDay) return std::nullopt;
    const milliseconds passed{std::llround(*ofDay * 1000.0)};
    if (epoch.date) return *epoch.date + passed;
    JobTime time = std::chrono::floor<days>(now) + passed;
    if (time - now > hours{12}) time -= days{1};
    if (now - time > hours{12}) time += days{1};
    return time;
}

} // namespace

void Summarize(::field::JobPoint& point, const std::vector<const Epoch*>& used, JobTime now)
{
    std::optional<JobTime> first;
    std::optional<JobTime> last;
    double geoid = 0.0;
    for (const Epoch* epoch : used) {
        if (const auto time = TimeOf(*epoch, now)) {
            first = std::min(first.value_or(*time), *time);
            last = std::max(last.value_or(*time), *time);
        }
        geoid += epoch->geoidSeparation;
        if (!(point.correctionAge >= epoch->correctionAge.value_or(kNotKnown)))
            point.correctionAge = epoch->correctionAge.value_or(point.correctionAge);
    }
    point.utc = first ? *first + (*last - *first) / 2 : now;
    point.geoid = geoid / static_cast<double>(used.size());
    point.receivedHeight = point.tip.ellipsoidalHeight - point.geoid;
    point.quality = used.front()->fix;
    point.station = used.front()->station;
}

double SecondsOf(::field::Instant instant)
{
    return std::chrono::duration<double>(instant).count();
}

} // namespace tiltpole::field
