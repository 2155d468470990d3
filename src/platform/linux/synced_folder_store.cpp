#include "platform/linux/synced_folder_store.h"

#include <QDir>
#include <QStandardPaths>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

QString dataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/orvanta-focus"_s;
}

} // namespace

QString SyncedFolderStore::standardFolder()
{
    const QString chosen = qEnvironmentVariable("ORVANTA_CLOUD_DIRECTORY");
    return chosen.isEmpty() ? dataFolder() + u"/cloud"_s : QDir(chosen).absolutePath();
}

// Watching begins before the first look, so that nothing falls between the two.
SyncedFolderStore::SyncedFolderStore(const QString& folder)
    : m_file(folder + u"/orvanta-focus.json"_s, dataFolder() + u"/cloud.lock"_s, FilePermissions::asBefore)
    , m_watch(m_file.path(), [this] { look(); })
{
    synchronise();
}

std::optional<StoredValue> SyncedFolderStore::value(const QString& key)
{
    return m_file.value(key);
}

Result<void> SyncedFolderStore::setValue(const QString& key, const StoredValue& value)
{
    const auto result = m_file.setValue(key, value);
    tellSoon();
    return result;
}

Result<void> SyncedFolderStore::remove(const QString& key)
{
    const auto result = m_file.remove(key);
    tellSoon();
    return result;
}

void SyncedFolderStore::synchronise()
{
    m_watch.follow();
    m_file.read();
    tellSoon();
}

Subscription SyncedFolderStore::observeExternalChanges(Callback<> changed)
{
    return m_observers.add(std::move(changed));
}

void SyncedFolderStore::look()
{
    m_file.read();
    if (m_file.takeNews())
        m_observers.notify();
}

/// News that came in during a call is told after it: the caller is not called back in the middle of its own work.
/// Those who begin to observe after that have read the new state already.
void SyncedFolderStore::tellSoon()
{
    if (!m_file.takeNews() || m_observers.isEmpty() || std::exchange(m_isTellingSoon, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isTellingSoon = false;
            m_observers.notify();
        },
        Qt::QueuedConnection);
}

} // namespace orvanta
