#include "filter/linux/preferences_message.h"

#include <cerrno>
#include <cstring>
#include <string_view>

namespace orvanta::filter {

namespace {

/// Calls `take` with each key of the dictionary that comes next; it reads the value, or says that it does not know the key.
template <typename Take>
int readDictionary(sd_bus_message* message, Take take)
{
    int status = sd_bus_message_enter_container(message, 'a', "{sv}");
    if (status < 0)
        return status;
    while ((status = sd_bus_message_enter_container(message, 'e', "sv")) > 0) {
        const char* key = nullptr;
        status = sd_bus_message_read(message, "s", &key);
        if (status >= 0)
            status = take(std::string_view(key));
        if (status >= 0)
            status = sd_bus_message_exit_container(message);
        if (status < 0)
            return status;
    }
    return status < 0 ? status : sd_bus_message_exit_container(message);
}

int readFlag(sd_bus_message* message, bool& flag)
{
    int value = 0;
    const int status = sd_bus_message_read(message, "v", "b", &value);
    flag = value != 0;
    return status;
}

int readText(sd_bus_message* message, std::optional<std::string>& text)
{
    const char* value = nullptr;
    const int status = sd_bus_message_read(message, "v", "s", &value);
    if (status < 0)
        return status;
    if (std::strlen(value) > longestText)
        return -E2BIG;
    text = value;
    return status;
}

int readDomains(sd_bus_message* message, std::vector<std::string>& domains)
{
    int status = sd_bus_message_enter_container(message, 'v', "as");
    if (status >= 0)
        status = sd_bus_message_enter_container(message, 'a', "s");
    if (status < 0)
        return status;
    const char* domain = nullptr;
    while ((status = sd_bus_message_read_basic(message, 's', static_cast<void*>(&domain))) > 0) {
        if (domains.size() == mostDomains || std::strlen(domain) > longestText)
            return -E2BIG;
        domains.emplace_back(domain);
    }
    if (status >= 0)
        status = sd_bus_message_exit_container(message);
    return status < 0 ? status : sd_bus_message_exit_container(message);
}

template <typename Take>
int readInnerDictionary(sd_bus_message* message, Take take)
{
    int status = sd_bus_message_enter_container(message, 'v', "a{sv}");
    if (status >= 0)
        status = readDictionary(message, take);
    return status < 0 ? status : sd_bus_message_exit_container(message);
}

int readProvider(sd_bus_message* message, Preferences& preferences)
{
    preferences.hasProvider = true;
    return readInnerDictionary(message, [&](std::string_view key) {
        if (key == "filterSockets")
            return readFlag(message, preferences.filterSockets);
        if (key == "filterDataProviderBundleIdentifier")
            return readText(message, preferences.providerIdentifier);
        if (key != "vendorConfiguration")
            return -EINVAL;
        return readInnerDictionary(message, [&](std::string_view vendorKey) {
            if (vendorKey != "blockedDomains" || preferences.hasBlockedDomains)
                return -EINVAL;
            preferences.hasBlockedDomains = true;
            return readDomains(message, preferences.blockedDomains);
        });
    });
}

int appendDomains(sd_bus_message* message, const std::vector<std::string>& domains)
{
    int status = sd_bus_message_open_container(message, 'e', "sv");
    if (status >= 0)
        status = sd_bus_message_append(message, "s", "blockedDomains");
    if (status >= 0)
        status = sd_bus_message_open_container(message, 'v', "as");
    if (status >= 0)
        status = sd_bus_message_open_container(message, 'a', "s");
    for (const std::string& domain : domains)
        if (status >= 0)
            status = sd_bus_message_append_basic(message, 's', domain.c_str());
    for (int container = 0; container < 3 && status >= 0; ++container)
        status = sd_bus_message_close_container(message);
    return status;
}

/// Opens a dictionary that is the value of `key` in another one.
int openInner(sd_bus_message* message, const char* key)
{
    int status = sd_bus_message_open_container(message, 'e', "sv");
    if (status >= 0)
        status = sd_bus_message_append(message, "s", key);
    if (status >= 0)
        status = sd_bus_message_open_container(message, 'v', "a{sv}");
    return status < 0 ? status : sd_bus_message_open_container(message, 'a', "{sv}");
}

int closeInner(sd_bus_message* message)
{
    int status = 0;
    for (int container = 0; container < 3 && status >= 0; ++container)
        status = sd_bus_message_close_container(message);
    return status;
}

int appendProvider(sd_bus_message* message, const Preferences& preferences)
{
    int status = openInner(message, "providerConfiguration");
    if (status >= 0)
        status = sd_bus_message_append(message, "{sv}", "filterSockets", "b", static_cast<int>(preferences.filterSockets));
    if (status >= 0 && preferences.providerIdentifier)
        status = sd_bus_message_append(message, "{sv}", "filterDataProviderBundleIdentifier", "s", preferences.providerIdentifier->c_str());
    if (status >= 0)
        status = openInner(message, "vendorConfiguration");
    if (status >= 0 && preferences.hasBlockedDomains)
        status = appendDomains(message, preferences.blockedDomains);
    if (status >= 0)
        status = closeInner(message);
    return status < 0 ? status : closeInner(message);
}

} // namespace

int readPreferences(sd_bus_message* message, Preferences& preferences)
{
    return readDictionary(message, [&](std::string_view key) {
        if (key == "enabled")
            return readFlag(message, preferences.enabled);
        if (key == "localizedDescription")
            return readText(message, preferences.localizedDescription);
        if (key == "providerConfiguration")
            return readProvider(message, preferences);
        if (key != "grade")
            return -EINVAL;
        const int status = sd_bus_message_read(message, "v", "i", &preferences.grade);
        return status >= 0 && preferences.grade != 1 && preferences.grade != 2 ? -EINVAL : status;
    });
}

int appendPreferences(sd_bus_message* message, const Preferences& preferences)
{
    int status = sd_bus_message_open_container(message, 'a', "{sv}");
    if (status >= 0)
        status = sd_bus_message_append(message, "{sv}", "enabled", "b", static_cast<int>(preferences.enabled));
    if (status >= 0)
        status = sd_bus_message_append(message, "{sv}", "grade", "i", preferences.grade);
    if (status >= 0 && preferences.localizedDescription)
        status = sd_bus_message_append(message, "{sv}", "localizedDescription", "s", preferences.localizedDescription->c_str());
    if (status >= 0 && preferences.hasProvider)
        status = appendProvider(message, preferences);
    return status < 0 ? status : sd_bus_message_close_container(message);
}

} // namespace orvanta::filter
