#include "localservice/termination_signals.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace orvanta::localservice {

namespace {

// A signal handler may touch nothing but this: it writes one byte, which wakes the event loop.
std::array<int, 2> wakePipe { -1, -1 };

extern "C" void wake(int)
{
    const int interrupted = errno;
    const char byte = 0;
    static_cast<void>(::write(wakePipe[1], &byte, 1) == 1); // a full pipe has woken it already
    errno = interrupted;
}

void setHandler(void (*handler)(int))
{
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals()
{
    if (::pipe(wakePipe.data()) != 0)
        return; // the signals keep their usual meaning and end the process
    for (const int end : wakePipe) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
        ::fcntl(end, F_SETFL, O_NONBLOCK);
    }
    m_notifier = new QSocketNotifier(wakePipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        std::array<char, 16> bytes {};
        static_cast<void>(::read(wakePipe[0], bytes.data(), bytes.size()) > 0);
        Q_EMIT received();
    });
    setHandler(&wake);
}

TerminationSignals::~TerminationSignals()
{
    if (!m_notifier)
        return;
    setHandler(SIG_DFL);
    m_notifier->setEnabled(false);
    for (int& end : wakePipe) {
        ::close(end);
        end = -1;
    }
}

} // namespace orvanta::localservice
