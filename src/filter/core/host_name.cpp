#include "filter/core/host_name.h"

#include <idn2.h>

#include <algorithm>
#include <memory>

namespace orvanta::filter {

namespace {

constexpr std::size_t longestName = 253;
constexpr std::size_t longestEntry = 4096; // an address with its path and query; what follows takes time for each character

/// The other characters that standards and browsers take for a dot.
constexpr std::string_view ideographicDots[] { "\u3002", "\uff0e", "\uff61" };

char lower(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool isAscii(std::string_view text)
{
    return std::ranges::all_of(text, [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

std::string_view withoutPort(std::string_view host)
{
    if (host.starts_with('[')) {
        const auto end = host.find(']');
        return end == std::string_view::npos ? host : host.substr(0, end + 1);
    }
    const auto colon = host.find(':');
    // Several colons without brackets are an address of the sixth version, not a port.
    return colon != std::string_view::npos && host.find(':', colon + 1) == std::string_view::npos ? host.substr(0, colon) : host;
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view space = " \t\r\n\v\f";
    const auto first = text.find_first_not_of(space);
    return first == std::string_view::npos ? std::string_view() : text.substr(first, text.find_last_not_of(space) - first + 1);
}

std::optional<std::string> asciiForm(const std::string& name)
{
    char* converted = nullptr;
    if (idn2_to_ascii_8z(name.c_str(), &converted, IDN2_NONTRANSITIONAL | IDN2_NFC_INPUT) != IDN2_OK)
        return std::nullopt;
    const std::unique_ptr<char, void (*)(void*)> owned(converted, &idn2_free);
    return std::string(converted);
}

} // namespace

std::optional<std::string> comparableHost(std::string_view host)
{
    host = withoutPort(trimmed(host));
    while (host.ends_with('.'))
        host.remove_suffix(1);
    if (host.empty() || host.size() > longestName)
        return std::nullopt;
    // A blank or a control character is in no name; such a text is not worth comparing.
    if (std::ranges::any_of(host, [](char character) { return static_cast<unsigned char>(character) <= ' ' || character == 0x7f; }))
        return std::nullopt;
    std::string name(host);
    std::ranges::transform(name, name.begin(), lower);
    return name;
}

std::optional<std::string> hostOfEntry(std::string_view entry)
{
    entry = trimmed(entry);
    if (entry.size() > longestEntry)
        return std::nullopt;
    if (const auto scheme = entry.find("://"); scheme != std::string_view::npos)
        entry.remove_prefix(scheme + 3);
    entry = entry.substr(0, entry.find_first_of("/?#\\"));
    if (const auto user = entry.rfind('@'); user != std::string_view::npos)
        entry.remove_prefix(user + 1);
    std::string dotted(entry);
    for (const std::string_view dot : ideographicDots)
        for (auto place = dotted.find(dot); place != std::string::npos; place = dotted.find(dot))
            dotted.replace(place, dot.size(), ".");
    entry = dotted;
    while (entry.starts_with('.') || entry.starts_with("*."))
        entry.remove_prefix(1);
    auto host = comparableHost(entry);
    if (host && !isAscii(*host))
        host = asciiForm(*host);
    if (!host || host->size() > longestName || host->find('.') == std::string::npos || host->starts_with('.')
        || host->find("..") != std::string::npos)
        return std::nullopt;
    return host;
}

} // namespace orvanta::filter
