// SPDX-License-Identifier: MIT
//
// Lanes<Width>: as many doubles side by side in one vector register, computed all at once.
//
//     template <int Width>
//     void Scale(double* x, vector::Index count, double factor) // count: a multiple of Width
//     {
//         for (vector::Index i = 0; i < count; i += Width)
//             (factor * vector::Lanes<Width>::Load(x + i)).Store(x + i);
//     }
//
// Each lane is rounded like the scalar operation, so a loop over elements gives the same bits at
// every width.
//
// Width 2 is for every processor, 4 for AVX2, 8 for AVX-512F. Code of the widths 4 and 8 is
// instantiated only in source files that tiltpole_wide_sources (vector/CMakeLists.txt) compiles for
// such a processor. Everything that these files call is a template of the width or always inlined:
// the linker keeps one copy of an inline function, and must not keep theirs for other processors.
#pragma once

#include "vector/Instructions.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tiltpole::vector {

/// One truth value a lane.
template <int Width>
class Mask
{
public:
    using Integers = typename Registers<Width>::Integers;

    explicit Mask(Integers bits) : m_bits(bits) {}

    friend Mask operator&(Mask a, Mask b) { return Mask(a.m_bits & b.m_bits); }

    /// −1 for true and 0 for false in each lane.
    Integers Bits() const { return m_bits; }

    /// Writes −1 for true and 0 for false to to[0] ... to[Width − 1].
    void Store(std::int64_t* to) const { std::memcpy(to, &m_bits, sizeof m_bits); }

private:
    Integers m_bits;
};

template <int Width>
class Lanes
{
    static_assert(Width <= kWidestHere, "compile this file with tiltpole_wide_sources");

public:
    using Doubles = typename Registers<Width>::Doubles;
    using Lane = typename Instructions<Width>::Lane;

    Lanes() = default; ///< without a value

    // NOLINTNEXTLINE(google-explicit-constructor): a scalar operand stands for all lanes
    Lanes(double x) : m_lanes(x - Doubles{}) {} ///< x in every lane

    explicit Lanes(Doubles lanes) : m_lanes(lanes) {}

    /// The lanes one by one, each an own argument.
    template <class... Numbers>
    requires(sizeof...(Numbers) == Width) static Lanes Of(Numbers... lanes)
    {
        return Lanes(Doubles{lanes...});
    }

    double operator[](int lane) const { return m_lanes[lane]; }

    /// from[0] ... from[Width − 1]; LoadPart reads the first `count` of them (1 ... Width), and 0
    /// for the rest.
    static Lanes Load(const double* from)
    {
        return Lanes(*reinterpret_cast<const Unaligned*>(from));
    }
    static Lanes LoadPart(const double* from, Index count)
    {
        return Lanes(Instructions<Width>::LoadPart(from, count));
    }

    /// The counterparts: StorePart writes the first `count` lanes.
    void Store(double* to) const { *reinterpret_cast<Unaligned*>(to) = m_lanes; }
    void StorePart(double* to, Index count) const
    {
        Instructions<Width>::StorePart(to, m_lanes, count);
    }

    friend Lanes operator+(Lanes a, Lanes b) { return Lanes(a.m_lanes + b.m_lanes); }
    friend Lanes operator-(Lanes a, Lanes b) { return Lanes(a.m_lanes - b.m_lanes); }
    friend Lanes operator*(Lanes a, Lanes b) { return Lanes(a.m_lanes * b.m_lanes); }
    friend Lanes operator/(Lanes a, Lanes b) { return Lanes(a.m_lanes / b.m_lanes); }
    Lanes& operator+=(Lanes b) { return *this = *this + b; }
    Lanes& operator-=(Lanes b) { return *this = *this - b; }

    friend Mask<Width> operator>(Lanes a, Lanes b) { return Mask<Width>(a.m_lanes > b.m_lanes); }
    friend Mask<Width> operator>=(Lanes a, Lanes b) { return Mask<Width>(a.m_lanes >= b.m_lanes); }
    friend Mask<Width> operator<=(Lanes a, Lanes b) { return Mask<Width>(a.m_lanes <= b.m_lanes); }

    friend Lanes Root(Lanes a) { return Lanes(Instructions<Width>::Root(a.m_lanes)); }

    /// The sign bit cleared, that of NaN too.
    friend Lanes Magnitude(Lanes a) { return Lanes(Instructions<Width>::Magnitude(a.m_lanes)); }

    /// a where a > b, else b: b where either is NaN.
    friend Lanes Larger(Lanes a, Lanes b)
    {
        return Lanes(Instructions<Width>::Larger(a.m_lanes, b.m_lanes));
    }

    /// a where a < b, else b: b where either is NaN.
    friend Lanes Smaller(Lanes a, Lanes b)
    {
        return Lanes(Instructions<Width>::Smaller(a.m_lanes, b.m_lanes));
    }

    /// a where the mask is true, else 0.
    friend Lanes Where(Mask<Width> mask, Lanes a) { return Lanes(a.Bits() & mask.Bits()); }

    /// −0 where the sign bit of a is set, else 0.
    friend Lanes SignOf(Lanes a) { return Lanes(a.Bits() & Lanes(-0.0).Bits()); }

    /// a with its sign bit flipped where that of b is set; b is a zero.
    friend Lanes Flipped(Lanes a, Lanes b) { return Lanes(a.Bits() ^ b.Bits()); }

    /// Whether a lane equals x.
    friend bool HoldsEqual(Lanes a, double x)
    {
        return Instructions<Width>::HoldsEqual(a.m_lanes, Lanes(x).m_lanes);
    }

    /// The largest lane, where all are numbers from 0 on.
    friend double LargestOf(Lanes a) { return Instructions<Width>::LargestOf(a.m_lanes); }

    /// a with one lane of b: Put(a, Lanes<Width>::At(lane), b).
    static Lane At(Index lane) { return Instructions<Width>::LaneAt(lane); }
    friend Lanes Put(Lanes a, Lane lane, Lanes b)
    {
        return Lanes(Instructions<Width>::Put(a.m_lanes, lane, b.m_lanes));
    }

private:
    using Unaligned = typename Registers<Width>::Unaligned; // of an array of doubles
    using Integers = typename Registers<Width>::Integers;

    explicit Lanes(Integers bits) : m_lanes(reinterpret_cast<Doubles>(bits)) {}
    Integers Bits() const { return reinterpret_cast<Integers>(m_lanes); }

    Doubles m_lanes;
};

/// Elements of a group, whatever the width.
inline constexpr int kGroup = 4;

/// A sum over groups of four elements, with a partial sum for each place in a group: the total does
/// not depend on the width, 2 or 4.
template <int Width>
struct GroupSum
{
    static constexpr int kParts = kGroup / Width;

    Lanes<Width> part[kParts];

    GroupSum()
    {
        for (Lanes<Width>& p : part)
            p = 0.0;
    }

    double Total() const
    {
        double place[kGroup];
        for (int p = 0; p < kParts; ++p)
            part[p].Store(place + std::ptrdiff_t{p} * Width);
        return (place[0] + place[1]) + (place[2] + place[3]);
    }
};

} // namespace tiltpole::vector
