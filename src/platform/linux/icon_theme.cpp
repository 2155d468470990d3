#include "platform/linux/icon_theme.h"

#include "platform/linux/desktop_entry_index.h"
#include "platform/portable/bounded_file.h"

#include <QFile>
#include <QIcon>

#include <algorithm>
#include <array>
#include <charconv>
#include <tuple>
#include <vector>

#include <unistd.h>

#include <gio/gio.h>

namespace orvanta {

namespace {

/// The largest indexes in use, with a thousand folders, are below 200 KiB.
constexpr std::size_t indexLimit = std::size_t { 1 } << 20;

/// A bound against themes that inherit from each other without end.
constexpr std::size_t mostThemes = 32;

constexpr auto suffixes = std::to_array<std::string_view>({ ".png", ".svg", ".xpm" });

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view {} : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// A number of pixels; absurd ones are none.
std::optional<int> number(std::string_view text)
{
    constexpr int largest = 100'000;
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() && value > 0 && value <= largest ? std::optional(value) : std::nullopt;
}

/// Whether a name, or each part of one with slashes in it, leads down from where it is looked up.
bool leadsDown(std::string_view path)
{
    while (true) {
        const auto slash = path.find('/');
        const std::string_view part = path.substr(0, slash);
        if (part.empty() || part == "." || part == "..")
            return false;
        if (slash == std::string_view::npos)
            return true;
        path = path.substr(slash + 1);
    }
}

/// One group of an index, while it is read.
struct Group {
    std::string name;
    std::string type = "Threshold";
    std::string context;
    std::optional<int> size;
    std::optional<int> smallest;
    std::optional<int> largest;
    int threshold = 2;
    int scale = 1;

    void take(std::string_view key, std::string_view value)
    {
        if (key == "Size")
            size = number(value);
        else if (key == "Scale")
            scale = number(value).value_or(1);
        else if (key == "Type")
            type = value;
        else if (key == "Context")
            context = value;
        else if (key == "MinSize")
            smallest = number(value);
        else if (key == "MaxSize")
            largest = number(value);
        else if (key == "Threshold")
            threshold = number(value).value_or(2);
    }

    [[nodiscard]] std::optional<IconThemeFolder> folder() const
    {
        if (!size || !leadsDown(name))
            return std::nullopt;
        int from = *size;
        int to = *size;
        if (type == "Scalable") {
            from = smallest.value_or(*size);
            to = largest.value_or(*size);
        } else if (type == "Threshold") {
            from -= threshold;
            to += threshold;
        }
        return IconThemeFolder { .path = name, .smallest = from * scale, .largest = to * scale, .isForApplications = context == "Applications" };
    }
};

/// How ill a folder serves a size; 0: exactly. What has to be made larger is worse than what has to be made smaller.
int misfit(const IconThemeFolder& folder, int pixelSize)
{
    if (pixelSize < folder.smallest)
        return folder.smallest - pixelSize;
    constexpr int blur = 4;
    return pixelSize > folder.largest ? (pixelSize - folder.largest) * blur : 0;
}

std::optional<std::string> fileIn(const std::string& folder, const std::string& name)
{
    for (const std::string_view suffix : suffixes) {
        std::string path = std::string(folder).append("/").append(name).append(suffix);
        if (::access(path.c_str(), R_OK) == 0)
            return path;
    }
    return std::nullopt;
}

/// What the desktop's own settings call its theme; empty where they are not installed.
std::string themeOfDesktopSettings()
{
    GSettingsSchemaSource* installed = g_settings_schema_source_get_default();
    GSettingsSchema* schema = installed ? g_settings_schema_source_lookup(installed, "org.gnome.desktop.interface", TRUE) : nullptr;
    if (!schema)
        return {};
    std::string theme;
    if (g_settings_schema_has_key(schema, "icon-theme")) {
        GSettings* settings = g_settings_new_full(schema, nullptr, nullptr);
        GVariant* value = g_settings_get_value(settings, "icon-theme");
        if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING))
            theme = g_variant_get_string(value, nullptr);
        g_variant_unref(value);
        g_object_unref(settings);
    }
    g_settings_schema_unref(schema);
    return theme;
}

} // namespace

IconThemeIndex parseIconThemeIndex(std::string_view bytes)
{
    constexpr std::string_view themeGroup = "Icon Theme";
    IconThemeIndex index;
    Group group;
    const auto finish = [&] {
        if (auto folder = group.name.empty() || group.name == themeGroup ? std::nullopt : group.folder())
            index.folders.push_back(*std::move(folder));
    };
    while (!bytes.empty()) {
        const auto lineEnd = bytes.find('\n');
        const std::string_view line = trimmed(bytes.substr(0, lineEnd));
        bytes = lineEnd == std::string_view::npos ? std::string_view {} : bytes.substr(lineEnd + 1);
        if (line.starts_with('[') && line.ends_with(']')) {
            finish();
            group = Group { .name = std::string(line.substr(1, line.size() - 2)), .context = {}, .size = {}, .smallest = {}, .largest = {} };
            continue;
        }
        const auto equals = line.find('=');
        if (equals == std::string_view::npos || line.starts_with('#'))
            continue;
        const std::string_view key = trimmed(line.substr(0, equals));
        std::string_view value = trimmed(line.substr(equals + 1));
        if (group.name != themeGroup) {
            group.take(key, value);
        } else if (key == "Inherits") {
            while (!value.empty()) {
                const auto comma = value.find(',');
                if (const std::string_view parent = trimmed(value.substr(0, comma)); !parent.empty())
                    index.parents.emplace_back(parent);
                value = comma == std::string_view::npos ? std::string_view {} : value.substr(comma + 1);
            }
        }
    }
    finish();
    return index;
}

IconThemes::IconThemes(std::vector<std::string> folders, std::vector<std::string> themes, std::vector<std::string> looseFolders)
    : m_folders(std::move(folders))
    , m_themes(std::move(themes))
    , m_looseFolders(std::move(looseFolders))
{
}

IconThemes IconThemes::current()
{
    constexpr std::string_view applications = "/applications";
    std::vector<std::string> folders { qgetenv("HOME").toStdString() + "/.icons" };
    std::vector<std::string> loose;
    for (const std::string& folder : applicationFolders()) {
        const std::string data = folder.substr(0, folder.size() - applications.size());
        folders.push_back(data + "/icons");
        loose.push_back(data + "/icons");
        loose.push_back(data + "/pixmaps");
    }
    std::vector<std::string> themes { themeOfDesktopSettings(), QFile::encodeName(QIcon::themeName()).toStdString() };
    return { std::move(folders), std::move(themes), std::move(loose) };
}

std::optional<std::string> IconThemes::find(const std::string& name, int pixelSize) const
{
    if (name.find('/') != std::string::npos || !leadsDown(name))
        return std::nullopt;

    std::vector<char> buffer;
    std::vector<std::string> themes = m_themes;
    themes.emplace_back("hicolor");
    std::vector<std::string> asked;
    while (!themes.empty() && asked.size() < mostThemes) {
        const std::string theme = themes.front();
        themes.erase(themes.begin());
        if (!leadsDown(theme) || theme.find('/') != std::string::npos || std::ranges::find(asked, theme) != asked.end())
            continue;
        asked.push_back(theme);

        // The parts of a theme may stand in several folders; its index stands in one of them.
        std::vector<std::string> places;
        std::optional<IconThemeIndex> index;
        for (const std::string& folder : m_folders) {
            std::string place = std::string(folder).append("/").append(theme);
            if (!index) {
                if (const auto bytes = readBoundedFile((place + "/index.theme").c_str(), indexLimit, buffer))
                    index = parseIconThemeIndex(*bytes);
            }
            if (::access(place.c_str(), X_OK) == 0)
                places.push_back(std::move(place));
        }
        if (!index)
            continue;
        // The icon that all themes fall back on is asked for last, after everything that this one inherits from.
        const auto last = themes.empty() ? themes.end() : themes.end() - 1;
        themes.insert(theme == "hicolor" ? themes.end() : last, index->parents.begin(), index->parents.end());

        std::vector<const IconThemeFolder*> folders;
        for (const IconThemeFolder& folder : index->folders)
            folders.push_back(&folder);
        // Of those that fit alike, the one that the theme names first.
        std::ranges::sort(folders, {},
            [pixelSize](const IconThemeFolder* folder) { return std::tuple(!folder->isForApplications, misfit(*folder, pixelSize), folder); });
        for (const IconThemeFolder* folder : folders) {
            for (const std::string& place : places) {
                if (auto file = fileIn(std::string(place).append("/").append(folder->path), name))
                    return file;
            }
        }
    }
    for (const std::string& folder : m_looseFolders) {
        if (auto file = fileIn(folder, name))
            return file;
    }
    return std::nullopt;
}

} // namespace orvanta
