// SPDX-License-Identifier: MIT
//
// CFile: an unbuffered file of the window framework. Failure is told by results; nothing throws.
#pragma once

#include "framework/core/Object.h"
#include "framework/core/Types.h"

class TILTPOLE_API CFile : public CObject
{
public:
    /// How a file is opened: one of the first three, combined with others by |.
    /// Sharing modes, inheritance and the text mode are accepted and change nothing.
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
        modeCreate = 0x1000,     // made where missing, emptied where there
        modeNoTruncate = 0x2000, // with modeCreate: kept where there
        typeText = 0x4000,
        typeBinary = 0x8000
    };
    enum SeekPosition : UINT { begin = 0, current = 1, end = 2 };

    static constexpr ULONGLONG kNoPosition = ~ULONGLONG{0};

    CFile() = default;
    /// Closes the file.
    ~CFile() override;

    /// Opens `path` (UTF-8 on disk), closing what was open. FALSE where it cannot be opened or is
    /// a folder.
    BOOL Open(const wchar_t* path, UINT flags);
    BOOL IsOpen() const { return m_file >= 0; }

    /// Bytes read; fewer than `count` at the end of the file or on an error.
    UINT Read(void* buffer, UINT count);
    /// Bytes written; fewer than `count` where the file could not take more.
    UINT Write(const void* buffer, UINT count);
    /// Hands all data to the device. FALSE where that failed.
    BOOL Flush();

    /// New position from the start of the file, kNoPosition on an error.
    ULONGLONG Seek(LONGLONG offset, UINT from);
    ULONGLONG SeekToEnd() { return Seek(0, end); }
    void SeekToBegin() { Seek(0, begin); }
    ULONGLONG GetPosition() const;
    /// Bytes in the file; 0 where it is not open.
    ULONGLONG GetLength() const;

    /// Closes the file. FALSE where closing it, or any Read, Write or Flush before, failed.
    BOOL Close();
    /// Closes the file whatever happened.
    void Abort();

    /// FALSE where it could not be done.
    static BOOL Remove(const wchar_t* path);
    static BOOL Rename(const wchar_t* oldPath, const wchar_t* newPath);

private:
    int m_file = -1;
    bool m_failed = false;
};
