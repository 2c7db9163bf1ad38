// SPDX-License-Identifier: MIT
/// @file
/// The version of the headers that a host is compiled with. Versions 0.x with different minor
/// numbers are incompatible: their shared libraries have names of their own and go side by side.
///
///     #if !TILTPOLE_VERSION_AT_LEAST(0, 1, 0)
///     #error "tiltpole 0.1.0 or later is needed"
///     #endif
#pragma once

/// Changes with every incompatible change from 1.0.0 on.
#define TILTPOLE_VERSION_MAJOR 0
/// Changes with every incompatible change while the major number is 0, afterwards with additions.
#define TILTPOLE_VERSION_MINOR 1
/// Changes with corrections that leave every interface as it is.
#define TILTPOLE_VERSION_PATCH 0
/// The same as text: "MAJOR.MINOR.PATCH".
#define TILTPOLE_VERSION_STRING "0.1.0"

/// 1 where the headers are of this version or a later one, else 0; usable in conditional compilation.
#define TILTPOLE_VERSION_AT_LEAST(major, minor, patch)                                             \
    (TILTPOLE_VERSION_MAJOR > (major)                                                              \
     || (TILTPOLE_VERSION_MAJOR == (major)                                                         \
         && (TILTPOLE_VERSION_MINOR > (minor)                                                      \
             || (TILTPOLE_VERSION_MINOR == (minor) && TILTPOLE_VERSION_PATCH >= (patch)))))
