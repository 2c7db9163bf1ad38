// SPDX-License-Identifier: MIT
#include "apps/live/Open.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string_view>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <termios.h>

namespace live {

namespace {

Opened Failure()
{
    return {Descriptor(), LastProblem()};
}

speed_t SpeedOf(unsigned baud)
{
    constexpr struct
    {
        unsigned baud;
        speed_t speed;
    } kSpeeds[] = {
        {1200,    B1200   },
        {2400,    B2400   },
        {4800,    B4800   },
        {9600,    B9600   },
        {19200,   B19200  },
        {38400,   B38400  },
        {57600,   B57600  },
        {115200,  B115200 },
        {230400,  B230400 },
        {460800,  B460800 },
        {500000,  B500000 },
        {576000,  B576000 },
        {921600,  B921600 },
        {1000000, B1000000},
        {1152000, B1152000},
        {1500000, B1500000},
        {2000000, B2000000},
        {2500000, B2500000},
        {3000000, B3000000},
        {3500000, B3500000},
        {4000000, B4000000},
    };
    for (const auto& entry : kSpeeds)
        if (entry.baud == baud) return entry.speed;
    return B9600;
}

// The address as the system wants it.
struct SocketAddress
{
    sockaddr_storage storage = {};
    socklen_t size = 0;

    SocketAddress(const std::string& text, std::uint16_t port)
    {
        auto* const v4 = reinterpret_cast<sockaddr_in*>(&storage);
        auto* const v6 = reinterpret_cast<sockaddr_in6*>(&storage);
        if (inet_pton(AF_INET, text.c_str(), &v4->sin_addr) == 1) {
            v4->sin_family = AF_INET;
            v4->sin_port = htons(port);
            size = sizeof(sockaddr_in);
        } else if (inet_pton(AF_INET6, text.c_str(), &v6->sin6_addr) == 1) {
            v6->sin6_family = AF_INET6;
            v6->sin6_port = htons(port);
            size = sizeof(sockaddr_in6);
        }
    }
    const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&storage); }
};

Descriptor Socket(int family, int type)
{
    return Descriptor(socket(family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

void Set(const Descriptor& socket, int level, int option, int value)
{
    setsockopt(socket.Get(), level, option, &value, sizeof value);
}

// A client that reads too slowly is to wait in our queue, where old epochs are dropped, and not in
// the system's; one that is gone without a word is to be noticed.
void KeepShort(const Descriptor& client)
{
    constexpr int kSystemBuffer = 4096;    // bytes; the system doubles it
    constexpr unsigned kGoneAfter = 30000; // ms
    Set(client, SOL_SOCKET, SO_SNDBUF, kSystemBuffer);
    Set(client, IPPROTO_TCP, TCP_NODELAY, 1);
    Set(client, SOL_SOCKET, SO_KEEPALIVE, 1);
    Set(client, IPPROTO_TCP, TCP_KEEPIDLE, 10);
    Set(client, IPPROTO_TCP, TCP_KEEPINTVL, 5);
    setsockopt(client.Get(), IPPROTO_TCP, TCP_USER_TIMEOUT, &kGoneAfter, sizeof kGoneAfter);
}

bool MakeRaw(int descriptor, unsigned baud)
{
    termios settings = {};
    if (tcgetattr(descriptor, &settings) != 0) return false;
    cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    settings.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
    if (baud != 0) cfsetspeed(&settings, SpeedOf(baud));
    return tcsetattr(descriptor, TCSANOW, &settings) == 0;
}

} // namespace

std::string LastProblem()
{
    return std::generic_category().message(errno);
}

Opened OpenSerial(const std::string& device, unsigned baud)
{
    Descriptor port(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!port.IsOpen()) return Failure();
    if (ioctl(port.Get(), TIOCEXCL) != 0) return {Descriptor(), "it is not a serial port"};
    if (flock(port.Get(), LOCK_EX | LOCK_NB) != 0)
        return {Descriptor(), "another program has it open"};
    if (!MakeRaw(port.Get(), baud)) return Failure();
    tcflush(port.Get(), TCIOFLUSH);
    return {std::move(port), {}};
}

Opened OpenToRead(const std::string& path)
{
    struct stat status = {};
    const bool isKnown = stat(path.c_str(), &status) == 0;
    if (isKnown && S_ISDIR(status.st_mode)) return {Descriptor(), "it is a folder"};
    // A named pipe that has no writer yet would be at its end at once.
    const int access = isKnown && S_ISFIFO(status.st_mode) ? O_RDWR : O_RDONLY;
    Descriptor file(open(path.c_str(), access | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!file.IsOpen()) return Failure();
    return {std::move(file), {}};
}

Opened OpenToWrite(const std::string& path)
{
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY | O_NONBLOCK | O_CLOEXEC;
    Descriptor file(open(path.c_str(), kFlags, 0666));
    if (!file.IsOpen()) return Failure();
    return {std::move(file), {}};
}

Opened BeginConnect(const std::string& address, std::uint16_t port)
{
    const SocketAddress target(address, port);
    Descriptor socket = Socket(target.storage.ss_family, SOCK_STREAM);
    if (!socket.IsOpen()) return Failure();
    Set(socket, IPPROTO_TCP, TCP_NODELAY, 1);
    Set(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
    Set(socket, IPPROTO_TCP, TCP_KEEPIDLE, 10);
    Set(socket, IPPROTO_TCP, TCP_KEEPINTVL, 5);
    Set(socket, IPPROTO_TCP, TCP_KEEPCNT, 3);
    if (connect(socket.Get(), target.Get(), target.size) != 0 && errno != EINPROGRESS)
        return Failure();
    return {std::move(socket), {}};
}

std::string ConnectProblem(int descriptor)
{
    int error = 0;
    socklen_t size = sizeof error;
    if (getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) != 0) return LastProblem();
    return error == 0 ? std::string() : std::generic_category().message(error);
}

Opened ListenTcp(const std::string& address, std::uint16_t port)
{
    const SocketAddress own(address, port);
    Descriptor socket = Socket(own.storage.ss_family, SOCK_STREAM);
    if (!socket.IsOpen()) return Failure();
    Set(socket, SOL_SOCKET, SO_REUSEADDR, 1);
    if (bind(socket.Get(), own.Get(), own.size) != 0 || listen(socket.Get(), 16) != 0)
        return Failure();
    return {std::move(socket), {}};
}

std::uint16_t PortOf(int descriptor)
{
    sockaddr_storage storage = {};
    socklen_t size = sizeof storage;
    if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&storage), &size) != 0) return 0;
    if (storage.ss_family == AF_INET)
        return ntohs(reinterpret_cast<const sockaddr_in*>(&storage)->sin_port);
    return ntohs(reinterpret_cast<const sockaddr_in6*>(&storage)->sin6_port);
}

Accepted Accept(int listener)
{
    sockaddr_storage storage = {};
    socklen_t size = sizeof storage;
    Accepted accepted;
    accepted.descriptor = Descriptor(accept4(listener, reinterpret_cast<sockaddr*>(&storage), &size,
                                             SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!accepted.descriptor.IsOpen()) return accepted;
    const bool isV4 = storage.ss_family == AF_INET;
    const void* const address =
        isV4 ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in*>(&storage)->sin_addr)
             : &reinterpret_cast<const sockaddr_in6*>(&storage)->sin6_addr;
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(storage.ss_family, address, text, sizeof text);
    accepted.name = text;
    accepted.peer = ParseAddress(accepted.name).value_or(Address{});
    KeepShort(accepted.descriptor);
    return accepted;
}

Opened BindUdp(const std::string& address, std::uint16_t port)
{
    const SocketAddress own(address, port);
    Descriptor socket = Socket(own.storage.ss_family, SOCK_DGRAM);
    if (!socket.IsOpen() || bind(socket.Get(), own.Get(), own.size) != 0) return Failure();
    return {std::move(socket), {}};
}

Opened ConnectUdp(const std::string& address, std::uint16_t port)
{
    const SocketAddress target(address, port);
    Descriptor socket = Socket(target.storage.ss_family, SOCK_DGRAM);
    if (!socket.IsOpen()) return Failure();
    Set(socket, SOL_SOCKET, SO_BROADCAST, 1);
    if (connect(socket.Get(), target.Get(), target.size) != 0) return Failure();
    return {std::move(socket), {}};
}

Opened ListenLocal(const std::string& path)
{
    sockaddr_un own = {};
    own.sun_family = AF_UNIX;
    if (path.size() >= sizeof own.sun_path)
        return {Descriptor(), "its path is too long for a socket"};
    std::memcpy(own.sun_path, path.data(), path.size());
    const auto* const address = reinterpret_cast<const sockaddr*>(&own);
    struct stat status = {};
    if (lstat(path.c_str(), &status) == 0) {
        if (!S_ISSOCK(status.st_mode)) return {Descriptor(), "there is a file of that name"};
        const Descriptor probe = Socket(AF_UNIX, SOCK_STREAM);
        if (connect(probe.Get(), address, sizeof own) == 0)
            return {Descriptor(), "another program listens there"};
        unlink(path.c_str());
    }
    Descriptor socket = Socket(AF_UNIX, SOCK_STREAM);
    if (!socket.IsOpen()) return Failure();
    const mode_t before = umask(0177);
    const int bound = bind(socket.Get(), address, sizeof own);
    umask(before);
    if (bound != 0 || listen(socket.Get(), 4) != 0) return Failure();
    return {std::move(socket), {}};
}

Accepted AcceptLocal(int listener)
{
    Accepted accepted;
    accepted.descriptor =
        Descriptor(accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    return accepted;
}

Opened OpenPty(const std::string& link)
{
    Descriptor pty(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    char name[128];
    if (!pty.IsOpen() || grantpt(pty.Get()) != 0 || unlockpt(pty.Get()) != 0
        || ptsname_r(pty.Get(), name, sizeof name) != 0)
        return Failure();
    // Opened and closed once: from then on the system tells when nobody has it open.
    const Descriptor other(open(name, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!other.IsOpen() || !MakeRaw(other.Get(), 0)) return Failure();
    struct stat status = {};
    if (lstat(link.c_str(), &status) == 0) {
        if (!S_ISLNK(status.st_mode)) return {Descriptor(), "there is a file of that name"};
        RemovePtyLink(link);
    }
    if (symlink(name, link.c_str()) != 0) return Failure();
    return {std::move(pty), {}};
}

bool HasReader(int pty)
{
    pollfd asked{pty, 0, 0};
    return poll(&asked, 1, 0) >= 0 && (asked.revents & POLLHUP) == 0;
}

void RemovePtyLink(const std::string& link)
{
    char target[128];
    const ssize_t size = readlink(link.c_str(), target, sizeof target);
    if (size <= 0) return;
    if (std::string_view(target, static_cast<std::size_t>(size)).starts_with("/dev/pts/"))
        unlink(link.c_str());
}

} // namespace live
