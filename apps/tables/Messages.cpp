// SPDX-License-Identifier: MIT
#include "apps/tables/Messages.h"

#include <cstdio>

namespace tables {

void TellText(std::string_view text)
{
    (void)std::fwrite(text.data(), 1, text.size(), stderr);
    (void)std::fflush(stderr);
}

} // namespace tables
