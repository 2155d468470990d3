#include "service/focus_api_error.h"

#include <QCoreApplication>

namespace orvanta {

namespace {

struct Description {
    QString operator()(const TransportError& error) const { return error.description; }
    template <typename Error>
    QString operator()(const Error& error) const
    {
        return error.description();
    }
};

} // namespace

QString FocusAPIError::description() const
{
    switch (m_case) {
    case Case::server:
        return QCoreApplication::translate("ServiceFailure", "Orvanta request failed (HTTP %1)").arg(m_statusCode.value_or(0));
    case Case::missingCredential:
        return QCoreApplication::translate("ServiceFailure", "Orvanta API key is missing");
    case Case::invalidResponse:
        break;
    }
    return QCoreApplication::translate("ServiceFailure", "Orvanta returned an invalid response");
}

QString DecodeError::description() const
{
    switch (reason) {
    case Reason::notJson:
        return QCoreApplication::translate("ServiceFailure", "Orvanta's answer could not be read: it is not valid JSON");
    case Reason::missingKey:
        return QCoreApplication::translate("ServiceFailure", "Orvanta's answer could not be read: \"%1\" is missing").arg(key);
    case Reason::wrongType:
        break;
    }
    if (key.isEmpty())
        return QCoreApplication::translate("ServiceFailure", "Orvanta's answer could not be read: it is not a JSON object");
    return QCoreApplication::translate("ServiceFailure", "Orvanta's answer could not be read: \"%1\" has an unexpected value").arg(key);
}

QString EncodeError::description() const
{
    return QCoreApplication::translate("ServiceFailure", "The request could not be written: it holds a text that is not valid Unicode");
}

QString ServiceFailure::description() const
{
    return std::visit(Description {}, cause);
}

} // namespace orvanta
