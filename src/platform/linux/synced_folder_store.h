#pragma once

#include "platform/cloud_store.h"
#include "platform/portable/file_watch.h"
#include "platform/portable/json_object_file.h"
#include "platform/portable/observers.h"

#include <QObject>
#include <QString>

#include <optional>

namespace orvanta {

/// The values that the user's machines share: the file orvanta-focus.json in a folder that the user's own sync tool
/// carries between them. Only that file counts; what a tool puts beside it (conflict copies, unfinished transfers) is
/// left alone. While the file is missing or cannot be understood, the last good values stand. Main thread only.
class SyncedFolderStore : public QObject, public CloudStore {
    Q_OBJECT

public:
    /// $ORVANTA_CLOUD_DIRECTORY, or orvanta-focus/cloud under the XDG data home.
    [[nodiscard]] static QString standardFolder();

    /// The folder need not exist; the first write makes it. The lock is kept under the XDG data home, since in the
    /// folder itself it would travel to the other machines.
    explicit SyncedFolderStore(const QString& folder = standardFolder());

    [[nodiscard]] std::optional<StoredValue> value(const QString& key) override;
    Result<void> setValue(const QString& key, const StoredValue& value) override;
    Result<void> remove(const QString& key) override;

    /// Reads the file again. What that brings is told to the observers like any other change, from the event loop.
    void synchronise() override;
    [[nodiscard]] Subscription observeExternalChanges(Callback<> changed) override;

    /// That a file which could not be understood was in the way of a write and was moved aside, and where it is now;
    /// each told once.
    [[nodiscard]] std::optional<QString> takeProblem() override { return m_file.takeProblem(); }

private:
    void look();
    void tellSoon();

    JsonObjectFile m_file;
    FileWatch m_watch;
    Observers<> m_observers;
    bool m_isTellingSoon = false;
};

} // namespace orvanta
