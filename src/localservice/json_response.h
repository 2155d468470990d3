#pragma once

#include "localservice/http_exchange.h"
#include "localservice/json_reading.h"
#include "localservice/store_error.h"

namespace orvanta::localservice {

[[nodiscard]] Json jsonText(const QString& text);

[[nodiscard]] Response jsonResponse(int status, const Json& value);

/// {"error": description}
[[nodiscard]] Response errorResponse(int status, const QString& description);

/// 500 with the store's own sentence, which also goes to standard error: the client's user may not be who can mend it.
[[nodiscard]] Response storeFailure(const StoreError& error);

} // namespace orvanta::localservice
