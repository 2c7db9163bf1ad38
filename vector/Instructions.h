// SPDX-License-Identifier: MIT
//
// What vectors of doubles can do beyond the operators of the language; part of Lanes.h.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace tiltpole::vector {

using Index = std::ptrdiff_t;

/// The widest vectors that the file being compiled may use.
#if defined(__AVX512F__)
inline constexpr int kWidestHere = 8;
#elif defined(__AVX2__)
inline constexpr int kWidestHere = 4;
#else
inline constexpr int kWidestHere = 2;
#endif

template <int Width>
struct Registers
{
    using Doubles __attribute__((vector_size(Width * sizeof(double)))) = double;
    using Unaligned __attribute__((vector_size(Width * sizeof(double)), aligned(8))) = double;
    using Integers __attribute__((vector_size(Width * sizeof(double)))) = std::int64_t;
};

/// Written out lane by lane, for processors without a specialization below.
template <int Width>
struct Instructions
{
    using Doubles = typename Registers<Width>::Doubles;
    using Lane = Index;

    static Doubles LoadPart(const double* from, Index count)
    {
        Doubles loaded = {};
        for (Index i = 0; i < count; ++i)
            loaded[i] = from[i];
        return loaded;
    }
    static void StorePart(double* to, Doubles v, Index count)
    {
        for (Index i = 0; i < count; ++i)
            to[i] = v[i];
    }
    static Doubles Root(Doubles v)
    {
        for (int i = 0; i < Width; ++i)
            v[i] = __builtin_sqrt(v[i]);
        return v;
    }
    static Doubles Magnitude(Doubles v)
    {
        for (int i = 0; i < Width; ++i)
            v[i] = __builtin_fabs(v[i]);
        return v;
    }
    static Doubles Larger(Doubles a, Doubles b) { return a > b ? a : b; }
    static Doubles Smaller(Doubles a, Doubles b) { return a < b ? a : b; }
    static bool HoldsEqual(Doubles a, Doubles b)
    {
        bool holds = false;
        for (int i = 0; i < Width; ++i)
            holds = holds || a[i] == b[i];
        return holds;
    }
    static double LargestOf(Doubles v)
    {
        double largest = v[0];
        for (int i = 1; i < Width; ++i)
            largest = v[i] > largest ? v[i] : largest;
        return largest;
    }
    static Lane LaneAt(Index lane) { return lane; }
    static Doubles Put(Doubles v, Lane lane, Doubles w)
    {
        v[lane] = w[lane];
        return v;
    }
};

#if defined(__SSE2__)

template <>
struct Instructions<2>
{
    using Doubles = Registers<2>::Doubles;
    using Lane = __m128d; // all bits of the lane set

    static Doubles LoadPart(const double* from, Index count)
    {
        return count == 1 ? _mm_load_sd(from) : _mm_loadu_pd(from);
    }
    static void StorePart(double* to, Doubles v, Index count)
    {
        count == 1 ? _mm_store_sd(to, v) : _mm_storeu_pd(to, v);
    }
    static Doubles Root(Doubles v) { return _mm_sqrt_pd(v); }
    static Doubles Magnitude(Doubles v) { return _mm_andnot_pd(_mm_set1_pd(-0.0), v); }
    static Doubles Larger(Doubles a, Doubles b) { return _mm_max_pd(a, b); }
    static Doubles Smaller(Doubles a, Doubles b) { return _mm_min_pd(a, b); }
    static bool HoldsEqual(Doubles a, Doubles b)
    {
        return _mm_movemask_pd(_mm_cmpeq_pd(a, b)) != 0;
    }
    static double LargestOf(Doubles v)
    {
        return _mm_cvtsd_f64(_mm_max_sd(v, _mm_unpackhi_pd(v, v)));
    }
    static Lane LaneAt(Index lane)
    {
        return _mm_castsi128_pd(_mm_set_epi64x(lane == 1 ? -1 : 0, lane == 0 ? -1 : 0));
    }
    static Doubles Put(Doubles v, Lane lane, Doubles w)
    {
        return _mm_or_pd(_mm_and_pd(lane, w), _mm_andnot_pd(lane, v));
    }
};

#endif
#if defined(__AVX2__)

template <>
struct Instructions<4>
{
    using Doubles = Registers<4>::Doubles;
    using Lane = __m256d; // all bits of the lane set

    static __m256i First(Index count)
    {
        return _mm256_cmpgt_epi64(_mm256_set1_epi64x(count), _mm256_setr_epi64x(0, 1, 2, 3));
    }
    static Doubles LoadPart(const double* from, Index count)
    {
        return _mm256_maskload_pd(from, First(count));
    }
    static void StorePart(double* to, Doubles v, Index count)
    {
        _mm256_maskstore_pd(to, First(count), v);
    }
    static Doubles Root(Doubles v) { return _mm256_sqrt_pd(v); }
    static Doubles Magnitude(Doubles v) { return _mm256_andnot_pd(_mm256_set1_pd(-0.0), v); }
    static Doubles Larger(Doubles a, Doubles b) { return _mm256_max_pd(a, b); }
    static Doubles Smaller(Doubles a, Doubles b) { return _mm256_min_pd(a, b); }
    static bool HoldsEqual(Doubles a, Doubles b)
    {
        return _mm256_movemask_pd(_mm256_cmp_pd(a, b, _CMP_EQ_OQ)) != 0;
    }
    static double LargestOf(Doubles v)
    {
        const __m128d pair = _mm_max_pd(_mm256_castpd256_pd128(v), _mm256_extractf128_pd(v, 1));
        return _mm_cvtsd_f64(_mm_max_sd(pair, _mm_unpackhi_pd(pair, pair)));
    }
    static Lane LaneAt(Index lane)
    {
        return _mm256_castsi256_pd(
            _mm256_cmpeq_epi64(_mm256_set1_epi64x(lane), _mm256_setr_epi64x(0, 1, 2, 3)));
    }
    static Doubles Put(Doubles v, Lane lane, Doubles w) { return _mm256_blendv_pd(v, w, lane); }
};

#endif
#if defined(__AVX512F__)

template <>
struct Instructions<8>
{
    using Doubles = Registers<8>::Doubles;
    using Lane = __mmask8;

    static __mmask8 First(Index count)
    {
        return static_cast<__mmask8>((1U << static_cast<unsigned>(count)) - 1U);
    }
    static Doubles LoadPart(const double* from, Index count)
    {
        return _mm512_maskz_loadu_pd(First(count), from);
    }
    static void StorePart(double* to, Doubles v, Index count)
    {
        _mm512_mask_storeu_pd(to, First(count), v);
    }
    static Doubles Root(Doubles v) { return _mm512_maskz_sqrt_pd(First(8), v); }
    static Doubles Magnitude(Doubles v) { return _mm512_abs_pd(v); }
    static Doubles Larger(Doubles a, Doubles b) { return _mm512_maskz_max_pd(First(8), a, b); }
    static Doubles Smaller(Doubles a, Doubles b) { return _mm512_maskz_min_pd(First(8), a, b); }
    static bool HoldsEqual(Doubles a, Doubles b)
    {
        return _mm512_cmp_pd_mask(a, b, _CMP_EQ_OQ) != 0;
    }
    static double LargestOf(Doubles v)
    {
        double lanes[8];
        _mm512_storeu_pd(lanes, v);
        const __m256d half = _mm256_max_pd(_mm256_loadu_pd(lanes), _mm256_loadu_pd(lanes + 4));
        const __m128d pair =
            _mm_max_pd(_mm256_castpd256_pd128(half), _mm256_extractf128_pd(half, 1));
        return _mm_cvtsd_f64(_mm_max_sd(pair, _mm_unpackhi_pd(pair, pair)));
    }
    static Lane LaneAt(Index lane) { return static_cast<Lane>(1U << static_cast<unsigned>(lane)); }
    static Doubles Put(Doubles v, Lane lane, Doubles w) { return _mm512_mask_mov_pd(v, lane, w); }
};

#endif

} // namespace tiltpole::vector
