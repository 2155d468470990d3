#include "filter/core/flow_inspector.h"

#include "filter/core/http_host.h"
#include "filter/core/quic_initial.h"
#include "filter/core/tls_client_hello.h"

namespace orvanta::filter {

namespace {

constexpr std::uint16_t httpsPort = 443;

NameSearch searchIn(Bytes stream, std::uint16_t port)
{
    // Either protocol may be spoken on either port; what the port is for is tried first.
    NameSearch search = port == httpsPort ? findServerNameInRecords(stream) : findHttpHost(stream);
    if (search.outcome == NameSearch::Outcome::foreign)
        search = port == httpsPort ? findHttpHost(stream) : findServerNameInRecords(stream);
    return search;
}

/// `host` is empty for a flow that names none.
Decision judge(const std::string& host, const DomainTable& blocked)
{
    if (host.empty())
        return { Verdict::allow, Reason::nameless };
    return blocked.entryCovering(host) ? Decision { Verdict::refuse, Reason::blocked } : Decision { Verdict::allow, Reason::notBlocked };
}

} // namespace

Decision FlowInspector::inspect(Bytes bytes, Clock::time_point now)
{
    while (!m_flows.empty() && now - m_flows.back().lastSeen > patience && !m_flows.back().host)
        forget(std::prev(m_flows.end()));
    const auto packet = readPacket(bytes);
    if (!packet)
        return { Verdict::pass, Reason::unreadable };
    return packet->flow.transport == Transport::tcp ? inspectTcp(*packet, now) : inspectQuic(*packet, now);
}

Decision FlowInspector::inspectTcp(const Packet& packet, Clock::time_point now)
{
    if (packet.isReset)
        return {};
    const auto known = m_places.find(packet.flow);
    // A SYN takes a number of its own, before the first byte.
    const std::uint32_t sequence = packet.sequence + (packet.isSyn ? 1 : 0);
    if (packet.isSyn) {
        // A new connection over the same ports has nothing to do with the old one.
        if (known != m_places.end())
            forget(known->second);
        remember(packet.flow, now).firstSequence = sequence;
    } else if (known != m_places.end() && known->second->host && sequence - known->second->firstSequence >= longestSearch
        && !isLaterRecord(packet.payload) && searchIn(packet.payload, packet.flow.destinationPort).outcome != NameSearch::Outcome::foreign) {
        // The same ports, and neither the beginning that was decided nor a record from later on: another connection.
        forget(known->second);
    }
    if (packet.payload.empty())
        return {};
    const bool isNew = !m_places.contains(packet.flow);
    if (isNew && isLaterRecord(packet.payload))
        return { Verdict::refuse, Reason::openedBefore };
    Flow& flow = remember(packet.flow, now);
    if (isNew)
        flow.firstSequence = sequence;
    if (flow.host)
        return judge(*flow.host, *m_blocked);
    return continueStream(flow, sequence, packet);
}

/// Puts a segment into the stream of a flow that is not decided.
Decision FlowInspector::continueStream(Flow& flow, std::uint32_t sequence, const Packet& packet)
{
    auto fit = RangeBuffer::Fit::agrees;
    const std::uint32_t offset = sequence - flow.firstSequence;
    if (offset > 0x80000000U) {
        // A segment from before what we saw first: the beginning is further back than we thought, if it is near.
        const std::uint32_t missing = flow.firstSequence - sequence;
        if (missing >= longestSearch)
            return {};
        flow.stream.moveBack(missing);
        fit = flow.stream.insert(0, packet.payload);
        flow.firstSequence = sequence;
        flow.needed = 0;
    } else {
        fit = flow.stream.insert(offset, packet.payload);
    }
    if (fit == RangeBuffer::Fit::contradicts)
        return { Verdict::refuse, Reason::contradictory };
    if (flow.stream.prefix().size() < flow.needed)
        return {};
    const std::uint16_t port = packet.flow.destinationPort;
    NameSearch search = searchIn(flow.stream.prefix(), port);
    if (search.outcome == NameSearch::Outcome::foreign) {
        // No beginning, or one that is still to come: of a segment that was overtaken, or behind something else.
        if (isLaterRecord(packet.payload))
            return { Verdict::refuse, Reason::openedBefore };
        search = searchIn(packet.payload, port);
        if (search.outcome == NameSearch::Outcome::foreign) {
            if (++flow.strangeSegments < mostStrangeSegments)
                return {};
        } else {
            flow.stream = RangeBuffer(longestSearch);
            (void)flow.stream.insert(0, packet.payload);
            flow.firstSequence = sequence;
        }
    }
    return conclude(flow, std::move(search), *m_blocked);
}

Decision FlowInspector::inspectQuic(const Packet& packet, Clock::time_point now)
{
    const auto destination = initialDestination(packet.payload);
    if (!destination) {
        // Later packets come here when nobody has decided their connection, or the list has changed since.
        const auto known = m_places.find(packet.flow);
        if (known == m_places.end())
            return { Verdict::refuse, Reason::openedBefore };
        Flow& flow = remember(packet.flow, now);
        // The handshake is over, and went past us.
        return flow.host ? judge(*flow.host, *m_blocked) : conclude(flow, { .outcome = NameSearch::Outcome::absent }, *m_blocked);
    }
    Flow& flow = remember(packet.flow, now);
    if (flow.host && std::ranges::equal(flow.destination, *destination))
        return judge(*flow.host, *m_blocked);
    if (flow.destination.empty())
        flow.destination.assign(destination->begin(), destination->end());
    auto pieces = openClientInitials(packet.payload, flow.destination);
    if (!pieces) {
        // After a retry, or over reused ports, the keys follow from another connection id.
        pieces = openClientInitials(packet.payload, *destination);
        if (!pieces)
            return { Verdict::pass, Reason::unreadable };
        flow.destination.assign(destination->begin(), destination->end());
        flow.stream = RangeBuffer(longestSearch);
        flow.host.reset();
        flow.needed = 0;
    }
    if (flow.host)
        return judge(*flow.host, *m_blocked);
    for (const CryptoPiece& piece : *pieces)
        (void)flow.stream.insert(piece.offset, piece.bytes);
    return conclude(flow, findServerName(flow.stream.prefix()), *m_blocked);
}

Decision FlowInspector::conclude(Flow& flow, NameSearch search, const DomainTable& blocked)
{
    if (search.outcome == NameSearch::Outcome::incomplete) {
        flow.needed = search.needed;
        return {};
    }
    flow.host = search.outcome == NameSearch::Outcome::found ? std::move(search.name) : std::string();
    flow.stream = RangeBuffer(longestSearch);
    return judge(*flow.host, blocked);
}

void FlowInspector::keepOnly(const std::function<bool(const FlowKey&)>& isStillOpen)
{
    for (auto flow = m_flows.begin(); flow != m_flows.end();) {
        const auto next = std::next(flow);
        if (!isStillOpen(flow->key))
            forget(flow);
        flow = next;
    }
}

FlowInspector::Flow& FlowInspector::remember(const FlowKey& key, Clock::time_point now)
{
    if (const auto known = m_places.find(key); known != m_places.end()) {
        m_flows.splice(m_flows.begin(), m_flows, known->second);
    } else {
        if (m_flows.size() == mostFlows)
            forget(std::prev(m_flows.end()));
        m_flows.emplace_front(key);
        m_places[key] = m_flows.begin();
    }
    m_flows.front().lastSeen = now;
    return m_flows.front();
}

void FlowInspector::forget(std::list<Flow>::iterator flow)
{
    m_places.erase(flow->key);
    m_flows.erase(flow);
}

} // namespace orvanta::filter
