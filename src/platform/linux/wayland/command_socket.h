#pragma once

#include <QByteArray>

#include <cstdint>

namespace orvanta {

/// A connection to a local socket that answers commands. A word that is begun is waited for, for a second at most.
class CommandSocket {
public:
    explicit CommandSocket(const QByteArray& path);
    ~CommandSocket();
    CommandSocket(const CommandSocket&) = delete;
    CommandSocket& operator=(const CommandSocket&) = delete;

    [[nodiscard]] bool isConnected() const { return m_isConnected; }
    [[nodiscard]] int descriptor() const { return m_socket; }
    /// Whether there is something to read, or the other end has gone.
    [[nodiscard]] bool isReadable() const;

    bool send(const QByteArray& bytes);
    /// That many bytes; fewer if no more come, after which nothing more is read.
    QByteArray read(std::uint32_t count);

private:
    int m_socket;
    bool m_isConnected = false;
};

/// Whether a socket stands at the path.
[[nodiscard]] bool isSocket(const QByteArray& path);

} // namespace orvanta
