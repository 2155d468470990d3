#include "filter/linux/content_filter.h"

#include <random>

namespace orvanta::filter {

namespace {

/// Connections that an earlier run of the daemon allowed must not pass for ones that this run did.
std::uint8_t someGeneration()
{
    return static_cast<std::uint8_t>(1 + std::random_device()() % lastGeneration);
}

} // namespace

ContentFilter::ContentFilter(std::uint16_t queue, MarkBits bits, int refusals)
    : m_number(queue)
    , m_rules(bits)
    , m_bits(bits)
    , m_refusals(refusals)
    , m_generation(someGeneration())
    , m_inspector(std::make_shared<DomainTable>())
{
}

ContentFilter::~ContentFilter()
{
    if (m_queue)
        (void)switchOff();
}

std::expected<void, std::string> ContentFilter::switchOn(const std::vector<std::string>& domains)
{
    if (m_queue && domains == m_domains)
        return {};
    auto blocked = std::make_shared<DomainTable>(DomainTable::build(domains));
    m_domains = domains;
    // Also when the list is the same as before: while nobody looked, a connection may have taken over the ports, and with
    // them the mark, of one that was allowed. So all are asked about once more.
    m_generation = m_generation == lastGeneration ? 1 : static_cast<std::uint8_t>(m_generation + 1);
    if (m_queue) {
        m_queue->setBlocked(std::move(blocked));
        return m_rules.setGeneration(m_generation);
    }
    auto queue = PacketQueue::open(m_number, m_bits, m_refusals);
    if (!queue)
        return std::unexpected(queue.error());
    if (const auto loaded = m_rules.load(m_number, m_generation); !loaded)
        return loaded;
    // From here on no connection begins unseen.
    const OpenConnections now = OpenConnections::read();
    m_inspector.keepOnly([&](const FlowKey& key) { return now.isTheSame(key, m_connections); });
    m_inspector.setBlocked(std::move(blocked));
    m_queue = *std::move(queue);
    m_queue->start(std::move(m_inspector));
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

} // namespace orvanta::filter
