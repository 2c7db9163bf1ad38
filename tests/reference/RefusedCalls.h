// SPDX-License-Identifier: MIT
//
// File systems that refuse what an ordinary one grants: FAT and many network file systems have
// fixed permissions, a file that is a mount point cannot be renamed over, a disk fails.
//
// A test lists tests/reference/RefusedCalls.cpp among its sources. That file replaces the calls
// below for the whole program, shared libraries included; outside a Refused scope they do what they
// always do.
#pragma once

#include <climits>

namespace reference {

enum class Call {
    ChangeMode,      // fchmod
    ChangeOwner,     // fchown
    Rename,          // renameat
    Flush,           // fsync
    SetAttribute,    // fsetxattr
    GetAttribute,    // getxattr
    ListAttributes,  // listxattr
    RemoveAttribute, // fremovexattr
    Status,          // fstat
    Lock,            // flock
    Reserve,         // posix_fallocate
    Truncate,        // ftruncate
    Read,            // read
    ReadAt,          // pread
    Write,           // write
    Close,           // close, after which the descriptor is closed nevertheless
    Entropy          // getentropy
};

/// While it lives, `call` fails with `error` as errno, and is counted; with `first` and `last` only
/// the calls of these numbers, from 1.
class Refused
{
public:
    Refused(Call call, int error, int first = 1, int last = INT_MAX);
    ~Refused();
    Refused(const Refused&) = delete;
    Refused& operator=(const Refused&) = delete;

    int Count() const;

private:
    Call m_call;
};

} // namespace reference
