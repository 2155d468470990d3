#include "display.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <unistd.h>

#include <sys/prctl.h>

namespace orvanta::bench {

namespace {

constexpr std::uint8_t allBits = 32; // the format of numbers, atoms and windows in properties

void setText(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property, std::string_view text)
{
    xcb_change_property(
        connection, XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(text.size()), text.data());
}

} // namespace

double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

void rest(std::chrono::microseconds duration)
{
    static const int slack = prctl(PR_SET_TIMERSLACK, 1UL);
    static_cast<void>(slack);
    constexpr long nanosecondsInOne = 1000;
    constexpr long microsecondsInSecond = 1'000'000;
    const long count = static_cast<long>(duration.count());
    const timespec span { .tv_sec = count / microsecondsInSecond, .tv_nsec = count % microsecondsInSecond * nanosecondsInOne };
    nanosleep(&span, nullptr);
}

Display::Display() : m_connection(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(m_connection) != 0) {
        std::fprintf(stderr, "There is no X display to measure on.\n");
        std::exit(EXIT_FAILURE);
    }
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
}

Display::~Display()
{
    xcb_disconnect(m_connection);
}

xcb_atom_t Display::atom(std::string_view name) const
{
    const auto cookie = xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XcbPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

xcb_window_t Display::makeWindow(const Area& area, Pixel colour, std::string_view className) const
{
    const xcb_window_t window = xcb_generate_id(m_connection);
    const std::array<std::uint32_t, 2> values { colour, XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY };
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, root(), area.x, area.y, area.width, area.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        m_screen->root_visual, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());

    std::string classes(className);
    classes += '\0';
    classes += className;
    classes += '\0';
    setText(m_connection, window, XCB_ATOM_WM_CLASS, classes);
    setText(m_connection, window, XCB_ATOM_WM_NAME, className);
    std::array<char, 256> host {};
    gethostname(host.data(), host.size() - 1);
    setText(m_connection, window, XCB_ATOM_WM_CLIENT_MACHINE, host.data());
    setNumber(window, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, static_cast<std::uint32_t>(getpid()));

    // WM_NORMAL_HINTS with nothing but "the user chose this place": the window manager leaves the window where it is.
    constexpr std::uint32_t userChoseThePlace = 1;
    std::array<std::uint32_t, 18> hints {};
    hints[0] = userChoseThePlace;
    xcb_change_property(
        m_connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, allBits, hints.size(), hints.data());
    return window;
}

void Display::setAtoms(xcb_window_t window, xcb_atom_t property, std::span<const xcb_atom_t> values) const
{
    xcb_change_property(
        m_connection, XCB_PROP_MODE_REPLACE, window, property, XCB_ATOM_ATOM, allBits, static_cast<std::uint32_t>(values.size()), values.data());
}

void Display::setNumber(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::uint32_t value) const
{
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, property, type, allBits, 1, &value);
}

void Display::tellWindowManager(xcb_window_t window, xcb_atom_t type, const std::array<std::uint32_t, 4>& numbers) const
{
    xcb_client_message_event_t message {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = allBits;
    message.window = window;
    message.type = type;
    std::memcpy(message.data.data32, numbers.data(), sizeof(numbers));
    xcb_send_event(
        m_connection, 0, root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT, reinterpret_cast<const char*>(&message));
}

xcb_window_t Display::rootWindow(xcb_atom_t property) const
{
    const auto cookie = xcb_get_property(m_connection, 0, root(), property, XCB_ATOM_WINDOW, 0, 1);
    const XcbPtr<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply || xcb_get_property_value_length(reply.get()) < static_cast<int>(sizeof(xcb_window_t)))
        return XCB_NONE;
    return *static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
}

std::string Display::classOf(xcb_window_t window) const
{
    constexpr std::uint32_t longest = 64; // in units of four bytes
    const auto cookie = xcb_get_property(m_connection, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, longest);
    const XcbPtr<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply)
        return {};
    const std::string_view both(
        static_cast<const char*>(xcb_get_property_value(reply.get())), static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    const auto end = both.find('\0');
    if (end == std::string_view::npos)
        return {};
    const std::string_view second = both.substr(end + 1);
    return std::string(second.substr(0, second.find('\0')));
}

std::vector<Pixel> Display::pixels(std::span<const Point> points) const
{
    constexpr std::uint32_t allPlanes = 0xFFFFFFFF;
    std::vector<xcb_get_image_cookie_t> cookies;
    cookies.reserve(points.size());
    for (const Point& point : points)
        cookies.push_back(xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root(), point.x, point.y, 1, 1, allPlanes));
    std::vector<Pixel> colours;
    colours.reserve(points.size());
    for (const auto& cookie : cookies) {
        const XcbPtr<xcb_get_image_reply_t> reply(xcb_get_image_reply(m_connection, cookie, nullptr));
        Pixel colour = 0;
        if (reply && xcb_get_image_data_length(reply.get()) >= static_cast<int>(sizeof(colour)))
            std::memcpy(&colour, xcb_get_image_data(reply.get()), sizeof(colour));
        colours.push_back(colour & 0xFFFFFFU);
    }
    return colours;
}

std::string option(int argc, char** argv, std::string_view name, std::string_view otherwise)
{
    const std::string wanted = "--" + std::string(name);
    for (int index = 1; index + 1 < argc && std::string_view(argv[index]) != "--"; ++index)
        if (argv[index] == wanted)
            return argv[index + 1];
    return std::string(otherwise);
}

int numberOption(int argc, char** argv, std::string_view name, int otherwise)
{
    const std::string given = option(argc, argv, name, "");
    return given.empty() ? otherwise : std::atoi(given.c_str()); // NOLINT(bugprone-unchecked-string-to-number-conversion)
}

bool hasFlag(int argc, char** argv, std::string_view name)
{
    const std::string wanted = "--" + std::string(name);
    for (int index = 1; index < argc && std::string_view(argv[index]) != "--"; ++index)
        if (argv[index] == wanted)
            return true;
    return false;
}

} // namespace orvanta::bench
