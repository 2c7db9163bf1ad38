// SPDX-License-Identifier: MIT
#include "simulation/trials/FieldFaults.h"

#include "quality/calibration/LevelFrame.h"
#include "simulation/trials/Conditions.h"
#include "survey/Reading.h"

#include <algorithm>
#include <cmath>

namespace study {

namespace {

using simulation::Generator;
using simulation::MagnetometerModel;
using simulation::Point3;
using tiltpole::survey::Magnetometer;
using tiltpole::survey::Reading;

using Samples = std::vector<PoseSensorData>;

constexpr Magnetometer kBoth[] = {Magnetometer::A, Magnetometer::B};

// The offsets before the last of `all` samples: those after it less what is still to come.
void Drift(Samples& samples, std::size_t before, std::size_t all, const RecordingFaults& f)
{
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double toCome = 1.0 - static_cast<double>(before + i) / static_cast<double>(all);
        samples[i].dPitch -= f.pitchDrift * toCome;
        samples[i].dRoll -= f.rollDrift * toCome;
    }
}

void UndoSteps(Samples& horizontal, const RecordingFaults& f)
{
    for (PoseSensorData& s : horizontal) {
        s.dPitch -= f.pitchStep;
        s.dRoll -= f.rollStep;
        for (const Magnetometer which : kBoth) {
            const Point3& gain = f.gainStep[which == Magnetometer::A ? 0 : 1];
            const Reading r = ReadingOf(s, which);
            SetReading(s, which, {r.x / gain.x, r.y / gain.y, r.z / gain.z});
        }
    }
}

// Pitch and roll are those of the acceleration that the sensor feels, up the pole less by the
// swing.
void Swing(Samples& vertical, double swing, int sensorType)
{
    for (PoseSensorData& s : vertical) {
        const auto frame =
            tiltpole::quality::FrameOf(s.dPitch, s.dRoll, sensorType, Magnetometer::A);
        const Eigen::Vector3d felt = frame.up - swing * Eigen::Vector3d::UnitZ();
        const auto tilt = tiltpole::quality::TiltOf(felt.normalized(), sensorType);
        s.dPitch = tilt.pitch;
        s.dRoll = tilt.roll;
        s.dAcc_z -= swing;
    }
}

void Damage(Samples& samples, const RecordingFaults& f, Generator& random)
{
    for (PoseSensorData& s : samples) {
        for (const Magnetometer which : kBoth) {
            Reading r = ReadingOf(s, which);
            if (f.outliers > 0.0 && random.Uniform() < f.outliers) {
                r = {random.Uniform(-2048.0, 2048.0), random.Uniform(-2048.0, 2048.0),
                     random.Uniform(-2048.0, 2048.0)};
            }
            if (f.saturation > 0.0) {
                for (double* axis : {&r.x, &r.y, &r.z})
                    *axis = std::clamp(*axis, -f.saturation, f.saturation);
            }
            SetReading(s, which, r);
        }
    }
}

Samples Thinned(const Samples& samples, int keepEvery)
{
    Samples kept;
    for (std::size_t i = 0; i < samples.size(); i += static_cast<std::size_t>(keepEvery))
        kept.push_back(samples[i]);
    return kept;
}

constexpr double kGyroBias = 0.03; // standard deviation of each axis [degrees/s]
constexpr double kGyroNoise = 0.1; // [degrees/s]
constexpr double kGyroAskew =
    0.15; // standard deviation of their mounting about each axis [degrees]

Point3 Drawn(double deviation, Generator& random)
{
    return {deviation * random.Normal(), deviation * random.Normal(), deviation * random.Normal()};
}

// The gyros turned by a small angle against the rest of the sensor, or taken out.
void SetGyros(Samples& samples, const Point3& askew, bool none)
{
    for (PoseSensorData& s : samples) {
        const Point3 rate = {s.dGyro_x, s.dGyro_y, s.dGyro_z};
        const Point3 turned = none ? Point3{} : rate + Cross(askew, rate);
        s.dGyro_x = turned.x;
        s.dGyro_y = turned.y;
        s.dGyro_z = turned.z;
    }
}

double Signed(double size, Generator& random)
{
    return random.Uniform() < 0.5 ? -size : size;
}

void NoFault(Setting&, Generator&) {}

// A degree in all, in any direction.
void TiltOffset(Setting& s, Generator& random)
{
    const double direction = random.Uniform(0.0, 2.0 * 3.14159265358979);
    s.sensor.pitchOffset = std::cos(direction);
    s.sensor.rollOffset = std::sin(direction);
}

void PitchOffset(Setting& s, Generator& random)
{
    s.sensor.pitchOffset = Signed(1.0, random);
}

void RollOffset(Setting& s, Generator& random)
{
    s.sensor.rollOffset = Signed(1.0, random);
}

void TiltDrifts(Setting& s, Generator& random)
{
    s.faults.pitchDrift = Signed(random.Uniform(1.0, 3.0), random);
    s.faults.rollDrift = Signed(random.Uniform(1.0, 3.0), random);
}

void TiltSteps(Setting& s, Generator& random)
{
    s.faults.pitchStep = Signed(random.Uniform(0.5, 2.0), random);
    s.faults.rollStep = Signed(random.Uniform(0.5, 2.0), random);
}

void MoreNoise(Setting& s, Generator& random)
{
    const double factor = random.Uniform(5.0, 20.0);
    s.sensor.a.noise *= factor;
    s.sensor.b.noise *= factor;
}

void MoreNoiseEverywhere(Setting& s, Generator& random)
{
    MoreNoise(s, random);
    s.sensor.tiltNoise *= random.Uniform(5.0, 20.0);
}

void TwentyfoldNoise(Setting& s, Generator&)
{
    s.sensor.a.noise = s.sensor.b.noise = 20.0;
    s.sensor.tiltNoise = 2.0;
}

void GainSteps(Setting& s, Generator& random)
{
    for (Point3& gain : s.faults.gainStep) {
        const double all = 1.0 + Signed(random.Uniform(0.01, 0.06), random);
        gain = {all, all, all};
    }
}

void GainOfOneAxisSteps(Setting& s, Generator& random)
{
    for (Point3& gain : s.faults.gainStep) {
        const double one = 1.0 + Signed(random.Uniform(0.01, 0.06), random);
        const double axis = random.Uniform(0.0, 3.0);
        (axis < 1.0 ? gain.x : axis < 2.0 ? gain.y : gain.z) = one;
    }
}

void FieldChanges(Setting& s, Generator&)
{
    s.faults.fieldFactor = 1.06;
    s.faults.dipChange = 3.0;
}

void Swung(Setting& s, Generator& random)
{
    s.faults.swing = random.Uniform(0.1, 0.3);
}

void Outliers(Setting& s, Generator& random)
{
    s.faults.outliers = random.Uniform(0.002, 0.03);
}

void Saturated(Setting& s, Generator& random)
{
    s.faults.saturation = s.field.strength * random.Uniform(0.7, 1.0);
}

void Mirrored(Setting& s, Generator& random)
{
    MagnetometerModel& m = random.Uniform() < 0.5 ? s.sensor.a : s.sensor.b;
    const double axis = random.Uniform(0.0, 3.0);
    const std::size_t row = axis < 1.0 ? 0 : axis < 2.0 ? 1 : 2;
    m.softIron.rows[row] = -1.0 * m.softIron.rows[row];
    double& hard = axis < 1.0 ? m.hardIron.x : axis < 2.0 ? m.hardIron.y : m.hardIron.z;
    hard = -hard;
}

void EighthOfTheRate(Setting& s, Generator&)
{
    s.faults.keepEvery = 8;
}

template <void (*fault)(Setting&, Generator&)>
void CarefulWith(Setting& s, Generator& random)
{
    Handle(s, 0.3, random);
    fault(s, random);
}

} // namespace

quality::CalibrationTurns RecordTurns(const Setting& s, std::uint64_t seed)
{
    const RecordingFaults& f = s.faults;
    simulation::EarthField second = s.field;
    second.strength *= f.fieldFactor;
    second.dip += f.dipChange;
    Generator gyros(seed, simulation::Stream::Gyros);
    simulation::PoseSensor sensor = s.sensor;
    sensor.gyroBias = Drawn(kGyroBias, gyros);
    sensor.gyroNoise = kGyroNoise;
    quality::CalibrationTurns turns = {SimulateTurn(sensor, s.field, s.horizontal, seed).samples,
                                       SimulateTurn(sensor, second, s.vertical, seed).samples};
    const Point3 askew = Drawn(kGyroAskew * 3.14159265358979 / 180.0, gyros);
    SetGyros(turns.horizontal, askew, f.noGyros);
    SetGyros(turns.vertical, askew, f.noGyros);
    const std::size_t all = turns.horizontal.size() + turns.vertical.size();
    UndoSteps(turns.horizontal, f);
    Drift(turns.horizontal, 0, all, f);
    Drift(turns.vertical, turns.horizontal.size(), all, f);
    if (f.swing != 0.0) Swing(turns.vertical, f.swing, s.sensor.type);
    Generator random(seed, simulation::Stream::Outliers);
    for (Samples* turn : {&turns.horizontal, &turns.vertical}) {
        Damage(*turn, f, random);
        *turn = Thinned(*turn, f.keepEvery);
    }
    return turns;
}

const std::vector<Condition>& FieldFaults()
{
    static const std::vector<Condition> faults = {
        {"no fault",               NoFault                        },
        {"careful, no fault",      CarefulWith<NoFault>           },
        {"tilt offset",            TiltOffset                     },
        {"careful, pitch offset",  CarefulWith<PitchOffset>       },
        {"careful, roll offset",   CarefulWith<RollOffset>        },
        {"tilt drifts",            TiltDrifts                     },
        {"careful, tilt drifts",   CarefulWith<TiltDrifts>        },
        {"tilt steps",             TiltSteps                      },
        {"careful, tilt steps",    CarefulWith<TiltSteps>         },
        {"noise to 20 times",      MoreNoise                      },
        {"careful, noise to 20",   CarefulWith<MoreNoise>         },
        {"all noise to 20 times",  MoreNoiseEverywhere            },
        {"noise 20 and 2 degrees", TwentyfoldNoise                },
        {"gains step",             GainSteps                      },
        {"careful, gains step",    CarefulWith<GainSteps>         },
        {"gain of one axis steps", GainOfOneAxisSteps             },
        {"careful, gain of one",   CarefulWith<GainOfOneAxisSteps>},
        {"field changes",          FieldChanges                   },
        {"careful, field changes", CarefulWith<FieldChanges>      },
        {"swung",                  Swung                          },
        {"careful, swung",         CarefulWith<Swung>             },
        {"outliers",               Outliers                       },
        {"careful, outliers",      CarefulWith<Outliers>          },
        {"saturated",              Saturated                      },
        {"axis mirrored",          Mirrored                       },
        {"careful, axis mirrored", CarefulWith<Mirrored>          },
        {"an eighth of the rate",  EighthOfTheRate                },
        {"careful, an eighth",     CarefulWith<EighthOfTheRate>   },
    };
    return faults;
}

} // namespace study
