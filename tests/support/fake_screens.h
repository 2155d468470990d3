#pragma once

#include "platform/screens.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace orvanta::testing {

/// Displays that the test plugs in and out, and a window with the keyboard that it moves between them.
class FakeScreens : public Screens {
public:
    FakeScreens() = default;
    explicit FakeScreens(std::vector<Screen> connected) : m_connected(std::move(connected)) { }

    [[nodiscard]] std::vector<Screen> all() const override { return m_connected; }

    [[nodiscard]] std::optional<Screen> main() const override
    {
        if (m_connected.empty())
            return std::nullopt;
        const auto holder = std::ranges::find(m_connected, m_keyWindowScreen, &Screen::number);
        return holder == m_connected.end() ? m_connected.front() : *holder;
    }

    /// The first display that is connected is the primary one.
    void connect(const Screen& screen) { m_connected.push_back(screen); }
    void disconnect(std::uint32_t number)
    {
        std::erase_if(m_connected, [number](const Screen& screen) { return screen.number == number; });
    }
    void disconnectAll() { m_connected.clear(); }

    /// Puts the window with the keyboard on a display; 0 takes the keyboard from every window.
    void setKeyWindowScreen(std::uint32_t number) { m_keyWindowScreen = number; }

private:
    std::vector<Screen> m_connected;
    std::uint32_t m_keyWindowScreen = 0;
};

} // namespace orvanta::testing
