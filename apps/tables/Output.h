// SPDX-License-Identifier: MIT
//
// Output files of the commands. A file is replaced in one step when it is complete, as
// framework/core/AtomicFile.h describes. Output is buffered, and every failed write is reported.
#pragma once

#include "framework/core/AtomicFile.h"
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tables {

class Output
{
public:
    /// @param path  "-" is standard output, and so is /dev/stdout; a device or a pipe is written
    ///              directly
    /// @throws InputError when it cannot be opened for writing
    explicit Output(const std::string& path);

    /// Discards a file that was not finished; the previous file remains.
    ~Output() = default;
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// @throws InputError when a write fails, OutputClosed when standard output has no reader
    void Write(std::string_view text);

    /// Writes what is still buffered and replaces the file. Nothing may be written afterward.
    /// @throws as Write
    void Finish();

private:
    friend class OutputFiles;
    void Flush();

    std::string m_name;                               // for messages
    std::optional<framework::FileReplacement> m_file; // none: standard output
    std::string m_buffered;
};

/// The output files of one command: none is replaced before all of them are complete and on the
/// device, as framework::CommitTogether describes.
class OutputFiles
{
public:
    /// One more file, which is finished with the others. The file that the others belong to comes
    /// last: it is the last one to be replaced.
    /// @throws InputError when it cannot be opened for writing
    Output& Open(const std::string& path);

    /// One more file and its whole content; nothing where `path` is empty.
    /// @throws as Open and Output::Write
    void Write(const std::string& path, std::string_view content);

    /// Replaces the files. Nothing may be written afterward.
    /// @throws as Output::Write
    void Finish();

private:
    std::vector<std::unique_ptr<Output>> m_outputs;
};

/// Refuses files that a command must not use together: an output that is an input - recordings
/// often exist only once - and an output that is another output. Links are followed, files that are
/// still to be made are compared by folder and name. Empty names are ignored, "-" is standard input
/// or standard output; terminals and other character devices can be used more than once.
/// @throws InputError naming the output file
void KeepApart(const std::vector<std::string>& outputs, const std::vector<std::string>& inputs);

/// Replaces the file in one step.
/// @throws as Output
void WriteFile(const std::string& path, std::string_view content);

} // namespace tables
