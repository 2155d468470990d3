#pragma once

#include "http_client.h"
#include "localservice/api_routes.h"
#include "localservice/http_server.h"
#include "localservice/page_routes.h"
#include "scratch_database.h"

/// The whole service on a free loopback port, over a database of its own.
class Served {
public:
    static inline const QByteArray key = "0123456789abcdef0123456789abcdef";
    static inline const QByteArray bearer = "Authorization: Bearer " + key;

    Served() : m_router(routes()), m_server(m_router)
    {
        const auto listening = m_server.listen(QHostAddress(QHostAddress::LocalHost), 0);
        if (!listening)
            qFatal("%s", qPrintable(listening.error()));
    }

    [[nodiscard]] quint16 port() const { return m_server.port(); }
    orvanta::localservice::Database& database() { return m_scratch.database(); }

    /// A request with the key.
    HttpClient::Answer call(const QByteArray& method, const QByteArray& path, const std::optional<QByteArray>& body = std::nullopt)
    {
        return exchange(port(), method, path, { bearer }, body);
    }

private:
    std::vector<orvanta::localservice::Route> routes()
    {
        auto all = orvanta::localservice::apiRoutes(m_scratch.database(), key);
        std::ranges::move(orvanta::localservice::pageRoutes(m_scratch.database(), key, {}), std::back_inserter(all));
        return all;
    }

    ScratchDatabase m_scratch;
    orvanta::localservice::Router m_router;
    orvanta::localservice::HttpServer m_server;
};
