#include "service/network_url_session.h"

#include "service/http_transfer.h"
#include "service/origin.h"

#include <QCoreApplication>
#include <QNetworkProxyFactory>
#include <QPointer>
#include <QSet>
#include <QSslConfiguration>

#include <atomic>
#include <future>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

/// A connection that has been silent for longer may have died without a word, above all while the machine slept; using
/// it would cost a request its whole time-out. Polls come every few seconds, so in a waking machine it is never reached.
constexpr std::chrono::seconds longestSilence { 30 };

QString cancelledText()
{
    return QCoreApplication::translate("TransportError", "The request was cancelled");
}

/// Takes the first of the answers that two threads may give: the session's, and whoever asks to stop.
class FirstAnswer {
public:
    [[nodiscard]] std::future<UrlResult> result() { return m_promise.get_future(); }

    void give(UrlResult result)
    {
        if (!m_isGiven.exchange(true))
            m_promise.set_value(std::move(result));
    }

private:
    std::atomic<bool> m_isGiven = false;
    std::promise<UrlResult> m_promise;
};

class ProxiesExceptOnLoopback : public QNetworkProxyFactory {
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override
    {
        QUrl peer;
        peer.setHost(query.peerHostName());
        return isOnLoopback(peer) ? QList<QNetworkProxy> { QNetworkProxy::NoProxy } : systemProxyForQuery(query);
    }
};

/// A manager that goes once nothing holds it any more, and with `owner` at the latest.
std::shared_ptr<QNetworkAccessManager> makeManager(QObject* owner)
{
    auto* manager = new QNetworkAccessManager(owner);
    manager->setProxyFactory(new ProxiesExceptOnLoopback);
    // Not at once: the last transfer lets go from within a signal of one of the manager's replies.
    return { manager, [guard = QPointer(manager)](QNetworkAccessManager*) {
                if (guard)
                    guard->deleteLater();
            } };
}

std::shared_ptr<const QSslConfiguration> makeTls(const QList<QSslCertificate>& extraAuthorities)
{
    auto tls = std::make_shared<QSslConfiguration>(QSslConfiguration::defaultConfiguration());
    tls->setPeerVerifyMode(QSslSocket::VerifyPeer);
    if (extraAuthorities.isEmpty())
        return tls;
    // Naming any authority ends the look-up of the system's as they are needed: then all of them must be named. They
    // are listed once for each name that their file has.
    const QList<QSslCertificate> all = QSslConfiguration::systemCaCertificates() + extraAuthorities;
    tls->setCaCertificates(QSet<QSslCertificate>(all.begin(), all.end()).values());
    return tls;
}

} // namespace

/// The part of the session that lives in its thread: starts the transfers and owns them.
class NetworkUrlSession::Worker : public QObject {
public:
    Worker(Authorities extraAuthorities, WallClock now) : m_extraAuthorities(std::move(extraAuthorities)), m_now(std::move(now)) { }

    void start(HttpTransfer* transfer)
    {
        transfer->setParent(this);
        forgetSilentConnections();
        transfer->start(m_manager, m_tls);
    }

    void noteUse() { m_lastUse = m_now(); }

    void shutDown()
    {
        for (HttpTransfer* transfer : findChildren<HttpTransfer*>(Qt::FindDirectChildrenOnly))
            transfer->fail(cancelledText());
        m_manager.reset();
        thread()->quit();
    }

private:
    void forgetSilentConnections()
    {
        const auto now = m_now();
        const bool isFresh = now >= m_lastUse && now - m_lastUse <= longestSilence;
        m_lastUse = now;
        if (m_manager && isFresh)
            return;
        if (!m_tls)
            m_tls = makeTls(m_extraAuthorities ? m_extraAuthorities() : QList<QSslCertificate>());
        m_manager = makeManager(this);
    }

    Authorities m_extraAuthorities;
    WallClock m_now;
    std::chrono::system_clock::time_point m_lastUse;
    std::shared_ptr<const QSslConfiguration> m_tls;   ///< made for the first request, in this thread: it loads the TLS library
    std::shared_ptr<QNetworkAccessManager> m_manager; ///< made for the first request; old ones live on in their transfers
};

NetworkUrlSession::NetworkUrlSession(Authorities extraAuthorities, WallClock now) : m_worker(new Worker(std::move(extraAuthorities), std::move(now)))
{
    m_thread.setObjectName(u"url-session"_s);
    m_worker->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread.start();
}

NetworkUrlSession::~NetworkUrlSession()
{
    QMetaObject::invokeMethod(m_worker, [worker = m_worker] { worker->shutDown(); }, Qt::QueuedConnection);
    m_thread.wait();
}

void NetworkUrlSession::send(HttpRequest request, QObject* context, Callback<UrlResult> completed)
{
    auto* transfer = makeTransfer(std::move(request));
    // A connection to the context is what makes its death safe in another thread: Qt drops the answer under its own lock.
    QObject::connect(
        transfer, &HttpTransfer::completed, context,
        [completed = std::move(completed)](const UrlResult& result) mutable {
            auto once = std::move(completed); // and whatever it holds dies in the context's thread
            once(result);
        },
        Qt::QueuedConnection);
    start(transfer);
}

UrlResult NetworkUrlSession::sendAndWait(HttpRequest request, const std::stop_token& stop)
{
    auto* transfer = makeTransfer(std::move(request));
    const auto answer = std::make_shared<FirstAnswer>();
    std::future<UrlResult> result = answer->result();
    // Directly, in the session's thread: this one waits and runs no event loop.
    QObject::connect(transfer, &HttpTransfer::completed, transfer, [answer](const UrlResult& completed) { answer->give(completed); });
    const QPointer<HttpTransfer> guard(transfer);
    start(transfer);

    const std::stop_callback cancelled(stop, [this, &answer, &guard] {
        answer->give(std::unexpected(TransportError { cancelledText() }));
        QMetaObject::invokeMethod(
            m_worker,
            [guard] {
                if (guard)
                    guard->fail(cancelledText());
            },
            Qt::QueuedConnection);
    });
    return result.get();
}

/// Its use is noted before anybody hears of its end.
HttpTransfer* NetworkUrlSession::makeTransfer(HttpRequest request)
{
    auto* transfer = new HttpTransfer(std::move(request));
    QObject::connect(transfer, &HttpTransfer::completed, m_worker, [worker = m_worker] { worker->noteUse(); });
    return transfer;
}

void NetworkUrlSession::start(HttpTransfer* transfer)
{
    transfer->moveToThread(&m_thread);
    QMetaObject::invokeMethod(m_worker, [worker = m_worker, transfer] { worker->start(transfer); }, Qt::QueuedConnection);
}

} // namespace orvanta
