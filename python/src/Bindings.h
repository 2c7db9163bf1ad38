// SPDX-License-Identifier: MIT
//
// What each source of the module adds to it.
#pragma once

#include <pybind11/pybind11.h>

namespace tiltpole::python {

void AddPosition(pybind11::module_& module);
void AddCalibration(pybind11::module_& module);
void AddTipEstimate(pybind11::module_& module);
void AddOccupation(pybind11::module_& module);
void AddSimilarity(pybind11::module_& module);
void AddSimulation(pybind11::module_& module);

} // namespace tiltpole::python
