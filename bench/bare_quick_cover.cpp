// The least Qt Quick cover: a full-screen window of two rectangles, made before it is needed, that the window manager
// knows. It tells what the toolkit adds to bare_cover.
//
//   bare_quick_cover --blocked CLASS
//   bare_quick_cover --told PIPE
//
// It covers windows of that class, or shows and hides itself as it is told (see told.h). It prints "ready" when it watches, and
// runs until it is ended.

#include "bare_quick_window.h"
#include "display.h"
#include "told.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QSocketNotifier>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

using namespace orvanta::bench;

namespace {

class Watch : public QAbstractNativeEventFilter {
public:
    Watch(QQuickWindow& cover, std::string blockedClass)
        : m_cover(cover)
        , m_blockedClass(std::move(blockedClass))
        , m_connection(qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection())
        , m_root(xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root)
        , m_activeWindow(atom("_NET_ACTIVE_WINDOW"))
        , m_state(atom("_NET_WM_STATE"))
        , m_above(atom("_NET_WM_STATE_ABOVE"))
        , m_fullScreen(atom("_NET_WM_STATE_FULLSCREEN"))
    {
        const XcbPtr<xcb_get_window_attributes_reply_t> now(
            xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, m_root), nullptr));
        const std::uint32_t watched = now->your_event_mask | XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &watched);
        xcb_flush(m_connection);
        m_cover.create();
    }

    bool nativeEventFilter(const QByteArray& /*eventType*/, void* message, qintptr* /*result*/) override
    {
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        if ((event->response_type & 0x7F) != XCB_PROPERTY_NOTIFY)
            return false;
        const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event);
        if (change->window == m_root && change->atom == m_activeWindow)
            consider();
        return false;
    }

    void show()
    {
        m_cover.showFullScreen();
        tell(m_state, { 1, m_above, m_fullScreen, 2 });
        tell(m_activeWindow, { 2, XCB_CURRENT_TIME, 0, 0 });
        xcb_flush(m_connection);
    }

private:
    [[nodiscard]] xcb_atom_t atom(std::string_view name) const
    {
        const auto cookie = xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
        return XcbPtr<xcb_intern_atom_reply_t>(xcb_intern_atom_reply(m_connection, cookie, nullptr))->atom;
    }

    [[nodiscard]] XcbPtr<xcb_get_property_reply_t> property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) const
    {
        constexpr std::uint32_t longest = 64;
        return XcbPtr<xcb_get_property_reply_t>(
            xcb_get_property_reply(m_connection, xcb_get_property(m_connection, 0, window, name, type, 0, longest), nullptr));
    }

    void consider()
    {
        const auto reply = property(m_root, m_activeWindow, XCB_ATOM_WINDOW);
        if (!reply || xcb_get_property_value_length(reply.get()) < static_cast<int>(sizeof(xcb_window_t)))
            return;
        const xcb_window_t active = *static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
        if (active == XCB_NONE || active == m_cover.winId())
            return;
        const auto classes = property(active, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING);
        const bool isBlocked = classes && static_cast<const char*>(xcb_get_property_value(classes.get())) == m_blockedClass;
        if (isBlocked)
            show();
        else
            m_cover.hide();
    }

    void tell(xcb_atom_t type, const std::array<std::uint32_t, 4>& numbers) const
    {
        xcb_client_message_event_t message {};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = static_cast<xcb_window_t>(m_cover.winId());
        message.type = type;
        std::memcpy(message.data.data32, numbers.data(), sizeof(numbers));
        xcb_send_event(m_connection, 0, m_root, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
            reinterpret_cast<const char*>(&message));
    }

    QQuickWindow& m_cover;
    std::string m_blockedClass;
    xcb_connection_t* m_connection;
    xcb_window_t m_root;
    xcb_atom_t m_activeWindow, m_state, m_above, m_fullScreen;
};

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    QQmlEngine engine;
    const auto window = makeBareQuickWindow(engine, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    if (!window)
        return EXIT_FAILURE;
    Watch watch(*window, option(argc, argv, "blocked", "blocked"));
    std::optional<Told> told;
    std::optional<QSocketNotifier> notifier;
    if (const std::string pipe = option(argc, argv, "told", ""); pipe.empty()) {
        application.installNativeEventFilter(&watch);
    } else {
        notifier.emplace(told.emplace(pipe).descriptor(), QSocketNotifier::Read);
        QObject::connect(&*notifier, &QSocketNotifier::activated, window.get(), [&] {
            if (const auto isToBeShown = told->take())
                *isToBeShown ? watch.show() : window->hide();
        });
    }
    std::puts("ready");
    std::fflush(stdout);
    return QGuiApplication::exec();
}
