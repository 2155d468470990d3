#include "platform/linux/x11_connection.h"

#include <QSocketNotifier>

#include <array>
#include <string_view>
#include <xcb/res.h>

using namespace Qt::StringLiterals;

namespace orvanta {

namespace {

struct AtomName {
    xcb_atom_t X11Atoms::* atom;
    std::string_view name;
};

constexpr std::array atomNames {
    AtomName { &X11Atoms::utf8String, "UTF8_STRING" },
    AtomName { &X11Atoms::gtkApplicationId, "_GTK_APPLICATION_ID" },
    AtomName { &X11Atoms::netActiveWindow, "_NET_ACTIVE_WINDOW" },
    AtomName { &X11Atoms::netClientList, "_NET_CLIENT_LIST" },
    AtomName { &X11Atoms::netClientListStacking, "_NET_CLIENT_LIST_STACKING" },
    AtomName { &X11Atoms::netCurrentDesktop, "_NET_CURRENT_DESKTOP" },
    AtomName { &X11Atoms::netSupportingWmCheck, "_NET_SUPPORTING_WM_CHECK" },
    AtomName { &X11Atoms::netWmDesktop, "_NET_WM_DESKTOP" },
    AtomName { &X11Atoms::netWmPid, "_NET_WM_PID" },
    AtomName { &X11Atoms::netWmState, "_NET_WM_STATE" },
    AtomName { &X11Atoms::netWmStateHidden, "_NET_WM_STATE_HIDDEN" },
    AtomName { &X11Atoms::netWmStateSkipTaskbar, "_NET_WM_STATE_SKIP_TASKBAR" },
    AtomName { &X11Atoms::netWmWindowType, "_NET_WM_WINDOW_TYPE" },
    AtomName { &X11Atoms::netWmWindowTypeDesktop, "_NET_WM_WINDOW_TYPE_DESKTOP" },
    AtomName { &X11Atoms::netWmWindowTypeDock, "_NET_WM_WINDOW_TYPE_DOCK" },
    AtomName { &X11Atoms::orvantaPanel, "_ORVANTA_PANEL" },
    AtomName { &X11Atoms::wmChangeState, "WM_CHANGE_STATE" },
};

QString reason(int error)
{
    switch (error) {
    case XCB_CONN_CLOSED_PARSE_ERR:
        return u"its name is not understood"_s;
    case XCB_CONN_CLOSED_INVALID_SCREEN:
        return u"it has no such screen"_s;
    default:
        return u"nothing answers there"_s;
    }
}

} // namespace

Result<std::unique_ptr<X11Connection>> X11Connection::open(const QByteArray& display)
{
    int screenNumber = 0;
    // xcb_connect never gives a null pointer: a failed connection, too, wants to be disconnected.
    std::unique_ptr<X11Connection> connection(new X11Connection(xcb_connect(display.isEmpty() ? nullptr : display.constData(), &screenNumber)));
    if (auto prepared = connection->prepare(screenNumber); !prepared)
        return std::unexpected(prepared.error());
    return connection;
}

X11Connection::X11Connection(xcb_connection_t* connection) : m_connection(connection) { }

X11Connection::~X11Connection()
{
    // The notifier watches a descriptor that disconnecting closes.
    m_notifier.reset();
    xcb_disconnect(m_connection);
}

Result<void> X11Connection::prepare(int screenNumber)
{
    const auto failure
        = [this] { return PlatformError { u"The X display cannot be used: %1."_s.arg(reason(xcb_connection_has_error(m_connection))) }; };
    if (isLost())
        return std::unexpected(failure());

    const xcb_setup_t* setup = xcb_get_setup(m_connection);
    xcb_screen_iterator_t screen = xcb_setup_roots_iterator(setup);
    for (; screen.rem > 0 && screenNumber > 0; --screenNumber)
        xcb_screen_next(&screen);
    if (screen.rem == 0)
        return std::unexpected(failure());
    m_root = screen.data->root;
    m_windowMask = setup->resource_id_mask;

    std::array<xcb_intern_atom_cookie_t, atomNames.size()> cookies {};
    for (std::size_t i = 0; i < atomNames.size(); ++i)
        cookies[i] = xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(atomNames[i].name.size()), atomNames[i].name.data());
    xcb_prefetch_extension_data(m_connection, &xcb_res_id);
    for (std::size_t i = 0; i < atomNames.size(); ++i) {
        const XcbPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookies[i], nullptr));
        if (!reply)
            return std::unexpected(failure());
        m_atoms.*atomNames[i].atom = reply->atom;
    }

    const xcb_query_extension_reply_t* resources = xcb_get_extension_data(m_connection, &xcb_res_id);
    if (resources && resources->present) {
        const XcbPtr<xcb_res_query_version_reply_t> version(
            xcb_res_query_version_reply(m_connection, xcb_res_query_version(m_connection, XCB_RES_MAJOR_VERSION, XCB_RES_MINOR_VERSION), nullptr));
        m_knowsProcesses = version && (version->server_major > 1 || (version->server_major == 1 && version->server_minor >= 2));
    }
    return {};
}

void X11Connection::watch(Callback<> readable)
{
    m_readable = std::move(readable);
    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
        m_readable();
        // The descriptor of a lost connection stays readable for ever.
        if (isLost())
            m_notifier->setEnabled(false);
    });
    xcb_flush(m_connection);
}

void X11Connection::roundTrip()
{
    const XcbPtr<xcb_get_input_focus_reply_t> done(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

} // namespace orvanta
