// SPDX-License-Identifier: MIT
//
// The calibration of one magnetometer from the moments of its turns.
#pragma once

#include "calibration/solver/TurnMoments.h"

#include <optional>

namespace tiltpole::calibration {

/// The correction that CInclineSensor_MagneticAdjust::MagCorrPara finds from the raw readings, with
/// every refinement pass computed from sums instead of the samples. The results differ from those
/// of the fits by rounding (docs/formulas.md, "Moments of a turn").
///
/// None where that cannot be guaranteed: a fit that fails or nearly fails, readings that hardly
/// vary or whose mean is far from 0, a slope next to the bound that ends the passes, the pass
/// limit.
std::optional<Incline_MagneticCorrectParameter> SolveByMoments(const TurnReadings& horizontal,
                                                               const TurnReadings& vertical);

/// The offset between the corrected readings of A and B over one turn.
Incline_MagneticTranslationParameter MeanOffset(const TurnReadings& a,
                                                const Incline_MagneticCorrectParameter& correctA,
                                                const TurnReadings& b,
                                                const Incline_MagneticCorrectParameter& correctB);

} // namespace tiltpole::calibration
