#include "matrix/detail/Kernels.h"

#include "matrix/detail/KernelBody.h"

namespace detail {

const KernelSet kBaselineKernels = kLaneKernels;

namespace {

const KernelSet& ChooseKernels()
{
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx512f") != 0) return kAvx512Kernels;
    if (__builtin_cpu_supports("avx2") != 0) return kAvx2Kernels;
#endif
    return kBaselineKernels;
}

const KernelSet& ProcessorKernels()
{
    static const KernelSet& chosen = ChooseKernels();
    return chosen;
}

// A product whose size the compiler knows: unrolled, the sums in registers.
template <int N>
void MultiplySquare(const double* a, const double* b, double* c)
{
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) {
            double sum = 0.0;
            for (int k = 0; k < N; ++k)
                sum += a[i * N + k] * b[k * N + j];
            c[i * N + j] = sum;
        }
}

} // namespace

void Multiply(const double* a, const double* b, double* c, int rows, int inner, int cols)
{
    if (rows == 3 && inner == 3 && cols == 3) return MultiplySquare<3>(a, b, c);
    ProcessorKernels().multiply(a, b, c, rows, inner, cols);
}

void Transpose(const double* a, double* t, int rows, int cols)
{
    for (Index r = 0; r < rows; ++r)
        for (Index c = 0; c < cols; ++c)
            t[c * rows + r] = a[r * cols + c];
}

Outcome Invert(double* a, int n, PivotFloor floor)
{
    return ProcessorKernels().invert(a, n, floor);
}

Outcome FactorCholesky(const double* a, double* l, int n, PivotFloor floor)
{
    return ProcessorKernels().factorCholesky(a, l, n, floor);
}

} // namespace detail
