#include "platform/linux/wayland/command_socket.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvanta {

namespace {

constexpr timeval patience { .tv_sec = 1, .tv_usec = 0 };

} // namespace

CommandSocket::CommandSocket(const QByteArray& path) : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (m_socket < 0 || static_cast<std::size_t>(path.size()) >= sizeof(address.sun_path))
        return;
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof(patience));
    ::setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof(patience));
    m_isConnected = ::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

CommandSocket::~CommandSocket()
{
    if (m_socket >= 0)
        ::close(m_socket);
}

bool CommandSocket::isReadable() const
{
    pollfd socket { .fd = m_socket, .events = POLLIN, .revents = 0 };
    return m_isConnected && ::poll(&socket, 1, 0) > 0;
}

bool CommandSocket::send(const QByteArray& bytes)
{
    return m_isConnected && ::send(m_socket, bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL) == bytes.size();
}

QByteArray CommandSocket::read(std::uint32_t count)
{
    QByteArray result;
    std::array<char, 65536> piece {};
    while (m_isConnected && static_cast<std::uint32_t>(result.size()) < count) {
        const auto wanted = std::min<std::size_t>(piece.size(), count - static_cast<std::size_t>(result.size()));
        const ssize_t got = ::recv(m_socket, piece.data(), wanted, 0);
        if (got <= 0)
            m_isConnected = false;
        else
            result.append(piece.data(), got);
    }
    return result;
}

bool isSocket(const QByteArray& path)
{
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 && S_ISSOCK(status.st_mode);
}

} // namespace orvanta
