// SPDX-License-Identifier: MIT
//
// The file that is written beside another one before it takes that one's place.
//
// Its name is ".tiltpole-HOST-RANDOM.new". The process that writes it holds a lock on it (flock),
// which ends with the process: a file of such a name that can be locked was left over by a process
// that was killed, and is removed by the next one. Locks may not reach another machine that shares
// the folder; a file with the name of another machine must not have changed for a day as well.
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

    /// Makes a new, empty file in `folder`, with permissions `mode` less those of the umask, after
    /// removing what other processes left over there.
    /// @return false, with the reason in errno, where the folder takes no new file
    bool Make(const std::string& folder, mode_t mode);

    int Get() const { return m_file.Get(); }

    /// Renames it to `name` in its folder, replacing what is there. False, with the reason in
    /// errno, where the system refuses.
    bool RenameTo(const std::string& name);
    /// Waits until the folder is on the device. A folder that cannot be opened or flushed does not
    /// undo the renaming.
    void FlushFolder() const;
    /// Closes the file, and removes it unless it was renamed.
    void Remove();

private:
    bool LockOwn();
    void Forget();

    std::string m_name;  // in the folder; empty: there is no file of that name to remove
    Descriptor m_folder; // O_PATH: names in it may be used even where its path is very long
    Descriptor m_file;
    int m_slot = -1; // in the list of what a signal removes; -1: in none
};

} // namespace framework
