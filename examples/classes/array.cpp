// SPDX-License-Identifier: MIT
//
// CArray: the growable array of the window framework.
#include "framework/core/Array.h"

#include <cstdio>

int main()
{
    CArray<double> lengths;
    lengths.Add(1.80);
    lengths.Add(2.00);
    lengths.InsertAt(1, 1.90);
    lengths.RemoveAt(0);
    for (INT_PTR i = 0; i < lengths.GetSize(); ++i)
        std::printf("%d: %.2f m\n", static_cast<int>(i), lengths[i]);
}
