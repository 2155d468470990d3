#include "localservice/router.h"

#include "localservice/json_response.h"

#include <algorithm>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

bool serves(const Route& route, std::string_view method)
{
    return route.method == method || (route.method == "GET" && method == "HEAD");
}

} // namespace

std::optional<Response> Router::refusal(const RequestHead& head, const Endpoints& endpoints)
{
    const auto sameAddress = std::ranges::find(m_routes, head.path, &Route::path);
    if (sameAddress == m_routes.end())
        return errorResponse(404, u"There is nothing at this address"_s);
    const Route* route = find(head);
    if (const Route& guarding = route ? *route : *sameAddress; guarding.guard) {
        if (auto refused = guarding.guard(head, endpoints))
            return refused;
    }
    if (!route) {
        QByteArray allowed;
        for (const Route& known : m_routes)
            if (known.path == head.path)
                allowed += (allowed.isEmpty() ? "" : ", ") + QByteArray::fromStdString(known.method);
        Response response = errorResponse(405, u"This address takes %1"_s.arg(QString::fromLatin1(allowed)));
        response.headers.emplace_back("Allow", allowed);
        return response;
    }
    if (head.contentLength > route->longestBody)
        return errorResponse(413, u"The body is too large: this address takes at most %1 MiB"_s.arg(route->longestBody / mebibyte));
    return std::nullopt;
}

Response Router::answer(const Request& request)
{
    const Route* route = find(request.head);
    return route ? route->answer(request) : errorResponse(404, u"There is nothing at this address"_s);
}

Response Router::problem(int status, const QString& reason)
{
    return errorResponse(status, reason);
}

const Route* Router::find(const RequestHead& head) const
{
    const auto found = std::ranges::find_if(m_routes, [&](const Route& route) { return route.path == head.path && serves(route, head.method); });
    return found == m_routes.end() ? nullptr : &*found;
}

} // namespace orvanta::localservice
