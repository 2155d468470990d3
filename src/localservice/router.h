#pragma once

#include "localservice/http_exchange.h"

#include <functional>

namespace orvanta::localservice {

constexpr std::uint64_t mebibyte = std::uint64_t { 1024 } * 1024;

/// One method of one address.
struct Route {
    std::string path;
    std::string method; ///< a route for GET serves HEAD as well
    std::uint64_t longestBody = mebibyte;
    /// An answer for those who may not come in; runs before anything of the body is read.
    std::function<std::optional<Response>(const RequestHead&, const Endpoints&)> guard;
    std::function<Response(const Request&)> answer;
};

/// Finds the route of each request. An address without a route is 404, a known one with another method 405 and, before
/// that, whatever its guard says; a body beyond the route's limit is 413.
class Router : public RequestHandler {
public:
    explicit Router(std::vector<Route> routes) : m_routes(std::move(routes)) { }

    [[nodiscard]] std::optional<Response> refusal(const RequestHead& head, const Endpoints& endpoints) override;
    [[nodiscard]] Response answer(const Request& request) override;
    [[nodiscard]] Response problem(int status, const QString& reason) override;

private:
    [[nodiscard]] const Route* find(const RequestHead& head) const;

    std::vector<Route> m_routes;
};

} // namespace orvanta::localservice
