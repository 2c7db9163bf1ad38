// SPDX-License-Identifier: MIT
/// @file
/// TILTPOLE_API marks what a shared build exports; everything else is hidden.
#pragma once

#if defined(TILTPOLE_STATIC)
#define TILTPOLE_API
#else
#define TILTPOLE_API __attribute__((visibility("default")))
#endif

#if __cplusplus < 202002L
#error "tiltpole needs C++20 or later: -std=c++20"
#endif
