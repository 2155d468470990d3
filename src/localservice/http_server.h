#pragma once

#include "localservice/http_exchange.h"

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <expected>
#include <memory>
#include <optional>

class QSocketNotifier;
struct MHD_Daemon;

namespace orvanta::localservice {

/// Listens for HTTP clients and answers them from the thread that made it, one request at a time. The protocol is
/// libmicrohttpd's; it works within this thread's event loop.
class HttpServer : public QObject {
    Q_OBJECT

public:
    /// A certificate, with its chain after it, and its unencrypted private key, both as PEM.
    struct Encryption {
        QByteArray certificateChain;
        QByteArray privateKey;
    };

    /// `handler` must outlive the server. A connection on which nothing happens for `patience` is closed; the default
    /// is well above the minute between two uploads of activity.
    explicit HttpServer(RequestHandler& handler, std::chrono::seconds patience = std::chrono::seconds { 150 });
    ~HttpServer() override;

    /// Starts to listen; port 0 stands for any free one. With `encryption` it speaks HTTPS alone. Fails with a line
    /// for the person.
    [[nodiscard]] std::expected<void, QString> listen(
        const QHostAddress& address, quint16 port, const std::optional<Encryption>& encryption = std::nullopt);

    /// Where it can be reached, for instance "http://127.0.0.1:47700".
    [[nodiscard]] QString origin() const;
    [[nodiscard]] quint16 port() const { return m_port; }

    struct Service; ///< what each request is given; known to the implementation alone

private:
    struct StopDaemon {
        void operator()(MHD_Daemon* daemon) const;
    };

    void work();

    RequestHandler& m_handler;
    std::chrono::seconds m_patience;
    Endpoints::Scheme m_scheme = Endpoints::Scheme::http;
    std::unique_ptr<Service> m_service;
    QHostAddress m_address;
    quint16 m_port = 0;
    std::unique_ptr<MHD_Daemon, StopDaemon> m_daemon;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QTimer m_deadline; ///< of the connection that is to be closed next
};

} // namespace orvanta::localservice
