// The matrix operations beside Eigen, Armadillo and a by-value version, in one run:
//
//   matrix_benchmarks --benchmark_filter='Inverse.*/6'
//
// Names read operation/contender/n. JacobiFloor is the arithmetic of the eigen-solver alone: as
// many line rotations as the solver makes, on bare arrays.
#include "benchmarks/matrix/Contenders.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>

using namespace contenders;

namespace {

literal::Matrix Random(int rows, int cols)
{
    std::mt19937 random(static_cast<unsigned>(rows * 1000 + cols));
    std::uniform_real_distribution<> uniform(-1.0, 1.0);
    literal::Matrix m(rows, cols);
    for (double& x : m.elements)
        x = uniform(random);
    return m;
}

literal::Matrix PositiveDefinite(int n)
{
    const literal::Matrix a = Random(n, n);
    literal::Matrix m = literal::Product(a, literal::Transpose(a));
    for (int i = 0; i < n; ++i)
        m.Set(i, i, m.Get(i, i) + 0.1);
    return m;
}

// Lets the compiler assume that all memory reached from `object` is read and written here.
template <class T>
void Touch(T& object)
{
    const void* address = &object;
    benchmark::DoNotOptimize(address);
    benchmark::ClobberMemory();
}

template <class C>
struct Operations
{
    using Matrix = typename C::Matrix;
    using Unary = Matrix (*)(const Matrix&);

    static void Run(benchmark::State& state, const literal::Matrix& m, Unary operation)
    {
        Matrix a = C::Make(m);
        for (auto _ : state) {
            Touch(a);
            auto result = operation(a);
            Touch(result);
        }
    }

    static void RunProduct(benchmark::State& state, const literal::Matrix& m)
    {
        Matrix a = C::Make(m);
        Matrix b = C::Transpose(a);
        for (auto _ : state) {
            Touch(a);
            Touch(b);
            auto result = C::Product(a, b);
            Touch(result);
        }
    }

    static void RunNormal(benchmark::State& state, const literal::Matrix& m)
    {
        Matrix a = C::Make(m);
        for (auto _ : state) {
            Touch(a);
            auto result = C::Normal(a);
            Touch(result);
        }
    }

    static void Register(const std::string& contender, int n)
    {
        const auto name = [&](const char* operation) {
            return std::string(operation) + '/' + contender + '/' + std::to_string(n);
        };
        const auto add = [&](const char* operation, const literal::Matrix& m, Unary run) {
            benchmark::RegisterBenchmark(name(operation).c_str(),
                                         [m, run](benchmark::State& s) { Run(s, m, run); });
        };
        const literal::Matrix any = Random(n, n);
        const literal::Matrix definite = PositiveDefinite(n);
        benchmark::RegisterBenchmark(name("Product").c_str(),
                                     [any](benchmark::State& s) { RunProduct(s, any); });
        add("Transpose", any, C::Transpose);
        add("Inverse", any, C::Inverse);
        add("Cholesky", definite, C::Cholesky);
        add("Eigen", definite, C::Eigenvectors);
    }

    static void RegisterNormal(const std::string& contender, int n)
    {
        const literal::Matrix design = Random(n, 5);
        const std::string name = "Normal/" + contender + '/' + std::to_string(n) + "x5";
        benchmark::RegisterBenchmark(name.c_str(),
                                     [design](benchmark::State& s) { RunNormal(s, design); });
    }
};

// Counts the rotations that are not the identity in one run of the solver.
int CountRotations(const literal::Matrix& a)
{
    int count = 0;
    literal::Matrix d = a;
    const int n = a.rows;
    const auto off = [&] {
        for (int p = 0; p < n; ++p)
            for (int q = p + 1; q < n; ++q)
                if (std::fabs(d.Get(p, q)) > 1e-9) return true;
        return false;
    };
    do {
        for (int p = 0; p < n; ++p)
            for (int q = p + 1; q < n; ++q) {
                const literal::Matrix j = literal::Rotation(d, p, q, 1e-9);
                if (j.Get(p, q) != 0.0) ++count;
                d = literal::Product(literal::Product(literal::Transpose(j), d), j);
            }
    } while (off());
    return count;
}

void RotateLine(double* x, double* y, int n, int step, double c, double s)
{
    for (int i = 0; i < n; ++i, x += step, y += step) {
        const double before = *x;
        *x = before * c + *y * s;
        *y = *y * c - before * s;
    }
}

void JacobiFloor(benchmark::State& state, int n)
{
    const int rotations = CountRotations(PositiveDefinite(n));
    std::vector<double> d = PositiveDefinite(n).elements;
    std::vector<double> v = d;
    for (auto _ : state) {
        int p = 0;
        int q = 1;
        for (int i = 0; i < rotations; ++i) {
            RotateLine(&d[static_cast<std::size_t>(p * n)], &d[static_cast<std::size_t>(q * n)], n,
                       1, 0.8, 0.6);
            RotateLine(&d[static_cast<std::size_t>(p)], &d[static_cast<std::size_t>(q)], n, n, 0.8,
                       0.6);
            RotateLine(&v[static_cast<std::size_t>(p)], &v[static_cast<std::size_t>(q)], n, n, 0.8,
                       0.6);
            if (++q == n) {
                p = p + 2 < n ? p + 1 : 0;
                q = p + 1;
            }
        }
        benchmark::DoNotOptimize(d.data());
        benchmark::ClobberMemory();
    }
    state.SetLabel(std::to_string(rotations) + " rotations");
}

template <int N>
void RegisterSize()
{
    Operations<Ours>::Register("ours", N);
    Operations<EigenDynamic>::Register("eigen", N);
    Operations<Armadillo>::Register("armadillo", N);
    Operations<EigenFixed<N>>::Register("eigen-fixed", N);
    Operations<ByValue>::Register("by-value", N);
    const std::string floor = "JacobiFloor/" + std::to_string(N);
    benchmark::RegisterBenchmark(floor.c_str(), [](benchmark::State& s) { JacobiFloor(s, N); });
}

const bool kRegistered = [] {
    RegisterSize<3>();
    RegisterSize<4>();
    RegisterSize<6>();
    RegisterSize<12>();
    RegisterSize<40>();
    for (const int n : {20, 100, 1000}) {
        Operations<Ours>::RegisterNormal("ours", n);
        Operations<EigenDynamic>::RegisterNormal("eigen", n);
        Operations<Armadillo>::RegisterNormal("armadillo", n);
        Operations<ByValue>::RegisterNormal("by-value", n);
    }
    return true;
}();

} // namespace
