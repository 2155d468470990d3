#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvanta::filter {

/// A host as a client names it on the wire ("Example.COM.", "example.com:8080"), reduced to what is compared: lower case,
/// without port and without trailing dots. Absent if nothing that can be a name is left.
[[nodiscard]] std::optional<std::string> comparableHost(std::string_view host);

/// What an entry of the list means: the host that a user has in mind who typed it. Beside comparableHost(), a scheme, a
/// user name, a path, a query, and a leading "*." or "." fall away, and a name in another script becomes the form that
/// travels ("xn--…"). Absent if no name of two labels or more is left, since a single one would block a whole country.
[[nodiscard]] std::optional<std::string> hostOfEntry(std::string_view entry);

} // namespace orvanta::filter
