// The vector of doubles the including source file is compiled for, and the few operations on it
// that the language has no operator for. Arithmetic is written with + - * /.
//
// LoadPart and StorePart touch the first `count` lanes only (1 <= count <= kLanes); the lanes
// behind them load as 0. Larger(a, b) is a where a > b, else b, so b where either is not a number.
// FirstEqual answers the first lane that equals x, or -1.
#pragma once

#include <cstddef>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace detail {

using Index = std::ptrdiff_t;

namespace {

#if defined(__AVX512F__)

using Lanes = __m512d;
inline constexpr Index kLanes = 8;

inline __mmask8 FirstLanes(Index count)
{
    return static_cast<__mmask8>((1U << static_cast<unsigned>(count)) - 1U);
}
inline Lanes Load(const double* p)
{
    return _mm512_loadu_pd(p);
}
inline Lanes LoadPart(const double* p, Index count)
{
    return _mm512_maskz_loadu_pd(FirstLanes(count), p);
}
inline void Store(double* p, Lanes v)
{
    _mm512_storeu_pd(p, v);
}
inline void StorePart(double* p, Lanes v, Index count)
{
    _mm512_mask_storeu_pd(p, FirstLanes(count), v);
}
inline Lanes Fill(double x)
{
    return _mm512_set1_pd(x);
}
inline Lanes Larger(Lanes a, Lanes b)
{
    return _mm512_maskz_max_pd(FirstLanes(kLanes), a, b);
}
inline Lanes Magnitude(Lanes a)
{
    return _mm512_abs_pd(a);
}
inline int FirstEqual(Lanes v, double x)
{
    const unsigned equal = _mm512_cmp_pd_mask(v, Fill(x), _CMP_EQ_OQ);
    return equal == 0 ? -1 : __builtin_ctz(equal);
}

#elif defined(__AVX2__)

using Lanes = __m256d;
inline constexpr Index kLanes = 4;

inline __m256i FirstLanes(Index count)
{
    return _mm256_cmpgt_epi64(_mm256_set1_epi64x(count), _mm256_setr_epi64x(0, 1, 2, 3));
}
inline Lanes Load(const double* p)
{
    return _mm256_loadu_pd(p);
}
inline Lanes LoadPart(const double* p, Index count)
{
    return _mm256_maskload_pd(p, FirstLanes(count));
}
inline void Store(double* p, Lanes v)
{
    _mm256_storeu_pd(p, v);
}
inline void StorePart(double* p, Lanes v, Index count)
{
    _mm256_maskstore_pd(p, FirstLanes(count), v);
}
inline Lanes Fill(double x)
{
    return _mm256_set1_pd(x);
}
inline Lanes Larger(Lanes a, Lanes b)
{
    return _mm256_max_pd(a, b);
}
inline Lanes Magnitude(Lanes a)
{
    return _mm256_andnot_pd(Fill(-0.0), a);
}
inline int FirstEqual(Lanes v, double x)
{
    const int equal = _mm256_movemask_pd(_mm256_cmp_pd(v, Fill(x), _CMP_EQ_OQ));
    return equal == 0 ? -1 : __builtin_ctz(static_cast<unsigned>(equal));
}

#elif defined(__SSE2__)

using Lanes = __m128d;
inline constexpr Index kLanes = 2;

inline Lanes Load(const double* p)
{
    return _mm_loadu_pd(p);
}
inline Lanes LoadPart(const double* p, Index count)
{
    return count == 1 ? _mm_load_sd(p) : Load(p);
}
inline void Store(double* p, Lanes v)
{
    _mm_storeu_pd(p, v);
}
inline void StorePart(double* p, Lanes v, Index count)
{
    count == 1 ? _mm_store_sd(p, v) : Store(p, v);
}
inline Lanes Fill(double x)
{
    return _mm_set1_pd(x);
}
inline Lanes Larger(Lanes a, Lanes b)
{
    return _mm_max_pd(a, b);
}
inline Lanes Magnitude(Lanes a)
{
    return _mm_andnot_pd(Fill(-0.0), a);
}
inline int FirstEqual(Lanes v, double x)
{
    const int equal = _mm_movemask_pd(_mm_cmpeq_pd(v, Fill(x)));
    return equal == 0 ? -1 : __builtin_ctz(static_cast<unsigned>(equal));
}

#else

using Lanes = double;
inline constexpr Index kLanes = 1;

inline Lanes Load(const double* p)
{
    return *p;
}
inline Lanes LoadPart(const double* p, Index)
{
    return *p;
}
inline void Store(double* p, Lanes v)
{
    *p = v;
}
inline void StorePart(double* p, Lanes v, Index)
{
    *p = v;
}
inline Lanes Fill(double x)
{
    return x;
}
inline Lanes Larger(Lanes a, Lanes b)
{
    return a > b ? a : b;
}
inline Lanes Magnitude(Lanes a)
{
    return __builtin_fabs(a);
}
inline int FirstEqual(Lanes v, double x)
{
    return v == x ? 0 : -1;
}

#endif

} // namespace
} // namespace detail
