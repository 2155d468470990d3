#pragma once

#include "service/url_session.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QSslConfiguration>
#include <QTimer>

#include <memory>

namespace orvanta {

/// A body above this is a failure: no answer of the service comes near it.
inline constexpr qint64 largestBody = qint64 { 16 } * 1024 * 1024;

/// One request of a NetworkUrlSession, from the first byte to the complete answer, redirects included. Made in the
/// caller's thread, then moved to the session's, where everything else happens. Deletes itself after `completed`.
class HttpTransfer : public QObject {
    Q_OBJECT

public:
    explicit HttpTransfer(HttpRequest request);

    /// Sends the request. The transfer holds on to `manager` until it is done.
    void start(std::shared_ptr<QNetworkAccessManager> manager, std::shared_ptr<const QSslConfiguration> tls);

    /// Ends the transfer as a failure with `description`, unless it is done.
    void fail(const QString& description);

Q_SIGNALS:
    /// Emitted once.
    void completed(const orvanta::UrlResult& result);

private:
    void sendRequest();
    void takeAnswer();
    void follow(HttpRequest next);
    void finish(UrlResult result);

    HttpRequest m_request;
    QTimer m_deadline; ///< for the whole, redirects included
    std::shared_ptr<QNetworkAccessManager> m_manager;
    std::shared_ptr<const QSslConfiguration> m_tls; ///< null until the start: even an empty one loads the TLS library
    QNetworkReply* m_reply = nullptr;               ///< owned by the manager until it is let go
    int m_redirects = 0;
    bool m_isDone = false;
};

} // namespace orvanta
