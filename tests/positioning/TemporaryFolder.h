// SPDX-License-Identifier: MIT
//
// A scratch folder whose paths are framework texts.
#pragma once

#include "framework/core/String.h"
#include "tests/ScratchFolder.h"

#include <filesystem>
#include <string>

class TemporaryFolder : public ScratchFolder
{
public:
    CString Path(const std::string& name) const { return CString((Native() / name).c_str()); }

    void MakeFolder(const std::string& name) const
    {
        std::filesystem::create_directory(Native() / name);
    }
};
