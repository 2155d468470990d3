#include "platform/linux/qt_screens.h"

#include "platform/linux/x11_session.h"

#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvanta {

QtScreens::QtScreens(KeyWindowGeometry keyWindowGeometry, Pixels pixels) : m_keyWindowGeometry(std::move(keyWindowGeometry)), m_pixels(pixels) { }

std::vector<QtScreens::Display> QtScreens::displays() const
{
    QList<QScreen*> screens = QGuiApplication::screens();
    screens.removeIf([](const QScreen* screen) { return isPlaceholderScreen(screen->name()); });
    QStringList names;
    for (const QScreen* screen : std::as_const(screens))
        names << screen->name();
    const std::vector<std::uint32_t> numbers = m_numbers.numbers(names);

    std::vector<Display> displays;
    for (qsizetype i = 0; i < screens.size(); ++i) {
        const QScreen* screen = screens[i];
        displays.push_back({ .screen = { .number = numbers[static_cast<std::size_t>(i)], .frame = screen->geometry() },
            .placeOfWindows = m_pixels == Pixels::logical ? screen->geometry() : nativeFrame(screen->geometry(), screen->devicePixelRatio()),
            .isPrimary = screen == QGuiApplication::primaryScreen() });
    }
    return displays;
}

std::vector<Screen> QtScreens::all() const
{
    std::vector<Screen> screens;
    for (const Display& display : displays())
        screens.push_back(display.screen);
    return screens;
}

std::optional<Screen> QtScreens::main() const
{
    const std::vector<Display> all = displays();
    if (all.empty())
        return std::nullopt;
    if (const auto holder = ofKeyWindow(all))
        return holder;
    const auto primary = std::ranges::find_if(all, &Display::isPrimary);
    return primary == all.end() ? all.front().screen : primary->screen;
}

std::optional<Screen> QtScreens::ofKeyWindow() const
{
    return ofKeyWindow(displays());
}

std::optional<Screen> QtScreens::ofKeyWindow(const std::vector<Display>& all) const
{
    const std::optional<QRect> window = m_keyWindowGeometry();
    if (!window)
        return std::nullopt;
    const auto holder
        = std::ranges::find_if(all, [centre = window->center()](const Display& display) { return display.placeOfWindows.contains(centre); });
    return holder == all.end() ? std::nullopt : std::optional(holder->screen);
}

bool isPlaceholderScreen(const QString& name)
{
    static const QRegularExpression displayName(u"\\A[^/]*:\\d+(\\.\\d+)?\\z"_s);
    return name.isEmpty() || displayName.match(name).hasMatch();
}

QRect nativeFrame(const QRect& frame, double devicePixelRatio)
{
    return { frame.topLeft(), QSize(qRound(frame.width() * devicePixelRatio), qRound(frame.height() * devicePixelRatio)) };
}

KeyWindowGeometry x11KeyWindowGeometry()
{
    return [session = std::make_shared<X11Session>(X11Windows::Memory::none)]() -> std::optional<QRect> {
        X11Windows* windows = session->windows();
        if (!windows)
            return std::nullopt;
        if (const xcb_window_t active = windows->activeWindow(); active != XCB_NONE) {
            if (const std::optional<QRect> geometry = windows->geometry(active))
                return geometry;
        }
        // The keyboard may be with a window that no window manager looks after.
        const xcb_window_t focus = windows->focusWindow();
        return focus == XCB_NONE ? std::nullopt : windows->geometry(focus);
    };
}

} // namespace orvanta
