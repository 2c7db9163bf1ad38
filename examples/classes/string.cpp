// SPDX-License-Identifier: MIT
//
// CString: wide text as the window framework has it. %s takes a wide string.
#include "framework/core/String.h"

#include <cstdio>

int main()
{
    CString line;
    line.Format(L"%s: %.3f m", L"pole length", 2.0);
    const int colon = line.Find(L':');
    CString name = line.Left(colon);
    name.MakeUpper();
    std::printf("%ls\n%ls has %d characters\n", line.GetString(), name.GetString(),
                name.GetLength());

    int from = 0; // Tokenize moves it past each part
    for (CString part = line.Tokenize(L" :", from); from != -1; part = line.Tokenize(L" :", from))
        std::printf("[%ls]", part.GetString());
    std::printf("\n");
}
