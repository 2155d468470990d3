#pragma once

#include "platform/linux/application_identity_rules.h"
#include "platform/linux/desktop_entry_index.h"
#include "platform/linux/x11_windows.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <unordered_map>
#include <unordered_set>

namespace orvanta {

/// This program, as it appears among the applications: known without looking, since a copy that is not installed has no
/// desktop entry.
struct OwnApplication {
    pid_t process = 0;
    QString identifier;
    QString name;

    /// From the application object; main thread only.
    [[nodiscard]] static OwnApplication current();
};

/// What a window says of the application that it belongs to, on whichever window system.
struct WindowTraits {
    QByteArray instanceName; ///< the first part of WM_CLASS; on Wayland the application id
    QByteArray className;    ///< the second; on Wayland the application id, too
    QByteArray gtkApplicationId;
    QByteArray program; ///< the base name of what it runs, where the process is not known
    pid_t process = 0;  ///< 0 if it is not known or runs on another machine

    bool operator==(const WindowTraits&) const = default;
};

/// Which application a window belongs to. Owned by the adapter that asks; each thread has one of its own.
class ApplicationIdentity {
public:
    /// Both are absent when nothing is known.
    struct Application {
        std::optional<QString> identifier; ///< a desktop-file id with its suffix, or a known browser's own identifier
        std::optional<QString> name;

        bool operator==(const Application&) const = default;
    };

    explicit ApplicationIdentity(OwnApplication own, DesktopEntryIndex index = DesktopEntryIndex(), std::string procFolder = "/proc");

    /// Notices what was installed and removed since. To be called once before a series of of().
    void refresh();

    /// The application that the window belongs to. Remembered until the window says something else of itself.
    [[nodiscard]] const Application& of(const X11Window& window);

    /// The same for a window that its window system knows by `number`.
    [[nodiscard]] const Application& of(std::uint64_t number, const WindowTraits& traits);

    /// The application that a desktop entry stands for, by its id with the suffix; nothing if there is no such entry.
    [[nodiscard]] std::optional<Application> ofDesktopEntry(const QString& id);

    /// Forgets the windows that are not among `windows`.
    void forgetAllBut(const std::vector<X11Window>& windows);
    void forgetAllBut(const std::unordered_set<std::uint64_t>& numbers);

private:
    struct Known {
        WindowTraits traits; ///< as they were when it was identified
        Application application;
    };

    [[nodiscard]] Application identify(const WindowTraits& traits);

    OwnApplication m_own;
    DesktopEntryIndex m_index;
    std::string m_procFolder;
    std::uint64_t m_generation = 0; ///< of the index, when m_known was made
    std::unordered_map<std::uint64_t, Known> m_known;
};

} // namespace orvanta
