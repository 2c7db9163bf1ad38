// SPDX-License-Identifier: MIT
//
// Prints what the libraries above the core compute of simulated and recorded input. GeographicLib is
// not there for other processors: stand-in/ has its sum.
#include "tests/portable/LibraryResults.h"

int main()
{
    portable::PrintQuality();
    portable::PrintField();
    portable::PrintLive();
}
