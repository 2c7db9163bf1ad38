// SPDX-License-Identifier: MIT
#include "tests/memory/Program.h"
#include "tests/memory/Rows.h"

namespace sweep {

Program TheProgram()
{
    Program program;
    program.libraries = {
        {"field", 7}
    };
    program.rows = AllOf({ReaderRows(), BridgeRows(), OccupationRows(), JobRecordRows()});
    program.internal = {
        "field::DisturbanceMonitor::Follow",
        "field::DisturbanceMonitor::LoudestOf",
        "field::DisturbanceMonitor::OwnField",
        "field::DisturbanceMonitor::Widen",
        "field::Occupation::Memory::PointOf",
        "field::Occupation::Memory::SetCounts",
        "field::Occupation::Memory::Solve",
        "field::PoseReader::Emit",
        "field::PoseRing::Drawn",
        "field::PoseRing::FirstNotBefore",
        "field::RecordingReader::Fail",
        "field::RecordingReader::ReadHeader",
        "field::RecordingReader::ReadRecord",
        "field::SpotCalibration::Memory::Solve",
    };
    return program;
}

} // namespace sweep
