// SPDX-License-Identifier: MIT
//
// The loops in which the search for the tip spends its time. Every vector width gives the same
// bits, so no outcome depends on the processor.
//
// Coordinates and radii [m]. Arrays are read and written in groups of kGroup elements: each has
// room for kGroup − 1 elements more than it has values.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tiltpole::geometry {

inline constexpr std::size_t kGroup = 4;

// Positions, one array per coordinate.
struct Coordinates
{
    const double* x;
    const double* y;
    const double* h;
    const double* held; // 1 for a position, 0 for the room behind the last one
};

// Spheres through three fixed positions and one of a row each. With the first position as origin,
// e the fourth and q = |e|²/2, the center is (w × e + q·c) / (c·e).
struct Row
{
    Coordinates e;
    const double* halfSquare; // q [m²]
    double w[3];              // |a|²/2·b − |b|²/2·a of the second and third position a, b
    double c[3];              // a × b
    double lowSquare;         // accepted squared radius, both ends in [m²]
    double highSquare;
    double flat; // times q: squared volume up to which a start is singular
};

// What a row gives: numerator and denominator of each center, and whether the start is usable.
struct RowStarts
{
    double* x;
    double* y;
    double* h;
    double* denominator;
    std::int64_t* usable; // −1 yes, 0 no
};

// All positions as far as a start can be judged without visiting them: moments of the positions p
// about their mean. Matrices are upper triangles: xx, xy, xh, yy, yh, hh.
struct Cloud
{
    double count;
    double spread[6];      // mean of p·pᵀ [m²]
    double trace;          // of `spread`
    double skew[3];        // mean of p·(|p|² − trace) [m³]
    double squareVariance; // mean of (|p|² − trace)² [m⁴]
    double reach;          // longest |p|
    double center[3];      // of the algebraic sphere through the positions
    double nearest;        // shortest distance of a position from that center
    double farthest;       // longest
};

// Usable starts that wait for judgement, as numerator and denominator about `origin`. Judging
// replaces x, y, h by the center about the mean of all positions.
struct Batch
{
    double* x;
    double* y;
    double* h;
    const double* denominator;
    double* radius;
    std::int64_t* hopeless; // −1: certain to have a squared point error above the limit
    std::size_t size;
    double origin[3];
    double limit; // squared point error to beat, times (n − 4) [m²]
};

struct DistanceSums
{
    double weighted[3]; // Σ d·(T − P) over the positions P, d = |T − P| [m²]
};

struct SearchKernels
{
    // The row's elements from `first` up to `last`, the latter excluded.
    void (*scanRow)(const Row& row, std::size_t first, std::size_t last, const RowStarts& out);
    void (*judgeStarts)(const Cloud& cloud, const Batch& batch);
    DistanceSums (*sumDistances)(const Coordinates& p, std::size_t count, const double* tip);
    // Σ v² of the residuals v after a step, or what it has grown to once above `limit` [m²].
    double (*sumResiduals)(const Coordinates& p, std::size_t count, const double* tip,
                           const double* step, double radius, double limit);

    // Over vectors of Width doubles: 2, and 4 where vector/Dispatch.h has it.
    template <int Width>
    static const SearchKernels& Of();
};

// Those for this processor.
const SearchKernels& BestSearchKernels();

} // namespace tiltpole::geometry
