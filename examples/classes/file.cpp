// SPDX-License-Identifier: MIT
//
// CFile writes and reads bytes; framework::ReplaceFileContent replaces a file in one step, so that
// whoever reads it finds the old content or the new one.
#include "framework/core/File.h"
#include "framework/core/AtomicFile.h"

#include <cstdio>
#include <string_view>

int main()
{
    const CString path(L"last-fix.txt");
    if (!framework::ReplaceFileContent(path, "7.25 3.5 41.0\n")) return 1;

    CFile file;
    if (!file.Open(path, CFile::modeRead)) return 1;
    char bytes[64];
    const UINT count = file.Read(bytes, sizeof(bytes));
    std::printf("%d bytes: %.*s", static_cast<int>(file.GetLength()), static_cast<int>(count),
                bytes);
    file.Close();
    CFile::Remove(path);
    std::printf("still there: %s\n", file.Open(path, CFile::modeRead) ? "yes" : "no");
}
