#include "harness/loopback_socket.h"

#include <array>
#include <cerrno>
#include <tuple>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

namespace orvanta {

namespace {

bool prepare(const Descriptor& file)
{
    return ::fcntl(file.number(), F_SETFD, FD_CLOEXEC) == 0 && ::fcntl(file.number(), F_SETFL, O_NONBLOCK) == 0;
}

bool somebodyWaits(const Descriptor& listener)
{
    pollfd polled { listener.number(), POLLIN, 0 };
    return ::poll(&polled, 1, 0) > 0;
}

} // namespace

Descriptor listenOnLoopback(std::uint16_t port)
{
    Descriptor listener(::socket(AF_INET, SOCK_STREAM, 0));
    if (!listener || !prepare(listener))
        return {};
    // Connections that we closed linger in the kernel for a minute and must not keep a new start from the port; a listener
    // of another program still does.
    const int yes = 1;
    ::setsockopt(listener.number(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    constexpr int longestQueue = 4096; // the kernel cuts it to what it allows
    if (::bind(listener.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || ::listen(listener.number(), longestQueue) != 0)
        return {};
    return listener;
}

std::uint16_t portOf(const Descriptor& listener)
{
    sockaddr_in address {};
    socklen_t length = sizeof address;
    if (::getsockname(listener.number(), reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return 0;
    return ntohs(address.sin_port);
}

AcceptOutcome acceptConnection(const Descriptor& listener, Descriptor& connection)
{
    while (true) {
#ifdef SOCK_CLOEXEC
        connection = Descriptor(::accept4(listener.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
#else
        connection = Descriptor(::accept(listener.number(), nullptr, nullptr));
        if (connection && !prepare(connection))
            continue;
#endif
        if (connection) {
#ifdef SO_NOSIGPIPE
            const int yes = 1;
            ::setsockopt(connection.number(), SOL_SOCKET, SO_NOSIGPIPE, &yes, sizeof yes);
#endif
            return AcceptOutcome::accepted;
        }
        // The descriptor is asked for before it is known whether anybody waits.
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM)
            return somebodyWaits(listener) ? AcceptOutcome::noDescriptors : AcceptOutcome::nobodyWaits;
        // Everything else but "nobody" is about one connection that went away while it waited.
        if (errno != EINTR && errno != ECONNABORTED && errno != EPROTO)
            return AcceptOutcome::nobodyWaits;
    }
}

ReceiveOutcome receiveSome(const Descriptor& connection, std::span<char> room, std::size_t& count)
{
    count = 0;
    ssize_t result = 0;
    do {
        result = ::recv(connection.number(), room.data(), room.size(), 0);
    } while (result < 0 && errno == EINTR);
    if (result > 0) {
        count = static_cast<std::size_t>(result);
        return ReceiveOutcome::received;
    }
    return result < 0 && (errno == EAGAIN || errno == EWOULDBLOCK) ? ReceiveOutcome::nothingYet : ReceiveOutcome::ended;
}

void sendLast(const Descriptor& connection, std::string_view text)
{
#ifdef MSG_NOSIGNAL
    constexpr int flags = MSG_NOSIGNAL;
#else
    constexpr int flags = 0;
#endif
    // A peer that has gone does not hear it, and nobody misses that.
    std::ignore = ::send(connection.number(), text.data(), text.size(), flags);
}

bool makeWakePipe(Descriptor& wakes, Descriptor& wakeUp)
{
    std::array<int, 2> ends {};
    if (::pipe(ends.data()) != 0)
        return false;
    wakes = Descriptor(ends[0]);
    wakeUp = Descriptor(ends[1]);
    return prepare(wakes) && prepare(wakeUp);
}

} // namespace orvanta
