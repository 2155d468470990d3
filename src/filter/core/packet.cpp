#include "filter/core/packet.h"

#include <algorithm>

namespace orvanta::filter {

namespace {

constexpr std::uint8_t hopByHop = 0;
constexpr std::uint8_t routing = 43;
constexpr std::uint8_t fragment = 44;
constexpr std::uint8_t destinationOptions = 60;
constexpr int mostExtensions = 8;

struct Datagram {
    std::uint8_t protocol = 0;
    Bytes body;
};

std::optional<Datagram> readVersion4(Bytes bytes, FlowKey& flow)
{
    ByteReader header(bytes);
    const std::size_t headerSize = std::size_t { header.u8() & 0x0fU } * 4;
    (void)header.u8();
    const std::size_t total = header.u16();
    (void)header.u16();
    const std::uint16_t fragmentation = header.u16();
    (void)header.u8();
    const std::uint8_t protocol = header.u8();
    (void)header.u16();
    const Bytes source = header.take(4);
    const Bytes destination = header.take(4);
    if (header.failed() || headerSize < 20 || total < headerSize || total > bytes.size() || (fragmentation & 0x1fff) != 0)
        return std::nullopt;
    std::ranges::copy(source, flow.source.begin());
    std::ranges::copy(destination, flow.destination.begin());
    return Datagram { protocol, bytes.subspan(headerSize, total - headerSize) };
}

std::optional<Datagram> readVersion6(Bytes bytes, FlowKey& flow)
{
    ByteReader header(bytes);
    (void)header.u32();
    const std::size_t length = header.u16();
    std::uint8_t next = header.u8();
    (void)header.u8();
    const Bytes source = header.take(16);
    const Bytes destination = header.take(16);
    if (header.failed() || length > header.rest().size())
        return std::nullopt;
    std::ranges::copy(source, flow.source.begin());
    std::ranges::copy(destination, flow.destination.begin());
    ByteReader body(header.rest().first(length));
    for (int extension = 0; extension < mostExtensions; ++extension) {
        if (next == fragment) {
            next = body.u8();
            (void)body.u8();
            if ((body.u16() & 0xfff8) != 0)
                return std::nullopt;
            (void)body.u32();
        } else if (next == hopByHop || next == routing || next == destinationOptions) {
            next = body.u8();
            (void)body.take((std::size_t { body.u8() } + 1) * 8 - 2);
        } else {
            break;
        }
    }
    if (body.failed())
        return std::nullopt;
    return Datagram { next, body.rest() };
}

} // namespace

std::optional<Packet> readPacket(Bytes bytes)
{
    if (bytes.empty())
        return std::nullopt;
    Packet packet;
    packet.flow.version = std::to_integer<std::uint8_t>(bytes[0] >> 4);
    const auto datagram = packet.flow.version == 4 ? readVersion4(bytes, packet.flow)
        : packet.flow.version == 6                 ? readVersion6(bytes, packet.flow)
                                                   : std::nullopt;
    if (!datagram)
        return std::nullopt;
    ByteReader header(datagram->body);
    packet.transportAt = static_cast<std::size_t>(datagram->body.data() - bytes.data());
    packet.flow.sourcePort = header.u16();
    packet.flow.destinationPort = header.u16();
    if (datagram->protocol == static_cast<std::uint8_t>(Transport::udp)) {
        packet.flow.transport = Transport::udp;
        const std::size_t length = header.u16();
        (void)header.u16();
        if (header.failed() || length < 8 || length > datagram->body.size())
            return std::nullopt;
        packet.payload = datagram->body.subspan(8, length - 8);
        return packet;
    }
    if (datagram->protocol != static_cast<std::uint8_t>(Transport::tcp))
        return std::nullopt;
    packet.sequence = header.u32();
    (void)header.u32();
    const std::size_t headerSize = std::size_t { header.u8() / 16U } * 4;
    const std::uint8_t flags = header.u8();
    if (header.failed() || headerSize < 20 || headerSize > datagram->body.size())
        return std::nullopt;
    packet.isSyn = (flags & 0x02) != 0;
    packet.isReset = (flags & 0x04) != 0;
    packet.payload = datagram->body.subspan(headerSize);
    return packet;
}

} // namespace orvanta::filter
