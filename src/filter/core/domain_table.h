#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta::filter {

/// The blocked hosts, compact and quick to ask: a pool of names, and an open-addressed table of places in it. A host is
/// covered by an entry that equals it or that one of its parent domains equals. Immutable once built, so threads share
/// it freely.
class DomainTable {
public:
    DomainTable() = default;

    /// From entries as users write them; those that mean no host are left out.
    [[nodiscard]] static DomainTable build(std::span<const std::string> entries);

    /// The entry that covers `host`, as it is compared; the most specific one if several do. `host` is comparable
    /// (see comparableHost). The view is into the table.
    [[nodiscard]] std::optional<std::string_view> entryCovering(std::string_view host) const;

    [[nodiscard]] std::size_t size() const { return m_size; }
    /// What the table takes, in bytes.
    [[nodiscard]] std::size_t memory() const;

private:
    void insert(std::string_view host);
    [[nodiscard]] std::string_view nameAt(std::uint32_t place) const;

    std::vector<char> m_pool;            ///< each name after its length
    std::vector<std::uint32_t> m_places; ///< into the pool
    std::vector<std::uint8_t> m_tags;    ///< eight bits of the hash; 0 where the slot is free
    std::size_t m_size = 0;
};

} // namespace orvanta::filter
