#include "filter/core/tls_client_hello.h"

#include "filter/core/host_name.h"

#include <algorithm>
#include <vector>

namespace orvanta::filter {

namespace {

using enum NameSearch::Outcome;

constexpr std::uint8_t changeCipherSpecRecord = 20;
constexpr std::uint8_t handshakeRecord = 22;
constexpr std::uint8_t applicationDataRecord = 23;
constexpr std::size_t recordHeader = 5;
constexpr std::size_t longestRecord = 16384 + 2048;

constexpr std::uint8_t clientHello = 1;
constexpr std::size_t messageHeader = 4;
constexpr std::uint16_t serverNameExtension = 0;
constexpr std::uint8_t hostNameType = 0;

NameSearch nameIn(Bytes extension)
{
    ByteReader list(extension);
    ByteReader names(list.take(list.u16()));
    while (!names.rest().empty()) {
        const std::uint8_t type = names.u8();
        const Bytes name = names.take(names.u16());
        if (names.failed())
            break;
        if (type != hostNameType)
            continue;
        if (auto host = comparableHost(asText(name)))
            return { .outcome = found, .name = *std::move(host) };
        break;
    }
    return { .outcome = absent };
}

} // namespace

NameSearch findServerName(Bytes handshake)
{
    ByteReader message(handshake);
    const std::uint8_t type = message.u8();
    if (!message.failed() && type != clientHello)
        return { .outcome = foreign };
    const std::size_t length = message.number(3);
    if (message.failed())
        return { .outcome = incomplete, .needed = messageHeader };
    // Whoever needs more than that names its server before; what is missing at the bound stays missing.
    const std::size_t whole = messageHeader + length;
    const bool isWhole = handshake.size() >= whole;
    const NameSearch more { .outcome = isWhole || handshake.size() >= longestSearch ? absent : incomplete, .needed = std::min(whole, longestSearch) };

    ByteReader hello(message.rest().first(std::min(message.rest().size(), length)));
    hello.take(2 + 32);      // version, random
    hello.take(hello.u8());  // session
    hello.take(hello.u16()); // cipher suites
    hello.take(hello.u8());  // compression
    const std::size_t total = hello.u16();
    if (hello.failed())
        return more;
    const bool extensionsAreWhole = hello.rest().size() >= total;
    ByteReader extensions(hello.rest().first(std::min(hello.rest().size(), total)));
    while (!extensions.rest().empty()) {
        const std::uint16_t kind = extensions.u16();
        const Bytes extension = extensions.take(extensions.u16());
        if (extensions.failed())
            return more;
        if (kind == serverNameExtension)
            return nameIn(extension);
    }
    return extensionsAreWhole ? NameSearch { .outcome = absent } : more;
}

NameSearch findServerNameInRecords(Bytes stream)
{
    std::vector<std::byte> handshake;
    ByteReader records(stream);
    for (;;) {
        if (records.rest().empty() && !handshake.empty())
            break;
        const Bytes at = records.rest();
        if (!at.empty() && (std::to_integer<std::uint8_t>(at[0]) != handshakeRecord || (at.size() > 1 && std::to_integer<int>(at[1]) != 3)))
            return { .outcome = handshake.empty() ? foreign : absent };
        if (at.size() < recordHeader)
            break;
        (void)records.take(3);
        const std::size_t length = records.u16();
        if (length > longestRecord)
            return { .outcome = foreign };
        const Bytes body = records.take(std::min(length, records.rest().size()));
        handshake.insert(handshake.end(), body.begin(), body.end());
        if (body.size() < length)
            break;
    }
    const NameSearch more { .outcome = stream.size() < longestSearch ? incomplete : absent, .needed = stream.size() + 1 };
    if (handshake.empty())
        return more;
    NameSearch search = findServerName(handshake);
    if (search.outcome != incomplete)
        return search;
    // Each further record has its own header, so that less than what is missing can never be enough.
    const std::size_t needed = stream.size() + (search.needed > handshake.size() ? search.needed - handshake.size() : 1);
    return { .outcome = more.outcome, .needed = std::min(needed, longestSearch) };
}

bool isLaterRecord(Bytes segment)
{
    if (segment.size() < recordHeader)
        return false;
    const auto type = std::to_integer<std::uint8_t>(segment[0]);
    const std::size_t length = std::to_integer<std::size_t>(segment[3]) << 8 | std::to_integer<std::size_t>(segment[4]);
    constexpr int newestMinor = 4;
    return type >= changeCipherSpecRecord && type <= applicationDataRecord && type != handshakeRecord && std::to_integer<int>(segment[1]) == 3
        && std::to_integer<int>(segment[2]) <= newestMinor && length > 0 && length <= longestRecord;
}

} // namespace orvanta::filter
