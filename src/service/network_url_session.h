#pragma once

#include "service/url_session.h"

#include <QList>
#include <QSslCertificate>
#include <QThread>

#include <chrono>
#include <functional>

namespace orvanta {

class HttpTransfer;

/// The URL session of the process, on QNetworkAccessManager in a thread of its own. Made by main, and outlives whatever
/// sends through it. Connections are kept for the next request; there are no cookies and no cache. Nothing runs while
/// nothing is asked for. The system's proxies are used, but never for a loopback address.
///
/// A GET whose kept connection turns out to be dead is sent again at once; a request with a body never is. A line break
/// in a header value, which HTTP cannot carry, goes out as a space.
class NetworkUrlSession final : public UrlSession {
public:
    using WallClock = std::function<std::chrono::system_clock::time_point()>;
    using Authorities = std::function<QList<QSslCertificate>()>;

    /// What `extraAuthorities` returns, if it is given, is trusted beside the system's. It is asked once, for the first
    /// request: reading certificates takes longer than showing a window. `now` must go on while the machine sleeps. Both
    /// are called in the session's thread.
    explicit NetworkUrlSession(Authorities extraAuthorities = nullptr, WallClock now = std::chrono::system_clock::now);

    /// Ends what is under way: each such request completes with a TransportError. Does not wait for any network.
    ~NetworkUrlSession() override;

    NetworkUrlSession(const NetworkUrlSession&) = delete;
    NetworkUrlSession& operator=(const NetworkUrlSession&) = delete;

    void send(HttpRequest request, QObject* context, Callback<UrlResult> completed) override;
    [[nodiscard]] UrlResult sendAndWait(HttpRequest request, const std::stop_token& stop) override;

private:
    class Worker;

    /// Has `transfer`, which is connected to whoever wants to hear of it, started in the session's thread.
    [[nodiscard]] HttpTransfer* makeTransfer(HttpRequest request);
    void start(HttpTransfer* transfer);

    QThread m_thread;
    Worker* m_worker; ///< lives in m_thread and is deleted there
};

} // namespace orvanta
