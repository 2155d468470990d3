#include "platform/portable/file_watch.h"

#include "platform/portable/durable_file.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QPointer>

#include <algorithm>
#include <chrono>
#include <cstdio>

#include <sys/stat.h>

namespace orvanta {

namespace {

using std::chrono::milliseconds;

/// Long enough for the steps of one replacement to count as one change, short enough that nobody waits for it.
constexpr milliseconds shortestPause(50);

/// A large file that is being written in place is looked at during at most a fifth of the time.
constexpr int pauseForEachLook = 4;
constexpr milliseconds longestPause(5000);

} // namespace

FileWatch::FileWatch(QString path, Callback<> look) : m_path(std::move(path)), m_look(std::move(look))
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(shortestPause);
    connect(&m_pause, &QTimer::timeout, this, &FileWatch::lookNow);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FileWatch::noticed);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FileWatch::noticed);
    follow();
}

void FileWatch::noticed()
{
    if (!m_pause.isActive())
        m_pause.start();
}

void FileWatch::lookNow()
{
    // Watching comes first: what changes during the look is noticed again.
    follow();
    QElapsedTimer took;
    took.start();
    const QPointer alive(this);
    m_look();
    if (!alive)
        return;
    m_pause.setInterval(std::clamp(milliseconds(took.elapsed()) * pauseForEachLook, shortestPause, longestPause));
}

void FileWatch::follow()
{
    // A folder may appear between the moment when it was looked for and the moment when the one above it was watched.
    constexpr int rounds = 3;
    for (int round = 0; round < rounds; ++round) {
        const auto places = wanted();
        const QStringList live = m_watcher.files() + m_watcher.directories();
        const auto isWatched = [&](const QString& place) { return live.contains(place) && m_watched.value(place) == places.value(place); };

        QStringList stale;
        std::ranges::copy_if(live, std::back_inserter(stale), [&](const QString& place) { return !isWatched(place); });
        if (!stale.isEmpty())
            m_watcher.removePaths(stale);
        QStringList fresh;
        std::ranges::copy_if(places.keys(), std::back_inserter(fresh), [&](const QString& place) { return !isWatched(place); });
        m_watched = places;
        if (fresh.isEmpty())
            return;
        for (const QString& place : m_watcher.addPaths(fresh)) {
            if (QFileInfo::exists(place) && !std::exchange(m_isFailureReported, true))
                std::fprintf(stderr, "orvanta-focus: changes to %s cannot be watched\n", qPrintable(place));
        }
    }
}

QHash<QString, FileWatch::Identity> FileWatch::wanted() const
{
    QHash<QString, Identity> places;
    const auto add = [&places](const QString& place) {
        struct stat facts {};
        if (::stat(QFile::encodeName(place).constData(), &facts) != 0)
            return false;
        places.insert(place, { facts.st_dev, facts.st_ino });
        return true;
    };
    const auto addFolder = [&add](const QString& folder) {
        // The folder above tells when this one is taken away or comes back; where this one is missing, the nearest
        // one that exists tells when the way to it begins to appear.
        add(folder);
        QString above = QFileInfo(folder).path();
        while (!add(above) && above != QFileInfo(above).path())
            above = QFileInfo(above).path();
    };
    add(m_path);
    addFolder(QFileInfo(m_path).absolutePath());
    if (const QString target = linkTarget(m_path); target != m_path)
        addFolder(QFileInfo(target).absolutePath());
    return places;
}

} // namespace orvanta
