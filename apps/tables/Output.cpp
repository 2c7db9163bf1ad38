// SPDX-License-Identifier: MIT
#include "apps/tables/Output.h"

#include "apps/tables/Errors.h"
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tables {

namespace {

constexpr std::size_t kBufferSize = std::size_t{1} << 16; // bytes

// The file behind symbolic links, so that renaming replaces the file and not the link.
std::string Resolve(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? real.get() : path;
}

} // namespace

Output::Output(const std::string& path) : m_name(path == "-" ? "<stdout>" : path)
{
    if (path == "-") {
        m_file = STDOUT_FILENO;
        return;
    }
    m_target = Resolve(path);
    struct stat status = {};
    const bool exists = stat(m_target.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        m_file = open(m_target.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        m_beside = m_target + "." + std::to_string(getpid()) + ".part";
        m_file = open(m_beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (m_file >= 0 && exists) (void)fchmod(m_file, status.st_mode & 07777);
    }
    if (m_file < 0) {
        m_beside.clear();
        Fail();
    }
}

Output::~Output()
{
    if (m_file >= 0 && m_file != STDOUT_FILENO) close(m_file);
    if (!m_beside.empty()) unlink(m_beside.c_str());
}

void Output::Write(std::string_view text)
{
    m_buffered += text;
    if (m_buffered.size() >= kBufferSize) Flush();
}

void Output::Finish()
{
    Flush();
    if (m_file == STDOUT_FILENO) return;

    const bool flushed = m_beside.empty() || fsync(m_file) == 0;
    const int reason = errno;
    const bool closed = close(m_file) == 0;
    m_file = -1;
    if (!flushed) errno = reason;
    if (!flushed || !closed) Fail();
    if (m_beside.empty()) return;
    if (rename(m_beside.c_str(), m_target.c_str()) != 0) Fail();
    m_beside.clear();
}

void Output::Flush()
{
    std::string_view rest = m_buffered;
    while (!rest.empty()) {
        const ssize_t count = write(m_file, rest.data(), rest.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EPIPE && m_file == STDOUT_FILENO) throw OutputClosed();
        if (count < 0) Fail();
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    m_buffered.clear();
}

void Output::Fail() const
{
    throw InputError(m_name, "cannot be written: " + std::generic_category().message(errno));
}

void KeepInputs(std::initializer_list<std::string> outputs,
                std::initializer_list<std::string> inputs)
{
    for (const std::string& output : outputs)
        for (const std::string& input : inputs) {
            std::error_code error; // one of the names is not a file: nothing to protect
            if (std::filesystem::equivalent(output, input, error))
                throw InputError(output, "is an input of this command; choose another output file");
        }
}

void WriteFile(const std::string& path, std::string_view content)
{
    Output output(path);
    output.Write(content);
    output.Finish();
}

} // namespace tables
