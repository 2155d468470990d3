#pragma once

#include "filter/linux/filter_rules.h"
#include "filter/linux/open_connections.h"
#include "filter/linux/packet_queue.h"

#include <expected>
#include <memory>
#include <string>
#include <vector>

namespace orvanta::filter {

/// The filter as a whole: the rules are in the kernel, and the queue is answered, exactly while it is on.
class ContentFilter {
public:
    /// `refusals` is an event descriptor that grows with each refusal.
    ContentFilter(std::uint16_t queue, MarkBits bits, int refusals);
    /// Takes the rules away.
    ~ContentFilter();

    ContentFilter(const ContentFilter&) = delete;
    ContentFilter& operator=(const ContentFilter&) = delete;

    /// Blocks `domains` from now on; `generation` stands for them, also from one run to the next. When it is on already,
    /// connections to what another generation blocks are closed with their next packet, and the others go on.
    [[nodiscard]] std::expected<void, std::string> switchOn(const std::vector<std::string>& domains, std::uint8_t generation);
    [[nodiscard]] std::expected<void, std::string> switchOff();

    /// Puts the rules back if somebody else has taken them away or changed them. True if that had to be done.
    [[nodiscard]] std::expected<bool, std::string> repair();

    [[nodiscard]] const PacketQueue* queue() const { return m_queue.get(); }
    /// How many packets the rules had for us that nobody has looked at: they went past, or are on their way just now.
    [[nodiscard]] std::uint64_t missed() const;

private:
    std::uint16_t m_number;
    FilterRules m_rules;
    MarkBits m_bits;
    int m_refusals;
    std::uint8_t m_generation = 0;
    std::vector<std::uint64_t> m_loaded;  ///< what identifies our rules
    FlowInspector m_inspector;            ///< what was known when it was switched off; the queue has it while it is on
    OpenConnections m_connections;        ///< that were open then
    std::unique_ptr<PacketQueue> m_queue; ///< present while it is on
};

} // namespace orvanta::filter
