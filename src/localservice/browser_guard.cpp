#include "localservice/browser_guard.h"

#include "localservice/key_file.h"

#include <QUrl>

#include <algorithm>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

QString text(std::string_view bytes)
{
    return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

/// The name or address in "name:port", in lower case and without brackets; empty if it is not of that form.
QString hostName(std::string_view host)
{
    const QUrl url(u"http://"_s + text(host) + u'/', QUrl::StrictMode);
    if (!url.isValid() || !url.userInfo().isEmpty() || url.path() != "/"_L1 || url.hasQuery() || url.hasFragment())
        return {};
    return url.host();
}

bool isSameAddress(const QHostAddress& left, const QHostAddress& right)
{
    return left.isEqual(right, QHostAddress::TolerantConversion);
}

QByteArray formDecoded(QByteArray encoded)
{
    encoded.replace('+', ' ');
    return QByteArray::fromPercentEncoding(encoded);
}

} // namespace

bool isOwnHost(std::string_view host, const QHostAddress& local, const QStringList& names)
{
    const QString name = hostName(host);
    if (name.isEmpty())
        return false;
    if (name == "localhost"_L1 || names.contains(name, Qt::CaseInsensitive))
        return true;
    QHostAddress address;
    return address.setAddress(name) && (address.isLoopback() || isSameAddress(address, local));
}

bool isOwnOrigin(std::string_view origin, std::string_view host, Endpoints::Scheme scheme)
{
    const QString expected = (scheme == Endpoints::Scheme::https ? u"https://"_s : u"http://"_s) + text(host);
    return text(origin).compare(expected, Qt::CaseInsensitive) == 0;
}

bool hasBasicPassword(std::string_view authorization, const QByteArray& key)
{
    constexpr QByteArrayView scheme = "Basic ";
    const QByteArray value = QByteArray::fromStdString(std::string(authorization));
    if (value.first(std::min(scheme.size(), value.size())).compare(scheme, Qt::CaseInsensitive) != 0)
        return false;
    const QByteArray credentials = QByteArray::fromBase64(value.sliced(scheme.size()));
    const qsizetype colon = credentials.indexOf(':');
    return colon >= 0 && isSameSecret(credentials.sliced(colon + 1), key);
}

FormFields::FormFields(const QByteArray& body)
{
    for (const QByteArray& field : body.split('&')) {
        const qsizetype equals = field.indexOf('=');
        if (equals >= 0)
            m_fields.emplace_back(formDecoded(field.first(equals)), formDecoded(field.sliced(equals + 1)));
    }
}

QString FormFields::value(QByteArrayView name) const
{
    const auto found = std::ranges::find_if(m_fields, [&](const auto& field) { return field.first == name; });
    return found == m_fields.end() ? QString() : QString::fromUtf8(found->second);
}

} // namespace orvanta::localservice
