#pragma once

#include "filter/core/bytes.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta::testing {

using Octets = std::vector<std::byte>;

inline Octets octets(std::string_view text)
{
    const auto bytes = filter::asBytes(text);
    return { bytes.begin(), bytes.end() };
}

inline void append(Octets& to, filter::Bytes bytes)
{
    to.insert(to.end(), bytes.begin(), bytes.end());
}

inline void append(Octets& to, std::uint64_t number, int size)
{
    for (int place = size - 1; place >= 0; --place)
        to.push_back(static_cast<std::byte>(number >> (8 * place) & 0xff));
}

/// `body` after its own length.
inline Octets counted(filter::Bytes body, int lengthSize)
{
    Octets bytes;
    append(bytes, body.size(), lengthSize);
    append(bytes, body);
    return bytes;
}

inline Octets extension(int type, filter::Bytes body)
{
    Octets bytes;
    append(bytes, static_cast<std::uint64_t>(type), 2);
    append(bytes, counted(body, 2));
    return bytes;
}

/// A ClientHello message that names `server`; none if it is empty. Another extension of `padding` bytes stands before it.
inline Octets clientHello(std::string_view server, std::size_t padding = 0)
{
    Octets extensions = extension(21, Octets(padding));
    if (!server.empty()) {
        Octets name { std::byte { 0 } };
        append(name, counted(octets(server), 2));
        append(extensions, extension(0, counted(name, 2)));
    }
    append(extensions, extension(10, Octets(4)));
    Octets hello;
    append(hello, 0x0303, 2);
    append(hello, Octets(32, std::byte { 7 }));
    append(hello, counted(Octets(32), 1));
    append(hello, counted(octets(std::string_view("\x13\x01\x13\x02", 4)), 2));
    append(hello, counted(Octets(1), 1));
    append(hello, counted(extensions, 2));
    Octets message { std::byte { 1 } };
    append(message, counted(hello, 3));
    return message;
}

/// `message` in records of at most `size` bytes.
inline Octets records(const Octets& message, std::size_t size = 16384)
{
    Octets bytes;
    for (std::size_t at = 0; at < message.size(); at += size) {
        const auto body = filter::Bytes(message).subspan(at, std::min(size, message.size() - at));
        append(bytes, 0x160301, 3);
        append(bytes, counted(body, 2));
    }
    return bytes;
}

enum class Ip { v4, v6 };

struct TcpFlags {
    bool syn = false;
    bool reset = false;
};

/// A packet from 10.0.0.1 (or its like of the sixth version) to port `port`.
inline Octets ipPacket(Ip ip, int protocol, const Octets& body)
{
    Octets packet;
    if (ip == Ip::v4) {
        append(packet, 0x4500, 2);
        append(packet, 20 + body.size(), 2);
        append(packet, 0, 4);
        append(packet, 64, 1);
        append(packet, static_cast<std::uint64_t>(protocol), 1);
        append(packet, 0, 2);
        append(packet, 0x0a000001, 4);
        append(packet, 0x0a000002, 4);
    } else {
        append(packet, 0x60000000, 4);
        append(packet, body.size(), 2);
        append(packet, static_cast<std::uint64_t>(protocol), 1);
        append(packet, 64, 1);
        append(packet, Octets(16, std::byte { 1 }));
        append(packet, Octets(16, std::byte { 2 }));
    }
    append(packet, body);
    return packet;
}

inline Octets tcpPacket(Ip ip, int sourcePort, int port, std::uint32_t sequence, filter::Bytes payload, TcpFlags flags = {})
{
    Octets body;
    append(body, static_cast<std::uint64_t>(sourcePort), 2);
    append(body, static_cast<std::uint64_t>(port), 2);
    append(body, sequence, 4);
    append(body, 0, 4);
    append(body, 0x50, 1);
    append(body, (flags.syn ? 2U : 0x10U) | (flags.reset ? 4U : 0U), 1);
    append(body, 0, 6);
    append(body, payload);
    return ipPacket(ip, 6, body);
}

inline Octets udpPacket(Ip ip, int sourcePort, int port, filter::Bytes payload)
{
    Octets body;
    append(body, static_cast<std::uint64_t>(sourcePort), 2);
    append(body, static_cast<std::uint64_t>(port), 2);
    append(body, 8 + payload.size(), 2);
    append(body, 0, 2);
    append(body, payload);
    return ipPacket(ip, 17, body);
}

/// A DNS answer to a question for `name`, which is given in labels.
inline Octets dnsAnswer(std::initializer_list<std::string_view> labels, int type, int flags = 0x8180)
{
    Octets message;
    append(message, 0x1234, 2);
    append(message, static_cast<std::uint64_t>(flags), 2);
    append(message, 1, 2);
    append(message, 1, 2);
    append(message, 0, 4);
    for (const auto label : labels)
        append(message, counted(octets(label), 1));
    append(message, 0, 1);
    append(message, static_cast<std::uint64_t>(type), 2);
    append(message, 1, 2);
    append(message, octets("the answer record"));
    return message;
}

} // namespace orvanta::testing
