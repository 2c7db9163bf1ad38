// SPDX-License-Identifier: MIT
/// @file
/// All headers of the window framework that need no screen.
#pragma once

#include "framework/core/Array.h"          // IWYU pragma: export
#include "framework/core/AtomicFile.h"     // IWYU pragma: export
#include "framework/core/Export.h"         // IWYU pragma: export
#include "framework/core/File.h"           // IWYU pragma: export
#include "framework/core/Format.h"         // IWYU pragma: export
#include "framework/core/MessageBox.h"     // IWYU pragma: export
#include "framework/core/Object.h"         // IWYU pragma: export
#include "framework/core/ParseNumber.h"    // IWYU pragma: export
#include "framework/core/Paths.h"          // IWYU pragma: export
#include "framework/core/Rect.h"           // IWYU pragma: export
#include "framework/core/String.h"         // IWYU pragma: export
#include "framework/core/TextConversion.h" // IWYU pragma: export
#include "framework/core/Types.h"          // IWYU pragma: export
