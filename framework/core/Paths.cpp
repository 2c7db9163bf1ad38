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
#include <sys/stat.h>
#include <unistd.h>

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

} // namespace

void SetModulePath(const CString& fullName)
{
    ModulePath() = fullName;
}

CString ApplicationDataFolder()
{
    std::string base = AbsolutePathIn("XDG_DATA_HOME");
    if (base.empty()) base = HomeFolder() + "/.local/share";
    while (base.ends_with('/'))
        base.pop_back();
    return CString((base + "/tiltpole").c_str());
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
