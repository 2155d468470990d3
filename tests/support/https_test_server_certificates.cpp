#include "support/https_test_server_certificates.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <QtGlobal>

namespace orvanta::testing {

namespace {

template <auto release>
struct Release {
    template <typename T>
    void operator()(T* object) const
    {
        release(object);
    }
};

using Key = std::unique_ptr<EVP_PKEY, Release<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Release<X509_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, Release<X509_EXTENSION_free>>;
using Bio = std::unique_ptr<BIO, Release<BIO_free>>;

constexpr long hour = 3600;

void must(bool succeeded, const char* what)
{
    if (!succeeded)
        qFatal("test certificates: %s failed", what);
}

Key makeKey()
{
    Key key(EVP_EC_gen("P-256"));
    must(key != nullptr, "EVP_EC_gen");
    return key;
}

void addExtension(X509* certificate, X509* issuer, int kind, const char* value)
{
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value));
    must(extension && X509_add_ext(certificate, extension.get(), -1) == 1, value);
}

/// A certificate that lacks only its extensions and its signature.
Certificate makeCertificate(const char* commonName, EVP_PKEY* key, const X509* issuer, Validity validity)
{
    Certificate certificate(X509_new());
    std::uint64_t serial = 0;
    must(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial) == 1, "RAND_bytes");
    const long end = validity == Validity::current ? hour : -hour;
    X509_NAME* name = X509_get_subject_name(certificate.get());
    must(X509_set_version(certificate.get(), X509_VERSION_3) == 1 && ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()), serial) == 1
            && X509_gmtime_adj(X509_getm_notBefore(certificate.get()), end - 2 * hour) && X509_gmtime_adj(X509_getm_notAfter(certificate.get()), end)
            && X509_set_pubkey(certificate.get(), key) == 1
            && X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8, reinterpret_cast<const unsigned char*>(commonName), -1, -1, 0) == 1
            && X509_set_issuer_name(certificate.get(), issuer ? X509_get_subject_name(issuer) : name) == 1,
        "making a certificate");
    return certificate;
}

QByteArray contents(BIO* bio)
{
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    return QByteArray(data, size);
}

QSslCertificate toQt(X509* certificate)
{
    const Bio bio(BIO_new(BIO_s_mem()));
    must(PEM_write_bio_X509(bio.get(), certificate) == 1, "PEM_write_bio_X509");
    return QSslCertificate(contents(bio.get()));
}

QSslKey toQt(EVP_PKEY* key)
{
    const Bio bio(BIO_new(BIO_s_mem()));
    must(PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr) == 1, "PEM_write_bio_PrivateKey");
    return QSslKey(contents(bio.get()), QSsl::Ec);
}

ServerIdentity serverIdentity(const QByteArray& names, Validity validity, X509* issuer, EVP_PKEY* issuerKey)
{
    const Key key = makeKey();
    const Certificate certificate = makeCertificate("Test server", key.get(), issuer, validity);
    addExtension(certificate.get(), issuer ? issuer : certificate.get(), NID_subject_alt_name, names.constData());
    must(X509_sign(certificate.get(), issuerKey ? issuerKey : key.get(), EVP_sha256()) != 0, "X509_sign");
    return { toQt(certificate.get()), toQt(key.get()) };
}

} // namespace

struct TestAuthority::Pair {
    Key key = makeKey();
    Certificate certificate = makeCertificate("Test authority", key.get(), nullptr, Validity::current);
};

TestAuthority::TestAuthority() : m_pair(std::make_unique<Pair>())
{
    X509* const certificate = m_pair->certificate.get();
    addExtension(certificate, certificate, NID_basic_constraints, "critical,CA:TRUE");
    addExtension(certificate, certificate, NID_key_usage, "critical,keyCertSign");
    addExtension(certificate, certificate, NID_subject_key_identifier, "hash");
    must(X509_sign(certificate, m_pair->key.get(), EVP_sha256()) != 0, "X509_sign");
}

TestAuthority::~TestAuthority() = default;

QSslCertificate TestAuthority::certificate() const
{
    return toQt(m_pair->certificate.get());
}

ServerIdentity TestAuthority::issue(const QByteArray& names, Validity validity) const
{
    return serverIdentity(names, validity, m_pair->certificate.get(), m_pair->key.get());
}

ServerIdentity TestAuthority::selfSigned()
{
    return serverIdentity("DNS:localhost,IP:127.0.0.1", Validity::current, nullptr, nullptr);
}

} // namespace orvanta::testing
