// SPDX-License-Identifier: MIT
//
// What a host may call its own internals. Each of these names, with these parameters, was once one
// of the library: the linker would have given the host's function to the library.
#pragma once

namespace detail {

enum class Reading { A, B };
enum class Outcome { Done, Refused, NoMemory };
enum class PivotFloor : int { SmallestNormal, VisibleBesideOne, None };

struct Turn
{
    double degrees = 0.0;
};

struct ElementStore
{
    double* elements = nullptr;
};

template <class Plane>
struct PlaneXY
{};

using Lane = float;

// Each writes -1 where the library's own would write a result.
void Multiply(const double* a, const double* b, double* c, int rows, int inner, int cols);
void Transpose(const double* a, double* t, int rows, int cols);
Outcome Invert(double* a, int n, PivotFloor floor);
Outcome FactorCholesky(const double* a, double* l, int n, PivotFloor floor);

} // namespace detail
