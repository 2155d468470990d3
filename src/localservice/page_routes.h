#pragma once

#include "localservice/database.h"
#include "localservice/router.h"

#include <QStringList>

namespace orvanta::localservice {

/// The addresses for a person's browser: the tasks at "/", their two actions, where the days went at "/activity"
/// with its two exports, and "/focus/blocked", which is open to anyone.
/// The others are refused under a foreign Host; from another machine they need the key, as the password that
/// the browser asks for; the actions need a token of this process and the Origin of these pages.
/// `database` must outlive the routes. `names` are those under which the service may be reached besides its addresses.
[[nodiscard]] std::vector<Route> pageRoutes(Database& database, const QByteArray& key, const QStringList& names);

} // namespace orvanta::localservice
