#pragma once

#include "localservice/http_exchange.h"

#include <QStringList>

namespace orvanta::localservice {

// The pages have no log-in, so these rules stand between them and every web site that the same browser shows.

/// Whether a Host header names this service: a loopback name or address, the address at which the connection arrived, or
/// one of `names` (those of its certificate). Any other name is a stranger's that was made to point here.
[[nodiscard]] bool isOwnHost(std::string_view host, const QHostAddress& local, const QStringList& names);

/// Whether an Origin header is that of this service's own pages, reached under `host`.
[[nodiscard]] bool isOwnOrigin(std::string_view origin, std::string_view host, Endpoints::Scheme scheme);

/// Whether an Authorization header is a Basic one whose password is `key`, whatever the user name.
[[nodiscard]] bool hasBasicPassword(std::string_view authorization, const QByteArray& key);

/// The fields of an application/x-www-form-urlencoded body; the first of two with one name counts.
class FormFields {
public:
    explicit FormFields(const QByteArray& body);

    /// The decoded value; empty if there is no such field.
    [[nodiscard]] QString value(QByteArrayView name) const;

private:
    std::vector<std::pair<QByteArray, QByteArray>> m_fields;
};

} // namespace orvanta::localservice
