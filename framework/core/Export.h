// SPDX-License-Identifier: MIT
//
// TILTPOLE_API marks what a shared build exports; everything else is hidden.
#pragma once

#if defined(TILTPOLE_STATIC)
#define TILTPOLE_API
#else
#define TILTPOLE_API __attribute__((visibility("default")))
#endif
