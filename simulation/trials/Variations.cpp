// SPDX-License-Identifier: MIT
#include "simulation/trials/Conditions.h"

#include <cmath>

namespace study {

namespace {

using simulation::Generator;
using simulation::MagnetometerModel;
using simulation::TurnPlan;

// The same pole in another unit, or beside a sensor of another gain.
void Rescale(Setting& s, double factor)
{
    s.field.strength *= factor;
    for (MagnetometerModel* m : {&s.sensor.a, &s.sensor.b}) {
        m->hardIron = factor * m->hardIron;
        m->noise *= factor;
    }
    s.screened = false; // the filters' distances are counts of the usual sensor
}

void Exact(Setting& s)
{
    s.sensor.a.noise = s.sensor.b.noise = 0.0;
    s.sensor.tiltNoise = s.sensor.pitchOffset = s.sensor.rollOffset = 0.0;
}

void Steady(Setting& s)
{
    for (TurnPlan* plan : {&s.horizontal, &s.vertical})
        plan->levelError = plan->axisError = plan->wobble = 0.0;
}

// Eight values undo it: unequal gains and skewed axes, x as it is.
void LowerTriangle(Setting& s, Generator& random)
{
    for (MagnetometerModel* m : {&s.sensor.a, &s.sensor.b}) {
        m->softIron.rows = {
            simulation::Point3{1.0, 0.0,                          0.0                         },
            simulation::Point3{0.0, 1.0 + 0.03 * random.Normal(), 0.0                         },
            simulation::Point3{0.0, 0.0,                          1.0 + 0.03 * random.Normal()}
        };
    }
}

void ExactTurns(Setting& s, Generator& random)
{
    Exact(s);
    Steady(s);
    LowerTriangle(s, random);
}

void NoisyExactTurns(Setting& s, Generator& random)
{
    Steady(s);
    LowerTriangle(s, random);
}

void NoNoise(Setting& s, Generator&)
{
    Exact(s);
}

void Take(Setting& s, int fewest, int most, Generator& random)
{
    for (TurnPlan* plan : {&s.horizontal, &s.vertical})
        plan->samples = fewest + static_cast<int>(random.Uniform() * (most - fewest + 1));
}

void FewSamples(Setting& s, Generator& random)
{
    Take(s, 60, 100, random);
}

void Stations(Setting& s, Generator& random)
{
    Take(s, 36, 48, random);
    s.screened = false;
}

void Nanotesla(Setting& s, Generator&)
{
    Rescale(s, 100.0);
}

void LargeCounts(Setting& s, Generator&)
{
    Rescale(s, 8.0);
}

void Unscreened(Setting& s, Generator&)
{
    s.screened = false;
}

void ManyTurns(Setting& s, Generator& random)
{
    for (TurnPlan* plan : {&s.horizontal, &s.vertical}) {
        plan->extent = random.Uniform(700.0, 1500.0) * (random.Uniform() < 0.5 ? -1.0 : 1.0);
        plan->samples *= 2;
    }
}

void SouthernField(Setting& s, Generator& random)
{
    s.field.dip = random.Uniform(-74.0, -45.0);
}

void LevelField(Setting& s, Generator& random)
{
    s.field.dip = random.Uniform(-20.0, 20.0);
}

void SteepField(Setting& s, Generator& random)
{
    s.field.dip = random.Uniform(74.0, 82.0);
}

void OtherTypeFewSamples(Setting& s, Generator& random)
{
    s.sensor.type = 2;
    s.sensor.pitchOffset = random.Normal();
    s.sensor.rollOffset = random.Normal();
    Take(s, 60, 100, random);
}

void StrongIron(Setting& s, Generator& random)
{
    for (MagnetometerModel* m : {&s.sensor.a, &s.sensor.b}) {
        const auto some = [&] {
            return random.Uniform(0.05, 0.1) * (random.Uniform() < 0.5 ? -1 : 1);
        };
        const double xy = some() / 2;
        const double xz = some() / 2;
        const double yz = some() / 2;
        m->softIron.rows = {
            simulation::Point3{1.0 + some(), xy,           xz          },
            simulation::Point3{xy,           1.0 + some(), yz          },
            simulation::Point3{xz,           yz,           1.0 + some()}
        };
        m->hardIron = {random.Uniform(-500.0, 500.0), random.Uniform(-500.0, 500.0),
                       random.Uniform(-500.0, 500.0)};
    }
}

void Shaken(Setting& s, Generator& random)
{
    s.sensor.tiltNoise = random.Uniform(1.0, 3.0);
    s.sensor.a.noise = s.sensor.b.noise = random.Uniform(5.0, 15.0);
    Take(s, 60, 150, random);
}

// The sensor's y axis, about which the vertical turn goes, lies across its forward axis.
void AxisAcrossNorth(Setting& s, Generator& random)
{
    s.vertical.startHeading = random.Uniform() < 0.5 ? 0.0 : 180.0;
    Handle(s, 0.3, random);
}

void AxisAlongNorth(Setting& s, Generator& random)
{
    s.vertical.startHeading = random.Uniform() < 0.5 ? 90.0 : 270.0;
    Handle(s, 0.3, random);
}

} // namespace

const std::vector<Condition>& Variations()
{
    static const std::vector<Condition> variations = {
        {"exact turns, no noise", ExactTurns         },
        {"exact turns",           NoisyExactTurns    },
        {"no noise",              NoNoise            },
        {"60 to 100 samples",     FewSamples         },
        {"36 to 48 stations",     Stations           },
        {"nanotesla",             Nanotesla          },
        {"eightfold counts",      LargeCounts        },
        {"unscreened",            Unscreened         },
        {"two to four turns",     ManyTurns          },
        {"southern field",        SouthernField      },
        {"level field",           LevelField         },
        {"steep field",           SteepField         },
        {"type 2, few, tilt off", OtherTypeFewSamples},
        {"5 to 10 % soft iron",   StrongIron         },
        {"shaken, noisy, few",    Shaken             },
        {"careful, axis east",    AxisAcrossNorth    },
        {"careful, axis north",   AxisAlongNorth     },
    };
    return variations;
}

} // namespace study
