#include "filter/core/quic_initial.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>

namespace orvanta::filter {

namespace {

using Secret = std::array<unsigned char, 32>;

/// What differs between the versions: RFC 9001 (section 5.2) and RFC 9369 (section 3.3).
struct Version {
    std::uint32_t number;
    std::uint8_t initialType;
    std::array<unsigned char, 20> salt;
    std::string_view prefix;
};

constexpr std::array<Version, 2> versions { {
    { 0x00000001, 0, { 0x38, 0x76, 0x2c, 0xf7, 0xf5, 0x59, 0x34, 0xb3, 0x4d, 0x17, 0x9a, 0xe6, 0xa4, 0xc8, 0x0c, 0xad, 0xcc, 0xbb, 0x7f, 0x0a },
        "quic " },
    { 0x6b3343cf, 1, { 0x0d, 0xed, 0xe3, 0xde, 0xf7, 0x00, 0xa6, 0xdb, 0x81, 0x93, 0x81, 0xbe, 0x6e, 0x26, 0x9d, 0xcb, 0xf9, 0xbd, 0x2e, 0xd9 },
        "quicv2 " },
} };

constexpr std::size_t longestConnectionId = 20;
constexpr std::size_t tagSize = 16;
constexpr std::size_t sampleSize = 16;

struct Keys {
    std::array<unsigned char, 16> key;
    std::array<unsigned char, 12> iv;
    std::array<unsigned char, 16> headerKey;
};

struct Header {
    const Version* version = nullptr;
    Bytes destination;
    std::size_t packetNumberAt = 0; ///< from the packet's beginning
    std::size_t packetSize = 0;
};

std::uint64_t variableLength(ByteReader& reader)
{
    const std::uint8_t first = reader.u8();
    const std::size_t more = (std::size_t { 1 } << (first >> 6)) - 1;
    return (std::uint64_t { first } & 0x3f) << (8 * more) | reader.number(more);
}

std::optional<Header> readHeader(Bytes packet)
{
    ByteReader reader(packet);
    const std::uint8_t first = reader.u8();
    const std::uint32_t number = reader.u32();
    const auto version = std::ranges::find(versions, number, &Version::number);
    if (reader.failed() || (first & 0xc0) != 0xc0 || version == versions.end() || (first >> 4 & 3) != version->initialType)
        return std::nullopt;
    const Bytes destination = reader.take(reader.u8());
    const Bytes source = reader.take(reader.u8());
    (void)reader.take(variableLength(reader)); // token
    const std::uint64_t length = variableLength(reader);
    if (reader.failed() || destination.size() > longestConnectionId || source.size() > longestConnectionId || length > reader.rest().size()
        || length < 4 + sampleSize)
        return std::nullopt;
    const std::size_t at = packet.size() - reader.rest().size();
    return Header { .version = &*version, .destination = destination, .packetNumberAt = at, .packetSize = at + static_cast<std::size_t>(length) };
}

Secret hmac(std::span<const unsigned char> key, std::span<const unsigned char> data)
{
    Secret secret {};
    unsigned int size = secret.size();
    HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), data.data(), data.size(), secret.data(), &size);
    return secret;
}

/// HKDF-Expand-Label of TLS 1.3, for outputs of one block.
template <std::size_t size>
std::array<unsigned char, size> expand(const Secret& secret, std::string_view label)
{
    static_assert(size <= Secret().size());
    std::string info { '\0', static_cast<char>(size), static_cast<char>(label.size() + 6) };
    info.append("tls13 ").append(label).append({ '\0', '\1' });
    const Secret block = hmac(secret, { reinterpret_cast<const unsigned char*>(info.data()), info.size() });
    std::array<unsigned char, size> output {};
    std::copy_n(block.begin(), size, output.begin());
    return output;
}

Keys clientKeys(const Version& version, Bytes destination)
{
    const Secret initial = hmac(version.salt, { reinterpret_cast<const unsigned char*>(destination.data()), destination.size() });
    const Secret client = expand<32>(initial, "client in");
    const std::string prefix(version.prefix);
    return { expand<16>(client, prefix + "key"), expand<12>(client, prefix + "iv"), expand<16>(client, prefix + "hp") };
}

using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

CipherContext makeContext()
{
    return { EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free };
}

/// The mask over the packet's first byte and its number.
std::optional<std::array<unsigned char, 16>> headerMask(const Keys& keys, const unsigned char* sample)
{
    const CipherContext context = makeContext();
    std::array<unsigned char, 32> mask {};
    int written = 0;
    if (!context || EVP_EncryptInit_ex(context.get(), EVP_aes_128_ecb(), nullptr, keys.headerKey.data(), nullptr) != 1
        || EVP_EncryptUpdate(context.get(), mask.data(), &written, sample, sampleSize) != 1 || written != sampleSize)
        return std::nullopt;
    std::array<unsigned char, 16> used {};
    std::copy_n(mask.begin(), used.size(), used.begin());
    return used;
}

std::optional<std::vector<std::byte>> openPacket(Bytes datagram, const Header& header, const Keys& keys)
{
    std::vector<unsigned char> packet(header.packetSize);
    std::ranges::transform(datagram.first(header.packetSize), packet.begin(), [](std::byte byte) { return std::to_integer<unsigned char>(byte); });
    const auto mask = headerMask(keys, &packet[header.packetNumberAt + 4]);
    if (!mask)
        return std::nullopt;
    packet[0] = static_cast<unsigned char>(packet[0] ^ ((*mask)[0] & 0x0fU));
    const std::size_t numberSize = (packet[0] & 3U) + 1;
    auto nonce = keys.iv;
    for (std::size_t place = 0; place < numberSize; ++place) {
        unsigned char& byte = packet[header.packetNumberAt + place];
        byte ^= (*mask)[1 + place];
        nonce[nonce.size() - numberSize + place] ^= byte;
    }
    const std::size_t bodyAt = header.packetNumberAt + numberSize;
    if (header.packetSize < bodyAt + tagSize)
        return std::nullopt;
    const std::size_t bodySize = header.packetSize - bodyAt - tagSize;

    const CipherContext context = makeContext();
    std::vector<std::byte> body(bodySize);
    auto* output = reinterpret_cast<unsigned char*>(body.data());
    int written = 0;
    if (!context || EVP_DecryptInit_ex(context.get(), EVP_aes_128_gcm(), nullptr, keys.key.data(), nonce.data()) != 1
        || EVP_DecryptUpdate(context.get(), nullptr, &written, packet.data(), static_cast<int>(bodyAt)) != 1
        || EVP_DecryptUpdate(context.get(), output, &written, &packet[bodyAt], static_cast<int>(bodySize)) != 1
        || EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, tagSize, &packet[bodyAt + bodySize]) != 1
        || EVP_DecryptFinal_ex(context.get(), output + bodySize, &written) != 1)
        return std::nullopt;
    return body;
}

/// The frames that may stand in a client's Initial (RFC 9000, section 12.4); at any other the rest is left alone.
void collect(Bytes body, std::vector<CryptoPiece>& pieces)
{
    constexpr std::uint64_t padding = 0;
    constexpr std::uint64_t ping = 1;
    constexpr std::uint64_t ack = 2;
    constexpr std::uint64_t ackWithCounts = 3;
    constexpr std::uint64_t crypto = 6;
    ByteReader frames(body);
    while (!frames.rest().empty() && !frames.failed()) {
        const std::uint64_t type = variableLength(frames);
        if (type == padding || type == ping)
            continue;
        if (type == ack || type == ackWithCounts) {
            (void)variableLength(frames); // largest
            (void)variableLength(frames); // delay
            const std::uint64_t ranges = variableLength(frames);
            (void)variableLength(frames); // first range
            const std::uint64_t fields = 2 * std::min<std::uint64_t>(ranges, body.size()) + (type == ackWithCounts ? 3 : 0);
            for (std::uint64_t field = 0; field < fields && !frames.failed(); ++field)
                (void)variableLength(frames);
            continue;
        }
        if (type != crypto)
            return;
        const std::uint64_t offset = variableLength(frames);
        const Bytes piece = frames.take(static_cast<std::size_t>(variableLength(frames)));
        if (!frames.failed())
            pieces.push_back({ .offset = offset, .bytes = { piece.begin(), piece.end() } });
    }
}

} // namespace

bool isQuicInitial(Bytes datagram)
{
    return readHeader(datagram).has_value();
}

std::optional<Bytes> initialDestination(Bytes datagram)
{
    const auto header = readHeader(datagram);
    return header ? std::optional(header->destination) : std::nullopt;
}

std::optional<std::vector<CryptoPiece>> openClientInitials(Bytes datagram, Bytes destination)
{
    std::vector<CryptoPiece> pieces;
    std::optional<Keys> keys;
    // A datagram may carry several packets one after the other; what is no Initial any more ends the row.
    for (auto header = readHeader(datagram); header; header = readHeader(datagram)) {
        if (!keys)
            keys = clientKeys(*header->version, destination);
        const auto body = openPacket(datagram, *header, *keys);
        if (!body)
            return pieces.empty() ? std::nullopt : std::optional(std::move(pieces));
        collect(*body, pieces);
        datagram = datagram.subspan(header->packetSize);
    }
    return keys ? std::optional(std::move(pieces)) : std::nullopt;
}

} // namespace orvanta::filter
