// SPDX-License-Identifier: MIT
//
// Requests of the surveyor, a line each: from standard input, or on a socket of this user alone.
#pragma once

#include "apps/live/Descriptor.h"
#include "apps/live/Loop.h"
#include <list>

namespace live {

/// Cuts what comes into lines; a line beyond the longest is dropped.
class LineCutter
{
public:
    static constexpr std::size_t kRequest = 1024; // bytes

    explicit LineCutter(std::size_t longest = kRequest) : m_longest(longest) {}

    void Feed(std::string_view bytes, const std::function<void(std::string_view)>& onLine);

private:
    std::size_t m_longest; // bytes
    std::string m_line;
    bool m_isTooLong = false;
};

/// Answers a request with one sentence.
using Handler = std::function<std::string(std::string_view)>;

/// Requests on standard input; answers go to standard error. Its end is no reason to end.
class KeyReader
{
public:
    KeyReader(Loop& loop, Handler handler);

private:
    void Read();

    Descriptor m_input;
    std::unique_ptr<Watch> m_watch;
    LineCutter m_lines;
    Handler m_handler;
};

/// Requests and answers on a Unix socket with mode 0600.
class ControlSocket
{
public:
    static constexpr std::size_t kMostClients = 4;

    /// @throws InputError where there is another file, or another program listens
    ControlSocket(Loop& loop, std::string path, Handler handler);
    ~ControlSocket();
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

private:
    struct Client
    {
        Descriptor descriptor;
        std::unique_ptr<Watch> watch;
        LineCutter lines;
    };
    void AcceptAll();
    void Read(std::list<Client>::iterator client);

    Loop& m_loop;
    std::string m_path;
    Handler m_handler;
    Descriptor m_listener;
    std::unique_ptr<Watch> m_watch;
    std::list<Client> m_clients;
};

} // namespace live
