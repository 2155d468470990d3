#include "service/http_transfer.h"

#include "service/redirect.h"
#include "service/single_use_body.h"

#include <QCoreApplication>
#include <QNetworkRequest>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

QString tooLarge()
{
    return QCoreApplication::translate("TransportError", "The answer is too large");
}

/// `value` as a header can carry it. A line break would end the header, and what follows would be read as headers of
/// its own; HTTP tells whoever meets one inside a value to take it as a space. A space at the end does not belong to
/// the value any more, so a key stored with a trailing line break works.
QByteArray wireValue(QByteArray value)
{
    return value.replace('\r', ' ').replace('\n', ' ').replace('\0', ' ');
}

QNetworkRequest networkRequest(const HttpRequest& request, const QSslConfiguration& tls)
{
    QNetworkRequest result(request.url);
    result.setSslConfiguration(tls);
    result.setRawHeader("User-Agent", "OrvantaFocus");
    for (const auto& [name, value] : request.headers)
        result.setRawHeader(name, wireValue(value));
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    result.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    // One small request at a time gains nothing from streams, and pays for their frames, settings and windows.
    result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    result.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    return result;
}

/// Whether a reply with this status and this error is a complete answer. QNetworkReply reports statuses from 400 on as
/// errors of their own, and a 307 or 308 as one when it would have to rewind the body for a repetition, which is ours.
bool isComplete(int statusCode, QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::NoError:
        return true;
    case QNetworkReply::ContentReSendError:
        return statusCode == 307 || statusCode == 308;
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::ContentAccessDenied:
    case QNetworkReply::ContentOperationNotPermittedError:
    case QNetworkReply::ContentNotFoundError:
    case QNetworkReply::AuthenticationRequiredError:
    case QNetworkReply::ContentConflictError:
    case QNetworkReply::ContentGoneError:
    case QNetworkReply::UnknownContentError:
    case QNetworkReply::ProtocolInvalidOperationError:
    case QNetworkReply::InternalServerError:
    case QNetworkReply::OperationNotImplementedError:
    case QNetworkReply::ServiceUnavailableError:
    case QNetworkReply::UnknownServerError:
        return statusCode >= 400; // below, the same errors speak of a body that could not be unpacked
    default:
        return false;
    }
}

QString description(QNetworkReply::NetworkError error, const QString& text)
{
    // The second is what a request with a body makes of the first, see SingleUseBody.
    if (error == QNetworkReply::RemoteHostClosedError || error == QNetworkReply::ContentReSendError)
        return QCoreApplication::translate("TransportError", "The connection was lost");
    return text;
}

} // namespace

HttpTransfer::HttpTransfer(HttpRequest request) : m_request(std::move(request)), m_deadline(this)
{
    m_deadline.setSingleShot(true);
    m_deadline.setTimerType(Qt::PreciseTimer); // a coarse one may end a request a twentieth early
    m_deadline.callOnTimeout(this, [this] { fail(QCoreApplication::translate("TransportError", "The request timed out")); });
}

void HttpTransfer::start(std::shared_ptr<QNetworkAccessManager> manager, std::shared_ptr<const QSslConfiguration> tls)
{
    m_manager = std::move(manager);
    m_tls = std::move(tls);
    if (m_request.url.scheme() != "https"_L1 && m_request.url.scheme() != "http"_L1)
        return fail(QCoreApplication::translate("TransportError", "Only https and http addresses can be reached"));
    m_deadline.start(m_request.timeout);
    sendRequest();
}

void HttpTransfer::fail(const QString& description)
{
    finish(std::unexpected(TransportError { description }));
}

void HttpTransfer::sendRequest()
{
    const QNetworkRequest request = networkRequest(m_request, *m_tls);
    if (m_request.body) {
        auto* body = new SingleUseBody(*m_request.body, nullptr);
        m_reply = m_manager->sendCustomRequest(request, m_request.method, body);
        body->setParent(m_reply);
    } else if (m_request.method == "GET") {
        m_reply = m_manager->get(request);
    } else {
        m_reply = m_manager->sendCustomRequest(request, m_request.method);
    }
    connect(m_reply, &QNetworkReply::finished, this, &HttpTransfer::takeAnswer);
    connect(m_reply, &QNetworkReply::readyRead, this, [this] {
        if (m_reply->bytesAvailable() > largestBody)
            fail(tooLarge());
    });
}

void HttpTransfer::takeAnswer()
{
    const QVariant status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const int statusCode = status.toInt();
    if (!status.isValid() || !isComplete(statusCode, m_reply->error()))
        return fail(description(m_reply->error(), m_reply->errorString()));

    const QByteArray header = "Location";
    auto next = redirected(m_request, statusCode, m_reply->hasRawHeader(header) ? std::optional(m_reply->rawHeader(header)) : std::nullopt);
    if (!next)
        return finish(std::unexpected(std::move(next).error()));
    if (*next)
        return follow(**std::move(next));

    // A packed body grows while it is read, so what has come does not tell its size.
    QByteArray body = m_reply->read(largestBody + 1);
    if (body.size() > largestBody)
        return fail(tooLarge());
    finish(UrlResponse { .statusCode = statusCode, .body = std::move(body) });
}

void HttpTransfer::follow(HttpRequest next)
{
    if (++m_redirects > mostRedirects)
        return fail(QCoreApplication::translate("TransportError", "The service redirected too many times"));
    m_reply->disconnect(this);
    m_reply->deleteLater();
    m_request = std::move(next);
    sendRequest();
}

void HttpTransfer::finish(UrlResult result)
{
    if (std::exchange(m_isDone, true))
        return;
    m_deadline.stop();
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->deleteLater(); // which ends whatever is still under way
    }
    Q_EMIT completed(result);
    deleteLater();
}

} // namespace orvanta
