// SPDX-License-Identifier: MIT
#include "python/src/Bindings.h"

PYBIND11_MODULE(_tiltpole, module)
{
    using namespace tiltpole::python;

    module.doc() = "The C++ side of the package tiltpole.";
    AddPosition(module);
    AddCalibration(module);
    AddTipEstimate(module);
    AddOccupation(module);
    AddSimilarity(module);
    AddSimulation(module);
}
