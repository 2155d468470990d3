#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QHostAddress>
#include <QMap>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>
#include <memory>
#include <optional>

/// A client that says exactly what a test tells it to. It lets the event loop run while it waits, so that the server may
/// live on the same thread. Every wait gives up after a minute.
class HttpClient {
public:
    struct Reply {
        int status = 0;
        QMap<QByteArray, QByteArray> headers; ///< names in lower case
        QByteArray body;
    };

    /// A reply that may not have come. To look into one that has not ends the test.
    class Answer {
    public:
        Answer() = default;
        explicit Answer(Reply reply) : m_reply(std::make_shared<Reply>(std::move(reply))) { }

        [[nodiscard]] bool has_value() const { return m_reply != nullptr; }
        explicit operator bool() const { return has_value(); }
        const Reply* operator->() const
        {
            if (!m_reply)
                qFatal("There is no answer");
            return m_reply.get();
        }

    private:
        std::shared_ptr<const Reply> m_reply;
    };

    explicit HttpClient(quint16 port) : HttpClient(std::make_unique<QTcpSocket>(), port) { }
    HttpClient(std::unique_ptr<QTcpSocket> socket, quint16 port) : m_socket(std::move(socket))
    {
        m_socket->connectToHost(QHostAddress::LocalHost, port);
        waitUntil([this] { return m_socket->state() == QAbstractSocket::ConnectedState; });
    }

    QTcpSocket& socket() { return *m_socket; }

    void send(const QByteArray& bytes) { m_socket->write(bytes); }

    /// The next answer; absent if the connection ends or nothing comes.
    Answer receive(const QByteArray& method = "GET")
    {
        waitUntil([this] { return takeInput() || m_input.contains("\r\n\r\n"); });
        const qsizetype end = m_input.indexOf("\r\n\r\n");
        if (end < 0)
            return {};
        Reply reply;
        const QList<QByteArray> lines = m_input.first(end).split('\n');
        reply.status = lines.first().split(' ').value(1).toInt();
        for (const QByteArray& line : lines.sliced(1)) {
            const qsizetype colon = line.indexOf(':');
            reply.headers.insert(line.first(colon).trimmed().toLower(), line.sliced(colon + 1).trimmed());
        }
        m_input.remove(0, end + 4);
        if (reply.headers.value("transfer-encoding") == "chunked") {
            const bool isWhole = receiveChunks(reply.body);
            return isWhole ? Answer(std::move(reply)) : Answer();
        }
        const qsizetype length = method == "HEAD" ? 0 : reply.headers.value("content-length").toInt();
        waitUntil([&] { return takeInput() || m_input.size() >= length; });
        if (m_input.size() < length)
            return {};
        reply.body = m_input.first(length);
        m_input.remove(0, length);
        return Answer(std::move(reply));
    }

    /// Whether the other side closes the connection.
    bool isClosedByPeer()
    {
        return waitUntil([this] { return takeInput(); });
    }

    /// Lets the event loop run until `condition` holds, without the pauses that QTest::qWaitFor makes between its looks.
    template <typename Condition>
    static bool waitUntil(Condition condition)
    {
        QTimer wake; // for conditions that no event of this process tells of
        wake.start(std::chrono::milliseconds { 20 });
        const QDeadlineTimer deadline(std::chrono::seconds { 60 });
        while (!condition()) {
            if (deadline.hasExpired())
                return false;
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return true;
    }

private:
    /// A body of chunks, each with its size before it; whether it came to its end.
    bool receiveChunks(QByteArray& body)
    {
        while (true) {
            waitUntil([this] { return takeInput() || m_input.contains("\r\n"); });
            const qsizetype line = m_input.indexOf("\r\n");
            bool isNumber = false;
            const qsizetype size = line < 0 ? 0 : m_input.first(line).toLongLong(&isNumber, 16);
            if (!isNumber)
                return false;
            const qsizetype whole = line + 2 + size + 2;
            waitUntil([this, whole] { return takeInput() || m_input.size() >= whole; });
            if (m_input.size() < whole)
                return false;
            body += m_input.sliced(line + 2, size);
            m_input.remove(0, whole);
            if (size == 0)
                return true;
        }
    }

    /// Takes what has arrived; true once nothing more will come.
    bool takeInput()
    {
        m_input += m_socket->readAll();
        return m_socket->state() == QAbstractSocket::UnconnectedState;
    }

    std::unique_ptr<QTcpSocket> m_socket;
    QByteArray m_input;
};

/// A request as common clients write it.
inline QByteArray requestBytes(
    const QByteArray& method, const QByteArray& path, const QList<QByteArray>& headers = {}, const std::optional<QByteArray>& body = std::nullopt)
{
    QByteArray bytes = method + ' ' + path + " HTTP/1.1\r\n";
    bool hasHost = false;
    for (const QByteArray& header : headers) {
        bytes += header + "\r\n";
        hasHost = hasHost || header.startsWith("Host:");
    }
    if (!hasHost)
        bytes += "Host: localhost\r\n";
    if (body)
        bytes += "Content-Length: " + QByteArray::number(body->size()) + "\r\n";
    return bytes + "\r\n" + body.value_or(QByteArray());
}

/// One request on a connection of its own.
inline HttpClient::Answer exchange(quint16 port, const QByteArray& method, const QByteArray& path, const QList<QByteArray>& headers = {},
    const std::optional<QByteArray>& body = std::nullopt)
{
    HttpClient client(port);
    client.send(requestBytes(method, path, headers, body));
    return client.receive(method);
}
