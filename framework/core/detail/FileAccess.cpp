// SPDX-License-Identifier: MIT
#include "framework/core/detail/FileAccess.h"

#include <cerrno>
#include <string_view>
#include <sys/xattr.h>
#include <unistd.h>

namespace framework {

namespace {

constexpr const char* kAccessList = "system.posix_acl_access";

// Calls `get` with a buffer that is large enough, twice where the value grows meanwhile. False with
// the reason in errno.
template <class Get>
bool ReadAttribute(std::string& value, Get get)
{
    for (int i = 0; i < 3; ++i) {
        const ssize_t size = get(nullptr, 0);
        if (size < 0) return false;
        value.resize(static_cast<std::size_t>(size));
        if (size == 0) return true;
        const ssize_t read = get(value.data(), value.size());
        if (read >= 0) {
            value.resize(static_cast<std::size_t>(read));
            return true;
        }
        if (errno != ERANGE) return false;
    }
    return false;
}

bool IsCarriedOver(std::string_view name)
{
    return name.starts_with("user.") || name.starts_with("system.");
}

// Names, each ended by a zero byte; empty where the file system has no attributes.
std::string AttributesOf(const std::string& path)
{
    std::string names;
    const bool hasAny = ReadAttribute(names, [&](char* buffer, std::size_t size) {
        return ::listxattr(path.c_str(), buffer, size);
    });
    return hasAny ? names : std::string();
}

bool CopyAttribute(int file, const std::string& path, const char* name)
{
    std::string value;
    if (!ReadAttribute(value, [&](char* buffer, std::size_t size) {
            return ::getxattr(path.c_str(), name, buffer, size);
        }))
        return errno == ENODATA; // gone meanwhile
    return ::fsetxattr(file, name, value.data(), value.size(), 0) == 0;
}

bool CopyAttributes(int file, const std::string& path)
{
    const std::string names = AttributesOf(path);
    bool hasAccessList = false;
    for (std::size_t at = 0; at < names.size();) {
        const char* const name = names.c_str() + at;
        const std::string_view text(name);
        at += text.size() + 1;
        hasAccessList = hasAccessList || text == kAccessList;
        if (IsCarriedOver(text) && !CopyAttribute(file, path, name)) return false;
    }
    // One that the folder gave the new file would let others in.
    const bool wasGivenOne = !hasAccessList && ::fgetxattr(file, kAccessList, nullptr, 0) >= 0;
    return !wasGivenOne || ::fremovexattr(file, kAccessList) == 0;
}

} // namespace

// The owner first: changing it clears permission bits. A list of access rights changes them, too.
bool TakeOver(int file, const std::string& path, const struct stat& old)
{
    constexpr mode_t kPermissions = 07777;
    struct stat mine
    {};
    if (::fstat(file, &mine) != 0) return false;
    const bool sameOwner = mine.st_uid == old.st_uid && mine.st_gid == old.st_gid;
    if (!sameOwner && ::fchown(file, old.st_uid, old.st_gid) != 0) return false;
    if (!CopyAttributes(file, path) || ::fstat(file, &mine) != 0) return false;
    if (((mine.st_mode ^ old.st_mode) & kPermissions) == 0) return true;
    return ::fchmod(file, old.st_mode & kPermissions) == 0;
}

} // namespace framework
