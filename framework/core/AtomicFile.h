// SPDX-License-Identifier: MIT
//
// Files that are either the old ones or the new ones, whatever happens in between.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"

#include <string_view>

namespace framework {

/// Makes `bytes` the whole content of the file `path`: written beside it, flushed to the device
/// and renamed over it. A reader, a full disk or a power cut at any moment meets the old content
/// or the new, never a part; after a failure nothing is left beside the file.
///
/// A symbolic link is followed and stays; permissions (and, where allowed, the owner) of a file
/// that is there are kept. A target that is not a regular file (device, pipe) is written in place.
///
/// @return false, with the old file as it was, where the file may not be written or the content
///         did not reach the device
TILTPOLE_API bool ReplaceFileContent(const CString& path, std::string_view bytes);

} // namespace framework
