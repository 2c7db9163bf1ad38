// SPDX-License-Identifier: MIT
//
// TILTPOLE_API marks what a host may use of a shared build; everything else stays hidden.
#pragma once

#if defined(TILTPOLE_STATIC)
#define TILTPOLE_API
#else
#define TILTPOLE_API __attribute__((visibility("default")))
#endif
