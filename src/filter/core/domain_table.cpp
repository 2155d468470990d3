#include "filter/core/domain_table.h"

#include "filter/core/host_name.h"

#include <cstring>
#include <limits>

namespace orvanta::filter {

namespace {

/// Hashes a name from its end, so that one walk over a host gives the hash of each parent domain on the way.
class HashFromTheRight {
public:
    void add(char character) { m_state = (m_state ^ static_cast<unsigned char>(character)) * 0x9fb21c651e98df25U; }

    [[nodiscard]] std::uint64_t value() const
    {
        std::uint64_t mixed = m_state ^ m_state >> 32;
        mixed *= 0xd6e8feb86659fd93U;
        return mixed ^ mixed >> 29;
    }

private:
    std::uint64_t m_state = 0x243f6a8885a308d3U;
};

std::uint64_t hashOf(std::string_view name)
{
    HashFromTheRight hash;
    for (auto place = name.rbegin(); place != name.rend(); ++place)
        hash.add(*place);
    return hash.value();
}

/// The hash's upper half chooses the slot, evenly over any number of slots; the lower byte is the tag.
std::size_t slotOf(std::uint64_t hash, std::size_t slots)
{
    return static_cast<std::size_t>((hash >> 32) * slots >> 32);
}

std::uint8_t tagOf(std::uint64_t hash)
{
    return static_cast<std::uint8_t>(hash | 1);
}

} // namespace

DomainTable DomainTable::build(std::span<const std::string> entries)
{
    DomainTable table;
    // Two thirds full: short probes for the price of seven and a half bytes an entry.
    const std::size_t slots = entries.size() + entries.size() / 2 + 1;
    table.m_places.resize(slots);
    table.m_tags.resize(slots);
    std::size_t characters = 0;
    for (const std::string& entry : entries)
        characters += entry.size() + 1;
    table.m_pool.reserve(characters);
    for (const std::string& entry : entries)
        if (const auto host = hostOfEntry(entry))
            table.insert(*host);
    table.m_pool.shrink_to_fit();
    return table;
}

void DomainTable::insert(std::string_view host)
{
    if (m_pool.size() > std::numeric_limits<std::uint32_t>::max() - host.size() - 1)
        return; // four billion characters of names
    const std::uint64_t hash = hashOf(host);
    std::size_t slot = slotOf(hash, m_tags.size());
    for (; m_tags[slot] != 0; slot = slot + 1 == m_tags.size() ? 0 : slot + 1)
        if (m_tags[slot] == tagOf(hash) && nameAt(m_places[slot]) == host)
            return;
    m_tags[slot] = tagOf(hash);
    m_places[slot] = static_cast<std::uint32_t>(m_pool.size());
    m_pool.push_back(static_cast<char>(host.size()));
    m_pool.insert(m_pool.end(), host.begin(), host.end());
    ++m_size;
}

std::optional<std::string_view> DomainTable::entryCovering(std::string_view host) const
{
    if (m_size == 0)
        return std::nullopt;
    std::optional<std::string_view> covering;
    // No entry has a single label, so the last one alone need not be looked up.
    const std::size_t lastDot = host.rfind('.');
    HashFromTheRight hash;
    for (std::size_t start = host.size(); start > 0; --start) {
        hash.add(host[start - 1]);
        const bool isWholeLabel = start == 1 || host[start - 2] == '.';
        if (!isWholeLabel || host[start - 1] == '.' || lastDot == std::string_view::npos || start > lastDot)
            continue;
        const std::string_view name = host.substr(start - 1);
        const std::uint64_t value = hash.value();
        const std::uint8_t tag = tagOf(value);
        for (std::size_t slot = slotOf(value, m_tags.size()); m_tags[slot] != 0; slot = slot + 1 == m_tags.size() ? 0 : slot + 1) {
            if (m_tags[slot] == tag && nameAt(m_places[slot]) == name) {
                covering = nameAt(m_places[slot]);
                break;
            }
        }
    }
    return covering;
}

std::size_t DomainTable::memory() const
{
    return m_pool.capacity() + m_places.capacity() * sizeof(std::uint32_t) + m_tags.capacity();
}

std::string_view DomainTable::nameAt(std::uint32_t place) const
{
    return { &m_pool[place + 1], static_cast<unsigned char>(m_pool[place]) };
}

} // namespace orvanta::filter
