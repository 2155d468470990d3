#include "filter/core/http_host.h"

#include "filter/core/host_name.h"

#include <algorithm>
#include <optional>

namespace orvanta::filter {

namespace {

using enum NameSearch::Outcome;

constexpr std::size_t longestMethod = 24;

bool isMethodCharacter(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9')
        || character == '-' || character == '_';
}

bool isSameIgnoringCase(std::string_view text, std::string_view lowerCase)
{
    return std::ranges::equal(text, lowerCase, [](char left, char right) { return (left >= 'A' && left <= 'Z' ? left + 32 : left) == right; });
}

std::string_view withoutBlanksBehind(std::string_view text)
{
    while (text.ends_with(' ') || text.ends_with('\t'))
        text.remove_suffix(1);
    return text;
}

NameSearch named(std::string_view host)
{
    auto name = comparableHost(host);
    return name ? NameSearch { .outcome = found, .name = *std::move(name) } : NameSearch { .outcome = absent };
}

/// The host that the target itself names, as it does for a proxy.
std::optional<std::string_view> hostOfTarget(std::string_view method, std::string_view target)
{
    if (method == "CONNECT")
        return target;
    const auto scheme = target.find("://");
    if (scheme == std::string_view::npos || target.starts_with('/'))
        return std::nullopt;
    std::string_view authority = target.substr(scheme + 3);
    authority = authority.substr(0, authority.find_first_of("/?#"));
    if (const auto user = authority.rfind('@'); user != std::string_view::npos)
        authority.remove_prefix(user + 1);
    return authority;
}

/// Takes the next line from `rest`, without its end; absent if it is not there in full.
std::optional<std::string_view> takeLine(std::string_view& rest)
{
    const auto end = rest.find('\n');
    if (end == std::string_view::npos)
        return std::nullopt;
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

} // namespace

NameSearch findHttpHost(Bytes stream)
{
    std::string_view rest = asText(stream);
    const NameSearch more { .outcome = stream.size() < longestSearch ? incomplete : absent, .needed = stream.size() + 1 };

    // Servers pass over empty lines before a request.
    while (rest.starts_with('\r') || rest.starts_with('\n'))
        rest.remove_prefix(1);
    const auto methodEnd = std::ranges::find_if_not(rest, isMethodCharacter);
    const std::string_view method(rest.begin(), methodEnd);
    if (methodEnd == rest.end())
        return method.size() <= longestMethod ? more : NameSearch { .outcome = foreign };
    if (method.empty() || method.size() > longestMethod || *methodEnd != ' ')
        return { .outcome = foreign };

    const auto request = takeLine(rest);
    if (!request)
        return more;
    const auto version = request->rfind(' ');
    if (version <= method.size() || !request->substr(version + 1).starts_with("HTTP/"))
        return { .outcome = foreign };
    if (const auto host = hostOfTarget(method, request->substr(method.size() + 1, version - method.size() - 1)))
        return named(*host);

    while (const auto line = takeLine(rest)) {
        if (line->empty())
            return { .outcome = absent };
        const auto colon = line->find(':');
        if (colon == std::string_view::npos || !isSameIgnoringCase(withoutBlanksBehind(line->substr(0, colon)), "host"))
            continue;
        // Some servers still take a value that stands in the next line, after a blank.
        std::optional<std::string_view> host = line->substr(colon + 1);
        while (host && host->find_first_not_of(" \t") == std::string_view::npos) {
            if (rest.empty())
                return more;
            if (rest.front() != ' ' && rest.front() != '\t')
                return { .outcome = absent };
            host = takeLine(rest);
        }
        return host ? named(*host) : more;
    }
    return more;
}

} // namespace orvanta::filter
