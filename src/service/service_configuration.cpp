#include "service/service_configuration.h"

#include "service/origin.h"

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;

/// What keeps `url` from being an origin that a key may be sent to; absent if nothing does. The text never repeats
/// user information, which may hold a password.
std::optional<QString> objection(const QString& text, const QUrl& url)
{
    if (text.isEmpty())
        return u"is empty"_s;
    if (!url.isValid() || url.isRelative())
        return u"is not a URL; an origin such as https://host is needed"_s;
    if (url.scheme() != "https"_L1 && url.scheme() != "http"_L1)
        return u"must begin with https://, not with %1:"_s.arg(url.scheme());
    if (url.host().isEmpty())
        return u"names no host"_s;
    if (url.authority(QUrl::FullyEncoded).contains(u'@'))
        return u"must not hold a user name or a password"_s;
    if (url.port() == 0)
        return u"must not name port 0"_s;
    if (!isConfidential(url))
        return u"must begin with https://; http:// is taken only on a loopback address, and %1 is none"_s.arg(url.host());
    if (url.hasQuery())
        return u"must not hold a query"_s;
    if (url.hasFragment())
        return u"must not hold a fragment"_s;
    if (!url.path().isEmpty() && url.path() != "/"_L1)
        return u"must be an origin alone, without the path %1"_s.arg(url.path(QUrl::FullyEncoded));
    return std::nullopt;
}

QUrl page(const QUrl& origin, const QString& path)
{
    QUrl url = origin;
    url.setPath(path);
    return url;
}

} // namespace

std::expected<ServiceConfiguration, QString> ServiceConfiguration::make(const QString& builtInOrigin, const std::optional<QString>& override)
{
    const QString& text = override ? *override : builtInOrigin;
    const QUrl url(text, QUrl::StrictMode);

    std::optional<QString> found = objection(text, url);
    if (!found && !override && url.scheme() != "https"_L1)
        found = u"must begin with https://"_s;
    if (found)
        return std::unexpected((override ? u"ORVANTA_SERVICE_ORIGIN "_s : u"the built-in service origin "_s) + *found);

    const QUrl origin = page(url, QString());
    return ServiceConfiguration {
        .origin = origin, .activityEndpoint = page(origin, u"/api/activity"_s), .blockedPage = page(origin, u"/focus/blocked"_s)
    };
}

} // namespace orvanta
