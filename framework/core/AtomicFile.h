// SPDX-License-Identifier: MIT
/// @file
/// Replacing the content of a file in one step: whoever opens it, at whatever moment, finds the old
/// content or the new one. The parameter file and the view files of the plots are written this way,
/// and so is what the programs write.
///
///     if (!framework::ReplaceFileContent(L"/var/lib/pole/last-fix.txt", "7.25 3.5 41.0\n"))
///         return 0; // the previous fix is still in the file
///
///     framework::FileReplacement file("/var/lib/pole/track.csv"); // piece by piece
///     for (const Row& row : rows)
///         file.Write(row.Text());
///     if (!file.Commit()) std::fputs(std::strerror(file.Error()), stderr);
///
///     // Files that belong together: what fails before the first renaming leaves all the old ones.
///     framework::FileReplacement points("/var/lib/pole/points.csv");
///     framework::FileReplacement index("/var/lib/pole/points.idx");
///     framework::FileReplacement* const both[] = {&points, &index};
///     if (!points.Write(rows) || !index.Write(places) || !framework::CommitTogether(both))
///         return 0;
///
/// How it is done. The new content goes into another file of the same folder,
/// ".tiltpole-HOST-RANDOM.new", which is flushed to the device and renamed to the name wanted. A
/// process that is killed in between leaves that file behind; the next replacement in the folder
/// removes it. A program has it removed at once by RemoveTemporaryFilesOnSignals.
///
/// Which file. Symbolic links are followed and stay links; one that points to a file not there yet
/// has that file made. The new file gets the owner, group, permissions, access control list and
/// extended attributes of the old one; one that is made anew those of the umask and the folder. A
/// file without any write permission is never replaced, not even by root.
///
/// Where a file may be written but not replaced - the folder takes no new file, the file system
/// does not let the new file have owner, group, permissions and attributes of the old one, the file
/// is a mount point - it is written in place: space is reserved first, then the old bytes are
/// overwritten, the length is set and the file is flushed. A full disk still leaves the old
/// content; a power cut during those few writes may not. Devices and pipes are written in place.
#pragma once

#include "framework/core/Export.h"
#include "framework/core/String.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace framework {

class FileReplacement;

/// Puts several new contents in the place of the old ones: all of them are flushed to the device
/// before the first file is replaced, and then the files are renamed one right after the other, in
/// this order. What is written in place, and devices and pipes, come before those.
///
/// So a full disk, a device that fails and a file that may not be written leave all the old files.
/// What is left is the moment between the first and the last renaming: whoever is interrupted there
/// leaves the first files new and the others old. Let the file on which the others depend be the
/// last one.
/// @return false where a file was not replaced: Error() of that file has the reason
/// @throws std::bad_alloc  as Commit
TILTPOLE_API bool CommitTogether(std::span<FileReplacement* const> files);

/// A new content for a file, written piece by piece; the old one stays until Commit.
class TILTPOLE_API FileReplacement
{
public:
    /// Prepares to replace the file `path`, whose bytes are taken as they are.
    /// @throws std::bad_alloc
    explicit FileReplacement(const std::string& path);
    /// Drops the new content unless Commit returned true.
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Appends `bytes`. False after any failure, that of the constructor included.
    /// @throws std::bad_alloc  only where the file is to be written in place: its new content is
    ///                         kept in memory until Commit
    bool Write(std::string_view bytes);

    /// Puts the new content in the place of the old one. Nothing may be written afterwards.
    /// @return false, with the old content still there, after any failure
    /// @throws std::bad_alloc  with the old content still there
    bool Commit();

    /// Reason of the first failure, as errno gives it; 0 where nothing has failed.
    int Error() const;

private:
    friend TILTPOLE_API bool CommitTogether(std::span<FileReplacement* const> files);
    struct State;
    std::unique_ptr<State> m_state;
};

/// Makes `bytes` the whole content of the file `path` (UTF-8 on disk).
/// @return false, with the old file as it was, where the file may not be written, the content does
///         not reach the device or memory does not suffice. Does not throw.
TILTPOLE_API bool ReplaceFileContent(const CString& path, std::string_view bytes);

/// Has SIGHUP, SIGINT and SIGTERM remove the temporary files of this process before they end it as
/// they always do. For programs, at their start; the library handles no signal on its own. A signal
/// that is ignored or handled already stays so.
TILTPOLE_API void RemoveTemporaryFilesOnSignals();

} // namespace framework
