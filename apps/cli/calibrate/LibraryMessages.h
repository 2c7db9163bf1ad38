// SPDX-License-Identifier: MIT
//
// The library's messages to an operator, on standard error.
#pragma once

#include "framework/core/MessageBox.h"

namespace cli {

/// Prints the library's message boxes on standard error, Chinese ones with a translation, until the
/// end of its scope.
class MessagesOnStandardError
{
public:
    MessagesOnStandardError();
    ~MessagesOnStandardError();
    MessagesOnStandardError(const MessagesOnStandardError&) = delete;
    MessagesOnStandardError& operator=(const MessagesOnStandardError&) = delete;

private:
    framework::MessageBoxHandler m_former;
};

} // namespace cli
