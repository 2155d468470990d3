#include "service/focus_api_error.h"

namespace orvanta {

using namespace Qt::StringLiterals;

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
        return u"Orvanta request failed (HTTP %1)"_s.arg(m_statusCode.value_or(0));
    case Case::missingCredential:
        return u"Orvanta API key is missing"_s;
    case Case::invalidResponse:
        break;
    }
    return u"Orvanta returned an invalid response"_s;
}

QString DecodeError::description() const
{
    switch (reason) {
    case Reason::notJson:
        return u"Orvanta's answer could not be read: it is not valid JSON"_s;
    case Reason::missingKey:
        return u"Orvanta's answer could not be read: \"%1\" is missing"_s.arg(key);
    case Reason::wrongType:
        break;
    }
    if (key.isEmpty())
        return u"Orvanta's answer could not be read: it is not a JSON object"_s;
    return u"Orvanta's answer could not be read: \"%1\" has an unexpected value"_s.arg(key);
}

QString EncodeError::description() const
{
    return u"The request could not be written: it holds a text that is not valid Unicode"_s;
}

QString ServiceFailure::description() const
{
    return std::visit(Description {}, cause);
}

} // namespace orvanta
