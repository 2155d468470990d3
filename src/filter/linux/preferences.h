#pragma once

#include <cstdint>
#include <expected>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvanta::filter {

/// The configuration that the application saves with us, field for field.
struct Preferences {
    bool enabled = false;
    int grade = 2;
    std::optional<std::string> localizedDescription {};

    bool hasProvider = false;
    bool filterSockets = false;
    std::optional<std::string> providerIdentifier {};
    std::vector<std::string> blockedDomains {};
    bool hasBlockedDomains = false;

    bool operator==(const Preferences&) const = default;

    /// Whether they ask us, and not some other provider, to filter.
    [[nodiscard]] bool asksToFilter() const;
};

/// What the daemon knows from one start to the next.
struct StoredState {
    bool activated = false;
    Preferences preferences {};
    std::string dnsProxyProvider {}; ///< of a configuration that an earlier version saved
    std::uint8_t generation = 0;     ///< of the list of domains: what it allowed stays allowed when the daemon starts anew

    bool operator==(const StoredState&) const = default;
};

/// More than a list of domains may hold, and one entry of it.
inline constexpr std::size_t mostDomains = 1'500'000;
inline constexpr std::size_t longestText = 4096;

/// As it stands in the file, and back. What is not of that form, or holds an unknown key, is an error.
[[nodiscard]] std::string encodeState(const StoredState& state);
[[nodiscard]] std::expected<StoredState, std::string> decodeState(const std::string& text);

/// Why a stored state was not read. A damaged file is set aside, so that there is none any more; one that could not be
/// looked into stays where it is, since it may hold what must not be lost.
struct UnreadState {
    std::string reason;
    bool isSetAside = false;
};

/// The state in a file of its folder, replaced as a whole: after a crash it is the old one or the new one.
class StateFile {
public:
    explicit StateFile(std::string folder) : m_folder(std::move(folder)) { }

    /// A fresh state where there is none.
    [[nodiscard]] std::expected<StoredState, UnreadState> read() const;
    [[nodiscard]] std::expected<void, std::string> write(const StoredState& state) const;

private:
    std::string m_folder;
};

} // namespace orvanta::filter
