// SPDX-License-Identifier: MIT
//
// Quantiles of the distributions that small samples follow.
#pragma once

namespace tiltpole::quality {

// P(|t| < x) of Student's distribution; `freedom` at least 1, x at least 0.
double StudentWithin(double x, int freedom);

// The x with P(|t| < x) = `probability`; probability in (0, 1).
double StudentBound(double probability, int freedom);

// The quantile of Fisher's F with 2 and `freedom` degrees of freedom; closed form.
double FisherBoundOfTwo(double probability, int freedom);

// The ratio of two variances, each of `freedom` degrees of freedom, that chance exceeds in one
// direction or the other with 1 − `probability`.
double VarianceRatioBound(double probability, int freedom);

} // namespace tiltpole::quality
