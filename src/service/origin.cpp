#include "service/origin.h"

#include <QHostAddress>

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

int effectivePort(const QUrl& url)
{
    return url.port(url.scheme() == "https"_L1 ? 443 : 80);
}

} // namespace

bool haveSameOrigin(const QUrl& left, const QUrl& right)
{
    return left.scheme() == right.scheme() && left.host() == right.host() && effectivePort(left) == effectivePort(right);
}

bool isOnLoopback(const QUrl& url)
{
    const QString host = url.host();
    if (host == "localhost"_L1)
        return true;
    QHostAddress address;
    return address.setAddress(host) && address.isLoopback();
}

bool isConfidential(const QUrl& url)
{
    return url.scheme() == "https"_L1 || (url.scheme() == "http"_L1 && isOnLoopback(url));
}

} // namespace orvanta
