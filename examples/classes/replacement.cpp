// SPDX-License-Identifier: MIT
//
// framework::FileReplacement: a file that is written piece by piece and replaced in one step.
#include "framework/core/AtomicFile.h"
#include "framework/core/File.h"

#include <cstdio>

int main()
{
    framework::FileReplacement file("track.csv");
    file.Write("seconds,N,E\n");
    file.Write("0.0,7.25,3.50\n");

    CFile reader; // nobody sees the file before all of it is there
    std::printf("before: %s\n", reader.Open(L"track.csv", CFile::modeRead) ? "there" : "not there");
    if (!file.Commit()) return 1;
    reader.Open(L"track.csv", CFile::modeRead);
    std::printf("after: %d bytes\n", static_cast<int>(reader.GetLength()));
    reader.Close();
    CFile::Remove(L"track.csv");
}
