#pragma once

#include "localservice/http_server.h"

#include <QStringList>

#include <expected>

namespace orvanta::localservice {

/// What the service shows to clients that come by HTTPS.
struct TlsIdentity {
    HttpServer::Encryption encryption;
    QStringList names; ///< the host names that the certificate vouches for
};

/// Reads a certificate (with its chain after it) and its unencrypted RSA or EC private key, both PEM. Fails with a line
/// for the person.
[[nodiscard]] std::expected<TlsIdentity, QString> readTlsIdentity(const QString& certificateFile, const QString& privateKeyFile);

} // namespace orvanta::localservice
