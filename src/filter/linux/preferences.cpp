#include "filter/linux/preferences.h"

#include "filter/linux/mark_bits.h"

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <set>

namespace orvanta::filter {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* ourIdentifier = "com.orvanta.focus.OrvantaFocusDNSProxy";
constexpr const char* fileName = "/state.json";

bool hasOnly(const Json& object, const std::set<std::string>& known)
{
    for (const auto& [key, value] : object.items())
        if (!known.contains(key))
            return false;
    return true;
}

bool isText(const Json& value)
{
    return value.is_string() && value.get_ref<const std::string&>().size() <= longestText;
}

std::string reason(const char* what)
{
    return std::string(what) + ": " + std::strerror(errno);
}

/// All of the file at `path`; absent where there is none.
std::expected<std::optional<std::string>, std::string> contentOf(const std::string& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0 && errno == ENOENT)
        return std::nullopt;
    const auto failed = [&path] { return std::unexpected(reason((path + " cannot be read").c_str())); };
    if (file < 0)
        return failed();
    std::string text;
    constexpr std::size_t pieceSize = 65536;
    for (bool isWhole = false; !isWhole;) {
        const std::size_t before = text.size();
        text.resize(before + pieceSize);
        const auto size = read(file, text.data() + before, pieceSize);
        if (size < 0 && errno != EINTR) {
            auto error = failed();
            (void)close(file);
            return error;
        }
        isWhole = size == 0;
        text.resize(before + static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    }
    (void)close(file);
    return text;
}

bool readDomains(const Json& list, std::vector<std::string>& domains)
{
    if (!list.is_array() || list.size() > mostDomains)
        return false;
    for (const Json& domain : list) {
        if (!isText(domain))
            return false;
        domains.push_back(domain.get<std::string>());
    }
    return true;
}

bool readPreferences(const Json& object, Preferences& preferences)
{
    if (!object.is_object()
        || !hasOnly(object, { "enabled", "grade", "localizedDescription", "hasProvider", "filterSockets", "providerIdentifier", "blockedDomains" }))
        return false;
    for (const auto& [key, value] : object.items()) {
        if (key == "grade"                                                     ? !value.is_number_integer()
                : key == "localizedDescription" || key == "providerIdentifier" ? !isText(value)
                : key == "blockedDomains"                                      ? !readDomains(value, preferences.blockedDomains)
                                                                               : !value.is_boolean())
            return false;
    }
    preferences.enabled = object.value("enabled", false);
    preferences.grade = object.value("grade", 2);
    preferences.hasProvider = object.value("hasProvider", false);
    preferences.filterSockets = object.value("filterSockets", false);
    preferences.hasBlockedDomains = object.contains("blockedDomains");
    if (object.contains("localizedDescription"))
        preferences.localizedDescription = object["localizedDescription"].get<std::string>();
    if (object.contains("providerIdentifier"))
        preferences.providerIdentifier = object["providerIdentifier"].get<std::string>();
    return true;
}

} // namespace

bool Preferences::asksToFilter() const
{
    return enabled && hasProvider && filterSockets && providerIdentifier == ourIdentifier;
}

std::string encodeState(const StoredState& state)
{
    const auto dumped = [](const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); };
    const Preferences& preferences = state.preferences;
    Json record { { "enabled", preferences.enabled }, { "grade", preferences.grade }, { "hasProvider", preferences.hasProvider },
        { "filterSockets", preferences.filterSockets } };
    if (preferences.localizedDescription)
        record["localizedDescription"] = *preferences.localizedDescription;
    if (preferences.providerIdentifier)
        record["providerIdentifier"] = *preferences.providerIdentifier;
    const Json others { { "activated", state.activated }, { "dnsProxyProvider", state.dnsProxyProvider }, { "generation", state.generation } };
    std::string text = dumped(others);
    text.back() = ',';
    text += "\"preferences\":" + dumped(record);
    if (preferences.hasBlockedDomains) {
        // One after the other: a million of them as one value would take ten times their room.
        text.back() = ',';
        text += "\"blockedDomains\":[";
        for (const std::string& domain : preferences.blockedDomains)
            text += dumped(domain) + ",";
        if (!preferences.blockedDomains.empty())
            text.pop_back();
        text += "]}";
    }
    return text + "}\n";
}

std::expected<StoredState, std::string> decodeState(const std::string& text)
{
    const Json whole = Json::parse(text, nullptr, false);
    StoredState state;
    if (!whole.is_object() || !hasOnly(whole, { "activated", "preferences", "dnsProxyProvider", "generation" }) || !whole.contains("activated")
        || !whole["activated"].is_boolean() || !whole.contains("preferences") || !readPreferences(whole["preferences"], state.preferences))
        return std::unexpected("the stored state is damaged");
    if (whole.contains("dnsProxyProvider") && !isText(whole["dnsProxyProvider"]))
        return std::unexpected("the stored state is damaged");
    if (whole.contains("generation") && (!whole["generation"].is_number_unsigned() || whole["generation"].get<std::uint64_t>() > lastGeneration))
        return std::unexpected("the stored state is damaged");
    state.activated = whole["activated"].get<bool>();
    state.generation = whole.value("generation", std::uint8_t { 0 });
    state.dnsProxyProvider = whole.value("dnsProxyProvider", std::string());
    return state;
}

std::expected<StoredState, UnreadState> StateFile::read() const
{
    const std::string path = m_folder + fileName;
    const auto text = contentOf(path);
    if (!text)
        return std::unexpected(UnreadState { text.error() });
    if (!*text)
        return StoredState();
    auto state = decodeState(**text);
    if (!state)
        return std::unexpected(UnreadState { state.error(), std::rename(path.c_str(), (path + ".damaged").c_str()) == 0 });
    return *std::move(state);
}

std::expected<void, std::string> StateFile::write(const StoredState& state) const
{
    const std::string path = m_folder + fileName;
    const std::string next = path + ".next";
    const std::string text = encodeState(state);
    const int file = open(next.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0)
        return std::unexpected(reason("the state cannot be stored"));
    std::size_t written = 0;
    while (written < text.size()) {
        const auto size = ::write(file, text.data() + written, text.size() - written);
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            break;
        written += static_cast<std::size_t>(size);
    }
    const bool isComplete = written == text.size() && fsync(file) == 0;
    if (close(file) != 0 || !isComplete || std::rename(next.c_str(), path.c_str()) != 0) {
        auto failed = std::unexpected(reason("the state cannot be stored"));
        (void)unlink(next.c_str());
        return failed;
    }
    if (const int folder = open(m_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); folder >= 0) {
        (void)fsync(folder);
        (void)close(folder);
    }
    return {};
}

} // namespace orvanta::filter
