// SPDX-License-Identifier: MIT
//
// Matrices of 8 x 8, which need the heap; some operations need more with 60 x 60.
#include "matrix/SZMatrix.h"
#include "matrix/TiltMatrix.h"
#include "tests/memory/Rows.h"

#include <utility>

namespace sweep {

namespace {

// Symmetric and positive definite.
template <class Matrix>
Matrix Sample(int n)
{
    Matrix m(static_cast<int>(n), static_cast<int>(n));
    for (int i = 0; i < n; ++i)
        for (int k = 0; k < n; ++k)
            m.SetData(i, k, (i == k ? 1.0 : 0.0) + 1.0 / (i + k + 1));
    return m;
}
template <>
CTiltMatrix Sample<CTiltMatrix>(int n)
{
    const auto size = static_cast<unsigned>(n);
    CTiltMatrix m(size, size);
    for (unsigned i = 0; i < size; ++i)
        for (unsigned k = 0; k < size; ++k)
            m.SetData(i, k, (i == k ? 1.0 : 0.0) + 1.0 / (i + k + 1));
    return m;
}

template <class Matrix, int kSize>
struct Matrices
{
    Matrix a = Sample<Matrix>(kSize);
    Matrix given = Sample<Matrix>(kSize);
    Matrix result, second;
    double value = -1.0;
    int n = 0; // of an operation that reports
    CString text;
};

template <class Matrix>
void DescribeTo(std::string& text, const Matrix& m)
{
    text += std::to_string(m.GetRow()) + 'x' + std::to_string(m.GetCol()) + ' ';
    for (unsigned i = 0; i < m.GetRow() * m.GetCol(); ++i) {
        if constexpr (std::is_same_v<Matrix, CSZMatrix>)
            text +=
                Text(m.GetData(static_cast<int>(i / m.GetCol()), static_cast<int>(i % m.GetCol())));
        else
            text += Text(m.GetData(i / m.GetCol(), i % m.GetCol()));
    }
}

template <class State>
std::string Describe(const State& s)
{
    std::string text;
    for (const auto* m : {&s.a, &s.given, &s.result, &s.second})
        DescribeTo(text, *m);
    return text + Text(s.value) + std::to_string(s.n) + ' ' + std::to_string(s.text.GetLength());
}

using Checked = Matrices<CSZMatrix, 8>;
using LargeChecked = Matrices<CSZMatrix, 60>;
using Small = Matrices<CTiltMatrix, 8>;
using LargeSmall = Matrices<CTiltMatrix, 60>;

// What an operation that failed returns is 0 x 0.
template <class State>
void AddResult(std::vector<Row>& rows, const char* covers, std::function<void(State&)> run)
{
    rows.push_back(Operation<State>(covers, Shortage::Reports, std::move(run), Describe<State>));
}

// An operation into given matrices that answers 0 and may have begun.
template <class State>
void AddAnswer(std::vector<Row>& rows, const char* covers, std::function<void(State&)> run)
{
    rows.push_back(
        Operation<State>(covers, Shortage::Reports, std::move(run), Describe<State>,
                         {[](const State& s) { return s.n == 0; }, [](State& s) { s = State(); }}));
}

// An assignment, after which the object is 0 x 0 where it failed.
template <class State>
void AddAssignment(std::vector<Row>& rows, const char* covers, std::function<void(State&)> run)
{
    rows.push_back(Operation<State>(
        covers, Shortage::Reports, std::move(run), Describe<State>,
        {[](const State& s) { return s.n == 0 && s.result.GetRow() == 0 && s.given.GetRow() != 0; },
         {}}));
}

void AddCheckedRows(std::vector<Row>& rows)
{
    const auto add = [&rows](const char* covers, std::function<void(Checked&)> run) {
        AddResult<Checked>(rows, covers, std::move(run));
    };
    const auto answer = [&rows](const char* covers, std::function<void(Checked&)> run) {
        AddAnswer<Checked>(rows, covers, std::move(run));
    };
    add("CSZMatrix::CSZMatrix", [](Checked& m) { m.result = CSZMatrix(8, 8); });
    add("CSZMatrix::CSZMatrix", [](Checked& m) { m.result = CSZMatrix(8, 8, MatOnes); });
    add("CSZMatrix::CSZMatrix", [](Checked& m) { m.result = CSZMatrix(8, 8, 2, 1.5, 2.5); });
    add("CSZMatrix::CSZMatrix", [](Checked& m) {
        const double values[] = {1.0, 2.0, 3.0};
        m.result = CSZMatrix(values, 3, 8, 8);
    });
    add("CSZMatrix::CSZMatrix", [](Checked& m) { m.result = CSZMatrix(m.a); });
    AddAssignment<Checked>(
        rows, "CSZMatrix::operator=", [](Checked& m) { m.n = (m.result = m.a) ? 1 : 0; });
    AddAssignment<Checked>(rows, "CSZMatrix::Alloc",
                           [](Checked& m) { m.n = m.result.Alloc(8, 9) ? 1 : 0; });
    add("CSZMatrix::operator+", [](Checked& m) { m.result = m.a + m.given; });
    add("CSZMatrix::operator+", [](Checked& m) { m.result = m.a + 1.5; });
    add("CSZMatrix::operator-", [](Checked& m) { m.result = m.a - m.given; });
    add("CSZMatrix::operator-", [](Checked& m) { m.result = m.a - 1.5; });
    add("CSZMatrix::operator*", [](Checked& m) { m.result = m.a * m.given; });
    add("CSZMatrix::operator*", [](Checked& m) { m.result = m.a * 1.5; });
    add("CSZMatrix::operator/", [](Checked& m) { m.result = m.a / 1.5; });
    add("CSZMatrix::Slice", [](Checked& m) { m.result = m.a.Slice(0, 0, 6, 6); });
    add("CSZMatrix::SliceRows", [](Checked& m) { m.result = m.a.SliceRows(1, 6); });
    add("CSZMatrix::SliceCols", [](Checked& m) { m.result = m.a.SliceCols(1, 6); });
    add("CSZMatrix::DeleteRow", [](Checked& m) { m.result = m.a.DeleteRow(1, 2); });
    add("CSZMatrix::DeleteCol", [](Checked& m) { m.result = m.a.DeleteCol(1, 2); });
    add("CSZMatrix::Delete", [](Checked& m) { m.result = m.a.Delete(1, 1, 2, 1); });
    add("CSZMatrix::matTran", [](Checked& m) { m.result = m.a.matTran(); });
    add("CSZMatrix::matInv", [](Checked& m) { m.result = m.a.matInv(); });
    add("CSZMatrix::UpperMatInv", [](Checked& m) { m.result = m.a.UpperMatInv(); });
    add("CSZMatrix::LowerMatInv", [](Checked& m) { m.result = m.a.LowerMatInv(); });
    AddResult<LargeChecked>(rows, "CSZMatrix::operator*",
                            [](LargeChecked& m) { m.result = m.a * m.given; });
    AddResult<LargeChecked>(rows, "CSZMatrix::matInv",
                            [](LargeChecked& m) { m.result = m.a.matInv(); });
    add("CSZMatrix::toString", [](Checked& m) { m.text = m.a.toString(20, 6, 'f'); });
    answer("CSZMatrix::cholesky", [](Checked& m) { m.n = m.a.cholesky(m.result) ? 1 : 0; });
    answer("CSZMatrix::ldl", [](Checked& m) { m.n = m.a.ldl(m.result, m.second) ? 1 : 0; });
    answer("CSZMatrix::udu", [](Checked& m) { m.n = m.a.udu(m.result, m.second) ? 1 : 0; });
    answer("CSZMatrix::LDLdecompostion",
           [](Checked& m) { m.n = m.a.LDLdecompostion(m.result, m.second) ? 1 : 0; });
    answer("CSZMatrix::Jacobi",
           [](Checked& m) { m.n = m.a.Jacobi(m.result, m.second, 1e-9) ? 1 : 0; });
    answer("CSZMatrix::QR_Schmidt",
           [](Checked& m) { m.n = m.a.QR_Schmidt(m.result, m.second, 1e-9) ? 1 : 0; });
    rows.push_back(WithoutMemory(
        "CSZMatrix::SetData CSZMatrix::Zeros CSZMatrix::Diagonal CSZMatrix::setDiagonal "
        "CSZMatrix::operator+= CSZMatrix::operator-= CSZMatrix::operator*= CSZMatrix::operator/= "
        "CSZMatrix::operator= CSZMatrix::trace CSZMatrix::norm CSZMatrix::vecModulus "
        "CSZMatrix::infiniteNorm CSZMatrix::cross CSZMatrix::skewSymm3 CSZMatrix::skewSymm4",
        [] {
            static CSZMatrix m = Sample<CSZMatrix>(8);
            static const CSZMatrix block(2, 2, MatOnes);
            static const CSZMatrix vector(3, 1, MatOnes);
            EXPECT_TRUE(m.SetData(1, 1, block));
            EXPECT_TRUE(m.SetData(1, 1, 2.0));
            EXPECT_TRUE((m += m) && (m -= m) && (m += 1.0) && (m -= 0.5));
            EXPECT_TRUE((m *= 2.0) && (m /= 2.0));
            EXPECT_EQ(m.trace(), 4.0);
            EXPECT_EQ(m.infiniteNorm(), 4.0);
            m = 1.0;
            EXPECT_EQ(m.Diagonal(2.0), 1);
            EXPECT_TRUE(m.setDiagonal(2.0));
            EXPECT_EQ(m.Zeros(), 1);
            CSZMatrix moved(2, 2, MatOnes);
            EXPECT_TRUE(moved = CSZMatrix(2, 2));
            EXPECT_EQ(vector.norm(), 3.0);
            EXPECT_GT(vector.vecModulus(), 1.7);
            EXPECT_EQ(vector.cross(vector).getRowSize(), 3);
            EXPECT_EQ(vector.skewSymm3().getRowSize(), 3);
            EXPECT_EQ(vector.skewSymm4().getRowSize(), 4);
        }));
}

struct Block
{
    CTiltMatrix into{9, 9};
    CTiltMatrix block = Sample<CTiltMatrix>(8);
};

void AddSmallRows(std::vector<Row>& rows)
{
    const auto add = [&rows](const char* covers, std::function<void(Small&)> run) {
        AddResult<Small>(rows, covers, std::move(run));
    };
    add("CTiltMatrix::CTiltMatrix", [](Small& m) { m.result = CTiltMatrix(8, 8); });
    add("CTiltMatrix::CTiltMatrix", [](Small& m) { m.result = CTiltMatrix(40); });
    add("CTiltMatrix::CTiltMatrix", [](Small& m) { m.result = CTiltMatrix(m.a); });
    AddAssignment<Small>(rows, "CTiltMatrix::operator=", [](Small& m) { m.n = (m.result = m.a); });
    // The answer is 1 whether there was memory or not.
    rows.push_back(Operation<Small>(
        "CTiltMatrix::Alloc", Shortage::Reports, [](Small& m) { m.n = m.result.Alloc(8, 9); },
        Describe<Small>,
        {[](const Small& m) { return m.result.GetRow() == 0 && m.result.IsValid() == 0; }, {}}));
    add("CTiltMatrix::operator+", [](Small& m) { m.result = m.a + m.given; });
    add("CTiltMatrix::operator+", [](Small& m) { m.result = m.a + 1.5; });
    add("CTiltMatrix::operator-", [](Small& m) { m.result = m.a - m.given; });
    add("CTiltMatrix::operator-", [](Small& m) { m.result = m.a - 1.5; });
    add("CTiltMatrix::operator*", [](Small& m) { m.result = m.a * m.given; });
    add("CTiltMatrix::operator*", [](Small& m) { m.result = m.a * 1.5; });
    add("CTiltMatrix::operator/", [](Small& m) { m.result = m.a / 1.5; });
    add("CTiltMatrix::operator~", [](Small& m) { m.result = ~m.a; });
    add("CTiltMatrix::MatInv", [](Small& m) { m.result = m.a.MatInv(); });
    // A zero matrix of its size, and the object is not valid.
    rows.push_back(Operation<Small>("CTiltMatrix::Reverse", Shortage::Reports,
                                    [](Small& m) { m.result = m.a.Reverse(); }, Describe<Small>,
                                    {[](const Small& m) { return m.a.IsValid() == 0; }, {}}));
    add("CTiltMatrix::matChole", [](Small& m) { m.result = m.a.matChole(nullptr); });
    add("CTiltMatrix::MatTran", [](Small& m) { m.result = m.a.MatTran(); });
    add("CTiltMatrix::Slice", [](Small& m) { m.result = m.a.Slice(0, 0, 6, 6); });
    add("CTiltMatrix::Output", [](Small& m) { m.text = m.a.Output(); });
    AddResult<LargeSmall>(rows, "CTiltMatrix::operator~", [](LargeSmall& m) { m.result = ~m.a; });
    // The copy that is the argument has no elements then, and nothing is written.
    rows.push_back(Operation<Block>(
        "CTiltMatrix::SetData", Shortage::Reports, [](Block& b) { b.into.SetData(1, 1, b.block); },
        [](const Block& b) {
            std::string text;
            DescribeTo(text, b.into);
            return text;
        }));
    AddAnswer<Small>(rows, "CTiltMatrix::Diagonal", [](Small& m) {
        m.result = CTiltMatrix(40, 40);
        m.n = m.result.Diagonal(CTiltMatrix(40));
    });
    rows.push_back(WithoutMemory(
        "CTiltMatrix::Diagonal CTiltMatrix::Zeros CTiltMatrix::Symmetry CTiltMatrix::Summation "
        "CTiltMatrix::Trace CTiltMatrix::Module CTiltMatrix::IsMaxtrixSingular "
        "CTiltMatrix::operator+= CTiltMatrix::operator-= CTiltMatrix::operator=",
        [] {
            static CTiltMatrix m = Sample<CTiltMatrix>(8);
            static const CTiltMatrix same = Sample<CTiltMatrix>(8);
            m = 0.0;
            m += same;
            m -= same;
            m += 1.0;
            m -= 0.5;
            EXPECT_EQ(m.Trace(), 4.0);
            EXPECT_EQ(m.Summation(), 4.0);
            EXPECT_EQ(m.Module(), 0.0);
            EXPECT_EQ(m.Symmetry(), 1);
            EXPECT_EQ(m.IsMaxtrixSingular(), 1);
            m = 1.0;
            EXPECT_EQ(m.Diagonal(2.0), 1);
            EXPECT_EQ(m.Zeros(), 1);
        }));
}

struct Condition
{
    CSZMatrix a = Sample<CSZMatrix>(8);
    double value = -1.0;
};

} // namespace

std::vector<Row> MatrixRows()
{
    std::vector<Row> rows;
    AddCheckedRows(rows);
    AddSmallRows(rows);
    rows.push_back(Operation<Condition>(
        "CSZMatrix::condition", Shortage::Reports, [](Condition& c) { c.value = c.a.condition(); },
        [](const Condition& c) { return Text(c.value); },
        {[](const Condition& c) { return !(c.value >= 1.0 && c.value < 999999.0); }, {}}));
    return rows;
}

} // namespace sweep
