// SPDX-License-Identifier: MIT
#include "apps/tables/Output.h"

#include "apps/tables/Errors.h"
#include "framework/core/Paths.h"
#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fmt/format.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace tables {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 16; // bytes

bool IsStandardOutput(std::string_view path)
{
    constexpr std::array<std::string_view, 4> names{"-", "/dev/stdout", "/dev/fd/1",
                                                    "/proc/self/fd/1"};
    return std::find(names.begin(), names.end(), path) != names.end();
}

std::string ShownName(const std::string& path)
{
    return IsStandardOutput(path) ? "<stdout>" : path;
}

bool IsReadOnly(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)
           && (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

[[noreturn]] void Fail(const std::string& name, int reason)
{
    if (reason == EACCES && IsReadOnly(name)) {
        throw InputError(name, "is a read-only file and was left as it is; choose another output "
                               "file, or allow writing with chmod u+w");
    }
    throw InputError(name, "cannot be written: " + std::generic_category().message(reason));
}

void WriteToStandardOutput(std::string_view rest)
{
    while (!rest.empty()) {
        const ssize_t count = write(STDOUT_FILENO, rest.data(), rest.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EPIPE) throw OutputClosed();
        if (count < 0 && errno == EBADF)
            throw InputError("<stdout>", "cannot be written: it is closed");
        if (count < 0) Fail("<stdout>", errno);
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
}

// What two paths have in common exactly if they lead to the same file.
struct Identity
{
    dev_t device;     // of the file, or of the folder it is to be made in
    ino_t number;     // likewise
    std::string name; // of a file still to be made
    bool operator==(const Identity&) const = default;
};

std::optional<Identity> IdentityOf(const std::string& path, int standardStream)
{
    struct stat status = {};
    const bool isStream = path == "-";
    if ((isStream ? fstat(standardStream, &status) : stat(path.c_str(), &status)) == 0) {
        const bool isShared =
            S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode) || S_ISBLK(status.st_mode);
        if (!isShared) return std::nullopt;
        return Identity{status.st_dev, status.st_ino, {}};
    }
    if (isStream || path.empty()) return std::nullopt;
    const std::filesystem::path target = framework::FollowLinks(path);
    const std::string folder = target.has_parent_path() ? target.parent_path().string() : ".";
    if (stat(folder.c_str(), &status) != 0) return std::nullopt;
    return Identity{status.st_dev, status.st_ino, target.filename().string()};
}

} // namespace

Output::Output(const std::string& path) : m_name(ShownName(path))
{
    if (IsStandardOutput(path)) return;
    m_file.emplace(path);
    if (m_file->Error() != 0) Fail(m_name, m_file->Error());
}

void Output::Write(std::string_view text)
{
    m_buffered += text;
    if (m_buffered.size() >= kBufferSize) Flush();
}

void Output::Finish()
{
    Flush();
    if (m_file && !m_file->Commit()) Fail(m_name, m_file->Error());
}

void Output::Flush()
{
    if (!m_file)
        WriteToStandardOutput(m_buffered);
    else if (!m_file->Write(m_buffered))
        Fail(m_name, m_file->Error());
    m_buffered.clear();
}

Output& OutputFiles::Open(const std::string& path)
{
    return *m_outputs.emplace_back(std::make_unique<Output>(path));
}

void OutputFiles::Write(const std::string& path, std::string_view content)
{
    if (path.empty()) return;
    Output& output = Open(path);
    if (output.m_file)
        output.Write(content);
    else
        output.m_buffered += content;
}

void OutputFiles::Finish()
{
    bool isClosed = false;
    std::vector<framework::FileReplacement*> files;
    for (const auto& output : m_outputs) {
        try {
            output->Flush();
        } catch (const OutputClosed&) {
            isClosed = true; // `| head` has seen enough, but the files are still wanted
        }
        if (output->m_file) files.push_back(&*output->m_file);
    }
    if (!framework::CommitTogether(files)) {
        for (const auto& output : m_outputs)
            if (output->m_file && output->m_file->Error() != 0)
                Fail(output->m_name, output->m_file->Error());
    }
    if (isClosed) throw OutputClosed();
}

void KeepApart(const std::vector<std::string>& outputs, const std::vector<std::string>& inputs)
{
    std::vector<Identity> read;
    for (const std::string& input : inputs)
        if (auto identity = IdentityOf(input, STDIN_FILENO)) read.push_back(std::move(*identity));

    std::vector<std::pair<Identity, std::string>> written;
    for (const std::string& output : outputs) {
        if (output.empty()) continue;
        const bool isStream = IsStandardOutput(output);
        const auto identity = IdentityOf(isStream ? "-" : output, STDOUT_FILENO);
        if (!identity) continue;
        if (std::find(read.begin(), read.end(), *identity) != read.end())
            throw InputError(ShownName(output),
                             "is an input of this command; choose another output file");
        for (const auto& [other, name] : written)
            if (other == *identity)
                throw InputError(ShownName(output),
                                 isStream && name == ShownName(output)
                                     ? "is asked for by two outputs; give one of them a file"
                                     : fmt::format("is the same file as the output {}; choose "
                                                   "another name for one of them",
                                                   name));
        written.emplace_back(*identity, ShownName(output));
    }
}

void WriteFile(const std::string& path, std::string_view content)
{
    Output output(path);
    output.Write(content);
    output.Finish();
}

} // namespace tables
