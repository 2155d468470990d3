#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct wl_display;
struct wl_interface;
struct wl_output;
struct wl_registry;
struct wl_seat;

namespace orvanta {

/// One thing that the compositor offers.
struct WaylandGlobal {
    std::uint32_t name = 0;
    std::string interface;
    std::uint32_t version = 0;
};

/// A connection to the Wayland compositor, apart from Qt's, for use on one thread. Never waits without a bound. One that is
/// lost stays lost.
class WaylandDisplay {
public:
    /// Null if the environment names no compositor, or none answers.
    [[nodiscard]] static std::unique_ptr<WaylandDisplay> open();
    ~WaylandDisplay();
    WaylandDisplay(const WaylandDisplay&) = delete;
    WaylandDisplay& operator=(const WaylandDisplay&) = delete;

    [[nodiscard]] wl_display* raw() const { return m_display; }
    [[nodiscard]] bool isLost() const;

    [[nodiscard]] bool offers(const char* interface) const;
    [[nodiscard]] const std::vector<WaylandGlobal>& globals() const { return m_globals; }

    /// Binds the first global of that interface, in the version that both sides know; null if there is none. What is bound has
    /// to be destroyed before this.
    template <typename Object>
    [[nodiscard]] Object* bind(const wl_interface& interface, std::uint32_t knownVersion)
    {
        return static_cast<Object*>(bindFirst(interface, knownVersion));
    }
    [[nodiscard]] void* bindGlobal(const WaylandGlobal& global, const wl_interface& interface, std::uint32_t knownVersion);

    /// Readable when events have come.
    [[nodiscard]] int descriptor() const;
    /// Sends what is waiting to be sent, and handles the events that have come; does not wait.
    void dispatch();
    /// Handles what the compositor said until it has done all that was asked of it; whether that was so within the bound.
    bool roundTrip(std::chrono::milliseconds bound = std::chrono::milliseconds(1000));

private:
    explicit WaylandDisplay(wl_display* display) : m_display(display) { }
    [[nodiscard]] void* bindFirst(const wl_interface& interface, std::uint32_t knownVersion);
    bool readWithin(std::chrono::milliseconds bound);

    struct Listeners;

    wl_display* m_display;
    wl_registry* m_registry = nullptr;
    std::vector<WaylandGlobal> m_globals;
};

} // namespace orvanta
