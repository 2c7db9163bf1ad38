// SPDX-License-Identifier: MIT
#include "tests/memory/Program.h"
#include "tests/memory/Rows.h"

namespace sweep {

Program TheProgram()
{
    Program program;
    program.libraries = {
        {"job", 1}
    };
    program.rows = JobRows();
    return program;
}

} // namespace sweep
