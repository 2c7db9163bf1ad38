// SPDX-License-Identifier: MIT
//
// The operations of the libraries, as rows of the allocation sweep.
#pragma once

#include "tests/memory/Sweep.h"

#include <vector>

namespace sweep {

std::vector<Row> FrameworkRows();
std::vector<Row> MatrixRows();
std::vector<Row> PositioningRows();
std::vector<Row> CalibrationRows();
std::vector<Row> GeometryRows();
std::vector<Row> QualityRows();

std::vector<Row> ReaderRows();
std::vector<Row> BridgeRows();
std::vector<Row> OccupationRows();
std::vector<Row> JobRecordRows();
std::vector<Row> JobRows();
std::vector<Row> GridRows();

std::vector<Row> DrawingRows();
std::vector<Row> TextRows();
std::vector<Row> WindowRows();
std::vector<Row> MessageRows();
std::vector<Row> ControlRows();
std::vector<Row> PlotRows();

} // namespace sweep
