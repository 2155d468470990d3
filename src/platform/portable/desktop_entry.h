#pragma once

#include <QString>
#include <QStringList>

#include <cstddef>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// What a desktop entry (a .desktop file of the freedesktop.org format) says about an application: a value, read from
/// files that anybody may have written.
struct DesktopEntry {
    std::optional<QString> type;
    std::optional<QString> name; ///< in the best of the languages asked for
    std::optional<QString> exec; ///< with its quoting and field codes: see desktopEntryCommand()
    std::optional<QString> tryExec;
    std::optional<QString> icon;
    std::optional<QString> startupWmClass;
    std::optional<QStringList> onlyShowIn; ///< present and empty means: nowhere
    QStringList notShowIn;
    bool noDisplay = false;
    bool hidden = false;

    bool operator==(const DesktopEntry&) const = default;
};

enum class DesktopEntryError {
    unreadable, ///< no such file, no permission, or not a regular file
    tooLarge,
    noDesktopEntry, ///< no group "Desktop Entry"
};

/// Entries beyond this size are refused. The largest ones in use, with a hundred translations, are below 100 KiB.
inline constexpr std::size_t desktopEntryLimit = std::size_t { 1 } << 20;

/// The language tags under which a translation for `locale` ("de_CH.UTF-8@euro") may stand, the best first.
[[nodiscard]] std::vector<std::string> desktopEntryLanguages(std::string_view locale);

/// The same for the process's own locale of messages, as its environment gives it.
[[nodiscard]] std::vector<std::string> desktopEntryLanguages();

/// Reads the bytes of a desktop entry. Takes any bytes: what is no entry is an error, what is wrong in one is passed over,
/// and of a key that stands twice the last one counts. `languages` as desktopEntryLanguages() gives them.
[[nodiscard]] std::expected<DesktopEntry, DesktopEntryError> parseDesktopEntry(std::string_view bytes, std::span<const std::string> languages);

/// The same for a file. Never waits: a pipe or a device in a file's place is refused.
[[nodiscard]] std::expected<DesktopEntry, DesktopEntryError> readDesktopEntry(const std::string& path, std::span<const std::string> languages);

/// The words of an Exec value: unquoted, without field codes. Empty if a quotation is never closed.
[[nodiscard]] QStringList desktopEntryCommand(QStringView exec);

/// Whether an entry is meant for a desktop that calls itself by one of `desktops` (XDG_CURRENT_DESKTOP, split at ":").
[[nodiscard]] bool isShownIn(const DesktopEntry& entry, const QStringList& desktops);

} // namespace orvanta
