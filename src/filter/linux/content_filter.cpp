#include "filter/linux/content_filter.h"

namespace orvanta::filter {

ContentFilter::ContentFilter(std::uint16_t queue, MarkBits bits, int refusals)
    : m_number(queue)
    , m_rules(bits)
    , m_bits(bits)
    , m_refusals(refusals)
    , m_inspector(std::make_shared<DomainTable>())
{
}

ContentFilter::~ContentFilter()
{
    if (m_queue)
        (void)switchOff();
}

std::expected<void, std::string> ContentFilter::switchOn(const std::vector<std::string>& domains, std::uint8_t generation)
{
    if (m_queue && generation == m_generation)
        return {};
    auto blocked = std::make_shared<DomainTable>(DomainTable::build(domains));
    if (m_queue) {
        m_queue->setBlocked(std::move(blocked));
        m_generation = generation; // the queue's, whether or not the rules follow
        if (!m_rules.setGeneration(generation)) {
            // Somebody has taken them away, or changed them.
            if (const auto loaded = m_rules.load(m_number, generation); !loaded)
                return loaded;
            m_queue->startCounting();
        }
    } else {
        auto queue = PacketQueue::open(m_number, m_bits, m_refusals);
        if (!queue)
            return std::unexpected(queue.error());
        if (const auto loaded = m_rules.load(m_number, generation); !loaded)
            return loaded;
        // From here on no connection begins unseen.
        const OpenConnections now = OpenConnections::read();
        m_inspector.keepOnly([&](const FlowKey& key) { return now.isTheSame(key, m_connections); });
        m_queue = *std::move(queue);
        m_queue->start(std::move(m_inspector), std::move(blocked));
    }
    m_generation = generation;
    m_loaded = FilterRules::identity();
    return {};
}

std::expected<void, std::string> ContentFilter::switchOff()
{
    // Until the rules are gone no connection begins unseen.
    if (m_queue)
        m_connections = OpenConnections::read();
    const auto removed = FilterRules::remove();
    if (m_queue)
        m_inspector = m_queue->stop();
    m_queue.reset();
    return removed;
}

std::expected<bool, std::string> ContentFilter::repair()
{
    if (!m_queue || FilterRules::identity() == m_loaded)
        return false;
    if (const auto loaded = m_rules.load(m_number, m_generation); !loaded)
        return std::unexpected(loaded.error());
    m_queue->startCounting();
    m_loaded = FilterRules::identity();
    return true;
}

std::uint64_t ContentFilter::missed() const
{
    if (!m_queue)
        return 0;
    const std::uint64_t asked = FilterRules::asked(); // before what was seen, which grows
    const std::uint64_t seen = m_queue->seenSinceCounting();
    return asked > seen ? asked - seen : 0;
}

} // namespace orvanta::filter
