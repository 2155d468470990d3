#include "harness/end_signals.h"

#include "harness/loopback_socket.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <tuple>

namespace orvanta {

namespace {

/// What the handler may reach: a number, set before it can be called.
volatile std::sig_atomic_t wakeUpDescriptor = -1;

extern "C" void wakeOnSignal(int)
{
    const int reason = errno;
    std::ignore = ::write(wakeUpDescriptor, "", 1);
    errno = reason;
}

} // namespace

EndSignals::EndSignals()
{
    static Descriptor wakeUp; // a signal may come at any time until the process has ended
    if (!makeWakePipe(m_wakes, wakeUp))
        return; // the signals keep their usual meaning
    wakeUpDescriptor = wakeUp.number();
    m_notifier = std::make_unique<QSocketNotifier>(m_wakes.number(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        std::array<char, 16> bytes {};
        std::ignore = ::read(m_wakes.number(), bytes.data(), bytes.size());
        Q_EMIT asked();
    });
    struct sigaction action {};
    action.sa_handler = &wakeOnSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}

} // namespace orvanta
