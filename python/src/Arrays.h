// SPDX-License-Identifier: MIT
//
// NumPy arrays as the library's records. What does not have the shape that is asked for is a
// ValueError that names the argument.
#pragma once

#include "positioning/PoseSensorData.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

namespace tiltpole::python {

namespace py = pybind11;

/// Any array of numbers, copied to contiguous doubles where it is not that already.
using Doubles = py::array_t<double, py::array::c_style | py::array::forcecast>;

/// The rows of an array of two dimensions, without a copy; the array must outlive it.
class Rows
{
public:
    /// @param columns  how many there must be
    Rows(const Doubles& array, std::size_t columns, const char* name)
        : m_data(array.data()), m_columns(columns)
    {
        if (array.ndim() != 2 || static_cast<std::size_t>(array.shape(1)) != columns)
            throw py::value_error(std::string(name) + " must have the shape (n, "
                                  + std::to_string(columns) + ")");
        m_size = static_cast<std::size_t>(array.shape(0));
    }
    std::size_t size() const { return m_size; }
    const double* operator[](std::size_t row) const { return m_data + row * m_columns; }

private:
    const double* m_data;
    std::size_t m_columns;
    std::size_t m_size = 0;
};

/// Columns of a sample: pitch, roll, magnetometer A x y z, magnetometer B x y z; a calibration
/// reads rates and accelerations x y z, too, where there are 14.
inline constexpr std::size_t kSampleColumns = 8;
inline constexpr std::size_t kInertialColumns = 14;

inline void FillSample(const double* row, PoseSensorData& sample)
{
    sample.dPitch = row[0];
    sample.dRoll = row[1];
    sample.dMag_x = row[2];
    sample.dMag_y = row[3];
    sample.dMag_z = row[4];
    sample.dMag_x_2 = row[5];
    sample.dMag_y_2 = row[6];
    sample.dMag_z_2 = row[7];
}

inline void FillInertial(const double* row, PoseSensorData& sample)
{
    sample.dGyro_x = row[8];
    sample.dGyro_y = row[9];
    sample.dGyro_z = row[10];
    sample.dAcc_x = row[11];
    sample.dAcc_y = row[12];
    sample.dAcc_z = row[13];
}

inline void RequireSameLength(std::size_t a, std::size_t b, const char* names)
{
    if (a != b)
        throw py::value_error(std::string(names) + " must have the same length, not "
                              + std::to_string(a) + " and " + std::to_string(b));
}

inline Doubles NewArray(std::size_t rows, std::size_t columns)
{
    return Doubles({static_cast<py::ssize_t>(rows), static_cast<py::ssize_t>(columns)});
}

inline Doubles NewArray(std::size_t size)
{
    return Doubles(static_cast<py::ssize_t>(size));
}

struct FieldDoc
{
    const char* name;
    const char* doc;
};

/// A named tuple of the package with what its fields are.
inline py::object NewNamedTuple(py::module_& module, const char* name, const char* doc,
                                std::initializer_list<FieldDoc> fields)
{
    py::list names;
    for (const FieldDoc& field : fields)
        names.append(field.name);
    const py::object make = py::module_::import("collections").attr("namedtuple");
    const py::object type = make(name, names, py::arg("module") = "tiltpole");
    type.attr("__doc__") = doc;
    for (const FieldDoc& field : fields)
        type.attr(field.name).attr("__doc__") = field.doc;
    module.attr(name) = type;
    return type;
}

/// The covariance of x, y, h.
inline Doubles MatrixOf(const double (&matrix)[3][3])
{
    Doubles array = NewArray(3, 3);
    double* to = array.mutable_data();
    for (const auto& row : matrix)
        for (const double element : row)
            *to++ = element;
    return array;
}

template <class Point>
Doubles ArrayOf(const Point& point)
{
    Doubles array = NewArray(3);
    double* to = array.mutable_data();
    to[0] = point.x;
    to[1] = point.y;
    to[2] = point.h;
    return array;
}

} // namespace tiltpole::python
