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
{
}

ContentFilter::~ContentFilter()
{
    if (m_queue)
        (void)switchOff();
}

std::expected<void, std::string> ContentFilter::switchOn(const std::vector<std::string>& domains)
{
    const bool isOther = domains != m_domains;
    if (m_queue && !isOther)
        return {};
    auto blocked = std::make_shared<DomainTable>(DomainTable::build(domains));
    if (isOther) {
        m_domains = domains;
        m_generation = m_generation == lastGeneration ? 1 : static_cast<std::uint8_t>(m_generation + 1);
    }
    if (m_queue) {
        m_queue->setBlocked(std::move(blocked));
        return m_rules.setGeneration(m_generation);
    }
    auto queue = PacketQueue::open(m_number, m_bits, std::move(blocked), m_refusals);
    if (!queue)
        return std::unexpected(queue.error());
    if (const auto loaded = m_rules.load(m_number, m_generation); !loaded)
        return loaded;
    m_queue = *std::move(queue);
    return {};
}

std::expected<void, std::string> ContentFilter::switchOff()
{
    const auto removed = FilterRules::remove();
    m_queue.reset();
    return removed;
}

} // namespace orvanta::filter
