#include "filter/core/udp_packet.h"

namespace orvanta::filter {

namespace {

constexpr std::size_t udpHeaderSize = 8;
constexpr std::size_t version6HeaderSize = 40;

/// The Internet's checksum, added up before it is folded.
std::uint64_t sumOf(Bytes bytes)
{
    std::uint64_t sum = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at)
        sum += std::to_integer<std::uint64_t>(bytes[at]) << (at % 2 == 0 ? 8 : 0);
    return sum;
}

std::uint16_t checksum(std::uint64_t sum)
{
    while (sum > 0xffff)
        sum = (sum & 0xffff) + (sum >> 16);
    return static_cast<std::uint16_t>(~sum);
}

void put(std::span<std::byte> at, std::size_t number)
{
    at[0] = static_cast<std::byte>(number >> 8 & 0xff);
    at[1] = static_cast<std::byte>(number & 0xff);
}

} // namespace

std::vector<std::byte> withPayload(Bytes bytes, const Packet& packet, Bytes payload)
{
    const Bytes headers = bytes.first(packet.transportAt + udpHeaderSize);
    std::vector<std::byte> made(headers.begin(), headers.end());
    made.insert(made.end(), payload.begin(), payload.end());
    const std::span<std::byte> all(made);
    Bytes addresses;
    if (packet.flow.version == 4) {
        const auto header = all.first(packet.transportAt);
        put(header.subspan(2), all.size());
        put(header.subspan(10), 0);
        put(header.subspan(10), checksum(sumOf(header)));
        addresses = header.subspan(12, 8);
    } else {
        put(all.subspan(4), all.size() - version6HeaderSize);
        addresses = all.subspan(8, 32);
    }
    const auto datagram = all.subspan(packet.transportAt);
    put(datagram.subspan(4), datagram.size());
    put(datagram.subspan(6), 0);
    const std::uint16_t sum = checksum(sumOf(addresses) + static_cast<std::uint64_t>(Transport::udp) + datagram.size() + sumOf(datagram));
    put(datagram.subspan(6), sum == 0 ? 0xffff : sum); // zero would say that there is none
    return made;
}

} // namespace orvanta::filter
