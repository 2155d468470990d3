#pragma once

#include "service/url_session.h"

namespace orvanta {

/// A chain longer than this is a loop; the number is what HTTP clients commonly allow.
inline constexpr int mostRedirects = 20;

/// What to send next when `request` was answered by `statusCode`; absent if that is no redirect and stands as the answer:
/// any other status, 300 and 304 included, and a redirect whose `location` is missing or cannot be read.
///
/// 303 asks with GET from then on, and so do 301 and 302 after a POST; 307 and 308 repeat the request as it was. The
/// "Authorization" header stays behind when the origin changes. An error: a step from https to http, a step over plain
/// http to another machine, and a scheme that is neither.
[[nodiscard]] std::expected<std::optional<HttpRequest>, TransportError> redirected(
    const HttpRequest& request, int statusCode, const std::optional<QByteArray>& location);

} // namespace orvanta
