#pragma once

#include <QList>
#include <QSslCertificate>

namespace orvanta {

/// The certificate authorities that the user trusts beside the system's: those of the file that the environment variable
/// SSL_CERT_FILE names, as other TLS programs take it. A file without any is reported on standard error.
[[nodiscard]] QList<QSslCertificate> additionalAuthorities();

} // namespace orvanta
