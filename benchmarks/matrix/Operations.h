// SPDX-License-Identifier: MIT
//
// The operations of one matrix library, timed: names read operation/contender/n.
#pragma once

#include "benchmarks/matrix/Matrices.h"

#include <benchmark/benchmark.h>

#include <string>

namespace contenders {

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

    static void RunSum(benchmark::State& state, const literal::Matrix& m)
    {
        Matrix a = C::Make(m);
        Matrix b = C::Transpose(a);
        for (auto _ : state) {
            Touch(a);
            Touch(b);
            auto result = C::Sum(a, b);
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
        benchmark::RegisterBenchmark(name("Sum").c_str(),
                                     [any](benchmark::State& s) { RunSum(s, any); });
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

} // namespace contenders
