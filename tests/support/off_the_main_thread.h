#pragma once

#include <QByteArray>
#include <QMessageLogContext>
#include <QString>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace orvanta::testing {

/// With which words `act` aborts the program when another thread than the main one does it; empty if it does not. It is done
/// in a child.
inline QByteArray lastWordsOffTheMainThread(const std::function<void()>& act)
{
    int ends[2] = {};
    if (::pipe(ends) != 0)
        return {};
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDERR_FILENO);
        ::close(ends[0]);
        const rlimit none {};
        ::setrlimit(RLIMIT_CORE, &none);
        std::signal(SIGABRT, SIG_DFL);
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& message) {
            const QByteArray text = message.toUtf8();
            (void)!::write(STDERR_FILENO, text.constData(), static_cast<std::size_t>(text.size()));
        });
        std::thread(act).join();
        ::_exit(0);
    }
    ::close(ends[1]);
    QByteArray text(200, '\0');
    text.truncate(std::max<ssize_t>(0, ::read(ends[0], text.data(), static_cast<std::size_t>(text.size()))));
    ::close(ends[0]);
    int status = 0;
    const bool hasAborted = ::waitpid(child, &status, 0) == child && WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
    return hasAborted ? text : QByteArray();
}

} // namespace orvanta::testing
