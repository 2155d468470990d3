#pragma once

#include <QFile>
#include <QString>

#include <csignal>

#include <sys/resource.h>
#include <unistd.h>

namespace orvanta::testing {

/// As long as it lives, this process has the file rights of an ordinary user, also where the tests run as root.
class OrdinaryUser {
public:
    OrdinaryUser() : m_wasRoot(::geteuid() == 0 && ::seteuid(number) == 0) { }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser()
    {
        if (m_wasRoot && ::seteuid(0) != 0)
            std::abort();
    }

    /// Gives `path` to that user; nothing to do for whoever is an ordinary user anyway.
    [[nodiscard]] static bool owns(const QString& path)
    {
        return ::geteuid() != 0 || ::lchown(QFile::encodeName(path).constData(), number, number) == 0;
    }

private:
    static constexpr uid_t number = 65534;
    bool m_wasRoot;
};

/// As long as it lives, no file that this process writes can grow beyond `size`: what a full disk does to a write.
class FullDisk {
public:
    explicit FullDisk(rlim_t size) : m_signal(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit { size, m_before.rlim_max };
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_signal);
    }

private:
    rlimit m_before {};
    void (*m_signal)(int);
};

} // namespace orvanta::testing
