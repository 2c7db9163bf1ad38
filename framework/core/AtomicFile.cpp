// SPDX-License-Identifier: MIT
#include "framework/core/AtomicFile.h"

#include "framework/core/TextConversion.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace framework {

namespace {

constexpr int kMostLinks = 40; // as the system's own limit for one path
constexpr int kMostNames = 10000;

// A descriptor that lives as long as its scope.
class Descriptor
{
public:
    explicit Descriptor(int value) : m_value(value) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_value; }
    bool IsOpen() const { return m_value >= 0; }
    bool Close()
    {
        const int value = m_value;
        m_value = -1;
        return value < 0 || ::close(value) == 0;
    }

private:
    int m_value;
};

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// The path behind all symbolic links of its last part, whether or not a file is there.
std::string FollowLinks(std::string path)
{
    for (int i = 0; i < kMostLinks; ++i) {
        std::array<char, PATH_MAX> target;
        const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
        if (length < 0) break;
        const std::string next(target.data(), static_cast<std::size_t>(length));
        path = next.starts_with('/') ? next : FolderOf(path).append("/").append(next);
    }
    return path;
}

bool WriteAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t n = ::write(file, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

bool WriteInPlace(const std::string& path, std::string_view bytes)
{
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    return file.IsOpen() && WriteAll(file.Get(), bytes) && file.Close();
}

// Makes a file in `folder` that nobody else has; `name` receives its path.
int MakeUniqueFile(const std::string& folder, mode_t mode, std::string& name)
{
    for (int i = 0; i < kMostNames; ++i) {
        name =
            folder + "/.tiltpole-" + std::to_string(::getpid()) + '-' + std::to_string(i) + ".new";
        const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (file >= 0 || errno != EEXIST) return file;
    }
    return -1;
}

// The owner first: changing it clears permission bits.
bool TakeOver(int file, const struct stat& old)
{
    struct stat mine
    {};
    if (::fstat(file, &mine) != 0) return false;
    mode_t mode = old.st_mode & 07777;
    if ((mine.st_uid != old.st_uid || mine.st_gid != old.st_gid)
        && ::fchown(file, old.st_uid, old.st_gid) != 0)
        mode &= 0777; // no set-id bits for another owner
    return ::fchmod(file, mode) == 0;
}

// The new name is on the device when the folder is; a folder that cannot be opened or flushed
// (some network file systems) does not undo the rename.
void FlushFolder(const std::string& folder)
{
    const Descriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.IsOpen()) ::fsync(directory.Get());
}

} // namespace

bool ReplaceFileContent(const CString& path, std::string_view bytes)
{
    const std::string target = FollowLinks(ToUtf8(path.GetString()));
    struct stat old
    {};
    const bool exists = ::stat(target.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) return WriteInPlace(target, bytes);
    if (exists && ::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) return false;
    if (!exists && (errno != ENOENT || target.empty() || target.ends_with('/'))) return false;

    const std::string folder = FolderOf(target);
    std::string name;
    // Where a file is there, its permissions come before the first byte.
    Descriptor file(MakeUniqueFile(folder, exists ? 0600 : 0666, name));
    if (!file.IsOpen()) return false;
    if ((!exists || TakeOver(file.Get(), old)) && WriteAll(file.Get(), bytes)
        && ::fsync(file.Get()) == 0 && file.Close()
        && std::rename(name.c_str(), target.c_str()) == 0) {
        FlushFolder(folder);
        return true;
    }
    ::unlink(name.c_str());
    return false;
}

} // namespace framework
