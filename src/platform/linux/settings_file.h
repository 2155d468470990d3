#pragma once

#include "platform/key_value_store.h"
#include "platform/portable/json_object_file.h"

#include <QString>

#include <optional>

namespace orvanta {

/// The user's settings on this machine: one JSON file that a person may read and edit, readable by its owner alone.
/// A file that cannot be understood is moved aside at the start, which then goes on without it; while the program
/// runs, the last good content stands until the next write. Main thread only.
class SettingsFile : public KeyValueStore {
public:
    /// $XDG_CONFIG_HOME/orvanta-focus/settings.json.
    [[nodiscard]] static QString standardPath();

    explicit SettingsFile(const QString& path = standardPath());

    /// What the file holds now, also if somebody else has just changed it.
    [[nodiscard]] std::optional<StoredValue> value(const QString& key) override;
    Result<void> setValue(const QString& key, const StoredValue& value) override;
    Result<void> remove(const QString& key) override;

    /// What went wrong with the file, in a sentence for the window, each told once: that it was damaged, and where
    /// it is now.
    [[nodiscard]] std::optional<QString> takeProblem() override { return m_file.takeProblem(); }

private:
    JsonObjectFile m_file;
};

} // namespace orvanta
