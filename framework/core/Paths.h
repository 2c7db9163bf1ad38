// SPDX-License-Identifier: MIT
//
// Where files are: attributes, the running module, the folder for application data.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"
#include "framework/core/Types.h"

/// FILE_ATTRIBUTE_DIRECTORY for a folder, FILE_ATTRIBUTE_NORMAL for anything else, joined with
/// FILE_ATTRIBUTE_READONLY (in place of NORMAL) where the owner may not write;
/// INVALID_FILE_ATTRIBUTES where nothing of that name can be found.
TILTPOLE_API DWORD GetFileAttributesW(const wchar_t* path);

/// Writes the full name of the running module into `buffer`. There is one module, whatever
/// `module` says.
///
/// @param size  characters that `buffer` holds
/// @return length without the closing 0; `size` where the name was cut to fit (a closing 0 is
///         still written); 0 where nothing could be written
TILTPOLE_API DWORD GetModuleFileNameW(HMODULE module, wchar_t* buffer, DWORD size);

namespace framework {

/// What GetModuleFileNameW answers from now on; an empty name brings the running executable back.
TILTPOLE_API void SetModulePath(const CString& fullName);

/// Folder for what a program writes for later reading, without trailing separator:
/// $XDG_DATA_HOME/tiltpole where that variable holds an absolute path, else
/// ~/.local/share/tiltpole. It need not be there yet: see MakeFolder.
TILTPOLE_API CString ApplicationDataFolder();

/// Makes a folder and those above it. True where it is there in the end.
TILTPOLE_API bool MakeFolder(const CString& path);

} // namespace framework
