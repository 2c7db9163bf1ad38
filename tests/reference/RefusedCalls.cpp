// SPDX-License-Identifier: MIT
#include "tests/reference/RefusedCalls.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using reference::Call;

namespace {

struct Refusal
{
    int error = 0; // 0: not refused
    int first = 1;
    int last = 0;
    int calls = 0;
    int count = 0;
};

std::array<Refusal, static_cast<std::size_t>(Call::Entropy) + 1> refusals;

Refusal& Of(Call call)
{
    return refusals[static_cast<std::size_t>(call)];
}

bool IsRefused(Call call)
{
    Refusal& refusal = Of(call);
    if (refusal.error == 0) return false;
    ++refusal.calls;
    if (refusal.calls < refusal.first || refusal.calls > refusal.last) return false;
    ++refusal.count;
    errno = refusal.error;
    return true;
}

// The system's own function of that name.
template <class Result, class... Parameters>
auto* Next(const char* name, Result (*)(Parameters...))
{
    const auto next = reinterpret_cast<Result (*)(Parameters...)>(::dlsym(RTLD_NEXT, name));
    if (next == nullptr) std::abort();
    return next;
}

} // namespace

// Refuses the call, or hands it to the system.
#define TILTPOLE_REFUSE_OR(call, name, ...)                                                        \
    return IsRefused(Call::call) ? -1 : Next(#name, &::name)(__VA_ARGS__)

extern "C" {

int fchmod(int file, mode_t mode) noexcept
{
    TILTPOLE_REFUSE_OR(ChangeMode, fchmod, file, mode);
}
int fchown(int file, uid_t owner, gid_t group) noexcept
{
    TILTPOLE_REFUSE_OR(ChangeOwner, fchown, file, owner, group);
}
int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept
{
    TILTPOLE_REFUSE_OR(Rename, renameat, fromFolder, from, toFolder, to);
}
int fsync(int file)
{
    TILTPOLE_REFUSE_OR(Flush, fsync, file);
}
int fsetxattr(int file, const char* name, const void* value, std::size_t size, int flags) noexcept
{
    TILTPOLE_REFUSE_OR(SetAttribute, fsetxattr, file, name, value, size, flags);
}
ssize_t getxattr(const char* path, const char* name, void* value, std::size_t size) noexcept
{
    TILTPOLE_REFUSE_OR(GetAttribute, getxattr, path, name, value, size);
}
ssize_t listxattr(const char* path, char* names, std::size_t size) noexcept
{
    TILTPOLE_REFUSE_OR(ListAttributes, listxattr, path, names, size);
}
int fremovexattr(int file, const char* name) noexcept
{
    TILTPOLE_REFUSE_OR(RemoveAttribute, fremovexattr, file, name);
}
int fstat(int file, struct stat* status) noexcept
{
    TILTPOLE_REFUSE_OR(Status, fstat, file, status);
}
int flock(int file, int operation) noexcept
{
    TILTPOLE_REFUSE_OR(Lock, flock, file, operation);
}
int posix_fallocate(int file, off_t offset, off_t length)
{
    if (IsRefused(Call::Reserve)) return errno;
    return Next("posix_fallocate", &::posix_fallocate)(file, offset, length);
}
int ftruncate(int file, off_t length) noexcept
{
    TILTPOLE_REFUSE_OR(Truncate, ftruncate, file, length);
}
ssize_t read(int file, void* bytes, std::size_t size)
{
    TILTPOLE_REFUSE_OR(Read, read, file, bytes, size);
}
ssize_t pread(int file, void* bytes, std::size_t size, off_t offset)
{
    TILTPOLE_REFUSE_OR(ReadAt, pread, file, bytes, size, offset);
}
ssize_t write(int file, const void* bytes, std::size_t size)
{
    TILTPOLE_REFUSE_OR(Write, write, file, bytes, size);
}
int close(int file)
{
    const int closed = Next("close", &::close)(file);
    return IsRefused(Call::Close) ? -1 : closed;
}
int getentropy(void* bytes, std::size_t size)
{
    TILTPOLE_REFUSE_OR(Entropy, getentropy, bytes, size);
}

} // extern "C"

namespace reference {

Refused::Refused(Call call, int error, int first, int last) : m_call(call)
{
    Of(call) = {error, first, last, 0, 0};
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
