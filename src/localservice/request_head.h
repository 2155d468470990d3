#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvanta::localservice {

/// The first part of an HTTP request: everything before its body.
struct RequestHead {
    std::string method;                                          ///< as sent; case matters
    std::string path;                                            ///< before the "?", as sent, beginning with "/"
    std::vector<std::pair<std::string, std::string>> headers;    ///< names in lower case, in order
    std::uint64_t contentLength = 0;                             ///< bytes of body that follow
    std::vector<std::pair<std::string, std::string>> query = {}; ///< the fields after the "?", decoded, in order

    /// The value of the first header with this name (in lower case); absent if there is none.
    [[nodiscard]] std::optional<std::string_view> header(std::string_view name) const
    {
        const auto found = std::ranges::find(headers, name, &std::pair<std::string, std::string>::first);
        return found == headers.end() ? std::nullopt : std::optional<std::string_view>(found->second);
    }

    /// The value of the first query field with this name; empty if there is none.
    [[nodiscard]] std::string_view queryValue(std::string_view name) const
    {
        const auto found = std::ranges::find(query, name, &std::pair<std::string, std::string>::first);
        return found == query.end() ? std::string_view() : std::string_view(found->second);
    }
};

} // namespace orvanta::localservice
