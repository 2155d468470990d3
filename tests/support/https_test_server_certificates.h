#pragma once

#include <QByteArray>
#include <QSslCertificate>
#include <QSslKey>

#include <memory>

namespace orvanta::testing {

/// What a server proves itself with.
struct ServerIdentity {
    QSslCertificate certificate;
    QSslKey key;
};

enum class Validity {
    current, ///< from an hour ago until an hour from now
    expired, ///< ended an hour ago
};

/// A certificate authority made for one test run and forgotten with it. Nothing that it signs can grow too old.
class TestAuthority {
public:
    TestAuthority();
    ~TestAuthority();
    TestAuthority(const TestAuthority&) = delete;
    TestAuthority& operator=(const TestAuthority&) = delete;

    /// What a client has to trust.
    [[nodiscard]] QSslCertificate certificate() const;

    /// A server certificate for `names`, written as OpenSSL takes a subjectAltName.
    [[nodiscard]] ServerIdentity issue(const QByteArray& names = "DNS:localhost,IP:127.0.0.1,IP:::1", Validity validity = Validity::current) const;

    /// A server certificate for this machine that nobody but itself vouches for.
    [[nodiscard]] static ServerIdentity selfSigned();

private:
    struct Pair;
    std::unique_ptr<Pair> m_pair;
};

} // namespace orvanta::testing
