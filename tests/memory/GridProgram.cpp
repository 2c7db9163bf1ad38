// SPDX-License-Identifier: MIT
#include "tests/memory/Program.h"
#include "tests/memory/Rows.h"

namespace sweep {

Program TheProgram()
{
    Program program;
    program.libraries = {
        {"grid", 1}
    };
    program.rows = GridRows();
    return program;
}

} // namespace sweep
