#pragma once

#include "service/url_session.h"

#include <QString>

#include <optional>
#include <variant>

namespace orvanta {

/// What the service, or the lack of a key, makes of a request. The descriptions are shown to the user as they are.
class FocusAPIError {
public:
    /// The service answered with a status outside 200 to 299.
    [[nodiscard]] static FocusAPIError server(int statusCode) { return { Case::server, statusCode }; }
    /// There is no API key to send.
    [[nodiscard]] static FocusAPIError missingCredential() { return { Case::missingCredential, std::nullopt }; }
    /// What answered does not speak HTTP.
    [[nodiscard]] static FocusAPIError invalidResponse() { return { Case::invalidResponse, std::nullopt }; }

    /// The status of `server`; absent in the other cases.
    [[nodiscard]] std::optional<int> statusCode() const { return m_statusCode; }
    [[nodiscard]] QString description() const;

    bool operator==(const FocusAPIError&) const = default;

private:
    enum class Case { server, missingCredential, invalidResponse };

    FocusAPIError(Case which, std::optional<int> statusCode) : m_case(which), m_statusCode(statusCode) { }

    Case m_case;
    std::optional<int> m_statusCode;
};

/// Why a body is not the record that was expected.
struct DecodeError {
    enum class Reason {
        notJson,    ///< not one complete JSON value, or nested beyond reason
        missingKey, ///< an object lacks `key`
        wrongType,  ///< what stands under `key`, or the whole body if `key` is empty, has another type or does not fit
    };

    Reason reason;
    QString key = {};

    [[nodiscard]] QString description() const;

    bool operator==(const DecodeError&) const = default;
};

/// A record holds a text that JSON cannot carry: an unpaired surrogate. Nothing has been sent.
struct EncodeError {
    [[nodiscard]] QString description() const;

    bool operator==(const EncodeError&) const = default;
};

/// Everything that can go wrong with one operation of the service client.
struct ServiceFailure {
    std::variant<FocusAPIError, TransportError, DecodeError, EncodeError> cause;

    /// One line that can be shown to the user.
    [[nodiscard]] QString description() const;

    bool operator==(const ServiceFailure&) const = default;
};

} // namespace orvanta
