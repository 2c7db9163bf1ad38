// SPDX-License-Identifier: MIT
//
// File systems that refuse what an ordinary one grants: FAT and many network file systems have
// fixed permissions, a file that is a mount point cannot be renamed over.
//
// A test lists tests/reference/RefusedCalls.cpp among its sources. That file replaces the calls
// below for the whole program, shared libraries included; outside a Refused scope they do what they
// always do.
#pragma once

namespace reference {

enum class Call { ChangeMode, ChangeOwner, Rename, Flush, SetAttribute };
// fchmod, fchown, renameat, fsync, fsetxattr

/// While it lives, `call` fails with `error` as errno, and is counted.
class Refused
{
public:
    Refused(Call call, int error);
    ~Refused();
    Refused(const Refused&) = delete;
    Refused& operator=(const Refused&) = delete;

    int Count() const;

private:
    Call m_call;
};

} // namespace reference
