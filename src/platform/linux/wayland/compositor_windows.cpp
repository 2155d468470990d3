#include "platform/linux/wayland/compositor_windows.h"

#include "platform/linux/wayland/gnome_feed.h"
#include "platform/linux/wayland/kwin_feed.h"
#include "platform/linux/wayland/sway_feed.h"
#include "platform/linux/wayland/toplevel_feed.h"

#include <algorithm>

namespace orvanta {

using std::chrono::ceil;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

/// How long to wait before a connection that could not be made is tried again.
constexpr std::chrono::seconds untilNextTry { 2 };

} // namespace

CompositorWindows::CompositorWindows()
{
    open();
}

CompositorWindows::~CompositorWindows() = default;

void CompositorWindows::open()
{
    m_nextTry = steady_clock::now() + untilNextTry;
    if (!m_display) {
        m_display = WaylandDisplay::open();
        if (m_display && m_display->offers("zwlr_foreign_toplevel_manager_v1"))
            m_toplevels = std::make_unique<ToplevelFeed>(*m_display);
    }
    if (!m_sway) {
        if (const auto socket = m_display ? swaySocket(*m_display) : std::nullopt)
            m_sway = std::make_unique<SwayFeed>(*socket);
        m_isHungUpOn = m_isHungUpOn && !m_sway;
    }
    if (!m_bus) {
        const std::string address = sessionBusAddress();
        if (!address.empty()) {
            m_bus = std::make_unique<BoundedBus>(address);
            m_gnome = std::make_unique<GnomeFeed>(*m_bus);
            m_kwin = std::make_unique<KWinFeed>(*m_bus);
        }
    }
    if (m_changed)
        follow();
}

WindowFeed* CompositorWindows::feed()
{
    if (m_display)
        m_display->dispatch();
    if (m_bus)
        m_bus->dispatch();
    const auto silence = [](std::unique_ptr<QSocketNotifier>& notifier) {
        if (!notifier)
            return;
        notifier->setEnabled(false);
        notifier.release()->deleteLater(); // it may be what calls
    };
    const auto drop = [this](auto& feed) {
        if (m_used == feed.get())
            m_used = nullptr; // the next one may come to stand at the same address
        feed.reset();
    };
    if (m_display && m_display->isLost()) {
        silence(m_displayNotifier);
        silence(m_swayNotifier);
        drop(m_sway);
        drop(m_toplevels);
        m_display.reset();
    }
    if (m_sway && !m_sway->isAttached()) {
        silence(m_swayNotifier);
        drop(m_sway);
        m_isHungUpOn = true;
    }
    if (m_bus && m_bus->isLost()) {
        silence(m_busNotifier);
        drop(m_gnome);
        drop(m_kwin);
        m_bus.reset();
    }
    const auto isSomethingMissed = [this] { return !m_display || !m_bus || m_isHungUpOn; };
    if (isSomethingMissed() && steady_clock::now() >= m_nextTry)
        open();
    if (m_later && !m_isTelling) // what was taken in here is still to be told
        m_later->start(0);
    else if (m_later && isSomethingMissed() && !m_later->isActive())
        m_later->start(untilNextTry);

    WindowFeed* used = nullptr;
    WindowSource source = WindowSource::none;
    std::optional<steady_clock::time_point> next; // at which one of them has something to do
    const auto offer = [&](const auto& feed, WindowSource kind) {
        if (!feed || used)
            return;
        feed->update();
        if (const auto own = feed->nextTry(); own && (!next || *own < *next))
            next = own;
        if (feed->isAttached()) {
            used = feed.get();
            source = kind;
        }
    };
    offer(m_gnome, WindowSource::gnomeExtension);
    offer(m_kwin, WindowSource::kwinScript);
    offer(m_sway, WindowSource::swayCommands);
    offer(m_toplevels, WindowSource::foreignToplevel);
    if (used != m_used && used)
        ++m_attachment;
    if (next && m_later && !m_later->isActive())
        m_later->start(std::max(ceil<milliseconds>(*next - steady_clock::now()), milliseconds(0)));
    m_used = used;
    if (std::exchange(m_source, source) != source && m_later)
        QMetaObject::invokeMethod(
            m_later.get(),
            [this] {
                if (m_sourceChanged)
                    m_sourceChanged();
            },
            Qt::QueuedConnection);
    return used;
}

void CompositorWindows::watch(Callback<> changed)
{
    m_changed = std::move(changed);
    m_later = std::make_unique<QTimer>();
    m_later->setSingleShot(true);
    QObject::connect(m_later.get(), &QTimer::timeout, m_later.get(), [this] { tell(); });
    follow();
}

void CompositorWindows::tell()
{
    m_isTelling = true;
    m_changed();
    m_isTelling = false;
}

void CompositorWindows::follow()
{
    const auto notify = [this](std::unique_ptr<QSocketNotifier>& notifier, int descriptor) {
        notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
        QObject::connect(notifier.get(), &QSocketNotifier::activated, m_later.get(), [this] { tell(); });
    };
    if (m_display && !m_displayNotifier)
        notify(m_displayNotifier, m_display->descriptor());
    if (m_bus && !m_busNotifier)
        notify(m_busNotifier, m_bus->descriptor());
    if (m_sway && !m_swayNotifier)
        notify(m_swayNotifier, m_sway->descriptor());
}

} // namespace orvanta
