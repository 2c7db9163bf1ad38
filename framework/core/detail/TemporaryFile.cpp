// SPDX-License-Identifier: MIT
#include "framework/core/detail/TemporaryFile.h"

#include "framework/core/detail/SignalCleanup.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/file.h>
#include <sys/utsname.h>

namespace framework {

namespace {

constexpr int kMostNames = 100;
constexpr std::string_view kStart = ".tiltpole-";
constexpr std::string_view kEnd = ".new";
constexpr std::size_t kRandomDigits = 16;
constexpr std::time_t kDay = 86400; // s

std::string HostName()
{
    struct utsname system
    {};
    std::string name = ::uname(&system) == 0 ? system.nodename : "";
    std::replace(name.begin(), name.end(), '/', '_');
    return name;
}

std::string NameAlike(std::string_view random)
{
    return std::string(kStart).append(HostName()).append("-").append(random).append(kEnd);
}

std::string RandomName()
{
    std::uint64_t number = 0;
    if (::getentropy(&number, sizeof number) != 0) {
        struct timespec now
        {};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        number = static_cast<std::uint64_t>(now.tv_nsec) << 32 ^ static_cast<unsigned>(::getpid());
    }
    std::array<char, kRandomDigits> digits;
    digits.fill('0');
    std::array<char, kRandomDigits> shortest;
    const char* const end =
        std::to_chars(shortest.data(), shortest.data() + shortest.size(), number, 16).ptr;
    std::copy_backward(static_cast<const char*>(shortest.data()), end, digits.end());
    return NameAlike({digits.data(), digits.size()});
}

bool IsOurKindOfName(std::string_view name)
{
    constexpr std::size_t kDash = 1;
    if (!name.starts_with(kStart) || !name.ends_with(kEnd)) return false;
    if (name.size() < kStart.size() + kDash + kRandomDigits + kEnd.size()) return false;
    const std::string_view random =
        name.substr(name.size() - kEnd.size() - kRandomDigits, kRandomDigits);
    return random.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// Of this machine: the name differs from one that is made now in its random part at most.
bool IsOurName(std::string_view name)
{
    const std::size_t random = name.size() - kEnd.size() - kRandomDigits;
    return name == NameAlike(name.substr(random, kRandomDigits));
}

bool IsSameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool IsOld(const struct stat& file)
{
    struct timespec now
    {};
    return ::clock_gettime(CLOCK_REALTIME, &now) == 0 && now.tv_sec - file.st_mtim.tv_sec > kDay;
}

// Removes the file `name` if the process that made it is gone. Whoever holds the lock is the only
// one that may remove or rename the file; the name is looked at again because the file may have
// been renamed before the lock was had.
void RemoveIfLeftOver(int folder, const char* name)
{
    const uid_t user = ::geteuid();
    struct stat locked
    {};
    struct stat named
    {};
    const Descriptor file(
        ::openat(folder, name, O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    if (file.IsOpen() && ::flock(file.Get(), LOCK_EX | LOCK_NB) == 0
        && ::fstat(file.Get(), &locked) == 0 && S_ISREG(locked.st_mode)
        && (locked.st_uid == user || user == 0) && (IsOurName(name) || IsOld(locked))
        && ::fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0 && IsSameFile(locked, named))
        ::unlinkat(folder, name, 0);
}

// A folder that may not be listed keeps what was left over in it.
void RemoveLeftOvers(int folder)
{
    const int listed = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (listed < 0) return;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(listed), &::closedir);
    if (!entries) {
        ::close(listed);
        return;
    }
    while (const dirent* const entry = ::readdir(entries.get())) // NOLINT(concurrency-mt-unsafe)
        if (IsOurKindOfName(entry->d_name)) RemoveIfLeftOver(folder, entry->d_name);
}

} // namespace

// A file that another process took for a left-over one between its making and its locking is not
// used. Where the file system has no locks nobody can take it for one.
bool TemporaryFile::LockOwn()
{
    const bool isLocked = ::flock(m_file.Get(), LOCK_EX | LOCK_NB) == 0;
    if (!isLocked && errno == EWOULDBLOCK) return false;
    struct stat made
    {};
    return ::fstat(m_file.Get(), &made) == 0 && made.st_nlink > 0;
}

bool TemporaryFile::Make(const std::string& folder, mode_t mode)
{
    m_folder = Descriptor(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!m_folder.IsOpen()) return false;
    RemoveLeftOvers(m_folder.Get());
    for (int i = 0; i < kMostNames; ++i) {
        // Entered before it is made: a signal in between would leave it.
        m_name = RandomName();
        m_slot = EnterForCleanup(m_folder.Get(), m_name);
        m_file = Descriptor(::openat(m_folder.Get(), m_name.c_str(),
                                     O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode));
        if (m_file.IsOpen() && LockOwn()) return true;
        const bool isMade = m_file.IsOpen();
        const int reason = errno;
        if (isMade) ::unlinkat(m_folder.Get(), m_name.c_str(), 0);
        Forget();
        m_file.Close();
        errno = reason;
        if (!isMade && reason != EEXIST) return false;
    }
    errno = EEXIST;
    return false;
}

void TemporaryFile::Forget()
{
    ReleaseFromCleanup(std::exchange(m_slot, -1));
    m_name.clear();
}

bool TemporaryFile::RenameTo(const std::string& name)
{
    if (::renameat(m_folder.Get(), m_name.c_str(), m_folder.Get(), name.c_str()) != 0) return false;
    Forget();
    return true;
}

void TemporaryFile::FlushFolder() const
{
    const Descriptor folder(::openat(m_folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.IsOpen()) ::fsync(folder.Get());
}

void TemporaryFile::Remove()
{
    // The name goes before the lock.
    if (!m_name.empty()) ::unlinkat(m_folder.Get(), m_name.c_str(), 0);
    Forget();
    m_file.Close();
    m_folder.Close();
}

} // namespace framework
