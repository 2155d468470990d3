#pragma once

#include "platform/linux/wayland/bus_helper.h"
#include "platform/linux/wayland/window_feed.h"

#include <QByteArray>
#include <QHash>
#include <QTemporaryDir>

#include <chrono>
#include <functional>

class QJsonObject;

namespace orvanta {

/// The windows as a script inside KWin tells them: KWin runs scripts that are handed to it over the session's bus, so nothing has to
/// be installed. The script goes with the feed, and is loaded anew into a KWin that was started again. One that takes no script is asked
/// again, ever more seldom.
class KWinFeed final : public WindowFeed {
public:
    /// `bus` outlives the feed and is dispatched by its owner.
    explicit KWinFeed(BoundedBus& bus);
    ~KWinFeed() override;

    void update() override;
    [[nodiscard]] bool isAttached() const override { return m_hasTold; }
    [[nodiscard]] std::vector<DesktopWindow> windows() override { return m_windows; }
    [[nodiscard]] std::optional<DesktopWindow> front() override;
    [[nodiscard]] std::vector<DesktopWindow> takeActivations() override { return std::exchange(m_activations, {}); }
    void hide(std::span<const DesktopWindow> windows) override;
    [[nodiscard]] std::optional<std::chrono::steady_clock::time_point> nextTry() const override;

private:
    static void called(GDBusConnection* connection, const char* sender, const char* path, const char* interface, const char* method,
        GVariant* arguments, GDBusMethodInvocation* invocation, gpointer feed);

    void exportObject();
    [[nodiscard]] bool isUnloaded();
    void attach();
    void detach();
    [[nodiscard]] bool load(const QByteArray& script, const QByteArray& plugin);
    void unload(const QByteArray& plugin);
    void take(const std::string& method, const QJsonObject& told);
    [[nodiscard]] DesktopWindow read(const QJsonObject& told);

    BusHelper m_kwin;
    QTemporaryDir m_scripts;
    QByteArray m_objectPath; ///< of ours, where the script calls
    guint m_object = 0;
    std::string m_attachedTo;                         ///< the unique name of the KWin that has been asked to run the script; empty if there is none
    bool m_runsScript = false;                        ///< it has taken it
    std::chrono::steady_clock::time_point m_nextTry;  ///< of asking it, where it has not
    std::chrono::seconds m_pause { 0 };               ///< before that
    std::chrono::steady_clock::time_point m_nextLook; ///< whether it still has it
    bool m_hasTold = false;
    bool m_isHidingDone = false;

    QHash<QString, std::uint64_t> m_numbers; ///< by handle
    std::uint64_t m_lastNumber = 0;
    std::vector<DesktopWindow> m_windows;
    std::optional<QString> m_front; ///< its handle; the one beneath a panel of ours
    std::vector<DesktopWindow> m_activations;
};

/// The script that is loaded, with the names of those whom it calls; and the one that hides windows and says so.
[[nodiscard]] QByteArray kwinWindowsScript(const QByteArray& service, const QByteArray& path);
[[nodiscard]] QByteArray kwinHidingScript(const QByteArray& service, const QByteArray& path, const QList<QString>& handles);

} // namespace orvanta
