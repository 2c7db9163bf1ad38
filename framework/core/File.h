// SPDX-License-Identifier: MIT
/// @class CFile
/// CFile: an unbuffered file of the window framework.
///
///     CFile file;
///     if (!file.Open(L"dump.csv", CFile::modeCreate | CFile::modeWrite)) return 0;
///     file.Write(text.data(), static_cast<UINT>(text.size()));
///     return file.Close() ? 1 : 0; // FALSE if any Write failed
///
/// Failure is reported by results; nothing throws, running out of memory included. A file that must
/// not be lost is better written by ReplaceFileContent (framework/core/AtomicFile.h).
#pragma once

#include "framework/core/Object.h"
#include "framework/core/Types.h"

class TILTPOLE_API CFile : public CObject
{
public:
    /// How a file is opened: one of the first three, combined with others by |. Sharing modes,
    /// inheritance and text mode are accepted and have no effect.
    enum OpenFlags : UINT {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareCompat = 0x0000,
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        modeNoInherit = 0x0080,
        modeCreate = 0x1000,     // a missing file is created, an existing one emptied
        modeNoTruncate = 0x2000, // with modeCreate: an existing file keeps its content
        typeText = 0x4000,
        typeBinary = 0x8000
    };
    enum SeekPosition : UINT { begin = 0, current = 1, end = 2 };

    static constexpr ULONGLONG kNoPosition = ~ULONGLONG{0};

    CFile() = default;
    /// Closes the file.
    ~CFile() override;

    /// Opens `path` (UTF-8 on disk) after closing the file that was open. FALSE where it cannot be
    /// opened or is a folder.
    BOOL Open(const wchar_t* path, UINT flags);
    BOOL IsOpen() const { return m_file >= 0; }

    /// Bytes read; fewer than `count` at the end of the file or on an error.
    UINT Read(void* buffer, UINT count);
    /// Bytes written; fewer than `count` on an error, such as a full disk.
    UINT Write(const void* buffer, UINT count);
    /// Waits until all data is on the device. FALSE where that failed.
    BOOL Flush();

    /// Moves by `offset` from the place that `from` names (a SeekPosition). Returns the new
    /// position from the start of the file, kNoPosition on an error.
    ULONGLONG Seek(LONGLONG offset, UINT from);
    ULONGLONG SeekToEnd() { return Seek(0, end); }
    void SeekToBegin() { Seek(0, begin); }
    ULONGLONG GetPosition() const;
    /// Length in bytes; 0 where no file is open, and for devices and pipes.
    ULONGLONG GetLength() const;

    /// Closes the file. FALSE where that, or any Read, Write or Flush since Open, failed.
    BOOL Close();
    /// Closes the file and ignores errors.
    void Abort();

    /// Remove or rename a file. FALSE where the system refused.
    static BOOL Remove(const wchar_t* path);
    static BOOL Rename(const wchar_t* oldPath, const wchar_t* newPath);

private:
    int m_file = -1;
    bool m_failed = false;
};
