// The preferences as somebody sends them over the bus: dictionaries with keys and values of any kind, some of them the right
// ones. Whatever is accepted is a record that can be sent back, and is then the same.

#include "filter/linux/preferences_message.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <string_view>

using namespace orvanta::filter;

namespace {

constexpr std::array<const char*, 8> keys { "enabled", "grade", "localizedDescription", "providerConfiguration", "filterSockets",
    "filterDataProviderBundleIdentifier", "vendorConfiguration", "blockedDomains" };
constexpr int deepest = 5;

/// A bus that leads nowhere; messages need one to be made for.
sd_bus* nowhere()
{
    static sd_bus* const bus = [] {
        int ends[2] {};
        sd_bus* made = nullptr;
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) < 0 || sd_bus_new(&made) < 0 || sd_bus_set_fd(made, ends[0], ends[0]) < 0
            || sd_bus_start(made) < 0)
            std::abort();
        return made;
    }();
    return bus;
}

void must(int status)
{
    if (status < 0)
        std::abort();
}

class Choices {
public:
    Choices(const std::uint8_t* data, std::size_t size) : m_rest(reinterpret_cast<const char*>(data), size) { }

    [[nodiscard]] bool areLeft() const { return !m_rest.empty(); }

    unsigned next(unsigned choices)
    {
        if (m_rest.empty())
            return 0;
        const unsigned chosen = static_cast<unsigned char>(m_rest.front()) % choices;
        m_rest.remove_prefix(1);
        return chosen;
    }

    /// A text without zeros, of the plain half of the bytes: the bus takes no other.
    std::string text()
    {
        const std::size_t size = next(2) == 0 ? next(64) : next(256) * std::size_t { 20 };
        std::string text(m_rest.substr(0, std::min(size, m_rest.size())));
        m_rest.remove_prefix(text.size());
        text.resize(size, 'x');
        for (char& letter : text)
            letter = static_cast<char>((letter & 0x7f) == 0 ? 'x' : letter & 0x7f);
        return text;
    }

private:
    std::string_view m_rest;
};

void appendDictionary(sd_bus_message* message, Choices& choices, int depth);

void appendValue(sd_bus_message* message, Choices& choices, int depth)
{
    switch (depth == deepest ? choices.next(4) : choices.next(7)) {
    case 0:
        return must(sd_bus_message_append(message, "v", "b", static_cast<int>(choices.next(2))));
    case 1:
        return must(sd_bus_message_append(message, "v", "i", static_cast<int>(choices.next(5)) - 1));
    case 2:
        return must(sd_bus_message_append(message, "v", "s", choices.text().c_str()));
    case 3:
        return must(sd_bus_message_append(message, "v", "t", std::uint64_t { choices.next(256) }));
    case 4: {
        must(sd_bus_message_open_container(message, 'v', "as"));
        must(sd_bus_message_open_container(message, 'a', "s"));
        for (unsigned left = choices.next(20); left > 0; --left)
            must(sd_bus_message_append_basic(message, 's', choices.text().c_str()));
        break;
    }
    default:
        must(sd_bus_message_open_container(message, 'v', "a{sv}"));
        must(sd_bus_message_open_container(message, 'a', "{sv}"));
        appendDictionary(message, choices, depth + 1);
        break;
    }
    must(sd_bus_message_close_container(message));
    must(sd_bus_message_close_container(message));
}

void appendDictionary(sd_bus_message* message, Choices& choices, int depth)
{
    for (unsigned left = choices.next(10); left > 0 && choices.areLeft(); --left) {
        must(sd_bus_message_open_container(message, 'e', "sv"));
        const unsigned key = choices.next(keys.size() + 1);
        must(sd_bus_message_append_basic(message, 's', key < keys.size() ? keys[key] : choices.text().c_str()));
        appendValue(message, choices, depth);
        must(sd_bus_message_close_container(message));
    }
}

template <typename Fill>
sd_bus_message* sealed(Fill fill)
{
    sd_bus_message* message = nullptr;
    must(sd_bus_message_new_method_call(nowhere(), &message, nullptr, "/", nullptr, "Save"));
    fill(message);
    must(sd_bus_message_seal(message, 1, 0));
    must(sd_bus_message_rewind(message, 1));
    return message;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Choices choices(data, size);
    sd_bus_message* sent = sealed([&](sd_bus_message* message) {
        must(sd_bus_message_open_container(message, 'a', "{sv}"));
        appendDictionary(message, choices, 0);
        must(sd_bus_message_close_container(message));
    });
    Preferences preferences;
    const bool isAccepted = readPreferences(sent, preferences) >= 0;
    sd_bus_message_unref(sent);
    if (!isAccepted)
        return 0;
    const auto isTooLong = [](const std::string& text) { return text.size() > longestText; };
    if ((preferences.grade != 1 && preferences.grade != 2) || std::ranges::any_of(preferences.blockedDomains, isTooLong)
        || isTooLong(preferences.localizedDescription.value_or("")))
        std::abort();
    sd_bus_message* again = sealed([&](sd_bus_message* message) { must(appendPreferences(message, preferences)); });
    Preferences read;
    if (readPreferences(again, read) < 0 || read != preferences)
        std::abort();
    sd_bus_message_unref(again);
    return 0;
}
