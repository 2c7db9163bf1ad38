// SPDX-License-Identifier: MIT
#include "framework/core/AtomicFile.h"

#include "framework/core/Paths.h"
#include "framework/core/TextConversion.h"
#include "framework/core/detail/Descriptor.h"
#include "framework/core/detail/FileAccess.h"
#include "framework/core/detail/TemporaryFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace framework {

namespace {

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string NameOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

// Whether the system refused a new file or a new name, for reasons that need not concern the
// content of a file that is there already.
bool IsRefusal(int error)
{
    constexpr std::array refusals = {EACCES, EPERM,      EROFS,  EBUSY,
                                     EXDEV,  EOPNOTSUPP, ENOSYS, ENAMETOOLONG};
    return std::find(refusals.begin(), refusals.end(), error) != refusals.end();
}

// Some network and user-space file systems have no such call: then there is nothing to wait for.
bool Flush(int file)
{
    return ::fsync(file) == 0 || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
}

bool MayBeWritten(const std::string& path, const struct stat& status)
{
    constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    if ((status.st_mode & kAnyWrite) != 0)
        return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
    errno = EACCES;
    return false;
}

// Reserves what `file` has to grow by, so that a full disk is noticed while the old content is
// whole. A file system that cannot reserve is written without.
bool Reserve(int file, off_t oldSize, off_t newSize)
{
    if (newSize <= oldSize) return true;
    const int error = ::posix_fallocate(file, oldSize, newSize - oldSize);
    if (error != ENOSPC && error != EDQUOT && error != EFBIG && error != EIO) return true;
    if (::ftruncate(file, oldSize) == 0) errno = error;
    return false;
}

bool OverwriteInPlace(const std::string& path, std::string_view bytes)
{
    Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    struct stat old
    {};
    const auto size = static_cast<off_t>(bytes.size());
    return file.IsOpen() && ::fstat(file.Get(), &old) == 0 && Reserve(file.Get(), old.st_size, size)
           && WriteAll(file.Get(), bytes) && ::ftruncate(file.Get(), size) == 0 && Flush(file.Get())
           && file.Close();
}

bool AppendContentOf(int file, std::string& content)
{
    std::array<char, 65536> piece;
    for (off_t at = 0;;) {
        const ssize_t n = ::pread(file, piece.data(), piece.size(), at);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return n == 0;
        content.append(piece.data(), static_cast<std::size_t>(n));
        at += n;
    }
}

} // namespace

struct FileReplacement::State
{
    enum class Way {
        Beside,  // into a file beside the old one
        InPlace, // into the old file, at the end
        Stream   // into a device or pipe, at once
    };

    explicit State(const std::string& path) { Check(Begin(path)); }

    bool Begin(const std::string& path);
    bool BeginInFolder();
    bool Write(std::string_view bytes);
    bool Prepare();
    bool Replace();
    bool RenameOrOverwrite();
    void Settle();

    // After a failure nothing is tried again: its reason stays.
    bool Check(bool done)
    {
        if (!done) error = errno != 0 ? errno : EIO;
        return done;
    }

    Way way = Way::Beside;
    bool exists = false;
    struct stat old = {};
    std::string target; // behind all links
    TemporaryFile beside;
    std::string content; // to be written in place
    Descriptor stream;
    int error = 0;
};

bool FileReplacement::State::Begin(const std::string& path)
{
    errno = path.empty() ? ENOENT : EINVAL;
    if (path.empty() || path.find('\0') != std::string::npos) return false;

    exists = ::lstat(path.c_str(), &old) == 0;
    const bool isLink = exists && S_ISLNK(old.st_mode);
    if (isLink) exists = ::stat(path.c_str(), &old) == 0;
    if (!exists && errno != ENOENT) return false;
    if (exists && !S_ISREG(old.st_mode)) {
        way = Way::Stream;
        stream = Descriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
        return stream.IsOpen();
    }
    if (exists && !MayBeWritten(path, old)) return false;

    target = isLink ? FollowLinks(path) : path;
    struct stat found = {};
    // Links below /proc name files that may be gone, or never had a name.
    if (exists && isLink
        && (::stat(target.c_str(), &found) != 0 || found.st_dev != old.st_dev
            || found.st_ino != old.st_ino)) {
        target = path;
        way = Way::InPlace;
        return true;
    }
    return BeginInFolder();
}

bool FileReplacement::State::BeginInFolder()
{
    constexpr mode_t kOwnerOnly = 0600; // until it has the permissions of the old file
    constexpr mode_t kAsTheUmaskLeaves = 0666;
    if (!beside.Make(FolderOf(target), exists ? kOwnerOnly : kAsTheUmaskLeaves)) {
        way = Way::InPlace;
        return exists && IsRefusal(errno);
    }
    if (exists && !TakeOver(beside.Get(), target, old)) {
        beside.Remove();
        way = Way::InPlace;
    }
    return true;
}

bool FileReplacement::State::Write(std::string_view bytes)
{
    if (error != 0) return false;
    if (way == Way::InPlace) {
        content.append(bytes);
        return true;
    }
    return Check(WriteAll(way == Way::Stream ? stream.Get() : beside.Get(), bytes));
}

// All that can be done while the old content is still there.
bool FileReplacement::State::Prepare()
{
    return error == 0 && (way != Way::Beside || Check(Flush(beside.Get())));
}

bool FileReplacement::State::Replace()
{
    switch (way) {
    case Way::Stream:
        return Check(stream.Close());
    case Way::InPlace:
        return Check(OverwriteInPlace(target, content));
    default:
        return Check(RenameOrOverwrite());
    }
}

bool FileReplacement::State::RenameOrOverwrite()
{
    if (beside.RenameTo(NameOf(target))) return true;
    return exists && IsRefusal(errno) && AppendContentOf(beside.Get(), content)
           && OverwriteInPlace(target, content);
}

void FileReplacement::State::Settle()
{
    if (way != Way::Beside || error != 0) return;
    beside.FlushFolder();
    beside.Remove();
}

FileReplacement::FileReplacement(const std::string& path) : m_state(std::make_unique<State>(path))
{}

FileReplacement::~FileReplacement() = default;

bool FileReplacement::Write(std::string_view bytes)
{
    return m_state->Write(bytes);
}

bool FileReplacement::Commit()
{
    FileReplacement* const self = this;
    return CommitTogether({&self, 1});
}

int FileReplacement::Error() const
{
    return m_state->error;
}

bool CommitTogether(std::span<FileReplacement* const> files)
{
    using State = FileReplacement::State;
    const auto all = [files](auto&& step) {
        return std::all_of(files.begin(), files.end(),
                           [&step](FileReplacement* file) { return step(*file->m_state); });
    };
    const auto isBeside = [](const State& file) { return file.way == State::Way::Beside; };
    const bool done = all([](State& file) { return file.Prepare(); })
                      && all([&](State& file) { return isBeside(file) || file.Replace(); })
                      && all([&](State& file) { return !isBeside(file) || file.Replace(); });
    all([](State& file) {
        file.Settle();
        return true;
    });
    return done;
}

bool ReplaceFileContent(const CString& path, std::string_view bytes)
{
    try {
        const auto length = static_cast<std::size_t>(path.GetLength());
        FileReplacement file(ToUtf8({path.GetString(), length}));
        return file.Write(bytes) && file.Commit();
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace framework
