#include "service/redirect.h"

#include "service/origin.h"

#include <QCoreApplication>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

bool isRedirect(int statusCode)
{
    return statusCode == 301 || statusCode == 302 || statusCode == 303 || statusCode == 307 || statusCode == 308;
}

bool becomesGet(const QByteArray& method, int statusCode)
{
    switch (statusCode) {
    case 301:
    case 302:
        return method == "POST";
    case 303:
        return method != "GET" && method != "HEAD";
    default:
        return false;
    }
}

template <typename Unwanted>
void dropHeaders(HttpRequest& request, Unwanted isUnwanted)
{
    std::erase_if(request.headers, [&](const auto& header) { return isUnwanted(header.first.toLower()); });
}

} // namespace

std::expected<std::optional<HttpRequest>, TransportError> redirected(
    const HttpRequest& request, int statusCode, const std::optional<QByteArray>& location)
{
    if (!isRedirect(statusCode) || !location || location->isEmpty())
        return std::nullopt;
    const QUrl relative = QUrl::fromEncoded(*location);
    if (!relative.isValid() || relative.isEmpty())
        return std::nullopt;

    HttpRequest next = request;
    next.url = request.url.resolved(relative);
    next.url.setUserInfo(QString()); // otherwise the redirecting side would choose what we authenticate with
    if (next.url.scheme() != "https"_L1 && next.url.scheme() != "http"_L1)
        return std::unexpected(
            TransportError { QCoreApplication::translate("TransportError", "The service redirected to an address that is neither https nor http") });
    const bool losesEncryption = request.url.scheme() == "https"_L1 && next.url.scheme() == "http"_L1;
    if (losesEncryption || !isConfidential(next.url))
        return std::unexpected(
            TransportError { QCoreApplication::translate("TransportError", "The service redirected to an address that is not encrypted") });

    if (!haveSameOrigin(request.url, next.url))
        dropHeaders(next, [](const QByteArray& name) { return name == "authorization"; });
    if (becomesGet(request.method, statusCode)) {
        next.method = "GET";
        next.body.reset();
        dropHeaders(next, [](const QByteArray& name) { return name.startsWith("content-"); });
    }
    return next;
}

} // namespace orvanta
