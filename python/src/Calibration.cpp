// SPDX-License-Identifier: MIT
#include "python/src/Arrays.h"
#include "python/src/Bindings.h"
#include "quality/CalibrationReport.h"
#include "quality/SolverRun.h"

#include <pybind11/stl.h>

#include <string>
#include <utility>
#include <vector>

namespace tiltpole::python {

namespace {

using quality::CalibrationReport;
using quality::CalibrationRun;
using quality::CalibrationTurns;

constexpr const char* kCalibrateDoc =
    R"(Calibrates both magnetometers from two turns and judges the result.

horizontal, vertical  the turns about the sensor's z and y axis, in order of time: (n, 8) as for
                      Pole.position, or (n, 14) with rates x, y, z [degrees/s] and accelerations
                      x, y, z [g], with which pitch and roll are checked, too
method       "solver", or "joint": the joint fit of both turns, for turns made by hand
bias_a, bias_b  from magnetic north to the north that is wanted, clockwise [degrees]
sensor_type  as for Pole

Returns a CalibrationResult. Use its calibration only where `accepted` is true. Where the solver
fails, the library appends its samples to a dump in the application data folder, and says so on
standard error. Raises ValueError where a shape or the method is another one.)";

struct Result
{
    CalibrationReport report;
    quality::Calibration calibration;
};

std::vector<PoseSensorData> SamplesOf(const Doubles& array, const char* name)
{
    const bool inertial =
        array.ndim() == 2 && static_cast<std::size_t>(array.shape(1)) == kInertialColumns;
    const Rows rows(array, inertial ? kInertialColumns : kSampleColumns, name);
    std::vector<PoseSensorData> samples(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        FillSample(rows[i], samples[i]);
        if (inertial) FillInertial(rows[i], samples[i]);
    }
    return samples;
}

Result Calibrate(const Doubles& horizontal, const Doubles& vertical, const std::string& method,
                 double biasA, double biasB, int sensorType)
{
    if (method != "solver" && method != "joint")
        throw py::value_error("method must be 'solver' or 'joint', not '" + method + "'");
    CalibrationTurns turns{SamplesOf(horizontal, "horizontal"), SamplesOf(vertical, "vertical")};
    const py::gil_scoped_release release;
    CalibrationRun run = method == "joint" ? quality::RunJointFit(std::move(turns), sensorType)
                                           : quality::RunSolver(std::move(turns), sensorType);
    Result result;
    result.report = quality::AssessCalibration(run);
    result.calibration = run.calibration;
    result.calibration.biasAngleA += biasA;
    result.calibration.biasAngleB += biasB;
    return result;
}

} // namespace

void AddCalibration(py::module_& module)
{
    py::class_<Result>(module, "CalibrationResult", "A calibration and what it is worth.")
        .def_property_readonly(
            "accepted", [](const Result& r) { return quality::IsAccepted(r.report.verdict); },
            "Whether the verdict is 'good' or 'usable'.")
        .def_property_readonly(
            "verdict", [](const Result& r) { return std::string(Name(r.report.verdict)); },
            "'good', 'usable', 'unchecked', 'poor' or 'refused'.")
        .def_property_readonly(
            "reason", [](const Result& r) { return std::string(Explain(r.report.reason)); },
            "One sentence.")
        .def_property_readonly(
            "advice", [](const Result& r) { return std::string(Advice(r.report.reason)); },
            "What the operator should do, one sentence.")
        .def_property_readonly(
            "headline", [](const Result& r) { return Headline(r.report); },
            "The verdict with its figure.")
        .def_property_readonly(
            "text", [](const Result& r) { return ToText(r.report); }, "The whole report.")
        .def_property_readonly(
            "heading_error", [](const Result& r) { return r.report.headingError; },
            "Difference from the joint fit, RMS [degrees]; 0 where there is none.")
        .def_property_readonly(
            "suspects", [](const Result& r) { return r.report.suspects; },
            "What looks wrong with axes and logs.")
        .def_readonly("calibration", &Result::calibration,
                      "For Pole.calibration, the bias angles included.")
        .def("__repr__",
             [](const Result& r) { return "<CalibrationResult: " + Headline(r.report) + ">"; });

    module.def("calibrate", &Calibrate, py::arg("horizontal"), py::arg("vertical"), py::kw_only(),
               py::arg("method") = "solver", py::arg("bias_a") = 0.0, py::arg("bias_b") = 0.0,
               py::arg("sensor_type") = 1, kCalibrateDoc);
}

} // namespace tiltpole::python
