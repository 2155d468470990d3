#pragma once

#include <QFile>
#include <QString>

#include <algorithm>
#include <csignal>
#include <vector>

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

/// As long as it lives, this process can open `left` more files and then none.
class FewFiles {
public:
    explicit FewFiles(std::size_t left)
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit limit { std::min<rlim_t>(m_before.rlim_cur, 512), m_before.rlim_max };
        ::setrlimit(RLIMIT_NOFILE, &limit);
        for (int file = ::dup(STDERR_FILENO); file >= 0; file = ::dup(STDERR_FILENO))
            m_files.push_back(file);
        for (; left > 0 && !m_files.empty(); --left) {
            ::close(m_files.back());
            m_files.pop_back();
        }
    }
    FewFiles(const FewFiles&) = delete;
    FewFiles& operator=(const FewFiles&) = delete;
    ~FewFiles()
    {
        for (const int file : m_files)
            ::close(file);
        ::setrlimit(RLIMIT_NOFILE, &m_before);
    }

private:
    rlimit m_before {};
    std::vector<int> m_files;
};

} // namespace orvanta::testing
