// SPDX-License-Identifier: MIT
#include "simulation/trials/OccupationCases.h"

namespace simulation {

namespace {

OccupationCase CaseOf(std::string name, const PlantedMotion& motion)
{
    OccupationCase occupation{std::move(name), CalibratedSensor(), {}};
    occupation.plan.motion = motion;
    occupation.plan.anew = true;
    return occupation;
}

PlantedMotion LeanInTo(double lean)
{
    PlantedMotion motion = UsualMotion(OccupationMotion::LeanIn);
    motion.leanTo = lean;
    return motion;
}

PlantedMotion OppositeLeans()
{
    return UsualMotion(OccupationMotion::OppositeLeans);
}

PlantedMotion RockedBy(double amplitude)
{
    PlantedMotion motion = UsualMotion(OccupationMotion::Rock);
    motion.amplitude = amplitude;
    return motion;
}

PlantedMotion Lasting(PlantedMotion motion, double seconds)
{
    motion.duration = seconds;
    return motion;
}

struct Fault
{
    const char* name;
    void (*apply)(OccupationCase&);
};

// clang-format off
constexpr Fault kFaults[] = {
    {"none", [](OccupationCase&) {}},
    {"the tip slips by 30 mm",
     [](OccupationCase& c) {
         c.plan.motion.slips.push_back({
             .at = 3.0, .by = {0.03, 0.0, 0.0}
         });
     }},
    {"the pole is 50 mm longer", [](OccupationCase& c) { c.plan.poleError = 0.05; }},
    {"the antenna is 100 ms late", [](OccupationCase& c) { c.plan.delay = 0.1; }},
    {"a magnet of 150 counts",
     [](OccupationCase& c) {
         c.plan.magnets.push_back({.from = 0.0, .to = 100.0, .strength = 150.0, .azimuth = 60.0});
     }},
    {"gyros read 1 % too much",
     [](OccupationCase& c) {
         c.sensor.gyroScale = {0.01, 0.01, 0.01};
     }},
    {"gyros end at 8 degrees/s", [](OccupationCase& c) { c.sensor.gyroRange = 8.0; }},
    {"half of the epochs lost", [](OccupationCase& c) { c.plan.epochLosses.share = 0.5; }},
    {"2 s without epochs",
     [](OccupationCase& c) {
         c.plan.epochLosses.gaps.push_back({1.0, 3.0});
     }},
    {"off by 0.6 m for 1 s",
     [](OccupationCase& c) {
         c.plan.jumps.push_back({
             2.0, 3.0, {0.3, 0.2, 0.48}
         });
     }},
    {"off by 60 mm for the last 2 s",
     [](OccupationCase& c) {
         c.plan.jumps.push_back({
             3.0, 100.0, {0.05, 0.02, 0.03}
         });
     }},
};
// clang-format on

} // namespace

std::vector<OccupationCase> OccupationMotions()
{
    return {CaseOf("lean in, 5 to 20 degrees", LeanInTo(20.0)),
            CaseOf("lean in, 5 to 30 degrees", LeanInTo(30.0)),
            CaseOf("two opposite leans of 15 degrees", OppositeLeans()),
            CaseOf("rock by 5 degrees about 10", RockedBy(5.0)),
            CaseOf("hold at 20 degrees", UsualMotion(OccupationMotion::Hold))};
}

std::vector<OccupationCase> SlipMotions()
{
    const PlantedMotion turned = Lasting(UsualMotion(OccupationMotion::Free), 10.0);
    return {CaseOf("lean in from 5 to 20 degrees, 5 s", LeanInTo(20.0)),
            CaseOf("lean in from 5 to 20 degrees, 10 s", Lasting(LeanInTo(20.0), 10.0)),
            CaseOf("lean in from 5 to 30 degrees, 8 s", Lasting(LeanInTo(30.0), 8.0)),
            CaseOf("two opposite leans of 15 degrees, 5 s", OppositeLeans()),
            CaseOf("two opposite leans of 15 degrees, 8 s", Lasting(OppositeLeans(), 8.0)),
            CaseOf("rocked by 5 degrees about 10, 5 s", RockedBy(5.0)),
            CaseOf("rocked by 5 degrees about 10, 10 s", Lasting(RockedBy(5.0), 10.0)),
            CaseOf("rocked by 15 degrees about 10, 8 s", Lasting(RockedBy(15.0), 8.0)),
            CaseOf("free, by 15 degrees, one turn, 10 s", turned)};
}

std::vector<OccupationCase> OccupationFaults()
{
    std::vector<OccupationCase> cases;
    for (const Fault& fault : kFaults) {
        for (const bool opposite : {false, true}) {
            cases.push_back(
                CaseOf(std::string(fault.name) + (opposite ? ", opposite" : ", lean in"),
                       opposite ? OppositeLeans() : LeanInTo(30.0)));
            fault.apply(cases.back());
        }
    }
    return cases;
}

} // namespace simulation
