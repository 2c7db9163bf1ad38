// SPDX-License-Identifier: MIT
#include "framework/core/Paths.h"

#include "framework/core/TextConversion.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <pwd.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace framework {

namespace {

CString& ModulePath()
{
    static CString path;
    return path;
}

CString RunningExecutable()
{
    std::array<char, PATH_MAX> name;
    const ssize_t length = ::readlink("/proc/self/exe", name.data(), name.size());
    return length <= 0 ? CString() : CString(name.data(), static_cast<int>(length));
}

// The value of an environment variable where it is an absolute path, otherwise empty.
std::string AbsolutePathIn(const char* variable)
{
    const char* value = std::getenv(variable); // NOLINT(concurrency-mt-unsafe)
    return value != nullptr && value[0] == '/' ? value : "";
}

std::string HomeFolder()
{
    std::string home = AbsolutePathIn("HOME");
    if (!home.empty()) return home;
    std::array<char, 4096> buffer;
    passwd entry{};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "/";
}

std::string WithoutSeparatorBehind(std::string path)
{
    while (path.ends_with('/'))
        path.pop_back();
    return path;
}

// The folder of this program family below a base: the variable's where it is set, or else the one
// in the home folder.
CString FolderBelow(const char* variable, const char* inHome)
{
    std::string base = AbsolutePathIn(variable);
    if (base.empty()) base = WithoutSeparatorBehind(HomeFolder()) + inHome;
    return CString((WithoutSeparatorBehind(std::move(base)) + "/tiltpole").c_str());
}

} // namespace

void SetModulePath(const CString& fullName)
{
    ModulePath() = fullName;
}

CString ApplicationDataFolder()
{
    return FolderBelow("XDG_DATA_HOME", "/.local/share");
}

CString ApplicationStateFolder()
{
    return FolderBelow("XDG_STATE_HOME", "/.local/state");
}

bool MakeFolder(const CString& path)
{
    try {
        std::error_code error;
        const std::filesystem::path folder(ToUtf8(path.GetString()));
        std::filesystem::create_directories(folder, error);
        return std::filesystem::is_directory(folder, error);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

std::string FollowLinks(std::string path)
{
    constexpr int kMostLinks = 40; // as the system's own limit for one path
    for (int i = 0; i < kMostLinks; ++i) {
        std::array<char, PATH_MAX> target;
        const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
        if (length < 0) break;
        const std::string_view next(target.data(), static_cast<std::size_t>(length));
        const std::size_t name = path.rfind('/') + 1; // 0 where there is no folder
        path.replace(next.starts_with('/') ? 0 : name, std::string::npos, next);
    }
    return path;
}

} // namespace framework

DWORD GetFileAttributesW(const wchar_t* path)
{
    struct stat status
    {};
    try {
        if (path == nullptr || ::stat(framework::ToUtf8(path).c_str(), &status) != 0)
            return INVALID_FILE_ATTRIBUTES;
    } catch (const std::bad_alloc&) {
        return INVALID_FILE_ATTRIBUTES;
    }
    DWORD attributes = 0;
    if (S_ISDIR(status.st_mode)) attributes |= FILE_ATTRIBUTE_DIRECTORY;
    if ((status.st_mode & S_IWUSR) == 0) attributes |= FILE_ATTRIBUTE_READONLY;
    return attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes;
}

DWORD GetModuleFileNameW(HMODULE, wchar_t* buffer, DWORD size)
try {
    const CString& chosen = framework::ModulePath();
    const CString name = chosen.IsEmpty() ? framework::RunningExecutable() : chosen;
    const auto length = static_cast<DWORD>(name.GetLength());
    if (buffer == nullptr || size == 0 || length == 0) return 0;

    const DWORD copied = std::min(length, size - 1);
    std::copy_n(name.GetString(), copied, buffer);
    buffer[copied] = L'\0';
    return copied < length ? size : length;
} catch (const std::bad_alloc&) {
    return 0;
}
