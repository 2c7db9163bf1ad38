// SPDX-License-Identifier: MIT
#include "simulation/trials/Conditions.h"

#include <cmath>

namespace study {

namespace {

using simulation::Generator;
using simulation::Magnet;
using simulation::MagnetometerModel;
using simulation::Matrix;
using simulation::Point3;
using simulation::TurnPlan;

// Half of the sensors: unequal gains and skewed axes, a lower triangle. The other half: soft iron,
// which is symmetric, and a magnetometer mounted a little askew.
void DistortSoft(MagnetometerModel& magnetometer, double size, bool triangular, Generator& random)
{
    const auto some = [&](double share) { return size * share * random.Normal(); };
    Matrix& m = magnetometer.softIron;
    if (triangular) {
        m.rows = {
            Point3{1.0,       0.0,             0.0            },
            Point3{some(1.4), 1.0 + some(1.0), 0.0            },
            Point3{some(1.4), some(1.4),       1.0 + some(1.0)}
        };
        return;
    }
    const double xy = some(1.0);
    const double xz = some(1.0);
    const double yz = some(1.0);
    const Point3 axis = {random.Normal(), random.Normal(), random.Normal()};
    const Matrix askew =
        simulation::RotationAbout((1.0 / Length(axis)) * axis, 1.0 * random.Normal());
    const Matrix iron = {
        {Point3{1.0 + some(1.0), xy, xz}, Point3{xy, 1.0 + some(1.0), yz},
         Point3{xz, yz, 1.0 + some(1.0)}}
    };
    m = iron * askew;
}

void DistortHard(MagnetometerModel& magnetometer, double size, Generator& random)
{
    magnetometer.hardIron = {size * random.Normal(), size * random.Normal(),
                             size * random.Normal()};
}

void Distort(Setting& s, double soft, double hard, Generator& random)
{
    const bool triangular = random.Uniform() < 0.5;
    for (MagnetometerModel* m : {&s.sensor.a, &s.sensor.b}) {
        DistortSoft(*m, soft, triangular, random);
        DistortHard(*m, hard, random);
    }
}

double DurationOf(const TurnPlan& plan)
{
    return plan.samples / plan.rate;
}

void AddMagnet(Setting& s, bool onPole, Generator& random)
{
    TurnPlan& plan = random.Uniform() < 0.5 ? s.horizontal : s.vertical;
    Magnet magnet;
    magnet.onPole = onPole;
    magnet.strength = random.Uniform(20.0, 200.0);
    magnet.from = random.Uniform(0.0, 0.8) * DurationOf(plan);
    magnet.to = magnet.from + random.Uniform(0.05, 0.3) * DurationOf(plan);
    magnet.azimuth = random.Uniform(0.0, 360.0);
    magnet.elevation = random.Uniform(-60.0, 60.0);
    magnet.shareAtB = random.Uniform(0.6, 1.0);
    plan.magnets.push_back(magnet);
}

void NoFault(Setting&, Generator&) {}

void Careful(Setting& s, Generator& random)
{
    Handle(s, 0.3, random);
}

void Clumsy(Setting& s, Generator& random)
{
    Handle(s, 2.5, random);
}

void LeaningHorizontal(Setting& s, Generator& random)
{
    s.horizontal.levelError = random.Uniform(3.0, 12.0);
}

void SlopingVertical(Setting& s, Generator& random)
{
    s.vertical.levelError = random.Uniform(3.0, 15.0);
}

void OffAxisHorizontal(Setting& s, Generator& random)
{
    s.horizontal.axisError = random.Uniform(3.0, 12.0);
}

void OffAxisVertical(Setting& s, Generator& random)
{
    s.vertical.axisError = random.Uniform(3.0, 15.0);
}

void FarOffAxisVertical(Setting& s, Generator& random)
{
    s.vertical.axisError = random.Uniform(15.0, 55.0);
}

void Unsteady(Setting& s, Generator& random)
{
    s.horizontal.wobble = random.Uniform(1.5, 6.0);
    s.vertical.wobble = random.Uniform(1.5, 6.0);
}

void Stopping(Setting& s, Generator& random)
{
    for (TurnPlan* plan : {&s.horizontal, &s.vertical}) {
        for (int i = 0; i < 3; ++i)
            plan->stops.push_back({random.Uniform(20.0, 260.0), random.Uniform(1.0, 3.0)});
    }
}

void GoingBack(Setting& s, Generator& random)
{
    for (TurnPlan* plan : {&s.horizontal, &s.vertical}) {
        for (int i = 0; i < 3; ++i)
            plan->turningsBack.push_back({random.Uniform(60.0, 260.0), random.Uniform(5.0, 50.0)});
    }
}

void Losing(Setting& s, Generator& random)
{
    for (TurnPlan* plan : {&s.horizontal, &s.vertical}) {
        plan->losses.share = random.Uniform(0.2, 0.7);
        const double from = random.Uniform(0.0, 0.9) * DurationOf(*plan);
        plan->losses.gaps.push_back({from, from + random.Uniform(0.5, 3.0)});
    }
}

void Incomplete(Setting& s, Generator& random)
{
    s.horizontal.extent = random.Uniform(275.0, 345.0);
    s.vertical.extent = random.Uniform(275.0, 345.0);
}

void FarFromComplete(Setting& s, Generator& random)
{
    TurnPlan& plan = random.Uniform() < 0.5 ? s.horizontal : s.vertical;
    plan.extent = random.Uniform(150.0, 265.0);
}

void MagnetAside(Setting& s, Generator& random)
{
    AddMagnet(s, false, random);
}

void MagnetOnPole(Setting& s, Generator& random)
{
    AddMagnet(s, true, random);
}

void TiltOff(Setting& s, Generator& random)
{
    s.sensor.pitchOffset = random.Normal();
    s.sensor.rollOffset = random.Normal();
}

void NoisyTilt(Setting& s, Generator& random)
{
    s.sensor.tiltNoise = random.Uniform(0.5, 2.0);
}

void SlopesForRoll(Setting& s, Generator&)
{
    s.sensor.rollReport = simulation::RollReport::Inclination;
}

void MuchSoftIron(Setting& s, Generator& random)
{
    Distort(s, random.Uniform(0.04, 0.1), 60.0, random);
}

void MuchHardIron(Setting& s, Generator& random)
{
    Distort(s, 0.02, random.Uniform(150.0, 400.0), random);
}

void Noisy(Setting& s, Generator& random)
{
    s.sensor.a.noise = s.sensor.b.noise = random.Uniform(4.0, 12.0);
    s.sensor.magneticStep = random.Uniform(1.0, 8.0);
}

void OtherType(Setting& s, Generator&)
{
    s.sensor.type = 2;
}

void OtherWay(Setting& s, Generator&)
{
    s.horizontal.extent = -s.horizontal.extent;
    s.vertical.extent = -s.vertical.extent;
}

// Several faults at once.
void Mixed(Setting& s, Generator& random)
{
    for (const Condition& c : Conditions()) {
        const bool judgeable = c.apply != Mixed && c.apply != FarFromComplete
                               && c.apply != SlopesForRoll && c.apply != FarOffAxisVertical;
        if (judgeable && random.Uniform() < 0.2) c.apply(s, random);
    }
}

} // namespace

void Handle(Setting& s, double clumsiness, Generator& random)
{
    for (TurnPlan* plan : {&s.horizontal, &s.vertical}) {
        plan->levelError = clumsiness * random.Uniform(0.0, 3.0);
        plan->levelDirection = random.Uniform(0.0, 360.0);
        plan->axisError = clumsiness * random.Uniform(0.0, 3.0);
        plan->axisDirection = random.Uniform(0.0, 360.0);
        plan->wobble = clumsiness * random.Uniform(0.0, 1.0);
    }
}

Setting Ordinary(Generator& random)
{
    Setting s;
    s.field.strength = random.Uniform(450.0, 600.0);
    s.field.dip = random.Uniform(45.0, 74.0);
    Distort(s, 0.02, 60.0, random);
    s.sensor.a.noise = random.Uniform(0.5, 3.0);
    s.sensor.b.noise = s.sensor.a.noise;
    s.sensor.tiltNoise = random.Uniform(0.05, 0.3);
    s.sensor.pitchOffset = 0.2 * random.Normal();
    s.sensor.rollOffset = 0.2 * random.Normal();
    s.vertical.axis = simulation::TurnAxis::Vertical;
    for (TurnPlan* plan : {&s.horizontal, &s.vertical}) {
        plan->samples = 300 + static_cast<int>(random.Uniform(0.0, 400.0));
        plan->extent = random.Uniform(362.0, 400.0);
        plan->startHeading = random.Uniform(0.0, 360.0);
        plan->startSpin = random.Uniform(0.0, 360.0);
        plan->unevenness = random.Uniform(0.0, 0.5);
    }
    Handle(s, 1.0, random);
    return s;
}

const std::vector<Condition>& Conditions()
{
    static const std::vector<Condition> conditions = {
        {"ordinary",               NoFault           },
        {"careful operator",       Careful           },
        {"clumsy operator",        Clumsy            },
        {"horizontal turn leans",  LeaningHorizontal },
        {"vertical turn slopes",   SlopingVertical   },
        {"horizontal off axis",    OffAxisHorizontal },
        {"vertical off axis",      OffAxisVertical   },
        {"vertical far off axis",  FarOffAxisVertical},
        {"unsteady hand",          Unsteady          },
        {"stops",                  Stopping          },
        {"turning back",           GoingBack         },
        {"lost samples",           Losing            },
        {"275 to 345 degrees",     Incomplete        },
        {"150 to 265 degrees",     FarFromComplete   },
        {"magnet aside",           MagnetAside       },
        {"magnet on the pole",     MagnetOnPole      },
        {"pitch and roll off",     TiltOff           },
        {"noisy pitch and roll",   NoisyTilt         },
        {"inclinations for roll",  SlopesForRoll     },
        {"much soft iron",         MuchSoftIron      },
        {"much hard iron",         MuchHardIron      },
        {"noisy magnetometers",    Noisy             },
        {"sensor type 2",          OtherType         },
        {"turned the other way",   OtherWay          },
        {"several faults at once", Mixed             },
    };
    return conditions;
}

} // namespace study
