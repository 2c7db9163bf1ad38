// SPDX-License-Identifier: MIT
//
// The file that is written beside another one before it takes that one's place.
//
// Its name is ".tiltpole-HOST-N.new" with the first N that is free. The process that writes it
// holds a lock on it (flock), which ends with the process: a file of such a name that can be locked
// was left over by a process that was killed, and the next one removes it. The name of the machine
// keeps apart those that share a folder without sharing locks.
#pragma once

#include "framework/core/detail/Descriptor.h"

#include <string>
#include <sys/stat.h>

namespace framework {

class TemporaryFile
{
public:
    TemporaryFile() = default;
    ~TemporaryFile() { Remove(); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Makes a new, empty file in `folder`, with permissions `mode` less those of the umask.
    /// @return false, with the reason in errno, where the folder takes no new file
    bool Make(const std::string& folder, mode_t mode);

    bool IsOpen() const { return m_file.IsOpen(); }
    int Get() const { return m_file.Get(); }
    /// What the system knows of the new file.
    const struct stat& Status() const { return m_status; }

    /// Renames it to `target`, replacing what is there. False, with the reason in errno, where the
    /// system refuses.
    bool RenameTo(const std::string& target);
    /// Closes the file, and removes it unless it was renamed.
    void Remove();

private:
    bool LockOwn();

    std::string m_name; // empty: there is no file of that name to remove
    Descriptor m_file;
    struct stat m_status
    {};
};

} // namespace framework
