// SPDX-License-Identifier: MIT
// Library and host each get their own function of one name.
#include "HostDetail.h"

#include "field/North.h"
#include "matrix/SZMatrix.h"

#include <cmath>
#include <cstdio>

double HostTurn(const detail::Turn& turn, detail::Reading which);

namespace {

int g_failures = 0;

void Expect(double actual, double expected, const char* what)
{
    if (actual == expected) return;
    std::printf("%s: %g instead of %g\n", what, actual, expected);
    ++g_failures;
}

// Products of sizes below and above those for which the matrix keeps its elements inside: every
// row of `a` is 1, 2, ..., n and every element of `b` is 2, so each sum is n (n + 1).
void CheckProduct(int n)
{
    CSZMatrix a(n, n);
    CSZMatrix b(n, n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            a(i, j) = j + 1.0;
            b(i, j) = 2.0;
        }
    const CSZMatrix c = a * b;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j)
            Expect(c(i, j), n * (n + 1.0), "product");
    const CSZMatrix t = a.matTran();
    for (int i = 0; i < n; ++i)
        Expect(t(i, 0), i + 1.0, "transpose");
}

// diag(2, 4) has the inverse diag(1/2, 1/4).
void CheckInverse()
{
    CSZMatrix a(2, 2);
    a(0, 0) = 2.0;
    a(1, 1) = 4.0;
    const CSZMatrix inverse = a.matInv();
    Expect(inverse(0, 0), 0.5, "inverse");
    Expect(inverse(1, 1), 0.25, "inverse");
    Expect(inverse(0, 1), 0.0, "inverse");
}

// The host's own functions are the host's.
void CheckHost()
{
    double value = 0.0;
    detail::Multiply(&value, &value, &value, 1, 1, 1);
    Expect(value, -1.0, "the host's Multiply");
    Expect(HostTurn({90.0}, detail::Reading::B), -90.0, "the host's Turn");
}

// The magnetic model with the library behind it: 6523.2 nT at 80 north, 0 east, as published.
void CheckNorth()
{
    const field::Field field = field::MagneticFieldAt({80.0, 0.0, 0.0}, 2025.0);
    Expect(std::round(10.0 * field.horizontal), 65232.0, "horizontal field");
}

} // namespace

int main()
{
    CheckProduct(3);
    CheckProduct(40);
    CheckInverse();
    CheckHost();
    CheckNorth();
    std::printf("%d failures\n", g_failures);
    return g_failures == 0 ? 0 : 1;
}
