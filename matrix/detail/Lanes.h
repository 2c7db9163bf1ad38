// SPDX-License-Identifier: MIT
//
// The vector of doubles the including source file is compiled for, and the few operations on it
// that the language has no operator for. Arithmetic is written with + - * /.
//
// LoadPart and StorePart touch the first `count` lanes only (1 <= count <= kLanes); the lanes
// behind them load as 0. Larger(a, b) is a where a > b, else b, so b where either is not a number.
// HoldsEqual answers whether a lane equals x. Put(v, lane, w) is v with that one lane of w.
// LargestOf is for lanes that are numbers from 0 on.
#pragma once

#include <cstddef>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace tiltpole::matrix {

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
inline bool HoldsEqual(Lanes v, double x)
{
    return _mm512_cmp_pd_mask(v, Fill(x), _CMP_EQ_OQ) != 0;
}

using OneLane = __mmask8;
inline OneLane LaneAt(Index lane)
{
    return static_cast<OneLane>(1U << static_cast<unsigned>(lane));
}
inline Lanes Put(Lanes v, OneLane lane, Lanes w)
{
    return _mm512_mask_mov_pd(v, lane, w);
}
inline double LargestOf(Lanes v)
{
    double lanes[kLanes];
    Store(lanes, v);
    const __m256d half = _mm256_max_pd(_mm256_loadu_pd(lanes), _mm256_loadu_pd(lanes + 4));
    const __m128d pair = _mm_max_pd(_mm256_castpd256_pd128(half), _mm256_extractf128_pd(half, 1));
    return _mm_cvtsd_f64(_mm_max_sd(pair, _mm_unpackhi_pd(pair, pair)));
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
inline bool HoldsEqual(Lanes v, double x)
{
    return _mm256_movemask_pd(_mm256_cmp_pd(v, Fill(x), _CMP_EQ_OQ)) != 0;
}

using OneLane = Lanes;
inline OneLane LaneAt(Index lane)
{
    return _mm256_castsi256_pd(
        _mm256_cmpeq_epi64(_mm256_set1_epi64x(lane), _mm256_setr_epi64x(0, 1, 2, 3)));
}
inline Lanes Put(Lanes v, OneLane lane, Lanes w)
{
    return _mm256_blendv_pd(v, w, lane);
}
inline double LargestOf(Lanes v)
{
    const __m128d pair = _mm_max_pd(_mm256_castpd256_pd128(v), _mm256_extractf128_pd(v, 1));
    return _mm_cvtsd_f64(_mm_max_sd(pair, _mm_unpackhi_pd(pair, pair)));
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
inline bool HoldsEqual(Lanes v, double x)
{
    return _mm_movemask_pd(_mm_cmpeq_pd(v, Fill(x))) != 0;
}

using OneLane = Lanes;
inline OneLane LaneAt(Index lane)
{
    return _mm_castsi128_pd(_mm_set_epi64x(lane == 1 ? -1 : 0, lane == 0 ? -1 : 0));
}
inline Lanes Put(Lanes v, OneLane lane, Lanes w)
{
    return _mm_or_pd(_mm_and_pd(lane, w), _mm_andnot_pd(lane, v));
}
inline double LargestOf(Lanes v)
{
    return _mm_cvtsd_f64(_mm_max_sd(v, _mm_unpackhi_pd(v, v)));
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
inline bool HoldsEqual(Lanes v, double x)
{
    return v == x;
}

struct OneLane
{};
inline OneLane LaneAt(Index)
{
    return {};
}
inline Lanes Put(Lanes, OneLane, Lanes w)
{
    return w;
}
inline double LargestOf(Lanes v)
{
    return v;
}

#endif

} // namespace
} // namespace tiltpole::matrix
