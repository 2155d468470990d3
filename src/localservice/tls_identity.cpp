#include "localservice/tls_identity.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslKey>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

std::expected<QByteArray, QString> contentOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::unexpected(u"%1 cannot be read: %2"_s.arg(path, file.errorString()));
    return file.readAll();
}

} // namespace

std::expected<TlsIdentity, QString> readTlsIdentity(const QString& certificateFile, const QString& privateKeyFile)
{
    const auto certificatePem = contentOf(certificateFile);
    if (!certificatePem)
        return std::unexpected(certificatePem.error());
    const auto keyPem = contentOf(privateKeyFile);
    if (!keyPem)
        return std::unexpected(keyPem.error());

    const QList<QSslCertificate> chain = QSslCertificate::fromData(*certificatePem, QSsl::Pem);
    if (chain.isEmpty())
        return std::unexpected(u"%1 holds no certificate in PEM form"_s.arg(certificateFile));
    QSslKey key(*keyPem, QSsl::Rsa);
    if (key.isNull())
        key = QSslKey(*keyPem, QSsl::Ec);
    if (key.isNull())
        return std::unexpected(u"%1 holds no unencrypted RSA or EC private key in PEM form"_s.arg(privateKeyFile));
    if (key.algorithm() != chain.first().publicKey().algorithm() || key.length() != chain.first().publicKey().length())
        return std::unexpected(u"The private key in %1 is not that of the certificate"_s.arg(privateKeyFile));

    TlsIdentity identity;
    identity.encryption = { .certificateChain = *certificatePem, .privateKey = *keyPem };
    identity.names = chain.first().subjectAlternativeNames().values(QSsl::DnsEntry);
    return identity;
}

} // namespace orvanta::localservice
