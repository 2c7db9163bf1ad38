// SPDX-License-Identifier: MIT
/// @file
/// File attributes, the name of the running module, the folder for application data.
///
///     const CString folder = framework::ApplicationDataFolder(); // ~/.local/share/tiltpole
///     if (GetFileAttributesW(folder) == INVALID_FILE_ATTRIBUTES) framework::MakeFolder(folder);
///
/// Paths are UTF-8 on disk. What returns a number or bool reports running out of memory as its
/// failure; what returns or takes a CString by value throws std::bad_alloc.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"
#include "framework/core/Types.h"

#include <string>

/// FILE_ATTRIBUTE_DIRECTORY for a folder, combined with FILE_ATTRIBUTE_READONLY where the owner has
/// no write permission; FILE_ATTRIBUTE_NORMAL where neither applies; INVALID_FILE_ATTRIBUTES where
/// `path` does not exist or cannot be reached.
TILTPOLE_API DWORD GetFileAttributesW(const wchar_t* path);

/// Writes the full name of the running module into `buffer`. `module` is ignored, as there is only
/// one.
///
/// @param size  capacity of `buffer` [characters]
/// @return length without the closing 0; `size` where the name was truncated (a closing 0 is
///         written all the same); 0 where nothing could be written
TILTPOLE_API DWORD GetModuleFileNameW(HMODULE module, wchar_t* buffer, DWORD size);

namespace framework {

/// Sets the name that GetModuleFileNameW returns from now on; an empty one restores the default,
/// the running executable.
TILTPOLE_API void SetModulePath(const CString& fullName);

/// Folder for files that a program writes for later use, without a trailing separator:
/// $XDG_DATA_HOME/tiltpole where that variable is an absolute path, otherwise
/// ~/.local/share/tiltpole. It may not exist yet: see MakeFolder.
TILTPOLE_API CString ApplicationDataFolder();

/// The same for what a program remembers between runs, such as the view of a plot:
/// $XDG_STATE_HOME/tiltpole, otherwise ~/.local/state/tiltpole.
TILTPOLE_API CString ApplicationStateFolder();

/// Creates a folder and its parents. True where it exists afterwards.
TILTPOLE_API bool MakeFolder(const CString& path);

/// The path behind all symbolic links of the last part of `path`, whether or not a file is there.
/// Bytes are taken as they are. Links in a circle are followed forty times.
/// @throws std::bad_alloc
TILTPOLE_API std::string FollowLinks(std::string path);

} // namespace framework
