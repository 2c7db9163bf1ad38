// SPDX-License-Identifier: MIT
//
// Property tests draw the same cases in every run, unless RC_PARAMS says otherwise.
#include <cstdlib>

namespace {

[[maybe_unused]] const int isSet = ::setenv("RC_PARAMS", "seed=20261121", 0);

} // namespace
