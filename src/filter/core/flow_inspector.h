#pragma once

#include "filter/core/domain_table.h"
#include "filter/core/name_search.h"
#include "filter/core/packet.h"
#include "filter/core/range_buffer.h"

#include <chrono>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvanta::filter {

/// What becomes of a packet, and of its flow.
enum class Verdict {
    pass,   ///< let it go; nothing is known about the flow yet
    allow,  ///< let it go, and all that follows it
    refuse, ///< refuse it, and all that follows it
};

/// Why a flow was decided as it was; what is counted.
enum class Reason {
    undecided,     ///< more has to come first
    notBlocked,    ///< it names a host that no entry covers
    blocked,       ///< it names a host that an entry covers
    nameless,      ///< it names no host, or not in a protocol that we know
    openedBefore,  ///< it was set up before anybody looked
    contradictory, ///< it sends other bytes for the same place of its stream, so nobody can say which ones are read
    unreadable,    ///< the packet makes no sense to us
};

struct Decision {
    Verdict verdict = Verdict::pass;
    Reason reason = Reason::undecided;

    bool operator==(const Decision&) const = default;
};

/// Decides flows from what their clients send first. Remembers a bounded number of flows for a bounded time, the least
/// recently used going first. One thread; the table of blocked hosts may be exchanged between two packets.
class FlowInspector {
public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::size_t mostFlows = 4096;
    static constexpr std::chrono::seconds patience { 30 };
    /// Segments of a protocol that we do not know, in which a beginning that we know may still come: behind a proxy's
    /// greeting, or after an upload that began before anybody looked.
    static constexpr int mostStrangeSegments = 64;

    explicit FlowInspector(std::shared_ptr<const DomainTable> blocked) : m_blocked(std::move(blocked)) { }

    /// From now on `blocked` counts. Flows that were decided are decided anew when they are asked about again.
    void setBlocked(std::shared_ptr<const DomainTable> blocked) { m_blocked = std::move(blocked); }

    /// Forgets what is known of flows for which `isStillOpen` is not true: their ports may belong to others by now.
    void keepOnly(const std::function<bool(const FlowKey&)>& isStillOpen);

    /// A packet that a client sent to port 80 or 443.
    [[nodiscard]] Decision inspect(Bytes bytes, Clock::time_point now);

    [[nodiscard]] std::size_t flowCount() const { return m_flows.size(); }

private:
    struct Flow {
        explicit Flow(const FlowKey& itsKey) : key(itsKey), stream(longestSearch) { }

        FlowKey key;
        RangeBuffer stream;
        std::uint32_t firstSequence = 0;
        std::vector<std::byte> destination {}; ///< of the first QUIC packet
        std::size_t needed = 0;                ///< what has to be there before another search is worth while
        int strangeSegments = 0;               ///< in a row, of no protocol that we know
        std::optional<std::string> host {};    ///< once it is known; empty if it names none
        Clock::time_point lastSeen {};
    };

    Flow& remember(const FlowKey& key, Clock::time_point now);
    void forget(std::list<Flow>::iterator flow);
    [[nodiscard]] Decision inspectTcp(const Packet& packet, Clock::time_point now);
    [[nodiscard]] Decision inspectQuic(const Packet& packet, Clock::time_point now);
    [[nodiscard]] Decision continueStream(Flow& flow, std::uint32_t sequence, const Packet& packet);
    [[nodiscard]] static Decision conclude(Flow& flow, NameSearch search, const DomainTable& blocked);

    std::shared_ptr<const DomainTable> m_blocked;
    std::list<Flow> m_flows; ///< the most recently used first
    std::map<FlowKey, std::list<Flow>::iterator> m_places;
};

} // namespace orvanta::filter
