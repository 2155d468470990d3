#include "platform/linux/wayland/idle_notice.h"

#include "platform/linux/wayland/wayland_display.h"

#include "ext-idle-notify-v1-client.h"
#include "kde-idle-client.h"

#include <array>
#include <chrono>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <wayland-client.h>

namespace orvanta {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

/// Shorter pauses would wake us with every other word that the user types.
constexpr milliseconds pause { 1000 };
constexpr int answerPatience = 500; // milliseconds

std::int64_t nowInNanoseconds()
{
    return std::chrono::nanoseconds(steady_clock::now().time_since_epoch()).count();
}

void raise(int event)
{
    constexpr std::uint64_t one = 1;
    static_cast<void>(!::write(event, &one, sizeof(one)));
}

void lower(int event)
{
    std::uint64_t count = 0;
    static_cast<void>(!::read(event, &count, sizeof(count)));
}

} // namespace

struct IdleNotice::Listeners {
    static void paused(void* notice) { static_cast<IdleNotice*>(notice)->m_idleSince = nowInNanoseconds() - std::chrono::nanoseconds(pause).count(); }
    static void wentOn(void* notice) { static_cast<IdleNotice*>(notice)->m_idleSince = 0; }

    static void extIdled(void* notice, ext_idle_notification_v1* /*notification*/) { paused(notice); }
    static void extResumed(void* notice, ext_idle_notification_v1* /*notification*/) { wentOn(notice); }
    static void kdeIdle(void* notice, org_kde_kwin_idle_timeout* /*timeout*/) { paused(notice); }
    static void kdeResumed(void* notice, org_kde_kwin_idle_timeout* /*timeout*/) { wentOn(notice); }

    static constexpr ext_idle_notification_v1_listener ext { .idled = &extIdled, .resumed = &extResumed };
    static constexpr org_kde_kwin_idle_timeout_listener kde { .idle = &kdeIdle, .resumed = &kdeResumed };
};

std::unique_ptr<IdleNotice> IdleNotice::find()
{
    auto display = WaylandDisplay::open();
    if (!display || !display->offers(wl_seat_interface.name)
        || !(display->offers(ext_idle_notifier_v1_interface.name) || display->offers(org_kde_kwin_idle_interface.name)))
        return nullptr;
    return std::unique_ptr<IdleNotice>(new IdleNotice(std::move(display)));
}

IdleNotice::IdleNotice(std::unique_ptr<WaylandDisplay> display)
    : m_display(std::move(display))
    , m_asked(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , m_answered(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , m_thread([this](const std::stop_token& stop) { listen(stop); })
{
}

IdleNotice::~IdleNotice()
{
    m_thread.request_stop();
    m_thread.join();
    ::close(m_asked);
    ::close(m_answered);
}

std::optional<double> IdleNotice::seconds()
{
    // What the user did before the question has to be in the answer.
    lower(m_answered);
    raise(m_asked);
    pollfd answer { .fd = m_answered, .events = POLLIN, .revents = 0 };
    ::poll(&answer, 1, answerPatience);
    if (m_isLost)
        return std::nullopt;
    const std::int64_t since = m_idleSince;
    return since == 0 ? 0.0 : static_cast<double>(nowInNanoseconds() - since) / 1e9;
}

void IdleNotice::listen(const std::stop_token& stop)
{
    const std::stop_callback wake(stop, [this] { raise(m_asked); });
    auto* seat = m_display->bind<wl_seat>(wl_seat_interface, 1);
    auto* ext = m_display->bind<ext_idle_notifier_v1>(ext_idle_notifier_v1_interface, 1);
    ext_idle_notification_v1* notification = nullptr;
    org_kde_kwin_idle* kde = nullptr;
    org_kde_kwin_idle_timeout* timeout = nullptr;
    if (ext) {
        notification = ext_idle_notifier_v1_get_idle_notification(ext, pause.count(), seat);
        ext_idle_notification_v1_add_listener(notification, &Listeners::ext, this);
    } else {
        kde = m_display->bind<org_kde_kwin_idle>(org_kde_kwin_idle_interface, 1);
        timeout = org_kde_kwin_idle_get_idle_timeout(kde, seat, pause.count());
        org_kde_kwin_idle_timeout_add_listener(timeout, &Listeners::kde, this);
    }
    m_display->roundTrip();

    while (!stop.stop_requested() && !m_display->isLost()) {
        std::array waits { pollfd { .fd = m_display->descriptor(), .events = POLLIN, .revents = 0 },
            pollfd { .fd = m_asked, .events = POLLIN, .revents = 0 } };
        ::poll(waits.data(), waits.size(), -1);
        m_display->dispatch();
        if (waits[1].revents != 0) {
            lower(m_asked);
            m_display->roundTrip(milliseconds(answerPatience));
            raise(m_answered);
        }
    }
    m_isLost = m_display->isLost();
    raise(m_answered);

    if (notification)
        ext_idle_notification_v1_destroy(notification);
    if (ext)
        ext_idle_notifier_v1_destroy(ext);
    if (timeout)
        org_kde_kwin_idle_timeout_release(timeout);
    if (kde)
        org_kde_kwin_idle_destroy(kde);
    if (seat)
        wl_seat_destroy(seat);
}

} // namespace orvanta
