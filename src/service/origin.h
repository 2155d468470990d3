#pragma once

#include <QUrl>

namespace orvanta {

/// True when both have the same scheme, host and port, a default port being the same as none.
[[nodiscard]] bool haveSameOrigin(const QUrl& left, const QUrl& right);

/// True when the host can only be this machine: "localhost", or an address of 127.0.0.0/8 or ::1. No name is looked up.
[[nodiscard]] bool isOnLoopback(const QUrl& url);

/// True for https, and for http that does not leave this machine: what may carry a key.
[[nodiscard]] bool isConfidential(const QUrl& url);

} // namespace orvanta
