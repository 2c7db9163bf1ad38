// SPDX-License-Identifier: MIT
//
// A library to preload: the file call number TILTPOLE_FAULT_AT of the program, from 1, goes wrong as
// TILTPOLE_FAULT says, and the name of the call is written to the file TILTPOLE_FAULT_TOLD.
//
//   fail    the call fails with TILTPOLE_FAULT_ERROR (an errno)
//   last    this call and all that follow fail with it
//   kill    the process is killed before the call
//   after   the process is killed after the call
//   end     the process is asked to end (SIGTERM) after the call
//   short   write and read transfer half; other calls succeed
//   cut     write transfers half, then the process is killed; before other calls it is killed
//   signal  the call is interrupted once (EINTR) where it may be
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

long Number(const char* name)
{
    const char* text = std::getenv(name);
    return text == nullptr ? 0 : std::strtol(text, nullptr, 10);
}

std::string_view Kind()
{
    const char* text = std::getenv("TILTPOLE_FAULT");
    return text == nullptr ? "" : text;
}

[[noreturn]] void Kill()
{
    syscall(SYS_kill, syscall(SYS_getpid), Kind() == "end" ? SIGTERM : SIGKILL);
    std::abort();
}

void Tell(const char* name)
{
    const char* path = std::getenv("TILTPOLE_FAULT_TOLD");
    if (path == nullptr) return;
    const long file = syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND, 0600);
    syscall(SYS_write, file, name, std::strlen(name));
    syscall(SYS_write, file, "\n", 1);
    syscall(SYS_close, file);
}

enum class Fault { None, Error, Half, HalfThenKill, KillAfter };

// What happens to this call; kills the process where it is to end before it.
Fault Next(const char* name, bool transfers, bool mayBeInterrupted)
{
    static const long at = Number("TILTPOLE_FAULT_AT");
    static long calls = 0;
    const std::string_view kind = Kind();
    ++calls;
    if (at == 0 || calls < at || (calls > at && kind != "last")) return Fault::None;
    Tell(name);
    errno = static_cast<int>(Number("TILTPOLE_FAULT_ERROR"));
    if (kind == "fail" || kind == "last") return Fault::Error;
    if (kind == "kill" || (kind == "cut" && !transfers)) Kill();
    if (kind == "after" || kind == "end") return Fault::KillAfter;
    if (kind == "cut") return Fault::HalfThenKill;
    if (kind == "short") return transfers ? Fault::Half : Fault::None;
    errno = EINTR;
    return mayBeInterrupted ? Fault::Error : Fault::None;
}

template <class Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

template <class Result, class... Parameters, class... Arguments>
Result Call(const char* name, bool mayBeInterrupted, Result (*)(Parameters...),
            Arguments... arguments)
{
    const Fault fault = Next(name, false, mayBeInterrupted);
    if (fault == Fault::Error) return static_cast<Result>(-1);
    const Result result = Real<Result(Parameters...)>(name)(arguments...);
    if (fault == Fault::KillAfter) Kill();
    return result;
}

template <class Bytes, class... Rest>
ssize_t Transfer(const char* name, int file, Bytes bytes, std::size_t size, Rest... rest)
{
    const Fault fault = Next(name, true, true);
    if (fault == Fault::Error) return -1;
    const bool half = fault == Fault::Half || fault == Fault::HalfThenKill;
    const ssize_t done = Real<ssize_t(int, Bytes, std::size_t, Rest...)>(name)(
        file, bytes, half ? (size + 1) / 2 : size, rest...);
    if (fault == Fault::HalfThenKill || fault == Fault::KillAfter) Kill();
    return done;
}

mode_t ModeOf(int flags, va_list rest)
{
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
}

} // namespace

#define TILTPOLE_PASS(mayBeInterrupted, name, ...)                                                 \
    Call(#name, mayBeInterrupted, &::name, __VA_ARGS__)

extern "C" {

int open(const char* path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    const Fault fault = Next("open", false, true);
    if (fault == Fault::Error) return -1;
    const int file = Real<int(const char*, int, ...)>("open")(path, flags, mode);
    if (fault == Fault::KillAfter) Kill();
    return file;
}

int openat(int folder, const char* path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = ModeOf(flags, rest);
    va_end(rest);
    const Fault fault = Next("openat", false, true);
    if (fault == Fault::Error) return -1;
    const int file = Real<int(int, const char*, int, ...)>("openat")(folder, path, flags, mode);
    if (fault == Fault::KillAfter) Kill();
    return file;
}

ssize_t write(int file, const void* bytes, std::size_t size)
{
    return Transfer("write", file, bytes, size);
}
ssize_t read(int file, void* bytes, std::size_t size)
{
    return Transfer("read", file, bytes, size);
}
ssize_t pread(int file, void* bytes, std::size_t size, off_t at)
{
    return Transfer("pread", file, bytes, size, at);
}
// After close that was interrupted the file is closed.
int close(int file)
{
    const Fault fault = Next("close", false, true);
    const int result = Real<int(int)>("close")(file);
    if (fault == Fault::KillAfter) Kill();
    return fault == Fault::Error ? -1 : result;
}
int fsync(int file)
{
    return TILTPOLE_PASS(true, fsync, file);
}
int ftruncate(int file, off_t size) noexcept
{
    return TILTPOLE_PASS(true, ftruncate, file, size);
}
int rename(const char* from, const char* to) noexcept
{
    return TILTPOLE_PASS(false, rename, from, to);
}
int renameat(int a, const char* from, int b, const char* to) noexcept
{
    return TILTPOLE_PASS(false, renameat, a, from, b, to);
}
int unlink(const char* path) noexcept
{
    return TILTPOLE_PASS(false, unlink, path);
}
int unlinkat(int folder, const char* path, int flags) noexcept
{
    return TILTPOLE_PASS(false, unlinkat, folder, path, flags);
}
int fchmod(int file, mode_t mode) noexcept
{
    return TILTPOLE_PASS(false, fchmod, file, mode);
}
int fchown(int file, uid_t user, gid_t group) noexcept
{
    return TILTPOLE_PASS(false, fchown, file, user, group);
}
int fstat(int file, struct stat* status) noexcept
{
    return TILTPOLE_PASS(false, fstat, file, status);
}
int stat(const char* path, struct stat* status) noexcept
{
    return TILTPOLE_PASS(false, stat, path, status);
}
int lstat(const char* path, struct stat* status) noexcept
{
    return TILTPOLE_PASS(false, lstat, path, status);
}
int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept
{
    return TILTPOLE_PASS(false, fstatat, folder, path, status, flags);
}
off_t lseek(int file, off_t offset, int whence) noexcept
{
    return TILTPOLE_PASS(false, lseek, file, offset, whence);
}
int flock(int file, int operation) noexcept
{
    const Fault fault = Next("flock", false, true);
    if (fault == Fault::Error) return -1;
    const int result = Real<int(int, int)>("flock")(file, operation);
    if (fault == Fault::KillAfter) Kill();
    return result;
}
int faccessat(int folder, const char* path, int mode, int flags) noexcept
{
    return TILTPOLE_PASS(false, faccessat, folder, path, mode, flags);
}

} // extern "C"
