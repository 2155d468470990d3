#pragma once

#include "localservice/request_head.h"

#include <QByteArray>
#include <QHostAddress>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace orvanta::localservice {

/// The two ends of the connection that a request came by.
struct Endpoints {
    enum class Scheme : std::uint8_t { http, https };

    QHostAddress peer;
    QHostAddress local;
    Scheme scheme = Scheme::http;
};

struct Request {
    RequestHead head;
    Endpoints endpoints;
    QByteArray body;
};

/// A body that is made while it is sent. Owned by the answer that it belongs to; used on the server's thread.
class BodyPieces {
public:
    virtual ~BodyPieces() = default;

    /// The next piece, when the one before has been sent; empty after the last. Absent if it cannot be made: the connection
    /// is then cut off, so that nobody takes the half for the whole.
    [[nodiscard]] virtual std::optional<QByteArray> next() = 0;
};

/// An answer. Length, date and connection headers are added when it is sent.
struct Response {
    int status = 200;
    QByteArray contentType; ///< no header if empty
    QByteArray body;
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    std::shared_ptr<BodyPieces> pieces = nullptr; ///< in place of `body`
};

/// What the server asks about each request. Called from the server's thread; owned by whoever made the server, and
/// outlives it.
class RequestHandler {
public:
    virtual ~RequestHandler() = default;

    /// Before the body is read: an answer if the request is refused, so that no byte of a body is taken that is too large
    /// or comes from someone who may not send it.
    [[nodiscard]] virtual std::optional<Response> refusal(const RequestHead& head, const Endpoints& endpoints) = 0;

    /// The answer to a complete request that was not refused.
    [[nodiscard]] virtual Response answer(const Request& request) = 0;

    /// The answer to a request that cannot be taken as it is.
    [[nodiscard]] virtual Response problem(int status, const QString& reason) = 0;
};

} // namespace orvanta::localservice
