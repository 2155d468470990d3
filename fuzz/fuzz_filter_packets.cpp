// A row of packets, each after its length in two bytes: the inspector keeps its bound and never refuses what it cannot
// read; and what takes the place of an answer of a name service is a packet of the same flow, and no longer than it was.

#include "filter/core/dns_answer.h"
#include "filter/core/flow_inspector.h"

#include <cstdlib>

using namespace orvanta::filter;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const auto blocked = std::make_shared<DomainTable>(DomainTable::build(std::vector<std::string> { "a.example" }));
    FlowInspector inspector(blocked);
    FlowInspector::Clock::time_point now { std::chrono::hours(1) };
    ByteReader packets(Bytes(reinterpret_cast<const std::byte*>(data), size));
    while (!packets.rest().empty() && !packets.failed()) {
        const Bytes packet = packets.take(std::min<std::size_t>(packets.u16(), packets.rest().size()));
        const Decision decision = inspector.inspect(packet, now);
        if (decision.verdict == Verdict::refuse && decision.reason != Reason::blocked && decision.reason != Reason::openedBefore
            && decision.reason != Reason::contradictory)
            std::abort();
        if (const auto other = rewrittenAnswerPacket(packet, *blocked)) {
            const auto read = readPacket(*other);
            if (other->size() > packet.size() || !read || read->flow != readPacket(packet)->flow)
                std::abort();
        }
        now += std::chrono::milliseconds(100);
    }
    if (inspector.flowCount() > FlowInspector::mostFlows)
        std::abort();
    return 0;
}
