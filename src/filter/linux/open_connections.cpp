#include "filter/linux/open_connections.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace orvanta::filter {

namespace {

constexpr std::size_t sourceField = 1;
constexpr std::size_t destinationField = 2;
constexpr std::size_t inodeField = 9;

struct Endpoint {
    std::array<std::byte, 16> address {};
    std::uint8_t version = 0;
    std::uint16_t port = 0;
};

template <typename Number>
std::optional<Number> number(std::string_view text, int base)
{
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

/// "0100007F:01BB": words of four bytes, each in the order of this machine, and the port.
std::optional<Endpoint> readEndpoint(std::string_view text)
{
    constexpr std::size_t word = 8; // digits
    const auto colon = text.find(':');
    if (colon != word && colon != 4 * word)
        return std::nullopt;
    Endpoint endpoint;
    for (std::size_t at = 0; at < colon; at += word) {
        const auto digits = number<std::uint32_t>(text.substr(at, word), 16);
        if (!digits)
            return std::nullopt;
        const auto bytes = std::as_bytes(std::span(&*digits, 1));
        std::ranges::copy(bytes, endpoint.address.begin() + static_cast<std::ptrdiff_t>(at / 2));
    }
    const auto port = number<std::uint16_t>(text.substr(colon + 1), 16);
    if (!port)
        return std::nullopt;
    endpoint.port = *port;
    endpoint.version = colon == word ? 4 : 6;
    // A socket of the sixth version may speak the fourth.
    constexpr std::array<std::byte, 12> mapped { std::byte(0), std::byte(0), std::byte(0), std::byte(0), std::byte(0), std::byte(0), std::byte(0),
        std::byte(0), std::byte(0), std::byte(0), std::byte(0xff), std::byte(0xff) };
    if (endpoint.version == 6 && std::ranges::equal(mapped, std::span(endpoint.address).first(mapped.size()))) {
        std::ranges::copy(std::span(endpoint.address).last(4), endpoint.address.begin());
        std::ranges::fill(std::span(endpoint.address).last(mapped.size()), std::byte(0));
        endpoint.version = 4;
    }
    return endpoint;
}

std::vector<std::string> fieldsOf(const std::string& line)
{
    std::istringstream stream(line);
    std::vector<std::string> fields;
    for (std::string field; stream >> field;)
        fields.push_back(field);
    return fields;
}

} // namespace

OpenConnections OpenConnections::read()
{
    OpenConnections connections;
    constexpr std::array<std::pair<const char*, Transport>, 4> lists { { { "/proc/self/net/tcp", Transport::tcp },
        { "/proc/self/net/tcp6", Transport::tcp }, { "/proc/self/net/udp", Transport::udp }, { "/proc/self/net/udp6", Transport::udp } } };
    for (const auto& [path, transport] : lists) {
        std::ostringstream content;
        content << std::ifstream(path).rdbuf();
        connections.add(content.str(), transport);
    }
    return connections;
}

void OpenConnections::add(std::string_view list, Transport transport)
{
    std::istringstream lines { std::string(list) };
    for (std::string line; std::getline(lines, line);) {
        const auto fields = fieldsOf(line);
        if (fields.size() <= inodeField)
            continue;
        const auto source = readEndpoint(fields[sourceField]);
        const auto destination = readEndpoint(fields[destinationField]);
        const auto inode = number<std::uint64_t>(fields[inodeField], 10);
        if (!source || !destination || !inode || destination->port == 0)
            continue;
        m_sockets[{ .source = source->address,
            .destination = destination->address,
            .sourcePort = source->port,
            .destinationPort = destination->port,
            .version = destination->version,
            .transport = transport }]
            = *inode;
    }
}

bool OpenConnections::isTheSame(const FlowKey& key, const OpenConnections& before) const
{
    const auto now = m_sockets.find(key);
    const auto then = before.m_sockets.find(key);
    if (now == m_sockets.end())
        return then == before.m_sockets.end();
    return then != before.m_sockets.end() && now->second == then->second;
}

} // namespace orvanta::filter
