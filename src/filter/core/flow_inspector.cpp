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
    if (packet.isSyn) {
        // A new connection over the same ports has nothing to do with the old one.
        if (known != m_places.end())
            forget(known->second);
        remember(packet.flow, now).firstSequence = packet.sequence + 1;
        return packet.payload.empty() ? Decision {} : Decision { Verdict::pass, Reason::undecided };
    }
    if (packet.payload.empty())
        return {};
    // The same ports, and neither the beginning that was decided nor a record from later on: another connection.
    const bool isDecided = known != m_places.end() && known->second->host;
    if (isDecided && packet.sequence - known->second->firstSequence >= longestSearch && !isLaterRecord(packet.payload)
        && searchIn(packet.payload, packet.flow.destinationPort).outcome != NameSearch::Outcome::foreign)
        forget(known->second);
    const bool isNew = !m_places.contains(packet.flow);
    if (isNew && isLaterRecord(packet.payload))
        return { Verdict::refuse, Reason::openedBefore };
    Flow& flow = remember(packet.flow, now);
    if (isNew)
        flow.firstSequence = packet.sequence;
    if (flow.host)
        return judge(*flow.host);
    // A segment from before what we saw first: the beginning is further back than we thought, if it is near.
    const std::uint32_t offset = packet.sequence - flow.firstSequence;
    if (offset > 0x80000000U) {
        const std::uint32_t missing = flow.firstSequence - packet.sequence;
        if (missing >= longestSearch)
            return {};
        const Bytes seen = flow.stream.prefix();
        RangeBuffer moved(longestSearch);
        moved.insert(0, packet.payload);
        moved.insert(missing, seen);
        flow.stream = std::move(moved);
        flow.firstSequence = packet.sequence;
        flow.needed = 0;
    } else {
        flow.stream.insert(offset, packet.payload);
    }
    if (flow.stream.prefix().size() < flow.needed)
        return {};
    return conclude(flow, searchIn(flow.stream.prefix(), packet.flow.destinationPort));
}

Decision FlowInspector::inspectQuic(const Packet& packet, Clock::time_point now)
{
    const auto destination = initialDestination(packet.payload);
    if (!destination) {
        // Later packets come here only when the list has changed since their connection was allowed.
        const auto known = m_places.find(packet.flow);
        return known != m_places.end() && known->second->host ? judge(*known->second->host) : Decision { Verdict::pass, Reason::unreadable };
    }
    Flow& flow = remember(packet.flow, now);
    if (flow.host && std::ranges::equal(flow.destination, *destination))
        return judge(*flow.host);
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
        return judge(*flow.host);
    for (const CryptoPiece& piece : *pieces)
        flow.stream.insert(piece.offset, piece.bytes);
    return conclude(flow, findServerName(flow.stream.prefix()));
}

Decision FlowInspector::conclude(Flow& flow, NameSearch search)
{
    switch (search.outcome) {
    case NameSearch::Outcome::incomplete:
        flow.needed = search.needed;
        return {};
    case NameSearch::Outcome::found:
        flow.host = std::move(search.name);
        flow.stream = RangeBuffer(longestSearch);
        return judge(*flow.host);
    case NameSearch::Outcome::absent:
    case NameSearch::Outcome::foreign:
        break;
    }
    forget(m_places.at(flow.key));
    return { Verdict::allow, Reason::nameless };
}

Decision FlowInspector::judge(const std::string& host) const
{
    return m_blocked->entryCovering(host) ? Decision { Verdict::refuse, Reason::blocked } : Decision { Verdict::allow, Reason::notBlocked };
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
