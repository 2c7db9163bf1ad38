// SPDX-License-Identifier: MIT
#include "apps/live/Recorder.h"

#include "apps/live/Open.h"
#include "apps/tables/Errors.h"
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace live {

namespace {

bool IsRegularFile(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

Recorder::Recorder(std::string path, double started,
                   std::function<void(const std::string&)> onEvent)
    : m_path(std::move(path)), m_onEvent(std::move(onEvent))
{
    if (IsRegularFile(m_path))
        throw tables::InputError(m_path, "exists already, and a recording is never overwritten; "
                                         "choose another name for --record");
    m_file = Descriptor(open(m_path.c_str(), O_WRONLY | O_CREAT | O_NOCTTY | O_CLOEXEC, 0666));
    if (!m_file.IsOpen()) throw tables::InputError(m_path, "cannot be written: " + LastProblem());
    Write(field::RecordingHeader(started));
}

void Recorder::Add(const field::Record& record)
{
    if (m_file.IsOpen()) Write(field::RecordingLines(record.at, record.channel, record.bytes));
}

void Recorder::Write(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = write(m_file.Get(), text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            const std::string why = LastProblem();
            m_file.Close();
            m_onEvent("the recording " + m_path + " ends: " + why);
            return;
        }
        m_bytes += static_cast<std::uint64_t>(count);
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

} // namespace live
