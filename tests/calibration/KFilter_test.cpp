// SPDX-License-Identifier: MIT
//
// The Kalman filter compared with its formulas on plain arrays, and applied to a published series.
#include "calibration/KFilter.h"
#include "tests/calibration/AdjustTools.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>
#include <random>
#include <sstream>

namespace {

CSZMatrix Random(std::mt19937& random, int rows, int columns)
{
    std::uniform_real_distribution<double> value(-2, 2);
    CSZMatrix matrix(rows, columns);
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < columns; ++c)
            matrix.SetData(r, c, value(random));
    return matrix;
}

CSZMatrix RandomCovariance(std::mt19937& random, int order)
{
    const CSZMatrix root = Random(random, order, order);
    return root * root.matTran() + CSZMatrix(order, order, MatIdentity);
}

// The formulas of the filter, with every product computed.
struct Model
{
    CSZMatrix Phi, B, Gamma, H, D, R, Q, x, P;

    CSZMatrix Step(const CSZMatrix& z, const CSZMatrix& u)
    {
        const CSZMatrix I(Phi.getRowSize(), Phi.getRowSize(), MatIdentity);
        const CSZMatrix predicted = Phi * P * Phi.matTran() + Gamma * Q * Gamma.matTran();
        const CSZMatrix S = H * predicted * H.matTran() + R;
        const CSZMatrix K = predicted * H.matTran() * S.matInv();
        P = (I - K * H) * predicted;
        const CSZMatrix before = Phi * x + B * u;
        x = before + K * (z - D * u - H * before);
        return x;
    }

    void Give(CKFilter& filter) const
    {
        filter.SetMatrixOrder(Phi.getRowSize(), H.getRowSize());
        ASSERT_EQ(filter.SetSystemMatrix(Phi, B, Gamma, H, D), 1);
        ASSERT_EQ(filter.SetNoise(R, Q), 1);
        ASSERT_EQ(filter.SetInitialData(x, P), 1);
    }
};

Model RandomModel(std::mt19937& random, int n, int m)
{
    return {Random(random, n, n),        Random(random, n, n), Random(random, n, m),
            Random(random, m, n),        Random(random, m, n), RandomCovariance(random, m),
            RandomCovariance(random, m), Random(random, n, 1), RandomCovariance(random, n)};
}

Model Smoother(int n)
{
    const CSZMatrix I(n, n, MatIdentity), O(n, n);
    return {I, O, I, I, O, I * 16.0, I * 16.0, CSZMatrix(n, 1), I * 25.0};
}

void ExpectSameNumbers(const CSZMatrix& a, const CSZMatrix& b)
{
    ASSERT_EQ(a.getRowSize(), b.getRowSize());
    ASSERT_EQ(a.getColSize(), b.getColSize());
    for (int r = 0; r < a.getRowSize(); ++r)
        for (int c = 0; c < a.getColSize(); ++c)
            ASSERT_TRUE((a.GetData(r, c) == b.GetData(r, c)
                         && std::signbit(a.GetData(r, c)) == std::signbit(b.GetData(r, c)))
                        || (std::isnan(a.GetData(r, c)) && std::isnan(b.GetData(r, c))))
                << r << ',' << c << ": " << a.GetData(r, c) << " and " << b.GetData(r, c);
}

void ExpectSameSteps(Model model, int steps, std::mt19937& random)
{
    CKFilter filter;
    ASSERT_NO_FATAL_FAILURE(model.Give(filter));
    for (int i = 0; i < steps; ++i) {
        const CSZMatrix z = Random(random, model.H.getRowSize(), 1);
        const CSZMatrix u = Random(random, model.Phi.getRowSize(), 1);
        const CSZMatrix given = filter.Filter(z, u);
        ASSERT_NO_FATAL_FAILURE(ExpectSameNumbers(given, model.Step(z, u))) << "step " << i;
    }
}

TEST(KFilter, FollowsItsFormulasToTheLastBit)
{
    std::mt19937 random(5);
    for (const auto& [n, m] : {
             std::pair{1, 1},
             {2, 1},
             {4, 2},
             {6, 6},
             {3, 5},
             {8, 3}
    })
        ASSERT_NO_FATAL_FAILURE(ExpectSameSteps(RandomModel(random, n, m), 12, random));
}

TEST(KFilter, IdentitiesAndZerosChangeNoBit)
{
    std::mt19937 random(6);
    ASSERT_NO_FATAL_FAILURE(ExpectSameSteps(Smoother(6), 30, random));
    for (int kind = 0; kind < 32; ++kind) {
        Model model = RandomModel(random, 6, 6);
        const CSZMatrix I(6, 6, MatIdentity), O(6, 6);
        if (kind & 1) model.Phi = I;
        if (kind & 2) model.B = kind & 4 ? I : O;
        if (kind & 4) model.H = I;
        if (kind & 8) model.D = kind & 4 ? I : O;
        if (kind & 16) model.Gamma = I;
        ASSERT_NO_FATAL_FAILURE(ExpectSameSteps(model, 5, random)) << kind;
    }
}

TEST(KFilter, NumbersThatAreNotFiniteSpreadAsInTheFormulas)
{
    std::mt19937 random(7);
    const double odd[] = {std::numeric_limits<double>::quiet_NaN(),
                          std::numeric_limits<double>::infinity()};
    for (const double value : odd) {
        for (const bool inControl : {false, true}) {
            Model model = Smoother(6);
            CKFilter filter;
            ASSERT_NO_FATAL_FAILURE(model.Give(filter));
            CSZMatrix z = Random(random, 6, 1), u(6, 1);
            (inControl ? u : z).SetData(2, value);
            for (int i = 0; i < 3; ++i)
                ASSERT_NO_FATAL_FAILURE(ExpectSameNumbers(filter.Filter(z, u), model.Step(z, u)));
        }
    }
}

CSZMatrix RandomDiagonal(std::mt19937& random, int order)
{
    std::uniform_real_distribution<double> value(0.5, 20);
    CSZMatrix matrix(order, order);
    for (int i = 0; i < order; ++i)
        matrix.SetData(i, i, value(random));
    return matrix;
}

// Identities and diagonal covariances: the states are independent.
Model SeparateStates(std::mt19937& random, int n)
{
    Model model = Smoother(n);
    for (CSZMatrix* covariance : {&model.R, &model.Q, &model.P})
        *covariance = RandomDiagonal(random, n);
    model.x = Random(random, n, 1);
    return model;
}

TEST(KFilter, SeparateStatesChangeNoBit)
{
    std::mt19937 random(11);
    for (const int n : {1, 2, 6, 9}) {
        const Model separate = SeparateStates(random, n);
        ASSERT_NO_FATAL_FAILURE(ExpectSameSteps(separate, 30, random)) << n;
        Model diagonalGamma = separate;
        diagonalGamma.Gamma = RandomDiagonal(random, n);
        ASSERT_NO_FATAL_FAILURE(ExpectSameSteps(diagonalGamma, 30, random)) << n;
    }
}

TEST(KFilter, OneElementBesideADiagonalJoinsTheStates)
{
    std::mt19937 random(12);
    CSZMatrix Model::*const members[] = {&Model::Phi, &Model::B, &Model::Gamma, &Model::H,
                                         &Model::D,   &Model::R, &Model::Q,     &Model::P};
    for (CSZMatrix Model::*const member : members) {
        Model model = SeparateStates(random, 6);
        (model.*member).SetData(4, 1, 0.75);
        ASSERT_NO_FATAL_FAILURE(ExpectSameSteps(model, 5, random));
    }
}

TEST(KFilter, WhatIsSetLaterDecidesWhetherStatesAreSeparate)
{
    std::mt19937 random(13);
    Model model = SeparateStates(random, 6);
    CKFilter filter;
    ASSERT_NO_FATAL_FAILURE(model.Give(filter));
    const auto expectSameSteps = [&] {
        for (int i = 0; i < 3; ++i) {
            const CSZMatrix z = Random(random, 6, 1), u = Random(random, 6, 1);
            ASSERT_NO_FATAL_FAILURE(ExpectSameNumbers(filter.Filter(z, u), model.Step(z, u)));
        }
    };
    expectSameSteps();
    model.P = RandomCovariance(random, 6);
    ASSERT_EQ(filter.SetInitialData(model.x, model.P), 1);
    expectSameSteps();
    model.P = RandomDiagonal(random, 6);
    ASSERT_EQ(filter.SetInitialData(model.x, model.P), 1);
    expectSameSteps();
    model.Q = RandomCovariance(random, 6);
    ASSERT_EQ(filter.SetNoise(model.R, model.Q), 1);
    expectSameSteps();
}

TEST(KFilter, AVarianceColumnIsNoDiagonalCovariance)
{
    std::mt19937 random(15);
    Model model = SeparateStates(random, 3);
    CKFilter filter;
    ASSERT_NO_FATAL_FAILURE(model.Give(filter));
    model.P = CSZMatrix(3, 1, 1, 5.0);
    ASSERT_EQ(filter.SetInitialVariance(model.P), 1);
    const CSZMatrix z = Random(random, 3, 1), u(3, 1);
    ExpectSameNumbers(filter.Filter(z, u), model.Step(z, u));
}

TEST(KFilter, SeparateStatesThatCannotBeInvertedFollowTheFormulas)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const double odd[] = {0.0,    -0.0,     1e-310,    5e-324,      2.3e-308,
                          -3e300, infinity, -infinity, std::nan("")};
    std::mt19937 random(14);
    for (const double noise : odd) {
        Model model = SeparateStates(random, 6);
        model.P.SetData(2, 2, 0.0);
        model.Q.SetData(2, 2, 0.0);
        model.R.SetData(2, 2, noise); // the third element of S
        ASSERT_NO_FATAL_FAILURE(ExpectSameSteps(model, 4, random)) << noise;
        model.P.SetData(2, 2, 1e300); // the gain may leave the range
        ASSERT_NO_FATAL_FAILURE(ExpectSameSteps(model, 4, random)) << noise;
        model.x.SetData(2, 0, noise);
        ASSERT_NO_FATAL_FAILURE(ExpectSameSteps(model, 4, random)) << noise;
    }
    Model subnormal = SeparateStates(random, 6); // refused as a pivot, its reciprocal finite
    subnormal.P.SetData(2, 2, 1e-308);
    subnormal.Q.SetData(2, 2, 0.0);
    subnormal.R.SetData(2, 2, 0.0);
    ASSERT_NO_FATAL_FAILURE(ExpectSameSteps(subnormal, 4, random));
}

// Equal noise q = r = 16 and P = 25: P⁻ = 41, K = 41/57; then P = 656/57, P⁻ = 1568/57, K =
// 1568/2480.
TEST(KFilter, IsARecursiveWeightedAverageForAConstantValue)
{
    CKFilter filter;
    Model model = Smoother(1);
    ASSERT_NO_FATAL_FAILURE(model.Give(filter));
    const CSZMatrix u(1, 1);
    const double first = filter.Filter(CSZMatrix(1, 1, 1, 10.0), u).GetData(0, 0);
    EXPECT_NEAR(first, 10 * 41.0 / 57, 1e-14);
    const double second = filter.Filter(CSZMatrix(1, 1, 1, 4.0), u).GetData(0, 0);
    EXPECT_NEAR(second, first + (4 - first) * 1568.0 / 2480, 1e-14);
}

TEST(KFilter, RefusesMeasurementsOfAnotherLengthAndStaysAsItIs)
{
    CKFilter filter, untouched;
    Model model = Smoother(2);
    ASSERT_NO_FATAL_FAILURE(model.Give(filter));
    ASSERT_NO_FATAL_FAILURE(model.Give(untouched));
    const CSZMatrix z(2, 1, 2, 3.0, 4.0), u(2, 1);
    const struct
    {
        CSZMatrix z, u;
        const char* why;
    } cases[] = {
        {CSZMatrix(3,   1,   MatOnes), u, "z too long"},
        {CSZMatrix(1, 2,    MatOnes),  u, "z lying"},
        {z,     CSZMatrix(1,    1),  "u too short"},
        {z,             CSZMatrix(), "u empty"   }
    };
    for (const auto& c : cases) {
        RecordedBoxes boxes;
        ExpectSameNumbers(filter.Filter(c.z, c.u), c.z);
        EXPECT_EQ(boxes.shown, (std::vector<Box>{
                                   {L"Filter Failure!", L"Warning", 0x30}
        }))
            << c.why;
    }
    ExpectSameNumbers(filter.Filter(z, u), untouched.Filter(z, u));
}

TEST(KFilter, IsUnusableBeforeItsOrderIsSet)
{
    RecordedBoxes boxes;
    CKFilter filter;
    filter.Filter(CSZMatrix(1, 1, MatOnes), CSZMatrix(1, 1));
    EXPECT_EQ(boxes.shown.size(), 1U);
    EXPECT_EQ(filter.SetInitialData(CSZMatrix(1, 1), CSZMatrix(1, 1)), 0);
}

TEST(KFilter, SetOperationsRefuseWrongShapes)
{
    CKFilter filter;
    filter.SetMatrixOrder(3, 2);
    const CSZMatrix nn(3, 3), nm(3, 2), mn(2, 3), mm(2, 2), n1(3, 1);
    EXPECT_EQ(filter.SetSystemMatrix(nn, nn, nm, mn, mn), 1);
    EXPECT_EQ(filter.SetSystemMatrix(nm, nn, nm, mn, mn), 0);
    EXPECT_EQ(filter.SetSystemMatrix(nn, mm, nm, mn, mn), 0);
    EXPECT_EQ(filter.SetSystemMatrix(nn, nn, mn, mn, mn), 0);
    EXPECT_EQ(filter.SetSystemMatrix(nn, nn, nm, nm, mn), 0);
    EXPECT_EQ(filter.SetSystemMatrix(nn, nn, nm, mn, nn), 0);
    EXPECT_EQ(filter.SetInitialData(n1, nn), 1);
    EXPECT_EQ(filter.SetInitialData(nn, nn), 0);
    EXPECT_EQ(filter.SetInitialData(n1, mm), 0);
    EXPECT_EQ(filter.SetInitialVariance(n1), 1);
    EXPECT_EQ(filter.SetInitialVariance(nn), 0);
    EXPECT_EQ(filter.SetNoise(mm, mm), 1) << "R is checked against the measurement order";
    EXPECT_EQ(filter.SetNoise(nn, mm), 0);
    EXPECT_EQ(filter.SetNoise(mm, nn), 0);
}

TEST(KFilter, RefusedSetLeavesTheFilterAsItWas)
{
    std::mt19937 random(8);
    Model model = RandomModel(random, 2, 2);
    CKFilter filter;
    ASSERT_NO_FATAL_FAILURE(model.Give(filter));
    const CSZMatrix other(2, 2, MatOnes), wrong(3, 3);
    filter.SetSystemMatrix(other, other, other, other, wrong);
    filter.SetNoise(other, wrong);
    filter.SetInitialData(CSZMatrix(2, 1), wrong);
    const CSZMatrix z = Random(random, 2, 1), u = Random(random, 2, 1);
    ExpectSameNumbers(filter.Filter(z, u), model.Step(z, u));
}

TEST(KFilter, OrderGivesZeroMatrices)
{
    CKFilter filter;
    filter.SetMatrixOrder(2, 2);
    ExpectSameNumbers(filter.Filter(CSZMatrix(2, 1, MatOnes), CSZMatrix(2, 1)), CSZMatrix(2, 1));
}

TEST(KFilter, SettingTheSameOrderGivesZeroMatricesAgain)
{
    std::mt19937 random(16);
    CKFilter filter;
    ASSERT_NO_FATAL_FAILURE(RandomModel(random, 2, 2).Give(filter));
    filter.SetMatrixOrder(2, 2);
    const CSZMatrix O(2, 2);
    Model zero{O, O, O, O, O, O, O, CSZMatrix(2, 1), O};
    const CSZMatrix z = Random(random, 2, 1), u = Random(random, 2, 1);
    ExpectSameNumbers(filter.Filter(z, u), zero.Step(z, u));
}

TEST(KFilter, StaysUsableAfterItWasMovedFrom)
{
    std::mt19937 random(17);
    for (const int n : {2, 6, 8}) {
        Model model = RandomModel(random, n, n);
        CKFilter filter;
        ASSERT_NO_FATAL_FAILURE(model.Give(filter));
        CKFilter taken(std::move(filter));
        CKFilter assigned;
        assigned = std::move(taken);
        const CSZMatrix z = Random(random, n, 1), u = Random(random, n, 1);
        const CSZMatrix expected = model.Step(z, u);
        for (CKFilter* each : {&filter, &taken, &assigned}) // NOLINT(bugprone-use-after-move)
            ExpectSameNumbers(each->Filter(z, u), expected);
    }
}

TEST(KFilter, InitialVarianceIsMultipliedUnchanged)
{
    std::mt19937 random(9);
    for (const int n : {1, 3, 6}) {
        for (Model model : {RandomModel(random, n, n), Smoother(n)}) {
            CKFilter filter;
            ASSERT_NO_FATAL_FAILURE(model.Give(filter));
            model.P = Random(random, n, 1);
            ASSERT_EQ(filter.SetInitialVariance(model.P), 1);
            for (int i = 0; i < 3; ++i) {
                const CSZMatrix z = Random(random, n, 1), u = Random(random, n, 1);
                ASSERT_NO_FATAL_FAILURE(ExpectSameNumbers(filter.Filter(z, u), model.Step(z, u)));
            }
        }
    }
}

TEST(KFilter, CopiesCarryModelAndEstimate)
{
    std::mt19937 random(10);
    Model model = RandomModel(random, 4, 2);
    CKFilter filter, assigned;
    ASSERT_NO_FATAL_FAILURE(model.Give(filter));
    filter.Filter(Random(random, 2, 1), Random(random, 4, 1));
    CKFilter copy(filter);
    assigned = filter;
    const CSZMatrix z = Random(random, 2, 1), u = Random(random, 4, 1);
    const CSZMatrix expected = filter.Filter(z, u);
    ExpectSameNumbers(copy.Filter(z, u), expected);
    ExpectSameNumbers(assigned.Filter(z, u), expected);
}

// Local level model of the Nile series; the published figures start from the predicted state 0 of
// variance 1e7 at the first epoch, so P is given without the noise that the first step adds.
TEST(KFilter, ReproducesTheNileLocalLevel)
{
    std::ifstream file(TILTPOLE_SOURCE_DIR "/tests/data/nile_local_level.csv");
    std::string line;
    std::getline(file, line);
    const CSZMatrix I(1, 1, MatIdentity), O(1, 1);
    CKFilter filter;
    filter.SetMatrixOrder(1, 1);
    ASSERT_EQ(filter.SetSystemMatrix(I, O, I, I, O), 1);
    ASSERT_EQ(filter.SetNoise(I * 15099.0, I * 1469.1), 1);
    ASSERT_EQ(filter.SetInitialData(O, I * (1e7 - 1469.1)), 1);
    double variance = 1e7 - 1469.1; // by the recursion P = P⁻·R / (P⁻ + R)
    int years = 0;
    while (std::getline(file, line)) {
        for (char& c : line)
            if (c == ',') c = ' ';
        std::istringstream fields(line);
        fields.imbue(std::locale::classic());
        double year, flow, level, published;
        ASSERT_TRUE(fields >> year >> flow >> level >> published);
        const CSZMatrix estimate = filter.Filter(CSZMatrix(1, 1, 1, flow), O);
        EXPECT_NEAR(estimate.GetData(0, 0), level, 1e-8) << year;
        variance = (variance + 1469.1) * 15099.0 / (variance + 1469.1 + 15099.0);
        EXPECT_NEAR(variance, published, 1e-6) << year;
        ++years;
    }
    EXPECT_EQ(years, 100);
}

} // namespace
