#pragma once

#include "support/https_test_server_certificates.h"

#include <QByteArray>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace orvanta::testing {

/// One request as it came over the wire.
struct ReceivedRequest {
    QByteArray head; ///< everything before the empty line, byte for byte
    QByteArray method;
    QByteArray target;
    QByteArray body;

    /// The values of every header called `name`, in any case.
    [[nodiscard]] QList<QByteArray> headers(const QByteArray& name) const;
};

/// The bytes that answer a request, and what becomes of the connection after them.
struct RawAnswer {
    enum class Then { keepOpen, close, abort };

    QByteArray bytes;
    Then then = Then::keepOpen;
};

/// A well-formed answer.
[[nodiscard]] RawAnswer answer(int statusCode, const QByteArray& body = {}, const QByteArray& extraHeaders = {});

/// How many threads of network sessions this process still has. They end a moment after their sessions; a process that
/// ends before them looks to the leak checker as if their TLS library's memory had been lost.
[[nodiscard]] int networkThreads();

/// A real HTTP server on 127.0.0.1, over TLS if it is given an identity, that answers whatever bytes its script says.
/// It keeps connections open unless told otherwise, and counts them. Lives in the test's thread, whose event loop it needs.
class HttpsTestServer : public QTcpServer {
public:
    /// Gives the answer to a request; absent: the server stays silent.
    using Script = std::function<std::optional<RawAnswer>(const ReceivedRequest&)>;

    HttpsTestServer(std::optional<ServerIdentity> identity, Script script);

    [[nodiscard]] QUrl url(const QString& path = QString()) const;

    [[nodiscard]] const std::vector<ReceivedRequest>& requests() const { return m_requests; }
    [[nodiscard]] int connections() const { return m_connections; } ///< accepted so far
    [[nodiscard]] int handshakes() const { return m_handshakes; }   ///< TLS handshakes completed so far
    [[nodiscard]] int openConnections() const;

    /// Writes `bytes` to every open connection that is past its handshake.
    void push(const QByteArray& bytes);

    /// Closes every connection, as a server does that has waited too long for the next request.
    void closeConnections();

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    void receive(QTcpSocket* socket);

    std::optional<ServerIdentity> m_identity;
    Script m_script;
    std::vector<ReceivedRequest> m_requests;
    int m_connections = 0;
    int m_handshakes = 0;
};

} // namespace orvanta::testing
