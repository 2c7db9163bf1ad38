// SPDX-License-Identifier: MIT
//
// Counts what the program asks of the free store.
#pragma once

/// Calls of operator new since the program began.
long Allocations();
