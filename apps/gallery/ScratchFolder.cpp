// SPDX-License-Identifier: MIT
#include "apps/gallery/ScratchFolder.h"

#include "apps/tables/Errors.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace gallery {
namespace {

// What a signal finds: its handler may neither lock nor allocate.
constinit std::atomic<const ScratchFolder*> theFolder{nullptr};
static_assert(decltype(theFolder)::is_always_lock_free);

// Whether the signal would be handled by a function, as of a program that removes its files.
bool IsFunction(const struct sigaction& action)
{
    return action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN
           && (action.sa_flags & SA_SIGINFO) == 0;
}

} // namespace

ScratchFolder::ScratchFolder()
    : m_path((std::filesystem::temp_directory_path() / "galleryXXXXXX").string()),
      m_handlers{
          {{SIGHUP, {}}, {SIGINT, {}}, {SIGTERM, {}}}
}
{
    if (!mkdtemp(m_path.data()))
        throw tables::InputError(m_path, "cannot create a temporary folder");
    m_views = {m_path + "/GraphMagnetic_XY.cfg", m_path + "/GraphMagnetic_XZ.cfg"};
    theFolder = this;
    for (auto& [signal, before] : m_handlers) {
        if (::sigaction(signal, nullptr, &before) != 0 || !IsFunction(before)) continue;
        struct sigaction action = before;
        action.sa_handler = RemoveAndPassOn;
        ::sigaction(signal, &action, nullptr);
    }
}

ScratchFolder::~ScratchFolder()
{
    for (const auto& [signal, before] : m_handlers)
        if (IsFunction(before)) ::sigaction(signal, &before, nullptr);
    theFolder = nullptr;
    Remove();
}

void ScratchFolder::Remove() const noexcept
{
    for (const std::string& view : m_views)
        ::unlink(view.c_str());
    ::rmdir(m_path.c_str());
}

// The handler from before removes unfinished files, in this folder too, and has the signal end the
// program once this one returns.
void ScratchFolder::RemoveAndPassOn(int signal) noexcept
{
    const int reason = errno;
    const ScratchFolder* const folder = theFolder;
    if (!folder) return;
    for (const auto& [known, before] : folder->m_handlers)
        if (known == signal) before.sa_handler(signal);
    folder->Remove();
    errno = reason;
}

} // namespace gallery
