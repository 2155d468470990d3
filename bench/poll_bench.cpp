// Asks a service for the focus state again and again, and tells what that costs this process.
//
//   poll_bench ORIGIN [--polls N] [--pause MS] [--bare]
//
// The authority that the service's certificate needs is taken from the file that SSL_CERT_FILE names. With --bare the
// requests go out by QNetworkAccessManager alone, in the main thread: the least that Qt can do. Prints one line of JSON,
// "cpu_us" and "polls"; CPU time of all threads, without the first requests.
// Ends with status 1 if a poll fails.

#include "figures.h"
#include "service/focus_api_client.h"
#include "service/network_url_session.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSslConfiguration>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>

using namespace orvanta;
using namespace orvanta::bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int unmeasured = 5; // first requests: threads, certificates, a connection

QList<QSslCertificate> authorities()
{
    return QSslCertificate::fromPath(qEnvironmentVariable("SSL_CERT_FILE"), QSsl::Pem, QSslCertificate::PatternSyntax::FixedString);
}

/// Sends one poll and calls back with whether it was answered.
using Poll = std::function<void(std::function<void(bool)>)>;

Poll throughTheSession(NetworkUrlSession& session, const QUrl& origin)
{
    return [client = FocusAPIClient(session, origin, u"key"_s)](std::function<void(bool)> done) {
        client.fetchFocusState(qApp, [done = std::move(done)](const auto& answer) { done(answer.has_value()); });
    };
}

Poll byTheManagerAlone(QNetworkAccessManager& manager, const QUrl& origin)
{
    QNetworkRequest request(origin.resolved(QUrl(u"/api/focus-state"_s)));
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.addCaCertificates(authorities());
    request.setSslConfiguration(tls);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setRawHeader("Authorization", "Bearer key");
    request.setRawHeader("Accept", "application/json");
    return [&manager, request](const std::function<void(bool)>& done) {
        QNetworkReply* reply = manager.get(request);
        QObject::connect(reply, &QNetworkReply::finished, qApp, [reply, done] {
            const bool isAnswered = reply->error() == QNetworkReply::NoError && !reply->readAll().isEmpty();
            reply->deleteLater();
            done(isAnswered);
        });
    };
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const auto number = [&arguments](const QString& name, int otherwise) {
        const qsizetype at = arguments.indexOf(name);
        return at > 0 && at + 1 < arguments.size() ? arguments[at + 1].toInt() : otherwise;
    };
    const QUrl origin(arguments.value(1));
    const int polls = number(u"--polls"_s, 200);
    const int pause = number(u"--pause"_s, 10);
    if (!origin.isValid() || origin.isEmpty() || polls <= 0) {
        std::fputs("poll_bench: which service?\n", stderr);
        return 2;
    }

    NetworkUrlSession session(authorities);
    QNetworkAccessManager manager;
    const Poll poll = arguments.contains(u"--bare"_s) ? byTheManagerAlone(manager, origin) : throughTheSession(session, origin);

    int made = 0;
    double begin = 0;
    std::function<void()> next = [&] {
        if (made == unmeasured)
            begin = cpuMicroseconds();
        poll([&](bool isAnswered) {
            if (!isAnswered) {
                std::fputs("poll_bench: a poll failed\n", stderr);
                QCoreApplication::exit(EXIT_FAILURE);
            } else if (++made == unmeasured + polls) {
                std::printf("{\"cpu_us\": %.1f, \"polls\": %d}\n", (cpuMicroseconds() - begin) / polls, polls);
                QCoreApplication::exit(EXIT_SUCCESS);
            } else {
                QTimer::singleShot(pause, qApp, next);
            }
        });
    };
    QTimer::singleShot(0, qApp, next);
    return QCoreApplication::exec();
}
