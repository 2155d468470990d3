#pragma once

#include "platform/descriptor.h"

#include <QByteArray>

#include <cstdint>
#include <cstring>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

/// A client of the receiver that blocks the thread that it is used in, as a hook's own process does. Gives up after a
/// minute.
class BlockingClient {
public:
    explicit BlockingClient(std::uint16_t port) : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const timeval minute { 60, 0 };
        ::setsockopt(m_socket.number(), SOL_SOCKET, SO_RCVTIMEO, &minute, sizeof minute);
        ::setsockopt(m_socket.number(), SOL_SOCKET, SO_SNDTIMEO, &minute, sizeof minute);
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_isConnected = ::connect(m_socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }

    [[nodiscard]] bool isConnected() const { return m_isConnected; }

    bool send(const QByteArray& bytes)
    {
        qsizetype sent = 0;
        while (sent < bytes.size()) {
            const ssize_t count = ::send(m_socket.number(), bytes.data() + sent, static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
            if (count <= 0)
                return false;
            sent += count;
        }
        return true;
    }

    void finishSending() { ::shutdown(m_socket.number(), SHUT_WR); }

    /// All that comes until the other side closes.
    QByteArray answer()
    {
        QByteArray all;
        char buffer[4096];
        while (true) {
            const ssize_t count = ::recv(m_socket.number(), buffer, sizeof buffer, 0);
            if (count <= 0)
                return all;
            all.append(buffer, count);
        }
    }

private:
    orvanta::Descriptor m_socket;
    bool m_isConnected = false;
};

inline QByteArray hookPost(const QByteArray& body, const QByteArray& harness = "claude")
{
    return "POST /events HTTP/1.1\r\nHost: 127.0.0.1:47653\r\nUser-Agent: curl/7.88.1\r\nAccept: */*\r\nContent-Type: "
           "application/json\r\nX-Orvanta-Harness: "
        + harness + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}
