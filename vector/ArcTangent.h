// SPDX-License-Identifier: MIT
//
// The arc tangent over vectors of doubles, without a branch.
//
//   t = small/big, or (small − big)/(small + big) beyond tan 22.5°: |t| ≤ tan 22.5°
//   r = t·P(t²)
//   angle = ±(c ± r)      c: 0, 45, 90, 135 or 180
//
// small and big are the magnitudes of y and x by size. In degrees c is exact, so only one rounding
// as large as that of the result remains. P is the polynomial of degree 10 that differs least from
// the arc tangent [degrees] divided by its argument: by 1.9e-15 where |t| ≤ tan 22.5° (exchange
// algorithm of Remez in 60 digits).
#pragma once

#include "vector/Lanes.h"

namespace tiltpole::vector {

/// atan2(y, x) [degrees] in [-180, 180], within 2.6e-14 of the exact angle.
///
/// Domain: x² + y² neither overflows nor underflows. Outside it, and where an argument is NaN, the
/// angle may be wrong without being NaN.
template <int Width>
[[gnu::always_inline]] inline Lanes<Width> ArcTangent(Lanes<Width> y, Lanes<Width> x)
{
    using L = Lanes<Width>;
    constexpr double kTanOf22 = 0.41421356237309503;
    const L ax = Magnitude(x);
    const L ay = Magnitude(y);
    const L big = Larger(ax, ay);
    const L small = Smaller(ax, ay);
    const Mask<Width> steep = small > big * L(kTanOf22);
    const L t = (small - Where(steep, big)) / (big + Where(steep, small));

    const L z = t * t;
    const L z2 = z * z;
    const L z4 = z2 * z2;
    const L low = (L(57.295779513082316) + L(-19.0985931710248) * z)
                  + (L(11.459155901991393) + L(-8.185111301295645) * z) * z2;
    const L middle = (L(6.366194985180819) + L(-5.208631173972195) * z)
                     + (L(4.406043588649746) + L(-3.8047764827485406) * z) * z2;
    const L high =
        (L(3.2601858762300653) + L(-2.4939926344382957) * z) + L(1.2141584048154648) * z2;
    const L r = t * (low + (middle + high * z4) * z4);

    const Mask<Width> across = ay > ax;
    const Mask<Width> behind = L(0.0) > x;
    const L mirror = Where(across, L(-0.0));
    const L back = Where(behind, L(-0.0));
    const L octant = Flipped(Where(steep, L(45.0)), mirror) + Where(across, L(90.0));
    const L center = Flipped(octant, back) + Where(behind, L(180.0));
    return Flipped(center + Flipped(r, Flipped(mirror, back)), SignOf(y));
}

} // namespace tiltpole::vector
