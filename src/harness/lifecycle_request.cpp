#include "harness/lifecycle_request.h"

#include "harness/json_reader.h"

#include <QString>

#include <algorithm>
#include <charconv>
#include <string>

namespace orvanta {

namespace {

char lowerCased(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character;
}

/// What stands behind `name`, which ends in a colon, in the first line that begins with it in any case.
std::optional<std::string_view> headerValue(std::string_view head, std::string_view name)
{
    constexpr std::string_view lineEnd = "\r\n";
    while (!head.empty()) {
        const std::size_t end = std::min(head.find(lineEnd), head.size());
        const std::string_view line = head.substr(0, end);
        if (line.size() >= name.size() && std::ranges::equal(line.substr(0, name.size()), name, {}, lowerCased))
            return line.substr(name.size());
        head.remove_prefix(std::min(end + lineEnd.size(), head.size()));
    }
    return std::nullopt;
}

/// Without the white space, Unicode's included, at both ends.
std::string trimmed(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).trimmed().toStdString();
}

std::optional<std::uint64_t> decimalLength(std::string_view text)
{
    // A sign is part of an integer; a length below zero is none.
    if (text.starts_with('+'))
        text.remove_prefix(1);
    std::uint64_t length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return length;
}

} // namespace

std::optional<LifecycleRequestHead> parseLifecycleRequestHead(std::string_view head)
{
    if (!head.starts_with(lifecycleRequestStart) || !isUtf8(head))
        return std::nullopt;
    const auto lengthText = headerValue(head, "content-length:");
    const auto length = lengthText ? decimalLength(trimmed(*lengthText)) : std::nullopt;
    const auto harnessText = headerValue(head, "x-orvanta-harness:");
    const auto harness = harnessText ? harnessFromRawValue(trimmed(*harnessText)) : std::nullopt;
    if (!length || !harness)
        return std::nullopt;
    return LifecycleRequestHead { *harness, *length };
}

std::optional<LifecycleRequest> parseLifecycleRequest(std::string_view buffer)
{
    const std::size_t end = buffer.find(lifecycleHeadEnd);
    if (end == std::string_view::npos)
        return std::nullopt;
    const auto head = parseLifecycleRequestHead(buffer.substr(0, end));
    const std::string_view rest = buffer.substr(end + lifecycleHeadEnd.size());
    if (!head || rest.size() < head->contentLength)
        return std::nullopt;
    return LifecycleRequest { head->harness, rest.substr(0, head->contentLength) };
}

} // namespace orvanta
