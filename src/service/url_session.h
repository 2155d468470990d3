#pragma once

#include "platform/callback.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

#include <chrono>
#include <expected>
#include <optional>
#include <stop_token>
#include <utility>
#include <vector>

namespace orvanta {

/// One HTTP request. Header names and values go out as they stand, but for line breaks and NUL in a value: HTTP cannot
/// carry them, and a session puts a space in their place.
struct HttpRequest {
    QUrl url;
    QByteArray method = "GET";
    std::vector<std::pair<QByteArray, QByteArray>> headers = {};
    std::optional<QByteArray> body = {};
    std::chrono::milliseconds timeout = std::chrono::seconds { 60 }; ///< for the whole, until the last byte has come

    bool operator==(const HttpRequest&) const = default;
};

/// A complete answer. `statusCode` is absent when what answered was not HTTP.
struct UrlResponse {
    std::optional<int> statusCode = {};
    QByteArray body = {};

    bool operator==(const UrlResponse&) const = default;
};

/// No complete answer: refused, lost, timed out, or a certificate that does not hold. The text can be shown as it is.
struct TransportError {
    QString description;

    bool operator==(const TransportError&) const = default;
};

using UrlResult = std::expected<UrlResponse, TransportError>;

/// Sends requests and keeps connections for the next. One instance serves the whole process, from any thread.
/// Certificates are always verified. A redirect within the origin is followed; one that leaves the origin is
/// followed without the "Authorization" header; one from https to http is an error.
class UrlSession {
public:
    virtual ~UrlSession() = default;

    /// Sends `request` and calls `completed` once, from the event loop of `context`'s thread. If `context` is gone by
    /// then, the answer is dropped.
    virtual void send(HttpRequest request, QObject* context, Callback<UrlResult> completed) = 0;

    /// Sends `request` and blocks the calling thread, which needs no event loop, until the answer is there. When `stop` is
    /// requested it returns at once with a TransportError, and the request is given up. Not for the main thread.
    [[nodiscard]] virtual UrlResult sendAndWait(HttpRequest request, const std::stop_token& stop) = 0;
};

} // namespace orvanta
