// SPDX-License-Identifier: MIT
#include "apps/live/Control.h"

#include "apps/live/Open.h"
#include "apps/tables/Errors.h"
#include "apps/tables/Messages.h"
#include <array>
#include <cerrno>
#include <csignal>
#include <sys/socket.h>
#include <utility>

namespace live {

void LineCutter::Feed(std::string_view bytes, const std::function<void(std::string_view)>& onLine)
{
    for (const char c : bytes) {
        if (c == '\n') {
            if (m_line.ends_with('\r')) m_line.pop_back();
            const std::string line = std::exchange(m_line, {});
            if (!std::exchange(m_isTooLong, false)) onLine(line);
        } else if (m_line.size() < m_longest) {
            m_line += c;
        } else {
            m_isTooLong = true;
        }
    }
}

KeyReader::KeyReader(Loop& loop, Handler handler)
    : m_input(dup(STDIN_FILENO)), m_watch(loop.Observe(m_input.Get())),
      m_handler(std::move(handler))
{
    // In the background of a terminal, reading fails instead of stopping the program.
    std::signal(SIGTTIN, SIG_IGN);
    if (m_watch) m_watch->WhenReadable([this] { Read(); });
}

void KeyReader::Read()
{
    std::array<char, 512> block;
    const ssize_t count = read(m_input.Get(), block.data(), block.size());
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (count <= 0) {
        m_watch.reset();
        return;
    }
    m_lines.Feed({block.data(), static_cast<std::size_t>(count)}, [this](std::string_view line) {
        if (!line.empty()) tables::TellText(m_handler(line) + '\n');
    });
}

ControlSocket::ControlSocket(Loop& loop, std::string path, Handler handler)
    : m_loop(loop), m_path(std::move(path)), m_handler(std::move(handler))
{
    Opened opened = ListenLocal(m_path);
    if (!opened.descriptor.IsOpen())
        throw tables::InputError(m_path, "cannot be listened on: " + opened.problem);
    m_listener = std::move(opened.descriptor);
    m_watch = m_loop.Observe(m_listener.Get());
    m_watch->WhenReadable([this] { AcceptAll(); });
}

ControlSocket::~ControlSocket()
{
    unlink(m_path.c_str());
}

void ControlSocket::AcceptAll()
{
    for (int i = 0; i < 8; ++i) {
        Accepted accepted = AcceptLocal(m_listener.Get());
        if (!accepted.descriptor.IsOpen()) return;
        if (m_clients.size() >= kMostClients) continue;
        const auto client = m_clients.emplace(m_clients.end());
        client->descriptor = std::move(accepted.descriptor);
        client->watch = m_loop.Observe(client->descriptor.Get());
        client->watch->WhenReadable([this, client] { Read(client); });
    }
}

void ControlSocket::Read(std::list<Client>::iterator client)
{
    std::array<char, 512> block;
    const ssize_t count = read(client->descriptor.Get(), block.data(), block.size());
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (count <= 0) {
        client->watch.reset(); // before its descriptor
        m_clients.erase(client);
        return;
    }
    client->lines.Feed({block.data(), static_cast<std::size_t>(count)}, [&](std::string_view line) {
        if (line.empty()) return;
        // An answer that does not fit is lost with a client that does not read.
        const std::string answer = m_handler(line) + '\n';
        [[maybe_unused]] const ssize_t sent =
            send(client->descriptor.Get(), answer.data(), answer.size(), MSG_NOSIGNAL);
    });
}

} // namespace live
