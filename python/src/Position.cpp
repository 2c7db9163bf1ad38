// SPDX-License-Identifier: MIT
#include "positioning/InclineSensor_Position.h"

#include "python/src/Arrays.h"
#include "python/src/Bindings.h"
#include "quality/Calibration.h"
#include "quality/ParameterFile.h"

#include <pybind11/stl.h>

#include <string>
#include <tuple>

namespace tiltpole::python {

namespace {

using Correction = Incline_MagneticCorrectParameter;
using quality::Calibration;
using Triple = std::tuple<double, double, double>;

constexpr const char* kPoleDoc =
    R"(A pole with a pose sensor: its calibration, and what it has seen of stillness.

sensor_type  1: x forward, y left, z up the pole; any other: x right, y forward, z up.
A new pole corrects nothing and has no bias. One object for each thread.)";

constexpr const char* kPositionDoc =
    R"(The tips of a leaning pole, one for each sample.

samples   (n, 8): pitch, roll [degrees], magnetometer A x, y, z, magnetometer B x, y, z [counts]
antennas  (n, 3): N, E, h [m]
length    antenna to tip [m]

Returns Positions: tips (n, 3) [m]; heading_a, heading_b, heading_y (n,) [degrees]; still and
interference (n,), bool. Samples count in their order: whether the pole is still depends on those
before, of earlier calls too. Numbers that are not finite give results that are not finite.
Raises ValueError where a shape is another one.)";

constexpr const char* kLoadDoc =
    R"(Loads a parameter file. Raises ValueError with every key that is missing, garbled or not
plausible; the calibration is then what it was before.)";

constexpr const char* kSaveDoc =
    R"(Writes the calibration as a parameter file, in one step: after a failure, which raises
OSError, the old file is still there.)";

class Pole
{
public:
    explicit Pole(int sensorType) { m_position.SetSensorType(sensorType); }

    int SensorType() const { return m_position.GetSensorType(); }

    Calibration GetCalibration() const
    {
        return {m_position.GetMagneticCorrectPar_A(), m_position.GetMagneticCorrectPar_B(),
                m_position.GetMagneticTranslationPar(), m_position.GetMagneticBiasAngle_A(),
                m_position.GetMagneticBiasAngle_B()};
    }

    void SetCalibration(const Calibration& calibration)
    {
        m_position.SetMagneticCorrectPar_A(calibration.correctionA);
        m_position.SetMagneticCorrectPar_B(calibration.correctionB);
        m_position.SetMagneticTranslationPar(calibration.translation);
        m_position.SetMagneticBiasAngle_A(calibration.biasAngleA);
        m_position.SetMagneticBiasAngle_B(calibration.biasAngleB);
    }

    void Load(const std::string& path)
    {
        std::string text;
        for (const auto& problem : quality::LoadParameters(path.c_str(), m_position))
            text += (text.empty() ? path + ": " : "; ") + ToText(problem);
        if (!text.empty()) throw py::value_error(text);
    }

    void Save(const std::string& path)
    {
        if (m_position.ConfigSave(path.c_str()) == 1) return;
        PyErr_SetString(PyExc_OSError, (path + ": cannot be written").c_str());
        throw py::error_already_set();
    }

    py::object Positions(const Doubles& samples, const Doubles& antennas, double length)
    {
        const Rows poses(samples, kSampleColumns, "samples");
        const Rows from(antennas, 3, "antennas");
        RequireSameLength(poses.size(), from.size(), "samples and antennas");
        const std::size_t size = poses.size();
        Doubles tips = NewArray(size, 3);
        Doubles headingA = NewArray(size);
        Doubles headingB = NewArray(size);
        Doubles headingY = NewArray(size);
        py::array_t<bool> still(static_cast<py::ssize_t>(size));
        py::array_t<bool> interference(static_cast<py::ssize_t>(size));
        double* tip = tips.mutable_data();
        double* a = headingA.mutable_data();
        double* b = headingB.mutable_data();
        double* y = headingY.mutable_data();
        bool* rests = still.mutable_data();
        bool* disturbed = interference.mutable_data();
        {
            const py::gil_scoped_release release;
            PoseSensorData sample;
            for (std::size_t i = 0; i < size; ++i) {
                FillSample(poses[i], sample);
                xyhCoordinate point{from[i][0], from[i][1], from[i][2]};
                m_position.Position(sample, length, point);
                *tip++ = point.x;
                *tip++ = point.y;
                *tip++ = point.h;
                a[i] = sample.dYaw;
                b[i] = sample.dYaw_2;
                y[i] = sample.dYaw_Y;
                rests[i] = m_position.IsStationary() != 0;
                disturbed[i] = m_position.IsMagneticInterference() != 0;
            }
        }
        const py::object type = py::module_::import("tiltpole._tiltpole").attr("Positions");
        return type(tips, headingA, headingB, headingY, still, interference);
    }

private:
    CInclineSensor_Position m_position;
};

void AddRecords(py::module_& module)
{
    py::class_<Correction>(
        module, "Correction",
        "What corrects the readings of a magnetometer: offsets x0, y0, z0 [counts], "
        "shares a, c, d of one\naxis in another, scales b, e.")
        .def(py::init<>())
        .def_readwrite("x0", &Correction::x0, "Offset of x [counts].")
        .def_readwrite("y0", &Correction::y0, "Offset of y [counts].")
        .def_readwrite("z0", &Correction::z0, "Offset of z [counts].")
        .def_readwrite("a", &Correction::a, "Share of x added to y, no unit.")
        .def_readwrite("b", &Correction::b, "Scale of y, no unit.")
        .def_readwrite("c", &Correction::c, "Share of x added to z, no unit.")
        .def_readwrite("d", &Correction::d, "Share of y added to z, no unit.")
        .def_readwrite("e", &Correction::e, "Scale of z, no unit.");

    py::class_<Calibration>(module, "Calibration",
                            "Everything a calibration sets: both corrections, the translation from "
                            "B to A [counts], both bias\nangles, which are subtracted from the "
                            "headings [degrees].")
        .def(py::init<>())
        .def_readwrite("correction_a", &Calibration::correctionA, "Of magnetometer A.")
        .def_readwrite("correction_b", &Calibration::correctionB, "Of magnetometer B.")
        .def_property(
            "translation",
            [](const Calibration& c) {
                return Triple{c.translation.dX, c.translation.dY, c.translation.dZ};
            },
            [](Calibration& c, const Triple& t) {
                c.translation = {std::get<0>(t), std::get<1>(t), std::get<2>(t)};
            },
            "From B to A, x, y, z [counts].")
        .def_readwrite("bias_a", &Calibration::biasAngleA,
                       "Subtracted from the heading of A [degrees].")
        .def_readwrite("bias_b", &Calibration::biasAngleB,
                       "Subtracted from the heading of B [degrees].");
}

} // namespace

void AddPosition(py::module_& module)
{
    NewNamedTuple(module, "Positions", "What Pole.position gives, a row for each sample.",
                  {
                      {"tips",         "N, E, h, (n, 3) [m]."                                     },
                      {"heading_a",    "By magnetometer A, (n,) [degrees]."                       },
                      {"heading_b",    "By magnetometer B, (n,) [degrees]."                       },
                      {"heading_y",    "heading_a less the direction of the tilt, (n,) [degrees]."},
                      {"still",        "Whether the pole rests, (n,) of bool."                    },
                      {"interference", "Whether the magnetometers disagree, (n,) of bool."        },
    });
    AddRecords(module);

    py::class_<Pole>(module, "Pole", kPoleDoc)
        .def(py::init<int>(), py::arg("sensor_type") = 1)
        .def_property_readonly("sensor_type", &Pole::SensorType,
                               "1: x forward, y left, z up the pole; any other: x right, y "
                               "forward, z up.")
        .def_property("calibration", &Pole::GetCalibration, &Pole::SetCalibration,
                      "A copy: change it and set it again.")
        .def("load", &Pole::Load, py::arg("path"), kLoadDoc)
        .def("save", &Pole::Save, py::arg("path"), kSaveDoc)
        .def("position", &Pole::Positions, py::arg("samples"), py::arg("antennas"),
             py::arg("length"), kPositionDoc);
}

} // namespace tiltpole::python
