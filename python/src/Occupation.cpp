// SPDX-License-Identifier: MIT
#include "field/Occupation.h"

#include "python/src/Arrays.h"
#include "python/src/Bindings.h"

#include <pybind11/stl.h>

#include <cmath>
#include <optional>
#include <string>

namespace tiltpole::python {

namespace {

using field::AntennaEpoch;
using field::InertialSample;
using field::OccupationAdvice;
using field::OccupationEstimate;
using field::OccupationSetup;
using field::SensorVector;

constexpr const char* kOccupyDoc =
    R"(The tip from some seconds of an occupation: the tip stands, the pole moves.

seconds        (n,): times of the samples [s], increasing
rates          (n, 3): angular rates about the sensor's x, y, z [degrees/s]
accelerations  (n, 3): specific force [g]; a plumb pole at rest reads (0, 0, 1)
magnetic       (n, 3): corrected readings of magnetometer A, or None: the heading then comes from
               the motion alone
epoch_seconds  (m,): times of the antenna positions, of the same clock [s]
antennas       (m, 3): N, E, h [m]
pole_length    antenna to tip [m]
sensor_type    as for Pole
magnetic_bias  magnetic heading minus heading [degrees]
delay          antenna epochs are stamped this much too early [s]
pole_error, plan_error, height_error, axis_error, accelerometer_error
               standard deviations of the pole's length and of an antenna position [m], of the
               pole's axis in the sensor and of the vertical by a sensor at rest [degrees]

Returns an OccupationEstimate. Store the tip only where `advice` is "store". Raises ValueError where
a shape or a value cannot be.)";

std::string NameOf(OccupationAdvice advice)
{
    switch (advice) {
    case OccupationAdvice::Store:
        return "store";
    case OccupationAdvice::Move:
        return "move";
    case OccupationAdvice::Refuse:
        return "refuse";
    }
    return {};
}

SensorVector VectorOf(const double* row)
{
    return {row[0], row[1], row[2]};
}

const double* TimesOf(const Doubles& array, const char* name)
{
    if (array.ndim() != 1) throw py::value_error(std::string(name) + " must have the shape (n,)");
    return array.data();
}

std::size_t LengthOf(const Doubles& array)
{
    return static_cast<std::size_t>(array.shape(0));
}

bool IsPossible(const OccupationSetup& setup)
{
    const auto within = [](double value, double most) { return value > 0.0 && value <= most; };
    return setup.poleLength >= 0.01 && setup.poleLength <= 100.0
           && std::fabs(setup.magneticBias) <= 360.0 && std::fabs(setup.delay) <= 10.0
           && (setup.poleSigma == 0.0 || within(setup.poleSigma, 100.0))
           && within(setup.planSigma, 100.0) && within(setup.heightSigma, 100.0)
           && within(setup.axisSigma, 90.0) && within(setup.accelerometerSigma, 90.0);
}

OccupationEstimate Occupy(const Doubles& seconds, const Doubles& rates,
                          const Doubles& accelerations, const std::optional<Doubles>& magnetic,
                          const Doubles& epochSeconds, const Doubles& antennas,
                          OccupationSetup setup)
{
    const double* times = TimesOf(seconds, "seconds");
    const double* epochTimes = TimesOf(epochSeconds, "epoch_seconds");
    const std::size_t samples = LengthOf(seconds);
    const std::size_t epochs = LengthOf(epochSeconds);
    const Rows rate(rates, 3, "rates");
    const Rows force(accelerations, 3, "accelerations");
    const Rows antenna(antennas, 3, "antennas");
    std::optional<Rows> reading;
    if (magnetic) reading.emplace(*magnetic, 3, "magnetic");
    RequireSameLength(samples, rate.size(), "seconds and rates");
    RequireSameLength(samples, force.size(), "seconds and accelerations");
    if (reading) RequireSameLength(samples, reading->size(), "seconds and magnetic");
    RequireSameLength(epochs, antenna.size(), "epoch_seconds and antennas");
    setup.useMagnetometer = reading.has_value();
    if (!IsPossible(setup))
        throw py::value_error("a length, an angle or a standard deviation is out of its range");

    const py::gil_scoped_release release;
    field::Occupation occupation(setup);
    std::size_t next = 0;
    const auto addEpoch = [&] {
        AntennaEpoch epoch;
        epoch.seconds = epochTimes[next];
        epoch.position = {antenna[next][0], antenna[next][1], antenna[next][2]};
        occupation.Add(epoch);
        ++next;
    };
    for (std::size_t i = 0; i < samples; ++i) {
        while (next < epochs && epochTimes[next] < times[i])
            addEpoch();
        InertialSample sample;
        sample.seconds = times[i];
        sample.rate = VectorOf(rate[i]);
        sample.acceleration = VectorOf(force[i]);
        if (reading) sample.magnetic = VectorOf((*reading)[i]);
        occupation.Add(sample);
    }
    while (next < epochs)
        addEpoch();
    return occupation.Estimate();
}

} // namespace

void AddOccupation(py::module_& module)
{
    py::class_<OccupationEstimate>(
        module, "OccupationEstimate",
        "The tip of an occupation with its 95 % regions. Lengths are in meters, angles in degrees.")
        .def_property_readonly(
            "advice", [](const OccupationEstimate& e) { return NameOf(e.advice); },
            "'store'; 'move': go on, `text` says how; 'refuse': begin again, `text` says why.")
        .def_property_readonly(
            "text", [](const OccupationEstimate& e) { return OccupationText(e); }, "One sentence.")
        .def_property_readonly(
            "tip",
            [](const OccupationEstimate& e) -> py::object {
                if (!e.hasTip) return py::none();
                return ArrayOf(e.tip);
            },
            "N, E, h [m]; None where there is none.")
        .def_property_readonly(
            "covariance", [](const OccupationEstimate& e) { return MatrixOf(e.covariance); },
            "Of N, E, h [m²].")
        .def_readonly("ellipse_major", &OccupationEstimate::ellipseMajor, "Semi-axis, 95 % [m].")
        .def_readonly("ellipse_minor", &OccupationEstimate::ellipseMinor, "Semi-axis, 95 % [m].")
        .def_readonly("ellipse_azimuth", &OccupationEstimate::ellipseAzimuth,
                      "Azimuth of the major axis [degrees].")
        .def_readonly("height_half_interval", &OccupationEstimate::heightHalfInterval, "95 % [m].")
        .def_readonly("heading", &OccupationEstimate::heading, "At the last sample [degrees].")
        .def_readonly("heading_error", &OccupationEstimate::headingSigma,
                      "Standard deviation [degrees].")
        .def_readonly("lean", &OccupationEstimate::lean, "At the last sample [degrees].")
        .def_readonly(
            "magnetic_difference", &OccupationEstimate::magneticDifference,
            "Heading by the magnetometer minus that by the track; NaN without readings [degrees].")
        .def_readonly("length_error", &OccupationEstimate::lengthError,
                      "True length minus pole_length, as the track shows it [m].")
        .def_readonly("epochs", &OccupationEstimate::epochs, "Antenna positions in the estimate.")
        .def("__repr__", [](const OccupationEstimate& e) {
            return "<OccupationEstimate: " + OccupationText(e) + ">";
        });

    const OccupationSetup defaults;
    module.def(
        "occupy",
        [](const Doubles& seconds, const Doubles& rates, const Doubles& accelerations,
           const std::optional<Doubles>& magnetic, const Doubles& epochSeconds,
           const Doubles& antennas, double poleLength, int sensorType, double bias, double delay,
           double pole, double plan, double height, double axis, double accelerometer) {
            OccupationSetup setup;
            setup.poleLength = poleLength;
            setup.sensorType = sensorType;
            setup.magneticBias = bias;
            setup.delay = delay;
            setup.poleSigma = pole;
            setup.planSigma = plan;
            setup.heightSigma = height;
            setup.axisSigma = axis;
            setup.accelerometerSigma = accelerometer;
            return Occupy(seconds, rates, accelerations, magnetic, epochSeconds, antennas, setup);
        },
        py::arg("seconds"), py::arg("rates"), py::arg("accelerations"),
        py::arg("magnetic").none(true), py::arg("epoch_seconds"), py::arg("antennas"),
        py::kw_only(), py::arg("pole_length"), py::arg("sensor_type") = defaults.sensorType,
        py::arg("magnetic_bias") = defaults.magneticBias, py::arg("delay") = defaults.delay,
        py::arg("pole_error") = defaults.poleSigma, py::arg("plan_error") = defaults.planSigma,
        py::arg("height_error") = defaults.heightSigma, py::arg("axis_error") = defaults.axisSigma,
        py::arg("accelerometer_error") = defaults.accelerometerSigma, kOccupyDoc);
}

} // namespace tiltpole::python
