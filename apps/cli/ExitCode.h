// SPDX-License-Identifier: MIT
//
// How the programs end.
#pragma once

namespace cli {

enum ExitCode : int {
    kDone = 0,       // success
    kNegative = 1,   // completed with a negative result: no samples, rejected, no fit
    kUnreadable = 2, // wrong use, unreadable input, or output that cannot be written
};

} // namespace cli
