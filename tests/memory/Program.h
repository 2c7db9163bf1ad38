// SPDX-License-Identifier: MIT
//
// What one test program of the allocation sweep covers. Sweep_test.cpp is compiled into each of them
// and compares the rows with what the libraries export and what their headers declare.
#pragma once

#include "tests/memory/Sweep.h"

#include <initializer_list>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace sweep {

struct Library
{
    std::string name;      // of its list in tests/abi
    int publicClasses = 0; // of its headers, at least
};

inline void PrintTo(const Library& library, std::ostream* out)
{
    *out << library.name;
}

/// An operation that works by a toolkit which does not survive a failure of its own: in its rows only
/// our own allocations fail.
struct Exception
{
    std::string covers; // first of its rows' names
    std::string reason;
};

inline void PrintTo(const Exception& exception, std::ostream* out)
{
    *out << exception.covers;
}

struct Program
{
    std::vector<Library> libraries;
    std::vector<Row> rows;
    std::vector<Exception> exceptions;
    // Exported for the libraries' own headers and sources: nothing that a host calls.
    std::set<std::string> internal;
};

/// Defined by each program.
Program TheProgram();

inline std::vector<Row> AllOf(std::initializer_list<std::vector<Row>> parts)
{
    std::vector<Row> all;
    for (const std::vector<Row>& rows : parts)
        all.insert(all.end(), rows.begin(), rows.end());
    return all;
}

} // namespace sweep
