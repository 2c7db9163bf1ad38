// SPDX-License-Identifier: MIT
#include "framework/core/File.h"

#include "framework/core/TextConversion.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <new>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Empty, which is the name of no file, for a null path and where memory runs out.
std::string PathBytes(const wchar_t* path) noexcept
{
    try {
        return path == nullptr ? std::string() : framework::ToUtf8(path);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

int PlatformFlags(UINT flags)
{
    int result = O_CLOEXEC;
    if ((flags & CFile::modeReadWrite) != 0)
        result |= O_RDWR;
    else
        result |= (flags & CFile::modeWrite) != 0 ? O_WRONLY : O_RDONLY;
    if ((flags & CFile::modeCreate) != 0) {
        result |= O_CREAT;
        if ((flags & CFile::modeNoTruncate) == 0) result |= O_TRUNC;
    }
    return result;
}

// Repeats a partial transfer until it is complete, the file ends, or it fails.
template <class Transfer>
UINT TransferAll(UINT count, bool& failed, Transfer transfer)
{
    UINT done = 0;
    while (done < count) {
        const ssize_t n = transfer(done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) failed = true;
        if (n <= 0) break;
        done += static_cast<UINT>(n);
    }
    return done;
}

} // namespace

CFile::~CFile()
{
    Abort();
}

BOOL CFile::Open(const wchar_t* path, UINT flags)
{
    Abort();
    m_failed = false;
    constexpr mode_t kReadableAndWritable = 0666;
    m_file = ::open(PathBytes(path).c_str(), PlatformFlags(flags), kReadableAndWritable);
    struct stat status
    {};
    if (m_file >= 0 && (::fstat(m_file, &status) != 0 || S_ISDIR(status.st_mode))) Abort();
    return IsOpen();
}

UINT CFile::Read(void* buffer, UINT count)
{
    auto* bytes = static_cast<char*>(buffer);
    return TransferAll(count, m_failed,
                       [&](UINT done) { return ::read(m_file, bytes + done, count - done); });
}

UINT CFile::Write(const void* buffer, UINT count)
{
    const auto* bytes = static_cast<const char*>(buffer);
    return TransferAll(count, m_failed,
                       [&](UINT done) { return ::write(m_file, bytes + done, count - done); });
}

BOOL CFile::Flush()
{
    // EINVAL: pipes and terminals cannot be flushed.
    if (::fsync(m_file) == 0 || errno == EINVAL) return TRUE;
    m_failed = true;
    return FALSE;
}

ULONGLONG CFile::Seek(LONGLONG offset, UINT from)
{
    const int origin = from == begin ? SEEK_SET : from == current ? SEEK_CUR : SEEK_END;
    const off_t position = ::lseek(m_file, offset, origin);
    return position < 0 ? kNoPosition : static_cast<ULONGLONG>(position);
}

ULONGLONG CFile::GetPosition() const
{
    const off_t position = ::lseek(m_file, 0, SEEK_CUR);
    return position < 0 ? kNoPosition : static_cast<ULONGLONG>(position);
}

ULONGLONG CFile::GetLength() const
{
    struct stat status
    {};
    return ::fstat(m_file, &status) == 0 ? static_cast<ULONGLONG>(status.st_size) : 0;
}

BOOL CFile::Close()
{
    if (!IsOpen()) return FALSE;
    const bool closed = ::close(m_file) == 0;
    m_file = -1;
    return closed && !m_failed;
}

void CFile::Abort()
{
    Close();
}

BOOL CFile::Remove(const wchar_t* path)
{
    return ::unlink(PathBytes(path).c_str()) == 0;
}

BOOL CFile::Rename(const wchar_t* oldPath, const wchar_t* newPath)
{
    return std::rename(PathBytes(oldPath).c_str(), PathBytes(newPath).c_str()) == 0;
}
