// SPDX-License-Identifier: MIT
//
// Every kernel of every vector width against the literal rules, bit for bit.
#include "matrix/detail/Kernels.h"

#include "tests/matrix/MatrixTools.h"
#include "vector/Dispatch.h"

#include <cstddef>
#include <functional>
#include <vector>

using namespace matrixtest;
using tiltpole::matrix::KernelSet;
using tiltpole::matrix::Outcome;
using tiltpole::matrix::PivotFloor;

namespace {

// The widths that this processor has.
std::vector<int> Widths()
{
    std::vector<int> widths;
    for (int width = 2; width <= tiltpole::vector::LanesOfProcessor(); width *= 2)
        widths.push_back(width);
    return widths;
}

class Kernels : public testing::TestWithParam<int>
{
protected:
    const KernelSet& Set() const { return tiltpole::vector::KernelsFor<KernelSet, 8>(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(EveryWidth, Kernels, testing::ValuesIn(Widths()));

TEST_P(Kernels, MultiplyAsTheLiteralSums)
{
    Maker make(11);
    for (const Kind kind : kKinds)
        for (int trial = 0; trial < 120; ++trial) {
            const literal::Matrix a = make.Any(make.Between(1, 40), make.Between(1, 40), kind);
            const literal::Matrix b = make.Any(a.cols, make.Between(1, 40), kind);
            literal::Matrix product(a.rows, b.cols);
            Set().multiply(a.elements.data(), b.elements.data(), product.elements.data(), a.rows,
                           a.cols, b.cols);
            ASSERT_THAT(product, Equals(literal::Product(a, b)));
        }
}

TEST_P(Kernels, AddAndSubtractElementByElement)
{
    Maker make(13);
    for (const Kind kind : kKinds)
        for (int count = 1; count <= 40; ++count) {
            const literal::Matrix a = make.Any(1, count, kind);
            const literal::Matrix b = make.Any(1, count, kind);
            const auto elements = static_cast<std::size_t>(count);
            literal::Matrix sum(1, count);
            Set().add(a.elements.data(), b.elements.data(), sum.elements.data(), elements);
            ASSERT_THAT(sum, Equals(literal::Combined(a, b, std::plus<>())));
            literal::Matrix difference(1, count);
            Set().subtract(a.elements.data(), b.elements.data(), difference.elements.data(),
                           elements);
            ASSERT_THAT(difference, Equals(literal::Combined(a, b, std::minus<>())));
        }
}

TEST_P(Kernels, AddAndSubtractInPlaceAndNoFurther)
{
    for (std::size_t count = 0; count <= 20; ++count) {
        const std::vector<double> ones(count + 1, 1.0);
        std::vector<double> first(count + 1, 5.0);
        Set().add(first.data(), ones.data(), first.data(), count);
        std::vector<double> second(count + 1, 2.0);
        Set().subtract(first.data(), second.data(), second.data(), count);
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(first[i], 6.0) << i << " of " << count;
            ASSERT_EQ(second[i], 4.0) << i << " of " << count;
        }
        ASSERT_EQ(first[count], 5.0) << count;
        ASSERT_EQ(second[count], 2.0) << count;
    }
}

TEST_P(Kernels, InvertAsTheLiteralElimination)
{
    Maker make(12);
    for (const Kind kind : kKinds)
        for (int n = 1; n <= 40; ++n)
            for (int trial = 0; trial < 4; ++trial) {
                const literal::Matrix a = make.Any(n, n, kind);
                literal::Matrix inverse = a;
                const Outcome outcome =
                    Set().invert(inverse.elements.data(), n, PivotFloor::SmallestNormal);
                const literal::Inverse expected =
                    literal::GaussJordan(a, literal::PivotTest::SmallestNormal);
                ASSERT_EQ(outcome == Outcome::Done, expected.completed);
                ASSERT_THAT(inverse, Equals(expected.matrix)) << n << " x " << n;
            }
}

TEST_P(Kernels, ObserveTheOtherPivotFloors)
{
    const struct
    {
        PivotFloor floor;
        literal::PivotTest test;
    } floors[] = {
        {PivotFloor::None,             literal::PivotTest::None     },
        {PivotFloor::VisibleBesideOne, literal::PivotTest::BesideOne}
    };
    Maker make(13);
    for (const auto& f : floors)
        for (const Kind kind : kKinds)
            for (int n = 1; n <= 17; ++n) {
                const literal::Matrix a = make.Any(n, n, kind);
                literal::Matrix inverse = a;
                const Outcome outcome = Set().invert(inverse.elements.data(), n, f.floor);
                const literal::Inverse expected = literal::GaussJordan(a, f.test);
                ASSERT_EQ(outcome == Outcome::Done, expected.completed);
                ASSERT_THAT(inverse, Equals(expected.matrix)) << n << " x " << n;
            }
}

TEST_P(Kernels, InvertLargeMatricesFromTheHeap)
{
    const literal::Matrix a = Maker(14).Any(70, 70, Kind::Usual);
    literal::Matrix inverse = a;
    EXPECT_EQ(Set().invert(inverse.elements.data(), 70, PivotFloor::SmallestNormal), Outcome::Done);
    EXPECT_THAT(inverse, Equals(literal::Inverted(a)));
}

TEST_P(Kernels, FactorAsTheLiteralCholesky)
{
    Maker make(15);
    int completed = 0;
    for (const Kind kind : kKinds)
        for (int n = 1; n <= 40; ++n) {
            literal::Matrix a = make.Symmetric(n, kind);
            if (n % 2 == 0) a = literal::Product(a, a); // positive, unless singular
            const auto [expected, done] = literal::Cholesky(a);
            if (!literal::IsSymmetric(a)) continue;
            literal::Matrix l(n, n);
            const Outcome outcome = Set().factorCholesky(a.elements.data(), l.elements.data(), n,
                                                         PivotFloor::SmallestNormal);
            ASSERT_EQ(outcome == Outcome::Done, done);
            ASSERT_THAT(l, Equals(expected)) << n << " x " << n;
            completed += done ? 1 : 0;
        }
    EXPECT_GT(completed, 20);
}

} // namespace
