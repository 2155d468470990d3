#include "service/authorities.h"

#include <QDebug>

namespace orvanta {

QList<QSslCertificate> additionalAuthorities()
{
    const QString path = qEnvironmentVariable("SSL_CERT_FILE");
    if (path.isEmpty())
        return {};
    QList<QSslCertificate> authorities = QSslCertificate::fromPath(path, QSsl::Pem, QSslCertificate::PatternSyntax::FixedString);
    if (authorities.isEmpty())
        qWarning("SSL_CERT_FILE names no certificate that can be read: %s", qUtf8Printable(path));
    return authorities;
}

} // namespace orvanta
