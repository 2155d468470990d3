#include "localservice/json_response.h"

#include <iostream>

namespace orvanta::localservice {

Json jsonText(const QString& text)
{
    return text.toStdString();
}

Response jsonResponse(int status, const Json& value)
{
    return { status, "application/json", QByteArray::fromStdString(value.dump(-1, ' ', false, Json::error_handler_t::replace)), {} };
}

Response errorResponse(int status, const QString& description)
{
    return jsonResponse(status, { { "error", jsonText(description) } });
}

Response storeFailure(const StoreError& error)
{
    std::cerr << "orvanta-service: " << error.description.toStdString() << '\n';
    return errorResponse(500, error.description);
}

} // namespace orvanta::localservice
