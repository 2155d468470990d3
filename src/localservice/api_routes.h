#pragma once

#include "localservice/database.h"
#include "localservice/router.h"

namespace orvanta::localservice {

/// The addresses that the clients use, each for bearers of `key` alone. `database` must outlive the routes.
[[nodiscard]] std::vector<Route> apiRoutes(Database& database, const QByteArray& key);

} // namespace orvanta::localservice
