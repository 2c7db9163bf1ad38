// SPDX-License-Identifier: MIT
//
// Tools of the calibration tests: access to protected operations, recorded message boxes, and a
// folder for the dumps of a test.
#pragma once

#include "calibration/InclineSensor_MagneticAdjust.h"
#include "framework/core/MessageBox.h"
#include "survey/Reading.h"
#include "tests/ScratchFolder.h"
#include "tests/reference/Turns.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

using tiltpole::survey::Magnetometer;

struct ReachAdjust : CInclineSensor_MagneticAdjust
{
    using CInclineSensor_MagneticAdjust::CircleCenter;
    using CInclineSensor_MagneticAdjust::EllipseFit;
    using CInclineSensor_MagneticAdjust::LineFit;
    using CInclineSensor_MagneticAdjust::lsq;
    using CInclineSensor_MagneticAdjust::MagCorrPara;
    using CInclineSensor_MagneticAdjust::MagneticCoordinateOffset;
    using CInclineSensor_MagneticAdjust::MagneticModify;
    using CInclineSensor_MagneticAdjust::OverDeterminedEquationSolution;
};

struct Box
{
    std::wstring text;
    std::wstring title;
    unsigned style;

    bool operator==(const Box&) const = default;
};

// Records the message boxes shown during its lifetime.
class RecordedBoxes
{
public:
    RecordedBoxes()
        : m_Before(framework::SetMessageBoxHandler(
            [this](const wchar_t* text, const wchar_t* title, unsigned style) {
                shown.push_back({text, title, style});
                if (whileShown) whileShown();
                return IDOK;
            }))
    {}
    ~RecordedBoxes() { framework::SetMessageBoxHandler(m_Before); }
    RecordedBoxes(const RecordedBoxes&) = delete;
    RecordedBoxes& operator=(const RecordedBoxes&) = delete;

    std::vector<Box> shown;
    std::function<void()> whileShown; // run by the host while a box is shown

private:
    framework::MessageBoxHandler m_Before;
};

// Redirects application data to a new folder during its lifetime.
class OwnDataFolder
{
public:
    OwnDataFolder() { ::setenv("XDG_DATA_HOME", Root().c_str(), 1); }
    ~OwnDataFolder() { ::unsetenv("XDG_DATA_HOME"); }
    OwnDataFolder(const OwnDataFolder&) = delete;
    OwnDataFolder& operator=(const OwnDataFolder&) = delete;

    /// Does not exist before the library creates it.
    std::string Root() const { return m_scratch.Path("data"); }
    std::string Read(const std::string& name) const { return m_scratch.Read(Place(name)); }
    bool Has(const std::string& name) const
    {
        return std::filesystem::exists(m_scratch.Path(Place(name)));
    }

private:
    static std::string Place(const std::string& name) { return "data/tiltpole/" + name; }

    ScratchFolder m_scratch;
};

inline CSZMatrix ColumnOf(const std::vector<double>& values)
{
    const int n = static_cast<int>(values.size());
    return CSZMatrix(values.data(), n, n, 1);
}

// One row x, y, z of raw readings per sample.
inline CSZMatrix MatrixOf(const std::vector<PoseSensorData>& samples,
                          Magnetometer which = Magnetometer::A)
{
    CSZMatrix matrix(static_cast<int>(samples.size()), 3);
    int row = 0;
    for (const PoseSensorData& s : samples) {
        const auto [x, y, z] = tiltpole::survey::ReadingOf(s, which);
        matrix.SetData(row, 0, x);
        matrix.SetData(row, 1, y);
        matrix.SetData(row++, 2, z);
    }
    return matrix;
}

inline void Load(CInclineSensor_MagneticAdjust& adjust, std::vector<PoseSensorData> horizontal,
                 std::vector<PoseSensorData> vertical)
{
    for (PoseSensorData& sample : horizontal)
        adjust.Horizontal_Add(&sample);
    for (PoseSensorData& sample : vertical)
        adjust.Vertical_Add(&sample);
}
