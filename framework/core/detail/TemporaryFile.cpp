// SPDX-License-Identifier: MIT
#include "framework/core/detail/TemporaryFile.h"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/utsname.h>

namespace framework {

namespace {

constexpr int kMostNames = 10000;

std::string HostName()
{
    struct utsname system
    {};
    std::string name = ::uname(&system) == 0 ? system.nodename : "";
    std::replace(name.begin(), name.end(), '/', '_');
    return name;
}

bool IsSameFile(const struct stat& a, const struct stat& b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Removes the file `name` if the process that made it is gone. Whoever holds the lock is the only
// one that may remove or rename the file; the name is looked at again because the file may have
// been renamed, and another one made, before the lock was had.
bool RemoveLeftOver(const char* name)
{
    const Descriptor file(::open(name, O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat locked
    {};
    struct stat named
    {};
    return file.IsOpen() && ::flock(file.Get(), LOCK_EX | LOCK_NB) == 0
           && ::fstat(file.Get(), &locked) == 0 && S_ISREG(locked.st_mode)
           && locked.st_uid == ::geteuid() && ::lstat(name, &named) == 0
           && IsSameFile(locked, named) && ::unlink(name) == 0;
}

// On failure errno is that of making the file: EEXIST where another process is writing it.
Descriptor MakeNew(const char* name, mode_t mode)
{
    constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
    Descriptor file(::open(name, kFlags, mode));
    if (file.IsOpen() || errno != EEXIST) return file;
    if (RemoveLeftOver(name)) return Descriptor(::open(name, kFlags, mode));
    errno = EEXIST;
    return file;
}

} // namespace

// A file that another process took for a left-over one between its making and its locking is not
// used. Where the file system has no locks nobody can take it for one.
bool TemporaryFile::LockOwn()
{
    const bool isLocked = ::flock(m_file.Get(), LOCK_EX | LOCK_NB) == 0;
    if (!isLocked && errno == EWOULDBLOCK) return false;
    return ::fstat(m_file.Get(), &m_status) == 0 && m_status.st_nlink > 0;
}

bool TemporaryFile::Make(const std::string& folder, mode_t mode)
{
    static const std::string host = HostName();
    for (int i = 0; i < kMostNames; ++i) {
        std::string name = folder;
        name.append("/.tiltpole-")
            .append(host)
            .append("-")
            .append(std::to_string(i))
            .append(".new");
        m_file = MakeNew(name.c_str(), mode);
        if (m_file.IsOpen() && LockOwn()) {
            m_name = std::move(name);
            return true;
        }
        if (!m_file.IsOpen() && errno != EEXIST) return false;
        m_file.Close();
    }
    return false;
}

bool TemporaryFile::RenameTo(const std::string& target)
{
    if (std::rename(m_name.c_str(), target.c_str()) != 0) return false;
    m_name.clear();
    return true;
}

void TemporaryFile::Remove()
{
    // The name goes before the lock.
    if (!m_name.empty()) ::unlink(m_name.c_str());
    m_name.clear();
    m_file.Close();
}

} // namespace framework
