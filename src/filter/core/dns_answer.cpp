#include "filter/core/dns_answer.h"

#include "filter/core/host_name.h"
#include "filter/core/udp_packet.h"

#include <string>

namespace orvanta::filter {

namespace {

constexpr std::string_view canary = "use-application-dns.net";
constexpr std::uint16_t httpsRecord = 65;
constexpr std::size_t headerSize = 12;
constexpr std::size_t longestLabel = 63;
constexpr std::uint8_t noSuchName = 3;
constexpr std::uint16_t nameServicePort = 53;
constexpr std::uint16_t httpsPort = 443;

struct Question {
    std::string name;
    std::uint16_t type = 0;
    std::size_t end = 0; ///< where the question ends in the message
};

std::optional<Question> readQuestion(Bytes message)
{
    ByteReader reader(message);
    (void)reader.u16();
    const std::uint16_t flags = reader.u16();
    const std::uint16_t questions = reader.u16();
    (void)reader.take(headerSize - 6);
    constexpr std::uint16_t isAnswerToQuery = 0x8000; // and the operation, in the next four bits, is an ordinary query
    if (reader.failed() || (flags & 0xf800) != isAnswerToQuery || questions != 1)
        return std::nullopt;
    std::string name;
    for (std::size_t length = reader.u8(); length != 0; length = reader.u8()) {
        // A question has nothing before it that a pointer could mean.
        if (length > longestLabel)
            return std::nullopt;
        name += asText(reader.take(length));
        name += '.';
        if (reader.failed())
            return std::nullopt;
    }
    const std::uint16_t type = reader.u16();
    (void)reader.u16();
    auto host = comparableHost(name);
    if (reader.failed() || !host)
        return std::nullopt;
    return Question { .name = *std::move(host), .type = type, .end = message.size() - reader.rest().size() };
}

/// The question again, with nothing after it and with another outcome.
std::vector<std::byte> emptyAnswer(Bytes message, const Question& question, std::uint8_t outcome)
{
    std::vector<std::byte> answer(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(question.end));
    answer[2] &= std::byte { 0xfd }; // it is whole: whoever is told to ask again over TCP would get the other answer there
    answer[3] = (answer[3] & std::byte { 0xd0 }) | std::byte { outcome }; // not "authenticated" any more
    std::fill(answer.begin() + 6, answer.begin() + headerSize, std::byte { 0 });
    return answer;
}

} // namespace

std::optional<std::vector<std::byte>> rewrittenAnswer(Bytes message, const DomainTable& blocked)
{
    const auto question = readQuestion(message);
    if (!question)
        return std::nullopt;
    if (question->name == canary)
        return emptyAnswer(message, *question, noSuchName);
    if (question->type == httpsRecord && blocked.entryCovering(question->name))
        return emptyAnswer(message, *question, 0);
    return std::nullopt;
}

bool isFromNameService(const Packet& packet)
{
    return packet.flow.transport == Transport::udp && packet.flow.sourcePort == nameServicePort && packet.flow.destinationPort != httpsPort;
}

std::optional<std::vector<std::byte>> rewrittenAnswerPacket(Bytes bytes, const DomainTable& blocked)
{
    const auto packet = readPacket(bytes);
    if (!packet || !isFromNameService(*packet))
        return std::nullopt;
    const auto answer = rewrittenAnswer(packet->payload, blocked);
    return answer ? std::optional(withPayload(bytes, *packet, *answer)) : std::nullopt;
}

} // namespace orvanta::filter
