// SPDX-License-Identifier: MIT
#include "tests/reference/RefusedCalls.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

struct Refusal
{
    int error = 0; // 0: not refused
    int count = 0;
};

std::array<Refusal, 5> refusals;

Refusal& Of(reference::Call call)
{
    return refusals[static_cast<std::size_t>(call)];
}

// Refuses the call, or hands it to the system's own function of that name.
template <class... Arguments>
int RefuseOr(reference::Call call, const char* name, Arguments... arguments)
{
    Refusal& refusal = Of(call);
    if (refusal.error != 0) {
        ++refusal.count;
        errno = refusal.error;
        return -1;
    }
    const auto next = reinterpret_cast<int (*)(Arguments...)>(::dlsym(RTLD_NEXT, name));
    if (next == nullptr) std::abort();
    return next(arguments...);
}

} // namespace

extern "C" int fchmod(int file, mode_t mode) noexcept
{
    return RefuseOr(reference::Call::ChangeMode, "fchmod", file, mode);
}

extern "C" int fchown(int file, uid_t owner, gid_t group) noexcept
{
    return RefuseOr(reference::Call::ChangeOwner, "fchown", file, owner, group);
}

extern "C" int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept
{
    return RefuseOr(reference::Call::Rename, "renameat", fromFolder, from, toFolder, to);
}

extern "C" int fsync(int file)
{
    return RefuseOr(reference::Call::Flush, "fsync", file);
}

extern "C" int fsetxattr(int file, const char* name, const void* value, std::size_t size,
                         int flags) noexcept
{
    return RefuseOr(reference::Call::SetAttribute, "fsetxattr", file, name, value, size, flags);
}

namespace reference {

Refused::Refused(Call call, int error) : m_call(call)
{
    Of(call) = {error, 0};
}

Refused::~Refused()
{
    Of(m_call) = {};
}

int Refused::Count() const
{
    return Of(m_call).count;
}

} // namespace reference
