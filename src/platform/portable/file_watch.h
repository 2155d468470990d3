#pragma once

#include "platform/callback.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QString>
#include <QTimer>

#include <utility>

namespace orvanta {

/// Notices that the file at a path may have changed, whatever way: written in place, replaced, its folder taken away
/// and brought back. It costs nothing while nothing changes. Owned by whoever reads the file; main thread only.
class FileWatch : public QObject {
    Q_OBJECT

public:
    /// `look` is called from the event loop after each burst of changes at or near `path`, also when the file turns out
    /// to be as it was. A slow `look` is called accordingly less often while the changes go on; after the last one it
    /// is always called once more.
    FileWatch(QString path, Callback<> look);

    /// Makes sure that what is watched is what stands at the path now. Needed only where folders come and go without
    /// the file system telling, as when a drive is mounted over one.
    void follow();

private:
    using Identity = std::pair<quint64, quint64>; ///< device and inode

    void noticed();
    void lookNow();
    [[nodiscard]] QHash<QString, Identity> wanted() const;

    QString m_path;
    Callback<> m_look;
    QFileSystemWatcher m_watcher;
    QHash<QString, Identity> m_watched;
    QTimer m_pause; ///< gathers what happens within a moment
    bool m_isFailureReported = false;
};

} // namespace orvanta
